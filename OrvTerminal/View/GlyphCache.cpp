#include "OrvTerminal/View/GlyphCache.h"

#include "OrvTerminal/View/DrawnGlyphs.h"
#include "TermEngine/Unicode.h"

#include <QFontDatabase>
#include <QGlyphRun>
#include <QPainter>
#include <QTextLayout>
#include <QtMath>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Where characters come from that the terminal's own font lacks, before Qt looks at all fonts there are.
QStringList textFamilies(const QString& family) {
    return {
        family,
        u"JetBrains Mono"_s,
        u"Symbols Nerd Font Mono"_s,
        u"Menlo"_s,
        u"DejaVu Sans Mono"_s,
        u"Noto Sans Mono"_s,
        u"Noto Sans Symbols 2"_s,
        u"DejaVu Sans"_s};
}

/// With a family that is missing in front, Qt would take each part of a sequence from another font.
QStringList emojiFamilies(const QString& family) {
    QStringList families{u"Apple Color Emoji"_s, u"Noto Color Emoji"_s, u"Twemoji"_s};
    families.removeIf([](const QString& name) { return !QFontDatabase::hasFamily(name); });
    return families + textFamilies(family);
}

QFont fontOf(const QStringList& families, unsigned face, int pixelSize, QFont::HintingPreference hinting) {
    QFont font(families);
    font.setPixelSize(pixelSize);
    font.setBold((face & GlyphCache::bold) != 0);
    font.setItalic((face & GlyphCache::italic) != 0);
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    // Glyphs are kept as masks for any colour, which leaves no room for coloured edges.
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    font.setHintingPreference(hinting);
    return font;
}

/// Emoji of their own accord, or by a selector behind them.
bool isEmoji(std::u32string_view cluster) {
    if (cluster.find(term::unicode::textSelector) != std::u32string_view::npos) {
        return false;
    }
    if (cluster.find(term::unicode::emojiSelector) != std::u32string_view::npos) {
        return true;
    }
    const term::unicode::Properties first = term::unicode::properties(cluster.front());
    return (first.isExtendedPictographic() && first.width() == 2) ||
           first.graphemeBreak() == term::unicode::GraphemeBreak::regionalIndicator;
}

/// What was painted in white has four equal parts in each pixel; anything else is coloured.
bool isColored(const QImage& image, const QRect& part) {
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = part.left(); x <= part.right(); ++x) {
            const QRgb pixel = line[x];
            if (std::abs(qRed(pixel) - qAlpha(pixel)) > 2 || std::abs(qBlue(pixel) - qAlpha(pixel)) > 2 ||
                std::abs(qGreen(pixel) - qAlpha(pixel)) > 2) {
                return true;
            }
        }
    }
    return false;
}

/// The smallest part of an image outside of which nothing is painted.
QRect inkOf(const QImage& image) {
    int left = image.width();
    int right = -1;
    int top = -1;
    int bottom = -1;
    for (int y = 0; y < image.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(line[x]) != 0) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = top < 0 ? y : top;
                bottom = y;
            }
        }
    }
    return right < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

QTextLine layOut(QTextLayout& layout) {
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    layout.endLayout();
    return line;
}

bool lacksGlyphs(const QTextLayout& layout) {
    const QList<QGlyphRun> runs = layout.glyphRuns();
    return std::ranges::any_of(runs, [](const QGlyphRun& run) { return run.glyphIndexes().contains(0); });
}

} // namespace

GlyphCache::GlyphCache(
    const QString& family, qreal logicalSize, qreal devicePixelRatio, QFont::HintingPreference hinting) {
    m_cell.devicePixelRatio = devicePixelRatio;
    m_cell.pixelSize = logicalSize * devicePixelRatio;
    for (unsigned face = 0; face < m_fonts.size(); ++face) {
        const int pixelSize = qMax(1, qRound(m_cell.pixelSize));
        m_fonts[face] = fontOf(textFamilies(family), face, pixelSize, hinting);
        m_emojiFonts[face] = fontOf(emojiFamilies(family), face, pixelSize, hinting);
        m_faces[face] = QRawFont::fromFont(m_fonts[face]);
        m_faces[face].setPixelSize(m_cell.pixelSize);
    }
    measure();
}

void GlyphCache::measure() {
    const QRawFont& face = m_faces[regular];
    const QList<quint32> letter = face.glyphIndexesForString(u"M"_s);
    const QList<QPointF> advances = face.advancesForGlyphIndexes(letter, QRawFont::UseDesignMetrics);
    const qreal advance = advances.isEmpty() ? m_cell.pixelSize * 0.6 : advances.constFirst().x();
    const qreal scale = m_cell.devicePixelRatio;
    m_cell.width = std::max(2, qRound(advance));
    // A line is as much higher than its font as 20 is than 13.
    const qreal wanted = m_cell.pixelSize * 20 / 13;
    m_cell.height = std::max(4, qRound(std::max(wanted, face.ascent() + face.descent())));
    m_cell.baseline = qRound((m_cell.height - face.ascent() - face.descent()) / 2 + face.ascent());
    m_cell.thickness = std::max(1, qRound(std::max(face.lineThickness(), m_cell.pixelSize / 14)));
    m_cell.underline = std::min(
        m_cell.baseline + std::max(qRound(face.underlinePosition() - m_cell.thickness / 2.0), qRound(scale)),
        m_cell.height - m_cell.thickness);
    m_cell.strike = m_cell.baseline - qRound(face.xHeight() / 2) - m_cell.thickness / 2;
}

const GlyphCache::Glyph& GlyphCache::glyph(std::u32string_view cluster, unsigned face, Box box) {
    const bool isAscii = cluster.size() == 1 && cluster.front() < asciiCount && box == Box{};
    if (isAscii) {
        if (const Glyph* known = m_ascii[face][cluster.front()]) {
            return *known;
        }
    }
    Key key{
        std::u32string(cluster),
        face | std::uint32_t{box.columns} << 8 | std::uint32_t{box.stretchX} << 16 | std::uint32_t{box.stretchY} << 24};
    auto found = m_glyphs.find(key);
    if (found == m_glyphs.end()) {
        if (m_glyphs.size() >= most) {
            m_glyphs.clear();
            m_ascii = {};
        }
        found = m_glyphs.emplace(std::move(key), make(cluster, face, box)).first;
        ++m_made;
    }
    if (isAscii) {
        m_ascii[face][cluster.front()] = &found->second;
    }
    return found->second;
}

GlyphCache::Glyph GlyphCache::make(std::u32string_view cluster, unsigned face, Box box) {
    const int width = m_cell.width * box.columns;
    const QSize filled(width * box.stretchX, m_cell.height * box.stretchY);
    // Some reach beyond their cells: slanted letters, accents over capitals.
    const QSize margin = filled / 2;
    QImage image(filled + 2 * margin, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setPen(Qt::white);
        painter.translate(margin.width(), margin.height());
        if (cluster.size() == 1 && isDrawnGlyph(cluster.front())) {
            drawGlyph(painter, cluster.front(), filled, m_cell.thickness * std::min(box.stretchX, box.stretchY));
        } else {
            painter.scale(box.stretchX, box.stretchY);
            if (cluster.size() != 1 || !drawFromFace(painter, cluster.front(), face)) {
                drawLaidOut(painter, cluster, face, width);
            }
        }
    }
    Glyph made;
    const QRect ink = inkOf(image);
    if (ink.isEmpty()) {
        return made;
    }
    made.left = ink.left() - margin.width();
    made.top = ink.top() - margin.height();
    made.width = ink.width();
    made.height = ink.height();
    const bool keepsColor = isColored(image, ink);
    for (int y = ink.top(); y <= ink.bottom(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = ink.left(); x <= ink.right(); ++x) {
            if (keepsColor) {
                made.color.push_back(line[x]);
            } else {
                made.mask.push_back(static_cast<std::uint8_t>(qAlpha(line[x])));
            }
        }
    }
    return made;
}

bool GlyphCache::drawFromFace(QPainter& painter, char32_t scalar, unsigned face) const {
    const QRawFont& font = m_faces[face];
    if (isEmoji(std::u32string_view(&scalar, 1)) || !font.supportsCharacter(scalar)) {
        return false;
    }
    const QList<quint32> indexes = font.glyphIndexesForString(QString::fromUcs4(&scalar, 1));
    if (indexes.size() != 1) {
        return false;
    }
    QGlyphRun run;
    run.setRawFont(font);
    run.setGlyphIndexes(indexes);
    run.setPositions({QPointF(0, 0)});
    painter.drawGlyphRun(QPointF(0, m_cell.baseline), run);
    return true;
}

/// Shaped, and from whichever font has it; what is too wide is made smaller, what is narrower stands in the middle.
void GlyphCache::drawLaidOut(QPainter& painter, std::u32string_view cluster, unsigned face, int width) const {
    const bool showsEmoji = isEmoji(cluster);
    const QString text = QString::fromUcs4(cluster.data(), static_cast<qsizetype>(cluster.size()));
    QFont font = showsEmoji ? m_emojiFonts[face] : m_fonts[face];
    if (showsEmoji) {
        // Else Qt takes the digit of a keycap from one font and its frame from another.
        font.setStyleStrategy(QFont::StyleStrategy(font.styleStrategy() | QFont::NoFontMerging));
    }
    QTextLayout layout(text, font);
    QTextLine line = layOut(layout);
    if (showsEmoji && lacksGlyphs(layout)) {
        font = m_emojiFonts[face];
        layout.setFont(font);
        line = layOut(layout);
    }
    qreal scale = 1;
    if (showsEmoji && line.naturalTextWidth() > 0) {
        // A picture fills its cells.
        font.setPixelSize(std::max(1, static_cast<int>(font.pixelSize() * width / line.naturalTextWidth())));
        layout.setFont(font);
        line = layOut(layout);
    } else if (line.naturalTextWidth() > width) {
        scale = width / line.naturalTextWidth();
    }
    painter.save();
    painter.translate(std::max(0.0, (width - line.naturalTextWidth() * scale) / 2), 0);
    if (showsEmoji) {
        layout.draw(&painter, QPointF(0, (m_cell.height - line.height()) / 2));
    } else {
        painter.translate(0, m_cell.baseline);
        painter.scale(scale, scale);
        layout.draw(&painter, QPointF(0, -line.ascent()));
    }
    painter.restore();
}

} // namespace orv
