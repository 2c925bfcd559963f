#include "OrvCore/Pipe.h"

#include <QtGlobal>

#include <cerrno>

#include <fcntl.h>

namespace orv {
namespace {

/// Descriptors 0 to 2 are the child's: a pipe that got one of them, since ours are closed, is moved out of the way.
UniqueFd aboveStandardStreams(UniqueFd fd) {
    return fd.get() > STDERR_FILENO ? std::move(fd) : UniqueFd(::fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

} // namespace

std::expected<Pipe, SpawnError> Pipe::make() {
    int ends[2];
#ifdef Q_OS_LINUX
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return std::unexpected(SpawnError{errno});
    }
#else
    if (::pipe(ends) != 0) {
        return std::unexpected(SpawnError{errno});
    }
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    }
#endif
    Pipe made{aboveStandardStreams(UniqueFd(ends[0])), aboveStandardStreams(UniqueFd(ends[1]))};
    if (!made.readEnd.isValid() || !made.writeEnd.isValid() || ::fcntl(made.readEnd.get(), F_SETFL, O_NONBLOCK) != 0) {
        return std::unexpected(SpawnError{errno});
    }
    return made;
}

} // namespace orv
