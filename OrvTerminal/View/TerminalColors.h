#pragma once

#include "TermEngine/Palette.h"
#include "TermEngine/TerminalDelegate.h"

#include <QColor>
#include <QRgb>

#include <array>

namespace orv {

/// The colours that a theme gives a terminal.
struct TerminalColors {
    term::BaseColors base = term::BaseColors::xterm();
    term::ColorScheme scheme = term::ColorScheme::dark;
    QRgb cursor = 0xFFFB8442;
    QRgb selection = 0xFF67402B;
    QRgb match = 0x4CEAC758; ///< of a search, over the background of the cell
    QRgb currentMatch = 0xFFEAC758;
    QRgb onCurrentMatch = 0xFF110D0B;
    QRgb failure = 0xFFFE777E; ///< marks a command that failed
    QRgb mark = 0xFF48423F;    ///< marks one that did not
    bool operator==(const TerminalColors&) const = default;
};

/// The colours as they are in effect: those of the theme with what programs set over them.
struct ResolvedColors {
    std::array<QRgb, 256> palette{};
    QRgb foreground = 0;
    QRgb background = 0;
    TerminalColors theme;
    bool operator==(const ResolvedColors&) const = default;
};

[[nodiscard]] constexpr QRgb toRgb(term::RgbColor color) {
    return qRgb(color.red, color.green, color.blue);
}
[[nodiscard]] inline term::RgbColor toTerm(const QColor& color) {
    return {
        static_cast<std::uint8_t>(color.red()), static_cast<std::uint8_t>(color.green()),
        static_cast<std::uint8_t>(color.blue())};
}

} // namespace orv
