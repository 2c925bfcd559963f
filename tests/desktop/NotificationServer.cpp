#include "tests/desktop/NotificationServer.h"

#include <QDBusMessage>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

const QString service = u"org.freedesktop.Notifications"_s;
const QString object = u"/org/freedesktop/Notifications"_s;

} // namespace

NotificationServer::NotificationServer(const QString& sessionBus)
    : m_name(QUuid::createUuid().toString()), m_bus(QDBusConnection::connectToBus(sessionBus, m_name)) {
    m_isThere = m_bus.registerVirtualObject(object, this) && m_bus.registerService(service);
}

NotificationServer::~NotificationServer() {
    m_bus.unregisterObject(object);
    QDBusConnection::disconnectFromBus(m_name);
}

void NotificationServer::invoke(uint id, const QString& action) {
    QDBusMessage signal = QDBusMessage::createSignal(object, service, u"ActionInvoked"_s);
    signal << id << action;
    m_bus.send(signal);
}

bool NotificationServer::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const QVariantList& words = message.arguments();
    QVariantList answer;
    if (message.member() == u"Notify" && words.size() >= 6) {
        m_shown.append(
            {static_cast<uint>(m_shown.size()) + 1, words[3].toString(), words[4].toString(), words[5].toStringList()});
        answer = {m_shown.last().id};
    } else if (message.member() == u"GetServerInformation") {
        answer = {u"Test"_s, u"OrvLauncher"_s, u"1"_s, u"1.2"_s};
    } else if (message.member() == u"GetCapabilities") {
        answer = {QStringList{u"actions"_s, u"body"_s}};
    } else if (message.member() != u"CloseNotification") {
        return false;
    }
    return connection.send(message.createReply(answer));
}

QString NotificationServer::introspect(const QString& /*path*/) const {
    return {};
}

} // namespace orv::test
