#include "TermEngine/Terminal.h"
#include "TermEngine/TextFields_p.h"

#include <array>

namespace term {

using detail::cutAt;
using detail::numberOf;

namespace {

/// Answers to one string; all there are to ask fit. Whatever a string asks beyond would multiply its length.
constexpr int mostAnswers = 512;
/// Of one string are read; four times as many as there are colours.
constexpr int mostEntries = 1024;

} // namespace

ColorTable& Terminal::themedColors() {
    if (!m_hasTheme) {
        m_hasTheme = true;
        m_colors.setTheme(m_delegate.getColors(*this).value_or(BaseColors::xterm()), m_options.ansi256PaletteStrategy);
    }
    return m_colors;
}

void Terminal::themeChanged() {
    m_hasTheme = false;
    static_cast<void>(themedColors());
}

bool Terminal::dispatchColors(int code, std::string_view payload, StringEnd end) {
    if (code == 4 || code == 5) {
        paletteColors(code, payload, end);
    } else if (code >= 10 && code <= 19) {
        dynamicColors(code, payload, end);
    } else if (code == 21) {
        kittyColors(payload, end);
    } else if (code == 104 || code == 105) {
        resetPalette(code, payload);
    } else if (code >= 110 && code <= 119) {
        const auto which = static_cast<DynamicColor>(code - 110);
        m_colors.set(which, {});
        dynamicColorChanged(which);
    } else {
        return false;
    }
    return true;
}

/// OSC 4 and 5: pairs of an index and a colour, or a "?".
void Terminal::paletteColors(int code, std::string_view payload, StringEnd end) {
    const int first = code == 4 ? 0 : ColorTable::paletteSize;
    int answers = 0;
    for (int entry = 0; entry < mostEntries && !payload.empty(); ++entry) {
        const std::optional<int> given = numberOf(cutAt(payload, ';'));
        const std::string_view notation = cutAt(payload, ';');
        if (!given || *given < 0 || *given >= ColorTable::paletteSize + ColorTable::specialCount - first) {
            continue;
        }
        const int index = first + *given;
        if (notation == "?") {
            const std::optional<RgbColor> color = themedColors().color(index);
            if (color && ++answers <= mostAnswers) {
                sendOsc(std::to_string(code) + ";" + std::to_string(*given) + ";" + formatColorSpec(*color), end);
            }
        } else if (const std::optional<RgbColor> color = parseColorSpec(notation)) {
            m_colors.set(index, color);
            m_delegate.colorChanged(*this, index);
        }
    }
}

void Terminal::resetPalette(int code, std::string_view payload) {
    const int first = code == 104 ? 0 : ColorTable::paletteSize;
    int count = code == 104 ? ColorTable::paletteSize : ColorTable::specialCount;
    if (payload.empty()) {
        for (int index = first; index < first + count; ++index) {
            m_colors.set(index, {});
        }
        m_delegate.colorChanged(*this, {});
        return;
    }
    // By their numbers the special colours can be reset with either, as they can be set.
    count = ColorTable::paletteSize + ColorTable::specialCount - first;
    for (int entry = 0; entry < mostEntries && !payload.empty(); ++entry) {
        if (const std::optional<int> given = numberOf(cutAt(payload, ';')); given && *given >= 0 && *given < count) {
            m_colors.set(first + *given, {});
            m_delegate.colorChanged(*this, first + *given);
        }
    }
}

/// OSC 10 to 19: each further colour is for the next number.
void Terminal::dynamicColors(int code, std::string_view payload, StringEnd end) {
    for (int index = code - 10; index < ColorTable::dynamicCount && !payload.empty(); ++index) {
        const std::string_view notation = cutAt(payload, ';');
        const auto which = static_cast<DynamicColor>(index);
        if (notation == "?") {
            if (const std::optional<RgbColor> color = themedColors().color(which)) {
                sendOsc(std::to_string(10 + index) + ";" + formatColorSpec(*color), end);
            }
        } else if (const std::optional<RgbColor> color = parseColorSpec(notation)) {
            m_colors.set(which, color);
            dynamicColorChanged(which);
        }
    }
}

void Terminal::dynamicColorChanged(DynamicColor which) {
    const std::optional<RgbColor> color = m_colors.ownColor(which);
    switch (which) {
    case DynamicColor::foreground:
        m_delegate.setForegroundColor(*this, color);
        break;
    case DynamicColor::background:
        m_delegate.setBackgroundColor(*this, color);
        break;
    case DynamicColor::cursor:
        m_delegate.setCursorColor(*this, color);
        break;
    default:
        m_delegate.colorChanged(*this, {});
        break;
    }
}

/// Of those that the host hears about on their own.
std::vector<DynamicColor> Terminal::ownDynamicColors() const {
    std::vector<DynamicColor> own;
    for (const auto which : {DynamicColor::foreground, DynamicColor::background, DynamicColor::cursor}) {
        if (m_colors.ownColor(which)) {
            own.push_back(which);
        }
    }
    return own;
}

/// OSC 21 of kitty: "key=colour;key=?;key=", where no colour is back to the theme.
void Terminal::kittyColors(std::string_view payload, StringEnd end) {
    struct NamedColor {
        std::string_view name;
        DynamicColor which;
    };
    static constexpr std::array keys = std::to_array<NamedColor>({
        {"foreground", DynamicColor::foreground},
        {"background", DynamicColor::background},
        {"cursor", DynamicColor::cursor},
        {"selection_background", DynamicColor::highlightBackground},
        {"selection_foreground", DynamicColor::highlightForeground},
    });
    std::string answers;
    int count = 0;
    const auto answer = [&](std::string_view key, const std::optional<RgbColor>& color) {
        if (++count > mostAnswers) {
            return;
        }
        answers += ";" + std::string(key) + "=" + (color ? formatColorSpec(*color) : "");
    };
    for (int entry = 0; entry < mostEntries && !payload.empty(); ++entry) {
        std::string_view value = cutAt(payload, ';');
        const std::string_view name = cutAt(value, '=');
        const std::optional<RgbColor> color = parseColorSpec(value);
        if (const std::optional<int> index = numberOf(name); index && *index >= 0 && *index < ColorTable::paletteSize) {
            if (value == "?") {
                answer(std::to_string(*index), themedColors().color(*index));
            } else if (color || value.empty()) {
                m_colors.set(*index, color);
                m_delegate.colorChanged(*this, index);
            }
            continue;
        }
        for (const NamedColor& key : keys) {
            if (key.name != name) {
                continue;
            }
            if (value == "?") {
                answer(key.name, themedColors().color(key.which));
            } else if (color || value.empty()) {
                m_colors.set(key.which, color);
                dynamicColorChanged(key.which);
            }
        }
    }
    if (!answers.empty()) {
        sendOsc("21" + answers, end);
    }
}

} // namespace term
