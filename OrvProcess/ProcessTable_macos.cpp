#include "OrvProcess/ProcessTable_p.h"

#include <libproc.h>
#include <sys/proc.h>
#include <sys/proc_info.h>
#include <unistd.h>

namespace orv {

QList<ProcessEntry> processTable() {
    // Some more than there are now: processes begin while they are listed.
    QList<pid_t> pids(::proc_listallpids(nullptr, 0) + 64);
    const int count = ::proc_listallpids(pids.data(), static_cast<int>(pids.size() * qsizetype(sizeof(pid_t))));
    QList<ProcessEntry> table;
    for (const pid_t pid : pids.first(qBound(qsizetype(0), qsizetype(count), pids.size()))) {
        proc_bsdinfo info{};
        if (::proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &info, sizeof info) != sizeof info) {
            continue;
        }
        table.append(
            {.pid = pid,
             .parent = static_cast<pid_t>(info.pbi_ppid),
             .group = static_cast<pid_t>(info.pbi_pgid),
             .session = ::getsid(pid),
             .isAlive = info.pbi_status != SZOMB});
    }
    return table;
}

} // namespace orv
