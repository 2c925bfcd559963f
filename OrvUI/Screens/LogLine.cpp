#include "LogLine.h"

#include "OrvUI/Screens/Theme.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QQuickWindow>

#include <cmath>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// A picture of more than this is made of what is in view alone, in steps of that size.
constexpr qreal tall = 1200;
constexpr qreal tallStep = 400;

struct Margin {
    QFont font = Theme::instance()->font(Theme::MonoPath);
    qreal digit = QFontMetricsF(font).horizontalAdvance(u'0');
    int time = static_cast<int>(std::ceil(QFontMetricsF(font).horizontalAdvance(u"00:00:00.000"_s)));
};
const Margin& margin() {
    static const Margin margin;
    return margin;
}

} // namespace

LogLine::LogLine(QQuickItem* parent) : PaintedPicture(parent) {
    connect(this, &LogLine::lookChanged, this, &LogLine::changed);
    connect(Theme::instance(), &Theme::colorsChanged, this, &LogLine::changed);
}

void LogLine::setContent(const QVariant& content) {
    auto line = content.value<LogText>();
    if (line == m_content) {
        return;
    }
    const bool isOther = line.line != m_content.line;
    const bool isLaidOut = m_isLaidOut && line.text == m_content.text && line.runs == m_content.runs;
    m_content = std::move(line);
    if (isOther) {
        m_link = {};
        m_selected =
            m_selection != nullptr ? m_selection->within(m_content.line, m_content.text.size()) : LogSelection::Range();
    }
    if (isLaidOut && !isOther) {
        repaint();
    } else {
        changed();
    }
    Q_EMIT contentChanged();
}

void LogLine::setSelection(LogSelection* selection) {
    if (selection == m_selection) {
        return;
    }
    if (m_selection != nullptr) {
        m_selection->disconnect(this);
    }
    m_selection = selection;
    if (selection != nullptr) {
        connect(selection, &LogSelection::changed, this, &LogLine::followSelection);
    }
    followSelection();
    Q_EMIT selectionChanged();
}

void LogLine::followSelection() {
    const LogSelection::Range selected =
        m_selection != nullptr ? m_selection->within(m_content.line, m_content.text.size()) : LogSelection::Range();
    if (selected != m_selected) {
        m_selected = selected;
        repaint();
    }
}

void LogLine::setLink(const LogLayout::Mark& link) {
    if (link.start != m_link.start || link.end != m_link.end) {
        m_link = link;
        repaint();
    }
}

int LogLine::inset() const {
    return (m_isNumbered ? Theme::gutter : Theme::space24) + (m_isTimed ? margin().time + Theme::space12 : 0);
}

qreal LogLine::room() const {
    return std::max(width() - inset() - Theme::space12, LogLayout::advance());
}

const LogLayout& LogLine::layout() const {
    const LogLayout::Room wanted{m_wrap ? room() : 0, m_wrap ? 0 : m_offset + width()};
    // Of what is too far to the right some more than needed is laid out, so scrolling sideways does so rarely.
    const bool fits = wanted.wrapWidth == m_layoutRoom.wrapWidth && wanted.shownWidth <= m_layoutRoom.shownWidth;
    if (!m_isLaidOut || !fits) {
        m_layoutRoom = wanted;
        m_layout.set(m_content, wanted);
        m_isLaidOut = true;
    }
    return m_layout;
}

/// Text, colours or size.
void LogLine::changed() {
    m_isLaidOut = false;
    fit();
}

void LogLine::fit() {
    if (!isComponentComplete()) {
        return;
    }
    setImplicitHeight(m_wrap ? layout().height() : LogLayout::rowHeight());
    followView();
    polish();
    repaint();
}

/// A tall line has a picture of what is in view, which is another one when the list has moved.
void LogLine::followView() {
    if (m_isTall == (implicitHeight() > tall)) {
        return;
    }
    m_isTall = !m_isTall;
    disconnect(m_viewMoves);
    if (m_isTall && parentItem() != nullptr) {
        m_viewMoves = connect(parentItem(), &QQuickItem::yChanged, this, &QQuickItem::update);
    }
}

void LogLine::componentComplete() {
    PaintedPicture::componentComplete();
    changed();
}

void LogLine::geometryChange(const QRectF& now, const QRectF& before) {
    PaintedPicture::geometryChange(now, before);
    if (now.width() != before.width()) {
        fit();
    }
}

QRectF LogLine::paintedArea() const {
    const qreal ratio = window()->effectiveDevicePixelRatio();
    const auto whole = [ratio](qreal length) { return std::ceil(length * ratio) / ratio; };
    const bool fillsAll = m_content.error != ErrorLines::Place::none;
    const qreal textEnd = inset() - shift() + layout().width() + LogLayout::advance();
    const qreal right = fillsAll ? width() : std::clamp(textEnd, static_cast<qreal>(inset()), width());
    QRectF area(0, 0, whole(right), whole(height()));
    const QQuickItem* view = m_isTall && parentItem() != nullptr ? parentItem()->parentItem() : nullptr;
    if (view != nullptr) {
        const QRectF shown = mapRectFromItem(view, view->boundingRect());
        area.setTop(std::clamp(std::floor(shown.top() / tallStep) * tallStep, 0.0, height()));
        area.setBottom(std::clamp(std::ceil(shown.bottom() / tallStep) * tallStep, area.top(), height()));
    }
    return area;
}

void LogLine::paint(QPainter& painter) const {
    const Theme& theme = *Theme::instance();
    if (m_content.error != ErrorLines::Place::none) {
        painter.fillRect(boundingRect(), theme.dangerSoft());
        painter.fillRect(QRectF(0, 0, Theme::space2, height()), theme.danger());
    }
    paintMargin(painter);
    if (shift() > 0) {
        painter.setClipRect(QRectF(inset(), 0, width() - inset(), height()));
    }
    painter.translate(inset() - shift(), 0);
    layout().drawBackgrounds(painter);
    paintMarks(painter);
    QList<LogLayout::Mark> bright;
    for (const LogText::Hit& hit : m_content.hits) {
        if (hit.isCurrent) {
            bright.append({hit.start, hit.start + hit.length});
        }
    }
    layout().drawText(painter, paintedArea().translated(shift() - inset(), 0), bright, m_link);
}

void LogLine::paintMargin(QPainter& painter) const {
    painter.setFont(margin().font);
    painter.setPen(Theme::instance()->text3());
    if (m_isNumbered) {
        const QString number = QString::number(m_number);
        const qreal left = Theme::gutter - Theme::space16 - static_cast<qreal>(number.size()) * margin().digit;
        painter.drawText(QPointF(left, LogLayout::baseline()), number);
    }
    if (m_isTimed) {
        painter.drawText(QPointF(m_isNumbered ? Theme::gutter : Theme::space24, LogLayout::baseline()), m_time);
    }
}

void LogLine::paintMarks(QPainter& painter) const {
    const Theme& theme = *Theme::instance();
    const qsizetype length = m_content.text.size();
    QList<QRectF> selected = layout().fills(m_selected.start, m_selected.end);
    if (m_selected.end > length) {
        // The end of the line belongs to it.
        const qreal bottom = layout().height();
        if (selected.isEmpty() || selected.last().bottom() < bottom) {
            selected.append({0, bottom - LogLayout::rowHeight(), 0, LogLayout::rowHeight()});
        }
        selected.last().setWidth(selected.last().width() + LogLayout::advance());
    }
    for (const QRectF& area : std::as_const(selected)) {
        painter.fillRect(area, theme.terminalSelection());
    }
    painter.setPen(Qt::NoPen);
    for (const LogText::Hit& hit : m_content.hits) {
        painter.setBrush(hit.isCurrent ? theme.warning() : theme.searchHit());
        for (const QRectF& area : layout().areas(hit.start, hit.start + hit.length)) {
            painter.drawRoundedRect(area, Theme::space2, Theme::space2);
        }
    }
}

} // namespace orv
