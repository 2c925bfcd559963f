#include "TermEngine/CharData.h"

#include <array>
#include <utility>

namespace term {
namespace {

constexpr std::uint32_t noColor = 0xFF000000;

void appendColor(std::string& sgr, Color color, int base) {
    const auto number = [](std::uint32_t value) { return std::to_string(value); };
    const std::uint32_t value = color.value();
    if (color.kind() == Color::Kind::trueColor) {
        sgr += ";" + std::to_string(base + 8) + ";2;" + number(value >> 16) + ";" + number((value >> 8) & 0xFF) + ";" +
               number(value & 0xFF);
    } else if (color.kind() == Color::Kind::ansi256) {
        if (value < 16) {
            sgr += ";" + number(value + static_cast<std::uint32_t>(value < 8 ? base : base + 52));
        } else {
            sgr += ";" + std::to_string(base + 8) + ";5;" + number(value);
        }
    }
}

} // namespace

PackedAttributeKey Attribute::packed() const {
    const std::uint32_t under = underlineColor ? underlineColor->raw() : noColor;
    return {
        std::uint64_t{fg.raw()} | std::uint64_t{bg.raw()} << 32,
        std::uint64_t{style.raw()} | std::uint64_t{static_cast<std::uint8_t>(underlineStyle)} << 8 |
            std::uint64_t{under} << 16 | std::uint64_t{overline} << 48};
}

Attribute Attribute::unpacked(const PackedAttributeKey& key) {
    Attribute made;
    made.fg = Color::fromRaw(static_cast<std::uint32_t>(key.word0));
    made.bg = Color::fromRaw(static_cast<std::uint32_t>(key.word0 >> 32));
    made.style = CharacterStyle(static_cast<std::uint8_t>(key.word1));
    made.underlineStyle = static_cast<UnderlineStyle>((key.word1 >> 8) & 0xFF);
    if (const auto under = static_cast<std::uint32_t>(key.word1 >> 16); under != noColor) {
        made.underlineColor = Color::fromRaw(under);
    }
    made.overline = ((key.word1 >> 48) & 1) != 0;
    return made;
}

std::string Attribute::toSgr() const {
    static constexpr std::array<std::pair<StyleBit, const char*>, 8> codes = {{
        {StyleBit::bold, ";1"},
        {StyleBit::underline, ";4"},
        {StyleBit::blink, ";5"},
        {StyleBit::inverse, ";7"},
        {StyleBit::invisible, ";8"},
        {StyleBit::dim, ";2"},
        {StyleBit::italic, ";3"},
        {StyleBit::crossedOut, ";9"},
    }};
    std::string sgr = "0";
    for (const auto& [bit, code] : codes) {
        if (style.has(bit)) {
            sgr += code;
        }
    }
    appendColor(sgr, fg, 30);
    appendColor(sgr, bg, 40);
    if (underlineStyle > UnderlineStyle::single) {
        sgr += ";4:" + std::to_string(static_cast<int>(underlineStyle));
    }
    if (underlineColor && underlineColor->kind() == Color::Kind::ansi256) {
        sgr += ";58:5:" + std::to_string(underlineColor->value());
    } else if (underlineColor && underlineColor->kind() == Color::Kind::trueColor) {
        const std::uint32_t value = underlineColor->value();
        sgr += ";58:2::" + std::to_string(value >> 16) + ":" + std::to_string((value >> 8) & 0xFF) + ":" +
               std::to_string(value & 0xFF);
    }
    return overline ? sgr + ";53" : sgr;
}

} // namespace term
