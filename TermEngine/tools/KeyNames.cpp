#include "KeyNames.h"

#include "TermEngine/Unicode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace term {
namespace {

constexpr std::array<std::pair<std::string_view, Key>, 22> keys = {{
    {"up", Key::up},
    {"down", Key::down},
    {"left", Key::left},
    {"right", Key::right},
    {"home", Key::home},
    {"end", Key::end},
    {"insert", Key::insert},
    {"delete", Key::deleteForward},
    {"pageup", Key::pageUp},
    {"pagedown", Key::pageDown},
    {"enter", Key::enter},
    {"tab", Key::tab},
    {"escape", Key::escape},
    {"backspace", Key::backspace},
    {"kp.", Key::keypadDecimal},
    {"kp/", Key::keypadDivide},
    {"kp*", Key::keypadMultiply},
    {"kp-", Key::keypadSubtract},
    {"kp+", Key::keypadAdd},
    {"kp,", Key::keypadSeparator},
    {"kp=", Key::keypadEqual},
    {"kpenter", Key::keypadEnter},
}};

constexpr std::array<std::pair<std::string_view, int>, 3> modifiers = {
    {{"shift+", KeyModifiers::shift}, {"ctrl+", KeyModifiers::ctrl}, {"alt+", KeyModifiers::alt}}};

/// The key that stands `first` and so many keys behind `from`; a name is a prefix and a number.
std::optional<Key> keyNumbered(std::string_view name, std::string_view prefix, Key from, int first, int last) {
    int number = 0;
    if (!name.starts_with(prefix) || name.size() == prefix.size()) {
        return {};
    }
    const auto [end, error] = std::from_chars(name.data() + prefix.size(), name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size() || number < first || number > last) {
        return {};
    }
    return static_cast<Key>(static_cast<std::uint32_t>(from) + static_cast<std::uint32_t>(number - first));
}

} // namespace

std::optional<KeyEvent> keyNamed(std::string_view name) {
    KeyEvent event;
    for (bool found = true; found;) {
        found = false;
        for (const auto& [prefix, bit] : modifiers) {
            if (name.starts_with(prefix) && name.size() > prefix.size()) {
                event.modifiers.bits = static_cast<std::uint8_t>(event.modifiers.bits | bit);
                name.remove_prefix(prefix.size());
                found = true;
            }
        }
    }
    if (const auto* const known = std::ranges::find(keys, name, &std::pair<std::string_view, Key>::first);
        known != keys.end()) {
        event.key = known->second;
        return event;
    }
    for (const std::optional<Key>& key :
         {keyNumbered(name, "f", Key::f1, 1, 20), keyNumbered(name, "kp", Key::keypad0, 0, 9)}) {
        if (key) {
            event.key = *key;
            return event;
        }
    }
    event.text = name == "space" ? " " : name;
    const std::u32string scalars = unicode::fromUtf8(event.text);
    if (scalars.size() != 1) {
        return {};
    }
    event.code = scalars.front();
    // Of other characters the layout decides what they are with shift.
    if (event.modifiers.has(KeyModifiers::shift) && event.code >= U'a' && event.code <= U'z') {
        static constexpr std::string_view capitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
        event.text = capitals.substr(event.code - U'a', 1);
        event.shifted = static_cast<unsigned char>(event.text.front());
    }
    return event;
}

} // namespace term
