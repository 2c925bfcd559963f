#include "TermEngine/Encoding_p.h"
#include "TermEngine/ImageCodec.h"
#include "TermEngine/Terminal.h"
#include "TermEngine/TextFields_p.h"

#include <algorithm>
#include <charconv>

namespace term {

using detail::cutAt;
using detail::numberOf;

namespace {

std::string_view viewOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::optional<std::string> fromHex(std::string_view hex) {
    std::string text;
    for (std::size_t at = 0; at + 1 < hex.size(); at += 2) {
        int value = 0;
        const auto [end, error] = std::from_chars(hex.data() + at, hex.data() + at + 2, value, 16);
        if (error != std::errc() || end != hex.data() + at + 2) {
            return {};
        }
        text.push_back(static_cast<char>(value));
    }
    return hex.size() % 2 == 0 ? std::optional(text) : std::nullopt;
}

std::string withPercentEscapes(std::string_view path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string url;
    for (const char c : path) {
        const auto byte = static_cast<std::uint8_t>(c);
        const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= 'a' && byte <= 'z') ||
                             std::string_view("/-._~").find(c) != std::string_view::npos;
        if (isPlain) {
            url += c;
        } else {
            url += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return url;
}

} // namespace

bool Terminal::dispatchOsc(int code, Bytes payload, StringEnd end) {
    if (m_oscEvents.hasObservers()) {
        m_oscEvents.publish({code, {payload.begin(), payload.end()}, {m_buffer->x(), m_buffer->y()}});
    }
    return actOnOsc(code, viewOf(payload), end);
}

bool Terminal::actOnOsc(int code, std::string_view text, StringEnd end) {
    if (code == m_programStatusOsc) {
        setProgramStatus(text);
        return true;
    }
    switch (code) {
    case 0:
    case 1:
    case 2:
        setTitles(code, text);
        return true;
    case 6:
        if (std::string document = cleanText(text); document != m_document) {
            m_document = std::move(document);
            m_delegate.hostCurrentDocumentUpdated(*this);
        }
        return true;
    case 7:
        // An empty one takes the last one back.
        if (text.empty() || parseDirectoryReport(text)) {
            setDirectory(wholeText(text)); // in escapes it may be longer than the path that it names
        }
        return true;
    case 8:
        setLink(text);
        return true;
    case 9:
        notifyOrProgress(text);
        return true;
    case 22:
        m_pointerShape = cleanText(text);
        m_delegate.pointerShapeChanged(*this, std::string(m_pointerShape));
        return true;
    case 52:
        clipboard(text, end);
        return true;
    case 99:
        notify(m_notifications.append(text));
        return true;
    case 133:
        semanticPrompt(text);
        return true;
    case 777:
        notify(parseUrxvtNotification(text));
        return true;
    case 1337:
        iTermCommand(text, end);
        return true;
    case 5522:
        kittyClipboard(text, end);
        return true;
    default:
        return dispatchColors(code, text, end);
    }
}

void Terminal::notifyOrProgress(std::string_view payload) {
    if (payload.starts_with("4;") || payload == "4") {
        if (const std::optional<ProgressReport> report = parseProgress(payload)) {
            m_showsProgress = report->state != ProgressReport::State::remove;
            m_delegate.progressReport(*this, *report);
        }
        return;
    }
    notify(parseITermNotification(payload));
}

void Terminal::notify(const std::optional<NotificationRequest>& request) {
    if (request) {
        m_delegate.notify(*this, *request);
    }
}

/// OSC 1337, what is safe of it.
void Terminal::iTermCommand(std::string_view payload, StringEnd end) {
    const std::optional<ITermCommand> command =
        parseITermCommand(payload, m_options.kittyGraphics.imageCacheLimitBytes);
    if (!command) {
        return;
    }
    switch (command->kind) {
    case ITermCommand::Kind::currentDirectory:
        if (command->value.starts_with('/')) {
            setDirectory("file://" + withPercentEscapes(command->value));
        }
        break;
    case ITermCommand::Kind::setMark: {
        SemanticMarks marks = m_buffer->line(m_buffer->y()).semanticMarks();
        marks.promptStart = true;
        m_buffer->line(m_buffer->y()).setSemanticMark(marks);
        break;
    }
    case ITermCommand::Kind::clearScrollback:
        cmdEraseInDisplay(3, EraseKind::all);
        break;
    case ITermCommand::Kind::cursorShape:
        // Block, bar, underline; DECSCUSR has another order.
        if (const std::optional<int> shape = numberOf(command->value); shape && *shape >= 0 && *shape <= 2) {
            cmdSetCursorStyle(*shape == 0 ? 1 : *shape == 1 ? 5 : 3);
        }
        break;
    case ITermCommand::Kind::reportCellSize:
        if (const std::optional<CellSize> cell = m_delegate.cellSizeInPixels(*this)) {
            sendOsc(
                "1337;ReportCellSize=" + std::to_string(cell->height) + ";" + std::to_string(cell->width),
                StringEnd::stringTerminator);
        }
        break;
    case ITermCommand::Kind::reportCapabilities:
        if (m_options.featureReport) {
            sendOsc("1337;Capabilities=" + cleanText(*m_options.featureReport), end);
        }
        break;
    case ITermCommand::Kind::file:
    case ITermCommand::Kind::fileBegin:
    case ITermCommand::Kind::filePart:
    case ITermCommand::Kind::fileEnd:
        takeFile(*command);
        break;
    case ITermCommand::Kind::remoteHost:
    case ITermCommand::Kind::setUserVariable:
        break;
    }
}

/// Whole, or in pieces.
void Terminal::takeFile(const ITermCommand& command) {
    if (command.kind == ITermCommand::Kind::file) {
        if (command.file.isInline) {
            showFile(command.file);
        }
    } else if (command.kind == ITermCommand::Kind::fileBegin) {
        m_loadingFile.emplace(command.file, Base64Decoder(m_options.kittyGraphics.imageCacheLimitBytes));
    } else if (command.kind == ITermCommand::Kind::filePart) {
        if (m_loadingFile) {
            m_loadingFile->data.append(command.encoded);
        }
    } else if (auto loaded = std::exchange(m_loadingFile, {})) {
        auto data = loaded->data.finish();
        if (data && loaded->file.isInline) {
            loaded->file.data = std::move(*data);
            showFile(loaded->file);
        }
    }
}

/// By the engine, or by the host where it is no PNG; as much as the allowance lets through.
std::optional<RgbaImage> Terminal::decodedFile(const ITermCommand::File& file, ImageRequest request) {
    PixelAllowance& allowance = m_images.allowance();
    constexpr std::size_t cost = PixelAllowance::ofDecodedPixel;
    if (const std::size_t pixels = pngPixels(file.data);
        pixels <= m_images.limitBytes() / 4 && !allowance.take(pixels * cost)) {
        return std::nullopt;
    }
    if (std::optional<RgbaImage> image = decodePng(file.data, m_images.limitBytes())) {
        return image;
    }
    request.limitBytes = std::min(m_images.limitBytes(), allowance.left() / cost * 4);
    std::optional<RgbaImage> image = m_delegate.createImage(*this, file.data, request);
    const std::size_t pixels = image ? image->pixels.size() / 4 : 0;
    return allowance.take(pixels * cost) ? std::move(image) : std::nullopt;
}

/// An image of OSC 1337. What says nothing of its size is as large as it is, but not wider than the screen.
void Terminal::showFile(const ITermCommand::File& file) {
    using Unit = ITermCommand::File::Extent::Unit;
    const GraphicsContext context = graphicsContext();
    const auto pixelsOf = [](const ITermCommand::File::Extent& extent, int cell, int cells) -> std::int64_t {
        switch (extent.unit) {
        case Unit::cells:
            return std::int64_t{extent.number} * cell;
        case Unit::pixels:
            return extent.number;
        case Unit::percent:
            return std::int64_t{std::min(extent.number, 100)} * cell * cells / 100;
        case Unit::automatic:
            break;
        }
        return 0;
    };
    std::int64_t width =
        std::min<std::int64_t>(pixelsOf(file.width, context.cellWidth, context.columns), maximumImageSide);
    std::int64_t height =
        std::min<std::int64_t>(pixelsOf(file.height, context.cellHeight, context.rows), maximumImageSide);
    std::optional<RgbaImage> image =
        decodedFile(file, {static_cast<int>(width), static_cast<int>(height), file.preservesAspectRatio, 0});
    if (!image || !image->isValid()) {
        return;
    }
    const std::int64_t room = std::int64_t{context.columns} * context.cellWidth;
    if (width == 0 && height == 0 && image->width > room) {
        width = room;
    }
    const auto scaled = [](std::int64_t of, std::int64_t by, std::int64_t from) {
        return std::max<std::int64_t>(of * by / from, 1);
    };
    if (width == 0 && height > 0) {
        width = scaled(image->width, height, image->height);
    } else if (height == 0 && width > 0) {
        height = scaled(image->height, width, image->width);
    } else if (width > 0 && file.preservesAspectRatio) {
        const bool isTooWide = image->width * height > image->height * width;
        const std::int64_t fullWidth = width;
        width = isTooWide ? width : scaled(image->width, height, image->height);
        height = isTooWide ? scaled(image->height, fullWidth, image->width) : height;
    }
    const auto cellsFor = [](std::int64_t pixels, int cell) {
        return static_cast<int>(std::min<std::int64_t>((pixels + cell - 1) / cell, maximumImageSide));
    };
    showTextImage(
        std::move(*image), {cellsFor(width, context.cellWidth), cellsFor(height, context.cellHeight)},
        AfterTextImage::cursorBehind);
}

void Terminal::setDirectory(std::string url) {
    if (url != m_directory) {
        m_directory = std::move(url);
        m_delegate.hostCurrentDirectoryUpdated(*this);
    }
}

void Terminal::setProgramStatusOsc(int code) {
    m_programStatusOsc = code;
    m_parser.setProgramStatusOsc(code);
}

void Terminal::setProgramStatus(std::string_view payload) {
    constexpr std::size_t mostRecords = 256;
    // Of a string that was too long, the beginning of the first record that is left is missing.
    if (m_parser.oscIgnoredBytes() > 0) {
        static_cast<void>(cutAt(payload, ';'));
    }
    std::vector<std::string> records;
    while (!payload.empty() && records.size() < mostRecords) {
        records.push_back(cleanText(cutAt(payload, ';')));
    }
    if (records != m_programStatus) {
        m_programStatus = std::move(records);
        m_delegate.programStatusChanged(*this, m_programStatus);
    }
}

void Terminal::setTitles(int code, std::string_view payload) {
    // What is not kept of a long one is not copied, and of one in digits not decoded.
    constexpr std::size_t mostDigits = 32 * maximumTextBytes;
    const std::optional<std::string> decoded = m_titleModes[0] ? fromHex(payload.substr(0, mostDigits)) : std::string();
    if (!decoded) {
        return;
    }
    const std::string title = cleanText(m_titleModes[0] ? std::string_view(*decoded) : payload);
    if (code != 2) {
        m_iconTitle = title;
        m_delegate.setTerminalIconTitle(*this, m_iconTitle);
    }
    if (code != 1) {
        m_title = title;
        m_delegate.setTerminalTitle(*this, m_title);
    }
}

/// XTSMTITLE and XTRMTITLE.
void Terminal::titleModes(const CsiParameters& parameters, bool on) {
    for (int i = 0; i < parameters.count; ++i) {
        if (const auto mode = static_cast<std::size_t>(parameters.at(i)); mode < m_titleModes.size()) {
            m_titleModes[mode] = on;
        }
    }
}

/// 0: both titles, 1: that of the icon, 2: that of the window.
void Terminal::pushTitle(int what) {
    const auto push = [](std::vector<std::string>& stack, const std::string& title) {
        if (stack.size() == titleStackLimit) {
            stack.erase(stack.begin());
        }
        stack.push_back(title);
    };
    if (what == 0 || what == 1) {
        push(m_iconTitleStack, m_iconTitle);
    }
    if (what == 0 || what == 2) {
        push(m_titleStack, m_title);
    }
}

void Terminal::popTitle(int what) {
    if ((what == 0 || what == 1) && !m_iconTitleStack.empty()) {
        m_iconTitle = m_iconTitleStack.back();
        m_iconTitleStack.pop_back();
        m_delegate.setTerminalIconTitle(*this, m_iconTitle);
    }
    if ((what == 0 || what == 2) && !m_titleStack.empty()) {
        m_title = m_titleStack.back();
        m_titleStack.pop_back();
        m_delegate.setTerminalTitle(*this, m_title);
    }
}

/// OSC 8; an empty address ends the link.
void Terminal::setLink(std::string_view payload) {
    m_isPenStale = true;
    m_link = 0;
    const std::optional<HyperlinkReport> link = parseHyperlink(payload);
    if (link && !link->uri.empty()) {
        // Cells with the same identity and address are one link. An identity has no ';'.
        m_link = m_arena->internLink(link->id + ";" + link->uri);
    }
}

} // namespace term
