#pragma once

#include "TermEngine/Base64.h"
#include "TermEngine/GraphicsCommand.h"
#include "TermEngine/ImageStore.h"
#include "TermEngine/TerminalOptions.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace term {

enum class BlendMode : uint8_t;

/// What a command needs to know of the terminal.
struct GraphicsContext {
    ScreenId screen = ScreenId::normal;
    int64_t topRow = 0; ///< of the screen, counted from the first line that the terminal ever had
    int columns = 80;
    int rows = 25;
    int cursorColumn = 0;
    int cursorRow = 0;  ///< on the screen
    int cellWidth = 10; ///< pixels
    int cellHeight = 20;
    bool mayNameFiles = true; ///< where the configuration allows it
};

/// What has to be done after a command.
struct GraphicsResult {
    std::string reply{};     ///< to send back between APC and ST; empty: nothing
    bool hasChanged = false; ///< something is shown that was not, or no more
    int cursorColumns = 0;   ///< that the cursor moves to the right
    int cursorRows = 0;      ///< and down, scrolling where it must
    uint32_t newImage = 0;   ///< has come
};

/// kitty's graphics protocol ("Terminal graphics protocol"), over the images of one terminal.
///
/// Files and shared memory are read only where the configuration allows it. What is placed relative to another
/// placement can't be so to a virtual one.
class KittyGraphics {
public:
    KittyGraphics(const KittyGraphicsConfiguration& configuration, ImageStore& store)
        : m_configuration(configuration), m_store(store) {}

    /// `body` is what stands behind "G" in the APC string.
    GraphicsResult handle(std::string_view body, const GraphicsContext& context);
    void reset();

    /// Moves running animations on. When to ask again, in milliseconds after `now`; nothing while none runs.
    std::optional<int64_t> advanceAnimations(int64_t nowMilliseconds);

private:
    using Failure = std::string_view; ///< "ENOENT:no such image"
    static constexpr Failure tooManyPixels = "ENOSPC:too many pixels at once";
    template <typename T>
    using Outcome = std::expected<T, Failure>;

    /// An image or a frame that comes in pieces.
    struct Loading {
        GraphicsCommand command;
        Base64Decoder data;
    };

    GraphicsResult run(const GraphicsCommand& command, const GraphicsContext& context);
    GraphicsResult load(const GraphicsCommand& command, const GraphicsContext& context);
    [[nodiscard]] bool take(size_t pixels, size_t cost = 1) { return m_store.allowance().take(pixels * cost); }
    Outcome<std::vector<uint8_t>> inflate(const GraphicsCommand& command, std::span<const uint8_t> data);
    Outcome<RgbaImage> decode(const GraphicsCommand& command, std::vector<uint8_t> data);
    Outcome<std::vector<uint8_t>> readMedium(
        const GraphicsCommand& command, std::vector<uint8_t> payload, const GraphicsContext& context) const;
    Outcome<StoredImage*> addressed(const GraphicsCommand& command);
    Outcome<GraphicsResult> finishImage(
        const GraphicsCommand& command, RgbaImage image, uint32_t& id, const GraphicsContext& context);
    [[nodiscard]] bool takeForDrawing(
        const StoredImage& image, const StoredImage::Frame* frame, size_t pixels, BlendMode mode);
    Outcome<GraphicsResult> finishFrame(const GraphicsCommand& command, const RgbaImage& data);
    Outcome<GraphicsResult> put(
        const GraphicsCommand& command, const StoredImage& image, const GraphicsContext& context);
    Outcome<void> makeRelative(
        ImagePlacement& placement, const GraphicsCommand& command, const GraphicsContext& context) const;
    Outcome<GraphicsResult> compose(const GraphicsCommand& command);
    Outcome<GraphicsResult> animate(const GraphicsCommand& command);
    GraphicsResult erase(const GraphicsCommand& command, const GraphicsContext& context);

    const KittyGraphicsConfiguration m_configuration;
    ImageStore& m_store;
    std::optional<Loading> m_loading;
    std::map<uint32_t, int64_t> m_frameBegins; ///< by image: when its current frame was shown
};

} // namespace term
