#include "ScreenDump.h"

#include <array>
#include <string_view>
#include <utility>

namespace term {
namespace {

std::string quoted(std::string_view text) {
    std::string json = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            json += {'\\', c};
        } else if (static_cast<unsigned char>(c) < 0x20) {
            constexpr std::string_view digits = "0123456789abcdef";
            json += {'\\', 'u', '0', '0', digits[static_cast<std::size_t>(c) >> 4], digits[c & 15]};
        } else {
            json += c;
        }
    }
    return json + "\"";
}

std::string rowAsAnsi(const Terminal& terminal, const BufferLine& line) {
    std::string text;
    Attribute last;
    const int length = line.tailBlankCell() == PackedCell() ? line.usedLength() : line.size();
    for (int col = 0; col < length; ++col) {
        if (line[col].isSpacer()) {
            continue;
        }
        if (const Attribute attribute = terminal.arena().attributeOf(line[col]); attribute != last) {
            text += "\x1B[" + attribute.toSgr() + "m";
            last = attribute;
        }
        terminal.arena().appendText(text, line[col]);
    }
    return last == Attribute() ? text : text + "\x1B[m";
}

/// The modes below `end` that are set.
std::string setModes(int end, const auto& stateOf) {
    std::string modes;
    for (int mode = 1; mode < end; ++mode) {
        if (stateOf(mode).value_or(false)) {
            modes += (modes.empty() ? "" : ", ") + std::to_string(mode);
        }
    }
    return "[" + modes + "]";
}

/// The index of a palette colour, or "#rrggbb"; "inverted" is the default colour of the other ground.
std::string colorAsJson(const Color& color) {
    if (color.kind() == Color::Kind::ansi256) {
        return std::to_string(color.value());
    }
    if (color.kind() == Color::Kind::defaultInvertedColor) {
        return quoted("inverted");
    }
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%06x", color.value());
    return quoted(text.data());
}

std::string stylesAsJson(const Attribute& attribute) {
    static constexpr std::array<std::pair<StyleBit, const char*>, 8> names = {{
        {StyleBit::bold, "bold"},
        {StyleBit::dim, "dim"},
        {StyleBit::italic, "italic"},
        {StyleBit::underline, "underline"},
        {StyleBit::blink, "blink"},
        {StyleBit::inverse, "inverse"},
        {StyleBit::invisible, "invisible"},
        {StyleBit::crossedOut, "crossedOut"},
    }};
    std::string styles;
    const auto add = [&styles](const char* name) { styles += (styles.empty() ? "" : ", ") + quoted(name); };
    for (const auto& [bit, name] : names) {
        if (attribute.style.has(bit)) {
            add(name);
        }
    }
    if (attribute.overline) {
        add("overline");
    }
    return styles;
}

/// What is not the default of a cell, as members of an object.
std::string membersOf(const Terminal& terminal, PackedCell cell) {
    static constexpr std::array kinds = {"none", "single", "double", "curly", "dotted", "dashed"};
    const Attribute attribute = terminal.arena().attributeOf(cell);
    std::string members;
    const auto add = [&members](const char* name, const std::string& value) {
        members += ", " + quoted(name) + ": " + value;
    };
    if (!attribute.fg.isDefault()) {
        add("foreground", colorAsJson(attribute.fg));
    }
    if (!attribute.bg.isDefault()) {
        add("background", colorAsJson(attribute.bg));
    }
    if (const std::string styles = stylesAsJson(attribute); !styles.empty()) {
        add("styles", "[" + styles + "]");
    }
    if (attribute.underlineStyle > UnderlineStyle::single) {
        add("underline", quoted(kinds[static_cast<std::size_t>(attribute.underlineStyle)]));
    }
    if (attribute.underlineColor) {
        add("underlineColor", colorAsJson(*attribute.underlineColor));
    }
    if (cell.isProtected()) {
        add("protected", "true");
    }
    if (cell.payload() != 0) {
        add("link", quoted(terminal.linkUrl(cell.payload())));
    }
    return members;
}

std::string runsAsJson(const Terminal& terminal) {
    std::string runs;
    for (int row = 0; row < terminal.rows(); ++row) {
        const BufferLine& line = terminal.buffer().line(row);
        for (int col = 0; col < line.size();) {
            const std::string members = membersOf(terminal, line[col]);
            const int first = col;
            while (col < line.size() && membersOf(terminal, line[col]) == members) {
                ++col;
            }
            if (!members.empty()) {
                runs += (runs.empty() ? "\n    " : ",\n    ");
                runs += "{\"row\": " + std::to_string(row) + ", \"column\": " + std::to_string(first) +
                        ", \"length\": " + std::to_string(col - first) + members + "}";
            }
        }
    }
    return runs;
}

} // namespace

std::string dumpText(const Terminal& terminal) {
    std::string text;
    for (int row = 0; row < terminal.rows(); ++row) {
        text += terminal.lineText(row) + "\n";
    }
    return text;
}

std::string dumpAnsi(const Terminal& terminal) {
    std::string text;
    for (int row = 0; row < terminal.rows(); ++row) {
        text += rowAsAnsi(terminal, terminal.buffer().line(row)) + "\n";
    }
    return text;
}

std::string dumpJson(const Terminal& terminal) {
    static constexpr std::array cursors = {"blinkBlock",      "steadyBlock", "blinkUnderline",
                                           "steadyUnderline", "blinkBar",    "steadyBar"};
    const Buffer& buffer = terminal.buffer();
    std::string rows;
    std::string wrapped;
    for (int row = 0; row < buffer.rows(); ++row) {
        rows += (row == 0 ? "\n    " : ",\n    ") + quoted(terminal.lineText(row));
        if (buffer.line(row).isWrapped()) {
            wrapped += (wrapped.empty() ? "" : ", ") + std::to_string(row);
        }
    }
    const auto boolean = [](bool value) { return value ? "true" : "false"; };
    return "{\n  \"columns\": " + std::to_string(buffer.cols()) + ",\n  \"title\": " + quoted(terminal.title()) +
           ",\n  \"cursor\": {\"row\": " + std::to_string(buffer.y()) + ", \"column\": " + std::to_string(buffer.x()) +
           ", \"pendingWrap\": " + boolean(buffer.pendingWrap()) +
           ", \"visible\": " + boolean(terminal.modes().cursorVisible) +
           ", \"style\": " + quoted(cursors[static_cast<std::size_t>(terminal.cursorStyle())]) +
           "},\n  \"alternate\": " + boolean(terminal.isAlternateActive()) +
           ",\n  \"modes\": {\"ansi\": " + setModes(100, [&](int mode) { return terminal.ansiMode(mode); }) +
           ", \"dec\": " + setModes(10'000, [&](int mode) { return terminal.decPrivateMode(mode); }) +
           "},\n  \"history\": " + std::to_string(buffer.yBase()) + ",\n  \"wrapped\": [" + wrapped +
           "],\n  \"rows\": [" + rows + "\n  ],\n  \"attributes\": [" + runsAsJson(terminal) + "\n  ]\n}\n";
}

} // namespace term
