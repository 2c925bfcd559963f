#include "TermEngine/KittyGraphics.h"

#include "TermEngine/Encoding_p.h"
#include "TermEngine/ImageCodec.h"
#include "TermEngine/LocalMedia_p.h"

#include <algorithm>
#include <utility>

namespace term {
namespace {

constexpr int mostCells = 10'000;
constexpr int mostParents = 8;

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
        m_loading->data.reserve(isDirect && isRaw && !command.has('o') ? rawBytes(command) : 0);
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
        auto read = readMedium(command, std::move(*data), context);
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
    const GraphicsCommand& command, std::vector<uint8_t> payload, const GraphicsContext& context) const {
    const char medium = command.letter('t', 'd');
    if (medium == 'd') {
        return payload;
    }
    if (medium != 'f' && medium != 't' && medium != 's') {
        return std::unexpected("EINVAL:unknown medium");
    }
    if (!m_configuration.allowsLocalMedia || !context.mayNameFiles) {
        return std::unexpected("EPERM:only direct data are taken");
    }
    return readLocalMedium(
        static_cast<LocalMedium>(medium), std::string(payload.begin(), payload.end()), command.number('O'),
        command.number('S'), m_store.limitBytes() * 2);
}

/// What comes out is what it costs. Pixels that are announced have to come, but who knows how long a PNG is.
KittyGraphics::Outcome<std::vector<uint8_t>> KittyGraphics::inflate(
    const GraphicsCommand& command, std::span<const uint8_t> data) {
    constexpr size_t cost = PixelAllowance::ofInflatedPixel;
    const size_t limit = std::min(isPng(command) ? m_store.limitBytes() : rawBytes(command), mostInflated(data.size()));
    const size_t affordable = m_store.allowance().left() / cost * 4;
    if (!isPng(command) && limit > affordable) {
        return std::unexpected(tooManyPixels);
    }
    auto inflated = command.letter('o', 0) == 'z' ? inflateZlib(data, std::min(limit, affordable)) : std::nullopt;
    const size_t bytes = inflated ? inflated->size() : std::min(limit, affordable);
    if (!take(bytes / 4, cost) || (!inflated && affordable < limit)) {
        return std::unexpected(tooManyPixels);
    }
    return inflated ? Outcome<std::vector<uint8_t>>(std::move(*inflated))
                    : std::unexpected("EINVAL:bad compressed data");
}

KittyGraphics::Outcome<RgbaImage> KittyGraphics::decode(const GraphicsCommand& command, std::vector<uint8_t> data) {
    if (command.has('o')) {
        auto inflated = inflate(command, data);
        if (!inflated) {
            return std::unexpected(inflated.error());
        }
        data = std::move(*inflated);
    }
    // What is too large for the store is refused by its header.
    const size_t pixels = isPng(command) ? pngPixels(data) : data.size() / static_cast<size_t>(bytesPerPixel(command));
    if (pixels <= m_store.limitBytes() / 4 && !take(pixels, isPng(command) ? PixelAllowance::ofDecodedPixel : 1)) {
        return std::unexpected(tooManyPixels);
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
    const bool movesCursor = !placement.isVirtual && !command.has('P') && command.number('C') != 1;
    if (movesCursor && !take(static_cast<size_t>(placement.rows), PixelAllowance::ofLine)) {
        return std::unexpected(tooManyPixels);
    }
    if (command.has('P')) {
        if (const auto outcome = makeRelative(placement, command, context); !outcome) {
            return std::unexpected(outcome.error());
        }
    }
    m_store.place(placement);
    GraphicsResult result{.hasChanged = true};
    if (movesCursor) {
        result.cursorColumns = placement.columns;
        result.cursorRows = placement.rows - 1;
    }
    return result;
}

/// P and Q name the parent, H and V are the cells from it.
KittyGraphics::Outcome<void> KittyGraphics::makeRelative(
    ImagePlacement& placement, const GraphicsCommand& command, const GraphicsContext& context) const {
    if (placement.isVirtual) {
        return std::unexpected("EINVAL:a virtual placement has no parent");
    }
    const ImagePlacement* const parent =
        m_store.findPlacement(context.screen, command.number('P'), command.number('Q'));
    if (parent == nullptr) {
        return std::unexpected("ENOPARENT:no such placement");
    }
    int depth = 1;
    for (const ImagePlacement* above = parent; above != nullptr; above = m_store.parentOf(*above), ++depth) {
        const bool isItself = placement.placementId != 0 && above->imageId == placement.imageId &&
                              above->placementId == placement.placementId;
        if (isItself) {
            return std::unexpected("ECYCLE:it would be its own parent");
        }
        if (depth > mostParents) {
            return std::unexpected("ETOODEEP:too many parents");
        }
    }
    placement.parentSerial = parent->serial;
    placement.parentColumns = std::clamp(command.signedNumber('H'), -mostCells, mostCells);
    placement.parentRows = std::clamp(command.signedNumber('V'), -mostCells, mostCells);
    return {};
}

void KittyGraphics::reset() {
    m_loading.reset();
    m_frameBegins.clear();
    m_store.clear();
}

} // namespace term
