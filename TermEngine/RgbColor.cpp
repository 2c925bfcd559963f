#include "TermEngine/RgbColor.h"

#include "TermEngine/ColorNames_p.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace term {
namespace {

std::optional<uint32_t> hexadecimal(std::string_view digits) {
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
    return isWhole ? std::optional(value) : std::nullopt;
}

/// A part after "rgb:", which is a fraction of the largest number of as many digits.
std::optional<uint8_t> scaledPart(std::string_view digits) {
    const auto value = digits.size() <= 4 ? hexadecimal(digits) : std::nullopt;
    if (!value) {
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

/// In small letters and without blanks, as names of colours are compared; nothing where it is too long for one.
std::optional<std::string> plainName(std::string_view text) {
    constexpr size_t longestName = 64;
    if (text.size() > longestName) {
        return std::nullopt;
    }
    std::string name;
    for (const char letter : text) {
        if (letter != ' ') {
            name.push_back(letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 0x20) : letter);
        }
    }
    return name;
}

std::optional<RgbColor> named(std::string_view text) {
    std::optional<std::string> name = plainName(text);
    if (!name) {
        return std::nullopt;
    }
    if (const size_t at = name->find("grey"); at != std::string::npos) {
        name->replace(at, 4, "gray");
    }
    const auto* found = std::ranges::lower_bound(namedColors, *name, {}, &NamedColor::name);
    if (found == namedColors.end() || found->name != *name) {
        return std::nullopt;
    }
    return RgbColor{
        static_cast<uint8_t>(found->rgb >> 16U), static_cast<uint8_t>(found->rgb >> 8U & 0xFFU),
        static_cast<uint8_t>(found->rgb & 0xFFU)};
}

} // namespace

std::optional<RgbColor> parseColorSpec(std::string_view text) {
    if (text.starts_with('#')) {
        return sharp(text.substr(1));
    }
    const size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return named(text);
    }
    const std::optional<std::string> space = plainName(text.substr(0, colon));
    if (space == "rgb" && colon == 3) {
        return threeParts(text.substr(colon + 1), scaledPart);
    }
    return space == "rgbi" && colon == 4 ? threeParts(text.substr(colon + 1), intensityPart) : std::nullopt;
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
