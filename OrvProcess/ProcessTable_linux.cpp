#include "OrvCore/UniqueFd.h"
#include "OrvProcess/ProcessTable_p.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>

namespace orv {

QList<ProcessEntry> processTable() {
    QList<ProcessEntry> table;
    const std::unique_ptr<DIR, int (*)(DIR*)> proc(::opendir("/proc"), ::closedir);
    if (!proc) {
        return table;
    }
    while (const dirent* entry = ::readdir(proc.get())) {
        const auto pid = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
        if (pid <= 0) {
            continue;
        }
        char path[32];
        std::snprintf(path, sizeof path, "/proc/%d/stat", pid);
        const UniqueFd file(::open(path, O_RDONLY | O_CLOEXEC));
        char text[1024];
        const ssize_t size = file.isValid() ? ::read(file.get(), text, sizeof text - 1) : -1;
        if (size <= 0) {
            continue;
        }
        text[size] = 0;
        // proc(5): "pid (name) state ppid pgrp session ..."; the name may hold blanks and parentheses.
        const char* rest = std::strrchr(text, ')');
        char state = 0;
        ProcessEntry found{.pid = pid};
        if (rest != nullptr &&
            std::sscanf(rest + 1, " %c %d %d %d", &state, &found.parent, &found.group, &found.session) == 4) {
            found.isAlive = state != 'Z' && state != 'X';
            table.append(found);
        }
    }
    return table;
}

} // namespace orv
