#include "TermEngine/RgbColor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace term {
namespace {

struct NamedColor {
    std::string_view name;
    RgbColor color;
};

/// In the order of their names.
constexpr std::array namedColors{
    NamedColor{"aqua", {0, 255, 255}},
    NamedColor{"beige", {245, 245, 220}},
    NamedColor{"black", {0, 0, 0}},
    NamedColor{"blue", {0, 0, 255}},
    NamedColor{"brown", {165, 42, 42}},
    NamedColor{"chocolate", {210, 105, 30}},
    NamedColor{"coral", {255, 127, 80}},
    NamedColor{"crimson", {220, 20, 60}},
    NamedColor{"cyan", {0, 255, 255}},
    NamedColor{"darkblue", {0, 0, 139}},
    NamedColor{"darkgray", {169, 169, 169}},
    NamedColor{"darkgreen", {0, 100, 0}},
    NamedColor{"darkgrey", {169, 169, 169}},
    NamedColor{"darkorange", {255, 140, 0}},
    NamedColor{"darkred", {139, 0, 0}},
    NamedColor{"fuchsia", {255, 0, 255}},
    NamedColor{"gold", {255, 215, 0}},
    NamedColor{"gray", {190, 190, 190}},
    NamedColor{"green", {0, 255, 0}},
    NamedColor{"grey", {190, 190, 190}},
    NamedColor{"indigo", {75, 0, 130}},
    NamedColor{"ivory", {255, 255, 240}},
    NamedColor{"khaki", {240, 230, 140}},
    NamedColor{"lavender", {230, 230, 250}},
    NamedColor{"lightblue", {173, 216, 230}},
    NamedColor{"lightgray", {211, 211, 211}},
    NamedColor{"lightgreen", {144, 238, 144}},
    NamedColor{"lightgrey", {211, 211, 211}},
    NamedColor{"lime", {0, 255, 0}},
    NamedColor{"magenta", {255, 0, 255}},
    NamedColor{"maroon", {176, 48, 96}},
    NamedColor{"navy", {0, 0, 128}},
    NamedColor{"olive", {128, 128, 0}},
    NamedColor{"orange", {255, 165, 0}},
    NamedColor{"orchid", {218, 112, 214}},
    NamedColor{"pink", {255, 192, 203}},
    NamedColor{"plum", {221, 160, 221}},
    NamedColor{"purple", {160, 32, 240}},
    NamedColor{"red", {255, 0, 0}},
    NamedColor{"salmon", {250, 128, 114}},
    NamedColor{"sienna", {160, 82, 45}},
    NamedColor{"silver", {192, 192, 192}},
    NamedColor{"tan", {210, 180, 140}},
    NamedColor{"teal", {0, 128, 128}},
    NamedColor{"tomato", {255, 99, 71}},
    NamedColor{"turquoise", {64, 224, 208}},
    NamedColor{"violet", {238, 130, 238}},
    NamedColor{"wheat", {245, 222, 179}},
    NamedColor{"white", {255, 255, 255}},
    NamedColor{"yellow", {255, 255, 0}},
};
static_assert(std::ranges::is_sorted(namedColors, {}, &NamedColor::name));

std::optional<uint32_t> hexadecimal(std::string_view digits) {
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
    return isWhole ? std::optional(value) : std::nullopt;
}

/// A part after "rgb:", which is a fraction of the largest number of as many digits.
std::optional<uint8_t> scaledPart(std::string_view digits) {
    const auto value = hexadecimal(digits);
    if (!value || digits.size() > 4) {
        return std::nullopt;
    }
    const uint32_t largest = (1U << (4 * digits.size())) - 1;
    return static_cast<uint8_t>((*value * 255 + largest / 2) / largest);
}

/// A part after "rgbi:", in digits and a point.
std::optional<uint8_t> intensityPart(std::string_view digits) {
    if (digits.empty() || digits.size() > 16 || digits.find_first_not_of("0123456789.") != std::string_view::npos) {
        return std::nullopt;
    }
    double value = 0;
    double unit = 1;
    bool isFraction = false;
    for (const char digit : digits) {
        if (digit == '.') {
            if (isFraction) {
                return std::nullopt;
            }
            isFraction = true;
        } else if (isFraction) {
            unit /= 10;
            value += (digit - '0') * unit;
        } else {
            value = value * 10 + (digit - '0');
        }
    }
    return value <= 1 ? std::optional(static_cast<uint8_t>(std::lround(value * 255))) : std::nullopt;
}

std::optional<RgbColor> threeParts(std::string_view text, std::optional<uint8_t> (*part)(std::string_view)) {
    const size_t first = text.find('/');
    const size_t second = text.find('/', first == std::string_view::npos ? first : first + 1);
    if (second == std::string_view::npos) {
        return std::nullopt;
    }
    const auto red = part(text.substr(0, first));
    const auto green = part(text.substr(first + 1, second - first - 1));
    const auto blue = part(text.substr(second + 1));
    return red && green && blue ? std::optional(RgbColor{*red, *green, *blue}) : std::nullopt;
}

/// After "#", the digits are the highest ones of each part.
std::optional<RgbColor> sharp(std::string_view digits) {
    const size_t each = digits.size() / 3;
    if (each < 1 || each > 4 || digits.size() % 3 != 0) {
        return std::nullopt;
    }
    std::array<uint8_t, 3> parts{};
    for (size_t at = 0; at < parts.size(); ++at) {
        const auto value = hexadecimal(digits.substr(at * each, each));
        if (!value) {
            return std::nullopt;
        }
        parts[at] = static_cast<uint8_t>(each == 1 ? *value << 4U : *value >> (4 * each - 8));
    }
    return RgbColor{parts[0], parts[1], parts[2]};
}

std::optional<RgbColor> named(std::string_view text) {
    constexpr size_t longestName = 16;
    std::string name;
    for (const char letter : text.substr(0, longestName)) {
        if (letter != ' ') {
            name.push_back(letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 0x20) : letter);
        }
    }
    const auto* found = std::ranges::lower_bound(namedColors, name, {}, &NamedColor::name);
    const bool isKnown = text.size() <= longestName && found != namedColors.end() && found->name == name;
    return isKnown ? std::optional(found->color) : std::nullopt;
}

} // namespace

std::optional<RgbColor> parseColorSpec(std::string_view text) {
    if (text.starts_with("rgb:")) {
        return threeParts(text.substr(4), scaledPart);
    }
    if (text.starts_with("rgbi:")) {
        return threeParts(text.substr(5), intensityPart);
    }
    return text.starts_with('#') ? sharp(text.substr(1)) : named(text);
}

std::string formatColorSpec(RgbColor color) {
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string out = "rgb:";
    for (const uint8_t part : {color.red, color.green, color.blue}) {
        for (int twice = 0; twice < 2; ++twice) {
            out.push_back(digits[part >> 4U]);
            out.push_back(digits[part & 0xFU]);
        }
        out.push_back('/');
    }
    out.pop_back();
    return out;
}

} // namespace term
