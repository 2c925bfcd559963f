#include "TermEngine/SixelDecoder.h"
#include "TermEngine/Terminal.h"

namespace term {

/// A sixel picture on its way; it is shown when it is whole.
class Terminal::SixelPicture final : public DcsHandler {
public:
    SixelPicture(Terminal& terminal, SixelDecoder::Background background)
        : m_terminal(terminal), m_decoder(terminal.m_images.limitBytes(), background) {}
    void put(Bytes data) override { m_decoder.append({reinterpret_cast<const char*>(data.data()), data.size()}); }
    void unhook() override {
        if (std::optional<RgbaImage> image = m_decoder.finish()) {
            m_terminal.showImage(std::move(*image));
        }
    }

private:
    Terminal& m_terminal;
    SixelDecoder m_decoder;
};

std::unique_ptr<DcsHandler> Terminal::sixelHandler(const CsiParameters& parameters) {
    const auto background =
        parameters.at(1) == 1 ? SixelDecoder::Background::transparent : SixelDecoder::Background::filled;
    return std::make_unique<SixelPicture>(*this, background);
}

GraphicsContext Terminal::graphicsContext() {
    GraphicsContext context;
    context.screen = isAlternateActive() ? ScreenId::alternate : ScreenId::normal;
    context.topRow = static_cast<std::int64_t>(m_buffer->trimmedCount()) + m_buffer->yBase();
    context.columns = cols();
    context.rows = rows();
    context.cursorColumn = m_buffer->x();
    context.cursorRow = m_buffer->y();
    if (const std::optional<CellSize> cell = m_delegate.cellSizeInPixels(*this);
        cell && cell->width > 0 && cell->height > 0) {
        context.cellWidth = cell->width;
        context.cellHeight = cell->height;
    }
    return context;
}

/// APC: only "G", kitty's graphics, is known.
bool Terminal::dispatchApc(Bytes payload) {
    if (payload[0] != 'G') {
        return false;
    }
    dropPassedImages();
    const std::string_view body(reinterpret_cast<const char*>(payload.data()) + 1, payload.size() - 1);
    const GraphicsResult result = m_graphics.handle(body, graphicsContext());
    if (!result.reply.empty()) {
        const bool eight = m_modes.eightBitControls;
        send((eight ? "\x9F" : "\x1B_") + result.reply + (eight ? "\x9C" : "\x1B\\"));
    }
    applyGraphics(result);
    return true;
}

/// Of sixel or OSC 1337. Without sixel scrolling (DECSDM is set) it stands at the top left, and the cursor stays.
void Terminal::showImage(RgbaImage image, int columns, int rows) {
    dropPassedImages();
    GraphicsContext context = graphicsContext();
    if (m_modes.sixelDisplay) {
        context.cursorColumn = 0;
        context.cursorRow = 0;
    }
    GraphicsResult result = m_graphics.show(std::move(image), columns, rows, context);
    if (m_modes.sixelDisplay) {
        result.cursorColumns = 0;
        result.cursorRows = 0;
    }
    applyGraphics(result);
}

void Terminal::applyGraphics(const GraphicsResult& result) {
    for (int i = 0; i < std::min(result.cursorRows, rows()); ++i) {
        m_buffer->index(pen());
    }
    if (result.cursorColumns > 0) {
        m_buffer->setX(m_buffer->x() + result.cursorColumns);
    }
    if (result.hasChanged) {
        m_delegate.imagesChanged(*this);
    }
}

/// Images whose lines have left the history.
void Terminal::dropPassedImages() {
    const auto first = static_cast<std::int64_t>(m_normal->trimmedCount());
    m_images.removePlacements(
        [first](const ImagePlacement& placement) {
            return placement.screen == ScreenId::normal && !placement.isVirtual &&
                   placement.row + placement.rows <= first;
        },
        ImageStore::Data::release);
}

std::optional<std::int64_t> Terminal::advanceAnimations(std::int64_t nowMilliseconds) {
    return m_graphics.advanceAnimations(nowMilliseconds);
}

void Terminal::clearImages(ScreenId screen) {
    if (m_images.placements().empty()) {
        return;
    }
    const std::int64_t top = graphicsContext().topRow;
    m_images.removePlacements(
        [screen, top](const ImagePlacement& placement) {
            return placement.screen == screen && !placement.isVirtual && placement.row + placement.rows > top;
        },
        ImageStore::Data::release);
    m_delegate.imagesChanged(*this);
}

} // namespace term
