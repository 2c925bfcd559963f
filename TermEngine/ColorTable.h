#pragma once

#include "TermEngine/Palette.h"
#include "TermEngine/RgbColor.h"

#include <array>
#include <cstdint>
#include <optional>

namespace term {

/// The colours of OSC 10 to 19, in their order.
enum class DynamicColor : std::uint8_t {
    foreground,
    background,
    cursor,
    pointerForeground,
    pointerBackground,
    tektronixForeground,
    tektronixBackground,
    highlightBackground,
    tektronixCursor,
    highlightForeground
};

/// The colours of a terminal: those of the theme, and what programs set over them.
class ColorTable {
public:
    static constexpr int paletteSize = 256;
    /// Bold, underline, blink, reverse, italic: OSC 5, or OSC 4 from 256 on.
    static constexpr int specialCount = 5;
    static constexpr int dynamicCount = 10;

    /// What programs have set; nothing where the colour is that of the theme.
    struct OwnColors {
        std::array<std::optional<RgbColor>, paletteSize + specialCount> palette{};
        std::array<std::optional<RgbColor>, dynamicCount> dynamic{};
    };

    explicit ColorTable(Ansi256PaletteStrategy strategy) { setTheme(BaseColors::xterm(), strategy); }

    void setTheme(const BaseColors& base, Ansi256PaletteStrategy strategy) {
        m_base = base;
        m_theme = makePalette(strategy, base);
    }
    /// The index is one of the palette, or of a special colour behind it; nothing for a special one that is not set.
    [[nodiscard]] std::optional<RgbColor> color(int index) const {
        const auto& own = m_own.palette[static_cast<std::size_t>(index)];
        return own || index >= paletteSize ? own : m_theme[static_cast<std::size_t>(index)];
    }
    [[nodiscard]] std::optional<RgbColor> color(DynamicColor which) const {
        if (const auto& own = m_own.dynamic[static_cast<std::size_t>(which)]) {
            return own;
        }
        switch (which) {
        case DynamicColor::foreground:
        case DynamicColor::cursor:
            return m_base.foreground;
        case DynamicColor::background:
            return m_base.background;
        default:
            return {};
        }
    }
    /// What a program set, without the theme.
    [[nodiscard]] std::optional<RgbColor> ownColor(DynamicColor which) const {
        return m_own.dynamic[static_cast<std::size_t>(which)];
    }
    /// Nothing: back to the theme.
    void set(int index, std::optional<RgbColor> color) { m_own.palette[static_cast<std::size_t>(index)] = color; }
    void set(DynamicColor which, std::optional<RgbColor> color) {
        m_own.dynamic[static_cast<std::size_t>(which)] = color;
    }
    void resetAll() { m_own = {}; }
    [[nodiscard]] const OwnColors& ownColors() const { return m_own; }
    void setOwnColors(const OwnColors& colors) { m_own = colors; }

private:
    BaseColors m_base;
    Palette m_theme{};
    OwnColors m_own;
};

} // namespace term
