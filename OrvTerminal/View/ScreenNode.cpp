#include "OrvTerminal/View/ScreenNode.h"

#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>
#include <QSGTexture>

namespace orv {

ScreenNode::ScreenNode(QQuickWindow& window)
    : m_window(window),
      m_background(window.createRectangleNode()),
      m_below(new QSGTransformNode),
      m_lines(new QSGTransformNode),
      m_above(new QSGTransformNode),
      m_overlay(new QSGTransformNode) {
    appendChildNode(m_background);
    for (QSGNode* node : {m_below, m_lines, m_above, m_overlay}) {
        appendChildNode(node);
    }
}

ScreenNode::~ScreenNode() = default;

void ScreenNode::update(const Scene& scene) {
    m_ratio = scene.cell.devicePixelRatio;
    const QRectF all = logical(QRectF(QPointF(), scene.size));
    const QColor background(scene.picture.background());
    if (m_background->rect() != all) {
        m_background->setRect(all);
    }
    if (m_background->color() != background) {
        m_background->setColor(background);
    }
    updateImages(scene);
    updateLines(scene);
    updateCursor(scene);
    updatePatches(scene);
}

QRectF ScreenNode::logical(const QRectF& pixels) const {
    return {pixels.x() / m_ratio, pixels.y() / m_ratio, pixels.width() / m_ratio, pixels.height() / m_ratio};
}

QSGImageNode* ScreenNode::makeImageNode() {
    QSGImageNode* node = m_window.createImageNode();
    node->setFiltering(QSGTexture::Nearest);
    node->setOwnsTexture(true);
    return node;
}

void ScreenNode::setImage(QSGImageNode* node, const QImage& image) {
    const auto option = image.hasAlphaChannel() ? QQuickWindow::TextureHasAlphaChannel : QQuickWindow::TextureIsOpaque;
    node->setTexture(m_window.createTextureFromImage(image, option));
    node->setSourceRect(QRectF(QPointF(), image.size()));
    ++m_textures;
}

void ScreenNode::updateLines(const Scene& scene) {
    const std::vector<ScreenPicture::Row>& rows = scene.picture.rows();
    std::unordered_map<std::uint64_t, QSGImageNode*> known;
    for (const Line& line : m_shown) {
        known.emplace(line.serial, line.node);
    }
    const auto imageOf = [&](const ScreenPicture::Row& row) -> const QImage& {
        return row.blinks && scene.hidesBlinking ? row.hidden : row.image;
    };
    std::vector<Line> shown;
    for (const ScreenPicture::Row& row : rows) {
        if (imageOf(row).isNull()) {
            continue;
        }
        shown.push_back({nullptr, 2 * row.serial + (row.blinks && scene.hidesBlinking ? 1 : 0)});
        if (const auto found = known.find(shown.back().serial); found != known.end()) {
            shown.back().node = found->second;
            known.erase(found);
        }
    }
    // Nodes of lines that are gone take the pictures of new ones.
    auto spare = known.begin();
    size_t at = 0;
    for (size_t row = 0; row < rows.size(); ++row) {
        const QImage& image = imageOf(rows[row]);
        if (image.isNull()) {
            continue;
        }
        Line& line = shown[at++];
        if (line.node == nullptr) {
            if (spare != known.end()) {
                line.node = spare->second;
                ++spare;
            } else {
                line.node = makeImageNode();
            }
            setImage(line.node, image);
        }
        const QPointF corner(scene.corner.x(), scene.corner.y() + static_cast<int>(row) * scene.cell.height);
        const QRectF rect = logical(QRectF(corner, image.size()));
        if (line.node->rect() != rect) {
            line.node->setRect(rect);
        }
        if (line.node->parent() == nullptr) {
            m_lines->appendChildNode(line.node); // the software renderer wants it with its texture
        }
    }
    for (; spare != known.end(); ++spare) {
        m_lines->removeChildNode(spare->second);
        delete spare->second;
    }
    m_shown = std::move(shown);
}

void ScreenNode::updateImages(const Scene& scene) {
    if (scene.picture.images().empty() && m_images.empty()) {
        return;
    }
    for (QSGNode* layer : {m_below, m_above}) {
        while (QSGNode* node = layer->firstChild()) {
            layer->removeChildNode(node);
            delete node;
        }
    }
    m_images = scene.picture.images();
    std::unordered_map<const term::RgbaImage*, std::shared_ptr<QSGTexture>> textures;
    for (const ScreenPicture::Placed& placed : m_images) {
        std::shared_ptr<QSGTexture>& texture = textures[placed.pixels.get()];
        if (const auto known = m_imageTextures.find(placed.pixels.get()); known != m_imageTextures.end()) {
            texture = known->second;
        } else if (!texture) {
            const term::RgbaImage& pixels = *placed.pixels;
            const QImage image(
                pixels.pixels.data(), pixels.width, pixels.height, static_cast<qsizetype>(pixels.rowBytes()),
                QImage::Format_RGBA8888);
            texture.reset(m_window.createTextureFromImage(
                image.convertToFormat(QImage::Format_ARGB32_Premultiplied), QQuickWindow::TextureHasAlphaChannel));
            ++m_textures;
        }
        QSGImageNode* node = makeImageNode();
        node->setOwnsTexture(false);
        node->setFiltering(placed.source.size() == placed.target.size() ? QSGTexture::Nearest : QSGTexture::Linear);
        node->setTexture(texture.get());
        node->setSourceRect(placed.source);
        node->setRect(logical(placed.target.translated(scene.corner)));
        (placed.isBelowText ? m_below : m_above)->appendChildNode(node);
    }
    m_imageTextures = std::move(textures);
}

void ScreenNode::showOverlay(QSGImageNode*& node, const QImage& image, QPointF corner, qint64& key) {
    if (image.isNull()) {
        if (node != nullptr) {
            m_overlay->removeChildNode(node);
            delete node;
            node = nullptr;
        }
        return;
    }
    if (node == nullptr) {
        node = makeImageNode();
        key = 0;
    }
    if (image.cacheKey() != key) {
        key = image.cacheKey();
        setImage(node, image);
    }
    node->setRect(logical(QRectF(corner, image.size())));
    if (node->parent() == nullptr) {
        m_overlay->appendChildNode(node);
    }
}

void ScreenNode::setCount(std::vector<QSGRectangleNode*>& nodes, size_t count) {
    while (nodes.size() > count) {
        m_overlay->removeChildNode(nodes.back());
        delete nodes.back();
        nodes.pop_back();
    }
    while (nodes.size() < count) {
        nodes.push_back(m_window.createRectangleNode());
        m_overlay->appendChildNode(nodes.back());
    }
}

void ScreenNode::updateCursor(const Scene& scene) {
    const ScreenPicture::Cursor& cursor = scene.picture.cursor();
    const int width = scene.cell.width * cursor.stretchX;
    const QRect cell(
        scene.corner.x() + cursor.cells.x() * width, scene.corner.y() + cursor.cells.y() * scene.cell.height,
        cursor.cells.width() * width, scene.cell.height);
    const int thick = scene.cell.thickness;
    std::vector<QRect> parts;
    const CursorShape shape = cursor.isShown && scene.preedit.isNull() ? scene.cursor : CursorShape::none;
    switch (shape) {
    case CursorShape::none:
        break;
    case CursorShape::block:
        if (cursor.character.isNull()) {
            parts = {cell};
        }
        break;
    case CursorShape::frame:
        parts = {
            QRect(cell.left(), cell.top(), cell.width(), thick),
            QRect(cell.left(), cell.bottom() + 1 - thick, cell.width(), thick),
            QRect(cell.left(), cell.top() + thick, thick, cell.height() - 2 * thick),
            QRect(cell.right() + 1 - thick, cell.top() + thick, thick, cell.height() - 2 * thick)};
        break;
    case CursorShape::underline:
        parts = {QRect(cell.left(), cell.bottom() + 1 - 2 * thick, cell.width(), 2 * thick)};
        break;
    case CursorShape::bar:
        parts = {QRect(cell.left(), cell.top(), std::max(2 * thick, 1), cell.height())};
        break;
    }
    setCount(m_cursorParts, parts.size());
    for (size_t part = 0; part < parts.size(); ++part) {
        m_cursorParts[part]->setRect(logical(parts[part]));
        m_cursorParts[part]->setColor(scene.cursorColor);
    }
    const QImage character = shape == CursorShape::block ? cursor.character : QImage();
    showOverlay(m_cursorCharacter, character, cell.topLeft(), m_characterKey);
    // A text that does not fit behind the cursor begins further to the left.
    const int room = scene.size.width() - scene.preedit.width();
    showOverlay(m_preedit, scene.preedit, QPointF(std::max(0, std::min(cell.left(), room)), cell.top()), m_preeditKey);
}

void ScreenNode::updatePatches(const Scene& scene) {
    setCount(m_patches, scene.patches.size());
    for (size_t patch = 0; patch < m_patches.size(); ++patch) {
        m_patches[patch]->setRect(logical(scene.patches[patch].rect));
        m_patches[patch]->setColor(scene.patches[patch].color);
    }
}

} // namespace orv
