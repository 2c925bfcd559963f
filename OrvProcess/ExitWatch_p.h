#pragma once

#include "OrvCore/UniqueFd.h"

#include <vector>

#include <sys/types.h>

namespace orv {

/// A descriptor that becomes readable, and stays so, when one of some processes has ended; they need not be children.
class ExitWatch {
public:
    ExitWatch();

    /// False when the process is gone already or can't be watched.
    bool add(pid_t pid);
    [[nodiscard]] int descriptor() const { return m_events.get(); }

private:
    UniqueFd m_events;
    std::vector<UniqueFd> m_processes;
};

} // namespace orv
