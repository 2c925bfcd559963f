#include "PaintedPicture.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>

namespace orv {

PaintedPicture::PaintedPicture(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

QRectF PaintedPicture::paintedArea() const {
    return boundingRect();
}

void PaintedPicture::repaint() {
    m_dirty = true;
    update();
}

void PaintedPicture::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) {
        repaint();
    }
}

void PaintedPicture::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
        repaint();
    }
    QQuickItem::itemChange(change, value);
}

QSGNode* PaintedPicture::updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) {
    Q_UNUSED(data)
    const qreal ratio = window()->effectiveDevicePixelRatio();
    const QRectF area = paintedArea();
    const QSize pixels = (area.size() * ratio).toSize();
    if (pixels.isEmpty()) {
        delete node;
        return nullptr;
    }
    auto* picture = static_cast<QSGImageNode*>(node);
    if (m_dirty || area != m_painted || picture == nullptr) {
        QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(-area.topLeft());
        paint(painter);
        painter.end();
        if (picture == nullptr) {
            picture = window()->createImageNode();
            picture->setOwnsTexture(true);
            picture->setFiltering(QSGTexture::Linear);
        }
        picture->setTexture(window()->createTextureFromImage(image));
        m_painted = area;
        m_dirty = false;
    }
    picture->setRect(area);
    return picture;
}

} // namespace orv
