#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace term {

struct RgbColor {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;

    bool operator==(const RgbColor&) const = default;
};

/// A colour as XParseColor(3) takes it: "rgb:" with one to four hexadecimal digits a part, "rgbi:" with parts from 0 to
/// 1, "#" and three to twelve digits, or one of the names of X11.
[[nodiscard]] std::optional<RgbColor> parseColorSpec(std::string_view text);

/// "rgb:ffff/8080/0000", as a terminal answers a question for a colour.
[[nodiscard]] std::string formatColorSpec(RgbColor color);

} // namespace term
