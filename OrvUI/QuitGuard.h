#pragma once

#include <QString>

namespace orv {

class AppModel;

/// What would end with the application, what is left from last time too: what other processes run goes on without it.
struct RunningWork {
    int services = 0;                 ///< running or coming up
    bool isInstalling = false;        ///< what some project needs
    bool isMakingProject = false;     ///< most likely a clone, which would leave nothing behind
    bool isProgramInTerminal = false; ///< some terminal runs more than its shell
    int agents = 0;

    [[nodiscard]] static RunningWork of(AppModel& model);
    bool operator==(const RunningWork&) const = default;
    [[nodiscard]] bool isAny() const { return *this != RunningWork(); }
    /// "1 service still running and 1 AI agent is still working"; empty when there is none.
    [[nodiscard]] QString message() const;
};

} // namespace orv
