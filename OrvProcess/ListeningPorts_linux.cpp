#include "OrvCore/UniqueFd.h"
#include "OrvProcess/ListeningPorts.h"
#include "OrvProcess/ProcessTable_p.h"

#include <QByteArray>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace orv {

namespace {

/// Whether the last call failed though what it asked for is there: a process may end at any time.
bool isWithheld() {
    return errno != ENOENT && errno != ESRCH;
}

/// The whole of a file of the process table, whose size is not known beforehand.
QByteArray contentOf(const QByteArray& path, bool& areAll) {
    const UniqueFd file(::open(path.constData(), O_RDONLY | O_CLOEXEC));
    if (!file.isValid() && isWithheld()) {
        areAll = false;
    }
    QByteArray content;
    std::array<char, 16384> part{};
    while (file.isValid()) {
        const ssize_t count = ::read(file.get(), part.data(), part.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        content.append(part.data(), count);
    }
    return content;
}

QByteArray processFolder(pid_t pid) {
    return "/proc/" + QByteArray::number(pid);
}

/// The inodes of the sockets that a process holds.
QList<quint64> socketsOf(pid_t pid, bool& areAll) {
    constexpr std::string_view prefix = "socket:[";
    QList<quint64> inodes;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir((processFolder(pid) + "/fd").constData()), ::closedir);
    if (!entries) {
        areAll = areAll && !isWithheld();
        return inodes;
    }
    while (const dirent* entry = ::readdir(entries.get())) { // NOLINT(concurrency-mt-unsafe): the stream is our own
        if (entry->d_name[0] < '0' || entry->d_name[0] > '9') {
            continue;
        }
        std::array<char, 64> target{};
        const ssize_t length = ::readlinkat(::dirfd(entries.get()), entry->d_name, target.data(), target.size() - 1);
        if (length < 0 && isWithheld()) {
            areAll = false;
        } else if (length > 0 && std::string_view(target.data(), static_cast<size_t>(length)).starts_with(prefix)) {
            inodes.append(std::strtoull(target.data() + prefix.size(), nullptr, 10));
        }
    }
    return inodes;
}

} // namespace

SessionPorts listeningPorts(pid_t session) {
    std::set<int> ports;
    const QList<ProcessEntry> processes = processTable();
    bool areAll = !processes.isEmpty();
    // A member may live in a network namespace of its own; each namespace's tables are read once.
    QHash<QByteArray, QHash<quint64, int>> tables;
    for (const pid_t pid : ListeningPorts::membersOf(session, processes)) {
        const QList<quint64> inodes = socketsOf(pid, areAll);
        if (inodes.isEmpty()) {
            continue;
        }
        const QByteArray folder = processFolder(pid);
        std::array<char, 64> name{};
        const ssize_t length = ::readlink((folder + "/ns/net").constData(), name.data(), name.size());
        const QByteArray networkNamespace(name.data(), std::max<ssize_t>(length, 0));
        auto table = tables.find(networkNamespace);
        if (table == tables.end()) {
            QHash<quint64, int> sockets = ListeningPorts::listeningSockets(contentOf(folder + "/net/tcp", areAll));
            sockets.insert(ListeningPorts::listeningSockets(contentOf(folder + "/net/tcp6", areAll)));
            table = tables.insert(networkNamespace, std::move(sockets));
        }
        for (const quint64 inode : inodes) {
            if (const auto port = table->constFind(inode); port != table->cend()) {
                ports.insert(*port);
            }
        }
    }
    return {.ports = {ports.begin(), ports.end()}, .areAll = areAll};
}

} // namespace orv
