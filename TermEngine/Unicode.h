#pragma once

#include "TermEngine/UnicodeTables_p.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace term::unicode {

inline constexpr char32_t replacement = 0xFFFD;
/// Of a cell that shows a part of an image (kitty's graphics protocol, "Unicode placeholders").
inline constexpr char32_t imagePlaceholder = 0x10EEEE;
inline constexpr char32_t zeroWidthJoiner = 0x200D;
inline constexpr char32_t textSelector = 0xFE0E;
inline constexpr char32_t emojiSelector = 0xFE0F;

/// Grapheme_Cluster_Break of UAX #29. The order is that of scripts/unicode-tables.
enum class GraphemeBreak : std::uint8_t {
    other,
    cr,
    lf,
    control,
    extend,
    zwj,
    regionalIndicator,
    prepend,
    spacingMark,
    l,
    v,
    t,
    lv,
    lvt
};

/// What the screen needs to know of a scalar, in one byte.
class Properties {
public:
    constexpr explicit Properties(std::uint8_t bits) : m_bits(bits) {}
    /// Columns: 0, 1 or 2. A regional indicator has 1, though a flag, a pair of them, has 2.
    [[nodiscard]] constexpr int width() const { return m_bits & 3; }
    [[nodiscard]] constexpr GraphemeBreak graphemeBreak() const {
        return static_cast<GraphemeBreak>((m_bits >> 2) & 15);
    }
    [[nodiscard]] constexpr bool isExtendedPictographic() const { return (m_bits & 0x40) != 0; }
    /// Shown as a wide emoji when U+FE0F follows.
    [[nodiscard]] constexpr bool takesEmojiSelector() const { return (m_bits & 0x80) != 0; }
    /// Begins a cluster of its own whatever stands before it, a Prepend excepted.
    [[nodiscard]] constexpr bool startsCluster() const { return (m_bits & 0x7C) == 0; }

private:
    std::uint8_t m_bits;
};

/// Of a value past the last scalar: those of an unassigned one.
[[nodiscard]] inline Properties properties(char32_t scalar) {
    if (scalar > 0x10FFFF) {
        return Properties(1);
    }
    return Properties(blockProperties[std::size_t{blockOfScalar[scalar / blockSize]} * blockSize + scalar % blockSize]);
}

[[nodiscard]] constexpr bool isScalar(char32_t value) {
    return value < 0x110000 && (value < 0xD800 || value > 0xDFFF);
}

/// The state between the scalars of a text: extended grapheme clusters of UAX #29, one scalar after another. Without
/// GB9c: the property that it needs, Indic_Conjunct_Break, came with Unicode 15.1, and the data are of 15.0.
class GraphemeBreaker {
public:
    /// Whether a cluster begins with this scalar. The first scalar of a text begins one.
    bool startsCluster(char32_t scalar);

private:
    enum class Emoji : std::uint8_t { none, pictographic, joined };
    GraphemeBreak m_previous = GraphemeBreak::control;
    Emoji m_emoji = Emoji::none;
    bool m_oddIndicators = false;
};

/// Whether a scalar goes on with the cluster that the given scalars are.
[[nodiscard]] bool continuesCluster(std::span<const char32_t> cluster, char32_t scalar);

/// The columns that a cluster takes: what its first scalar takes, and two when another takes any by itself (a vowel
/// sign, a skin tone, the second half of a flag) or U+FE0F makes an emoji of it.
[[nodiscard]] int clusterWidth(std::u32string_view cluster);

/// For comparing without regard to case: simple case folding (CaseFolding.txt, statuses C and S).
[[nodiscard]] char32_t foldCase(char32_t scalar);

[[nodiscard]] WordClass wordClass(char32_t scalar);
/// Whether two neighbours are of one word.
[[nodiscard]] constexpr bool areOneWord(WordClass left, WordClass right) {
    using enum WordClass;
    return left >= joining && right >= joining && (left == right || left == joining || right == joining);
}

void appendUtf8(std::string& text, char32_t scalar);
[[nodiscard]] std::string toUtf8(std::u32string_view text);
/// Each maximal part that is no UTF-8 becomes one U+FFFD.
[[nodiscard]] std::u32string fromUtf8(std::string_view text);

} // namespace term::unicode
