#include "OrvCore/UniqueFd.h"
#include "OrvProcess/ProcessTable_p.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include <dirent.h>
#include <fcntl.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Nothing where no descriptor is left to look with.
std::optional<ProcessEntry> readEntry(pid_t pid) {
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%d/stat", pid);
    const UniqueFd file(::open(path, O_RDONLY | O_CLOEXEC));
    if (!file.isValid()) {
        return errno == EMFILE || errno == ENFILE ? std::nullopt : std::optional(ProcessEntry());
    }
    char text[512]; // the fields that matter come first
    const ssize_t size = ::read(file.get(), text, sizeof text);
    return size > 0 ? processEntry(QByteArrayView(text, size)) : ProcessEntry();
}

} // namespace

ProcessEntry processEntry(pid_t pid) {
    return readEntry(pid).value_or(ProcessEntry());
}

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
        const std::optional<ProcessEntry> found = readEntry(pid);
        if (!found) {
            return {};
        }
        if (found->pid != 0) {
            table.append(*found);
        }
    }
    return table;
}

bool hasVariable(pid_t pid, QByteArrayView variable) {
    QFile file(u"/proc/%1/environ"_s.arg(pid));
    return file.open(QIODevice::ReadOnly) && file.readAll().split('\0').contains(variable.toByteArray());
}

QByteArray bootIdentity() {
    QFile file(u"/proc/sys/kernel/random/boot_id"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

} // namespace orv
