#include "OrvProcess/ListeningPorts.h"

#include "OrvProcess/ProcessTable_p.h"

#include <QByteArrayList>
#include <QSet>

namespace orv {

namespace {

/// The fields of a line, which blanks of any number separate.
QByteArrayList fieldsOf(QByteArrayView line) {
    return line.toByteArray().simplified().split(' ');
}

} // namespace

QList<pid_t> ListeningPorts::membersOf(pid_t session, const QList<ProcessEntry>& table) {
    QHash<pid_t, QList<pid_t>> children;
    QList<pid_t> members;
    QSet<pid_t> seen;
    for (const ProcessEntry& entry : table) {
        // One that has ended holds nothing, and leaves its children to another parent.
        if (!entry.isAlive) {
            continue;
        }
        children[entry.parent].append(entry.pid);
        if (entry.session == session || entry.group == session || entry.pid == session) {
            members.append(entry.pid);
            seen.insert(entry.pid);
        }
    }
    for (qsizetype i = 0; i < members.size(); ++i) {
        for (const pid_t child : children.value(members[i])) {
            if (!seen.contains(child)) {
                seen.insert(child);
                members.append(child);
            }
        }
    }
    return members;
}

QHash<quint64, int> ListeningPorts::listeningSockets(QByteArrayView table) {
    constexpr qsizetype localAddress = 1;
    constexpr qsizetype state = 3;
    constexpr qsizetype inode = 9;
    QHash<quint64, int> sockets;
    for (qsizetype begin = 0; begin < table.size();) {
        const qsizetype newline = table.indexOf('\n', begin);
        const qsizetype end = newline < 0 ? table.size() : newline;
        const QByteArrayView line = table.sliced(begin, end - begin);
        begin = end + 1;
        // Most rows are connections: only those that hold the state LISTEN (0A) are taken apart.
        if (!line.contains(" 0A ")) {
            continue;
        }
        const QByteArrayList fields = fieldsOf(line);
        if (fields.size() <= inode || fields[state] != "0A") {
            continue;
        }
        bool isPort = false;
        const QByteArray& address = fields[localAddress];
        const int port = address.mid(address.lastIndexOf(':') + 1).toInt(&isPort, 16);
        if (const quint64 socket = fields[inode].toULongLong(); isPort && socket != 0) {
            sockets.insert(socket, port);
        }
    }
    return sockets;
}

} // namespace orv
