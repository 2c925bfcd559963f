#include "OrvCore/Async.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/PortParser.h"
#include "OrvUI/AppModel_p.h"
#include "OrvUI/ServiceTitle.h"

#include <QDir>
#include <QRegularExpression>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype outputLines = 6;

/// From the project's folder to one in it: "cd web && "; empty when it is that.
QString changeTo(const Project& project, const QString& wanted) {
    if (wanted == project.root) {
        return {};
    }
    static const QRegularExpression plain(u"^[A-Za-z0-9._/@-]+$"_s);
    const QString folder = QDir(project.root).relativeFilePath(wanted);
    const bool isPlain = plain.match(folder).hasMatch();
    return u"cd "_s + (isPlain ? folder : CommandBuilder::quote(folder)) + u" && "_s;
}

/// As a person would type it in the project's folder: "cd web && npm install".
QString shownCommand(const Project& project, const CommandBuilder::InstallPlace& place) {
    return changeTo(project, place.folder) + place.command;
}

/// What is typed runs in the folder of each step. Whoever typed it as it is shown has the folder in it: without it
/// then.
std::optional<QString> withoutFolder(
    const Project& project, const QList<CommandBuilder::InstallPlace>& places, const QString& typed) {
    for (const CommandBuilder::InstallPlace& place : places) {
        const QString change = changeTo(project, place.folder);
        if (!change.isEmpty() && typed.startsWith(change)) {
            return typed.sliced(change.size());
        }
    }
    return {};
}

} // namespace

bool AppModel::isInstalling(const QString& projectID) const {
    return d->setup && d->setup->project.id == projectID && d->setup->phase.kind == SetupSession::Phase::Kind::running;
}

void AppModel::askForInstall(
    const RunRequest& request, const QList<ServiceTarget>& targets, const QStringList& installBodies) {
    const PendingInstall& pending = request.wanted;
    if (d->setup && d->setup->phase.kind == SetupSession::Phase::Kind::running) {
        if (d->setup->project.id == pending.project.id) {
            setSetupAside(false);
            showMainWindow(); // it is being installed already
        } else {
            refuse(tr("Finish setting up %1 first.").arg(d->setup->project.name));
        }
        return;
    }
    if (d->setup && d->setup->project.id != pending.project.id) {
        if (d->setup->phase.kind == SetupSession::Phase::Kind::confirm) {
            refuse(tr("Finish setting up %1 first.").arg(d->setup->project.name));
            return;
        }
        // Nobody has read it yet, or it is taken from under the eyes.
        report(tr("Setting up %1 stopped: %2").arg(d->setup->project.name, d->setup->phase.reason), true);
    }
    SetupSession session{pending.project, {}, {}};
    SetupPlan plan{request, {}};
    QList<CommandBuilder::InstallPlace> places;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        const auto place = CommandBuilder::installPlace(targets[i].directory, installBodies[i]);
        if (const qsizetype same = places.indexOf(place); same >= 0) {
            plan.targets[same].append(targets[i]);
            continue;
        }
        places.append(place);
        plan.targets.append({targets[i]});
        session.steps.append(
            {installID(targets[i], pending.project.id),
             serviceTitle({pending.project.id, targets[i].kind, targets[i].directory}, &pending.project),
             shownCommand(pending.project, place), SetupStep::Status::pending});
    }
    plan.places = places;
    d->setupPlan = plan;
    setInstallCommandOverride({});
    setPendingInstall(pending);
    setSetup(session);
    showMainWindow();
}

QFuture<void> AppModel::confirmInstall() {
    ORV_ASSERT_MAIN_THREAD();
    if (refusesWork()) {
        return finishedFuture();
    }
    if (d->setupCompletion) {
        return d->setupCompletion->future();
    }
    const bool isNewTry = d->setup && d->setup->phase.kind == SetupSession::Phase::Kind::failed;
    if (!d->pendingInstall && !isNewTry) {
        return finishedFuture();
    }
    setPendingInstall({});
    SetupSession session = *d->setup;
    session.phase = {SetupSession::Phase::Kind::running, {}};
    const std::optional<QString>& typed = d->installCommandOverride;
    const auto inPlace = typed ? withoutFolder(session.project, d->setupPlan->places, *typed) : std::nullopt;
    QList<SetupRunner::Step> steps;
    for (qsizetype i = 0; i < session.steps.size(); ++i) {
        SetupStep& step = session.steps[i];
        const QList<ServiceTarget>& targets = d->setupPlan->targets[i];
        const QString folder = targets.constFirst().directory;
        CommandBuilder::InstallPlace place = d->setupPlan->places[i];
        std::optional<QString> override;
        if (typed) {
            place = {inPlace ? place.folder : folder, inPlace.value_or(*typed)};
            const bool isElsewhere = place.folder != folder;
            override = isElsewhere ? u"cd "_s + CommandBuilder::quote(place.folder) + u" && "_s + place.command
                                   : place.command;
        }
        if (std::exchange(step.status, SetupStep::Status::pending) != SetupStep::Status::done) {
            step.command = shownCommand(session.project, place);
        }
        steps.append({step.id, targets, override});
    }
    d->setupPlan->request.since = d->stops.now();
    setSetup(session);
    d->setupCompletion.emplace();
    d->setupRunner = new SetupRunner({*d->processes, d->installs, d->workPool}, steps, this);
    connect(d->setupRunner, &SetupRunner::stepChanged, this, [this](qsizetype index, SetupStep::Status status) {
        SetupSession changed = *d->setup;
        changed.steps[index].status = status;
        setSetup(changed);
    });
    connect(d->setupRunner, &SetupRunner::finished, this, &AppModel::setupEnded);
    const QFuture<void> end = d->setupCompletion->future();
    // An install that an application which was killed has left writes into the same folder.
    QList<QFuture<void>> left;
    for (const QList<ServiceTarget>& targets : std::as_const(d->setupPlan->targets)) {
        for (const ServiceTarget& target : targets) {
            left.append(d->orphans->stop(installID(target, session.project.id)));
        }
    }
    onFinished(whenAll(left, this), d->setupRunner, [runner = d->setupRunner] { runner->start(); });
    return end;
}

void AppModel::setupEnded(const QString& reason) {
    SetupRunner* runner = std::exchange(d->setupRunner, nullptr);
    runner->deleteLater();
    if (!reason.isEmpty()) {
        SetupSession session = *d->setup;
        session.phase = {SetupSession::Phase::Kind::failed, reason};
        setSetup(session);
        if (!runner->isStopped() && d->tellsFailure(d->isSetupAside, &AppSettings::notifyCrash)) {
            notify(
                {.title = tr("Setting up %1 stopped").arg(session.project.name),
                 .body = reason,
                 .projectID = session.project.id,
                 .openURL = {},
                 .part = {NotificationPart::Kind::logs, HomeModels::key(*runner->currentStep())}});
        }
        std::exchange(d->setupCompletion, {})->finish();
        return;
    }
    RunRequest request = d->setupPlan->request;
    if (d->stops.isOff(request.wanted.project.id, request.since)) {
        cancelInstall(); // stopped when its last step was done already
        return;
    }
    request.isSetup = true;
    for (const QList<ServiceTarget>& targets : std::as_const(d->setupPlan->targets)) {
        for (const ServiceTarget& target : targets) {
            request.installed.insert(installID(target, request.wanted.project.id));
        }
    }
    runInstalled(request, *d->setupCompletion);
}

/// The services start as the project is found now: an install may have made the very interpreter that they run with.
/// The session stays on the screen until then.
void AppModel::runInstalled(const RunRequest& request, const Completion& completion) {
    const QString id = request.wanted.project.id;
    ProjectScanner scanner;
    scanner.overrides = d->overrides;
    // What no scan came by may lie outside the scanned folder, or too deep in it.
    const QString scanRoot = project(id) != nullptr ? d->settings->settings().scanRoot : QString();
    const auto look = [scanner, id, scanRoot] { return scanner.project(id, scanRoot); };
    onFinished(runIn(d->workPool, look), this, [this, request, completion](const std::optional<Project>& found) {
        if (d->stops.isOff(request.wanted.project.id, request.since)) {
            completion.finish();
            return;
        }
        rescan(); // what the screens show of it
        RunRequest again = request;
        again.wanted.project = found.value_or(Project());
        if (again.targets().isEmpty()) {
            endSetup();
            report(
                (found ? tr("%1 has nothing of that kind any more.") : tr("%1 is gone from your projects folder."))
                    .arg(request.wanted.project.name),
                true);
            completion.finish();
            return;
        }
        onFinished(run(again), this, [completion] { completion.finish(); });
    });
}

bool AppModel::isSetupAside() const {
    return d->isSetupAside;
}

void AppModel::setSetupAside(bool isAside) {
    const bool canBeAside = d->setup && d->setup->phase.kind != SetupSession::Phase::Kind::confirm;
    assign(this, d->isSetupAside, isAside && canBeAside, &AppModel::setupChanged);
}

void AppModel::stopSetup() {
    if (d->setupRunner != nullptr) {
        d->setupRunner->stop();
    } else if (d->setup && isInstalling(d->setup->project.id)) {
        cancelInstall();
    }
}

void AppModel::cancelInstall() {
    ORV_ASSERT_MAIN_THREAD();
    if (SetupRunner* runner = std::exchange(d->setupRunner, nullptr)) {
        runner->disconnect(this);
        connect(runner, &SetupRunner::finished, runner, &QObject::deleteLater);
        runner->stop();
    }
    if (d->setup && isInstalling(d->setup->project.id)) {
        d->stops.noteProject(d->setup->project.id);
    }
    const auto completion = d->setupCompletion;
    setPendingInstall({});
    endSetup();
    if (completion) {
        completion->finish();
    }
}

void AppModel::endSetup() {
    d->setupPlan.reset();
    d->setupCompletion.reset();
    setSetup({});
    setInstallCommandOverride({});
}

std::optional<QString> AppModel::setupLastLine() const {
    const QStringList output = setupOutput();
    return output.isEmpty() ? std::nullopt : std::optional(output.last());
}

QStringList AppModel::setupOutput() const {
    if (!d->setup) {
        return {};
    }
    const auto step = std::ranges::find_if(d->setup->steps, [](const SetupStep& candidate) {
        return candidate.status == SetupStep::Status::running || candidate.status == SetupStep::Status::failed;
    });
    QStringList lines;
    if (step == d->setup->steps.end()) {
        return lines;
    }
    const LogBuffer& log = d->processes->log(step->id);
    for (auto line = log.rbegin(); line != log.rend() && lines.size() < outputLines; ++line) {
        if (const QString shown = PortParser::stripANSI(*line).trimmed(); !shown.isEmpty()) {
            lines.prepend(shown);
        }
    }
    return lines;
}

} // namespace orv
