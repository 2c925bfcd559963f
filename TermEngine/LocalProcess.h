#pragma once

#include "TermEngine/DeliveryQueue.h"
#include "TermEngine/Locked.h"
#include "TermEngine/Pty.h"
#include "TermEngine/TerminalIOPipeline.h"
#include "TermEngine/TerminalOptions.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace term {

class LocalProcess;

/// What a host implements. All calls come on the delivery queue, but for dataReceived with direct delivery.
class LocalProcessDelegate {
public:
    LocalProcessDelegate() = default;
    virtual ~LocalProcessDelegate() = default;
    LocalProcessDelegate(const LocalProcessDelegate&) = delete;
    LocalProcessDelegate& operator=(const LocalProcessDelegate&) = delete;

    /// The child has ended, and all that it wrote was delivered before. The code is absent where no status could be
    /// collected, and 128 and the signal's number where a signal ended it.
    virtual void processTerminated(LocalProcess& source, std::optional<int> exitCode) = 0;
    /// What the child wrote, in order, in pieces of at most 64 KiB. As long as this does not return, little more is
    /// read, and in the end the child waits.
    virtual void dataReceived(std::span<const uint8_t> slice) = 0;
    /// The size that a child starts with, asked for on the thread that starts it.
    [[nodiscard]] virtual winsize getWindowSize() = 0;
};

enum class LocalProcessPhase : uint8_t { notStarted, running, exited };

using LocalProcessCounters = TerminalIOPipeline::Counters;

/// Runs one child on a pseudo-terminal. Every function may be called on any thread.
///
/// When the last owner lets go of it while the child runs, the child gets SIGTERM and, if that does not end it, SIGKILL
/// two seconds later; nobody waits for it meanwhile.
class LocalProcess : public std::enable_shared_from_this<LocalProcess> {
public:
    struct Configuration {
        std::shared_ptr<DeliveryQueue> queue{}; ///< absent: SerialQueue::shared()
        TerminalOptions options{};
        bool directDelivery = false; ///< dataReceived is called on the pipeline's own thread
        /// A failed launch, on the delivery queue; from within startProcess where the system has no thread for
        /// SerialQueue::shared(). A program that could not be run is also reported as terminated with code 127.
        std::function<void(const LocalProcessError&)> onLaunchFailure{};
    };
    struct Program {
        std::string executable;
        std::vector<std::string> args = {};                       ///< without the program's own name
        std::optional<std::vector<std::string>> environment = {}; ///< absent: getEnvironmentVariables
        std::optional<std::string> execName = {}; ///< absent: the executable; "-zsh" makes a login shell
        std::optional<std::string> currentDirectory = {};
    };

    [[nodiscard]] static std::shared_ptr<LocalProcess> create(
        std::weak_ptr<LocalProcessDelegate> delegate, Configuration configuration);
    ~LocalProcess();
    LocalProcess(const LocalProcess&) = delete;
    LocalProcess& operator=(const LocalProcess&) = delete;

    /// Nothing happens while a child runs. Returns when the program runs, or can't be run.
    void startProcess(const Program& program);
    TerminalIOPipeline::SendResult send(
        std::span<const uint8_t> data, TerminalIOPipeline::SendOrigin origin = TerminalIOPipeline::SendOrigin::host);
    /// Sends SIGTERM.
    void terminate();
    void updateWindowSize(const winsize& size);

    /// From a successful start until the exit report.
    [[nodiscard]] bool running() const;
    [[nodiscard]] LocalProcessPhase phase() const;
    /// Of the child that runs or ran last; 0 before.
    [[nodiscard]] pid_t shellPid() const;
    /// -1 when there is no open terminal.
    [[nodiscard]] int childfd() const;
    /// The signal that ended the child that ran last; absent where none did, or nobody knows.
    [[nodiscard]] std::optional<int> endSignal() const;
    /// Below 1 when there is none; the child's own id while nothing else is in the foreground.
    [[nodiscard]] pid_t foregroundProcessGroup() const;
    /// Of the child that runs or ran last.
    [[nodiscard]] LocalProcessCounters counters() const;
    [[nodiscard]] const TerminalOptions& options() const { return m_configuration.options; }
    /// Absent where the system had no thread for SerialQueue::shared(): then no start succeeds.
    [[nodiscard]] const std::shared_ptr<DeliveryQueue>& effectiveDeliveryQueue() const { return m_configuration.queue; }

private:
    class Session;
    struct Launch;
    struct State {
        LocalProcessPhase phase = LocalProcessPhase::notStarted;
        std::shared_ptr<Session> session{};
        std::shared_ptr<TerminalIOPipeline> pipeline{};
        LocalProcessCounters lastCounters{}; ///< of the child that has ended
        std::optional<int> endSignal{};      ///< of it, too
    };

    LocalProcess(std::weak_ptr<LocalProcessDelegate> delegate, Configuration configuration);
    [[nodiscard]] std::optional<LocalProcessError> launch(const Program& program, Launch& made);
    void finishLaunchFailure(const LocalProcessError& error);
    void childDidExit(const Session& session, std::optional<int> status);
    [[nodiscard]] std::shared_ptr<TerminalIOPipeline> pipeline() const;

    const std::weak_ptr<LocalProcessDelegate> m_delegate;
    const Configuration m_configuration;
    std::mutex m_startMutex;
    Locked<State> m_state;
};

} // namespace term
