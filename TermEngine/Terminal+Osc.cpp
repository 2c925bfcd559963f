#include "TermEngine/Terminal.h"

#include <algorithm>
#include <charconv>

namespace term {
namespace {

std::string_view viewOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The front of a text up to a character, which goes, or the whole of it.
std::string_view cutAt(std::string_view& text, char separator) {
    const std::size_t at = text.find(separator);
    const std::string_view front = text.substr(0, at);
    text = at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
    return front;
}

std::optional<int> numberOf(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return {};
    }
    return value;
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

/// Whole UTF-8 without controls, and no longer than is kept.
std::string Terminal::textOf(Bytes payload) const {
    std::string text;
    for (const char32_t scalar : unicode::fromUtf8(viewOf(payload.first(std::min(payload.size(), maximumTextBytes))))) {
        if (scalar >= 0x20 && (scalar < 0x7F || scalar >= 0xA0)) {
            unicode::appendUtf8(text, scalar);
        }
    }
    return text;
}

bool Terminal::dispatchOsc(int code, Bytes payload, StringEnd /*end*/) {
    switch (code) {
    case 0:
    case 1:
    case 2:
        setTitles(code, viewOf(payload));
        return true;
    case 6:
        m_document = textOf(payload);
        m_delegate.hostCurrentDocumentUpdated(*this);
        return true;
    case 7:
        m_directory = textOf(payload);
        m_delegate.hostCurrentDirectoryUpdated(*this);
        return true;
    case 8:
        setLink(viewOf(payload));
        return true;
    case 22:
        m_delegate.pointerShapeChanged(*this, textOf(payload));
        return true;
    case 133:
        semanticPrompt(viewOf(payload));
        return true;
    default:
        return false;
    }
}

bool Terminal::dispatchApc(Bytes /*payload*/) {
    return false;
}

void Terminal::setTitles(int code, std::string_view payload) {
    std::string title;
    if (m_titleModes[0]) {
        const std::optional<std::string> decoded = fromHex(payload);
        if (!decoded) {
            return;
        }
        title = textOf(Bytes(reinterpret_cast<const std::uint8_t*>(decoded->data()), decoded->size()));
    } else {
        title = textOf(Bytes(reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size()));
    }
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

/// OSC 8: "key=value:key=value;URL"; an empty URL ends the link.
void Terminal::setLink(std::string_view payload) {
    std::string_view url = payload;
    std::string_view parameters = cutAt(url, ';');
    std::string_view id;
    while (!parameters.empty()) {
        std::string_view value = cutAt(parameters, ':');
        if (cutAt(value, '=') == "id") {
            id = value;
        }
    }
    m_isPenStale = true;
    m_link = 0;
    if (!url.empty() && payload.size() <= maximumTextBytes) {
        // Cells with the same identity and URL are one link.
        m_link = m_arena->internLink(std::string(id) + ";" + std::string(url));
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
