#include "TerminalFixture.h"

#include <algorithm>
#include <array>

namespace term {
namespace {

constexpr std::array<std::pair<char, char>, 7> escapes = {
    {{'e', '\x1B'}, {'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'a', '\a'}, {'b', '\b'}, {'\\', '\\'}}};

std::string rowText(const Terminal& terminal, const BufferLine& line) {
    std::string text;
    for (int col = 0; col < line.size(); ++col) {
        if (const PackedCell cell = line[col]; !cell.isSpacer()) {
            terminal.arena().appendText(text, cell);
        }
    }
    std::string flags = line.isWrapped() ? "w" : "";
    constexpr std::string_view modes = "-dtb";
    if (line.renderMode() != RenderLineMode::single) {
        flags += modes[static_cast<std::size_t>(line.renderMode())];
    }
    return "|" + text + "|" + flags + "\n";
}

std::string styleOf(const Terminal& terminal, PackedCell cell) {
    std::string style = terminal.arena().attributeOf(cell).toSgr();
    style += cell.isProtected() ? " protected" : "";
    if (cell.payload() != 0) {
        style += " <" + std::string(terminal.linkUrl(cell.payload())) + ">";
    }
    if (cell.semanticCode() != 0) {
        style += " part " + std::to_string(cell.semanticCode());
    }
    return style;
}

std::string rowStyles(const Terminal& terminal, const BufferLine& line, int row) {
    std::string text;
    for (int col = 0; col < line.size();) {
        const std::string style = styleOf(terminal, line[col]);
        const int first = col;
        while (col < line.size() && styleOf(terminal, line[col]) == style) {
            ++col;
        }
        if (style != "0") {
            text += "style " + std::to_string(row + 1) + ":" + std::to_string(first + 1) + "-" + std::to_string(col) +
                    " " + style + "\n";
        }
    }
    return text;
}

} // namespace

std::string unescaped(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 1 == text.size()) {
            bytes += text[at];
            continue;
        }
        const char letter = text[++at];
        if (letter == 'x') {
            bytes += static_cast<char>(std::stoi(std::string(text.substr(at + 1, 2)), nullptr, 16));
            at += 2;
        } else {
            bytes += std::ranges::find(escapes, letter, [](const auto& e) { return e.first; })->second;
        }
    }
    return bytes;
}

std::string escaped(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto known = std::ranges::find(escapes, c, [](const auto& e) { return e.second; });
        const auto code = static_cast<unsigned char>(c);
        if (known != escapes.end()) {
            text += {'\\', known->first};
        } else if (code < 0x20 || code >= 0x7F) {
            constexpr std::string_view digits = "0123456789ABCDEF";
            text += {'\\', 'x', digits[code >> 4], digits[code & 15]};
        } else {
            text += c;
        }
    }
    return text;
}

std::string describe(const Terminal& terminal, bool withHistory) {
    const Buffer& b = terminal.buffer();
    std::string text;
    for (int index = 0; withHistory && index < b.yBase(); ++index) {
        text += "^" + rowText(terminal, b.lineAt(index));
    }
    for (int row = 0; row < b.rows(); ++row) {
        text += rowText(terminal, b.line(row));
    }
    for (int row = 0; row < b.rows(); ++row) {
        text += rowStyles(terminal, b.line(row), row);
    }
    text += "cursor " + std::to_string(b.y() + 1) + "," + std::to_string(b.x() + 1);
    text += b.pendingWrap() ? " pending" : "";
    text += terminal.modes().cursorVisible ? "" : " hidden";
    return text + (terminal.isAlternateActive() ? " alternate\n" : "\n");
}

} // namespace term
