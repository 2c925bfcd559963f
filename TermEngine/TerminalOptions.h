#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace term {

/// A number that is never stored below `minimum`.
template <typename Number, Number minimum>
class AtLeast {
public:
    constexpr AtLeast(Number value = minimum) : m_value(value < minimum ? minimum : value) {}
    constexpr operator Number() const { return m_value; }

private:
    Number m_value;
};

/// The raw value plus 1 is the parameter of DECSCUSR.
enum class CursorStyle : uint8_t { blinkBlock, steadyBlock, blinkUnderline, steadyUnderline, blinkBar, steadyBar };

/// How the colours 16 to 255 come about: from the fixed cube and ramp of xterm, or from the 16 colours of the theme
/// (see Palette.h).
enum class Ansi256PaletteStrategy : uint8_t { xterm, base16Lab, base16LabHarmonious };

/// Columns of a flag, and of a regional indicator that stands alone.
enum class RegionalIndicatorWidth : uint8_t { wide, narrow };

/// What programs may do with the clipboard. With `ask`, the host decides on every request.
enum class KittyClipboardPolicy : uint8_t { ask, writeOnly, allow, deny };

enum class BidiDirection : uint8_t { leftToRight, rightToLeft };

/// How lines are presented where the text has two directions.
struct BidiPresentationState {
    bool isImplicit = true; ///< the terminal reorders (BDSM, ECMA-48 7.2.1), not the program
    BidiDirection paragraph = BidiDirection::leftToRight; ///< SCP, ECMA-48 8.3.111
    bool autodetectsDirection = false;                    ///< mode 2501: the paragraph's first strong character decides
    bool mirrorsBoxDrawing = false;                       ///< mode 2500

    bool operator==(const BidiPresentationState&) const = default;
};

struct KittyGraphicsConfiguration {
    size_t imageCacheLimitBytes = 10'000'000;   ///< of decoded pixels, all images of a terminal together
    std::optional<std::string> storageFolder{}; ///< for hosts that put images aside: the engine keeps all in memory
    /// Whether a program may name files and shared memory to be read: only safe for a child on this machine.
    bool allowsLocalMedia = false;

    bool operator==(const KittyGraphicsConfiguration&) const = default;
};

/// The record with which a host creates a terminal.
struct TerminalOptions {
    static constexpr int64_t minimumKittyClipboardWriteLimitBytes = 4096;

    int cols = 80;
    int rows = 25;
    bool convertEol = false; ///< LF acts as CR LF
    std::string termName = "xterm-256color";
    CursorStyle cursorStyle = CursorStyle::blinkBlock;
    bool screenReaderMode = false; ///< the delegate is told of all text that is written (`textWritten`)
    int scrollback = 500;          ///< lines above the normal screen
    int tabStopWidth = 8;
    bool enableSixelReported = true;
    KittyGraphicsConfiguration kittyGraphics{};
    Ansi256PaletteStrategy ansi256PaletteStrategy = Ansi256PaletteStrategy::base16Lab;
    RegionalIndicatorWidth regionalIndicatorWidth = RegionalIndicatorWidth::wide;
    BidiPresentationState initialBidiState{};
    AtLeast<int, 1> maximumBidiParagraphRows = 500; ///< a longer one stays in the order in which it was written
    bool initialBidiArrowKeySwap = false;
    std::optional<std::string> featureReport{};
    size_t maximumOscBytes = 0x4100000;
    KittyClipboardPolicy kittyClipboardPolicy = KittyClipboardPolicy::ask;
    AtLeast<int64_t, minimumKittyClipboardWriteLimitBytes> kittyClipboardWriteLimitBytes = 0x4000000;
    int kittyClipboardMaximumRepresentations = 256; ///< MIME types of one write
    int kittyClipboardMaximumAliases = 256;

    [[nodiscard]] static TerminalOptions defaults() { return {}; }
    /// `rest` with a limit for images in place of its graphics settings, and with the default limits for OSC strings
    /// and the clipboard.
    [[nodiscard]] static TerminalOptions withImageCacheLimit(size_t kittyImageCacheLimitBytes, TerminalOptions rest);

    bool operator==(const TerminalOptions&) const = default;
};

} // namespace term
