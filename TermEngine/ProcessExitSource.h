#pragma once

#include "TermEngine/UniqueFd.h"

#include <sys/types.h>

namespace term {

/// Tells when a child has ended, without collecting its status (pidfd on Linux, kqueue on macOS).
class ProcessExitSource {
public:
    explicit ProcessExitSource(pid_t pid);

    /// Readable once the child has ended; negative where the system has no such thing, and hasFired has to be asked.
    [[nodiscard]] int descriptor() const { return m_descriptor.get(); }
    [[nodiscard]] bool hasFired() const;

private:
    pid_t m_pid;
    UniqueFd m_descriptor;
};

} // namespace term
