#include "OrvCore/ExitWatch.h"
#include "OrvProcess/ProcessSpawner.h"
#include "OrvProcess/ProcessTable_p.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <optional>
#include <vector>

#include <poll.h>
#include <sys/wait.h>

namespace orv {
namespace {

constexpr size_t bytesPerRead = 8192;
/// After so many reads in a row they are handed over. A child that floods writes on meanwhile, instead of waiting for
/// the pipe's lock at every other read.
constexpr size_t readsPerTurn = 4;
/// After so many turns the other events are looked at, even while there is more.
constexpr size_t turnsInARow = 8;

/// A process may leave its group without any event, as a daemon does that forks first: so the living ones are looked at
/// again, at once and then ever more seldom.
constexpr std::chrono::milliseconds firstRecheck{20};
constexpr std::chrono::milliseconds lastRecheck{5000};
/// As often are those looked at that can't be watched.
constexpr std::chrono::milliseconds longestRecheckUnwatched{500};

enum class Output { open, ended };

/// Children that could not be reaped when their reader had to go: killed, but still busy in the kernel.
class LateChildren {
public:
    void add(pid_t pid) {
        const std::scoped_lock lock(m_mutex);
        m_pids.push_back(pid);
    }
    void reap() {
        const std::scoped_lock lock(m_mutex);
        std::erase_if(m_pids, [](pid_t pid) { return ::waitpid(pid, nullptr, WNOHANG) != 0; });
    }

private:
    std::mutex m_mutex;
    std::vector<pid_t> m_pids;
};
LateChildren lateChildren;

struct TurnResult {
    Output output = Output::open;
    bool more = false; ///< the turn was over before the pipe was empty
};

TurnResult readTurn(int fd, ProcessSpawner::OutputSink& sink) {
    const std::span<char> room = sink.room(bytesPerRead * readsPerTurn);
    size_t filled = 0;
    TurnResult result{Output::open, true};
    while (result.more && filled + bytesPerRead <= room.size()) {
        const ssize_t size = ::read(fd, room.data() + filled, bytesPerRead);
        if (size > 0) {
            filled += static_cast<size_t>(size);
        } else if (size == 0 || errno != EINTR) {
            result = {size < 0 && errno == EAGAIN ? Output::open : Output::ended, false};
        }
    }
    if (filled > 0) {
        sink.filled(filled);
    }
    return result;
}

TurnResult readTurns(int fd, ProcessSpawner::OutputSink& sink) {
    TurnResult result = readTurn(fd, sink);
    for (size_t turns = 1; result.more && turns < turnsInARow; ++turns) {
        result = readTurn(fd, sink);
    }
    return result;
}

/// What those who are gone wrote is in the pipe; one who left the group may write for ever.
void drain(int fd, ProcessSpawner::OutputSink& sink) {
    constexpr size_t largestPipe = 1024 * 1024;
    for (size_t turns = largestPipe / (bytesPerRead * readsPerTurn); turns > 0; --turns) {
        if (!readTurn(fd, sink).more) {
            return;
        }
    }
}

enum class Group { gone, watched, unwatched };

/// Watches every living process of the group.
Group watchGroup(pid_t group, ExitWatch& watch) {
    const QList<ProcessEntry> processes = processTable();
    if (processes.isEmpty()) {
        return Group::unwatched;
    }
    Group found = Group::gone;
    for (const ProcessEntry& entry : processes) {
        if (entry.group != group || !entry.isAlive) {
            continue;
        }
        const ExitWatch::Added added = watch.add(entry.pid);
        if (added == ExitWatch::Added::refused) {
            found = Group::unwatched;
        } else if (added == ExitWatch::Added::watched && found == Group::gone) {
            found = Group::watched;
        }
    }
    return found;
}

int reap(pid_t pid) {
    int status = 0;
    pid_t reaped = 0;
    do {
        reaped = ::waitpid(pid, &status, WNOHANG);
    } while (reaped < 0 && errno == EINTR);
    if (reaped == 0) {
        lateChildren.add(pid);
    }
    if (reaped != pid) {
        return -1;
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool hasEnded(pid_t pid) {
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == pid;
}

void waitReadable(int fd, std::chrono::milliseconds limit) {
    pollfd wait{fd, POLLIN, 0};
    ::poll(&wait, 1, static_cast<int>(limit.count()));
}

constexpr std::chrono::milliseconds endOfTheKilled{500};

} // namespace

void ProcessSpawner::discard(pid_t pid) {
    signalGroup(pid, SIGKILL);
    ExitWatch leader;
    leader.add(pid);
    waitReadable(leader.descriptor(), endOfTheKilled);
    (void)reap(pid);
}

int ProcessSpawner::pump(const SpawnedProcess& process, const PumpControl& control, OutputSink& sink) {
    lateChildren.reap();
    ExitWatch leader;
    const bool isWatched = leader.add(process.pid) == ExitWatch::Added::watched;
    std::optional<ExitWatch> members; ///< of the group, once the leader has ended
    Group group = Group::watched;
    std::chrono::milliseconds recheck = firstRecheck;
    TurnResult turn;
    for (;;) {
        const bool isOpen = turn.output == Output::open;
        const bool mustAsk = !isWatched && !members;
        const int watched = members ? members->descriptor() : isWatched ? leader.descriptor() : -1;
        std::array<pollfd, 3> events{
            pollfd{isOpen ? process.output.get() : -1, POLLIN, 0}, pollfd{watched, POLLIN, 0},
            pollfd{control.abandon, POLLIN, 0}};
        const auto limit = turn.more                           ? std::chrono::milliseconds(0)
                           : mustAsk                           ? firstRecheck
                           : group == Group::unwatched         ? std::min(recheck, longestRecheckUnwatched)
                           : members && recheck <= lastRecheck ? recheck
                                                               : std::chrono::milliseconds(-1);
        const int count = ::poll(events.data(), events.size(), static_cast<int>(limit.count()));
        if (count < 0) {
            events = {};
        }
        if (events[2].revents != 0) {
            // Whoever abandons has killed the group before: it is a matter of moments, unless the kernel holds it.
            waitReadable(leader.descriptor(), endOfTheKilled);
            break;
        }
        if (isOpen) {
            turn = readTurns(process.output.get(), sink);
        }
        const bool isRecheck = members && count == 0 && !turn.more;
        if (events[1].revents == 0 && !isRecheck && !(mustAsk && hasEnded(process.pid)) &&
            !(members && turn.output == Output::ended)) {
            continue;
        }
        recheck = !isRecheck ? firstRecheck : recheck <= lastRecheck ? recheck * 2 : recheck;
        if (turn.output == Output::ended && !control.waitsForGroup()) {
            break;
        }
        group = watchGroup(process.pid, members.emplace());
        if (group == Group::gone || (control.endsWithChild && !control.waitsForGroup())) {
            drain(process.output.get(), sink);
            break;
        }
    }
    return reap(process.pid);
}

} // namespace orv
