#include "TermEngine/ImageBlend_p.h"
#include "TermEngine/KittyGraphics.h"

#include <algorithm>
#include <array>
#include <utility>

namespace term {
namespace {

constexpr int defaultGapMilliseconds = 40;

} // namespace

/// `frame` is null where it is still to be made. The whole of one is copied first where a renderer has it.
bool KittyGraphics::takeForDrawing(
    const StoredImage& image, const StoredImage::Frame* frame, size_t pixels, BlendMode mode) {
    const bool isMade = frame == nullptr || frame->pixels.use_count() > 1;
    const size_t made = isMade ? image.frames.front().pixels->pixels.size() / 4 : 0;
    return take(made + pixels * (mode == BlendMode::over ? PixelAllowance::ofBlendedPixel : 1));
}

KittyGraphics::Outcome<GraphicsResult> KittyGraphics::finishFrame(
    const GraphicsCommand& command, const RgbaImage& data) {
    const auto found = addressed(command);
    if (!found) {
        return std::unexpected(found.error());
    }
    StoredImage& image = **found;
    const PixelArea target{command.extent('x'), command.extent('y'), data.width, data.height};
    const size_t edited = command.number('r');
    const size_t basis = command.number('c');
    if (!target.isWithin(image.width(), image.height())) {
        return std::unexpected("EINVAL:outside of the image");
    }
    if (edited > image.frames.size() || basis > image.frames.size()) {
        return std::unexpected("ENOENT:no such frame");
    }
    const size_t index = edited != 0 ? edited - 1 : image.frames.size();
    if (edited == 0 && !m_store.hasRoomBeside(image, image.frames.front().pixels->pixels.size())) {
        return std::unexpected("ENOSPC:no room for the frame");
    }
    const auto mode = command.number('X') == 1 ? BlendMode::replace : BlendMode::over;
    if (!takeForDrawing(image, edited != 0 ? &image.frames[index] : nullptr, data.pixels.size() / 4, mode)) {
        return std::unexpected(tooManyPixels);
    }
    if (edited == 0) {
        RgbaImage canvas{image.width(), image.height(), {}};
        if (basis != 0) {
            canvas = *image.frames[basis - 1].pixels;
        } else {
            fill(canvas, command.number('Y'));
        }
        if (!m_store.setFrame(image, index, std::move(canvas))) {
            return std::unexpected("ENOSPC:no room for the frame");
        }
        image.frames[index].gapMilliseconds = defaultGapMilliseconds;
    }
    blend(ImageStore::editable(image.frames[index]), target, data, 0, 0, mode);
    if (command.signedNumber('z') != 0) {
        image.frames[index].gapMilliseconds = command.signedNumber('z');
    }
    // A running animation may have waited for this frame.
    const bool isRunning = image.animation != StoredImage::Animation::stopped;
    return GraphicsResult{.hasChanged = isRunning || index == image.currentFrame};
}

/// Pixels of one frame onto another one.
KittyGraphics::Outcome<GraphicsResult> KittyGraphics::compose(const GraphicsCommand& command) {
    const auto found = addressed(command);
    if (!found) {
        return std::unexpected(found.error());
    }
    StoredImage& image = **found;
    const size_t from = command.number('r');
    const size_t onto = command.number('c');
    if (from == 0 || onto == 0 || from > image.frames.size() || onto > image.frames.size()) {
        return std::unexpected("ENOENT:no such frame");
    }
    const int width = command.number('w') != 0 ? command.extent('w') : image.width();
    const int height = command.number('h') != 0 ? command.extent('h') : image.height();
    const PixelArea source{command.extent('X'), command.extent('Y'), width, height};
    const PixelArea target{command.extent('x'), command.extent('y'), width, height};
    const bool isWithin =
        source.isWithin(image.width(), image.height()) && target.isWithin(image.width(), image.height());
    if (!isWithin || (from == onto && source.intersects(target))) {
        return std::unexpected("EINVAL:bad areas");
    }
    const auto mode = command.number('C') == 1 ? BlendMode::replace : BlendMode::over;
    if (!takeForDrawing(
            image, &image.frames[onto - 1], static_cast<size_t>(width) * static_cast<size_t>(height), mode)) {
        return std::unexpected(tooManyPixels);
    }
    RgbaImage& pixels = ImageStore::editable(image.frames[onto - 1]);
    blend(pixels, target, *image.frames[from - 1].pixels, source.x, source.y, mode);
    return GraphicsResult{.hasChanged = onto - 1 == image.currentFrame};
}

KittyGraphics::Outcome<GraphicsResult> KittyGraphics::animate(const GraphicsCommand& command) {
    const auto found = addressed(command);
    if (!found) {
        return std::unexpected(found.error());
    }
    StoredImage& image = **found;
    GraphicsResult result;
    const size_t gapFrame = command.number('r');
    if (gapFrame != 0 && gapFrame <= image.frames.size() && command.signedNumber('z') != 0) {
        image.frames[gapFrame - 1].gapMilliseconds = command.signedNumber('z');
        result.hasChanged = image.animation != StoredImage::Animation::stopped;
    }
    const size_t current = command.number('c');
    if (current != 0 && current <= image.frames.size()) {
        result.hasChanged = result.hasChanged || image.currentFrame != current - 1;
        image.currentFrame = current - 1;
        m_frameBegins.erase(image.id);
    }
    if (const uint32_t loops = command.number('v'); loops != 0) {
        image.loops = loops - 1;
    }
    using enum StoredImage::Animation;
    static constexpr std::array states{stopped, loading, running};
    if (const uint32_t state = command.number('s'); state >= 1 && state <= states.size()) {
        image.animation = states[state - 1];
        image.loops = image.animation == stopped ? 0 : image.loops;
        result.hasChanged = true;
    }
    return result;
}

std::optional<int64_t> KittyGraphics::advanceAnimations(int64_t nowMilliseconds) {
    std::optional<int64_t> next;
    std::erase_if(m_frameBegins, [this](const auto& entry) { return m_store.find(entry.first) == nullptr; });
    std::vector<uint32_t> running;
    for (const auto& [id, image] : m_store.images()) {
        if (image.animation != StoredImage::Animation::stopped && image.frames.size() > 1) {
            running.push_back(id);
        }
    }
    for (const uint32_t id : running) {
        StoredImage& image = *m_store.find(id);
        int64_t& begin = m_frameBegins.try_emplace(id, nowMilliseconds).first->second;
        // Late by more than a round, it goes on from here.
        for (size_t steps = 0; steps <= image.frames.size(); ++steps) {
            const int64_t gap = std::max(image.frames[image.currentFrame].gapMilliseconds, 0);
            const bool isLast = image.currentFrame + 1 == image.frames.size();
            if (nowMilliseconds < begin + gap) {
                next = std::min(next.value_or(begin + gap - nowMilliseconds), begin + gap - nowMilliseconds);
                break;
            }
            if (isLast && image.animation == StoredImage::Animation::loading) {
                break;
            }
            if (isLast && image.loops == 1) {
                image.animation = StoredImage::Animation::stopped;
                image.loops = 0;
                break;
            }
            image.loops -= isLast && image.loops > 1 ? 1 : 0;
            image.currentFrame = isLast ? 0 : image.currentFrame + 1;
            begin = steps == image.frames.size() ? nowMilliseconds : begin + gap;
        }
    }
    return next;
}

} // namespace term
