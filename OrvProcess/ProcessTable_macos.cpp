#include "OrvProcess/ProcessTable_p.h"

#include <QByteArray>

#include <array>

#include <libproc.h>
#include <sys/proc.h>
#include <sys/proc_info.h>
#include <sys/sysctl.h>
#include <unistd.h>

namespace orv {

ProcessEntry processEntry(pid_t pid) {
    proc_bsdinfo info{};
    if (::proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &info, sizeof info) != sizeof info) {
        return {};
    }
    return {
        .pid = pid,
        .parent = static_cast<pid_t>(info.pbi_ppid),
        .group = static_cast<pid_t>(info.pbi_pgid),
        .session = ::getsid(pid),
        .isAlive = info.pbi_status != SZOMB,
        .startTime = info.pbi_start_tvsec * 1'000'000 + info.pbi_start_tvusec};
}

QList<ProcessEntry> processTable() {
    // Some more than there are now: processes begin while they are listed.
    QList<pid_t> pids(::proc_listallpids(nullptr, 0) + 64);
    const int count = ::proc_listallpids(pids.data(), static_cast<int>(pids.size() * qsizetype(sizeof(pid_t))));
    QList<ProcessEntry> table;
    for (const pid_t pid : pids.first(qBound(qsizetype(0), qsizetype(count), pids.size()))) {
        if (const ProcessEntry found = processEntry(pid); found.pid != 0) {
            table.append(found);
        }
    }
    return table;
}

bool hasVariable(pid_t pid, QByteArrayView variable) {
    std::array<int, 3> name{CTL_KERN, KERN_PROCARGS2, pid};
    size_t size = 0;
    if (::sysctl(name.data(), name.size(), nullptr, &size, nullptr, 0) != 0) {
        return false;
    }
    QByteArray text(static_cast<qsizetype>(size), '\0');
    if (::sysctl(name.data(), name.size(), text.data(), &size, nullptr, 0) != 0) {
        return false;
    }
    // The program and its arguments stand before the environment, each text ended by a zero.
    text.truncate(static_cast<qsizetype>(size));
    return text.split('\0').contains(variable.toByteArray());
}

QByteArray bootIdentity() {
    std::array<char, 64> identity{};
    size_t size = identity.size() - 1;
    return ::sysctlbyname("kern.bootsessionuuid", identity.data(), &size, nullptr, 0) == 0 ? QByteArray(identity.data())
                                                                                           : QByteArray();
}

} // namespace orv
