#include "TermEngine/Terminal.h"

#include <algorithm>
#include <array>

namespace term {
namespace {

constexpr std::size_t attributeStackLimit = 10;

/// The colour of a 38, 48 or 58 at `index`, and how many parameters it takes. (XTerm Control Sequences, SGR: with
/// colons a colour space may stand before the values; with semicolons there is none.)
struct ColorParameters {
    std::optional<Color> color{};
    int size = 1;
};

std::uint8_t clampedByte(int value) {
    return static_cast<std::uint8_t>(std::min(value, 255));
}

ColorParameters parseColor(const CsiParameters& parameters, int index) {
    const int group = parameters.groupSize(index);
    const bool hasColons = group > 1;
    const int available = hasColons ? group : parameters.count - index;
    ColorParameters made;
    made.size = hasColons ? group : available;
    if (available < 2) {
        return made;
    }
    const int kind = parameters.at(index + 1);
    if (kind == 5) {
        made.size = hasColons ? group : std::min(available, 3);
        if (available >= 3 && parameters.at(index + 2) < 256) {
            made.color = Color::palette(static_cast<std::uint8_t>(parameters.at(index + 2)));
        }
    } else if (kind == 2) {
        const int first = index + (hasColons && group >= 6 ? 3 : 2);
        made.size = hasColons ? group : std::min(available, 5);
        if (available >= first - index + 3) {
            made.color = Color::rgb(
                clampedByte(parameters.at(first)), clampedByte(parameters.at(first + 1)),
                clampedByte(parameters.at(first + 2)));
        }
    }
    return made;
}

void setUnderline(Attribute& attribute, UnderlineStyle style) {
    attribute.underlineStyle = style;
    attribute.style.set(StyleBit::underline, style != UnderlineStyle::none);
}

} // namespace

void Terminal::selectGraphicRendition(const CsiParameters& parameters) {
    const Attribute before = m_attribute;
    applySgr(m_attribute, parameters);
    if (m_attribute != before) {
        m_isPenStale = true;
    }
}

void Terminal::applySgr(Attribute& attribute, const CsiParameters& parameters) {
    for (int i = 0; i < parameters.count;) {
        const int code = parameters.at(i);
        int size = parameters.groupSize(i);
        const auto color = [&](Color& target, int base) {
            target = Color::palette(static_cast<std::uint8_t>(code - base));
        };
        switch (code) {
        case 0:
            attribute = {};
            break;
        case 1:
            attribute.style.set(StyleBit::bold);
            break;
        case 2:
            attribute.style.set(StyleBit::dim);
            break;
        case 3:
            attribute.style.set(StyleBit::italic);
            break;
        case 4:
            if (const int style = size > 1 ? parameters.at(i + 1) : 1; style <= 5) {
                setUnderline(attribute, static_cast<UnderlineStyle>(style));
            }
            break;
        case 5:
        case 6:
            attribute.style.set(StyleBit::blink);
            break;
        case 7:
            attribute.style.set(StyleBit::inverse);
            break;
        case 8:
            attribute.style.set(StyleBit::invisible);
            break;
        case 9:
            attribute.style.set(StyleBit::crossedOut);
            break;
        case 21:
            setUnderline(attribute, UnderlineStyle::doubled);
            break;
        case 22:
            attribute.style.set(StyleBit::bold, false);
            attribute.style.set(StyleBit::dim, false);
            break;
        case 23:
            attribute.style.set(StyleBit::italic, false);
            break;
        case 24:
            setUnderline(attribute, UnderlineStyle::none);
            break;
        case 25:
            attribute.style.set(StyleBit::blink, false);
            break;
        case 27:
            attribute.style.set(StyleBit::inverse, false);
            break;
        case 28:
            attribute.style.set(StyleBit::invisible, false);
            break;
        case 29:
            attribute.style.set(StyleBit::crossedOut, false);
            break;
        case 38:
        case 48:
        case 58: {
            const ColorParameters parsed = parseColor(parameters, i);
            size = parsed.size;
            if (parsed.color && code == 58) {
                attribute.underlineColor = parsed.color;
            } else if (parsed.color) {
                (code == 38 ? attribute.fg : attribute.bg) = *parsed.color;
            }
            break;
        }
        case 39:
            attribute.fg = {};
            break;
        case 49:
            attribute.bg = {};
            break;
        case 53:
        case 55:
            attribute.overline = code == 53;
            break;
        case 59:
            attribute.underlineColor.reset();
            break;
        default:
            if (code >= 30 && code <= 37) {
                color(attribute.fg, 30);
            } else if (code >= 40 && code <= 47) {
                color(attribute.bg, 40);
            } else if (code >= 90 && code <= 97) {
                color(attribute.fg, 82);
            } else if (code >= 100 && code <= 107) {
                color(attribute.bg, 92);
            }
            break;
        }
        i += size;
    }
}

/// XTPUSHSGR: all of the attribute, or what the parameters name.
void Terminal::pushSgr(const CsiParameters& parameters) {
    if (m_attributeStack.size() == attributeStackLimit) {
        return;
    }
    SavedAttribute saved{.attribute = m_attribute};
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
        m_attribute = saved.attribute;
        return;
    }
    const auto mask = saved.styles.raw();
    m_attribute.style = CharacterStyle(
        static_cast<std::uint8_t>((m_attribute.style.raw() & ~mask) | (saved.attribute.style.raw() & mask)));
    if (saved.styles.has(StyleBit::underline)) {
        m_attribute.underlineStyle = saved.attribute.underlineStyle;
    }
    m_attribute.fg = saved.foreground ? saved.attribute.fg : m_attribute.fg;
    m_attribute.bg = saved.background ? saved.attribute.bg : m_attribute.bg;
}

} // namespace term
