#include "OrvUI/Notifications.h"

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// One overload an event: whether it is wanted, and its texts.
struct Planner {
    const NotificationPrefs& prefs;

    std::optional<NotificationRequest> operator()(const ServiceReady& event) const {
        if (!prefs.ready) {
            return {};
        }
        const QString kind = title(event.id.kind);
        NotificationRequest request{
            event.project + u" is ready"_s, kind + u" is running."_s, event.id.projectID, std::nullopt};
        if (event.port) {
            const QString address = u"localhost:%1"_s.arg(*event.port);
            request.body = kind + u" is running on "_s + address + u'.';
            request.openURL = u"http://"_s + address;
        }
        return request;
    }
    std::optional<NotificationRequest> operator()(const ServiceCrashed& event) const {
        if (!prefs.crash) {
            return {};
        }
        return NotificationRequest{
            event.project + u" stopped unexpectedly"_s, title(event.id.kind) + u": "_s + event.reason,
            event.id.projectID, std::nullopt};
    }
    std::optional<NotificationRequest> operator()(const ProjectAdded& event) const {
        if (!prefs.added) {
            return {};
        }
        return NotificationRequest{
            event.name + u" was "_s + (event.cloned ? u"cloned"_s : u"created"_s),
            u"It's in your projects folder, ready to open."_s, event.path, std::nullopt};
    }
    std::optional<NotificationRequest> operator()(const AgentFinished& event) const {
        if (!prefs.agents) {
            return {};
        }
        const QString heading = event.success ? u" finished in "_s : u" couldn't finish in "_s;
        const QString withoutSummary = event.success ? u"The task is done."_s : u"It stopped before finishing."_s;
        return NotificationRequest{
            event.agent + heading + event.project, event.summary.isEmpty() ? withoutSummary : event.summary,
            event.projectID, std::nullopt};
    }
};

} // namespace

QString NotificationStatus::text() const {
    switch (kind) {
    case Kind::notDetermined:
        return u"Not asked yet"_s;
    case Kind::allowed:
        return server.isEmpty() ? u"Allowed in System Settings"_s : u"Shown by "_s + server;
    case Kind::denied:
        return u"Turned off in System Settings"_s;
    case Kind::unavailable:
        break;
    }
    return u"Nothing on this desktop shows notifications"_s;
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
