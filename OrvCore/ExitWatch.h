#pragma once

#include "OrvCore/UniqueFd.h"

#include <vector>

#include <sys/types.h>

namespace orv {

/// A descriptor that becomes readable, and stays so, when one of some processes has ended; they need not be children.
class ExitWatch {
public:
    ExitWatch();

    enum class Added { watched, gone, refused };
    /// Refused: the process may live, but can't be watched, as when no descriptor is left.
    Added add(pid_t pid);
    [[nodiscard]] int descriptor() const { return m_events.get(); }

private:
    UniqueFd m_events;
    std::vector<UniqueFd> m_processes;
};

} // namespace orv
