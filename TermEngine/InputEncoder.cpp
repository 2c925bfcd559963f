#include "TermEngine/InputEncoder.h"

#include "TermEngine/Encoding_p.h"

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

/// Of a character, or of a byte that is part of none: all control characters but tab, line feed and carriage return,
/// of which each is either one of the line discipline's or one that programs act upon.
bool isUnsafe(std::string_view character) {
    const auto first = static_cast<uint8_t>(character[0]);
    const auto last = static_cast<uint8_t>(character.back());
    const bool isC0 = first < 0x20 && first != '\t' && first != '\n' && first != '\r';
    const bool isC1 =
        (character.size() == 1 || (character.size() == 2 && first == 0xC2)) && last >= 0x80 && last < 0xA0;
    return isC0 || isC1 || first == 0x7F;
}

} // namespace

std::string encodeFocus(FocusChange change, ControlBits controls) {
    return std::string(csiOf(controls)) + (change == FocusChange::gained ? "I" : "O");
}

std::string encodePaste(std::string_view text, PasteMode mode, const PasteControlBytes& controls) {
    const bool isBracketed = mode == PasteMode::bracketed;
    const std::string_view ownEnd = isBracketed ? controls.end : std::string_view();
    std::string body;
    body.reserve(text.size());
    while (!text.empty()) {
        const auto* end = std::ranges::find_if(pasteEnds, [text](auto some) { return text.starts_with(some); });
        if (isBracketed && end != pasteEnds.end()) {
            text.remove_prefix(end->size());
            continue;
        }
        std::string_view character = text;
        takeUtf8(text);
        character.remove_suffix(text.size());
        if (character == "\n" || character == "\r") {
            text.remove_prefix(character == "\r" && text.starts_with('\n') ? 1 : 0);
            body.push_back('\r');
        } else if (isUnsafe(character) || controls.lineDiscipline.find(character[0]) != std::string::npos) {
            body.push_back(' ');
        } else {
            body += character;
        }
        // Also one that came about where another was taken out.
        if (!ownEnd.empty() && body.ends_with(ownEnd)) {
            body.resize(body.size() - ownEnd.size());
        }
    }
    return isBracketed ? controls.begin + body + controls.end : body;
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
