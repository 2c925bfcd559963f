#include "TermEngine/InputEncoder.h"
#include "TermEngine/KeyEncoder.h"
#include "TermEngine/MouseEncoder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <vector>

namespace term {
namespace {

constexpr uint8_t S = KeyModifiers::shift;
constexpr uint8_t A = KeyModifiers::alt;
constexpr uint8_t C = KeyModifiers::ctrl;

/// A key of a US keyboard.
KeyEvent us(char key, uint8_t modifiers = 0) {
    static constexpr std::string_view plain = "1234567890-=[]\\;',./`";
    static constexpr std::string_view shifted = "!@#$%^&*()_+{}|:\"<>?~";
    static std::array<char, 128> texts = [] {
        std::array<char, 128> all{};
        for (size_t at = 0; at < all.size(); ++at) {
            all[at] = static_cast<char>(at);
        }
        return all;
    }();
    KeyEvent event{.code = static_cast<char32_t>(key), .modifiers = {modifiers}};
    const size_t at = plain.find(key);
    event.shifted = static_cast<char32_t>(
        at != std::string_view::npos ? shifted[at]
        : key >= 'a' && key <= 'z'   ? key - 0x20
                                     : key);
    const char32_t written = (modifiers & S) != 0 ? event.shifted : event.code;
    event.text = std::string_view(&texts[static_cast<size_t>(written)], 1);
    return event;
}

KeyEvent key(Key which, uint8_t modifiers = 0, KeyEventType type = KeyEventType::press) {
    return {.key = which, .modifiers = {modifiers}, .type = type};
}

KeyEvent with(KeyEvent event, KeyEventType type) {
    event.type = type;
    return event;
}

KeyModes kitty(int flags) {
    return {.kitty = {static_cast<uint8_t>(flags)}};
}

Key offset(Key from, uint32_t by) {
    return static_cast<Key>(static_cast<uint32_t>(from) + by);
}

/// The string capabilities of a terminfo entry.
std::map<std::string, std::string> terminfo(const char* name) {
    const std::string command = std::string("infocmp -1 -x ") + name;
    const auto close = [](FILE* file) { ::pclose(file); };
    const std::unique_ptr<FILE, decltype(close)> pipe(::popen(command.c_str(), "r"), close);
    std::map<std::string, std::string> capabilities;
    std::array<char, 512> line{};
    while (pipe && std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
        const std::string_view text(line.data());
        const size_t equals = text.find('=');
        const size_t comma = text.rfind(',');
        if (equals == std::string_view::npos || comma == std::string_view::npos || comma < equals) {
            continue;
        }
        std::string value;
        for (std::string_view rest = text.substr(equals + 1, comma - equals - 1); !rest.empty();) {
            const bool isEscape = rest.starts_with("\\E");
            const bool isControl = rest[0] == '^' && rest.size() > 1;
            value.push_back(isEscape ? '\x1b' : isControl ? static_cast<char>(rest[1] ^ 0x40) : rest[0]);
            rest.remove_prefix(isEscape || isControl ? 2 : 1);
        }
        capabilities[std::string(text.substr(1, equals - 1))] = value;
    }
    return capabilities;
}

} // namespace

TEST(KeyEncoder, SendsWhatTheTerminfoEntryPromises) {
    const auto entry = terminfo("xterm-256color");
    ASSERT_FALSE(entry.empty()) << "infocmp is missing";
    const KeyModes keypad{.applicationCursorKeys = true, .applicationKeypad = true}; // smkx
    int compared = 0;
    const auto expect = [&](const std::string& name, const KeyEvent& event) {
        const auto found = entry.find(name);
        if (found != entry.end()) {
            EXPECT_EQ(encodeKey(event, keypad), found->second) << name;
            ++compared;
        }
    };
    const std::vector<std::pair<const char*, Key>> plain{
        {"kcuu1", Key::up},
        {"kcud1", Key::down},
        {"kcuf1", Key::right},
        {"kcub1", Key::left},
        {"khome", Key::home},
        {"kend", Key::end},
        {"kich1", Key::insert},
        {"kdch1", Key::deleteForward},
        {"kpp", Key::pageUp},
        {"knp", Key::pageDown},
        {"kbs", Key::backspace},
        {"kbeg", Key::keypadBegin},
        {"kent", Key::keypadEnter},
        {"kpADD", Key::keypadAdd},
        {"kpSUB", Key::keypadSubtract},
        {"kpMUL", Key::keypadMultiply},
        {"kpDIV", Key::keypadDivide},
        {"kpDOT", Key::keypadDecimal},
        {"kpCMA", Key::keypadSeparator},
        {"kpZRO", Key::keypad0},
        {"ka1", offset(Key::keypad0, 7)},
        {"ka3", Key::keypad9},
        {"kb2", offset(Key::keypad0, 5)},
        {"kc1", offset(Key::keypad0, 1)},
        {"kc3", offset(Key::keypad0, 3)}};
    for (const auto& [name, which] : plain) {
        expect(name, key(which));
    }
    expect("kcbt", key(Key::tab, S));
    // kf1 to kf63 are twelve keys with these modifiers; kUP to kUP7 are a key with modifier parameter 2 to 7.
    constexpr std::array<uint8_t, 6> sets{0, S, C, C | S, A, A | S};
    for (uint32_t number = 0; number < 63; ++number) {
        expect("kf" + std::to_string(number + 1), key(offset(Key::f1, number % 12), sets[number / 12]));
    }
    const std::vector<std::pair<std::string, Key>> modified{
        {"kUP", Key::up},      {"kDN", Key::down},     {"kRIT", Key::right}, {"kLFT", Key::left},
        {"kHOM", Key::home},   {"kEND", Key::end},     {"kIC", Key::insert}, {"kDC", Key::deleteForward},
        {"kPRV", Key::pageUp}, {"kNXT", Key::pageDown}};
    for (const auto& [name, which] : modified) {
        for (uint8_t parameter = 2; parameter <= 7; ++parameter) {
            expect(
                parameter == 2 ? name : name + std::to_string(parameter),
                key(which, static_cast<uint8_t>(parameter - 1)));
        }
    }
    EXPECT_GT(compared, 130);
}

TEST(KeyEncoder, EncodesKeysTheOldWay) {
    struct Row {
        const char* label;
        KeyEvent event;
        KeyModes modes;
        std::string expected;
    };
    const KeyModes other1{.modifyOtherKeys = 1};
    const KeyModes other2{.modifyOtherKeys = 2};
    const KeyModes other3{.modifyOtherKeys = 3};
    const std::vector<Row> rows{
        {"text", us('a'), {}, "a"},
        {"release", with(us('a'), KeyEventType::release), {}, ""},
        {"repeat", with(us('a'), KeyEventType::repeat), {}, "a"},
        {"shift", us('4', S), {}, "$"},
        {"composed", {.code = 'a', .text = "å"}, {}, "å"},
        {"input method", {.text = "日本"}, {}, "日本"},
        {"alt",
         us('a', A),
         {},
         "\x1b"
         "a"},
        {"alt and shift", us('3', A | S), {}, "\x1b#"},
        {"alt without escape", us('a', A), {.altSendsEscape = false}, "a"},
        // What xterm sends.
        {"eighth bit", us('a', A), {.altSendsEscape = false, .eightBitMeta = true}, "\xc3\xa1"},
        {"eighth bit of a control", us('c', A | C), {.altSendsEscape = false, .eightBitMeta = true}, "\xc2\x83"},
        {"eighth bit of a tab", key(Key::tab, A), {.altSendsEscape = false, .eightBitMeta = true}, "\xc2\x89"},
        {"eighth bit of DEL", key(Key::backspace, A), {.altSendsEscape = false, .eightBitMeta = true}, "\xc3\xbf"},
        {"escape before the eighth bit",
         us('a', A),
         {.eightBitMeta = true},
         "\x1b"
         "a"},
        {"alt and tab without escape", key(Key::tab, A), {.altSendsEscape = false}, "\t"},
        {"ctrl", us('c', C), {}, "\x03"},
        {"ctrl and alt", us('c', C | A), {}, "\x1b\x03"},
        {"ctrl and shift and letter", us('i', C | S), {}, "\t"},
        {"ctrl and space", us(' ', C), {}, std::string(1, '\0')},
        {"ctrl and slash", us('/', C), {}, "\x1f"},
        {"ctrl and question mark", us('/', C | S), {}, "\x7f"},
        {"ctrl and 2", us('2', C), {}, std::string(1, '\0')},
        {"ctrl and caret", us('6', C | S), {}, "\x1e"},
        {"ctrl and at", us('2', C | S), {}, std::string(1, '\0')},
        {"ctrl and grave", us('`', C), {}, std::string(1, '\0')},
        {"ctrl and brace", us('[', C | S), {}, "\x1b"},
        {"ctrl, shift and 4, which is not ctrl and 4", us('4', C | S), {}, "$"},
        {"ctrl, alt, shift and 3", us('3', C | A | S), {}, "\x1b#"},
        {"ctrl and 1", us('1', C), {}, "1"},
        {"ctrl on a Cyrillic key", {.code = U'с', .base = 'c', .modifiers = {C}, .text = "с"}, {}, "\x03"},
        {"ctrl and alt on a Cyrillic key", {.code = U'с', .base = 'c', .modifiers = {C | A}}, {}, "\x1b\x03"},
        {"ctrl on a Cyrillic key that is no letter elsewhere", {.code = U'ж', .base = ';', .modifiers = {C}}, {}, "ж"},
        {"ctrl on a letter of the layout that stands elsewhere",
         {.code = 'a', .base = 'q', .modifiers = {C}},
         {},
         "\x01"},
        {"alt on a Cyrillic key", {.code = U'с', .base = 'c', .modifiers = {A}, .text = "с"}, {}, "\x1bс"},
        {"enter", key(Key::enter), {}, "\r"},
        {"enter with line feed", key(Key::enter), {.enterSendsLineFeed = true}, "\r\n"},
        {"alt and enter", key(Key::enter, A), {}, "\x1b\r"},
        {"escape", key(Key::escape), {}, "\x1b"},
        {"alt and escape", key(Key::escape, A), {}, "\x1b\x1b"},
        {"backspace", key(Key::backspace), {}, "\x7f"},
        {"ctrl and backspace", key(Key::backspace, C), {}, "\b"},
        {"backspace that sends BS", key(Key::backspace), {.backarrowSendsBackspace = true}, "\b"},
        {"alt, shift and tab", key(Key::tab, A | S), {}, "\x1b\x1b[Z"},
        {"up", key(Key::up), {}, "\x1b[A"},
        {"up with Num Lock", key(Key::up, KeyModifiers::numLock), {}, "\x1b[A"},
        {"up, application", key(Key::up), {.applicationCursorKeys = true}, "\x1bOA"},
        {"ctrl and up, application", key(Key::up, C), {.applicationCursorKeys = true}, "\x1b[1;5A"},
        {"up, eight bits",
         key(Key::up),
         {.eightBitControls = true},
         "\x9b"
         "A"},
        {"F1, eight bits",
         key(Key::f1),
         {.eightBitControls = true},
         "\x8f"
         "P"},
        {"F13", key(Key::f13), {}, "\x1b[25~"},
        {"F20 and shift", key(Key::f20, S), {}, "\x1b[34;2~"},
        {"menu", key(Key::menu), {}, "\x1b[29~"},
        {"F21 has nothing", key(offset(Key::f20, 1)), {}, ""},
        {"shift alone", key(Key::leftShift, S), {}, ""},
        {"delete that sends DEL", key(Key::deleteForward), {.deleteSendsDel = true}, "\x7f"},
        {"keypad 7", key(offset(Key::keypad0, 7)), {}, "7"},
        {"ctrl and keypad 4, which is no control", key(offset(Key::keypad0, 4), C | KeyModifiers::numLock), {}, "4"},
        {"keypad 7, application", key(offset(Key::keypad0, 7)), {.applicationKeypad = true}, "\x1bOw"},
        {"keypad 7, application, Num Lock",
         key(offset(Key::keypad0, 7), KeyModifiers::numLock),
         {.applicationKeypad = true},
         "7"},
        // What xterm sends.
        {"VT52: up, which knows neither modes nor modifiers",
         key(Key::up, S | C),
         {.applicationCursorKeys = true, .vt52 = true, .kitty = {1}},
         "\x1b"
         "A"},
        {"VT52: home", key(Key::home), {.vt52 = true}, "\x1bH"},
        {"VT52: PF1", key(Key::f1, S), {.vt52 = true}, "\x1bP"},
        {"VT52: a key that it does not have", key(Key::f5, C), {.vt52 = true}, "\x1b[15~"},
        {"VT52: keypad plus", key(Key::keypadAdd), {.applicationKeypad = true, .vt52 = true}, "\x1b?k"},
        {"VT52: keypad 7", key(offset(Key::keypad0, 7)), {.vt52 = true}, "7"},
        {"keypad home", key(Key::keypadHome), {.applicationCursorKeys = true}, "\x1bOH"},
        {"keypad enter", key(Key::keypadEnter), {}, "\r"},
        {"other keys 1: ctrl and letter", us('i', C), other1, "\t"},
        {"other keys 1: ctrl and semicolon", us(';', C), other1, "\x1b[27;5;59~"},
        {"other keys 1: ctrl, shift and 1", us('1', C | S), other1, "\x1b[27;6;33~"},
        {"other keys 1: alt and letter", us('a', A), other1,
         "\x1b"
         "a"},
        {"other keys 1: ctrl on a Cyrillic key", {.code = U'с', .base = 'c', .modifiers = {C}}, other1, "\x03"},
        {"other keys 1: alt and tab", key(Key::tab, A), other1, "\x1b[27;3;9~"},
        {"other keys 1: shift and tab", key(Key::tab, S), other1, "\x1b[Z"},
        {"other keys 1: shift and enter", key(Key::enter, S), other1, "\x1b[27;2;13~"},
        {"other keys 1: ctrl, shift and tab", key(Key::tab, C | S), other1, "\x1b[Z"},
        {"other keys 1: ctrl, shift and 4", us('4', C | S), other1, "\x1b[27;6;36~"},
        {"other keys 1: ctrl and question mark", us('/', C | S), other1, "\x1b[27;6;63~"},
        {"other keys 1: ctrl and grave", us('`', C), other1, std::string(1, '\0')},
        {"other keys 2: shift and tab", key(Key::tab, S), other2, "\x1b[Z"},
        {"other keys 2: ctrl, shift and tab", key(Key::tab, C | S), other2, "\x1b[27;6;9~"},
        {"other keys 2: shift and space", us(' ', S), other2, "\x1b[27;2;32~"},
        {"other keys 2: shift and 1", us('1', S), other2, "!"},
        {"other keys 2: shift and minus", us('-', S), other2, "\x1b[27;2;95~"},
        {"other keys 2: ctrl and backspace", key(Key::backspace, C), other2, "\b"},
        {"other keys 2: ctrl, alt and backspace", key(Key::backspace, C | A), other2, "\x1b[27;7;8~"},
        {"other keys 2: shift and backspace", key(Key::backspace, S), other2, "\x1b[27;2;127~"},
        {"other keys 2: ctrl and letter", us('i', C), other2, "\x1b[27;5;105~"},
        {"other keys 2: ctrl, shift and letter", us('i', C | S), other2, "\x1b[27;6;73~"},
        {"other keys 2: shift and letter", us('i', S), other2, "\x1b[27;2;73~"},
        {"other keys 2: shift and letter, and the kitty protocol",
         us('i', S),
         {.modifyOtherKeys = 2, .kitty = {1}},
         "I"},
        {"other keys 2: plain enter", key(Key::enter), other2, "\r"},
        {"other keys 3: plain enter", key(Key::enter), other3, "\x1b[27;1;13~"},
        {"other keys 3: a letter", us('a'), other3, "\x1b[27;1;97~"},
        {"other keys 3: shift and letter", us('a', S), other3, "\x1b[27;2;65~"},
        {"other keys 3: an input method", {.text = "日本"}, other3, "日本"},
        {"other keys 3: the keypad", key(static_cast<Key>(57400)), other3, "1"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(encodeKey(row.event, row.modes), row.expected) << row.label;
    }
}

TEST(KeyEncoder, EncodesKeysOfTheKittyProtocol) {
    struct Row {
        const char* label;
        KeyEvent event;
        int flags;
        std::string expected;
    };
    constexpr auto release = KeyEventType::release;
    constexpr auto repeat = KeyEventType::repeat;
    constexpr uint8_t locks = KeyModifiers::capsLock | KeyModifiers::numLock;
    const KeyEvent cyrillic{.code = U'с', .shifted = U'С', .base = 'c', .modifiers = {C | S}, .text = "С"};
    const std::vector<Row> rows{
        {"text stays text", us('a', S), 1, "A"},
        {"text with Caps Lock", us('a', KeyModifiers::capsLock), 1, "a"},
        {"escape", key(Key::escape), 1, "\x1b[27u"},
        {"ctrl and c", us('c', C), 1, "\x1b[99;5u"},
        {"ctrl, shift and a, never 65", us('a', C | S), 1, "\x1b[97;6u"},
        {"alt and bracket", us('[', A), 1, "\x1b[91;3u"},
        {"super", us('a', KeyModifiers::super), 1, "\x1b[97;9u"},
        {"enter keeps its byte", key(Key::enter), 1, "\r"},
        {"shift and enter", key(Key::enter, S), 1, "\x1b[13;2u"},
        {"shift and tab", key(Key::tab, S), 1, "\x1b[9;2u"},
        {"shift and space", us(' ', S), 1, " "},
        {"up ignores the cursor mode", key(Key::up), 1, "\x1b[A"},
        {"up with Num Lock", key(Key::up, KeyModifiers::numLock), 1, "\x1b[1;129A"},
        {"F1", key(Key::f1), 1, "\x1b[P"},
        {"F3 is no position report", key(Key::f3), 1, "\x1b[13~"},
        {"F5 and ctrl", key(Key::f5, C), 1, "\x1b[15;5~"},
        {"F13", key(Key::f13), 1, "\x1b[57376u"},
        {"F35", key(Key::f35), 1, "\x1b[57398u"},
        {"keypad 0", key(Key::keypad0), 1, "\x1b[57399u"},
        {"keypad enter", key(Key::keypadEnter), 1, "\x1b[57414u"},
        {"keypad begin", key(Key::keypadBegin), 1, "\x1b[E"},
        {"menu", key(Key::menu), 1, "\x1b[57363u"},
        {"mute", key(Key::muteVolume), 1, "\x1b[57440u"},
        {"the last of the table", key(Key::isoLevel5Shift), 8, "\x1b[57454u"},
        {"a modifier alone", key(Key::leftShift, S), 1, ""},
        {"a modifier alone, all keys", key(Key::leftShift, S), 8, "\x1b[57441;2u"},
        {"releases are not asked for", key(Key::up, 0, release), 1, ""},
        {"release", key(Key::up, 0, release), 2, "\x1b[1;1:3A"},
        {"repeat", key(Key::pageUp, C, repeat), 2, "\x1b[5;5:2~"},
        {"repeat of text", with(us('a'), repeat), 3, "a"},
        {"release of text", with(us('a'), release), 3, ""},
        {"release of enter", key(Key::enter, 0, release), 3, ""},
        {"release of ctrl and a", with(us('a', C), release), 3, "\x1b[97;5:3u"},
        {"events alone leave ctrl as it was", us('a', C), 2, "\x01"},
        {"keypad without its own codes", key(Key::keypadUp), 2, "\x1b[A"},
        {"all keys", us('a'), 8, "\x1b[97u"},
        {"all keys with locks", us('a', locks), 8, "\x1b[97;193u"},
        {"all keys: enter", key(Key::enter), 8, "\x1b[13u"},
        {"all keys: release of backspace", key(Key::backspace, 0, release), 10, "\x1b[127;1:3u"},
        {"alternates", us('a', C | S), 5, "\x1b[97:65;6u"},
        {"alternates without shift", us('a', C), 5, "\x1b[97;5u"},
        {"alternates of another layout", cyrillic, 5, "\x1b[1089:1057:99;6u"},
        {"alternate of another layout alone", {.code = U'с', .base = 'c', .modifiers = {C}}, 5, "\x1b[1089::99;5u"},
        {"text", us('a', S), 24, "\x1b[97;2;65u"},
        {"text without modifiers", {.code = 'a', .text = "å"}, 24, "\x1b[97;;229u"},
        {"text of several", {.text = "ab"}, 24, "\x1b[0;;97:98u"},
        {"text of a release", with(us('a'), release), 26, "\x1b[97;1:3u"},
        {"text holds no controls", {.code = 'a', .text = "\x01\xc2\x85"}, 24, "\x1b[97u"},
        {"input method", {.text = "日"}, 8, "日"},
    };
    for (const Row& row : rows) {
        KeyModes modes = kitty(row.flags);
        modes.applicationCursorKeys = true;
        EXPECT_EQ(encodeKey(row.event, modes), row.expected) << row.label << " " << row.flags;
    }
}

TEST(KittyKeyboardStack, KeepsTheLastSixteen) {
    KittyKeyboardStack stack;
    for (int flags = 1; flags <= 20; ++flags) {
        stack.push(flags);
    }
    EXPECT_EQ(stack.current().bits, 20);
    stack.pop(16);
    EXPECT_EQ(stack.current().bits, 4);
    stack.set(2 + 8, 3);
    stack.set(255, 7);
    stack.set(1, 2);
    EXPECT_EQ(stack.current().bits, 5);
    stack.pop(2'000'000'000);
    EXPECT_EQ(stack.current().bits, 0);
    stack.set(-1, 1);
    EXPECT_EQ(stack.current().bits, 31);
}

TEST(MouseEncoder, ReportsWhatWasAskedForInEveryEncoding) {
    using enum MouseTracking;
    using enum MouseEncoding;
    using Type = MouseEventType;
    using Button = MouseButton;
    struct Row {
        const char* label;
        MouseEvent event;
        MouseTracking tracking;
        MouseEncoding encoding;
        std::string expected;
    };
    const auto at = [](Type type, Button button, int column, int row, uint8_t modifiers = 0) {
        return MouseEvent{type, button, column, row, column * 10 + 3, row * 20 + 7, {modifiers}};
    };
    const MouseEvent press = at(Type::press, Button::left, 1, 2);
    const MouseEvent lift = at(Type::release, Button::right, 1, 2);
    const MouseEvent drag = at(Type::motion, Button::left, 1, 2);
    const MouseEvent hover = at(Type::motion, Button::none, 1, 2);
    const std::vector<Row> rows{
        {"no tracking", press, none, sgr, ""},
        {"x10", at(Type::press, Button::left, 1, 2, S | C), x10, standard, "\x1b[M \"#"},
        {"x10 release", lift, x10, standard, ""},
        {"x10 wheel", at(Type::press, Button::wheelUp, 1, 2), x10, standard, ""},
        {"press", press, normal, standard, "\x1b[M \"#"},
        {"press with modifiers", at(Type::press, Button::middle, 0, 0, S | A | C), normal, sgr, "\x1b[<29;1;1M"},
        {"release", lift, normal, standard, "\x1b[M#\"#"},
        {"release, sgr", lift, normal, sgr, "\x1b[<2;2;3m"},
        {"release, urxvt", lift, normal, urxvt, "\x1b[35;2;3M"},
        {"wheel", at(Type::press, Button::wheelDown, 1, 2), normal, sgr, "\x1b[<65;2;3M"},
        {"wheel release", at(Type::release, Button::wheelDown, 1, 2), normal, sgr, ""},
        {"button 11", at(Type::press, Button::button11, 1, 2), normal, sgr, "\x1b[<131;2;3M"},
        {"drag", drag, normal, sgr, ""},
        {"drag, button events", drag, buttonEvent, standard, "\x1b[M@\"#"},
        {"hover, button events", hover, buttonEvent, sgr, ""},
        {"hover, any events", hover, anyEvent, sgr, "\x1b[<35;2;3M"},
        {"pixels", press, normal, sgrPixels, "\x1b[<0;14;48M"},
        {"the last standard column", at(Type::press, Button::left, 222, 0), normal, standard, "\x1b[M \xff!"},
        {"beyond the standard", at(Type::press, Button::left, 223, 0), normal, standard, ""},
        {"utf-8", at(Type::press, Button::left, 223, 0), normal, utf8, "\x1b[M \xc4\x80!"},
        {"the last of utf-8", at(Type::press, Button::left, 2014, 0), normal, utf8, "\x1b[M \xdf\xbf!"},
        {"beyond utf-8", at(Type::press, Button::left, 2015, 0), normal, utf8, ""},
        {"outside", at(Type::press, Button::left, -5, 1 << 25), normal, sgr, "\x1b[<0;1;1000001M"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(encodeMouse(row.event, row.tracking, row.encoding), row.expected) << row.label;
    }
}

TEST(InputEncoder, CleansPastesAndReportsFocus) {
    struct Row {
        const char* label;
        std::string text;
        std::string plain;
    };
    const std::vector<Row> rows{
        {"text", "grün 日本\tx", "grün 日本\tx"},
        {"line ends", "a\nb\r\nc\rd\n", "a\rb\rc\rd\r"},
        {"controls", std::string("a\0\b\x03\x04\x05\x11\x13\x16\x1a\x1b[A\x7f", 14), "a          [A "},
        {"C1 in UTF-8",
         "a\xc2\x9b"
         "b\xc2\xa0",
         "a b\xc2\xa0"},
        {"C1 as it is",
         "a\x9b"
         "b\x80\xa0\xe2\x82\x9b",
         "a b \xa0\xe2\x82\x9b"},
        {"cut character", "a\xc2", "a\xc2"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(encodePaste(row.text, PasteMode::plain), row.plain) << row.label;
        EXPECT_EQ(encodePaste(row.text, PasteMode::bracketed), "\x1b[200~" + row.plain + "\x1b[201~") << row.label;
    }
    EXPECT_EQ(
        encodePaste(
            "a\x1b[201~b\x9b"
            "201~c\xc2\x9b"
            "201~d\x1b[20\x1b[201~1~e",
            PasteMode::bracketed),
        "\x1b[200~abcd [201~e\x1b[201~")
        << "without ESC before it, it ends nothing";
    EXPECT_EQ(
        encodePaste(
            "\x9b"
            "20\x9b"
            "201~1~",
            PasteMode::bracketed),
        "\x1b[200~ 201~\x1b[201~")
        << "none comes about where another was taken out";
    EXPECT_EQ(encodePaste("ENENDDx", PasteMode::bracketed, {.begin = "<", .end = "END"}), "<xEND");
    EXPECT_EQ(encodeFocus(FocusChange::gained) + encodeFocus(FocusChange::lost), "\x1b[I\x1b[O");
    EXPECT_EQ(encodeAlternateScroll(ScrollDirection::up, 2, {.applicationCursorKeys = true}), "\x1bOA\x1bOA");
    EXPECT_EQ(encodeAlternateScroll(ScrollDirection::down, 1 << 30, {}).size(), 300U);
    EXPECT_EQ(encodeAlternateScroll(ScrollDirection::down, -1, {}), "");
}

} // namespace term
