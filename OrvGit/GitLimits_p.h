#pragma once

#include <chrono>

namespace orv::GitLimits {

inline constexpr std::chrono::seconds local{30};
inline constexpr std::chrono::seconds remote{120};

} // namespace orv::GitLimits
