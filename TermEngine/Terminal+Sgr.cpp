#include "TermEngine/Terminal.h"

#include <algorithm>
#include <array>

namespace term {
namespace {

constexpr std::size_t attributeStackLimit = 10;

constexpr std::uint32_t noColor = 0xFFFFFFFF;

/// The colour of a 38, 48 or 58 at `index` into `raw`, and how many parameters it takes. (XTerm Control Sequences, SGR:
/// with colons a colour space may stand before the values; with semicolons there is none.)
int parseColor(const CsiParameters& parameters, int index, std::uint32_t& raw) {
    const int group = parameters.groupSize(index);
    const bool hasColons = group > 1;
    const int available = hasColons ? group : parameters.count - index;
    const int kind = parameters.at(index + 1);
    raw = noColor;
    if (kind == 5 && available >= 2) {
        if (available >= 3 && parameters.at(index + 2) < 256) {
            raw = Color::palette(static_cast<std::uint8_t>(parameters.at(index + 2))).raw();
        }
        return hasColons ? group : std::min(available, 3);
    }
    if (kind == 2 && available >= 2) {
        const int first = index + (hasColons && group >= 6 ? 3 : 2);
        if (available >= first - index + 3) {
            raw = Color::clamped(parameters.at(first), parameters.at(first + 1), parameters.at(first + 2)).raw();
        }
        return hasColons ? group : std::min(available, 5);
    }
    return available;
}

using Patch = AttributePatch;

constexpr std::uint64_t low32 = 0xFFFFFFFF;
constexpr int underlineColorShift = 16;

constexpr Patch styleOn(StyleBit bit) {
    return {.set = {0, static_cast<std::uint64_t>(bit)}};
}

constexpr Patch styleOff(std::uint64_t bits) {
    return {.keep = {~std::uint64_t{0}, ~bits}};
}

constexpr Patch underlined(UnderlineStyle style) {
    constexpr auto bit = static_cast<std::uint64_t>(StyleBit::underline);
    const std::uint64_t on = style == UnderlineStyle::none ? 0 : bit;
    return {.keep = {~std::uint64_t{0}, ~(bit | 0xFF00)}, .set = {0, static_cast<std::uint64_t>(style) << 8 | on}};
}

constexpr Patch foreground(Color color) {
    return {.keep = {~low32, ~std::uint64_t{0}}, .set = {color.raw(), 0}};
}

constexpr Patch background(Color color) {
    return {.keep = {low32, ~std::uint64_t{0}}, .set = {std::uint64_t{color.raw()} << 32, 0}};
}

constexpr Patch underlineColor(std::uint64_t raw) {
    return {.keep = {~std::uint64_t{0}, ~(low32 << underlineColorShift)}, .set = {0, raw << underlineColorShift}};
}

/// By the parameter; the last entry stands for all that are not known.
constexpr auto patches = [] {
    using enum StyleBit;
    const auto bit = [](StyleBit style) { return static_cast<std::uint64_t>(style); };
    std::array<Patch, 109> made{};
    made[0] = {.keep = {0, 0}, .set = {}};
    made[1] = styleOn(bold);
    made[2] = styleOn(dim);
    made[3] = styleOn(italic);
    made[4] = underlined(UnderlineStyle::single);
    made[5] = styleOn(blink);
    made[6] = styleOn(blink);
    made[7] = styleOn(inverse);
    made[8] = styleOn(invisible);
    made[9] = styleOn(crossedOut);
    made[21] = underlined(UnderlineStyle::doubled);
    made[22] = styleOff(bit(bold) | bit(dim));
    made[23] = styleOff(bit(italic));
    made[24] = underlined(UnderlineStyle::none);
    made[25] = styleOff(bit(blink));
    made[27] = styleOff(bit(inverse));
    made[28] = styleOff(bit(invisible));
    made[29] = styleOff(bit(crossedOut));
    made[39] = foreground({});
    made[49] = background({});
    made[53] = {.set = {0, std::uint64_t{1} << 48}};
    made[55] = styleOff(std::uint64_t{1} << 48);
    made[59] = underlineColor(PackedAttributeKey{}.word1 >> underlineColorShift);
    for (std::uint8_t i = 0; i < 8; ++i) {
        const auto bright = static_cast<std::uint8_t>(i + 8);
        made[30U + i] = foreground(Color::palette(i));
        made[40U + i] = background(Color::palette(i));
        made[90U + i] = foreground(Color::palette(bright));
        made[100U + i] = background(Color::palette(bright));
    }
    return made;
}();

} // namespace

void Terminal::cmdCsiM(const CsiParameters& parameters) {
    const AttributePatch patch = patchOf(parameters);
    m_renditions.add(patch);
    setAttribute(patch.applied(m_attribute));
}

/// Of at most two numbers, the second one -1 where there is none; false for what begins a colour.
bool Terminal::cmdCsiM(int first, int second) {
    if (first == 38 || first == 48 || first == 58) {
        return false;
    }
    // What is left of a colour behind another number is none; -1 is past the end of the table.
    const auto patchFor = [](int code) -> const Patch& {
        return patches[std::min(static_cast<std::size_t>(code), patches.size() - 1)];
    };
    setAttribute(patchFor(second).applied(patchFor(first).applied(m_attribute)));
    return true;
}

AttributePatch Terminal::patchOf(const CsiParameters& parameters) {
    Patch all;
    for (int i = 0; i < parameters.count;) {
        const auto code = static_cast<std::size_t>(parameters.at(i));
        int size = 1;
        if (code == 38 || code == 48 || code == 58) {
            std::uint32_t raw = noColor;
            size = parseColor(parameters, i, raw);
            if (raw == noColor) {
                // Nothing changes.
            } else if (code == 58) {
                all.then(underlineColor(raw));
            } else {
                // No branch on which of the two.
                const int shift = code == 48 ? 32 : 0;
                all.keep.word0 &= ~(low32 << shift);
                all.set.word0 = (all.set.word0 & ~(low32 << shift)) | std::uint64_t{raw} << shift;
            }
        } else if (parameters.endsWithColon(i)) {
            size = parameters.groupSize(i);
            if (const int style = parameters.at(i + 1); code != 4) {
                all.then(patches[std::min(code, patches.size() - 1)]);
            } else if (style <= static_cast<int>(UnderlineStyle::dashed)) {
                all.then(underlined(static_cast<UnderlineStyle>(style)));
            }
        } else {
            all.then(patches[std::min(code, patches.size() - 1)]);
        }
        i += size;
    }
    return all;
}

/// XTPUSHSGR: all of the attribute, or what the parameters name.
void Terminal::pushSgr(const CsiParameters& parameters) {
    if (m_attributeStack.size() == attributeStackLimit) {
        return;
    }
    SavedAttribute saved{.attribute = attribute()};
    saved.isWhole = parameters.count == 1 && parameters.at(0) == 0;
    for (int i = 0; i < parameters.count; ++i) {
        const int code = parameters.at(i);
        if (code >= 1 && code <= 9 && code != 6) {
            constexpr std::array<StyleBit, 10> bits = {
                {{},
                 StyleBit::bold,
                 StyleBit::dim,
                 StyleBit::italic,
                 StyleBit::underline,
                 StyleBit::blink,
                 {},
                 StyleBit::inverse,
                 StyleBit::invisible,
                 StyleBit::crossedOut}};
            saved.styles.set(bits[static_cast<std::size_t>(code)]);
        } else if (code == 21) {
            saved.styles.set(StyleBit::underline);
        }
        saved.foreground = saved.foreground || code == 30;
        saved.background = saved.background || code == 31;
    }
    m_attributeStack.push_back(saved);
}

void Terminal::popSgr() {
    if (m_attributeStack.empty()) {
        return;
    }
    const SavedAttribute saved = m_attributeStack.back();
    m_attributeStack.pop_back();
    m_isPenStale = true;
    if (saved.isWhole) {
        m_attribute = saved.attribute.packed();
        return;
    }
    Attribute made = attribute();
    const auto mask = saved.styles.raw();
    made.style =
        CharacterStyle(static_cast<std::uint8_t>((made.style.raw() & ~mask) | (saved.attribute.style.raw() & mask)));
    if (saved.styles.has(StyleBit::underline)) {
        made.underlineStyle = saved.attribute.underlineStyle;
    }
    made.fg = saved.foreground ? saved.attribute.fg : made.fg;
    made.bg = saved.background ? saved.attribute.bg : made.bg;
    m_attribute = made.packed();
}

} // namespace term
