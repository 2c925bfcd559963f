#pragma once

#include "TermEngine/KeyEvent.h"

#include <array>
#include <charconv>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

namespace term {

inline void appendNumber(std::string& out, std::integral auto number) {
    std::array<char, 24> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    out.append(digits.data(), end);
}

inline std::string_view csiOf(ControlBits bits) {
    return bits == ControlBits::eight ? "\x9b" : "\x1b[";
}

/// Nothing for what is no Unicode scalar.
inline void appendUtf8(std::string& out, char32_t scalar) {
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (scalar < 0x80) {
        put(scalar);
    } else if (scalar < 0x800) {
        put(0xC0U | scalar >> 6U);
        put(0x80U | (scalar & 0x3FU));
    } else if (scalar < 0x10000) {
        if (scalar >= 0xD800 && scalar < 0xE000) {
            return;
        }
        put(0xE0U | scalar >> 12U);
        put(0x80U | (scalar >> 6U & 0x3FU));
        put(0x80U | (scalar & 0x3FU));
    } else if (scalar < 0x110000) {
        put(0xF0U | scalar >> 18U);
        put(0x80U | (scalar >> 12U & 0x3FU));
        put(0x80U | (scalar >> 6U & 0x3FU));
        put(0x80U | (scalar & 0x3FU));
    }
}

/// The scalar at the beginning of `text`, which is cut off it; U+FFFD for a byte that begins none.
inline char32_t takeUtf8(std::string_view& text) {
    constexpr char32_t replacement = 0xFFFD;
    const auto byte = [&text](size_t at) -> uint32_t { return at < text.size() ? static_cast<uint8_t>(text[at]) : 0U; };
    const uint32_t first = byte(0);
    const size_t length = first < 0x80                    ? 1
                          : first >= 0xC2 && first < 0xE0 ? 2
                          : first >= 0xE0 && first < 0xF0 ? 3
                          : first >= 0xF0 && first < 0xF5 ? 4
                                                          : 0;
    char32_t scalar = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0U) != 0x80) {
            text.remove_prefix(1);
            return replacement;
        }
        scalar = scalar << 6U | (byte(at) & 0x3FU);
    }
    constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    if (length == 0 || scalar < least[length] || scalar > 0x10FFFF || (scalar >= 0xD800 && scalar < 0xE000)) {
        text.remove_prefix(1);
        return replacement;
    }
    text.remove_prefix(length);
    return scalar;
}

/// What stands before the first `separator`, which is cut off it with the separator; all, where there is none.
inline std::string_view takeField(std::string_view& text, char separator) {
    const size_t at = text.find(separator);
    const std::string_view field = text.substr(0, at);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
    return field;
}

/// The characters of `text` that an identifier may be made of, since it is sent back: [a-zA-Z0-9-_+.], at most 256.
inline std::string identifierOf(std::string_view text) {
    std::string identifier;
    for (const char letter : text.substr(0, 256)) {
        const bool isWord =
            (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
        if (isWord || std::string_view("-_+.").find(letter) != std::string_view::npos) {
            identifier.push_back(letter);
        }
    }
    return identifier;
}

} // namespace term
