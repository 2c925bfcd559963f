#include "OrvTerminal/View/LinePainter.h"

#include "OrvTerminal/View/ArabicForms.h"
#include "OrvTerminal/View/DrawnGlyphs.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>

namespace orv {
namespace {

/// Scales the four parts of a pixel, `by` from 0 to 255.
constexpr std::uint32_t scaled(std::uint32_t pixel, std::uint32_t by) {
    std::uint32_t even = (pixel & 0x00FF00FF) * by;
    even = ((even + ((even >> 8) & 0x00FF00FF) + 0x00800080) >> 8) & 0x00FF00FF;
    std::uint32_t odd = ((pixel >> 8) & 0x00FF00FF) * by;
    odd = (odd + ((odd >> 8) & 0x00FF00FF) + 0x00800080) & 0xFF00FF00;
    return even | odd;
}

/// `over`, whose alpha counts, on an opaque colour.
QRgb mixed(QRgb below, QRgb over) {
    const auto alpha = static_cast<std::uint32_t>(qAlpha(over));
    return scaled(over | 0xFF000000, alpha) + scaled(below, 255 - alpha);
}

void fill(QImage& image, QRect rect, std::uint32_t pixel) {
    rect &= image.rect();
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        auto* line = reinterpret_cast<std::uint32_t*>(image.scanLine(y));
        std::fill(line + rect.left(), line + rect.right() + 1, pixel);
    }
}

/// Relative luminance, from 0 to 1 (WCAG 2).
double luminance(QRgb color) {
    const auto linear = [](int part) {
        const double share = part / 255.0;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

double contrast(QRgb one, QRgb other) {
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

} // namespace

QRgb readable(QRgb color, QRgb background) {
    constexpr double hardly = 1.7;
    constexpr QRgb black = 0xFF000000;
    constexpr QRgb white = 0xFFFFFFFF;
    if (color == background || contrast(color, background) >= hardly) {
        return color;
    }
    return contrast(white, background) > contrast(black, background) ? white : black;
}

namespace {

/// Characters that icon fonts draw wider than one cell: they may reach into a blank one behind them.
bool mayReachOver(char32_t scalar) {
    return (scalar >= 0xE000 && scalar <= 0xF8FF && !(scalar >= 0xE0A0 && scalar <= 0xE0D7)) ||
           (scalar >= 0xF0000 && scalar <= 0xFFFFD) || (scalar >= 0x2190 && scalar <= 0x21FF) ||
           (scalar >= 0x2600 && scalar <= 0x27BF) || (scalar >= 0x2B00 && scalar <= 0x2BFF);
}

int stretchX(term::RenderLineMode mode) {
    return mode == term::RenderLineMode::single ? 1 : 2;
}
bool isDoubleHeight(term::RenderLineMode mode) {
    return mode == term::RenderLineMode::doubledTop || mode == term::RenderLineMode::doubledDown;
}

} // namespace

QRgb LinePainter::rgb(term::Color color, QRgb ofDefault, QRgb ofInverted) const {
    switch (color.kind()) {
    case term::Color::Kind::ansi256:
        return m_colors.palette[color.value() & 0xFF];
    case term::Color::Kind::trueColor:
        return 0xFF000000 | color.value();
    case term::Color::Kind::defaultInvertedColor:
        return ofInverted;
    case term::Color::Kind::defaultColor:
        break;
    }
    return ofDefault;
}

LinePainter::Style LinePainter::styleOf(const term::Attribute& attribute) const {
    Style style;
    style.foreground = rgb(attribute.fg, m_colors.foreground, m_colors.background);
    style.background = rgb(attribute.bg, m_colors.background, m_colors.foreground);
    style.hasBackground = !attribute.bg.isDefault();
    if (attribute.style.has(term::StyleBit::inverse)) {
        std::swap(style.foreground, style.background);
        style.hasBackground = true;
    }
    if (attribute.style.has(term::StyleBit::dim)) {
        style.foreground = scaled(style.foreground, 150) + scaled(style.background, 105);
    }
    style.text = style.hasBackground ? readable(style.foreground, style.background) : style.foreground;
    style.face = attribute.style.has(term::StyleBit::bold) ? unsigned{GlyphCache::bold} : 0U;
    style.face |= attribute.style.has(term::StyleBit::italic) ? unsigned{GlyphCache::italic} : 0U;
    style.isInvisible = attribute.style.has(term::StyleBit::invisible);
    style.isBlinking = attribute.style.has(term::StyleBit::blink);
    style.isStruck = attribute.style.has(term::StyleBit::crossedOut);
    style.isOverlined = attribute.overline;
    style.underlineStyle = attribute.underlineStyle;
    if (style.underlineStyle == term::UnderlineStyle::none && attribute.style.has(term::StyleBit::underline)) {
        style.underlineStyle = term::UnderlineStyle::single;
    }
    style.underline = attribute.underlineColor ? rgb(*attribute.underlineColor, style.foreground, style.background)
                                               : style.foreground;
    return style;
}

void LinePainter::applyMark(Style& style, LineMark::Kind kind) const {
    switch (kind) {
    case LineMark::Kind::match:
        style.background = mixed(style.background, m_colors.theme.match);
        style.hasBackground = true;
        break;
    case LineMark::Kind::currentMatch:
        style.background = m_colors.theme.currentMatch;
        style.foreground = m_colors.theme.onCurrentMatch;
        style.hasBackground = true;
        break;
    case LineMark::Kind::selection:
        style.background = m_colors.theme.selection;
        style.hasBackground = true;
        break;
    case LineMark::Kind::link:
        style.underlineStyle = term::UnderlineStyle::single;
        style.underline = style.foreground;
        break;
    }
    style.text = style.hasBackground ? readable(style.foreground, style.background) : style.foreground;
}

std::vector<LinePainter::Cell> LinePainter::layOut(const Line& line) const {
    const int columns = line.cells.size() / stretchX(line.cells.renderMode());
    std::vector<Cell> cells;
    cells.reserve(static_cast<size_t>(columns));
    std::uint64_t lastKey = ~std::uint64_t{0};
    Style last;
    for (int column = 0; column < columns; ++column) {
        const int stored = line.order.columns.empty() ? column : line.order.columns[static_cast<size_t>(column)];
        const term::PackedCell cell = line.cells[stored];
        if (cell.isSpacer()) {
            continue;
        }
        // What decides on the style: the attribute, and of blank cells the background that they hold themselves.
        const std::uint64_t key =
            (cell.rawValue & 2) != 0
                ? cell.rawValue & (term::PackedCell::contentMask | term::PackedCell::attributeMask | 3)
                : cell.rawValue & term::PackedCell::attributeMask;
        if (key != lastKey) {
            lastKey = key;
            last = styleOf(line.arena.attributeOf(cell));
            last.isInvisible = last.isInvisible || (line.hidesBlinking && last.isBlinking);
        }
        Cell shown{cell, column, stored, cell.isWide() && column + 1 < columns ? 2 : 1, false, last};
        shown.isRightToLeft =
            !line.order.isRightToLeft.empty() && line.order.isRightToLeft[static_cast<size_t>(stored)];
        for (const LineMark& mark : line.marks) {
            if (stored >= mark.first && stored < mark.end) {
                applyMark(shown.style, mark.kind);
            }
        }
        cells.push_back(shown);
    }
    return cells;
}

bool LinePainter::blinks(const Line& line) {
    const auto cells = line.cells.usedCells();
    std::uint64_t lastKey = ~std::uint64_t{0};
    return std::ranges::any_of(cells, [&](term::PackedCell cell) {
        const std::uint64_t key = cell.rawValue & term::PackedCell::attributeMask;
        return key != std::exchange(lastKey, key) && line.arena.attributeOf(cell).style.has(term::StyleBit::blink);
    });
}

QImage LinePainter::paint(const Line& line) {
    const std::vector<Cell> cells = layOut(line);
    const bool isPlain = std::ranges::all_of(cells, [](const Cell& cell) {
        return cell.cell.isEmpty() && !cell.style.hasBackground &&
               cell.style.underlineStyle == term::UnderlineStyle::none && !cell.style.isOverlined &&
               !cell.style.isStruck;
    });
    if (isPlain) {
        return {};
    }
    const CellGeometry& geometry = m_glyphs.cell();
    const int width = geometry.width * stretchX(line.cells.renderMode());
    QImage image(
        geometry.width * line.cells.size(), geometry.height,
        line.isTransparent ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    image.fill(line.isTransparent ? 0U : m_colors.background);
    for (const Cell& cell : cells) {
        if (cell.style.hasBackground) {
            fill(image, {cell.column * width, 0, cell.columns * width, geometry.height}, cell.style.background);
        }
    }
    for (size_t at = 0; at < cells.size(); ++at) {
        const Cell* next = at + 1 < cells.size() ? &cells[at + 1] : nullptr;
        drawCharacter(image, line, cells[at], next, cells[at].column * width);
    }
    // Lines run through cells of one style without a break.
    for (size_t first = 0; first < cells.size();) {
        const Style& style = cells[first].style;
        size_t end = first + 1;
        const auto isSame = [&](const Style& other) {
            return other.underlineStyle == style.underlineStyle && other.underline == style.underline &&
                   other.isStruck == style.isStruck && other.isOverlined == style.isOverlined &&
                   other.foreground == style.foreground && other.isInvisible == style.isInvisible;
        };
        while (end < cells.size() && isSame(cells[end].style)) {
            ++end;
        }
        const Cell& last = cells[end - 1];
        drawLines(
            image, style, line.cells.renderMode(), cells[first].column * width,
            (last.column + last.columns - cells[first].column) * width);
        first = end;
    }
    return image;
}

char32_t LinePainter::inItsPlace(const Line& line, const Cell& cell, char32_t scalar) {
    const auto letterAt = [&line](int stored) -> char32_t {
        if (stored < 0 || stored >= line.cells.size()) {
            return 0;
        }
        char32_t memory = 0;
        const std::u32string_view scalars = line.arena.scalarValues(line.cells[stored], memory);
        return scalars.empty() ? 0 : scalars.front();
    };
    const char32_t mirrored = term::bidi::mirrored(scalar);
    return mirrored != scalar ? mirrored : joinedForm(scalar, letterAt(cell.stored - 1), letterAt(cell.stored + 1));
}

void LinePainter::drawCharacter(QImage& image, const Line& line, const Cell& cell, const Cell* next, int left) {
    if (cell.cell.isEmpty() || cell.style.isInvisible) {
        return;
    }
    char32_t memory = 0;
    std::u32string_view scalars = line.arena.scalarValues(cell.cell, memory);
    if (scalars.empty() || (scalars.size() == 1 && scalars.front() == U' ')) {
        return;
    }
    std::u32string placed;
    if (cell.isRightToLeft) {
        placed = std::u32string(scalars);
        placed.front() = inItsPlace(line, cell, placed.front());
        scalars = placed;
    }
    const term::RenderLineMode mode = line.cells.renderMode();
    GlyphCache::Box box{static_cast<std::uint8_t>(cell.columns), 1, 1};
    box.stretchX = static_cast<std::uint8_t>(stretchX(mode));
    box.stretchY = isDoubleHeight(mode) ? 2 : 1;
    const QRect clip = image.rect();
    if (cell.columns == 1 && mayReachOver(scalars.front()) && next != nullptr && next->cell.isEmpty() &&
        next->style.background == cell.style.background) {
        box.columns = 2;
    }
    const int top = mode == term::RenderLineMode::doubledDown ? -image.height() : 0;
    // Edges and blocks of one colour meet those of another one.
    const QRgb color = isDrawnGlyph(scalars.front()) ? cell.style.foreground : cell.style.text;
    blend(image, m_glyphs.glyph(scalars, cell.style.face, box), {left, top}, color, clip);
}

void LinePainter::blend(QImage& image, const GlyphCache::Glyph& glyph, QPoint corner, QRgb color, QRect clip) const {
    const QRect place(corner.x() + glyph.left, corner.y() + glyph.top, glyph.width, glyph.height);
    const QRect shown = place & clip;
    for (int y = shown.top(); y <= shown.bottom(); ++y) {
        auto* line = reinterpret_cast<std::uint32_t*>(image.scanLine(y));
        const auto row = static_cast<size_t>(y - place.top()) * static_cast<size_t>(glyph.width);
        for (int x = shown.left(); x <= shown.right(); ++x) {
            const size_t at = row + static_cast<size_t>(x - place.left());
            if (!glyph.color.empty()) {
                const std::uint32_t pixel = glyph.color[at];
                line[x] = pixel + scaled(line[x], 255 - static_cast<std::uint32_t>(qAlpha(pixel)));
            } else if (const std::uint32_t mask = glyph.mask[at]; mask == 255) {
                line[x] = color;
            } else if (mask != 0) {
                line[x] = scaled(color, mask) + scaled(line[x], 255 - mask);
            }
        }
    }
}

/// A line of double height has its underline in its lower half only.
void LinePainter::drawLines(QImage& image, const Style& style, term::RenderLineMode mode, int left, int width) const {
    if (style.isInvisible) {
        return;
    }
    const int stretch = isDoubleHeight(mode) ? 2 : 1;
    const int top = mode == term::RenderLineMode::doubledDown ? -image.height() : 0;
    const int thick = m_glyphs.cell().thickness * stretch;
    const int cellWidth = m_glyphs.cell().width * stretchX(mode);
    const int height = m_glyphs.cell().height * stretch + top;
    const int bottom = m_glyphs.cell().underline * stretch + top;
    if (style.isStruck) {
        fill(image, {left, m_glyphs.cell().strike * stretch + top, width, thick}, style.foreground);
    }
    if (style.isOverlined) {
        fill(image, {left, top, width, thick}, style.foreground);
    }
    const auto repeat = [&](int on, int off) {
        for (int x = left; x < left + width; x += on + off) {
            fill(image, {x, bottom, std::min(on, left + width - x), thick}, style.underline);
        }
    };
    switch (style.underlineStyle) {
    case term::UnderlineStyle::none:
        break;
    case term::UnderlineStyle::single:
        fill(image, {left, bottom, width, thick}, style.underline);
        break;
    case term::UnderlineStyle::doubled: {
        const int second = std::min(bottom + 2 * thick, height - thick);
        fill(image, {left, second - 2 * thick, width, thick}, style.underline);
        fill(image, {left, second, width, thick}, style.underline);
        break;
    }
    case term::UnderlineStyle::dotted:
        repeat(thick, thick);
        break;
    case term::UnderlineStyle::dashed:
        repeat(std::max(2, cellWidth / 2), std::max(2, cellWidth / 4));
        break;
    case term::UnderlineStyle::curly: {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setClipRect(left, 0, width, image.height());
        painter.setPen(QPen(QColor(style.underline), thick));
        const qreal reach = std::max(1.5 * thick, cellWidth / 6.0);
        const qreal middle = std::min<qreal>(bottom + thick / 2.0, height - reach - thick / 2.0);
        const qreal half = cellWidth / 2.0;
        QPainterPath wave(QPointF(left, middle));
        for (int start = left; start < left + width; start += cellWidth) {
            const qreal x = start;
            wave.quadTo(x + half / 2, middle - 2 * reach, x + half, middle);
            wave.quadTo(x + half * 1.5, middle + 2 * reach, x + cellWidth, middle);
        }
        painter.drawPath(wave);
        break;
    }
    }
}

QImage LinePainter::paintCursor(const Line& line, int column, QRgb background) {
    for (Cell& cell : layOut(line)) {
        if (column < cell.column || column >= cell.column + cell.columns) {
            continue;
        }
        const int width = m_glyphs.cell().width * stretchX(line.cells.renderMode());
        QImage image(cell.columns * width, m_glyphs.cell().height, QImage::Format_RGB32);
        image.fill(background);
        cell.style.foreground = cell.style.background;
        if (cell.style.foreground == background) {
            cell.style.foreground = m_colors.background;
        }
        cell.style.text = cell.style.foreground;
        drawCharacter(image, line, cell, nullptr, 0);
        return image;
    }
    return {};
}

QImage LinePainter::paintText(std::u32string_view text, int cursor) {
    struct Part {
        std::u32string_view text;
        int columns;
    };
    std::vector<Part> parts;
    int columns = 0;
    int caret = -1;
    for (size_t first = 0; first < text.size();) {
        term::unicode::GraphemeBreaker breaker;
        size_t end = first;
        while (end < text.size() && (!breaker.startsCluster(text[end]) || end == first)) {
            ++end;
        }
        caret = caret < 0 && cursor >= 0 && static_cast<size_t>(cursor) < end ? columns : caret;
        const std::u32string_view cluster = text.substr(first, end - first);
        parts.push_back({cluster, std::max(1, term::unicode::clusterWidth(cluster))});
        columns += parts.back().columns;
        first = end;
    }
    if (columns == 0) {
        return {};
    }
    const CellGeometry& geometry = m_glyphs.cell();
    // Room for a caret behind the text.
    QImage image(geometry.width * columns + geometry.thickness, geometry.height, QImage::Format_RGB32);
    image.fill(m_colors.background);
    int left = 0;
    for (const Part& part : parts) {
        const GlyphCache::Box box{static_cast<std::uint8_t>(part.columns), 1, 1};
        blend(image, m_glyphs.glyph(part.text, GlyphCache::regular, box), {left, 0}, m_colors.foreground, image.rect());
        left += part.columns * geometry.width;
    }
    fill(image, {0, geometry.underline, left, geometry.thickness}, m_colors.foreground);
    const int at = (caret < 0 ? columns : caret) * geometry.width;
    fill(image, {at, 0, std::max(1, geometry.thickness), geometry.height}, m_colors.theme.cursor);
    return image;
}

} // namespace orv
