#include "TermEngine/SixelDecoder.h"
#include "TermEngine/Terminal.h"

#include <algorithm>
#include <limits>

namespace term {

/// A sixel picture on its way; it is shown when it is whole.
class Terminal::SixelPicture final : public DcsHandler {
public:
    SixelPicture(Terminal& terminal, SixelDecoder::Background background)
        : m_terminal(terminal), m_decoder(terminal.m_images.allowance(), terminal.m_images.limitBytes(), background) {}
    void put(Bytes data) override { m_decoder.append({reinterpret_cast<const char*>(data.data()), data.size()}); }
    void unhook() override {
        if (std::optional<RgbaImage> image = m_decoder.finish()) {
            const TerminalModes& modes = m_terminal.m_modes;
            m_terminal.showTextImage(
                std::move(*image), {},
                modes.sixelDisplay       ? AfterTextImage::cursorStays
                : modes.sixelCursorRight ? AfterTextImage::cursorBehind
                                         : AfterTextImage::cursorBelow);
        }
    }

private:
    Terminal& m_terminal;
    SixelDecoder m_decoder;
};

std::unique_ptr<DcsHandler> Terminal::sixelHandler(const CsiParameters& parameters) {
    const auto background =
        parameters.at(1) == 1 ? SixelDecoder::Background::transparent : SixelDecoder::Background::filled;
    return std::make_unique<SixelPicture>(*this, background);
}

GraphicsContext Terminal::graphicsContext() {
    GraphicsContext context;
    // First, for the host may do anything when it is asked.
    if (const std::optional<CellSize> cell = m_delegate.cellSizeInPixels(*this);
        cell && cell->width > 0 && cell->height > 0) {
        context.cellWidth = cell->width;
        context.cellHeight = cell->height;
    }
    context.mayNameFiles =
        m_options.kittyGraphics.allowsLocalMedia && m_delegate.isProcessTrusted(*this).value_or(true);
    context.screen = graphicsScreen();
    context.topRow = lineNumber(0);
    context.columns = cols();
    context.rows = rows();
    context.cursorColumn = m_buffer->x();
    context.cursorRow = m_buffer->y();
    return context;
}

/// APC: only "G", kitty's graphics, is known.
bool Terminal::dispatchApc(Bytes payload) {
    if (payload[0] != 'G') {
        return false;
    }
    cutOverwrittenImages();
    dropPassedImages();
    const std::string_view body(reinterpret_cast<const char*>(payload.data()) + 1, payload.size() - 1);
    const GraphicsResult result = m_graphics.handle(body, graphicsContext());
    if (!result.reply.empty()) {
        const bool eight = m_modes.eightBitControls;
        reply((eight ? "\x9F" : "\x1B_") + result.reply + (eight ? "\x9C" : "\x1B\\"));
    }
    applyGraphics(result);
    return true;
}

/// A line feed each, with what it scrolls; at most as many as a large picture has rows.
void Terminal::moveDown(int count) {
    constexpr int mostCells = 4'000'000;
    for (count = std::min(count, std::max(rows(), mostCells / cols())); count > 0; --count) {
        m_buffer->index(pen());
    }
}

/// A picture of sixel or OSC 1337 at the cursor; without a number of cells, as large as it is. The screen scrolls until
/// all of it is there, and the cursor comes to stand on its last row.
void Terminal::showTextImage(RgbaImage image, const TextImageSize& size, AfterTextImage after) {
    cutOverwrittenImages();
    dropPassedImages();
    const GraphicsContext context = graphicsContext();
    const auto cellsFor = [](int pixels, int cell) { return (pixels + cell - 1) / cell; };
    const bool isStretched = size.columns > 0 && size.rows > 0;
    ImagePlacement placement{
        .imageId = m_images.unusedId(),
        .screen = context.screen,
        .column = context.cursorColumn,
        .sourceWidth = image.width,
        .sourceHeight = image.height,
        .columns = isStretched ? size.columns : cellsFor(image.width, context.cellWidth),
        .rows = isStretched ? size.rows : cellsFor(image.height, context.cellHeight),
        .cellWidth = isStretched ? 0 : context.cellWidth,
        .cellHeight = isStretched ? 0 : context.cellHeight,
        // Text that comes later hides it with whatever background it has.
        .z = ImagePlacement::belowBackgrounds - 1,
        .isText = true};
    const bool isOpaque = image.isOpaque();
    if (!m_images.add(placement.imageId, 0, std::move(image))) {
        return;
    }
    if (after == AfterTextImage::cursorStays) {
        placement.column = 0;
        placement.row = context.topRow;
    } else {
        placement.row = context.topRow + context.cursorRow;
        const bool scrolls = m_buffer->isInsideMargins();
        moveDown(placement.rows - 1);
        const std::int64_t cursorLine = lineNumber(m_buffer->y());
        placement.row = scrolls ? cursorLine - (placement.rows - 1) : placement.row;
        m_buffer->setX(context.cursorColumn + (after == AfterTextImage::cursorBehind ? placement.columns : 0));
    }
    // What has scrolled on into the history is still a part of it.
    const bool hasHistory = m_buffer->hasScrollback() && m_buffer->scrollTop() == 0;
    const int top = after == AfterTextImage::cursorStays ? 0 : m_buffer->scrollTop();
    const CellArea room{
        hasHistory ? static_cast<std::int64_t>(m_buffer->trimmedCount()) : lineNumber(top), lineNumber(rows()), 0,
        cols()};
    if (const std::optional<ImagePlacement> part = partOf(placement, room)) {
        const CellArea area = part->area();
        if (isOpaque) {
            m_images.eraseText(context.screen, area);
        }
        for (int row = 0; row < rows(); ++row) {
            if (lineNumber(row) >= area.top && lineNumber(row) < area.bottom) {
                m_buffer->eraseCells(row, area.left, area.right, {});
            }
        }
        m_images.place(*part);
        m_normal->tellsLosses = m_alternate->tellsLosses = true;
    } else {
        m_images.remove(placement.imageId);
        return;
    }
    m_imagesHaveChanged = true;
    tellOfImage(placement.imageId);
}

void Terminal::tellOfImage(std::uint32_t id) {
    if (const auto image = m_images.images().find(id); image != m_images.images().end()) {
        const std::shared_ptr<const RgbaImage> pixels = image->second.frames.front().pixels;
        m_delegate.createImageFromBitmap(*this, id, pixels);
    }
}

void Terminal::applyGraphics(const GraphicsResult& result) {
    moveDown(result.cursorRows);
    if (result.cursorColumns > 0) {
        m_buffer->setX(m_buffer->x() + result.cursorColumns);
    }
    if (result.newImage != 0) {
        tellOfImage(result.newImage);
    }
    if (result.hasChanged) {
        m_imagesHaveChanged = true;
    }
}

std::int64_t Terminal::lineNumber(int row) const {
    return static_cast<std::int64_t>(m_buffer->trimmedCount()) + m_buffer->yBase() + row;
}

/// Images whose lines have left the history, or the alternate screen.
void Terminal::dropPassedImages() {
    // Whoever reads them when the input is done changes nothing.
    static_cast<void>(m_images.placements());
    const std::array<std::int64_t, 2> first{
        static_cast<std::int64_t>(m_normal->trimmedCount()),
        static_cast<std::int64_t>(m_alternate->trimmedCount()) + m_alternate->yBase()};
    if (!m_images.hasPlacements() || first == m_firstLines) {
        return;
    }
    m_firstLines = first;
    m_images.removePlacements(
        [&first](const ImagePlacement& placement) {
            return !placement.isVirtual &&
                   placement.row + placement.rows <= first[static_cast<std::size_t>(placement.screen)];
        },
        ImageStore::Data::release);
}

/// The cells below a picture that belongs to the text are unwritten, until text comes into them. It may have scrolled
/// on since.
void Terminal::cutOverwrittenImages() {
    for (Buffer* buffer : {m_normal.get(), m_alternate.get()}) {
        buffer->tellsLosses = m_images.hasText();
    }
    if (!m_images.hasText()) {
        return;
    }
    for (const ScreenId screen : {ScreenId::normal, ScreenId::alternate}) {
        const Buffer& buffer = screen == ScreenId::normal ? *m_normal : *m_alternate;
        const auto trimmed = static_cast<std::int64_t>(buffer.trimmedCount());
        std::vector<CellArea> written;
        for (const ImagePlacement& placement : m_images.placements()) {
            if (!placement.isText || placement.screen != screen) {
                continue;
            }
            const std::int64_t end = std::min(placement.row + placement.rows, trimmed + buffer.lineCount());
            for (std::int64_t number = std::max(placement.row, trimmed); number < end; ++number) {
                const BufferLine& line = buffer.lineAt(static_cast<int>(number - trimmed));
                const int right = std::min(placement.column + placement.columns, line.size());
                const int used = line.tailBlankCell() == PackedCell() ? std::min(right, line.usedLength()) : right;
                for (int col = placement.column; col < used; ++col) {
                    const int begin = col;
                    while (col < used && line[col] != PackedCell()) {
                        ++col;
                    }
                    if (col > begin) {
                        written.push_back({number, number + 1, begin, col});
                    }
                }
            }
        }
        eraseTextImages(screen, written);
    }
}

void Terminal::eraseTextImages(ScreenId screen, std::span<const CellArea> areas) {
    bool hasChanged = false;
    for (const CellArea& area : areas) {
        hasChanged = m_images.eraseText(screen, area) || hasChanged;
    }
    if (hasChanged) {
        m_firstLines = {-1, -1}; // what is left of a picture may lie before them
        m_imagesHaveChanged = true;
    }
}

/// Images that lie within the margins move with the text (kitty's graphics protocol, "Interaction with other terminal
/// actions"). What hangs over the end of the screen lies within.
void Terminal::linesMoved(const Buffer& buffer, Rectangle margins, int by) {
    const std::int64_t top = static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yBase();
    if (m_selection.range() && &buffer == m_buffer) [[unlikely]] {
        dropSelectionWithin(top + margins.top, top + margins.bottom - 1);
    }
    if (!m_images.hasPlacements()) {
        return;
    }
    constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();
    const bool isLast = margins.bottom == buffer.rows();
    CellArea area{top + margins.top, top + margins.bottom, margins.left, margins.right};
    if (margins.right == buffer.cols()) {
        area.right = std::numeric_limits<int>::max();
    }
    CellArea kept = area;
    area.bottom = isLast ? endless : area.bottom;
    kept.bottom = isLast && by < 0 ? endless : kept.bottom;
    m_images.scroll(&buffer == m_normal.get() ? ScreenId::normal : ScreenId::alternate, area, by, kept);
}

void Terminal::rowsRenumbered(const Buffer& buffer, int row, int by) {
    const std::int64_t top = static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yBase() - by;
    if (m_selection.range() && &buffer == m_buffer) [[unlikely]] {
        dropSelectionWithin(top + row, top + buffer.rows() - 1);
    }
    if (m_images.hasPlacements()) {
        m_images.renumber(&buffer == m_normal.get() ? ScreenId::normal : ScreenId::alternate, top + row, by, top);
    }
}

void Terminal::cellsMoved(const Buffer& buffer, int left, int by) {
    if (&buffer == m_buffer) {
        moveTextImages(buffer.y(), buffer.y() + 1, left, by);
    }
}

/// They may have been written over since the last look.
void Terminal::cellsLost(const Buffer& buffer, int row, int first, int end) {
    const std::int64_t number = static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yBase() + row;
    eraseTextImages(
        &buffer == m_normal.get() ? ScreenId::normal : ScreenId::alternate, {{{number, number + 1, first, end}}});
}

void Terminal::eraseTextImagesIn(const Rectangle& area) {
    const CellArea lost{lineNumber(area.top), lineNumber(area.bottom), area.left, area.right};
    // With the halves of wide characters beside it.
    if (!m_images.hasText(graphicsScreen(), {lost.top, lost.bottom, lost.left - 1, lost.right + 1})) {
        return;
    }
    for (int row = area.top; row < area.bottom; ++row) {
        m_buffer->tellCut(row, area.left);
        m_buffer->tellCut(row, area.right);
    }
    eraseTextImages(graphicsScreen(), {{lost}});
}

/// Cells of a row move within margins, to the right where `by` is positive.
void Terminal::moveTextImages(int top, int bottom, int left, int by) {
    if (m_images.hasText()) [[unlikely]] {
        for (int row = top; row < bottom; ++row) {
            const int end = m_buffer->marginRight() + 1;
            const int moved = std::min(std::abs(by), end - left);
            m_buffer->tellCut(row, left);
            m_buffer->tellCut(row, by > 0 ? end - moved : left + moved);
            m_buffer->tellCut(row, end);
        }
        const CellArea area{lineNumber(top), lineNumber(bottom), left, m_buffer->marginRight() + 1};
        m_images.moveText(graphicsScreen(), area, {.columns = by}, area);
    }
}

/// Before a resize: the places of the normal screen's images, which follow the text.
std::vector<LinePlace> Terminal::placesOfImages() const {
    std::vector<LinePlace> places;
    for (const ImagePlacement& placement : m_images.placements()) {
        if (placement.screen == ScreenId::normal) {
            places.push_back({placement.row, placement.column});
        }
    }
    return places;
}

void Terminal::moveImagesTo(std::span<const LinePlace> places) {
    auto place = places.begin();
    for (ImagePlacement& placement : m_images.movable()) {
        if (placement.screen == ScreenId::normal) {
            placement.moveTo(place->line, std::min(place->col, cols() - 1));
            ++place;
        }
    }
    m_images.settleRelative();
}

std::optional<std::int64_t> Terminal::advanceAnimations(std::int64_t nowMilliseconds) {
    return m_graphics.advanceAnimations(nowMilliseconds);
}

void Terminal::clearImages(ScreenId screen) {
    if (!m_images.hasPlacements()) {
        return;
    }
    const Buffer& buffer = screen == ScreenId::normal ? *m_normal : *m_alternate;
    const std::int64_t top = static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yBase();
    m_images.removePlacements(
        [screen, top](const ImagePlacement& placement) {
            return placement.screen == screen && !placement.isVirtual && placement.row + placement.rows > top;
        },
        ImageStore::Data::release);
    m_imagesHaveChanged = true;
}

} // namespace term
