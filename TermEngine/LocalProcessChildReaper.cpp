#include "TermEngine/LocalProcessChildReaper.h"

#include <cerrno>
#include <csignal>

#include <sys/wait.h>

namespace term {

std::optional<int> LocalProcessChildReaper::wait() {
    const std::scoped_lock lock(m_mutex);
    if (!m_isCollected) {
        m_isCollected = true;
        int status = 0;
        pid_t collected = -1;
        do {
            collected = ::waitpid(m_pid, &status, 0);
        } while (collected < 0 && errno == EINTR);
        if (collected == m_pid) {
            m_status = status;
        }
    }
    return m_status;
}

void LocalProcessChildReaper::signal(int number) {
    const std::scoped_lock lock(m_mutex);
    if (!m_isCollected && m_pid > 0) {
        ::kill(m_pid, number);
    }
}

std::optional<int> LocalProcessChildReaper::exitCode(std::optional<int> status) {
    if (!status) {
        return std::nullopt;
    }
    return WIFSIGNALED(*status) ? 128 + WTERMSIG(*status) : WEXITSTATUS(*status);
}

std::optional<int> LocalProcessChildReaper::endSignal(std::optional<int> status) {
    return status && WIFSIGNALED(*status) ? std::optional(WTERMSIG(*status)) : std::nullopt;
}

} // namespace term
