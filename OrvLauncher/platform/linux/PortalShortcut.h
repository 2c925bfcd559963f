#pragma once

#include "OrvLauncher/platform/linux/BusConnection.h"

#include <chrono>
#include <cstdint>

namespace orv {

/// A key that the desktop gives to the application and that the user may change there: a client of
/// org.freedesktop.portal.GlobalShortcuts (XDG Desktop Portal). Asked for when this is made; given back with the
/// connection, when this dies. Main thread.
class PortalShortcut : public QObject {
    Q_OBJECT
public:
    struct Shortcut {
        QString id;
        QString description; ///< for the user, whom the desktop may ask
        QString trigger;     ///< the wanted key, as freedesktop.org writes shortcuts: "CTRL+ALT+LOGO+l"
    };
    struct Handlers {
        /// `activation`: by which the desktop lets a window come to the front; may be empty.
        std::function<void(const QString& activation)> pressed;
        std::function<void()> stateChanged;
    };
    /// `busAddress`: of another bus than the session's. `limit`: of a call; what the user is asked takes as long as he
    /// takes.
    PortalShortcut(
        Shortcut shortcut, Handlers handlers, QString busAddress = {},
        std::chrono::milliseconds limit = std::chrono::seconds(5));

    enum class State : std::uint8_t { asking, bound, declined, unsupported };
    [[nodiscard]] State state() const { return m_state; }
    /// The key that it is bound to, in the desktop's words; empty where it does not say.
    [[nodiscard]] QString trigger() const { return m_trigger; }

private Q_SLOTS:
    void responded(const QDBusMessage& message);
    void activated(const QDBusMessage& message);
    void changed(const QDBusMessage& message);
    void closed(const QDBusMessage& message);

private:
    using Answered = void (PortalShortcut::*)(const QVariantMap& results);

    void takeBus(bool isOpen);
    void createSession();
    void bind(const QVariantMap& results);
    void takeBound(const QVariantMap& results);
    void takeShortcuts(const QVariant& shortcuts);
    void request(const QString& method, QVariantList arguments, QVariantMap options, Answered answered);
    void settle(State state, const QString& trigger = {});

    const Shortcut m_shortcut;
    const Handlers m_handlers;
    BusConnection m_bus;
    State m_state = State::asking;
    QString m_trigger;
    QString m_request; ///< the path of the one that is under way; empty when there is none
    Answered m_answered = nullptr;
    int m_requests = 0;
    QString m_session; ///< its path; empty before there is one
};

} // namespace orv
