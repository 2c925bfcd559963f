#pragma once

#include "OrvCore/UniqueFd.h"

#include <QByteArray>
#include <QFuture>
#include <QMap>
#include <QString>
#include <chrono>
#include <expected>
#include <functional>
#include <sys/types.h>

namespace orv {

using EnvironmentEntries = QMap<QString, QString>;

struct SpawnError {
    int code = 0; ///< errno
    [[nodiscard]] QString text() const;
};

/// A started command line: the leader of its own session and process group.
struct SpawnedProcess {
    pid_t pid = -1; ///< also the group's id
    UniqueFd output; ///< read end of the pipe that both its output streams are
};

/// Starts command lines under the login shell and follows them to their end. Blocking functions; any thread.
namespace ProcessSpawner {

/// Standard input is "/dev/null", no other descriptor reaches the child. The environment is this process's own with
/// `environment` over it.
[[nodiscard]] std::expected<SpawnedProcess, SpawnError> spawn(const QString& command, const QString& directory,
                                                              const EnvironmentEntries& environment);

/// What makes tools behave on a pipe (unbuffered, in colour), less what the user's own environment says already.
[[nodiscard]] EnvironmentEntries pipeEnvironment(const EnvironmentEntries& inherited);

/// Reads the output until its end and hands over blocks of whole lines (each ends with "\n", the last perhaps not), at
/// most 8192 bytes a read; then reaps the child and gives its exit code, 128 + the signal when one ended it. `abandon`
/// (an eventfd or pipe, or -1) ends the reading early once readable.
void pump(UniqueFd output, pid_t pid, int abandon, const std::function<void(QByteArrayView block)>& onBlock,
          const std::function<void(int exitCode)>& onExit);

/// SIGTERM to the group; SIGKILL when it is still there after `grace`. Main thread; finishes when the group is gone or the
/// escalation has ended.
QFuture<void> terminateGroup(pid_t group, std::chrono::milliseconds grace);

} // namespace ProcessSpawner
} // namespace orv
