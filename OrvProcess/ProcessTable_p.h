#pragma once

#include <QByteArrayView>
#include <QList>

#include <sys/types.h>

namespace orv {

/// A process as the system lists it.
struct ProcessEntry {
    pid_t pid = 0;
    pid_t parent = 0;
    pid_t group = 0;
    pid_t session = 0;
    bool isAlive = true; ///< false for one that has ended and was not waited for
    /// In a unit of the system's own, since a moment of its own; 0 when it is not known.
    unsigned long long startTime = 0;

    bool operator==(const ProcessEntry&) const = default;
};

/// The entry of a "/proc/<pid>/stat" line; a pid of 0 when it is none. The program's name in it may hold blanks and
/// parentheses (proc(5)).
[[nodiscard]] ProcessEntry processEntry(QByteArrayView stat);

/// Of one process; a pid of 0 when there is none that can be seen. Blocking; any thread.
[[nodiscard]] ProcessEntry processEntry(pid_t pid);

/// Every process that can be seen now; empty when the table could not be read to its end. Blocking; any thread.
[[nodiscard]] QList<ProcessEntry> processTable();

/// Whether "NAME=value" stood in the environment with which the process was started; false when that can't be seen.
/// Blocking; any thread.
[[nodiscard]] bool hasVariable(pid_t pid, QByteArrayView variable);

/// Another one after each start of the system. Blocking; any thread.
[[nodiscard]] QByteArray bootIdentity();

} // namespace orv
