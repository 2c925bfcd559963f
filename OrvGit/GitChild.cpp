#include "OrvCore/Pipe.h"
#include "OrvGit/GitChild_p.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <vector>

#include <poll.h>
#include <sys/wait.h>

using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr size_t bytesPerRead = 65536;
/// Empties the largest pipe that needs no privilege.
constexpr int mostLateReads = 16;

/// A hook, or ssh with a shared connection, leaves processes behind that hold git's streams. What git itself wrote is
/// in the pipes when it exits; so long is waited for the rest.
constexpr auto afterExit = 1s;
/// In which git removes its locks and what it has cloned so far.
constexpr auto afterTerm = 2s;
constexpr auto afterKill = 3s;
/// A look at what can't be watched.
constexpr auto recheck = 20ms;

int pollTimeout(const QDeadlineTimer& deadline, std::chrono::milliseconds longest) {
    const qint64 remaining = deadline.isForever() ? longest.count() : deadline.remainingTime();
    return static_cast<int>(std::clamp(remaining, qint64{0}, qint64{longest.count()}));
}

} // namespace

std::expected<std::unique_ptr<GitChild>, SpawnError> GitChild::start(
    ChildProcess::Request request, const QByteArray& input) {
    std::unique_ptr<GitChild> child(new GitChild);
    auto output = Pipe::make();
    auto errors = Pipe::make();
    if (!output || !errors) {
        return std::unexpected(output ? errors.error() : output.error());
    }
    if (!input.isNull()) {
        // A file and no pipe: git reads at its own pace, and one that ends early breaks nothing.
        child->m_input = std::make_unique<QTemporaryFile>();
        if (!child->m_input->open() || child->m_input->write(input) != input.size() || !child->m_input->seek(0)) {
            return std::unexpected(SpawnError{errno != 0 ? errno : EIO});
        }
        request.input = child->m_input->handle();
    }
    request.output = output->writeEnd.get();
    request.errors = errors->writeEnd.get();
    const auto pid = ChildProcess::spawn(std::move(request));
    if (!pid) {
        return std::unexpected(pid.error());
    }
    child->m_pid = *pid;
    child->end(Stream::output) = std::move(output->readEnd);
    child->end(Stream::errors) = std::move(errors->readEnd);
    child->m_isWatched = child->m_exit.add(*pid) == ExitWatch::Added::watched;
    return child;
}

GitChild::~GitChild() {
    if (m_pid > 0) {
        endGroup();
    }
}

GitChild::End GitChild::follow(
    const QDeadlineTimer& deadline, const std::optional<GitCancellation>& cancellation, const Sink& sink) {
    const auto ended = [this](End why) {
        endGroup();
        return why;
    };
    bool hasExited = false;
    int lateReads = 0;
    QDeadlineTimer leftovers(QDeadlineTimer::Forever);
    while (!hasExited || end(Stream::output).isValid() || end(Stream::errors).isValid()) {
        if (cancellation && cancellation->isCancelled()) {
            return ended(End::cancelled);
        }
        const bool isLate = (hasExited ? leftovers : deadline).hasExpired();
        const int cancelled = cancellation ? cancellation->descriptor() : -1;
        const bool isBlind = (!hasExited && !m_isWatched) || (cancellation && cancelled < 0);
        std::array<pollfd, 4> events{
            pollfd{end(Stream::output).get(), POLLIN, 0}, pollfd{end(Stream::errors).get(), POLLIN, 0},
            pollfd{!hasExited && m_isWatched ? m_exit.descriptor() : -1, POLLIN, 0}, pollfd{cancelled, POLLIN, 0}};
        const auto longest = isBlind ? std::chrono::milliseconds(recheck) : std::chrono::milliseconds(1h);
        if (::poll(events.data(), events.size(), pollTimeout(hasExited ? leftovers : deadline, longest)) < 0) {
            continue;
        }
        bool hasRead = false;
        for (const Stream stream : {Stream::output, Stream::errors}) {
            if (events[static_cast<size_t>(stream)].revents != 0) {
                hasRead = true;
                if (!read(stream, sink)) {
                    return ended(End::enough);
                }
            }
        }
        if (!hasExited && (events[2].revents != 0 || !m_isWatched) && isZombie()) {
            // Not reaped yet: whoever cancels now still has its group to end.
            hasExited = true;
            leftovers.setRemainingTime(afterExit);
            continue;
        }
        // This process itself may have stood still past the limit, and git may have been done by then: what is in the
        // pipes counts first, but not what comes without an end.
        if (isLate && (!hasRead || ++lateReads > mostLateReads)) {
            if (!hasExited) {
                return ended(End::timeout);
            }
            break;
        }
    }
    (void)tryReap();
    return End::exited;
}

bool GitChild::read(Stream stream, const Sink& sink) {
    std::array<char, bytesPerRead> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init)
    const ssize_t size = ::read(end(stream).get(), buffer.data(), buffer.size());
    if (size > 0) {
        return sink(stream, {buffer.data(), size}) == Wanted::more;
    }
    if (size == 0 || (errno != EINTR && errno != EAGAIN)) {
        end(stream).reset();
    }
    return true;
}

bool GitChild::tryReap() {
    int status = 0;
    const pid_t reaped = ::waitpid(m_pid, &status, WNOHANG);
    if (reaped == 0 || (reaped < 0 && errno == EINTR)) {
        return false;
    }
    m_exitCode = reaped < 0 ? -1 : WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    m_pid = -1;
    return true;
}

bool GitChild::isZombie() const {
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid != 0;
}

bool GitChild::waitForExit(const QDeadlineTimer& deadline) {
    const auto discard = [](Stream, QByteArrayView) { return Wanted::more; };
    while (!isZombie()) {
        if (deadline.hasExpired()) {
            return false;
        }
        std::array<pollfd, 3> events{
            pollfd{end(Stream::output).get(), POLLIN, 0}, pollfd{end(Stream::errors).get(), POLLIN, 0},
            pollfd{m_isWatched ? m_exit.descriptor() : -1, POLLIN, 0}};
        ::poll(events.data(), events.size(), pollTimeout(deadline, m_isWatched ? 1h : recheck));
        for (const Stream stream : {Stream::output, Stream::errors}) {
            if (events[static_cast<size_t>(stream)].revents != 0) {
                (void)read(stream, discard);
            }
        }
    }
    return true;
}

void GitChild::endGroup() {
    if (m_pid < 0) {
        return;
    }
    const pid_t group = m_pid;
    ChildProcess::signalGroup(group, SIGTERM);
    (void)waitForExit(QDeadlineTimer(afterTerm));
    // Whoever is left, while the leader, be it a zombie, keeps the group's number.
    ChildProcess::signalGroup(group, SIGKILL);
    if (!waitForExit(QDeadlineTimer(afterKill)) || !tryReap()) {
        return;
    }
    // The killed need a moment to be gone.
    const QDeadlineTimer deadline(afterKill);
    while (ChildProcess::groupExists(group) && !deadline.hasExpired()) {
        ::poll(nullptr, 0, 1);
    }
}

} // namespace orv
