#pragma once

#include "TermEngine/PackedCell.h"
#include "TermEngine/VectorOps.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace term::detail {

struct ScalarRange {
    char32_t first;
    char32_t last;
};

/// Of the scalars that begin a cluster whatever stands before them, those of common scripts: Latin, Greek, Cyrillic,
/// box drawing in one column; kana and Han in two.
inline constexpr std::array<ScalarRange, 4> narrowRanges = {
    {{0x20, 0x7E}, {0xAF, 0x2FF}, {0x370, 0x482}, {0x24C3, 0x25A9}}};
inline constexpr std::array<ScalarRange, 3> wideRanges = {{{0x3041, 0x3096}, {0x309B, 0x30FF}, {0x4E00, 0x9FFF}}};

/// 0 for a scalar that has to be looked up.
[[nodiscard]] constexpr int commonWidth(char32_t scalar) {
    bool isNarrow = false;
    bool isWide = false;
    for (const auto& [first, last] : narrowRanges) {
        isNarrow = isNarrow || scalar - first <= last - first;
    }
    for (const auto& [first, last] : wideRanges) {
        isWide = isWide || scalar - first <= last - first;
    }
    return isWide ? 2 : isNarrow ? 1 : 0;
}

inline constexpr std::uint64_t wideBits = static_cast<std::uint64_t>(WidthState::wide) << PackedCell::widthShift;
inline constexpr std::uint64_t spacerBits = static_cast<std::uint64_t>(WidthState::spacer) << PackedCell::widthShift;

/// Of a byte that is no character of base64.
inline constexpr std::uint8_t noBase64 = 0x80;
/// By the byte; those of ASCII stand in front.
alignas(64) inline constexpr auto base64Values = [] {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> values{};
    values.fill(noBase64);
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        values[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}();

std::size_t decodeBase64Plain(const std::uint8_t* text, std::size_t size, std::uint8_t* out);

#if defined(__x86_64__)
[[nodiscard]] bool hasAvx512();
/// With what `slower` has of its own.
[[nodiscard]] VectorOps avx512Ops(const VectorOps& slower);
#endif

} // namespace term::detail
