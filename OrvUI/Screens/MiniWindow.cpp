#include "MiniWindow.h"

#include "Theme.h"

#include <QPainter>
#include <QPainterPath>

namespace orv {

namespace {

constexpr qreal radius = 8;

/// A bar with round ends, as a line of text looks from afar.
void bar(QPainter& painter, QRectF place, const QColor& color) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(place, place.height() / 2, place.height() / 2);
}

void face(QPainter& painter, const QRectF& place, qreal corner, const QColor& fill, const QColor& edge) {
    painter.setPen(QPen(edge, 1));
    painter.setBrush(fill);
    painter.drawRoundedRect(place.adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
}

} // namespace

MiniWindow::MiniWindow(QQuickItem* parent) : PaintedPicture(parent) {
    connect(this, &MiniWindow::lookChanged, this, &MiniWindow::repaint);
}

void MiniWindow::paint(QPainter& painter) const {
    QPainterPath shape;
    shape.addRoundedRect(boundingRect(), radius, radius);
    painter.setClipPath(shape);
    paintLook(painter, m_dark);
    if (m_cut) {
        const qreal middle = width() / 2;
        const qreal slant = height() / 5;
        QPainterPath left;
        left.addPolygon(QPolygonF{{0, 0}, {middle + slant, 0}, {middle - slant, height()}, {0, height()}});
        painter.setClipPath(shape.intersected(left));
        paintLook(painter, false);
    }
    painter.setClipping(false);
    face(painter, boundingRect(), radius, Qt::transparent, Theme::swatch(m_theme, m_dark, Theme::SwatchBorder));
}

void MiniWindow::paintLook(QPainter& painter, bool dark) const {
    const auto color = [this, dark](Theme::Swatch role) { return Theme::swatch(m_theme, dark, role); };
    const qreal w = width();
    const qreal h = height();
    const bool isLarge = w > 150;
    painter.fillRect(boundingRect(), color(Theme::SwatchSidebar));

    const qreal line = 4;
    const qreal side = w * (isLarge ? 0.2 : 0.19);
    bar(painter, {7, 7, side, line + 1}, color(Theme::SwatchSelection));
    bar(painter, {7, 16, side * 0.78, line}, color(Theme::SwatchFaintLine));
    bar(painter, {7, 24, side * 0.9, line}, color(Theme::SwatchFaintLine));

    const qreal edge = 6;
    const qreal begin = side + (isLarge ? 16 : 12);
    const QRectF panel(begin, edge, w - begin - edge, h - 2 * edge);
    face(painter, panel, 6, color(Theme::SwatchWindow), color(Theme::SwatchBorder));
    QColor title = color(Theme::SwatchText);
    title.setAlphaF(0.85F);
    bar(painter, {panel.left() + 8, panel.top() + 8, panel.width() * 0.39, 5}, title);
    const qreal button = 18;
    bar(painter, {panel.right() - button - 6, panel.top() + 7, button, 7}, color(Theme::SwatchAccent));

    const qreal gap = 6;
    const QRectF cards(panel.left() + 8, panel.top() + 22, panel.width() - 16, panel.height() - (isLarge ? 30 : 29));
    const qreal cardWidth = (cards.width() - gap) / 2;
    for (int i = 0; i < 2; ++i) {
        const QRectF card(cards.left() + i * (cardWidth + gap), cards.top(), cardWidth, cards.height());
        face(painter, card, 4, color(Theme::SwatchSurface), color(Theme::SwatchBorder));
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(i == 0 ? Theme::SwatchAccent : Theme::SwatchSuccess));
        painter.drawRoundedRect(QRectF(card.left() + 5, card.top() + 5, 8, 8), 2.5, 2.5);
        bar(painter, {card.left() + 5, card.bottom() - 9, card.width() * 0.55, 3}, color(Theme::SwatchLine));
    }
}

} // namespace orv
