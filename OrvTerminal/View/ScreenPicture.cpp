#include "OrvTerminal/View/ScreenPicture.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace orv {

void ScreenPicture::refresh(
    const term::Terminal& terminal, GlyphCache& glyphs, const ResolvedColors& colors, const MarksOf& marksOf,
    std::optional<term::TextPlace> cursor) {
    if (colors != m_colors) {
        m_colors = colors;
        forget();
    }
    placeImages(terminal, glyphs.cell());
    const bool isTransparent = std::ranges::any_of(m_images, &Placed::isBelowText);
    if (isTransparent != m_isTransparent) {
        m_isTransparent = isTransparent;
        forget();
    }

    const term::Buffer& buffer = terminal.buffer();
    m_firstLine = static_cast<std::int64_t>(buffer.trimmedCount()) + buffer.yDisp();
    std::unordered_map<std::uint64_t, size_t> before;
    for (size_t row = 0; row < m_known.size(); ++row) {
        before.emplace(m_known[row].identity, row);
    }
    std::vector<Row> rows(static_cast<size_t>(buffer.rows()));
    std::vector<Known> known(rows.size());
    LinePainter painter(glyphs, m_colors);
    for (int row = 0; row < buffer.rows(); ++row) {
        const int index = buffer.yDisp() + row;
        const term::BufferLine& line = buffer.lineAt(index);
        const auto place = static_cast<size_t>(row);
        known[place] = {line.renderIdentity(), line.generation(), m_epoch, line.size(), marksOf(m_firstLine + row)};
        if (const auto found = before.find(line.renderIdentity());
            found != before.end() && m_known[found->second] == known[place]) {
            rows[place] = m_rows[found->second];
            continue;
        }
        const term::PresentedRow order = term::presentedRow(
            buffer, index, terminal.bidiState(index - buffer.yBase()), terminal.options().maximumBidiParagraphRows);
        rows[place].serial = ++m_painted;
        LinePainter::Line whole{line, terminal.arena(), order, known[place].marks, isTransparent};
        rows[place].image = painter.paint(whole);
        rows[place].blinks = LinePainter::blinks(whole);
        if (rows[place].blinks) {
            whole.hidesBlinking = true;
            rows[place].hidden = painter.paint(whole);
        }
    }
    m_blinks = std::ranges::any_of(rows, &Row::blinks);
    m_rows = std::move(rows);
    m_known = std::move(known);
    placeCursor(terminal, painter, cursor);
}

void ScreenPicture::placeCursor(
    const term::Terminal& terminal, LinePainter& painter, std::optional<term::TextPlace> instead) {
    const term::Buffer& buffer = terminal.buffer();
    const QImage before = std::exchange(m_cursor, {}).character;
    const int row =
        instead ? static_cast<int>(instead->line - m_firstLine) : buffer.y() + buffer.yBase() - buffer.yDisp();
    if (row < 0 || row >= buffer.rows()) {
        return;
    }
    const int index = buffer.yDisp() + row;
    const term::BufferLine& line = buffer.lineAt(index);
    const term::PresentedRow order = term::presentedRow(
        buffer, index, terminal.bidiState(index - buffer.yBase()), terminal.options().maximumBidiParagraphRows);
    int column = std::min(instead ? instead->col : buffer.x(), buffer.lastColumn(line));
    if (!order.columns.empty()) {
        column = static_cast<int>(std::ranges::find(order.columns, column) - order.columns.begin());
    }
    const auto cellAt = [&](int at) {
        return line[order.columns.empty() ? at : order.columns[static_cast<size_t>(at)]];
    };
    if (column > 0 && cellAt(column).isSpacer()) {
        --column;
    }
    m_cursor.stretchX = line.renderMode() == term::RenderLineMode::single ? 1 : 2;
    m_cursor.cells = QRect(column, row, cellAt(column).isWide() ? 2 : 1, 1);
    m_cursor.isShown = instead || terminal.modes().cursorVisible;
    if (!m_cursor.isShown) {
        return;
    }
    const term::RgbColor own =
        terminal.colors().ownColor(term::DynamicColor::cursor).value_or(toTerm(QColor(m_colors.theme.cursor)));
    m_cursor.character = painter.paintCursor({line, terminal.arena(), order, {}, false}, column, toRgb(own));
    if (m_cursor.character == before) {
        m_cursor.character = before; // and with it its texture
    }
}

void ScreenPicture::placeImages(const term::Terminal& terminal, const CellGeometry& cell) {
    m_images.clear();
    if (terminal.images().placements().empty()) {
        return;
    }
    const term::ScreenSnapshot snapshot = term::takeSnapshot(terminal);
    for (const term::SnapshotImage& image : snapshot.images) {
        const term::ImagePlacement& placement = image.placement;
        const QRectF source(placement.sourceX, placement.sourceY, placement.sourceWidth, placement.sourceHeight);
        QRectF target(
            placement.column * cell.width + placement.offsetX, image.row * cell.height + placement.offsetY,
            placement.columns * cell.width, placement.rows * cell.height);
        if (placement.cellWidth > 0) {
            target.setWidth(source.width() * cell.width / placement.cellWidth);
            target.setHeight(source.height() * cell.height / std::max(placement.cellHeight, 1));
        }
        m_images.push_back({image.pixels, source, target, placement.z < 0});
    }
    for (const term::SnapshotPlaceholder& placeholder : snapshot.placeholders) {
        const QSizeF grid(placeholder.columns * cell.width, placeholder.rows * cell.height);
        const QSizeF size(placeholder.pixels->width, placeholder.pixels->height);
        const QSizeF fitted = size.scaled(grid, Qt::KeepAspectRatio);
        const QRectF whole(QPointF((grid.width() - fitted.width()) / 2, (grid.height() - fitted.height()) / 2), fitted);
        const QRectF part = QRectF(
                                placeholder.run.imageColumn * cell.width, placeholder.run.imageRow * cell.height,
                                placeholder.run.count * cell.width, cell.height) &
                            whole;
        if (part.isEmpty()) {
            continue;
        }
        const qreal scale = size.width() / fitted.width();
        const QPointF offset(
            (placeholder.run.column - placeholder.run.imageColumn) * cell.width,
            (placeholder.row - placeholder.run.imageRow) * cell.height);
        const QRectF source((part.topLeft() - whole.topLeft()) * scale, part.size() * scale);
        m_images.push_back({placeholder.pixels, source, part.translated(offset), false});
    }
}

} // namespace orv
