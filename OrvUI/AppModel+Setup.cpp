#include "OrvCore/Async.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/PortParser.h"
#include "OrvUI/AppModel_p.h"

#include <QDir>
#include <QRegularExpression>

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype outputLines = 6;

/// As a person would type it in the project's folder: "cd web && npm install".
QString shownCommand(const Project& project, const ServiceTarget& target, const QString& installBody) {
    if (target.directory == project.root) {
        return installBody;
    }
    static const QRegularExpression plain(u"^[A-Za-z0-9._/@-]+$"_s);
    const QString folder = QDir(project.root).relativeFilePath(target.directory);
    const bool isPlain = plain.match(folder).hasMatch();
    return u"cd "_s + (isPlain ? folder : CommandBuilder::quote(folder)) + u" && "_s + installBody;
}

} // namespace

void AppModel::askForInstall(
    const PendingInstall& pending, const QList<ServiceTarget>& targets, const QStringList& installBodies) {
    if (d->setup && d->setup->phase.kind == SetupSession::Phase::Kind::running) {
        if (d->setup->project.id == pending.project.id) {
            showMainWindow(); // it is being installed already
        } else {
            report(u"Finish setting up "_s + d->setup->project.name + u" first."_s, true);
        }
        return;
    }
    SetupSession session{pending.project, {}, {}};
    for (qsizetype i = 0; i < targets.size(); ++i) {
        session.steps.append(
            {installID(targets[i], pending.project.id), title(targets[i].kind),
             shownCommand(pending.project, targets[i], installBodies[i]), SetupStep::Status::pending});
    }
    d->setupPlan = SetupPlan{pending, targets};
    setInstallCommandOverride({});
    setPendingInstall(pending);
    setSetup(session);
    showMainWindow();
}

QFuture<void> AppModel::confirmInstall() {
    ORV_ASSERT_MAIN_THREAD();
    if (d->setupRunner != nullptr) {
        return d->setupCompletion->future();
    }
    const bool isNewTry = d->setup && d->setup->phase.kind == SetupSession::Phase::Kind::failed;
    if (!d->pendingInstall && !isNewTry) {
        return finishedFuture();
    }
    setPendingInstall({});
    SetupSession session = *d->setup;
    session.phase = {SetupSession::Phase::Kind::running, {}};
    QList<SetupRunner::Step> steps;
    for (qsizetype i = 0; i < session.steps.size(); ++i) {
        session.steps[i].status = SetupStep::Status::pending;
        steps.append({session.steps[i].id, d->setupPlan->targets[i]});
    }
    setSetup(session);
    d->setupCompletion.emplace();
    d->setupRunner = new SetupRunner({*d->processes, d->installs, d->workPool}, steps, d->installCommandOverride, this);
    connect(d->setupRunner, &SetupRunner::stepChanged, this, [this](qsizetype index, SetupStep::Status status) {
        SetupSession changed = *d->setup;
        changed.steps[index].status = status;
        setSetup(changed);
    });
    connect(d->setupRunner, &SetupRunner::finished, this, &AppModel::setupEnded);
    const QFuture<void> end = d->setupCompletion->future();
    d->setupRunner->start();
    return end;
}

void AppModel::setupEnded(const QString& reason) {
    std::exchange(d->setupRunner, nullptr)->deleteLater();
    if (!reason.isEmpty()) {
        SetupSession session = *d->setup;
        session.phase = {SetupSession::Phase::Kind::failed, reason};
        setSetup(session);
        std::exchange(d->setupCompletion, {})->finish();
        return;
    }
    const PendingInstall pending = d->setupPlan->pending;
    d->setupPlan.reset();
    setSetup({});
    setInstallCommandOverride({});
    runInstalled(pending, *std::exchange(d->setupCompletion, {}));
}

/// The services start as the project is found now: an install may have made the very interpreter that they run with.
void AppModel::runInstalled(const PendingInstall& pending, const Completion& completion) {
    const auto start = [this, pending, completion](const std::optional<Project>& found) {
        if (!found) {
            report(pending.project.name + u" is gone from your projects folder."_s, true);
            completion.finish();
            return;
        }
        onFinished(run(*found, pending.kinds, pending.flutterDevice), this, [completion] { completion.finish(); });
    };
    rescan();
    onFinished(refresh(), this, [this, start, id = pending.project.id] {
        if (const Project* found = project(id)) {
            start(*found);
            return;
        }
        // It may lie outside the scanned folder.
        ProjectScanner scanner;
        scanner.overrides = d->overrides;
        onFinished(runIn(d->workPool, [scanner, id] { return scanner.project(id); }), this, start);
    });
}

void AppModel::cancelInstall() {
    ORV_ASSERT_MAIN_THREAD();
    if (SetupRunner* runner = std::exchange(d->setupRunner, nullptr)) {
        runner->disconnect(this);
        runner->stop();
        runner->deleteLater();
    }
    d->setupPlan.reset();
    setPendingInstall({});
    setSetup({});
    setInstallCommandOverride({});
    if (const auto completion = std::exchange(d->setupCompletion, {})) {
        completion->finish();
    }
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
