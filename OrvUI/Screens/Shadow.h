#pragma once

#include <QPointer>
#include <QQuickItem>

namespace orv {

class Theme;

/// The shadow of a rounded rectangle that fills the item; it is drawn around it, not below it. A main-thread item.
class Shadow : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// 1 card, 2 hovered card and tooltip, 3 popover and status line, 4 sheet.
    Q_PROPERTY(int level READ level WRITE setLevel NOTIFY changed FINAL)
    Q_PROPERTY(int radius READ radius WRITE setRadius NOTIFY changed FINAL)

public:
    explicit Shadow(QQuickItem* parent = nullptr);

    [[nodiscard]] int level() const { return m_level; }
    void setLevel(int level);
    [[nodiscard]] int radius() const { return m_radius; }
    void setRadius(int radius);

Q_SIGNALS:
    void changed();

protected:
    void componentComplete() override;
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    void geometryChange(const QRectF& now, const QRectF& before) override;

private:
    void set(int& member, int value);
    void redraw();

    QPointer<Theme> m_theme;
    int m_level = 1;
    int m_radius = 12;
    bool m_dirty = true;
};

} // namespace orv
