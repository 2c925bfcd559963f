#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

namespace term {

/// A set of bits of `Bit`.
template <typename Bit>
class BitSet {
public:
    using Raw = std::underlying_type_t<Bit>;
    constexpr BitSet() = default;
    constexpr explicit BitSet(Raw raw) : m_raw(raw) {}
    [[nodiscard]] constexpr Raw raw() const { return m_raw; }
    [[nodiscard]] constexpr bool has(Bit bit) const { return (m_raw & static_cast<Raw>(bit)) != 0; }
    constexpr void set(Bit bit, bool on = true) {
        const Raw mask = static_cast<Raw>(bit);
        m_raw = static_cast<Raw>(on ? m_raw | mask : m_raw & ~mask);
    }
    bool operator==(const BitSet&) const = default;

private:
    Raw m_raw = 0;
};

enum class StyleBit : std::uint8_t {
    bold = 0x01,
    underline = 0x02,
    blink = 0x04,
    inverse = 0x08,
    invisible = 0x10,
    dim = 0x20,
    italic = 0x40,
    crossedOut = 0x80
};
using CharacterStyle = BitSet<StyleBit>;

enum class UnderlineStyle : std::uint8_t { none, single, doubled, curly, dotted, dashed };

/// A colour in 32 bits: 24 bits of value below a tag.
class Color {
public:
    enum class Kind : std::uint8_t { ansi256, trueColor, defaultColor, defaultInvertedColor };

    constexpr Color() : Color(Kind::defaultColor, 0) {}
    [[nodiscard]] static constexpr Color palette(std::uint8_t index) { return {Kind::ansi256, index}; }
    [[nodiscard]] static constexpr Color rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
        return {Kind::trueColor, static_cast<std::uint32_t>(red << 16 | green << 8 | blue)};
    }
    /// Of the values of a sequence, from 0 on.
    [[nodiscard]] static constexpr Color clamped(int red, int green, int blue) {
        const auto byte = [](int value) { return static_cast<std::uint8_t>(value < 255 ? value : 255); };
        return rgb(byte(red), byte(green), byte(blue));
    }
    [[nodiscard]] static constexpr Color inverted() { return {Kind::defaultInvertedColor, 0}; }
    [[nodiscard]] static constexpr Color fromRaw(std::uint32_t raw) {
        return {static_cast<Kind>(raw >> 24), raw & 0xFFFFFF};
    }
    [[nodiscard]] constexpr std::uint32_t raw() const { return m_raw; }
    [[nodiscard]] constexpr Kind kind() const { return static_cast<Kind>(m_raw >> 24); }
    [[nodiscard]] constexpr bool isDefault() const { return kind() == Kind::defaultColor; }
    /// The index of a palette colour, or 0xRRGGBB.
    [[nodiscard]] constexpr std::uint32_t value() const { return m_raw & 0xFFFFFF; }
    bool operator==(const Color&) const = default;

private:
    constexpr Color(Kind kind, std::uint32_t value) : m_raw(static_cast<std::uint32_t>(kind) << 24 | value) {}
    std::uint32_t m_raw;
};

/// How an attribute is stored and looked up: two words. Word 0 has the foreground, and the background 32 bits up;
/// word 1 the style, the underline style 8 bits up, the underline colour 16 bits up (tag 0xFF: none), the overline in
/// bit 48. At first, the default attribute.
struct PackedAttributeKey {
    std::uint64_t word0 = 0x02000000'02000000;
    std::uint64_t word1 = 0xFF000000ULL << 16;
    [[nodiscard]] Color background() const { return Color::fromRaw(static_cast<std::uint32_t>(word0 >> 32)); }
    bool operator==(const PackedAttributeKey&) const = default;
};

/// A change of an attribute that does not depend on what it was: the bits that it keeps, and those that it sets.
struct AttributePatch {
    PackedAttributeKey keep{~std::uint64_t{0}, ~std::uint64_t{0}};
    PackedAttributeKey set{0, 0};

    constexpr void then(const AttributePatch& next) {
        keep = {keep.word0 & next.keep.word0, keep.word1 & next.keep.word1};
        set = next.applied(set);
    }
    [[nodiscard]] constexpr PackedAttributeKey applied(const PackedAttributeKey& key) const {
        return {(key.word0 & keep.word0) | set.word0, (key.word1 & keep.word1) | set.word1};
    }
    bool operator==(const AttributePatch&) const = default;
};

struct Attribute {
    Color fg;
    Color bg;
    CharacterStyle style;
    UnderlineStyle underlineStyle = UnderlineStyle::none;
    std::optional<Color> underlineColor;
    bool overline = false;

    bool operator==(const Attribute&) const = default;
    [[nodiscard]] PackedAttributeKey packed() const;
    [[nodiscard]] static Attribute unpacked(const PackedAttributeKey& key);
    /// The parameters of the SGR sequence that sets the attribute.
    [[nodiscard]] std::string toSgr() const;
    /// What an erased cell keeps of it: the background.
    [[nodiscard]] Attribute background() const {
        Attribute blank;
        blank.bg = bg;
        return blank;
    }
};

/// Ties cells to what stands outside of them, a link; 0 is nothing.
using TinyAtom = std::uint16_t;

/// The part of a cell in the dialogue with a shell (OSC 133).
enum class SemanticContent : std::uint8_t { none, prompt, input, output };

enum class WidthState : std::uint8_t {
    narrow,
    wide,
    spacer,  ///< behind a wide character
    wrapPad, ///< the last column of a line, left free by a wide character that stands in the next line
};

/// One cell, as it is handed to and from the terminal.
struct CharData {
    std::int32_t code = 0;                 ///< a Unicode scalar; 0: empty
    std::u32string graphemeScalarValues{}; ///< all scalars of a cluster of several; empty: `code` is all
    std::int8_t width = 1;                 ///< 2: the next cell is its spacer; 0: a spacer
    TinyAtom payload = 0;
    SemanticContent semanticContentCode = SemanticContent::none;
    WidthState widthStateCode = WidthState::narrow;
    bool isProtected = false; ///< from selective erase
    Attribute attribute{};

    bool operator==(const CharData&) const = default;
};

} // namespace term
