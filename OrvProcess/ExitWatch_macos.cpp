#include "OrvProcess/ExitWatch_p.h"

#include <fcntl.h>
#include <sys/event.h>

namespace orv {

ExitWatch::ExitWatch() : m_events(::kqueue()) {
    ::fcntl(m_events.get(), F_SETFD, FD_CLOEXEC);
}

bool ExitWatch::add(pid_t pid) {
    struct kevent change;
    EV_SET(&change, static_cast<uintptr_t>(pid), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    return ::kevent(m_events.get(), &change, 1, nullptr, 0, nullptr) == 0;
}

} // namespace orv
