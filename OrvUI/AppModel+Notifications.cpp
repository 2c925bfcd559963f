#include "OrvCore/Async.h"
#include "OrvUI/AppModel_p.h"

#include <QTimer>

namespace orv {

using namespace std::chrono_literals;

namespace {

/// For so long a port that no output names may still turn out to be a tool's, and not the service's.
constexpr std::chrono::milliseconds untilTrusted = 3s;

} // namespace

void AppModel::post(const NotificationEvent& event) {
    ORV_ASSERT_MAIN_THREAD();
    const auto prefs = NotificationPrefs::of(d->settings->settings());
    if (const auto request = NotificationPlanner::request(event, prefs, d->appIsActive && d->appIsActive())) {
        notify(*request);
    }
}

void AppModel::notify(const NotificationRequest& request) {
    ORV_ASSERT_MAIN_THREAD();
    if (d->notifier) {
        d->notifier->post(request);
    }
}

bool AppModel::Private::tellsFailure(bool isAside, bool AppSettings::* wanted) const {
    const AppSettings now = settings->settings();
    const bool isInFront = appIsActive && appIsActive();
    return now.notificationsEnabled && now.*wanted && (!isInFront || (isAside && !now.notifyOnlyInBackground));
}

/// An install that ends is part of a run that the user looks at, and no event of its own. A port that was only found
/// listening is told when nothing better has come for a while; if it comes later, that is told in its place.
void AppModel::postTransitions() {
    QList<ServiceTransitions::Look> looks;
    QList<ServiceReady> corrections;
    const auto& states = d->processes->states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        const ServiceID& id = entry.key();
        if (isInstall(id)) {
            continue;
        }
        PortGuesses::Verdict verdict;
        if (entry->isActive()) {
            const std::optional<int> port = addressPort(id);
            verdict = d->portGuesses.look(id, port, d->addresses.value(id).isGuess);
            if (verdict.isToBeTrusted) {
                QTimer::singleShot(untilTrusted, this, [this, id, port] {
                    d->portGuesses.trust(id, *port);
                    postTransitions();
                });
            }
        } else {
            d->portGuesses.forget(id);
        }
        if (verdict.isCorrection) {
            corrections.append({projectName(id), id, verdict.port, true});
        }
        looks.append({id, *entry, projectName(id), verdict.port, d->processes->wasUserStopped(id)});
    }
    for (const NotificationEvent& event : d->transitions.update(looks)) {
        post(event);
    }
    for (const ServiceReady& correction : corrections) {
        post(correction);
    }
}

void AppModel::openFromNotification(const QString& projectID, const NotificationPart& part) {
    ORV_ASSERT_MAIN_THREAD();
    if (project(projectID) != nullptr) {
        setPage({.kind = AppPage::Kind::project, .id = projectID});
        switch (part.kind) {
        case NotificationPart::Kind::overview:
            setDetailTab(DetailTab::overview);
            break;
        case NotificationPart::Kind::logs:
            setDetailTab(DetailTab::logs);
            d->logs->show(part.key);
            break;
        case NotificationPart::Kind::agents:
            setAiPanelProjectID(projectID);
            break;
        case NotificationPart::Kind::terminal:
            setDetailTab(DetailTab::terminal);
            d->terminals->select(QUuid(part.key));
            break;
        }
    } else if (part.kind == NotificationPart::Kind::agents) {
        setPage({.kind = AppPage::Kind::ai, .id = {}}); // where the runs of a project that is gone are, too
    }
    showMainWindow();
}

const NotificationStatus& AppModel::notificationStatus() const {
    return d->notificationStatus;
}

QFuture<void> AppModel::setNotificationsEnabled(bool isOn) {
    ORV_ASSERT_MAIN_THREAD();
    if (isOn != d->settings->settings().notificationsEnabled) {
        changeSettings([isOn](AppSettings& settings) { settings.notificationsEnabled = isOn; });
    }
    return isOn ? findNotificationStatus(Notifying::Ask::userToo) : finishedFuture();
}

QFuture<void> AppModel::refreshNotificationStatus() {
    ORV_ASSERT_MAIN_THREAD();
    return findNotificationStatus(Notifying::Ask::systemOnly);
}

QFuture<void> AppModel::findNotificationStatus(Notifying::Ask ask) {
    const Completion completion;
    const auto take = [this, completion](const NotificationStatus& status) {
        assign(this, d->notificationStatus, status, &AppModel::notificationStatusChanged);
        completion.finish();
    };
    if (d->notifier) {
        d->notifier->findStatus(ask, take);
    } else {
        take({NotificationStatus::Kind::unavailable, {}});
    }
    return completion.future();
}

LaunchAtLogin* AppModel::login() const {
    return &d->login;
}

bool AppModel::needsOnboarding() const {
    return !d->settings->settings().onboardingCompleted;
}

void AppModel::skipOnboarding() {
    ORV_ASSERT_MAIN_THREAD();
    changeSettings([](AppSettings& settings) { settings.onboardingCompleted = true; });
}

void AppModel::startOnboarding() {
    ORV_ASSERT_MAIN_THREAD();
    d->onboarding->loadExisting();
    changeSettings([](AppSettings& settings) { settings.onboardingCompleted = false; });
}

} // namespace orv
