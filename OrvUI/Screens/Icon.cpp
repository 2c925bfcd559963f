#include "OrvUI/Screens/Icon.h"

#include <QCache>
#include <QFile>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// The stroke, on the grid of 24, that comes out at about 1.3 pixels when drawn at `size`.
QByteArray strokeWidth(int size) {
    if (size <= 12) {
        return "2.4";
    }
    if (size <= 14) {
        return "2.1";
    }
    return size <= 16 ? "1.9" : "1.75";
}

QImage render(const QString& name, const QColor& color, int size, int pixels) {
    QFile file(u":/qt/qml/OrvLauncher/Screens/icons/%1.svg"_s.arg(name));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("there is no icon \"%s\"", qUtf8Printable(name));
        return {};
    }
    QByteArray svg = file.readAll();
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    svg.replace("stroke-width=\"2\"", "stroke-width=\"" + strokeWidth(size) + '"');
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setOpacity(color.alphaF());
    QSvgRenderer(svg).render(&painter);
    return image;
}

/// A textured node that owns its texture.
class GlyphNode : public QSGNode {
public:
    explicit GlyphNode(QQuickWindow* window) : m_image(window->createImageNode()) {
        m_image->setOwnsTexture(true);
        m_image->setFiltering(QSGTexture::Linear); // a spinner turns
        m_image->setFlag(OwnedByParent);
        appendChildNode(m_image);
    }
    void setTexture(QSGTexture* texture) { m_image->setTexture(texture); }
    void setRect(const QRectF& rect) { m_image->setRect(rect); }

private:
    QSGImageNode* m_image;
};

} // namespace

Icon::Icon(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    setImplicitSize(m_size, m_size);
}

void Icon::setName(const QString& name) {
    if (name == m_name) {
        return;
    }
    m_name = name;
    changed();
    Q_EMIT nameChanged();
}

void Icon::setColor(const QColor& color) {
    if (color == m_color) {
        return;
    }
    m_color = color;
    changed();
    Q_EMIT colorChanged();
}

void Icon::setSize(int size) {
    if (size == m_size) {
        return;
    }
    m_size = size;
    setImplicitSize(size, size);
    changed();
    Q_EMIT sizeChanged();
}

void Icon::changed() {
    m_dirty = true;
    update();
}

void Icon::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
        changed();
    }
    QQuickItem::itemChange(change, value);
}

QImage Icon::image(const QString& name, const QColor& color, int size, int pixels) {
    // Asked for on the render thread while the main thread waits; a thread of its own each keeps it without a lock.
    thread_local QCache<QString, QImage> cache(256);
    const QString key = u"%1/%2/%3/%4"_s.arg(name, color.name(QColor::HexArgb)).arg(size).arg(pixels);
    if (const QImage* found = cache.object(key)) {
        return *found;
    }
    QImage image = render(name, color, size, pixels);
    cache.insert(key, new QImage(image));
    return image;
}

QSGNode* Icon::updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) {
    Q_UNUSED(data)
    if (m_name.isEmpty() || !m_color.isValid()) {
        delete node;
        return nullptr;
    }
    auto* glyph = static_cast<GlyphNode*>(node);
    if (m_dirty || glyph == nullptr) {
        const int pixels = qRound(m_size * window()->effectiveDevicePixelRatio());
        const QImage picture = image(m_name, m_color, m_size, pixels);
        if (picture.isNull()) {
            delete glyph;
            return nullptr;
        }
        if (glyph == nullptr) {
            glyph = new GlyphNode(window());
        }
        glyph->setTexture(window()->createTextureFromImage(picture, QQuickWindow::TextureCanUseAtlas));
        m_dirty = false;
    }
    const qreal x = qRound((width() - m_size) / 2);
    const qreal y = qRound((height() - m_size) / 2);
    glyph->setRect({x, y, qreal(m_size), qreal(m_size)});
    return glyph;
}

} // namespace orv
