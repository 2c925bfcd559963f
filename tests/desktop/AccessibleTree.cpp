#include "tests/desktop/AccessibleTree.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

const QString accessible = u"org.a11y.atspi.Accessible"_s;

QString sessionName(const QString& sessionBus) {
    return u"session at "_s + sessionBus;
}

/// Connections are known by their names for the life of the process: each desktop's gets one of its own.
QDBusConnection accessibilityBus(const QString& sessionBus) {
    const QDBusConnection session = QDBusConnection::connectToBus(sessionBus, sessionName(sessionBus));
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

QRect AccessibleTree::place(const Reference& item) const {
    QDBusMessage ask =
        QDBusMessage::createMethodCall(item.service, item.path, u"org.a11y.atspi.Component"_s, u"GetExtents"_s);
    ask << uint(0); // of the screen
    const QDBusMessage reply = m_bus.call(ask);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        return {};
    }
    const auto argument = reply.arguments().constFirst().value<QDBusArgument>();
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    argument.beginStructure();
    argument >> x >> y >> width >> height;
    argument.endStructure();
    return {x, y, width, height};
}

AccessibleTree::Item AccessibleTree::itemOf(const Reference& item, const QString& name) const {
    const QDBusReply<QString> role =
        m_bus.call(QDBusMessage::createMethodCall(item.service, item.path, accessible, u"GetRoleName"_s));
    return {name, role.value(), place(item), has(item, State::showing)};
}

bool AccessibleTree::has(const Reference& item, State state) const {
    const QDBusReply<QList<uint>> states =
        m_bus.call(QDBusMessage::createMethodCall(item.service, item.path, accessible, u"GetState"_s));
    return states.isValid() && !states.value().isEmpty() &&
           (states.value().constFirst() & (1U << static_cast<uint>(state))) != 0;
}

QList<AccessibleTree::Reference> AccessibleTree::windows(const QString& application, State state) const {
    QList<Reference> found;
    for (const Reference& root : children({u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/accessible/root"_s})) {
        if (property(root, u"Name"_s) == application) {
            found += children(root);
        }
    }
    found.removeIf([&](const Reference& window) { return !has(window, state); });
    return found;
}

bool AccessibleTree::visit(const Reference& item, int depth, const Visitor& visitor) const {
    constexpr int deepest = 40;
    if (depth > deepest) {
        return true;
    }
    return visitor(item, property(item, u"Name"_s)) && std::ranges::all_of(children(item), [&](const Reference& child) {
               return visit(child, depth + 1, visitor);
           });
}

void AccessibleTree::visit(const QString& application, const Visitor& visitor) const {
    for (const Reference& window : windows(application, State::showing)) {
        if (!visit(window, 0, visitor)) {
            return;
        }
    }
}

bool AccessibleTree::isActive(const QString& application) const {
    return !windows(application, State::active).isEmpty();
}

QList<AccessibleTree::Item> AccessibleTree::items(const QString& application) const {
    QList<Item> found;
    visit(application, [&](const Reference& item, const QString& name) {
        if (const Item its = itemOf(item, name); its.place.isValid()) {
            found.append(its);
        }
        return true;
    });
    return found;
}

std::optional<AccessibleTree::Item> AccessibleTree::find(const QString& application, const QString& name) const {
    std::optional<Item> control;
    std::optional<Item> text;
    visit(application, [&](const Reference& reference, const QString& its) {
        if (its == name) {
            const Item found = itemOf(reference, its);
            std::optional<Item>& place = found.role == u"label" ? text : control;
            if (found.place.isValid() && !place) {
                place = found;
            }
        }
        return !control;
    });
    return control ? control : text;
}

} // namespace orv::test
