#include "tests/desktop/AccessibleTree.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

const QString accessible = u"org.a11y.atspi.Accessible"_s;

QString sessionName(const QString& sessionBus) {
    return u"session at "_s + sessionBus;
}

/// Connections are known by their names for the life of the process: each desktop's gets one of its own.
QDBusConnection accessibilityBus(const QString& sessionBus) {
    QDBusConnection session = QDBusConnection::connectToBus(sessionBus, sessionName(sessionBus));
    const QDBusMessage ask =
        QDBusMessage::createMethodCall(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s);
    const QDBusReply<QString> address = session.call(ask);
    return QDBusConnection::connectToBus(address.value(), u"accessibility at "_s + address.value());
}

} // namespace

AccessibleTree::AccessibleTree(const QString& sessionBus)
    : m_sessionBus(sessionBus), m_bus(accessibilityBus(sessionBus)) {}

AccessibleTree::~AccessibleTree() {
    QDBusConnection::disconnectFromBus(m_bus.name());
    QDBusConnection::disconnectFromBus(sessionName(m_sessionBus));
}

QList<AccessibleTree::Reference> AccessibleTree::children(const Reference& parent) const {
    const QDBusMessage reply =
        m_bus.call(QDBusMessage::createMethodCall(parent.service, parent.path, accessible, u"GetChildren"_s));
    QList<Reference> found;
    if (reply.type() != QDBusMessage::ReplyMessage) {
        return found;
    }
    const auto list = reply.arguments().constFirst().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        Reference child;
        QDBusObjectPath path;
        list.beginStructure();
        list >> child.service >> path;
        list.endStructure();
        child.path = path.path();
        found.append(child);
    }
    list.endArray();
    return found;
}

QString AccessibleTree::property(const Reference& item, const QString& name) const {
    QDBusMessage ask =
        QDBusMessage::createMethodCall(item.service, item.path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    ask << accessible << name;
    const QDBusReply<QDBusVariant> reply = m_bus.call(ask);
    return reply.value().variant().toString();
}

void AccessibleTree::collect(const Reference& item, int depth, QList<Item>& found) const {
    constexpr int deepest = 40;
    if (depth > deepest) {
        return;
    }
    QDBusMessage askPlace =
        QDBusMessage::createMethodCall(item.service, item.path, u"org.a11y.atspi.Component"_s, u"GetExtents"_s);
    askPlace << uint(0); // of the screen
    const QDBusMessage place = m_bus.call(askPlace);
    const QDBusReply<QString> role =
        m_bus.call(QDBusMessage::createMethodCall(item.service, item.path, accessible, u"GetRoleName"_s));
    QRect rect;
    if (place.type() == QDBusMessage::ReplyMessage) {
        const auto argument = place.arguments().constFirst().value<QDBusArgument>();
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        argument.beginStructure();
        argument >> x >> y >> width >> height;
        argument.endStructure();
        rect = QRect(x, y, width, height);
    }
    const QDBusReply<QList<uint>> states =
        m_bus.call(QDBusMessage::createMethodCall(item.service, item.path, accessible, u"GetState"_s));
    constexpr uint showing = 1U << 25U; // ATSPI_STATE_SHOWING
    const bool isShowing =
        states.isValid() && !states.value().isEmpty() && (states.value().constFirst() & showing) != 0;
    found.append({property(item, u"Name"_s), role.value(), rect, isShowing});
    for (const Reference& child : children(item)) {
        collect(child, depth + 1, found);
    }
}

QList<AccessibleTree::Item> AccessibleTree::items(const QString& application) const {
    QList<Item> found;
    for (const Reference& root : children({u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/accessible/root"_s})) {
        if (property(root, u"Name"_s) == application) {
            collect(root, 0, found);
        }
    }
    return found;
}

std::optional<AccessibleTree::Item> AccessibleTree::find(const QString& application, const QString& name) const {
    for (const Item& item : items(application)) {
        if (item.name == name && item.place.isValid()) {
            return item;
        }
    }
    return {};
}

} // namespace orv::test
