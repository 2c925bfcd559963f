#include "TermEngine/InputEncoder.h"

#include <algorithm>
#include <array>

namespace term {
namespace {

constexpr std::string_view pasteEnd = "\x1b[201~";
/// With CSI as one byte, and as its UTF-8.
constexpr std::array<std::string_view, 3> pasteEnds{
    pasteEnd,
    "\x9b"
    "201~",
    "\xc2\x9b"
    "201~"};

/// All control characters but tab, line feed and carriage return: each is either one of the line discipline's or one
/// that programs act upon.
bool isUnsafe(char byte) {
    const auto value = static_cast<uint8_t>(byte);
    return (value < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') || value == 0x7F;
}

} // namespace

std::string encodeFocus(FocusChange change) {
    return change == FocusChange::gained ? "\x1b[I" : "\x1b[O";
}

std::string encodePaste(std::string_view text, PasteMode mode, const PasteControlBytes& controls) {
    const bool isBracketed = mode == PasteMode::bracketed;
    std::string out;
    out.reserve(text.size() + controls.begin.size() + controls.end.size());
    out += isBracketed ? controls.begin : std::string();
    while (!text.empty()) {
        const auto* end = std::ranges::find_if(pasteEnds, [text](auto some) { return text.starts_with(some); });
        const size_t own = !controls.end.empty() && text.starts_with(controls.end) ? controls.end.size() : 0;
        if (isBracketed && (own > 0 || end != pasteEnds.end())) {
            text.remove_prefix(own > 0 ? own : end->size());
            continue;
        }
        const bool isC1 = text[0] == '\xc2' && text.size() > 1 && static_cast<uint8_t>(text[1]) >= 0x80 &&
                          static_cast<uint8_t>(text[1]) < 0xA0;
        const bool isLineEnd = text[0] == '\n' || text[0] == '\r';
        const bool isControl = isC1 || isUnsafe(text[0]) || controls.lineDiscipline.find(text[0]) != std::string::npos;
        out.push_back(isLineEnd ? '\r' : isControl ? ' ' : text[0]);
        text.remove_prefix(isC1 || text.starts_with("\r\n") ? 2 : 1);
    }
    out += isBracketed ? controls.end : std::string();
    return out;
}

std::string encodeAlternateScroll(ScrollDirection direction, int lines, const KeyModes& modes) {
    constexpr int mostKeys = 100;
    const std::string key = encodeKey({.key = direction == ScrollDirection::up ? Key::up : Key::down}, modes);
    std::string out;
    for (int count = std::clamp(lines, 0, mostKeys); count > 0; --count) {
        out += key;
    }
    return out;
}

} // namespace term
