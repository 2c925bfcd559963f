#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace term {

/// Whether programs are told that 24-bit colours work (COLORTERM).
enum class TrueColor : bool { no, yes };

/// The environment of a child that is given none: "NAME=value" each, in a fixed order, with what this process has of
/// the user's name, home and display. USER comes twice.
[[nodiscard]] std::vector<std::string> getEnvironmentVariables(
    std::optional<std::string_view> termName, TrueColor trueColor);

} // namespace term
