#pragma once

#include "TermEngine/RgbColor.h"
#include "TermEngine/TerminalOptions.h"

#include <array>

namespace term {

/// What a theme gives: the sixteen named colours and the two defaults.
struct BaseColors {
    std::array<RgbColor, 16> ansi{};
    RgbColor foreground{};
    RgbColor background{};

    /// Those that xterm starts with.
    [[nodiscard]] static const BaseColors& xterm();
    bool operator==(const BaseColors&) const = default;
};

using Palette = std::array<RgbColor, 256>;

/// The 256 colours. The first sixteen are those of `base`; the cube (16 to 231) and the ramp (232 to 255) are
/// - xterm: xterm's fixed ones;
/// - base16Lab: interpolated in CIELAB between the theme's own colours, which stand in the cube's corners, so that
///   programs that use the cube fit the theme; the cube's first corner and the ramp's beginning are the darker one of
///   background and foreground, as programs expect;
/// - base16LabHarmonious: the same, but beginning at the background, so that a light theme gets a light beginning.
[[nodiscard]] Palette makePalette(Ansi256PaletteStrategy strategy, const BaseColors& base);

} // namespace term
