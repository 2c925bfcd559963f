#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace term {

/// A set of characters that a program can designate for G0 to G3.
enum class Charset : std::uint8_t {
    ascii,
    decGraphics,
    decSupplemental,
    decSupplementalGraphics, ///< the same characters under another name, by which it is reported
    decTechnical,
    decHebrew,
    decGreek,
    decTurkish,
    decCyrillic,
    vt52Graphics, ///< no sequence designates it
    // Sets of 96 characters.
    latin1,
    latin2,
    isoGreek,
    isoHebrew,
    isoCyrillic,
    latin5,
    // National replacement sets.
    british,
    dutch,
    finnish,
    french,
    frenchCanadian,
    german,
    italian,
    norwegianDanish,
    spanish,
    swedish,
    swiss,
    portuguese,
    greek,
    hebrew,
    turkish
};

/// By the final bytes of a designation ("0", "%6"); nothing for a set that is not known.
[[nodiscard]] std::optional<Charset> charsetOf(std::string_view designation, bool has96Characters);
/// The final bytes that designate a set.
[[nodiscard]] std::string_view designationOf(Charset set);

[[nodiscard]] constexpr bool has96Characters(Charset set) {
    return set >= Charset::latin1 && set <= Charset::latin5;
}

/// Whether a set acts in mode 42 (DECNRCM) only.
[[nodiscard]] constexpr bool isNational(Charset set) {
    return set > Charset::british;
}

/// The character at 0x20 to 0x7E of a set.
[[nodiscard]] char32_t characterOf(Charset set, std::uint8_t code);

/// What the codes of a text stand for.
struct CharsetState {
    std::array<Charset, 4> designated{};
    int left = 0;  ///< invoked for 0x20 to 0x7F
    int right = 2; ///< invoked for 0xA0 to 0xFF, when the text is not UTF-8
    int single = -1;

    bool operator==(const CharsetState&) const = default;
    /// Whether ASCII stands for itself.
    [[nodiscard]] bool isPlain() const {
        return single < 0 && designated[static_cast<std::size_t>(left)] == Charset::ascii;
    }
};

} // namespace term
