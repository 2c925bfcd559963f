#pragma once

#include "OrvCore/ChildProcess.h"
#include "OrvCore/UniqueFd.h"

#include <expected>

namespace orv {

/// A pipe whose ends no child inherits, and whose read end does not block. Neither is a standard stream's number.
struct Pipe {
    UniqueFd readEnd;
    UniqueFd writeEnd;

    [[nodiscard]] static std::expected<Pipe, SpawnError> make();
};

} // namespace orv
