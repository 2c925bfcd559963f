#include "OrvProcess/ListeningPorts.h"
#include "OrvProcess/ProcessTable_p.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <vector>

#include <arpa/inet.h>
#include <libproc.h>
#include <sys/proc_info.h>
#include <unistd.h>

namespace orv {

namespace {

std::vector<proc_fdinfo> descriptorsOf(pid_t pid, bool& areAll) {
    errno = 0;
    const int bytes = ::proc_pidinfo(pid, PROC_PIDLISTFDS, 0, nullptr, 0);
    // A process may end at any time; of another user's, nothing is told.
    areAll = areAll && (bytes > 0 || errno == 0 || errno == ESRCH);
    std::vector<proc_fdinfo> descriptors(static_cast<size_t>(std::max(bytes, 0)) / sizeof(proc_fdinfo));
    const int filled = ::proc_pidinfo(
        pid, PROC_PIDLISTFDS, 0, descriptors.data(), static_cast<int>(descriptors.size() * sizeof(proc_fdinfo)));
    descriptors.resize(static_cast<size_t>(std::max(filled, 0)) / sizeof(proc_fdinfo));
    return descriptors;
}

} // namespace

SessionPorts listeningPorts(pid_t session) {
    std::set<int> ports;
    const QList<ProcessEntry> processes = processTable();
    bool areAll = !processes.isEmpty();
    for (const pid_t pid : ListeningPorts::membersOf(session, processes)) {
        for (const proc_fdinfo& descriptor : descriptorsOf(pid, areAll)) {
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
    return {.ports = {ports.begin(), ports.end()}, .areAll = areAll};
}

} // namespace orv
