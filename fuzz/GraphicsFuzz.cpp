#include "FuzzInput.h"
#include "TermEngine/KittyClipboard.h"
#include "TermEngine/KittyGraphics.h"
#include "TermEngine/Notifications.h"
#include "TermEngine/OscPayloads.h"
#include "TermEngine/RgbColor.h"

namespace {

constexpr size_t limitBytes = 100'000;

void requirePrintable(const std::string& reply) {
    require(std::ranges::all_of(reply, [](char letter) { return letter >= 0x20 && letter < 0x7F; }));
}

/// What the payloads of strings can hold. Nothing of it may hold control characters.
void readPayload(std::string_view payload) {
    if (const auto link = term::parseHyperlink(payload)) {
        requirePrintable(link->uri);
        require(link->uri.size() <= term::maximumTextBytes);
    }
    if (const auto folder = term::parseDirectoryReport(payload)) {
        require(folder->path.starts_with('/') && folder->path == term::cleanText(folder->path));
    }
    for (const auto& answer : term::answerTermcapRequest(payload, "xterm-256color")) {
        requirePrintable(answer);
    }
    static_cast<void>(term::parseProgress(payload));
    static_cast<void>(term::parseClipboard(payload, limitBytes));
    static_cast<void>(term::parseITermCommand(payload, limitBytes));
    static_cast<void>(term::parseUrxvtNotification(payload));
    static_cast<void>(term::parseITermNotification(payload));
    if (const auto color = term::parseColorSpec(payload)) {
        require(term::parseColorSpec(term::formatColorSpec(*color)) == color);
    }
}

} // namespace

/// A session: a line each is a graphics command ("G"), a clipboard or a notification string ("C", "N"), a scroll ("S"),
/// or a payload of any other string.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    term::ImageStore store(limitBytes);
    term::KittyGraphics graphics({.imageCacheLimitBytes = limitBytes}, store);
    term::KittyClipboard clipboard({.kittyClipboardWriteLimitBytes = limitBytes});
    term::NotificationAssembler notifications;
    term::GraphicsContext context;
    int64_t now = 0;
    while (!input.isEmpty()) {
        const uint8_t kind = input.byte();
        const std::string_view line = input.line();
        switch (kind) {
        case 'G': {
            const auto result = graphics.handle(line, context);
            requirePrintable(result.reply);
            context.cursorRow = (context.cursorRow + result.cursorRows) % context.rows;
            context.cursorColumn = (context.cursorColumn + result.cursorColumns) % context.columns;
            break;
        }
        case 'C':
            for (const auto& reply : clipboard.handle(line).replies) {
                requirePrintable(reply);
            }
            break;
        case 'N':
            if (const auto request = notifications.append(line)) {
                requirePrintable(request->identifier);
                require(request->title == term::cleanText(request->title));
            }
            break;
        case 'S': {
            FuzzInput numbers(reinterpret_cast<const uint8_t*>(line.data()), line.size());
            const int first = numbers.byte();
            const int last = first + numbers.byte();
            const term::CellArea area{first, last + 1, numbers.byte(), numbers.byte()};
            const int by = numbers.byte() - 128;
            if (by % 3 == 0) {
                store.renumber(term::ScreenId::normal, first, by, first - 5);
            } else {
                store.scroll(term::ScreenId::normal, {0, area.bottom, 0, 1 << 30}, by, area);
            }
            context.topRow += numbers.byte();
            break;
        }
        default:
            readPayload(line);
        }
        now += kind;
        graphics.advanceAnimations(now);
        require(store.usedBytes() <= limitBytes);
        for (const auto& placement : store.placements()) {
            const auto image = store.images().find(placement.imageId);
            require(image != store.images().end());
            require(placement.columns > 0 && placement.rows > 0 && placement.sourceX >= 0 && placement.sourceY >= 0);
            require(placement.sourceWidth > 0 && placement.sourceHeight > 0);
            require(placement.sourceX + placement.sourceWidth <= image->second.width());
            require(placement.sourceY + placement.sourceHeight <= image->second.height());
        }
    }
    return 0;
}
