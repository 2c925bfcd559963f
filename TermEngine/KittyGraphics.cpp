#include "TermEngine/KittyGraphics.h"

#include "TermEngine/Encoding_p.h"
#include "TermEngine/ImageBlend_p.h"
#include "TermEngine/ImageCodec.h"
#include "TermEngine/LocalMedia_p.h"

#include <algorithm>
#include <utility>

namespace term {
namespace {

constexpr int defaultGapMilliseconds = 40;
constexpr int mostCells = 10'000;

int ceilDivide(int64_t value, int64_t by) {
    return static_cast<int>(std::clamp<int64_t>((value + by - 1) / std::max<int64_t>(by, 1), 1, mostCells));
}

int bytesPerPixel(const GraphicsCommand& command) {
    const uint32_t format = command.has('f') ? command.number('f') : 32;
    return format == 24 ? 3 : format == 32 ? 4 : 0;
}

bool isPng(const GraphicsCommand& command) {
    return command.number('f') == 100;
}

size_t rawBytes(const GraphicsCommand& command) {
    return size_t{command.number('s')} * command.number('v') * static_cast<size_t>(bytesPerPixel(command));
}

/// "i=1,I=2,p=3;OK". Numbers only, so nothing of a command's text comes back.
std::string replyTo(const GraphicsCommand& command, uint32_t id, std::string_view text) {
    const bool isAsked = command.number('i') != 0 || command.number('I') != 0;
    const uint32_t quiet = command.number('q');
    if (!isAsked || quiet >= 2 || (quiet == 1 && text == "OK")) {
        return {};
    }
    std::string reply = "G";
    const auto add = [&reply](char key, uint32_t value) {
        if (value != 0) {
            reply += reply.size() > 1 ? "," : "";
            reply.push_back(key);
            reply.push_back('=');
            appendNumber(reply, value);
        }
    };
    add('i', id);
    add('I', command.number('I'));
    add('p', command.number('p'));
    return reply + ';' + std::string(text);
}

} // namespace

GraphicsResult KittyGraphics::handle(std::string_view body, const GraphicsContext& context) {
    const auto command = GraphicsCommand::parse(body);
    if (!command) {
        return {};
    }
    if (!m_loading) {
        return run(*command, context);
    }
    const bool isContinuation =
        command->hasOnly("mqaiI") && command->has('m') &&
        (!command->has('a') || command->letter('a', 't') == m_loading->command.letter('a', 't'));
    if (!isContinuation) {
        m_loading.reset();
        return run(*command, context);
    }
    m_loading->data.append(command->payload());
    return command->number('m') != 0 ? GraphicsResult{} : load(*command, context);
}

GraphicsResult KittyGraphics::run(const GraphicsCommand& command, const GraphicsContext& context) {
    const auto answered = [&](Outcome<GraphicsResult> outcome, uint32_t id) {
        GraphicsResult result = outcome.value_or(GraphicsResult{});
        result.reply = replyTo(command, id, outcome ? "OK" : outcome.error());
        return result;
    };
    if (command.number('i') != 0 && command.number('I') != 0) {
        return answered(std::unexpected("EINVAL:both an id and a number"), command.number('i'));
    }
    const char action = command.letter('a', 't');
    switch (action) {
    case 't':
    case 'T':
    case 'q':
    case 'f': {
        const bool isRaw = bytesPerPixel(command) != 0;
        const bool isSized = command.number('s') > 0 && command.number('s') <= maximumImageSide &&
                             command.number('v') > 0 && command.number('v') <= maximumImageSide;
        if ((!isRaw && !isPng(command)) || (isRaw && !isSized)) {
            return answered(std::unexpected("EINVAL:bad format or size"), command.number('i'));
        }
        // Deflate adds a little to what it can't make smaller; a name is a name.
        const bool isDirect = command.letter('t', 'd') == 'd';
        const size_t slack = command.has('o') ? rawBytes(command) / 8 + 1024 : 0;
        const size_t limit = !isDirect ? 4096 : isRaw ? rawBytes(command) + slack : m_store.limitBytes();
        if (isRaw && rawBytes(command) > m_store.limitBytes()) {
            return answered(std::unexpected("EFBIG:too much data"), command.number('i'));
        }
        m_loading.emplace(command.withoutPayload(), Base64Decoder(limit));
        m_loading->data.reserve(isDirect && isRaw ? rawBytes(command) : 0);
        m_loading->data.append(command.payload());
        return command.number('m') != 0 ? GraphicsResult{} : load(command, context);
    }
    case 'p': {
        const auto image = addressed(command);
        return image ? answered(put(command, **image, context), (*image)->id)
                     : answered(std::unexpected(image.error()), command.number('i'));
    }
    case 'a':
        return answered(animate(command), command.number('i'));
    case 'c':
        return answered(compose(command), command.number('i'));
    case 'd':
        return erase(command, context);
    default:
        return answered(std::unexpected("EINVAL:unknown action"), command.number('i'));
    }
}

/// All of the data is there. `last` is the command that brought the end of it.
GraphicsResult KittyGraphics::load(const GraphicsCommand& last, const GraphicsContext& context) {
    Loading loading = std::move(*m_loading);
    m_loading.reset();
    const GraphicsCommand& command = loading.command;
    uint32_t id = command.number('i');
    const auto finish = [&]() -> Outcome<GraphicsResult> {
        const bool isTooLong = loading.data.error() == Base64Decoder::Error::tooLong;
        auto data = loading.data.finish();
        if (!data) {
            return std::unexpected(isTooLong ? "EFBIG:too much data" : "EINVAL:bad base64");
        }
        auto read = readMedium(command, std::move(*data));
        if (!read) {
            return std::unexpected(read.error());
        }
        auto image = decode(command, std::move(*read));
        if (!image) {
            return std::unexpected(image.error());
        }
        switch (command.letter('a', 't')) {
        case 'q':
            return GraphicsResult{};
        case 'f':
            return finishFrame(command, *image);
        default:
            return finishImage(command, std::move(*image), id, context);
        }
    };
    const auto outcome = finish();
    GraphicsResult result = outcome.value_or(GraphicsResult{});
    const uint32_t quiet = last.number('q'); // a later piece may ask for silence too
    if (quiet == 0 || (quiet == 1 && !outcome)) {
        result.reply = replyTo(command, id, outcome ? "OK" : outcome.error());
    }
    return result;
}

KittyGraphics::Outcome<std::vector<uint8_t>> KittyGraphics::readMedium(
    const GraphicsCommand& command, std::vector<uint8_t> payload) const {
    const char medium = command.letter('t', 'd');
    if (medium == 'd') {
        return payload;
    }
    if (medium != 'f' && medium != 't' && medium != 's') {
        return std::unexpected("EINVAL:unknown medium");
    }
    if (!m_configuration.allowsLocalMedia) {
        return std::unexpected("EPERM:only direct data are taken");
    }
    return readLocalMedium(
        static_cast<LocalMedium>(medium), std::string(payload.begin(), payload.end()), command.number('O'),
        command.number('S'), m_store.limitBytes() * 2);
}

KittyGraphics::Outcome<RgbaImage> KittyGraphics::decode(
    const GraphicsCommand& command, std::vector<uint8_t> data) const {
    if (command.has('o')) {
        auto inflated = command.letter('o', 0) == 'z'
                            ? inflateZlib(data, isPng(command) ? m_store.limitBytes() : rawBytes(command))
                            : std::nullopt;
        if (!inflated) {
            return std::unexpected("EINVAL:bad compressed data");
        }
        data = std::move(*inflated);
    }
    auto image = isPng(command)
                     ? decodePng(data, m_store.limitBytes())
                     : fromRawPixels(std::move(data), command.extent('s'), command.extent('v'), bytesPerPixel(command));
    return image ? Outcome<RgbaImage>(std::move(*image))
                 : std::unexpected(isPng(command) ? "EBADPNG:can't be decoded" : "ENODATA:too little data");
}

KittyGraphics::Outcome<StoredImage*> KittyGraphics::addressed(const GraphicsCommand& command) {
    StoredImage* image = command.number('i') != 0   ? m_store.find(command.number('i'))
                         : command.number('I') != 0 ? m_store.findNewest(command.number('I'))
                                                    : nullptr;
    return image != nullptr ? Outcome<StoredImage*>(image) : std::unexpected("ENOENT:no such image");
}

KittyGraphics::Outcome<GraphicsResult> KittyGraphics::finishImage(
    const GraphicsCommand& command, RgbaImage image, uint32_t& id, const GraphicsContext& context) {
    id = id != 0 ? id : m_store.unusedId();
    if (!m_store.add(id, command.number('I'), std::move(image))) {
        return std::unexpected("ENOSPC:no room for the image");
    }
    m_frameBegins.erase(id);
    Outcome<GraphicsResult> outcome = GraphicsResult{.hasChanged = true};
    if (command.letter('a', 't') == 'T') {
        outcome = put(command, *m_store.find(id), context);
    }
    if (outcome) {
        outcome->newImage = id;
    }
    return outcome;
}

KittyGraphics::Outcome<GraphicsResult> KittyGraphics::put(
    const GraphicsCommand& command, const StoredImage& image, const GraphicsContext& context) {
    ImagePlacement placement{
        .imageId = image.id,
        .placementId = command.number('p'),
        .screen = context.screen,
        .row = context.topRow + context.cursorRow,
        .column = context.cursorColumn,
        .offsetX = std::clamp(command.extent('X'), 0, std::max(context.cellWidth - 1, 0)),
        .offsetY = std::clamp(command.extent('Y'), 0, std::max(context.cellHeight - 1, 0)),
        .sourceX = std::min(command.extent('x'), image.width()),
        .sourceY = std::min(command.extent('y'), image.height()),
        .z = command.signedNumber('z'),
        .isVirtual = command.number('U') == 1};
    const auto within = [](int wanted, int room) { return wanted == 0 ? room : std::min(wanted, room); };
    placement.sourceWidth = within(command.extent('w'), image.width() - placement.sourceX);
    placement.sourceHeight = within(command.extent('h'), image.height() - placement.sourceY);
    if (placement.sourceWidth <= 0 || placement.sourceHeight <= 0) {
        return std::unexpected("EINVAL:nothing of the image is shown");
    }
    const int64_t cellWidth = std::max(context.cellWidth, 1);
    const int64_t cellHeight = std::max(context.cellHeight, 1);
    placement.columns = std::min(command.extent('c'), mostCells);
    placement.rows = std::min(command.extent('r'), mostCells);
    if (placement.columns == 0 && placement.rows == 0) {
        placement.columns = ceilDivide(placement.sourceWidth + placement.offsetX, cellWidth);
        placement.rows = ceilDivide(placement.sourceHeight + placement.offsetY, cellHeight);
        placement.cellWidth = static_cast<int>(cellWidth);
        placement.cellHeight = static_cast<int>(cellHeight);
    } else if (placement.rows == 0) {
        const int64_t width = placement.columns * cellWidth;
        placement.rows = ceilDivide(width * placement.sourceHeight, cellHeight * placement.sourceWidth);
    } else if (placement.columns == 0) {
        const int64_t height = placement.rows * cellHeight;
        placement.columns = ceilDivide(height * placement.sourceWidth, cellWidth * placement.sourceHeight);
    }
    m_store.place(placement);
    GraphicsResult result{.hasChanged = true};
    if (!placement.isVirtual && command.number('C') != 1) {
        result.cursorColumns = placement.columns;
        result.cursorRows = placement.rows - 1;
    }
    return result;
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
    if (edited == 0) {
        RgbaImage canvas{image.width(), image.height(), {}};
        if (!m_store.hasRoomBeside(image, image.frames.front().pixels->pixels.size())) {
            return std::unexpected("ENOSPC:no room for the frame");
        }
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
    const auto mode = command.number('X') == 1 ? BlendMode::replace : BlendMode::over;
    blend(ImageStore::editable(image.frames[index]), target, data, 0, 0, mode);
    if (command.signedNumber('z') != 0) {
        image.frames[index].gapMilliseconds = command.signedNumber('z');
    }
    return GraphicsResult{.hasChanged = index == image.currentFrame};
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
    }
    const size_t current = command.number('c');
    if (current != 0 && current <= image.frames.size()) {
        result.hasChanged = image.currentFrame != current - 1;
        image.currentFrame = current - 1;
        m_frameBegins.erase(image.id);
    }
    if (const uint32_t loops = command.number('v'); loops != 0) {
        image.loops = loops - 1;
    }
    switch (command.number('s')) {
    case 1:
        image.animation = StoredImage::Animation::stopped;
        break;
    case 2:
        image.animation = StoredImage::Animation::loading;
        break;
    case 3:
        image.animation = StoredImage::Animation::running;
        break;
    default:
        break;
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

GraphicsResult KittyGraphics::erase(const GraphicsCommand& command, const GraphicsContext& context) {
    const char what = command.letter('d', 'a');
    const bool isUpper = what >= 'A' && what <= 'Z';
    const auto data = isUpper ? ImageStore::Data::release : ImageStore::Data::keep;
    const auto covers = [](const ImagePlacement& placement, int64_t row, int column) {
        const bool hasRow = row < 0 || (row >= placement.row && row < placement.row + placement.rows);
        const bool hasColumn =
            column < 0 || (column >= placement.column && column < placement.column + placement.columns);
        return hasRow && hasColumn;
    };
    const int cellColumn = command.extent('x') - 1;
    const int64_t cellRow = context.topRow + command.extent('y') - 1;
    const int z = command.signedNumber('z');
    const auto onScreen = [&context](ImageStore::Condition condition) -> ImageStore::Condition {
        return [condition = std::move(condition), context](const ImagePlacement& placement) {
            return placement.screen == context.screen && !placement.isVirtual &&
                   placement.row + placement.rows > context.topRow && placement.row < context.topRow + context.rows &&
                   condition(placement);
        };
    };
    ImageStore::Condition condition;
    switch (isUpper ? static_cast<char>(what + 0x20) : what) {
    case 'a':
        condition = onScreen([](const auto&) { return true; });
        break;
    case 'c':
        condition = onScreen([=](const auto& placement) {
            return covers(placement, context.topRow + context.cursorRow, context.cursorColumn);
        });
        break;
    case 'p':
        condition = onScreen([=](const auto& some) { return covers(some, cellRow, cellColumn); });
        break;
    case 'q':
        condition = onScreen([=](const auto& some) { return some.z == z && covers(some, cellRow, cellColumn); });
        break;
    case 'x':
        condition = onScreen([=](const auto& some) { return covers(some, -1, cellColumn); });
        break;
    case 'y':
        condition = onScreen([=](const auto& some) { return covers(some, cellRow, -1); });
        break;
    case 'z':
        condition = onScreen([=](const auto& some) { return some.z == z; });
        break;
    case 'i':
    case 'n': {
        const StoredImage* image =
            what == 'i' || what == 'I' ? m_store.find(command.number('i')) : m_store.findNewest(command.number('I'));
        if (image == nullptr) {
            return {};
        }
        const uint32_t id = image->id;
        const uint32_t placementId = command.number('p');
        if (isUpper && placementId == 0) {
            m_store.remove(id);
            return {.hasChanged = true};
        }
        condition = [=](const ImagePlacement& placement) {
            return placement.imageId == id && (placementId == 0 || placement.placementId == placementId);
        };
        break;
    }
    case 'r': {
        const uint32_t first = command.number('x');
        const uint32_t last = command.number('y');
        condition = [=](const ImagePlacement& some) { return some.imageId >= first && some.imageId <= last; };
        break;
    }
    case 'f': {
        const auto image = addressed(command);
        while (image && (*image)->frames.size() > 1) {
            m_store.removeFrame(**image, (*image)->frames.size() - 1);
        }
        return {.hasChanged = image.has_value()};
    }
    default:
        return {};
    }
    const size_t before = m_store.placements().size();
    m_store.removePlacements(condition, data);
    return {.hasChanged = m_store.placements().size() != before};
}

void KittyGraphics::reset() {
    m_loading.reset();
    m_frameBegins.clear();
    m_store.clear();
}

} // namespace term
