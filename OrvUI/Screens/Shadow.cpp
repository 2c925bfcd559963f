#include "OrvUI/Screens/Shadow.h"

#include "OrvUI/Screens/Theme.h"

#include <QCache>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRendererInterface>
#include <QtMath>

#include <array>
#include <memory>
#include <span>
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

/// Where a piece of the shadow goes, in logical pixels from the shape's corner, and what of the patch it shows.
struct Piece {
    QRectF to;
    QRectF from;
};

/// The eight around the shape.
std::array<Piece, 8> pieces(const Patch& patch, QSizeF shape, qreal ratio) {
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
    std::array<Piece, 8> found;
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
            found[piece++] = {to, QRectF(from.topLeft() * ratio, from.size() * ratio)};
        }
    }
    return found;
}

/// The shadow of one size of shape as pictures that need no stretching: above, below, left and right of it, the last
/// two in pieces.
struct Strips {
    std::vector<QImage> images;
    std::vector<QRectF> places;
};

/// Below what Qt's painter shares with the threads of the global pool, and then waits for them: on busy cores that
/// takes longer than the frame. It counts the rows of what it can't copy as a whole, and from 96 on it shares them.
constexpr qreal highestPiece = 64;

void addInPieces(std::vector<QRectF>& places, const QRectF& strip, qreal ratio) {
    if (strip.isEmpty()) {
        return;
    }
    const int count = qCeil(strip.height() * ratio / highestPiece);
    const qreal height = qCeil(strip.height() * ratio / count) / ratio;
    for (int piece = 0; piece < count; ++piece) {
        const qreal top = strip.top() + piece * height;
        places.emplace_back(strip.left(), top, strip.width(), qMin(height, strip.bottom() - top));
    }
}

Strips cut(const Patch& patch, QSizeF shape, qreal ratio) {
    const QPointF origin(patch.margin, patch.margin);
    const QSizeF whole(shape.width() + 2 * patch.margin, shape.height() + 2 * patch.margin);
    QImage picture((whole * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const std::array<Piece, 8> around = pieces(patch, shape, ratio);
    for (const Piece& piece : around) {
        painter.drawImage(
            QRectF((piece.to.topLeft() + origin) * ratio, piece.to.size() * ratio), patch.image, piece.from);
    }
    painter.end();
    // The pieces lie row by row; the first and the last three are the rows above and below.
    const QRectF above = around[0].to | around[2].to;
    const QRectF below = around[5].to | around[7].to;
    Strips strips{.images = {}, .places = {above, below}};
    addInPieces(strips.places, around[3].to, ratio);
    addInPieces(strips.places, around[4].to, ratio);
    for (const QRectF& to : strips.places) {
        strips.images.push_back(picture.copy(QRectF((to.topLeft() + origin) * ratio, to.size() * ratio).toRect()));
    }
    return strips;
}

/// Some pieces, each with a part of a texture.
class ShadowNode : public QSGNode {
public:
    /// As many pieces as there are places.
    ShadowNode(QQuickWindow* window, size_t count) : m_pieces(count) {
        for (QSGImageNode*& piece : m_pieces) {
            piece = window->createImageNode();
            piece->setFlag(OwnedByParent);
            piece->setFiltering(QSGTexture::Linear);
            appendChildNode(piece);
        }
    }

    [[nodiscard]] size_t count() const { return m_pieces.size(); }

    void set(QQuickWindow* window, const Strips& strips) {
        Textures textures;
        for (size_t place = 0; place < m_pieces.size(); ++place) {
            textures.emplace_back(window->createTextureFromImage(strips.images[place]));
            set(*m_pieces[place], textures.back().get(), strips.places[place], strips.images[place].rect());
        }
        m_textures = std::move(textures);
    }

    void set(QQuickWindow* window, const Patch& patch, QSizeF shape, qreal ratio) {
        Textures textures;
        textures.emplace_back(window->createTextureFromImage(patch.image));
        const std::array<Piece, 8> around = pieces(patch, shape, ratio);
        for (size_t place = 0; place < m_pieces.size(); ++place) {
            set(*m_pieces[place], textures.front().get(), around[place].to, around[place].from);
        }
        m_textures = std::move(textures);
    }

private:
    using Textures = std::vector<std::unique_ptr<QSGTexture>>;

    static void set(QSGImageNode& piece, QSGTexture* texture, const QRectF& to, const QRectF& from) {
        piece.setTexture(texture);
        piece.setRect(to);
        piece.setSourceRect(from);
    }

    std::vector<QSGImageNode*> m_pieces;
    Textures m_textures; ///< those before are looked at until the pieces have new ones
};

struct Look {
    std::span<const ShadowLayer> layers;
    QString name; ///< of level, radius and theme
    int radius = 0;
    qreal ratio = 1;
};

const Patch& patchOf(const Look& look, QSizeF shape) {
    thread_local QCache<QString, Patch> cache(48);
    // What is larger than the reach of the blur looks the same at every size.
    const int limit = 2 * (look.radius + 80) + 2;
    const QString key =
        u"%1/%2/%3"_s.arg(look.name).arg(qMin(qCeil(shape.width()), limit)).arg(qMin(qCeil(shape.height()), limit));
    const Patch* patch = cache.object(key);
    if (patch == nullptr) {
        auto* drawn = new Patch(draw(look.layers, shape, look.radius, look.ratio));
        cache.insert(key, drawn);
        patch = drawn;
    }
    return *patch;
}

Strips stripsOf(const Look& look, QSizeF shape) {
    thread_local QCache<QString, Strips> cache(24);
    const QString key = u"%1/%2/%3"_s.arg(look.name).arg(shape.width()).arg(shape.height());
    if (const Strips* found = cache.object(key)) {
        return *found;
    }
    Strips strips = cut(patchOf(look, shape), shape, look.ratio);
    cache.insert(key, new Strips(strips));
    return strips;
}

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
    } else if (change == ItemVisibleHasChanged && m_dirty) {
        update();
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
    // Qt asks for the pictures of what nobody sees, too.
    if (!isVisible() || (!m_dirty && shadow != nullptr)) {
        return shadow;
    }
    const qreal ratio = window()->effectiveDevicePixelRatio();
    const Look look{
        .layers = m_theme->shadow(m_level),
        .name = u"%1/%2/%3/%4"_s.arg(m_level).arg(m_radius).arg(m_theme->isDark()).arg(ratio),
        .radius = m_radius,
        .ratio = ratio};
    // Where the processor paints, fewer pieces that it only copies are worth pictures of their own for each size.
    const QSizeF pixels = size() * ratio;
    constexpr double largestCopy = 1e6; // pixels; the frame of a long list has hundreds of millions
    const bool copies = window()->rendererInterface()->graphicsApi() == QSGRendererInterface::Software &&
                        pixels == QSizeF(pixels.toSize()) && pixels.width() * pixels.height() <= largestCopy;
    const Strips strips = copies ? stripsOf(look, size()) : Strips();
    const size_t count = copies ? strips.places.size() : 8;
    if (shadow == nullptr || shadow->count() != count) {
        delete shadow;
        shadow = new ShadowNode(window(), count);
    }
    if (copies) {
        shadow->set(window(), strips);
    } else {
        shadow->set(window(), patchOf(look, size()), size(), ratio);
    }
    m_dirty = false;
    return shadow;
}

} // namespace orv
