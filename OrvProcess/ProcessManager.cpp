#include "OrvProcess/ProcessManager.h"

#include "OrvCore/Async.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/ChildRecords.h"
#include "OrvProcess/DeliveryTurns.h"
#include "OrvProcess/GroupTermination.h"
#include "OrvProcess/LimitedCommand.h"
#include "OrvProcess/PortParser.h"
#include "OrvProcess/PortWatch.h"
#include "OrvProcess/ProcessReader.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHashFunctions>
#include <QPointer>
#include <QProcessEnvironment>
#include <QSet>
#include <QThreadPool>

#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// One live process of a service. Its parts are children of the manager.
struct Run {
    ProcessReader* reader = nullptr;
    PortWatch* ports = nullptr;
    std::shared_ptr<ChildRecords::Note> note;
};

QString exitMessage(int code, const LogBuffer& log) {
    QString message = ProcessManager::tr("Exited with code %1").arg(code);
    for (auto line = log.rbegin(); line != log.rend(); ++line) {
        if (const QString shown = PortParser::stripANSI(*line).trimmed(); !shown.isEmpty()) {
            message += u": "_s + shown;
            break;
        }
    }
    return message;
}

} // namespace

struct ProcessManager::Private {
    ProcessManager* q;
    std::chrono::milliseconds killTimeout;
    std::function<void()> onChange;
    std::function<QString(const QString&)> dockerStopCommand;
    std::chrono::milliseconds dockerLimit = dockerStopLimit;

    QHash<ServiceID, ServiceState> states;
    QHash<ServiceID, std::shared_ptr<LogBuffer>> logs; ///< each where it is, however many join it
    QHash<ServiceID, Run> runs;                        ///< services with a live process
    QHash<ServiceID, QPointer<GroupTermination>> terminations;
    QHash<ServiceID, int> fixedPorts;
    QSet<ServiceID> stopRequested;
    QSet<ServiceID> userStopped;
    ChildRecords records;
    QThreadPool portPool;
    DeliveryTurns turns;

    [[nodiscard]] std::expected<SpawnedProcess, SpawnError> spawn(const ServiceTarget& target, const QString& mark);
    [[nodiscard]] std::shared_ptr<ChildRecords::Note> note(
        const ServiceTarget& target, const QString& projectID, const QString& mark, pid_t pid) const;
    /// Takes a Docker service's stack down; finished at once for any other.
    [[nodiscard]] QFuture<void> stackStop(ServiceKind kind, const QString& folder);

    /// False when the manager is gone afterwards.
    bool setState(const ServiceID& id, const ServiceState& state);
    void append(const ServiceID& id, const ProcessReader* reader, const LineQueue::Taken& taken);
    void handleExit(const ServiceID& id, ProcessReader* reader, int code);
    [[nodiscard]] bool isCurrent(const ServiceID& id, const ProcessReader* reader) const;
};

size_t qHash(const ServiceID& id, size_t seed) noexcept {
    return qHashMulti(seed, id.projectID, id.kind, id.directory);
}

ProcessManager::ProcessManager(std::chrono::milliseconds killTimeout, QObject* parent)
    : QObject(parent), d(std::make_unique<Private>()) {
    ORV_ASSERT_MAIN_THREAD();
    d->q = this;
    d->killTimeout = killTimeout;
    d->dockerStopCommand = [](const QString& folder) {
        return u"cd "_s + CommandBuilder::quote(folder) + u" && docker compose stop"_s;
    };
    d->portPool.setMaxThreadCount(2);
    d->portPool.setExpiryTimeout(5000);
}

ProcessManager::~ProcessManager() {
    for (const Run& run : std::as_const(d->runs)) {
        ProcessSpawner::signalGroup(run.reader->pid(), SIGKILL);
    }
    for (const Run& run : std::exchange(d->runs, {})) {
        delete run.reader;
    }
}

ServiceID ProcessManager::id(const ServiceTarget& target, const QString& projectID) {
    return {projectID, target.kind, target.directory};
}

const QHash<ServiceID, ServiceState>& ProcessManager::states() const {
    ORV_ASSERT_MAIN_THREAD();
    return d->states;
}

ServiceState ProcessManager::state(const ServiceID& id) const {
    ORV_ASSERT_MAIN_THREAD();
    return d->states.value(id);
}

const LogBuffer& ProcessManager::log(const ServiceID& id) const {
    ORV_ASSERT_MAIN_THREAD();
    static const LogBuffer none(maxLogLines);
    const auto log = d->logs.constFind(id);
    return log == d->logs.cend() ? none : **log;
}

int ProcessManager::runningCount() const {
    ORV_ASSERT_MAIN_THREAD();
    return static_cast<int>(std::count_if(
        d->states.cbegin(), d->states.cend(), [](const ServiceState& state) { return state.isRunning(); }));
}

bool ProcessManager::wasUserStopped(const ServiceID& id) const {
    ORV_ASSERT_MAIN_THREAD();
    return d->userStopped.contains(id);
}

std::optional<qint64> ProcessManager::processID(const ServiceID& id) const {
    ORV_ASSERT_MAIN_THREAD();
    const auto run = d->runs.constFind(id);
    return run == d->runs.cend() ? std::nullopt : std::optional<qint64>(run->reader->pid());
}

void ProcessManager::setOnChange(std::function<void()> onChange) {
    ORV_ASSERT_MAIN_THREAD();
    d->onChange = std::move(onChange);
}

void ProcessManager::setDockerStopCommand(
    std::function<QString(const QString&)> command, std::chrono::milliseconds limit) {
    ORV_ASSERT_MAIN_THREAD();
    d->dockerStopCommand = std::move(command);
    d->dockerLimit = limit;
}

void ProcessManager::start(const ServiceTarget& target, const QString& projectID) {
    ORV_ASSERT_MAIN_THREAD();
    const ServiceID service = id(target, projectID);
    if (d->states.value(service).isActive()) {
        return;
    }
    d->logs.insert(service, std::make_shared<LogBuffer>(maxLogLines));
    d->stopRequested.remove(service);
    d->userStopped.remove(service);
    d->fixedPorts.remove(service);
    if (target.port) {
        d->fixedPorts.insert(service, *target.port);
    }
    const QPointer<ProcessManager> self(this);
    Q_EMIT logReset(service);
    if (!self || d->runs.contains(service)) {
        return;
    }
    if (!QFileInfo(target.directory).isDir()) {
        d->setState(service, ServiceState::failed(tr("Folder not found: %1").arg(target.directory)));
        return;
    }
    const QString mark = ChildRecords::newMark();
    auto process = d->spawn(target, mark);
    if (!process) {
        d->setState(service, ServiceState::failed(tr("Could not start: %1").arg(process.error().text())));
        return;
    }
    auto* reader = new ProcessReader(std::move(*process), d->turns, this);
    if (const auto begun = reader->begin(); !begun) {
        delete reader;
        d->setState(service, ServiceState::failed(tr("Could not start: %1").arg(begun.error().text())));
        return;
    }
    auto* ports = new PortWatch(reader->pid(), &d->portPool, {}, reader);
    connect(reader, &ProcessReader::linesRead, this, [this, service, reader](const LineQueue::Taken& taken) {
        d->append(service, reader, taken);
    });
    connect(reader, &ProcessReader::exited, this, [this, service, reader](int code) {
        d->handleExit(service, reader, code);
    });
    connect(ports, &PortWatch::portsChanged, this, [this, service] { Q_EMIT listeningPortsChanged(service); });
    d->runs.insert(service, {reader, ports, d->note(target, projectID, mark, reader->pid())});
    d->setState(service, ServiceState::starting());
}

std::expected<SpawnedProcess, SpawnError> ProcessManager::Private::spawn(
    const ServiceTarget& target, const QString& mark) {
    EnvironmentEntries entries = ProcessSpawner::pipeEnvironment(QProcessEnvironment::systemEnvironment());
    entries.insert(ChildRecords::environment(mark));
    return ProcessSpawner::spawn(target.command, target.directory, entries);
}

/// A service of which nothing can be written runs all the same.
std::shared_ptr<ChildRecords::Note> ProcessManager::Private::note(
    const ServiceTarget& target, const QString& projectID, const QString& mark, pid_t pid) const {
    const auto note = records.note(
        {.projectID = projectID,
         .directory = target.directory,
         .kind = target.kind,
         .command = target.command,
         .mark = mark},
        pid);
    if (!note) {
        qWarning("%s", qUtf8Printable(note.error().text()));
    }
    return note.value_or(nullptr);
}

QFuture<void> ProcessManager::Private::stackStop(ServiceKind kind, const QString& folder) {
    return kind == ServiceKind::docker ? runLimited(dockerStopCommand(folder), folder, dockerLimit, turns, q)
                                       : finishedFuture();
}

void ProcessManager::setRecords(const ChildRecords& records) {
    ORV_ASSERT_MAIN_THREAD();
    d->records = records;
}

const ChildRecords& ProcessManager::records() const {
    ORV_ASSERT_MAIN_THREAD();
    return d->records;
}

QFuture<void> ProcessManager::endOrphan(const ChildRecord& child) {
    ORV_ASSERT_MAIN_THREAD();
    if (!ChildRecords::isAlive(child)) {
        d->records.remove(child);
        return finishedFuture();
    }
    // It is looked before each signal: a number may come to be another's at any time, for this is no child of ours.
    auto* termination =
        new GroupTermination(child.leader.pid, d->killTimeout, [child] { return !ChildRecords::isAlive(child); }, this);
    connect(termination, &GroupTermination::ended, this, [this, child](bool gone) {
        if (gone) {
            d->records.remove(child);
        }
    });
    termination->begin();
    return termination->lookAfter(d->stackStop(child.kind.value_or(ServiceKind::app), child.directory));
}

bool ProcessManager::Private::setState(const ServiceID& id, const ServiceState& state) {
    const auto found = states.constFind(id);
    if (found != states.cend() && *found == state) {
        return true;
    }
    states.insert(id, state);
    if (const auto run = runs.constFind(id); run != runs.cend() && state.isRunning()) {
        run->reader->setPortWanted(!state.port);
        run->ports->noteRunning(state.port);
    }
    const QPointer<ProcessManager> manager(q);
    if (const auto handler = onChange) {
        handler();
    }
    if (manager) {
        Q_EMIT manager->stateChanged(id);
    }
    return !manager.isNull();
}

bool ProcessManager::Private::isCurrent(const ServiceID& id, const ProcessReader* reader) const {
    const auto run = runs.constFind(id);
    return run != runs.cend() && run->reader == reader;
}

void ProcessManager::Private::append(const ServiceID& id, const ProcessReader* reader, const LineQueue::Taken& taken) {
    if (!isCurrent(id, reader)) {
        return;
    }
    LogBuffer& log = **logs.find(id);
    qsizetype dropped = 0;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (const QString& line : taken.lines) {
        dropped += log.append(line, now);
    }
    runs.constFind(id)->ports->noteOutput();
    const QPointer<ProcessManager> manager(q);
    if (taken.dropped > 0) {
        Q_EMIT q->linesSkipped(id, taken.dropped);
    }
    if (manager && !taken.lines.isEmpty()) {
        Q_EMIT q->logAppended(id, taken.lines.size(), dropped);
    }
    if (!manager || !isCurrent(id, reader)) {
        return;
    }
    const ServiceState state = states.value(id);
    if (!state.isActive() || state.port) {
        return;
    }
    const auto fixed = fixedPorts.constFind(id);
    if (const std::optional<int> port = fixed == fixedPorts.cend() ? taken.port : *fixed) {
        setState(id, ServiceState::running(port));
    }
}

void ProcessManager::Private::handleExit(const ServiceID& id, ProcessReader* reader, int code) {
    if (!isCurrent(id, reader)) {
        return;
    }
    const PortWatch* ports = runs.constFind(id)->ports;
    const bool hadPorts = ports->areAllKnown() || !ports->ports().isEmpty();
    runs.remove(id);
    reader->deleteLater();
    const bool isWanted = stopRequested.remove(id) || code == 0;
    const QPointer<ProcessManager> manager(q);
    if (hadPorts) {
        Q_EMIT q->listeningPortsChanged(id);
    }
    if (manager && !runs.contains(id)) {
        setState(id, isWanted ? ServiceState::stopped() : ServiceState::failed(exitMessage(code, **logs.find(id))));
    }
}

QFuture<void> ProcessManager::stop(const ServiceID& id) {
    ORV_ASSERT_MAIN_THREAD();
    const auto run = d->runs.constFind(id);
    const bool isLive = run != d->runs.cend();
    // A stack may still be on its way down when the process that brought it up is gone.
    if (const auto running = d->terminations.value(id);
        running && (!isLive || running->group() == run->reader->pid())) {
        return running->future();
    }
    if (!isLive) {
        return finishedFuture();
    }
    const pid_t pid = run->reader->pid();
    d->stopRequested.insert(id);
    d->userStopped.insert(id);
    const QPointer<ProcessReader> reader(run->reader);
    // Not when the group is gone: its last lines may still be on their way, and the state changes after them.
    const auto isOver = [this, id, reader] { return !d->isCurrent(id, reader); };
    auto* termination = new GroupTermination(pid, d->killTimeout, isOver, this);
    d->terminations.insert(id, termination);
    connect(termination, &GroupTermination::ended, this, [reader](bool gone) {
        if (!gone && reader) {
            reader->abandon();
        }
    });
    reader->setStopping();
    termination->begin();
    return termination->lookAfter(d->stackStop(id.kind, id.directory));
}

bool ProcessManager::isStopping(const ServiceID& id) const {
    ORV_ASSERT_MAIN_THREAD();
    const auto termination = d->terminations.value(id);
    return termination && !termination->future().isFinished();
}

QFuture<void> ProcessManager::stopAll() {
    ORV_ASSERT_MAIN_THREAD();
    QList<QFuture<void>> stops;
    for (const ServiceID& id : d->runs.keys()) {
        stops.append(stop(id));
    }
    for (const auto& termination : std::as_const(d->terminations)) {
        if (termination) {
            stops.append(termination->future());
        }
    }
    return whenAll(stops, this);
}

void ProcessManager::noteUp(const ServiceID& id) {
    ORV_ASSERT_MAIN_THREAD();
    if (state(id).phase == ServiceState::Phase::starting) {
        d->setState(id, ServiceState::running({}));
    }
}

QList<int> ProcessManager::listeningPorts(const ServiceID& id) const {
    ORV_ASSERT_MAIN_THREAD();
    const auto run = d->runs.constFind(id);
    return run == d->runs.cend() ? QList<int>() : run->ports->ports();
}

bool ProcessManager::areListeningPortsKnown(const ServiceID& id) const {
    ORV_ASSERT_MAIN_THREAD();
    const auto run = d->runs.constFind(id);
    return run != d->runs.cend() && run->ports->areAllKnown();
}

QFuture<QList<int>> ProcessManager::refreshListeningPorts(const ServiceID& id) {
    ORV_ASSERT_MAIN_THREAD();
    if (const auto run = d->runs.constFind(id); run != d->runs.cend()) {
        return run->ports->look().then(QtFuture::Launch::Sync, [](const SessionPorts& found) { return found.ports; });
    }
    QPromise<QList<int>> promise;
    promise.start();
    promise.addResult(QList<int>());
    promise.finish();
    return promise.future();
}

} // namespace orv
