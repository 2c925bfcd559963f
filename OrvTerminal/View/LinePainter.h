#pragma once

#include "OrvTerminal/View/GlyphCache.h"
#include "OrvTerminal/View/TerminalColors.h"
#include "TermEngine/Bidi.h"
#include "TermEngine/BufferLine.h"

#include <QImage>

#include <vector>

namespace orv {

/// The colour, or where it hardly differs from what is behind it, black or white. Programs choose pairs of colours that
/// go together in a dark palette; in a light one "white on blue" is a dark grey on blue.
[[nodiscard]] QRgb readable(QRgb color, QRgb background);

/// Columns of a line, the end excluded, that stand out.
struct LineMark {
    enum class Kind : std::uint8_t { match, currentMatch, selection, link };
    int first = 0;
    int end = 0;
    Kind kind = Kind::match;
    bool operator==(const LineMark&) const = default;
};

/// Paints lines of cells.
class LinePainter {
public:
    struct Line {
        const term::BufferLine& cells;
        const term::CellArena& arena;
        const term::PresentedRow& order;
        const std::vector<LineMark>& marks; ///< later ones lie over earlier ones
        /// Cells without a background of their own let what is below shine through, an image.
        bool isTransparent = false;
        bool hidesBlinking = false; ///< text that blinks is not there
    };

    LinePainter(GlyphCache& glyphs, const ResolvedColors& colors) : m_glyphs(glyphs), m_colors(colors) {}

    /// A picture of the whole line; null where all of it is the plain background.
    [[nodiscard]] QImage paint(const Line& line);
    /// Whether there is text that blinks in the line.
    [[nodiscard]] static bool blinks(const Line& line);
    /// The character in a column as it stands on a block cursor.
    [[nodiscard]] QImage paintCursor(const Line& line, int column, QRgb background);
    /// Text that is not on the screen, underlined: what an input method is at.
    [[nodiscard]] QImage paintText(std::u32string_view text, int cursor);

private:
    struct Style {
        QRgb foreground = 0;
        QRgb text = 0; ///< the foreground, or what can be read where that can't
        QRgb background = 0;
        QRgb underline = 0;
        term::UnderlineStyle underlineStyle = term::UnderlineStyle::none;
        unsigned face = 0;
        bool hasBackground = false;
        bool isInvisible = false;
        bool isBlinking = false;
        bool isStruck = false;
        bool isOverlined = false;
    };
    struct Cell {
        term::PackedCell cell;
        int column = 0; ///< from the left, as it is shown
        int stored = 0; ///< where it stands in the line
        int columns = 1;
        bool isRightToLeft = false;
        Style style;
    };

    [[nodiscard]] QRgb rgb(term::Color color, QRgb ofDefault, QRgb ofInverted) const;
    [[nodiscard]] Style styleOf(const term::Attribute& attribute) const;
    void applyMark(Style& style, LineMark::Kind kind) const;
    [[nodiscard]] std::vector<Cell> layOut(const Line& line) const;
    /// What a cell of a script that runs from right to left shows: mirrored, or joined to its neighbours.
    [[nodiscard]] static char32_t inItsPlace(const Line& line, const Cell& cell, char32_t scalar);
    void drawCharacter(QImage& image, const Line& line, const Cell& cell, const Cell* next, int left);
    void blend(QImage& image, const GlyphCache::Glyph& glyph, QPoint corner, QRgb color, QRect clip) const;
    void drawLines(QImage& image, const Style& style, term::RenderLineMode mode, int left, int width) const;

    GlyphCache& m_glyphs;
    const ResolvedColors& m_colors;
};

} // namespace orv
