#include "OrvProcess/ProcessTable_p.h"

#include <QByteArray>

#include <cstdio>
#include <cstdlib>

namespace orv {

ProcessEntry processEntry(QByteArrayView stat) {
    // "pid (name) state ppid pgrp session ...", and as the 22nd the time at which it started.
    const qsizetype nameEnd = stat.lastIndexOf(')');
    if (nameEnd < 0) {
        return {};
    }
    const QByteArray text = stat.toByteArray();
    ProcessEntry entry{.pid = static_cast<pid_t>(std::strtol(text.constData(), nullptr, 10))};
    char state = 0;
    const int found = std::sscanf(
        text.constData() + nameEnd + 1, " %c %d %d %d %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %llu",
        &state, &entry.parent, &entry.group, &entry.session, &entry.startTime);
    if (found < 4) {
        return {};
    }
    entry.isAlive = state != 'Z' && state != 'X';
    return entry;
}

} // namespace orv
