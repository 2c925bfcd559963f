#pragma once

#include "OrvTerminal/View/ScreenPicture.h"

#include <QColor>
#include <QSGTransformNode>

#include <cstdint>
#include <unordered_map>
#include <vector>

class QQuickWindow;
class QSGImageNode;
class QSGRectangleNode;
class QSGTexture;

namespace orv {

/// A terminal in the scene graph. A line has one texture for as long as its picture is the same; when it scrolls, its
/// node moves. Lives on the render thread, and changes only while the main thread waits.
class ScreenNode : public QSGTransformNode {
public:
    enum class CursorShape : std::uint8_t { none, block, frame, underline, bar };
    /// A coloured rectangle over everything, in pixels of the screen.
    struct Patch {
        QRect rect;
        QColor color;
        bool operator==(const Patch&) const = default;
    };
    struct Scene {
        const ScreenPicture& picture;
        CellGeometry cell;
        QSize size;    ///< of the item, in pixels of the screen, as all else here
        QPoint corner; ///< of the first cell
        CursorShape cursor = CursorShape::none;
        QColor cursorColor;
        QImage preedit; ///< over the cell of the cursor
        std::vector<Patch> patches;
        bool hidesBlinking = false;
    };

    explicit ScreenNode(QQuickWindow& window);
    ~ScreenNode() override;
    ScreenNode(const ScreenNode&) = delete;
    ScreenNode& operator=(const ScreenNode&) = delete;

    void update(const Scene& scene);
    /// Textures that were made since the beginning.
    [[nodiscard]] std::uint64_t textureCount() const { return m_textures; }

private:
    struct Line {
        QSGImageNode* node = nullptr;
        std::uint64_t serial = 0; ///< twice that of its row; one more without the text that blinks
    };

    void updateLines(const Scene& scene);
    void updateImages(const Scene& scene);
    void updateCursor(const Scene& scene);
    void updatePatches(const Scene& scene);
    [[nodiscard]] QSGImageNode* makeImageNode();
    void setImage(QSGImageNode* node, const QImage& image);
    void showOverlay(QSGImageNode*& node, const QImage& image, QPointF corner, qint64& key);
    void setCount(std::vector<QSGRectangleNode*>& nodes, size_t count);
    [[nodiscard]] QRectF logical(const QRectF& pixels) const;

    QQuickWindow& m_window;
    qreal m_ratio = 1;
    QSGRectangleNode* m_background;
    // Transforms, though they move nothing: Qt's software renderer loses the place of what is added below a plain node.
    QSGTransformNode* m_below; ///< images below the text
    QSGTransformNode* m_lines;
    QSGTransformNode* m_above;
    QSGTransformNode* m_overlay; ///< cursor, preedit, patches
    std::vector<Line> m_shown;
    std::unordered_map<const term::RgbaImage*, std::shared_ptr<QSGTexture>> m_imageTextures;
    std::vector<ScreenPicture::Placed> m_images;
    std::vector<QSGRectangleNode*> m_cursorParts;
    QSGImageNode* m_cursorCharacter = nullptr;
    QSGImageNode* m_preedit = nullptr;
    qint64 m_characterKey = 0;
    qint64 m_preeditKey = 0;
    std::vector<QSGRectangleNode*> m_patches;
    std::uint64_t m_textures = 0;
};

} // namespace orv
