#include "TermEngine/Unicode.h"

#include "TermEngine/Utf8Decoder.h"

#include <algorithm>

namespace term::unicode {
namespace {

/// UAX #29, GB6 to GB9b, of two neighbours.
bool joins(GraphemeBreak left, GraphemeBreak right) {
    using enum GraphemeBreak;
    if (left == control || left == cr || left == lf || right == control || right == cr || right == lf) {
        return left == cr && right == lf;
    }
    if (right == extend || right == zwj || right == spacingMark || left == prepend) {
        return true;
    }
    if (left == l) {
        return right == l || right == v || right == lv || right == lvt;
    }
    if (left == lv || left == v) {
        return right == v || right == t;
    }
    return (left == lvt || left == t) && right == t;
}

} // namespace

bool GraphemeBreaker::startsCluster(char32_t scalar) {
    const Properties next = properties(scalar);
    const GraphemeBreak kind = next.graphemeBreak();
    const bool flag = m_oddIndicators && kind == GraphemeBreak::regionalIndicator;
    const bool sequence = m_emoji == Emoji::joined && next.isExtendedPictographic();
    const bool starts = !(flag || sequence || joins(m_previous, kind));
    m_oddIndicators = kind == GraphemeBreak::regionalIndicator && !flag;
    if (next.isExtendedPictographic()) {
        m_emoji = Emoji::pictographic;
    } else if (m_emoji == Emoji::pictographic && kind == GraphemeBreak::zwj) {
        m_emoji = Emoji::joined;
    } else if (m_emoji != Emoji::pictographic || kind != GraphemeBreak::extend) {
        m_emoji = Emoji::none;
    }
    m_previous = kind;
    return starts;
}

bool continuesCluster(std::span<const char32_t> cluster, char32_t scalar) {
    GraphemeBreaker breaker;
    for (const char32_t before : cluster) {
        breaker.startsCluster(before);
    }
    return !cluster.empty() && !breaker.startsCluster(scalar);
}

int clusterWidth(std::u32string_view cluster) {
    int width = 0;
    for (std::size_t i = 0; i < cluster.size() && width < 2; ++i) {
        const bool isEmoji = i == 1 && cluster[1] == emojiSelector && properties(cluster[0]).takesEmojiSelector();
        width += isEmoji ? 1 : properties(cluster[i]).width();
    }
    return std::min(width, 2);
}

char32_t foldCase(char32_t scalar) {
    if (scalar < 0x80) {
        return scalar >= U'A' && scalar <= U'Z' ? scalar + 32 : scalar;
    }
    const auto* const behind = std::ranges::upper_bound(foldingRuns, scalar, {}, &FoldingRun::first);
    if (behind == foldingRuns.begin()) {
        return scalar;
    }
    const FoldingRun& run = *(behind - 1);
    const bool isInRun = scalar <= run.last && (scalar - run.first) % static_cast<char32_t>(run.step) == 0;
    return isInRun ? static_cast<char32_t>(static_cast<std::int32_t>(scalar) + run.distance) : scalar;
}

WordClass wordClass(char32_t scalar) {
    if (scalar < 0x80) {
        const char32_t lower = scalar | 0x20;
        return lower >= U'a' && lower <= U'z'     ? WordClass::letter
               : scalar >= U'0' && scalar <= U'9' ? WordClass::joining
               : scalar == U' '                   ? WordClass::blank
                                                  : WordClass::none;
    }
    return (std::ranges::upper_bound(wordRuns, scalar, {}, &WordRun::first) - 1)->value;
}

void appendUtf8(std::string& text, char32_t scalar) {
    const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (scalar < 0x80) {
        put(scalar);
    } else if (scalar < 0x800) {
        put(0xC0 | (scalar >> 6));
        put(0x80 | (scalar & 0x3F));
    } else if (scalar < 0x10000) {
        put(0xE0 | (scalar >> 12));
        put(0x80 | ((scalar >> 6) & 0x3F));
        put(0x80 | (scalar & 0x3F));
    } else {
        put(0xF0 | (scalar >> 18));
        put(0x80 | ((scalar >> 12) & 0x3F));
        put(0x80 | ((scalar >> 6) & 0x3F));
        put(0x80 | (scalar & 0x3F));
    }
}

std::string toUtf8(std::u32string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const char32_t scalar : text) {
        appendUtf8(bytes, scalar);
    }
    return bytes;
}

std::u32string fromUtf8(std::string_view text) {
    std::u32string scalars;
    scalars.reserve(text.size());
    Utf8Decoder decoder;
    for (const char c : text) {
        decoder.put(static_cast<std::uint8_t>(c), [&scalars](char32_t scalar) { scalars.push_back(scalar); });
    }
    decoder.finish([&scalars](char32_t scalar) { scalars.push_back(scalar); });
    return scalars;
}

} // namespace term::unicode
