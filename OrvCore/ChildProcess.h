#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <expected>
#include <vector>

#include <sys/types.h>

namespace orv {

using EnvironmentEntries = QMap<QString, QString>;

struct SpawnError {
    int code = 0; ///< errno
    [[nodiscard]] QString text() const;
};

/// Starting a program as the leader of its own session and process group, and signalling that group. Any thread.
namespace ChildProcess {

struct Request {
    QByteArray program;                ///< its path; nothing is searched
    std::vector<QByteArray> arguments; ///< the name of the program first
    std::vector<QByteArray> variables; ///< the whole environment, "NAME=value" each
    QString directory;
    int input = -1; ///< what becomes its standard input; "/dev/null" when negative
    int output = -1;
    int errors = -1;
};

/// No other descriptor reaches the child, and no signal is blocked or ignored there.
[[nodiscard]] std::expected<pid_t, SpawnError> spawn(Request request);

/// This process's environment, without the names in `removed`, with `entries` over it.
[[nodiscard]] std::vector<QByteArray> environment(
    const EnvironmentEntries& entries, const std::vector<QByteArray>& removed = {});

/// Whether a process of the group exists, be it a zombie or someone else's.
[[nodiscard]] bool groupExists(pid_t group);
/// False when there is no such group; one that is not a group of its own (0, 1, negative) is never signalled.
bool signalGroup(pid_t group, int signal);

} // namespace ChildProcess
} // namespace orv
