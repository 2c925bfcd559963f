#pragma once

#include "OrvCore/Settings.h"
#include "OrvProcess/ProcessManager.h"

#include <QUrl>

#include <functional>
#include <variant>

namespace orv {

struct ServiceReady {
    QString project; ///< its name
    ServiceID id;
    std::optional<int> port;
    bool isCorrection = false; ///< another port was told before

    bool operator==(const ServiceReady&) const = default;
};

/// A service ended without the user stopping it.
struct ServiceCrashed {
    QString project;
    ServiceID id;
    QString reason; ///< of its failed state

    bool operator==(const ServiceCrashed&) const = default;
};

struct ProjectAdded {
    QString name;
    QString path;
    bool cloned = false;

    bool operator==(const ProjectAdded&) const = default;
};

struct AgentFinished {
    QString project;
    QString projectID;
    QString agent; ///< its display name
    bool success = false;
    QString summary;

    bool operator==(const AgentFinished&) const = default;
};

using NotificationEvent = std::variant<ServiceReady, ServiceCrashed, ProjectAdded, AgentFinished>;

/// What the user wants to be told.
struct NotificationPrefs {
    bool enabled = false;
    bool ready = true;
    bool crash = true;
    bool added = true;
    bool onlyInBackground = true;
    bool agents = true;

    bool operator==(const NotificationPrefs&) const = default;
    [[nodiscard]] static NotificationPrefs of(const AppSettings& settings);
};

/// What of a project's page a notification is about.
struct NotificationPart {
    enum class Kind { overview, logs, agents, terminal };
    Kind kind = Kind::overview;
    QString key; ///< of the service, or the terminal's id

    bool operator==(const NotificationPart&) const = default;
};

struct NotificationRequest {
    QString title;
    QString body;
    std::optional<QString> projectID; ///< whose page a click shows
    std::optional<QString> openURL;   ///< what its button opens in the browser
    NotificationPart part = {};
    QString subject = {};  ///< what it is about; empty where no other one is to take its place
    bool replaces = false; ///< takes the place of the last one of its subject, where that is still shown

    bool operator==(const NotificationRequest&) const = default;
};

/// Whether the system shows notifications.
struct NotificationStatus {
    enum class Kind {
        notDetermined, ///< nobody has asked yet
        allowed,
        denied,
        unavailable, ///< nothing there that shows them
    };
    Kind kind = Kind::notDetermined;
    QString server; ///< the name of what shows them, where it is known

    bool operator==(const NotificationStatus&) const = default;
    /// The line under the switch of the settings.
    [[nodiscard]] QString text() const;
};

/// What the model posts through. Main thread; no function of it waits for anything.
class Notifying {
public:
    virtual ~Notifying() = default;
    virtual void post(const NotificationRequest& request) = 0;

    enum class Ask { systemOnly, userToo };
    /// `answer` is called once, on the main thread, perhaps much later; never when this dies first. Where the system
    /// wants it, the user is asked as well, if `ask` allows for that.
    virtual void findStatus(Ask ask, std::function<void(const NotificationStatus&)> answer) = 0;

    /// Called on the main thread with what was clicked.
    std::function<void(const QString& projectID, const NotificationPart& part)> projectClicked;
    std::function<void(const QUrl& address)> addressClicked;
};

namespace NotificationPlanner {
/// Whether an event becomes a notification, and with which texts. Pure.
[[nodiscard]] std::optional<NotificationRequest> request(
    const NotificationEvent& event, const NotificationPrefs& prefs, bool appIsActive);
} // namespace NotificationPlanner

/// Finds, from one look at the services to the next, what is worth an event: a service that can be reached for the
/// first time since it was started, and one that has failed without being asked to stop.
class ServiceTransitions {
public:
    struct Look {
        ServiceID id;
        ServiceState state;
        QString project;         ///< its name
        std::optional<int> port; ///< announced, or found listening
        bool wasUserStopped = false;
    };

    /// What has changed since the last call, in the order of the looks.
    [[nodiscard]] QList<NotificationEvent> update(const QList<Look>& looks);

private:
    struct Seen {
        ServiceState::Phase phase = ServiceState::Phase::stopped;
        bool isAnnounced = false; ///< that it is ready, since its start
    };
    QHash<ServiceID, Seen> m_seen;
};

} // namespace orv
