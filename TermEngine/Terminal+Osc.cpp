#include "TermEngine/Base64.h"
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

} // namespace

bool Terminal::dispatchOsc(int code, Bytes payload, StringEnd end) {
    const std::string_view text = viewOf(payload);
    switch (code) {
    case 0:
    case 1:
    case 2:
        setTitles(code, text);
        return true;
    case 6:
        m_document = cleanText(text);
        m_delegate.hostCurrentDocumentUpdated(*this);
        return true;
    case 7:
        m_directory = cleanText(text);
        m_delegate.hostCurrentDirectoryUpdated(*this);
        return true;
    case 8:
        setLink(text);
        return true;
    case 9:
        notifyOrProgress(text);
        return true;
    case 22:
        m_delegate.pointerShapeChanged(*this, cleanText(text));
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
        iTermCommand(text);
        return true;
    default:
        return dispatchColors(code, text, end);
    }
}

void Terminal::notifyOrProgress(std::string_view payload) {
    if (payload.starts_with("4;") || payload == "4") {
        if (const std::optional<ProgressReport> report = parseProgress(payload)) {
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

void Terminal::clipboard(std::string_view payload, StringEnd end) {
    const auto limit = static_cast<std::size_t>(std::int64_t{m_options.kittyClipboardWriteLimitBytes});
    const std::optional<ClipboardReport> report = parseClipboard(payload, limit);
    if (!report) {
        return;
    }
    if (report->kind != ClipboardReport::Kind::query) {
        m_delegate.clipboardCopy(*this, {report->selections, report->data});
    } else if (const std::optional<std::string> content = m_delegate.clipboardRead(*this, report->selections)) {
        sendOsc("52;" + report->selections + ";" + encodeBase64(*content), end);
    }
}

/// OSC 1337, what is safe of it.
void Terminal::iTermCommand(std::string_view payload) {
    const std::optional<ITermCommand> command =
        parseITermCommand(payload, m_options.kittyGraphics.imageCacheLimitBytes);
    if (!command) {
        return;
    }
    switch (command->kind) {
    case ITermCommand::Kind::currentDirectory:
        m_directory = command->value;
        m_delegate.hostCurrentDirectoryUpdated(*this);
        break;
    case ITermCommand::Kind::setMark:
        semanticPrompt("P");
        break;
    case ITermCommand::Kind::clearScrollback:
        eraseInDisplay(3, EraseKind::all);
        break;
    case ITermCommand::Kind::cursorShape:
        // Block, bar, underline; DECSCUSR has another order.
        if (const std::optional<int> shape = detail::numberOf(command->value); shape && *shape >= 0 && *shape <= 2) {
            setCursorStyle(*shape == 0 ? 1 : *shape == 1 ? 5 : 3);
        }
        break;
    case ITermCommand::Kind::reportCellSize:
        if (const std::optional<CellSize> cell = m_delegate.cellSizeInPixels(*this)) {
            sendOsc(
                "1337;ReportCellSize=" + std::to_string(cell->height) + ";" + std::to_string(cell->width),
                StringEnd::stringTerminator);
        }
        break;
    case ITermCommand::Kind::remoteHost:
    case ITermCommand::Kind::setUserVariable:
    case ITermCommand::Kind::file:
        break;
    }
}

void Terminal::setTitles(int code, std::string_view payload) {
    const std::optional<std::string> decoded = m_titleModes[0] ? fromHex(payload) : std::string(payload);
    if (!decoded) {
        return;
    }
    const std::string title = cleanText(*decoded);
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

/// OSC 133: A a new prompt, B the end of the prompt, C the end of the input, D the end of the output; L a fresh line,
/// P a prompt without one, N as A after D.
void Terminal::semanticPrompt(std::string_view payload) {
    std::string_view options = payload;
    const std::string_view kind = cutAt(options, ';');
    if (kind == "L" && m_buffer->x() > 0) {
        nextLine();
    }
    BufferLine& line = m_buffer->line(m_buffer->y());
    SemanticMarks marks = line.semanticMarks();
    if (kind == "A" || kind == "N" || kind == "P") {
        m_semantic = SemanticContent::prompt;
        marks.promptStart = true;
    } else if (kind == "B" || kind == "I") {
        m_semantic = SemanticContent::input;
        marks.inputStart = true;
    } else if (kind == "C") {
        m_semantic = SemanticContent::output;
        marks.outputStart = true;
    } else if (kind == "D") {
        m_semantic = SemanticContent::none;
        marks.commandEnd = true;
        marks.exitCode = numberOf(cutAt(options, ';'));
    } else {
        return;
    }
    m_isPenStale = true;
    line.setSemanticMark(marks);
}

} // namespace term
