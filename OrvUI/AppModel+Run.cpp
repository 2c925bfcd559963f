#include "OrvCore/Async.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/ProcessSpawner.h"
#include "OrvUI/AppModel_p.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <csignal>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// No project's id ends like this: an id is a clean path.
constexpr QStringView installMark = u"//#install";

/// A target as it is to be started, and what has to be installed for it before (empty: nothing).
struct PreparedTarget {
    ServiceTarget target;
    QString installBody;
};

/// What there is to know before a run.
struct Preparation {
    QList<PreparedTarget> targets;
    OrphanedWork::Found orphans;
};

/// Looks at the disk.
QList<PreparedTarget> prepare(const RunRequest& request, InstallRecord& installs) {
    const auto& [project, kinds, flutterDevice] = request.wanted;
    QList<PreparedTarget> prepared;
    for (ServiceTarget target : request.targets()) {
        const bool wasInstalled = request.installed.contains(AppModel::installID(target, project.id));
        const bool needsInstall = !wasInstalled && installs.isInstallNeeded(target);
        QString installBody = needsInstall ? CommandBuilder::installBody(target) : QString();
        // A command of the user's own stays as it was written.
        if (target.kind == ServiceKind::flutter && flutterDevice && target.command.startsWith(u"cd ")) {
            target.command = CommandBuilder::command(target.kind, target.directory, target.framework, flutterDevice);
        }
        prepared.append({std::move(target), std::move(installBody)});
    }
    return prepared;
}

} // namespace

QList<ServiceTarget> RunRequest::targets() const {
    QList<ServiceTarget> selected;
    for (const ServiceTarget& target : wanted.project.targets) {
        const bool isMeant = only.isEmpty() || only.contains(ProcessManager::id(target, wanted.project.id));
        if (isMeant && wanted.kinds.contains(target.kind)) {
            selected.append(target);
        }
    }
    return selected;
}

ServiceID AppModel::installID(const ServiceTarget& target, const QString& projectID) {
    return ProcessManager::id(target, projectID + installMark.toString());
}

bool AppModel::isInstall(const ServiceID& id) {
    return id.projectID.endsWith(installMark);
}

QString AppModel::projectID(const ServiceID& id) {
    return isInstall(id) ? id.projectID.chopped(installMark.size()) : id.projectID;
}

QString AppModel::projectName(const ServiceID& id) const {
    const QString owner = projectID(id);
    const Project* known = project(owner);
    return known != nullptr ? known->name : QFileInfo(owner).fileName();
}

QList<ServiceID> AppModel::services(const Project& project) const {
    const auto place = [&](const ServiceID& id) {
        for (qsizetype i = 0; i < project.targets.size(); ++i) {
            if (ProcessManager::id(project.targets[i], id.projectID) == id) {
                return i;
            }
        }
        return project.targets.size();
    };
    QList<ServiceID> found;
    const auto& states = d->processes->states();
    for (auto entry = states.begin(); entry != states.end(); ++entry) {
        if (projectID(entry.key()) == project.id) {
            found.append(entry.key());
        }
    }
    std::ranges::sort(found, {}, [&](const ServiceID& id) {
        return std::tuple(isInstall(id), place(id), static_cast<int>(id.kind), id.directory);
    });
    return found;
}

QList<RunAction> AppModel::availableActions(const Project& project) {
    QList<RunAction> actions;
    for (const RunAction action : allRunActions) {
        const bool isAvailable =
            std::ranges::all_of(kinds(action), [&](ServiceKind kind) { return hasTarget(project, kind); });
        if (isAvailable) {
            actions.append(action);
        }
    }
    return actions;
}

std::optional<RunAction> AppModel::defaultAction(const Project& project) {
    return preferred(availableActions(project));
}

std::optional<RunAction> AppModel::preferred(const QList<RunAction>& actions) {
    if (actions.contains(RunAction::both)) {
        return RunAction::both;
    }
    return actions.isEmpty() ? std::nullopt : std::optional(actions.first());
}

QList<RunAction> AppModel::startableActions(const Project& project) const {
    Project idle = project;
    idle.targets.removeIf([&](const ServiceTarget& target) {
        return d->processes->state(ProcessManager::id(target, project.id)).isActive();
    });
    return availableActions(idle);
}

/// The device is known by its key among the devices; without one it is the project's.
QFuture<void> AppModel::run(
    const Project& project, const ServiceKinds& kinds, const std::optional<QString>& flutterDevice) {
    ORV_ASSERT_MAIN_THREAD();
    if (refusesWork()) {
        return finishedFuture();
    }
    RunRequest request{.wanted = {project, kinds, {}}, .since = d->stops.now()};
    const bool needsDevice = kinds.contains(ServiceKind::flutter) && hasTarget(project, ServiceKind::flutter);
    const auto key = flutterDevice || !needsDevice ? flutterDevice : d->devices.chosen(project.id);
    if (key) {
        request.wanted.flutterDevice = DevicesModel::deviceID(*key);
        request.deviceToBoot = DevicesModel::needsBoot(*key) ? *key : QString();
    }
    return run(request);
}

/// That takes its time, and says so. Nothing else waits for it: a setup session that was for this run is over. The
/// device comes up also when the project is stopped meanwhile, for another one may want it.
QFuture<void> AppModel::runOnChosenDevice(const RunRequest& request, const QString& key) {
    const Completion completion;
    if (request.isSetup) {
        endSetup();
    }
    const auto& devices = d->devices.rows();
    const auto row = std::ranges::find(devices, key, &DeviceRow::key);
    const QString title = row != devices.end() ? row->title : DeviceParsers::displayName(DevicesModel::deviceID(key));
    const StatusMessage starting{.text = tr("Getting %1 ready…").arg(title), .isOngoing = true};
    const QFuture<DeviceTools::Booted> ready = d->devices.ready(key);
    const QString projectID = request.wanted.project.id;
    if (!ready.isFinished()) {
        d->devices.await(projectID);
        setStatusMessage(starting);
    }
    const auto dismiss = [this, projectID, id = starting.id] {
        if (!d->devices.isAwaited(projectID) && d->statusMessage && d->statusMessage->id == id) {
            dismissStatusMessage();
        }
    };
    const QMetaObject::Connection waiting = connect(&d->devices, &DevicesModel::awaitedChanged, this, dismiss);
    onFinished(ready, this, [this, request, completion, waiting, projectID](const DeviceTools::Booted& device) {
        const bool isOff = d->stops.isOff(projectID, request.since);
        if (!isOff) { // what the project may wait for since its stop is another device
            d->devices.endAwaiting(projectID);
        }
        disconnect(waiting);
        if (isOff) {
            completion.finish();
            return;
        }
        if (!device) {
            refuse(device.error());
            completion.finish();
            return;
        }
        RunRequest onDevice = request;
        onDevice.isSetup = false;
        onDevice.deviceToBoot.clear();
        onDevice.wanted.flutterDevice = *device;
        onFinished(run(onDevice), this, [completion] { completion.finish(); });
    });
    return completion.future();
}

QFuture<void> AppModel::run(const RunRequest& request) {
    const Completion completion;
    if (request.targets().isEmpty() || d->isQuitting) {
        completion.finish();
        return completion.future();
    }
    const auto look = [request, installs = d->installs, records = d->processes->records()] {
        return Preparation{prepare(request, *installs), OrphanedWork::find(records)};
    };
    onFinished(runIn(d->workPool, look), this, [this, request, completion](const Preparation& preparation) {
        const QString& projectID = request.wanted.project.id;
        d->orphans->takeIn(preparation.orphans);
        QList<ServiceTarget> uninstalled;
        QStringList bodies;
        QList<ServiceTarget> ready;
        for (const auto& [target, installBody] : preparation.targets) {
            if (d->stops.isOff(ProcessManager::id(target, projectID), request.since)) {
                continue;
            }
            ready.append(target);
            if (!installBody.isEmpty()) {
                uninstalled.append(target);
                bodies.append(installBody);
            }
        }
        if (uninstalled.isEmpty()) {
            if (request.deviceToBoot.isEmpty() || ready.isEmpty()) {
                startWhenGone(request, ready, completion);
            } else {
                const QFuture<void> end = runOnChosenDevice(request, request.deviceToBoot);
                onFinished(end, this, [completion] { completion.finish(); });
            }
            return;
        }
        if (request.isSetup) {
            endSetup();
        }
        askForInstall(request, uninstalled, bodies);
        completion.finish();
    });
    return completion.future();
}

/// A service that is being stopped can't be started until it is gone, and a stack not until it is down. What an
/// application that was killed has left of it holds its port.
void AppModel::startWhenGone(
    const RunRequest& request, const QList<ServiceTarget>& targets, const Completion& completion) {
    QList<QFuture<void>> stops;
    for (const ServiceTarget& target : targets) {
        if (const ServiceID id = ProcessManager::id(target, request.wanted.project.id); d->processes->isStopping(id)) {
            stops.append(d->processes->stop(id));
        }
        stops.append(d->orphans->stop(ProcessManager::id(target, request.wanted.project.id)));
        stops.append(d->orphans->stop(installID(target, request.wanted.project.id)));
    }
    onFinished(whenAll(stops, this), this, [this, request, targets, completion] {
        // Whoever stopped the project has ended its setup too.
        if (!d->stops.isOff(request.wanted.project.id, request.since)) {
            if (request.isSetup) {
                endSetup();
            }
            start(request, targets);
        }
        completion.finish();
    });
}

void AppModel::start(const RunRequest& request, const QList<ServiceTarget>& targets) {
    const auto& [project, kinds, flutterDevice] = request.wanted;
    QList<ServiceTarget> wanted;
    for (const ServiceTarget& target : targets) {
        const ServiceID id = ProcessManager::id(target, project.id);
        if (d->stops.isOff(id, request.since)) {
            continue;
        }
        if (d->processes->state(id).isActive() && d->processes->wasUserStopped(id)) {
            refuse(tr("%1 has not stopped yet. Try again in a moment.").arg(project.name));
            return;
        }
        wanted.append(target);
    }
    if (wanted.isEmpty()) {
        return;
    }
    if (request.only.isEmpty()) { // one service that is started again is no choice of what to run
        const LastRun lastRun{project.id, rawValue(*runActionFrom(kinds))};
        changeSettings([lastRun](AppSettings& settings) { settings.lastRun = lastRun; });
        reportFailure(d->choices.setAction(project.id, lastRun.action));
    }
    for (const ServiceTarget& target : std::as_const(wanted)) {
        if (target.kind == ServiceKind::flutter) {
            d->flutterDevices.insert(project.id, flutterDevice);
        }
        d->processes->start(target, project.id);
    }
    publishSnapshot();
}

QFuture<void> AppModel::restart(const Project& project, const QList<ServiceID>& services) {
    ORV_ASSERT_MAIN_THREAD();
    if (services.isEmpty() || refusesWork()) {
        return finishedFuture();
    }
    RunRequest request{
        .wanted = {project, {}, d->flutterDevices.value(project.id)}, .since = d->stops.now(), .only = services};
    for (const ServiceID& id : services) {
        request.wanted.kinds.insert(id.kind);
        d->processes->stop(id);
    }
    return run(request);
}

QFuture<void> AppModel::stop(const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    d->stops.noteProject(project.id);
    d->devices.endAwaiting(project.id);
    if (isInstalling(project.id)) {
        stopSetup();
    }
    const QFuture<void> orphans = d->orphans->stopServices(project.id);
    return whenAll({stopServices(services(project)), orphans}, this);
}

QFuture<void> AppModel::stopService(const ServiceID& id) {
    ORV_ASSERT_MAIN_THREAD();
    d->stops.noteService(id);
    if (d->setupRunner != nullptr && d->setupRunner->currentStep() == id) {
        stopSetup();
    }
    const QFuture<void> orphans = d->orphans->stop(id);
    return whenAll({stopServices({id}), orphans}, this);
}

QFuture<void> AppModel::stopServices(const QList<ServiceID>& ids) {
    QList<QFuture<void>> stops;
    for (const ServiceID& id : ids) {
        stops.append(d->processes->stop(id));
    }
    return publishAfter(whenAll(stops, this));
}

QFuture<void> AppModel::stopAllServices() {
    ORV_ASSERT_MAIN_THREAD();
    d->stops.noteAll();
    for (const Project& project : std::as_const(d->projects)) {
        d->devices.endAwaiting(project.id);
    }
    stopSetup();
    return publishAfter(d->processes->stopAll());
}

OrphanedWork* AppModel::orphans() const {
    return d->orphans.get();
}

QFuture<void> AppModel::quit() {
    assign(this, d->isQuitting, true, &AppModel::isQuittingChanged);
    d->orphans->stop();
    return whenAll({stopAllServices(), stopAllAgents(), d->orphans->ends()}, this);
}

bool AppModel::isQuitting() const {
    return d->isQuitting;
}

bool AppModel::refusesWork() {
    if (d->isQuitting) {
        refuse(tr("OrvLauncher is quitting."));
    }
    return d->isQuitting;
}

QFuture<void> AppModel::publishAfter(const QFuture<void>& stops) {
    const Completion completion;
    onFinished(stops, this, [this, completion] {
        publishSnapshot();
        completion.finish();
    });
    return completion.future();
}

void AppModel::killServices() {
    ORV_ASSERT_MAIN_THREAD();
    for (const ServiceID& id : d->processes->states().keys()) {
        if (const auto group = d->processes->processID(id)) {
            ProcessSpawner::signalGroup(static_cast<pid_t>(*group), SIGKILL);
        }
    }
    d->agentRuns->kill();
}

void AppModel::endServices(std::chrono::milliseconds grace) {
    ORV_ASSERT_MAIN_THREAD();
    QList<pid_t> groups = d->agentRuns->groups();
    for (const pid_t group : std::as_const(groups)) {
        ProcessSpawner::signalGroup(group, SIGTERM);
    }
    for (const ServiceID& id : d->processes->states().keys()) {
        if (const auto group = d->processes->processID(id)) {
            groups.append(static_cast<pid_t>(*group));
            ProcessSpawner::signalGroup(groups.constLast(), SIGTERM);
        }
    }
    const QDeadlineTimer deadline(grace);
    while (std::ranges::any_of(groups, &ProcessSpawner::groupExists) && !deadline.hasExpired()) {
        QThread::msleep(10);
    }
    killServices();
}

QFuture<QList<FlutterDevice>> AppModel::flutterDevices() {
    return d->devices.listFlutter();
}

QList<FlutterDevice> AppModel::parseFlutterDevices(const QByteArray& listing) {
    return DeviceParsers::flutterDevices(listing);
}

} // namespace orv
