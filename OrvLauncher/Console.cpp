#include "Console.h"

#include "SignalWatcher.h"

#include <cerrno>

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace orv {

Stream::Stream(int fd)
    : m_fd(fd),
      m_isTerminal(::isatty(fd) == 1),
      m_hasColor(m_isTerminal && qgetenv("NO_COLOR").isEmpty() && qgetenv("TERM") != "dumb") {}

int Stream::width() const {
    winsize size{};
    return m_isTerminal && ::ioctl(m_fd, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void Stream::write(const QByteArray& utf8) {
    qsizetype done = 0;
    while (done < utf8.size() && !m_isClosed) {
        const ssize_t written = ::write(m_fd, utf8.constData() + done, static_cast<size_t>(utf8.size() - done));
        if (written >= 0) {
            done += written;
            continue;
        }
        if (errno == EAGAIN) {
            // Some other program that shares the terminal made it non-blocking.
            pollfd writable{m_fd, POLLOUT, 0};
            if (::poll(&writable, 1, -1) >= 0) {
                continue;
            }
        }
        // A reader that stopped reading must not keep Ctrl-C from being heard.
        m_isClosed = errno != EINTR || SignalWatcher::wasAskedToStop();
    }
}

} // namespace orv
