#pragma once

#include "OrvProcess/ProcessManager.h"

namespace orv {

/// How the screens and the command line spell what a service does: rawValue(state.phase).
template <>
struct StoredNames<ServiceState::Phase> {
    static constexpr std::array table{
        std::pair{ServiceState::Phase::running, QLatin1StringView("running")},
        std::pair{ServiceState::Phase::failed, QLatin1StringView("failed")},
        std::pair{ServiceState::Phase::stopped, QLatin1StringView("stopped")},
        std::pair{ServiceState::Phase::starting, QLatin1StringView("starting")},
    };
};

} // namespace orv
