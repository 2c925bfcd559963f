#pragma once

#include <mutex>
#include <optional>

#include <sys/types.h>

namespace term {

/// Collects the status of one child. After that the process id may be another process's, so signals go through here.
class LocalProcessChildReaper {
public:
    explicit LocalProcessChildReaper(pid_t pid) : m_pid(pid) {}

    /// Waits for the child's end. The status word of waitpid, or nothing when the child was not ours to wait for.
    /// A second call gives what the first one gave.
    std::optional<int> wait();
    /// Nothing is sent once the status was collected.
    void signal(int number);
    [[nodiscard]] pid_t pid() const { return m_pid; }

    /// The exit code in a status word; 128 and the signal's number for a child that a signal ended.
    [[nodiscard]] static std::optional<int> exitCode(std::optional<int> status);
    /// The signal that ended the child of a status word, where one did.
    [[nodiscard]] static std::optional<int> endSignal(std::optional<int> status);

private:
    const pid_t m_pid;
    std::mutex m_mutex;
    bool m_isCollected = false;
    std::optional<int> m_status;
};

} // namespace term
