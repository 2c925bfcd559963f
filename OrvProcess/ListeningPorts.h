#pragma once

#include <QByteArrayView>
#include <QHash>
#include <QList>

#include <sys/types.h>

namespace orv {

struct ProcessEntry;

struct SessionPorts {
    QList<int> ports; ///< ascending, each once
    /// Whether these are all: false when a process of the session could not be looked into, as one of another user.
    bool areAll = true;

    bool operator==(const SessionPorts&) const = default;
};

/// The TCP ports on which a process of the session listens. Processes of the session are those in the session or
/// process group `session` and every descendant of theirs, so that a server which went into a session of its own is
/// found as long as its parent lives.
///
/// Blocking (it reads the process table once); any thread.
[[nodiscard]] SessionPorts listeningPorts(pid_t session);

namespace ListeningPorts {

/// Living members of the session or group, and their descendants.
[[nodiscard]] QList<pid_t> membersOf(pid_t session, const QList<ProcessEntry>& table);

/// From socket inode to local port, for the listening sockets of a "/proc/net/tcp" or "tcp6" table (proc(5)).
[[nodiscard]] QHash<quint64, int> listeningSockets(QByteArrayView table);

} // namespace ListeningPorts
} // namespace orv
