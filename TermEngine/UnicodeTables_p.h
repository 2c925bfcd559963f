#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace term::unicode {

inline constexpr std::size_t blockSize = 128;
inline constexpr std::size_t blockCount = 178;
extern const std::array<std::uint8_t, 0x110000 / blockSize> blockOfScalar;
extern const std::array<std::uint8_t, blockCount * blockSize> blockProperties;

/// Scalars in a row.
struct ScalarRun {
    char32_t first;
    std::uint16_t count;
};
/// The combining marks that stand for numbers in a placeholder of an image, in their order.
extern const std::array<ScalarRun, 86> numberDiacritics;

/// Every `step`th scalar of a run has another one, so far away, for comparing without regard to case.
struct FoldingRun {
    char32_t first;
    char32_t last;
    std::int32_t step;
    std::int32_t distance;
};
inline constexpr std::size_t foldingCount = 202;
extern const std::array<FoldingRun, foldingCount> foldingRuns;

/// What a scalar is to words: outside of them, a blank, or a part of one. Scripts that are written without blanks make
/// words of their own; `joining` is what goes on with letters of any kind, such as digits and marks.
enum class WordClass : std::uint8_t { none, blank, joining, letter, han, hiragana, katakana };
/// From a scalar on, up to the next run.
struct WordRun {
    char32_t first;
    WordClass value;
};
extern const std::array<WordRun, 1893> wordRuns;

} // namespace term::unicode
