#include "OrvCore/ExitWatch.h"

#include <cerrno>

#include <sys/epoll.h>
#include <sys/syscall.h>

namespace orv {

ExitWatch::ExitWatch() : m_events(::epoll_create1(EPOLL_CLOEXEC)) {}

ExitWatch::Added ExitWatch::add(pid_t pid) {
    // pidfd_open(2): the descriptor is close-on-exec, and readable once the process has ended.
    UniqueFd process(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    if (!process.isValid()) {
        return errno == ESRCH ? Added::gone : Added::refused;
    }
    epoll_event event{.events = EPOLLIN, .data = {}};
    if (::epoll_ctl(m_events.get(), EPOLL_CTL_ADD, process.get(), &event) != 0) {
        return Added::refused;
    }
    m_processes.push_back(std::move(process));
    return Added::watched;
}

} // namespace orv
