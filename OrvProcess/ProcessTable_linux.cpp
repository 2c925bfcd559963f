#include "OrvCore/UniqueFd.h"
#include "OrvProcess/ProcessTable_p.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
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
        if (!file.isValid() && (errno == EMFILE || errno == ENFILE)) {
            return {};
        }
        char text[512]; // the fields that matter come first
        const ssize_t size = file.isValid() ? ::read(file.get(), text, sizeof text) : -1;
        if (size <= 0) {
            continue;
        }
        if (const ProcessEntry found = processEntry(QByteArrayView(text, size)); found.pid != 0) {
            table.append(found);
        }
    }
    return table;
}

} // namespace orv
