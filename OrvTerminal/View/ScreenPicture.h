#pragma once

#include "OrvTerminal/View/LinePainter.h"
#include "TermEngine/ScreenSnapshot.h"
#include "TermEngine/TextRange.h"

#include <QImage>
#include <QRect>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace orv {

/// What is to be seen of a terminal: a picture a line, painted again only when the line, its marks or the colours
/// have changed. Lines that scroll keep theirs. Main thread.
class ScreenPicture {
public:
    struct Row {
        std::uint64_t serial = 0; ///< another one for each picture that was painted
        QImage image;             ///< null: nothing but the background
        bool blinks = false;
        QImage hidden; ///< of a row that blinks: the same without what does
    };
    /// An image of the program's, in pixels of the screen from the corner of the first cell.
    struct Placed {
        std::shared_ptr<const term::RgbaImage> pixels;
        QRectF source;
        QRectF target;
        bool isBelowText = false;
        bool operator==(const Placed&) const = default;
    };
    struct Cursor {
        bool isShown = false;
        QRect cells; ///< column, row, columns, 1; also where it is hidden: an input method writes there
        int stretchX = 1;
        QImage character; ///< what stands on a block; null: nothing
        bool operator==(const Cursor&) const = default;
    };
    using MarksOf = std::function<std::vector<LineMark>(std::int64_t line)>;

    /// Looks at the terminal as it is now. With a `cursor` that is shown in place of the terminal's.
    void refresh(
        const term::Terminal& terminal, GlyphCache& glyphs, const ResolvedColors& colors, const MarksOf& marksOf,
        std::optional<term::TextPlace> cursor = {});
    /// The font has changed: nothing that was painted is of use.
    void forget() { ++m_epoch; }

    [[nodiscard]] const std::vector<Row>& rows() const { return m_rows; }
    [[nodiscard]] const std::vector<Placed>& images() const { return m_images; }
    [[nodiscard]] const Cursor& cursor() const { return m_cursor; }
    /// The line of the first row, counted as `Buffer::trimmedCount` does.
    [[nodiscard]] std::int64_t firstLine() const { return m_firstLine; }
    [[nodiscard]] QRgb background() const { return m_colors.background; }
    [[nodiscard]] const ResolvedColors& colors() const { return m_colors; }
    [[nodiscard]] bool blinks() const { return m_blinks; }
    /// How many lines were painted since the beginning.
    [[nodiscard]] std::uint64_t paintedCount() const { return m_painted; }

private:
    struct Known {
        term::RenderIdentity identity = 0;
        std::uint64_t generation = 0;
        std::uint64_t epoch = 0;
        int size = 0;
        std::vector<LineMark> marks;
        bool operator==(const Known&) const = default;
    };

    void placeImages(const term::Terminal& terminal, const CellGeometry& cell);
    void placeCursor(const term::Terminal& terminal, LinePainter& painter, std::optional<term::TextPlace> instead);

    std::vector<Row> m_rows;
    std::vector<Known> m_known; ///< one a row
    std::vector<Placed> m_images;
    Cursor m_cursor;
    ResolvedColors m_colors;
    std::int64_t m_firstLine = 0;
    std::uint64_t m_epoch = 1;
    std::uint64_t m_painted = 0;
    bool m_isTransparent = false;
    bool m_blinks = false;
};

} // namespace orv
