#include "OrvCore/Async.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvUI/AppModel_p.h"
#include "OrvUI/FlutterDevices.h"
#include "OrvUI/ServicesEnd.h"

#include <QFileInfo>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// No project's id ends like this: an id is a clean path.
constexpr QStringView installMark = u"//#install";

QList<ServiceTarget> targetsOf(const Project& project, const ServiceKinds& kinds) {
    QList<ServiceTarget> selected;
    for (const ServiceTarget& target : project.targets) {
        if (kinds.contains(target.kind)) {
            selected.append(target);
        }
    }
    return selected;
}

/// A target as it is to be started, and what has to be installed for it before (empty: nothing).
struct PreparedTarget {
    ServiceTarget target;
    QString installBody;
};

/// Looks at the disk.
QList<PreparedTarget> prepare(
    const QList<ServiceTarget>& targets, const std::optional<QString>& flutterDevice, InstallRecord& installs) {
    QList<PreparedTarget> prepared;
    for (ServiceTarget target : targets) {
        QString installBody;
        if (CommandBuilder::needsInstall(target)) {
            installBody = CommandBuilder::installBody(target);
            if (installs.covers(target.directory, installBody)) {
                installBody.clear();
            }
        }
        // A command of the user's own stays as it was written.
        if (target.kind == ServiceKind::flutter && flutterDevice && target.command.startsWith(u"cd ")) {
            target.command = CommandBuilder::command(target.kind, target.directory, target.framework, flutterDevice);
        }
        prepared.append({std::move(target), std::move(installBody)});
    }
    return prepared;
}

} // namespace

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
    const QList<RunAction> actions = availableActions(project);
    if (actions.contains(RunAction::both)) {
        return RunAction::both;
    }
    return actions.isEmpty() ? std::nullopt : std::optional(actions.first());
}

QFuture<void> AppModel::run(
    const Project& project, const ServiceKinds& kinds, const std::optional<QString>& flutterDevice) {
    ORV_ASSERT_MAIN_THREAD();
    const QList<ServiceTarget> targets = targetsOf(project, kinds);
    if (targets.isEmpty()) {
        return finishedFuture();
    }
    const Completion completion;
    const int stopCount = d->stopCount(project.id);
    const auto look = [targets, flutterDevice, installs = d->installs] {
        return prepare(targets, flutterDevice, *installs);
    };
    const PendingInstall wanted{project, kinds, flutterDevice};
    onFinished(
        runIn(d->workPool, look), this, [this, wanted, stopCount, completion](const QList<PreparedTarget>& prepared) {
            QList<ServiceTarget> uninstalled;
            QStringList bodies;
            QList<ServiceTarget> ready;
            for (const auto& [target, installBody] : prepared) {
                ready.append(target);
                if (!installBody.isEmpty()) {
                    uninstalled.append(target);
                    bodies.append(installBody);
                }
            }
            if (d->stopCount(wanted.project.id) != stopCount) {
                completion.finish();
            } else if (!uninstalled.isEmpty()) {
                askForInstall(wanted, uninstalled, bodies);
                completion.finish();
            } else {
                startWhenGone(wanted, ready, stopCount, completion);
            }
        });
    return completion.future();
}

/// A service that is being stopped can't be started until it is gone.
void AppModel::startWhenGone(
    const PendingInstall& wanted, const QList<ServiceTarget>& targets, int stopCount, const Completion& completion) {
    QList<ServiceID> leaving;
    for (const ServiceTarget& target : targets) {
        const ServiceID id = ProcessManager::id(target, wanted.project.id);
        if (d->processes->state(id).isActive() && d->processes->wasUserStopped(id)) {
            leaving.append(id);
        }
    }
    whenEnded(*d->processes, leaving, this, [this, wanted, targets, stopCount, completion](bool haveEnded) {
        if (!haveEnded) {
            report(wanted.project.name + u" has not stopped yet. Try again in a moment."_s, true);
        } else if (d->stopCount(wanted.project.id) == stopCount) {
            const LastRun lastRun{wanted.project.id, rawValue(*runActionFrom(wanted.kinds))};
            changeSettings([lastRun](AppSettings& settings) { settings.lastRun = lastRun; });
            for (const ServiceTarget& target : targets) {
                d->processes->start(target, wanted.project.id);
            }
            publishSnapshot();
        }
        completion.finish();
    });
}

QFuture<void> AppModel::restart(const Project& project, const ServiceKinds& kinds) {
    ORV_ASSERT_MAIN_THREAD();
    for (const ServiceID& id : services(project)) {
        if (!isInstall(id) && kinds.contains(id.kind)) {
            d->processes->stop(id);
        }
    }
    return run(project, kinds);
}

QFuture<void> AppModel::toggleRun(const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    const bool isUp = std::ranges::any_of(
        services(project), [this](const ServiceID& id) { return d->processes->state(id).isActive(); });
    if (isUp) {
        return stop(project);
    }
    const std::optional<RunAction> action = defaultAction(project);
    return action ? run(project, kinds(*action)) : finishedFuture();
}

QFuture<void> AppModel::stop(const Project& project) {
    ORV_ASSERT_MAIN_THREAD();
    ++d->stopCounts[project.id];
    return stopServices(services(project));
}

QFuture<void> AppModel::stopService(const ServiceID& id) {
    ORV_ASSERT_MAIN_THREAD();
    return stopServices({id});
}

QFuture<void> AppModel::stopServices(const QList<ServiceID>& ids) {
    const Completion completion;
    const auto remaining = std::make_shared<qsizetype>(ids.size());
    const auto oneIsGone = [this, remaining, completion] {
        if (--*remaining <= 0) {
            publishSnapshot();
            completion.finish();
        }
    };
    if (ids.isEmpty()) {
        oneIsGone();
    }
    for (const ServiceID& id : ids) {
        onFinished(d->processes->stop(id), this, oneIsGone);
    }
    return completion.future();
}

QFuture<void> AppModel::stopAllServices() {
    ORV_ASSERT_MAIN_THREAD();
    ++d->stopAllCount;
    const Completion completion;
    onFinished(d->processes->stopAll(), this, [this, completion] {
        publishSnapshot();
        completion.finish();
    });
    return completion.future();
}

QFuture<QList<FlutterDevice>> AppModel::flutterDevices() {
    ORV_ASSERT_MAIN_THREAD();
    return runIn(d->workPool, [isEnding = &d->isEnding] { return FlutterDevices::list(30s, *isEnding); });
}

QList<FlutterDevice> AppModel::parseFlutterDevices(const QByteArray& listing) {
    return FlutterDevices::parse(listing);
}

} // namespace orv
