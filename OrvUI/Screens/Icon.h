#pragma once

#include <QColor>
#include <QQuickItem>

namespace orv {

/// A glyph of the icon set in one colour, drawn at the pixel size of the screen that it is on. A main-thread item.
class Icon : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// File name without its ending ("circle-play").
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)
    /// Edge length.
    Q_PROPERTY(int size READ size WRITE setSize NOTIFY sizeChanged FINAL)

public:
    explicit Icon(QQuickItem* parent = nullptr);

    [[nodiscard]] const QString& name() const { return m_name; }
    void setName(const QString& name);
    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor& color);
    [[nodiscard]] int size() const { return m_size; }
    void setSize(int size);

    /// The glyph at `pixels` across for a place of `size` logical pixels; null when there is no such glyph.
    [[nodiscard]] static QImage image(const QString& name, const QColor& color, int size, int pixels);

Q_SIGNALS:
    void nameChanged();
    void colorChanged();
    void sizeChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;

private:
    void changed();

    QString m_name;
    QColor m_color;
    int m_size = 16;
    bool m_dirty = true;
};

} // namespace orv
