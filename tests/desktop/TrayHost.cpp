#include "tests/desktop/TrayHost.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

const QString watcher = u"org.kde.StatusNotifierWatcher"_s;
const QString object = u"/StatusNotifierWatcher"_s;
const QString dbusMenu = u"com.canonical.dbusmenu"_s;
constexpr int topLevel = 0;

} // namespace

TrayHost::TrayHost(const QString& sessionBus)
    : m_name(QUuid::createUuid().toString()), m_bus(QDBusConnection::connectToBus(sessionBus, m_name)) {
    moveToThread(&m_thread);
    m_thread.start();
    m_isThere = m_bus.registerVirtualObject(object, this) && m_bus.registerService(watcher);
}

TrayHost::~TrayHost() {
    m_bus.unregisterObject(object);
    QDBusConnection::disconnectFromBus(m_name);
    m_thread.quit();
    m_thread.wait();
}

QString TrayHost::program() {
    const QMutexLocker locked(&m_lock);
    return m_program;
}

QDBusMessage TrayHost::call(
    const QString& path, const QString& interface, const QString& member, const QVariantList& words) {
    QDBusMessage message = QDBusMessage::createMethodCall(program(), path, interface, member);
    message.setArguments(words);
    return m_bus.call(message);
}

QList<TrayHost::Entry> TrayHost::entries() {
    if (program().isEmpty()) {
        return {};
    }
    call(u"/MenuBar"_s, dbusMenu, u"AboutToShow"_s, {topLevel});
    const QDBusMessage layout = call(u"/MenuBar"_s, dbusMenu, u"GetLayout"_s, {topLevel, 1, QStringList()});
    if (layout.arguments().size() < 2) {
        return {};
    }
    int id = 0;
    QVariantMap properties;
    QVariantList children;
    const auto root = layout.arguments()[1].value<QDBusArgument>();
    root.beginStructure();
    root >> id >> properties >> children;
    root.endStructure();
    QList<Entry> found;
    for (const QVariant& child : std::as_const(children)) {
        QVariantList below;
        const auto item = child.value<QDBusArgument>();
        item.beginStructure();
        item >> id >> properties >> below;
        item.endStructure();
        const QString text = properties[u"label"_s].toString();
        const bool isEnabled = properties.value(u"enabled"_s, true).toBool();
        const bool isLine = properties[u"type"_s].toString() == u"separator";
        if (properties.value(u"visible"_s, true).toBool()) {
            found.append({id, isLine ? u"-"_s : isEnabled ? text : u'(' + text + u')'});
        }
    }
    return found;
}

QStringList TrayHost::menu() {
    QStringList texts;
    for (const Entry& entry : entries()) {
        texts.append(entry.text);
    }
    return texts;
}

bool TrayHost::choose(const QString& wanted) {
    const QList<Entry> all = entries();
    const auto entry = std::ranges::find(all, wanted, &Entry::text);
    if (entry == all.end()) {
        return false;
    }
    const QVariant nothing = QVariant::fromValue(QDBusVariant(0));
    call(u"/MenuBar"_s, dbusMenu, u"Event"_s, {entry->id, u"clicked"_s, nothing, 0U});
    return true;
}

void TrayHost::activate() {
    call(u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s, {0, 0});
}

bool TrayHost::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    QVariantList answer;
    if (message.member() == u"RegisterStatusNotifierItem") {
        const QMutexLocker locked(&m_lock);
        m_program = message.service();
    } else if (message.member() == u"Get") {
        answer = {QVariant::fromValue(QDBusVariant(true))}; // that there is a tray which shows the icons
    } else {
        return false;
    }
    return connection.send(message.createReply(answer));
}

QString TrayHost::introspect(const QString& /*path*/) const {
    return u"<interface name='%1'>"
           "<property name='IsStatusNotifierHostRegistered' type='b' access='read'/>"
           "<method name='RegisterStatusNotifierItem'><arg type='s' direction='in'/></method>"
           "</interface>"_s.arg(watcher);
}

} // namespace orv::test
