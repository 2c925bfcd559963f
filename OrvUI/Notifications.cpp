#include "OrvUI/Notifications.h"

#include "OrvUI/HomeModels.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(Notifications)
};

/// One overload an event: whether it is wanted, and its texts.
struct Planner {
    const NotificationPrefs& prefs;

    std::optional<NotificationRequest> operator()(const ServiceReady& event) const {
        if (!prefs.ready) {
            return {};
        }
        const QString kind = title(event.id.kind);
        NotificationRequest request{
            Words::tr("%1 is ready").arg(event.project), Words::tr("%1 is running.").arg(kind), event.id.projectID,
            std::nullopt};
        if (event.port) {
            const QString address = u"localhost:%1"_s.arg(*event.port);
            request.body = Words::tr("%1 is running on %2.").arg(kind, address);
            request.openURL = u"http://"_s + address;
        }
        request.subject = HomeModels::key(event.id);
        request.replaces = event.isCorrection;
        return request;
    }
    std::optional<NotificationRequest> operator()(const ServiceCrashed& event) const {
        if (!prefs.crash) {
            return {};
        }
        return NotificationRequest{
            Words::tr("%1 stopped unexpectedly").arg(event.project),
            title(event.id.kind) + u": "_s + event.reason,
            event.id.projectID,
            std::nullopt,
            {NotificationPart::Kind::logs, HomeModels::key(event.id)}};
    }
    std::optional<NotificationRequest> operator()(const ProjectAdded& event) const {
        if (!prefs.added) {
            return {};
        }
        return NotificationRequest{
            (event.cloned ? Words::tr("%1 was cloned") : Words::tr("%1 was created")).arg(event.name),
            Words::tr("It's in your projects folder, ready to open."), event.path, std::nullopt};
    }
    std::optional<NotificationRequest> operator()(const AgentFinished& event) const {
        if (!prefs.agents) {
            return {};
        }
        const QString heading = event.success ? Words::tr("%1 finished in %2") : Words::tr("%1 couldn't finish in %2");
        const QString withoutSummary =
            event.success ? Words::tr("The task is done.") : Words::tr("It stopped before finishing.");
        return NotificationRequest{
            heading.arg(event.agent, event.project),
            event.summary.isEmpty() ? withoutSummary : event.summary,
            event.projectID,
            std::nullopt,
            {NotificationPart::Kind::agents, {}}};
    }
};

} // namespace

QString NotificationStatus::text() const {
    switch (kind) {
    case Kind::notDetermined:
        return Words::tr("Not asked yet");
    case Kind::allowed:
        return server.isEmpty() ? Words::tr("Allowed in System Settings") : Words::tr("Shown by %1").arg(server);
    case Kind::denied:
        return Words::tr("Turned off in System Settings");
    case Kind::unavailable:
        break;
    }
    return Words::tr("Nothing on this desktop shows notifications");
}

NotificationPrefs NotificationPrefs::of(const AppSettings& settings) {
    return {
        .enabled = settings.notificationsEnabled,
        .ready = settings.notifyReady,
        .crash = settings.notifyCrash,
        .added = settings.notifyAdded,
        .onlyInBackground = settings.notifyOnlyInBackground,
        .agents = settings.notifyAgents};
}

std::optional<NotificationRequest> NotificationPlanner::request(
    const NotificationEvent& event, const NotificationPrefs& prefs, bool appIsActive) {
    if (!prefs.enabled || (prefs.onlyInBackground && appIsActive)) {
        return {};
    }
    return std::visit(Planner{prefs}, event);
}

QList<NotificationEvent> ServiceTransitions::update(const QList<Look>& looks) {
    QList<NotificationEvent> events;
    QHash<ServiceID, Seen> seen;
    for (const Look& look : looks) {
        const Seen before = m_seen.value(look.id);
        const auto phase = look.state.phase;
        // One that never says where it listens stays "starting"; that it was found listening is as good.
        const bool isUp = look.state.isActive() && look.port;
        Seen now{.phase = phase, .isAnnounced = look.state.isActive() && before.isAnnounced};
        if (isUp && !before.isAnnounced) {
            events.append(ServiceReady{look.project, look.id, look.port});
            now.isAnnounced = true;
        }
        if (phase == ServiceState::Phase::failed && before.phase != phase && !look.wasUserStopped) {
            events.append(ServiceCrashed{look.project, look.id, look.state.message});
        }
        seen.insert(look.id, now);
    }
    m_seen = std::move(seen);
    return events;
}

} // namespace orv
