#pragma once

#include "OrvCore/ChildProcess.h"
#include "OrvCore/UniqueFd.h"

#include <QFuture>
#include <QString>

#include <chrono>
#include <expected>
#include <functional>
#include <span>

#include <sys/types.h>

class QProcessEnvironment;

namespace orv {

/// A started command line: the leader of its own session and process group.
struct SpawnedProcess {
    pid_t pid = -1;  ///< also the group's id
    UniqueFd output; ///< read end of the pipe that both its output streams are; does not block
};

/// Starts command lines under the login shell and follows them to their end. Any thread, unless something else is said.
namespace ProcessSpawner {

/// Standard input is "/dev/null", no other descriptor reaches the child, and no signal is blocked or ignored there. The
/// environment is this process's own with `environment` over it.
[[nodiscard]] std::expected<SpawnedProcess, SpawnError> spawn(
    const QString& command, const QString& directory, const EnvironmentEntries& environment);

/// What makes tools behave on a pipe (unbuffered, in colour), less what the user's own environment says already.
[[nodiscard]] EnvironmentEntries pipeEnvironment(const QProcessEnvironment& inherited);

struct PumpControl {
    /// Any descriptor, or -1: once it is readable, everything ends early.
    int abandon = -1;
    /// Whether the child is kept until no process of its group lives, though the output has ended.
    std::function<bool()> waitsForGroup = [] { return false; };
    /// Whether the output ends with the child, whoever else of its group lives on and could write; unless it waits for
    /// the group.
    bool endsWithChild = false;
};

/// Takes the output in. Called on the pump's thread.
class OutputSink {
public:
    virtual ~OutputSink() = default;
    /// Memory for `size` bytes, valid until `filled` or the next call of this.
    [[nodiscard]] virtual std::span<char> room(size_t size) = 0;
    /// Output is in the first `size` bytes of that memory.
    virtual void filled(size_t size) = 0;
};

/// Blocks until the output has ended, reads it at most 8192 bytes at a time and hands over what was there, reaps the
/// child and gives its exit code: 128 + the signal when one ended it, -1 when it could not be had.
///
/// The child is a zombie until then, so its id stays its own. A process that left the group may hold the pipe for ever:
/// once the child has ended and no process of its group lives, the output ends with what is there.
[[nodiscard]] int pump(const SpawnedProcess& process, const PumpControl& control, OutputSink& sink);

/// Kills the group of a child that nobody follows, and reaps it. Waits for it, 500 ms at the most.
void discard(pid_t pid);

using ChildProcess::groupExists;
using ChildProcess::signalGroup;

/// SIGTERM to the group; SIGKILL when it is still there after `grace`. Main thread; finishes when the group is gone, or
/// 2 seconds after the SIGKILL.
QFuture<void> terminateGroup(pid_t group, std::chrono::milliseconds grace);

} // namespace ProcessSpawner
} // namespace orv
