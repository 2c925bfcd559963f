#pragma once

#include <QQuickItem>
#include <QRectF>

class QPainter;

namespace orv {

/// An item that QPainter draws, at the pixels of the screen that it is on, whenever `repaint` was called. A main-thread
/// item.
class PaintedPicture : public QQuickItem {
    Q_OBJECT
public:
    explicit PaintedPicture(QQuickItem* parent = nullptr);

protected:
    /// In the item's coordinates. May run on the render thread while the main thread waits.
    virtual void paint(QPainter& painter) const = 0;
    /// What of the item is drawn, at whole pixels of the screen; the rest is empty.
    [[nodiscard]] virtual QRectF paintedArea() const;
    void repaint();

    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;

private:
    bool m_dirty = true;
    QRectF m_painted;
};

} // namespace orv
