#pragma once

#include <QList>

#include <sys/types.h>

namespace orv {

/// A process as the system lists it.
struct ProcessEntry {
    pid_t pid = 0;
    pid_t parent = 0;
    pid_t group = 0;
    pid_t session = 0;
    bool isAlive = false; ///< false for one that has ended and was not waited for
};

/// Every process that can be seen now. Blocking; any thread.
[[nodiscard]] QList<ProcessEntry> processTable();

} // namespace orv
