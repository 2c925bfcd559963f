#include "OrvProcess/ListeningPorts.h"

#include <algorithm>
#include <set>
#include <vector>

#include <arpa/inet.h>
#include <libproc.h>
#include <sys/proc_info.h>
#include <unistd.h>

namespace orv {

namespace {

std::vector<pid_t> allProcesses() {
    // The table may grow between the two calls.
    constexpr int spare = 64;
    const int bytes = ::proc_listpids(PROC_ALL_PIDS, 0, nullptr, 0);
    std::vector<pid_t> pids(static_cast<size_t>(std::max(bytes, 0)) / sizeof(pid_t) + spare);
    const int filled = ::proc_listpids(PROC_ALL_PIDS, 0, pids.data(), static_cast<int>(pids.size() * sizeof(pid_t)));
    pids.resize(static_cast<size_t>(std::max(filled, 0)) / sizeof(pid_t));
    return pids;
}

QList<ListeningPorts::ProcessEntry> processTable() {
    QList<ListeningPorts::ProcessEntry> table;
    for (const pid_t pid : allProcesses()) {
        proc_bsdinfo info{};
        if (pid > 0 && ::proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &info, sizeof info) == sizeof info) {
            table.append({pid, static_cast<pid_t>(info.pbi_ppid), static_cast<pid_t>(info.pbi_pgid), ::getsid(pid)});
        }
    }
    return table;
}

std::vector<proc_fdinfo> descriptorsOf(pid_t pid) {
    const int bytes = ::proc_pidinfo(pid, PROC_PIDLISTFDS, 0, nullptr, 0);
    std::vector<proc_fdinfo> descriptors(static_cast<size_t>(std::max(bytes, 0)) / sizeof(proc_fdinfo));
    const int filled = ::proc_pidinfo(
        pid, PROC_PIDLISTFDS, 0, descriptors.data(), static_cast<int>(descriptors.size() * sizeof(proc_fdinfo)));
    descriptors.resize(static_cast<size_t>(std::max(filled, 0)) / sizeof(proc_fdinfo));
    return descriptors;
}

} // namespace

QList<int> listeningPorts(pid_t session) {
    std::set<int> ports;
    for (const pid_t pid : ListeningPorts::membersOf(session, processTable())) {
        for (const proc_fdinfo& descriptor : descriptorsOf(pid)) {
            if (descriptor.proc_fdtype != PROX_FDTYPE_SOCKET) {
                continue;
            }
            socket_fdinfo socket{};
            const int size = ::proc_pidfdinfo(pid, descriptor.proc_fd, PROC_PIDFDSOCKETINFO, &socket, sizeof socket);
            const bool isTcp = size == sizeof socket && socket.psi.soi_kind == SOCKINFO_TCP;
            if (isTcp && socket.psi.soi_proto.pri_tcp.tcpsi_state == TSI_S_LISTEN) {
                ports.insert(ntohs(static_cast<uint16_t>(socket.psi.soi_proto.pri_tcp.tcpsi_ini.insi_lport)));
            }
        }
    }
    return {ports.begin(), ports.end()};
}

} // namespace orv
