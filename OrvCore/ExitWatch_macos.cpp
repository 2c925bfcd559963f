#include "OrvCore/ExitWatch.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/event.h>

namespace orv {

ExitWatch::ExitWatch() : m_events(::kqueue()) {
    ::fcntl(m_events.get(), F_SETFD, FD_CLOEXEC);
}

ExitWatch::Added ExitWatch::add(pid_t pid) {
    struct kevent change;
    EV_SET(&change, static_cast<uintptr_t>(pid), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    if (::kevent(m_events.get(), &change, 1, nullptr, 0, nullptr) == 0) {
        return Added::watched;
    }
    return errno == ESRCH ? Added::gone : Added::refused;
}

} // namespace orv
