#include "OrvUI/Screens/LogLayout.h"

#include "OrvTerminal/View/LinePainter.h"
#include "OrvUI/Screens/Theme.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>
#include <utility>

namespace orv {
namespace {

constexpr int tabColumns = 8;
constexpr qreal endless = 1e6;

struct Metrics {
    QFont font = Theme::instance()->font(Theme::Console);
    qreal rowHeight = Theme::instance()->lineHeight(Theme::Console);
    // Of a text: that of a letter has no room between letters.
    qreal advance = QFontMetricsF(font).horizontalAdvance(QStringLiteral("0"));
    qreal baseline = Theme::instance()->lead(Theme::Console) + QFontMetricsF(font).ascent();
};
const Metrics& metrics() {
    static const Metrics metrics;
    return metrics;
}

struct Colors {
    QColor text;
    QColor background; ///< invalid: none
};

QColor mixed(const QColor& one, const QColor& other, double share) {
    return QColor::fromRgbF(
        static_cast<float>(one.redF() * share + other.redF() * (1 - share)),
        static_cast<float>(one.greenF() * share + other.greenF() * (1 - share)),
        static_cast<float>(one.blueF() * share + other.blueF() * (1 - share)));
}

Colors colorsOf(const TextPen& pen, const QColor& plain) {
    const Theme& theme = *Theme::instance();
    const auto color = [&theme](int32_t value, const QColor& ofDefault) {
        return value == TextPen::defaultColour ? ofDefault : theme.terminalColor(value);
    };
    QColor text = color(pen.foreground, plain);
    QColor behind = color(pen.background, theme.terminalBackground());
    bool isFilled = pen.background != TextPen::defaultColour;
    if ((pen.attributes & TextPen::inverse) != 0) {
        std::swap(text, behind);
        isFilled = true;
    }
    if ((pen.attributes & TextPen::faint) != 0) {
        text = mixed(text, behind, 0.6);
    }
    if (isFilled) {
        text = QColor::fromRgb(readable(text.rgb(), behind.rgb()));
    }
    if ((pen.attributes & TextPen::hidden) != 0) {
        text = Qt::transparent;
    }
    return {text, isFilled ? behind : QColor()};
}

QTextCharFormat formatOf(const TextPen& pen, const QColor& color) {
    QTextCharFormat format;
    format.setForeground(color);
    if ((pen.attributes & TextPen::bold) != 0) {
        format.setFontWeight(QFont::Bold);
    }
    if ((pen.attributes & TextPen::italic) != 0) {
        format.setFontItalic(true);
    }
    if ((pen.attributes & TextPen::underline) != 0) {
        format.setFontUnderline(true);
    }
    if ((pen.attributes & TextPen::struck) != 0) {
        format.setFontStrikeOut(true);
    }
    return format;
}

} // namespace

qreal LogLayout::rowHeight() {
    return metrics().rowHeight;
}

qreal LogLayout::advance() {
    return metrics().advance;
}

qreal LogLayout::baseline() {
    return metrics().baseline;
}

void LogLayout::set(const LogText& content, const Room& room) {
    const bool wraps = room.wrapWidth > 0;
    // Letters of other fonts may be narrower.
    const auto most = static_cast<qsizetype>(2 * std::ceil(room.shownWidth / advance())) + 1;
    const qsizetype length = wraps ? content.text.size() : std::min(content.text.size(), most);
    m_left = content.text.size() - length;
    QString text = content.text.left(length);
    // They would end the row.
    for (const char16_t separator : {QChar::LineSeparator, QChar::ParagraphSeparator}) {
        text.replace(QChar(separator), u' ');
    }

    const Theme& theme = *Theme::instance();
    m_plain = content.error == ErrorLines::Place::first ? theme.danger() : theme.terminalForeground();
    m_backgrounds.clear();
    QList<QTextLayout::FormatRange> formats;
    formats.reserve(content.runs.size());
    for (const TextRun& run : content.runs) {
        if (run.start >= length) {
            break;
        }
        const Colors colors = colorsOf(run.pen, m_plain);
        formats.append({static_cast<int>(run.start), static_cast<int>(run.length), formatOf(run.pen, colors.text)});
        if (colors.background.isValid()) {
            m_backgrounds.append({{run.start, run.start + run.length}, colors.background});
        }
    }

    QTextOption option;
    option.setWrapMode(wraps ? QTextOption::WrapAnywhere : QTextOption::NoWrap);
    option.setTextDirection(Qt::LeftToRight); // as in a terminal, whatever comes first
    option.setTabStopDistance(tabColumns * advance());
    m_layout.setTextOption(option);
    m_layout.setFont(metrics().font);
    m_layout.setCacheEnabled(true);
    m_layout.setText(text);
    m_layout.setFormats(formats);
    m_layout.beginLayout();
    for (QTextLine row = m_layout.createLine(); row.isValid(); row = m_layout.createLine()) {
        row.setLineWidth(wraps ? room.wrapWidth : endless);
        // On one line, whatever fonts it takes.
        row.setPosition({0, row.lineNumber() * rowHeight() + baseline() - row.ascent()});
    }
    m_layout.endLayout();
}

qreal LogLayout::height() const {
    return rows() * rowHeight();
}

qreal LogLayout::width() const {
    qreal widest = 0;
    for (int row = 0; row < m_layout.lineCount(); ++row) {
        widest = std::max(widest, m_layout.lineAt(row).naturalTextWidth());
    }
    return widest + static_cast<qreal>(m_left) * advance();
}

QList<QRectF> LogLayout::areas(qsizetype start, qsizetype end) const {
    QList<QRectF> found;
    for (int row = 0; row < m_layout.lineCount(); ++row) {
        const QTextLine line = m_layout.lineAt(row);
        const int first = std::max(static_cast<int>(start), line.textStart());
        const int behind = std::min(static_cast<int>(end), line.textStart() + line.textLength());
        if (first < behind) {
            const auto [left, right] = std::minmax({line.cursorToX(first), line.cursorToX(behind)});
            found.append({left, row * rowHeight(), right - left, rowHeight()});
        }
    }
    return found;
}

QList<QRectF> LogLayout::fills(qsizetype start, qsizetype end) const {
    QList<QRectF> found = areas(start, end);
    for (QRectF& area : found) {
        area = {std::round(area.left()), area.top(), std::round(area.right()) - std::round(area.left()), area.height()};
    }
    return found;
}

qsizetype LogLayout::offsetAt(QPointF place) const {
    const int row = std::clamp(static_cast<int>(std::floor(place.y() / rowHeight())), 0, rows() - 1);
    return row < m_layout.lineCount() ? m_layout.lineAt(row).xToCursor(place.x()) : 0;
}

qsizetype LogLayout::characterAt(QPointF place) const {
    const int row = static_cast<int>(std::floor(place.y() / rowHeight()));
    if (row < 0 || row >= m_layout.lineCount()) {
        return -1;
    }
    const QTextLine line = m_layout.lineAt(row);
    const bool isOnText = place.x() >= 0 && place.x() < line.naturalTextWidth();
    return isOnText ? line.xToCursor(place.x(), QTextLine::CursorOnCharacter) : -1;
}

void LogLayout::drawBackgrounds(QPainter& painter) const {
    for (const Background& background : m_backgrounds) {
        for (const QRectF& area : fills(background.place.start, background.place.end)) {
            painter.fillRect(area, background.color);
        }
    }
}

void LogLayout::drawText(QPainter& painter, QRectF clip, const QList<Mark>& bright, const Mark& link) const {
    QList<QTextLayout::FormatRange> marks;
    QTextCharFormat current;
    current.setForeground(Theme::instance()->onStatus());
    for (const Mark& mark : bright) {
        const qsizetype end = std::min(mark.end, m_layout.text().size());
        if (mark.start < end) {
            marks.append({static_cast<int>(mark.start), static_cast<int>(end - mark.start), current});
        }
    }
    painter.setPen(m_plain);
    m_layout.draw(&painter, {}, marks, clip);
    for (QRectF area : areas(link.start, link.end)) {
        area.setTop(std::round(area.top() + baseline() + Theme::space2));
        area.setHeight(Theme::hairline);
        painter.fillRect(area, m_plain);
    }
}

} // namespace orv
