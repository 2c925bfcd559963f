#include "OrvUI/Screens/Shadow.h"

#include "OrvUI/Screens/Theme.h"

#include <QCache>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QtMath>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// A picture of a shadow that is stretched in its middle.
struct Patch {
    QImage image;
    int margin = 0; ///< how far the shadow reaches around the shape
    int cornerX = 0;
    int cornerY = 0;
};

/// Three passes of a running mean come close to a Gaussian.
void blurLine(std::vector<float>& line, std::vector<float>& out, int reach) {
    const auto count = int(line.size());
    float sum = 0;
    for (int i = 0; i < qMin(reach, count); ++i) {
        sum += line[size_t(i)];
    }
    for (int i = 0; i < count; ++i) {
        if (i + reach < count) {
            sum += line[size_t(i) + size_t(reach)];
        }
        if (i - reach - 1 >= 0) {
            sum -= line[size_t(i) - size_t(reach) - 1];
        }
        out[size_t(i)] = sum / float(2 * reach + 1);
    }
    line.swap(out);
}

void blur(QImage& alpha, qreal deviation) {
    // A mean over 2r+1 has the variance ((2r+1)^2 - 1) / 12; three of them add up.
    const int reach = qMax(0, qRound((qSqrt(4 * deviation * deviation + 1) - 1) / 2));
    if (reach == 0) {
        return;
    }
    const auto pass = [&](int count, int lines, auto&& at) {
        std::vector<float> line(size_t(count), 0);
        std::vector<float> out(line);
        for (int k = 0; k < lines; ++k) {
            for (int i = 0; i < count; ++i) {
                line[size_t(i)] = *at(i, k);
            }
            for (int times = 0; times < 3; ++times) {
                blurLine(line, out, reach);
            }
            for (int i = 0; i < count; ++i) {
                *at(i, k) = uchar(qBound(0, qRound(line[size_t(i)]), 255));
            }
        }
    };
    uchar* bits = alpha.bits();
    const qsizetype stride = alpha.bytesPerLine();
    pass(alpha.width(), alpha.height(), [=](int x, int y) { return bits + y * stride + x; });
    pass(alpha.height(), alpha.width(), [=](int y, int x) { return bits + y * stride + x; });
}

Patch draw(std::span<const ShadowLayer> layers, QSizeF shape, int radius, qreal ratio) {
    Patch patch;
    int inner = radius;
    for (const ShadowLayer& layer : layers) {
        patch.margin = qMax(patch.margin, layer.blur + layer.y);
        inner = qMax(inner, radius + layer.blur);
    }
    const QSizeF core(qMin(shape.width(), 2.0 * inner + 2), qMin(shape.height(), 2.0 * inner + 2));
    patch.cornerX = patch.margin + qFloor(core.width() / 2);
    patch.cornerY = patch.margin + qFloor(core.height() / 2);
    const QSize pixels = ((core + QSizeF(2 * patch.margin, 2 * patch.margin)) * ratio).toSize();
    patch.image = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    patch.image.fill(Qt::transparent);
    QPainter painter(&patch.image);
    for (const ShadowLayer& layer : layers) {
        if (layer.color == 0) {
            continue;
        }
        QImage alpha(pixels, QImage::Format_Alpha8);
        alpha.fill(0);
        QPainter shapePainter(&alpha);
        shapePainter.setRenderHint(QPainter::Antialiasing);
        shapePainter.scale(ratio, ratio);
        shapePainter.setPen(Qt::NoPen);
        shapePainter.setBrush(Qt::black);
        shapePainter.drawRoundedRect(QRectF(QPointF(patch.margin, patch.margin + layer.y), core), radius, radius);
        shapePainter.end();
        blur(alpha, layer.blur * ratio / 2);
        QImage tinted(pixels, QImage::Format_ARGB32_Premultiplied);
        tinted.fill(QColor::fromRgba(layer.color));
        QPainter tintPainter(&tinted);
        tintPainter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        tintPainter.drawImage(0, 0, alpha);
        tintPainter.end();
        painter.drawImage(0, 0, tinted);
    }
    return patch;
}

/// Eight pieces around the shape, over one texture.
class ShadowNode : public QSGNode {
public:
    explicit ShadowNode(QQuickWindow* window) {
        for (QSGImageNode*& piece : m_pieces) {
            piece = window->createImageNode();
            piece->setFlag(OwnedByParent);
            piece->setFiltering(QSGTexture::Linear);
            appendChildNode(piece);
        }
    }

    void set(QSGTexture* texture, const Patch& patch, QSizeF shape, qreal ratio) {
        // The pieces look at the old texture while they take the new one.
        const auto old = std::exchange(m_texture, std::unique_ptr<QSGTexture>(texture));
        const QSizeF source = QSizeF(patch.image.size()) / ratio;
        const qreal right = shape.width() + patch.margin;
        const qreal bottom = shape.height() + patch.margin;
        const qreal endX = source.width() - patch.cornerX;
        const qreal endY = source.height() - patch.cornerY;
        const qreal xs[] = {-qreal(patch.margin), qreal(patch.cornerX - patch.margin), right - endX, right};
        const qreal ys[] = {-qreal(patch.margin), qreal(patch.cornerY - patch.margin), bottom - endY, bottom};
        // The middle of the source is what the corners leave over: nothing, so a sliver of it is stretched.
        const qreal us[] = {0, qreal(patch.cornerX), qreal(patch.cornerX), source.width()};
        const qreal vs[] = {0, qreal(patch.cornerY), qreal(patch.cornerY), source.height()};
        size_t piece = 0;
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                if (row == 1 && column == 1) {
                    continue;
                }
                const QRectF to(QPointF(xs[column], ys[row]), QPointF(xs[column + 1], ys[row + 1]));
                QRectF from(QPointF(us[column], vs[row]), QPointF(us[column + 1], vs[row + 1]));
                if (column == 1) {
                    from.adjust(-0.5, 0, 0.5, 0);
                }
                if (row == 1) {
                    from.adjust(0, -0.5, 0, 0.5);
                }
                m_pieces[piece]->setTexture(texture);
                m_pieces[piece]->setRect(to);
                m_pieces[piece]->setSourceRect(
                    QRectF(from.topLeft() * ratio, QSizeF(from.width() * ratio, from.height() * ratio)));
                ++piece;
            }
        }
    }

private:
    std::array<QSGImageNode*, 8> m_pieces{};
    std::unique_ptr<QSGTexture> m_texture;
};

} // namespace

Shadow::Shadow(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

void Shadow::set(int& member, int value) {
    if (value == member) {
        return;
    }
    member = value;
    redraw();
    Q_EMIT changed();
}

void Shadow::setLevel(int level) {
    set(m_level, level);
}

void Shadow::setRadius(int radius) {
    set(m_radius, radius);
}

void Shadow::redraw() {
    m_dirty = true;
    update();
}

void Shadow::componentComplete() {
    QQuickItem::componentComplete();
    m_theme = Theme::instance();
    connect(m_theme, &Theme::colorsChanged, this, &Shadow::redraw);
}

void Shadow::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
        redraw();
    }
    QQuickItem::itemChange(change, value);
}

void Shadow::geometryChange(const QRectF& now, const QRectF& before) {
    if (now.size() != before.size()) {
        redraw();
    }
    QQuickItem::geometryChange(now, before);
}

QSGNode* Shadow::updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) {
    Q_UNUSED(data)
    if (m_theme == nullptr || width() <= 0 || height() <= 0) {
        delete node;
        return nullptr;
    }
    auto* shadow = static_cast<ShadowNode*>(node);
    if (!m_dirty && shadow != nullptr) {
        return shadow;
    }
    const qreal ratio = window()->effectiveDevicePixelRatio();
    const QSizeF shape = size();
    // What is larger than the reach of the blur looks the same at every size.
    const int limit = 2 * (m_radius + 80) + 2;
    thread_local QCache<QString, Patch> cache(48);
    const QString key = u"%1/%2/%3/%4/%5/%6"_s.arg(m_level)
                            .arg(m_radius)
                            .arg(m_theme->isDark())
                            .arg(qMin(qCeil(shape.width()), limit))
                            .arg(qMin(qCeil(shape.height()), limit))
                            .arg(ratio);
    const Patch* patch = cache.object(key);
    if (patch == nullptr) {
        auto* drawn = new Patch(draw(m_theme->shadow(m_level), shape, m_radius, ratio));
        cache.insert(key, drawn);
        patch = drawn;
    }
    if (shadow == nullptr) {
        shadow = new ShadowNode(window());
    }
    shadow->set(window()->createTextureFromImage(patch->image), *patch, shape, ratio);
    m_dirty = false;
    return shadow;
}

} // namespace orv
