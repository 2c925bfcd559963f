#include "OrvLauncher/platform/linux/PortalShortcut.h"

#include "OrvLauncher/platform/linux/PortalEntry.h"

#include <QDBusMetaType>
#include <QDBusObjectPath>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString shortcuts = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString token = u"orvlauncher"_s;

/// The portals say some paths as paths and others as texts.
QString pathOf(const QVariant& value) {
    return value.canConvert<QDBusObjectPath>() ? value.value<QDBusObjectPath>().path() : value.toString();
}

} // namespace

PortalShortcut::PortalShortcut(
    Shortcut shortcut, Handlers handlers, QString busAddress, std::chrono::milliseconds limit)
    : m_shortcut(std::move(shortcut)),
      m_handlers(std::move(handlers)),
      m_bus(std::move(busAddress), static_cast<int>(limit.count())) {
    qDBusRegisterMetaType<PortalEntry>();
    qDBusRegisterMetaType<QList<PortalEntry>>();
    m_bus.open([this](bool isOpen) { takeBus(isOpen); });
}

void PortalShortcut::takeBus(bool isOpen) {
    if (!isOpen) {
        settle(State::unsupported);
        return;
    }
    m_bus.listen({}, u"org.freedesktop.portal.Request"_s, u"Response"_s, this, SLOT(responded(QDBusMessage)));
    m_bus.listen({}, u"org.freedesktop.portal.Session"_s, u"Closed"_s, this, SLOT(closed(QDBusMessage)));
    m_bus.listen(path, shortcuts, u"Activated"_s, this, SLOT(activated(QDBusMessage)));
    m_bus.listen(path, shortcuts, u"ShortcutsChanged"_s, this, SLOT(changed(QDBusMessage)));
    // Outside of a sandbox a program says itself which one it is; portals of before that guess it, and refuse this.
    QDBusMessage registration =
        QDBusMessage::createMethodCall(service, path, u"org.freedesktop.host.portal.Registry"_s, u"Register"_s);
    registration.setArguments({u"orvlauncher"_s, QVariantMap()});
    m_bus.call(registration, [this](const QDBusMessage&) { createSession(); });
}

void PortalShortcut::createSession() {
    request(u"CreateSession"_s, {}, {{u"session_handle_token"_s, token}}, &PortalShortcut::bind);
}

void PortalShortcut::bind(const QVariantMap& results) {
    m_session = pathOf(results.value(u"session_handle"_s));
    const QList<PortalEntry> wanted{
        {m_shortcut.id, {{u"description"_s, m_shortcut.description}, {u"preferred_trigger"_s, m_shortcut.trigger}}}};
    const QString noWindow;
    request(
        u"BindShortcuts"_s, {QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(wanted), noWindow},
        {}, &PortalShortcut::takeBound);
}

void PortalShortcut::takeBound(const QVariantMap& results) {
    takeShortcuts(results.value(u"shortcuts"_s));
}

void PortalShortcut::takeShortcuts(const QVariant& shortcuts) {
    for (const PortalEntry& entry : qdbus_cast<QList<PortalEntry>>(shortcuts)) {
        if (entry.id == m_shortcut.id) {
            settle(State::bound, entry.values.value(u"trigger_description"_s).toString());
            return;
        }
    }
    settle(State::declined);
}

/// The answer is a signal of an object whose path follows from the name of the connection and the token.
void PortalShortcut::request(const QString& method, QVariantList arguments, QVariantMap options, Answered answered) {
    const QString handle = token + QString::number(++m_requests);
    options.insert(u"handle_token"_s, handle);
    arguments.append(options);
    m_request = path + u"/request/"_s + m_bus.uniqueName().remove(u':').replace(u'.', u'_') + u'/' + handle;
    m_answered = answered;
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, shortcuts, method);
    message.setArguments(arguments);
    m_bus.call(message, [this](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage) {
            m_request.clear();
            settle(m_session.isEmpty() ? State::unsupported : State::declined);
        }
    });
}

void PortalShortcut::responded(const QDBusMessage& message) {
    if (m_request.isEmpty() || message.path() != m_request) {
        return;
    }
    m_request.clear();
    constexpr uint done = 0;
    if (message.arguments().value(0).toUInt() != done) {
        settle(State::declined);
        return;
    }
    (this->*m_answered)(qdbus_cast<QVariantMap>(message.arguments().value(1)));
}

void PortalShortcut::activated(const QDBusMessage& message) {
    const QVariantList& words = message.arguments();
    if (pathOf(words.value(0)) == m_session && words.value(1).toString() == m_shortcut.id) {
        const auto options = qdbus_cast<QVariantMap>(words.value(3));
        m_handlers.pressed(options.value(u"activation_token"_s).toString());
    }
}

void PortalShortcut::changed(const QDBusMessage& message) {
    if (m_state != State::asking && pathOf(message.arguments().value(0)) == m_session) {
        takeShortcuts(message.arguments().value(1));
    }
}

void PortalShortcut::closed(const QDBusMessage& message) {
    if (!m_session.isEmpty() && message.path() == m_session) {
        m_session.clear();
        settle(State::declined);
    }
}

void PortalShortcut::settle(State state, const QString& trigger) {
    m_state = state;
    m_trigger = trigger;
    m_handlers.stateChanged();
}

} // namespace orv
