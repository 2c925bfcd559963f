#pragma once

#include "OrvCore/Models.h"
#include "OrvProcess/LogBuffer.h"

#include <QFuture>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

namespace orv {

class ChildRecords;
struct ChildRecord;

/// One service of one project.
struct ServiceID {
    QString projectID;
    ServiceKind kind = ServiceKind::app;
    QString directory;

    bool operator==(const ServiceID&) const = default;
};
size_t qHash(const ServiceID& id, size_t seed = 0) noexcept;

struct ServiceState {
    enum class Phase { running, failed, stopped, starting };
    Phase phase = Phase::stopped;
    std::optional<int> port; ///< of a running service, when it is known
    QString message;         ///< of a failed one, shown to the user

    bool operator==(const ServiceState&) const = default;
    [[nodiscard]] bool isActive() const { return phase == Phase::running || phase == Phase::starting; }
    [[nodiscard]] bool isRunning() const { return phase == Phase::running; }
    [[nodiscard]] static ServiceState running(std::optional<int> port) { return {Phase::running, port, {}}; }
    [[nodiscard]] static ServiceState failed(const QString& message) { return {Phase::failed, {}, message}; }
    [[nodiscard]] static ServiceState stopped() { return {}; }
    [[nodiscard]] static ServiceState starting() { return {Phase::starting, {}, {}}; }
};

/// Starts services, keeps their output and state, and stops them. Lives on the main thread.
///
/// Whatever its signals and `onChange` reach may start and stop services, and may delete the manager.
class ProcessManager : public QObject {
    Q_OBJECT
public:
    static constexpr qsizetype maxLogLines = 5000;

    explicit ProcessManager(std::chrono::milliseconds killTimeout, QObject* parent = nullptr);
    /// Kills what still runs and waits for its readers.
    ~ProcessManager() override;

    [[nodiscard]] static ServiceID id(const ServiceTarget& target, const QString& projectID);

    /// What was started at least once; a service that is not in it is stopped.
    [[nodiscard]] const QHash<ServiceID, ServiceState>& states() const;
    [[nodiscard]] ServiceState state(const ServiceID& id) const;
    /// The newest lines of the service's output, at most `maxLogLines`. Valid until the service is next started.
    [[nodiscard]] const LogBuffer& log(const ServiceID& id) const;
    /// Services in the state running.
    [[nodiscard]] int runningCount() const;
    [[nodiscard]] bool wasUserStopped(const ServiceID& id) const;
    /// The live process (and group) of a service.
    [[nodiscard]] std::optional<qint64> processID(const ServiceID& id) const;

    void start(const ServiceTarget& target, const QString& projectID);
    /// Finishes when the service's state has changed, after its last line, and the stack of a Docker service is down;
    /// or when the escalation has ended. While a service is being stopped, a second call joins the first one.
    QFuture<void> stop(const ServiceID& id);
    /// From a call of `stop` until its future finishes: of a stack also after the state has changed.
    [[nodiscard]] bool isStopping(const ServiceID& id) const;
    /// Stops every service that has a live process, all at once, and waits for the stops that are under way.
    QFuture<void> stopAll();

    /// Where it is written down what runs, from now on.
    void setRecords(const ChildRecords& records);
    [[nodiscard]] const ChildRecords& records() const;
    /// Ends what an application that is gone has left running, as a service is stopped. Finishes when nothing of it
    /// lives, or when the escalation has ended.
    QFuture<void> endOrphan(const ChildRecord& child);

    /// The TCP ports on which a process of the service's session really listens, ascending, as last looked up: by
    /// itself while the service comes up, later only when asked.
    [[nodiscard]] QList<int> listeningPorts(const ServiceID& id) const;
    /// One that is starting and never says where it listens is running all the same, without a port: for whoever has
    /// found it listening, and knows that it is no debugger that listens.
    void noteUp(const ServiceID& id);
    /// Whether `listeningPorts` has all of them, so that on any other port nothing of the service listens. False until
    /// the first look since its start has finished, when the last one could not look into every process, and while the
    /// service has no live process.
    [[nodiscard]] bool areListeningPortsKnown(const ServiceID& id) const;
    /// Looks them up now, off the main thread.
    QFuture<QList<int>> refreshListeningPorts(const ServiceID& id);

    /// Called after every state change.
    void setOnChange(std::function<void()> onChange);
    /// From a Docker service's folder to the line that stops its stack, and how long that may take.
    void setDockerStopCommand(
        std::function<QString(const QString& folder)> command, std::chrono::milliseconds limit = dockerStopLimit);
    static constexpr std::chrono::milliseconds dockerStopLimit{60'000};

Q_SIGNALS:
    void stateChanged(const orv::ServiceID& id);
    void logReset(const orv::ServiceID& id);
    /// The service printed so fast that this many lines never came into the log. They belong before those of the next
    /// `logAppended`; of the newest `maxLogLines` none is among them.
    void linesSkipped(const orv::ServiceID& id, qsizetype count);
    /// `added` lines came at the end, `dropped` went at the front.
    void logAppended(const orv::ServiceID& id, qsizetype added, qsizetype dropped);
    /// Also when it changed whether they are known.
    void listeningPortsChanged(const orv::ServiceID& id);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace orv
