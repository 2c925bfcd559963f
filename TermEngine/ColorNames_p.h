#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace term {

struct NamedColor {
    std::string_view name; ///< in small letters, without blanks
    std::uint32_t rgb;     ///< 0xRRGGBB
};

/// The names of X11 (rgb.txt) in their order, with "gray" alone for what is called "grey" too.
inline constexpr std::size_t namedColorCount = 550;
extern const std::array<NamedColor, namedColorCount> namedColors;

} // namespace term
