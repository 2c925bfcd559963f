#include "OrvUI/Screens/Glow.h"

#include <QPainter>
#include <QRadialGradient>

#include <algorithm>

namespace orv {

Glow::Glow(QQuickItem* parent) : PaintedPicture(parent) {
    connect(this, &Glow::colorChanged, this, &Glow::repaint);
}

void Glow::paint(QPainter& painter) const {
    const QPointF middle(width() / 2, height() / 2);
    QRadialGradient light(middle, std::min(width(), height()) / 2);
    QColor none = m_color;
    none.setAlpha(0);
    light.setColorAt(0, m_color);
    light.setColorAt(1, none);
    painter.fillRect(QRectF(0, 0, width(), height()), light);
}

} // namespace orv
