#include "TermEngine/ProcessExitSource.h"

#include <cerrno>
#include <cstdint>

#include <fcntl.h>
#include <sys/wait.h>
#ifdef __linux__
#include <sys/syscall.h>
#else
#include <sys/event.h>
#endif

namespace term {
namespace {

UniqueFd exitDescriptor(pid_t pid) {
#ifdef __linux__
    return UniqueFd(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0))); // close-on-exec: pidfd_open(2)
#else
    UniqueFd queue(::kqueue());
    ::fcntl(queue.get(), F_SETFD, FD_CLOEXEC);
    struct kevent change;
    EV_SET(&change, static_cast<uintptr_t>(pid), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    // A child that has ended already is no process to watch any more: then hasFired answers.
    return ::kevent(queue.get(), &change, 1, nullptr, 0, nullptr) == 0 ? std::move(queue) : UniqueFd();
#endif
}

} // namespace

ProcessExitSource::ProcessExitSource(pid_t pid) : m_pid(pid), m_descriptor(exitDescriptor(pid)) {}

bool ProcessExitSource::hasFired() const {
    siginfo_t info{};
    const int result = ::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT);
    return result == 0 ? info.si_pid == m_pid : errno == ECHILD; // somebody else has collected it
}

} // namespace term
