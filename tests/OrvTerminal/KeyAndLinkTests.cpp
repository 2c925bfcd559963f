#include "OrvTerminal/View/KeyTranslator.h"
#include "OrvTerminal/View/Links.h"
#include "TermEngine/KeyEncoder.h"

#include <QKeyEvent>

#include <gtest/gtest.h>

#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// As X11 numbers them.
constexpr quint32 codeOf1 = 10, codeOfA = 38, codeOfQ = 24, codeOfMinus = 20, codeOfKeypad5 = 84;
constexpr quint32 capsLock = 2, numLock = 16;

struct Pressed {
    const char* label;
    int key;
    Qt::KeyboardModifiers modifiers;
    QString text;
    quint32 scanCode;
    std::string expected;
    std::string kitty; ///< with all of kitty's flags; empty: not looked at
    quint32 symbol = 0;
    quint32 native = 0; ///< the state of the modifiers
};

TEST(KeyTranslator, GivesTheEngineWhatItNeeds) {
    constexpr Qt::KeyboardModifiers shift = Qt::ShiftModifier, ctrl = Qt::ControlModifier, alt = Qt::AltModifier;
    const std::array rows{
        Pressed{"letter", Qt::Key_A, {}, u"a"_s, codeOfA, "a", "\x1b[97;;97u"},
        Pressed{"capital", Qt::Key_A, shift, u"A"_s, codeOfA, "A", "\x1b[97:65;2;65u"},
        Pressed{"ctrl", Qt::Key_A, ctrl, u"\x01"_s, codeOfA, "\x01", "\x1b[97;5u"},
        Pressed{
            "alt", Qt::Key_A, alt, u"a"_s, codeOfA,
            "\x1b"
            "a",
            "\x1b[97;3;97u"},
        Pressed{"shifted digit", Qt::Key_Exclam, shift, u"!"_s, codeOf1, "!", "\x1b[49:33;2;33u"},
        Pressed{"ctrl and minus", Qt::Key_Minus, ctrl, u"-"_s, codeOfMinus, "-", {}},
        Pressed{"ctrl and space", Qt::Key_Space, ctrl, u" "_s, 65, std::string(1, '\0'), {}},
        Pressed{"return", Qt::Key_Return, {}, u"\r"_s, 36, "\r", "\x1b[13u"},
        Pressed{"shift and tab", Qt::Key_Backtab, shift, {}, 23, "\x1b[Z", "\x1b[9;2u"},
        Pressed{"backspace", Qt::Key_Backspace, {}, u"\b"_s, 22, "\x7f", {}},
        Pressed{"ctrl and left", Qt::Key_Left, ctrl, {}, 113, "\x1b[1;5D", "\x1b[1;5D"},
        Pressed{"f5", Qt::Key_F5, {}, {}, 71, "\x1b[15~", {}},
        Pressed{"keypad digit", Qt::Key_5, Qt::KeypadModifier, u"5"_s, codeOfKeypad5, "5", "\x1b[57404;129;53u"},
        Pressed{"keypad arrow", Qt::Key_Left, Qt::KeypadModifier, {}, 83, "\x1b[D", "\x1b[57417u"},
        Pressed{"umlaut", Qt::Key_Adiaeresis, {}, u"ä"_s, 48, "ä", {}},
        Pressed{"third level", Qt::Key_At, {}, u"@"_s, codeOfQ, "@", {}},
        Pressed{"beyond the first plane", Qt::Key_unknown, {}, u"🙂"_s, 99, "🙂", {}},
        Pressed{"shift alone", Qt::Key_Shift, {}, {}, 50, "", "\x1b[57441;2u"},
        Pressed{"left shift", Qt::Key_Shift, {}, {}, 50, "", "\x1b[57441;2u", 0xFFE1},
        Pressed{"right shift", Qt::Key_Shift, {}, {}, 62, "", "\x1b[57447;2u", 0xFFE2},
        Pressed{"right ctrl", Qt::Key_Control, {}, {}, 105, "", "\x1b[57448;5u", 0xFFE4},
        Pressed{"right alt", Qt::Key_Alt, {}, {}, 108, "", "\x1b[57449;3u", 0xFFEA},
        Pressed{"alt after shift", Qt::Key_Meta, shift, {}, 64, "", "\x1b[57443;4u", 0xFFE7},
        Pressed{"right super", Qt::Key_Super_R, {}, {}, 134, "", "\x1b[57450;9u", 0xFFEC},
        Pressed{"third level's key", Qt::Key_AltGr, {}, {}, 108, "", "\x1b[57453u", 0xFE03},
        Pressed{"caps lock", Qt::Key_A, {}, u"A"_s, codeOfA, "A", "\x1b[97;65;65u", 0x41, capsLock},
        Pressed{"caps lock and shift", Qt::Key_A, shift, u"a"_s, codeOfA, "a", "\x1b[97:65;66;97u", 0x61, capsLock},
        Pressed{"caps lock and ctrl", Qt::Key_A, ctrl, u"\x01"_s, codeOfA, "\x01", "\x1b[97;69u", 0x41, capsLock},
        Pressed{"another script's", 0x0419, {}, u"й"_s, codeOfQ, "й", "\x1b[1081::113;;1081u", 0x6CA},
        Pressed{"with shift", 0x0419, shift, u"Й"_s, codeOfQ, "Й", "\x1b[1081:1049:113;2;1049u", 0x6EA},
        Pressed{"with ctrl", Qt::Key_Q, ctrl, u"\x11"_s, codeOfQ, "\x11", "\x1b[1081::113;5u", 0x6CA},
        Pressed{"with both", Qt::Key_Q, ctrl | shift, u"\x11"_s, codeOfQ, "\x11", "\x1b[1081:1049:113;6u", 0x6EA},
        Pressed{"num lock and left", Qt::Key_Left, {}, {}, 113, "\x1b[D", "\x1b[1;129D", 0xFF51, numLock},
        Pressed{
            "keypad digit by shift", Qt::Key_5, shift | Qt::KeypadModifier, u"5"_s, codeOfKeypad5, "5",
            "\x1b[57404;2;53u", 0xFFB5},
    };
    term::KeyModes modes;
    term::KeyModes kitty;
    kitty.kitty.bits = 0x1F;
    for (const Pressed& row : rows) {
        KeyTranslator keys;
        const QKeyEvent event(QEvent::KeyPress, row.key, row.modifiers, row.scanCode, row.symbol, row.native, row.text);
        term::KeyEvent made;
        QByteArray text;
        ASSERT_TRUE(keys.translate(event, made, text)) << row.label;
        EXPECT_EQ(term::encodeKey(made, modes), row.expected) << row.label;
        if (!row.kitty.empty()) {
            EXPECT_EQ(term::encodeKey(made, kitty), row.kitty) << row.label;
        }
    }
    // Digits of the keypad come only with Num Lock, which is stronger than what the program asked for.
    modes.applicationKeypad = true;
    term::KeyEvent made;
    QByteArray text;
    const QKeyEvent digit(QEvent::KeyPress, Qt::Key_5, Qt::KeypadModifier, codeOfKeypad5, 0, 0, u"5"_s);
    ASSERT_TRUE(KeyTranslator().translate(digit, made, text));
    EXPECT_EQ(term::encodeKey(made, modes), "5");
}

TEST(KeyTranslator, HoldsAModifierUntilBothItsKeysAreUp) {
    constexpr quint32 left = 0xFFE1, right = 0xFFE2;
    constexpr auto down = QEvent::KeyPress, up = QEvent::KeyRelease;
    const struct {
        const char* label;
        QEvent::Type type;
        quint32 symbol;
        Qt::KeyboardModifiers before;
        bool isHeld;
    } steps[] = {
        {"one", down, left, {}, true},
        {"the other too", down, right, Qt::ShiftModifier, true},
        {"one is up", up, left, Qt::ShiftModifier, true},
        {"both are", up, right, Qt::ShiftModifier, false},
        {"one that comes up elsewhere", down, left, {}, true},
        {"the other alone", down, right, {}, true},
        {"is up", up, right, Qt::ShiftModifier, false},
    };
    KeyTranslator keys;
    for (const auto& step : steps) {
        const QKeyEvent event(step.type, Qt::Key_Shift, step.before, 50, step.symbol, 0, {});
        term::KeyEvent made;
        QByteArray text;
        ASSERT_TRUE(keys.translate(event, made, text)) << step.label;
        EXPECT_EQ(made.modifiers.has(term::KeyModifiers::shift), step.isHeld) << step.label;
    }
}

TEST(KeyTranslator, LearnsTheLayoutFromPlainKeys) {
    KeyTranslator keys;
    term::KeyEvent made;
    QByteArray text;
    const auto press = [&](int key, Qt::KeyboardModifiers modifiers, const QString& written, quint32 symbol = 0) {
        const QKeyEvent event(QEvent::KeyPress, key, modifiers, codeOfQ, symbol, 0, written);
        EXPECT_TRUE(keys.translate(event, made, text));
    };
    press(Qt::Key_Apostrophe, {}, u"'"_s);
    EXPECT_EQ(made.base, U'q');
    press(Qt::Key_QuoteDbl, Qt::ShiftModifier, u"\""_s);
    EXPECT_EQ(made.code, U'\'') << "Dvorak's key";
    EXPECT_EQ(made.shifted, U'"');
    press(Qt::Key_Q, Qt::ControlModifier, u"\x11"_s);
    EXPECT_EQ(made.code, U'q') << "in another layout";
    press(Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier, u"\x11"_s);
    EXPECT_EQ(made.code, U'q') << "in another layout, with shift";

    // For ctrl Qt names the Latin key in the place of one of another script; its symbol tells that it is the same.
    constexpr quint32 shortI = 0x6CA, q = 0x71;
    press(0x0419, {}, u"й"_s, shortI);
    press(Qt::Key_Q, Qt::ControlModifier, u"\x11"_s, shortI);
    EXPECT_EQ(made.code, U'й');
    EXPECT_EQ(term::encodeKey(made, {}), "\x11");
    press(Qt::Key_Q, Qt::ControlModifier, u"\x11"_s, q);
    EXPECT_EQ(made.code, U'q') << "after a change to another layout";
}

TEST(Links, AreFoundWhereTheyEnd) {
    struct Row {
        const char* label;
        QString text;
        TextLink expected;
    };
    const auto url = [](const QString& text) { return TextLink{0, 0, text, {}, 0, 0}; };
    const auto file = [](const QString& path, int line = 0, int column = 0) {
        return TextLink{0, 0, {}, path, line, column};
    };
    const std::array rows{
        Row{"plain", u"see https://a.example/b?c=d#e now"_s, url(u"https://a.example/b?c=d#e"_s)},
        Row{"end of a sentence", u"http://localhost:3000/."_s, url(u"http://localhost:3000/"_s)},
        Row{"in brackets", u"(https://a.example/x)"_s, url(u"https://a.example/x"_s)},
        Row{"with brackets", u"https://a.example/x_(y), z"_s, url(u"https://a.example/x_(y)"_s)},
        Row{"quoted", u"'https://a.example'"_s, url(u"https://a.example"_s)},
        Row{"mail", u"<mailto:a@b.example>"_s, url(u"mailto:a@b.example"_s)},
        Row{"compiler", u"src/a b.cpp src/main.cpp:12:5: error: no"_s, file(u"src/main.cpp"_s, 12, 5)},
        Row{"python", u"  File \"/srv/app.py\", line 7, in f"_s, file(u"/srv/app.py"_s, 7)},
        Row{"msvc", u"./x/y.ts(4,9): error"_s, file(u"./x/y.ts"_s, 4, 9)},
        Row{"home", u"~/notes.txt"_s, file(u"~/notes.txt"_s)},
        Row{"folder", u"in /usr/share: x"_s, file(u"/usr/share"_s)},
        Row{"make", u"Makefile:3: *** missing separator."_s, file(u"Makefile"_s, 3)},
        Row{"umlaut", u"docs/Übung.md:3"_s, file(u"docs/Übung.md"_s, 3)},
    };
    for (const Row& row : rows) {
        const std::vector<TextLink> links = linksIn(row.text);
        const auto found = std::ranges::find_if(links, [&](const TextLink& link) {
            return link.url == row.expected.url && link.path == row.expected.path && link.line == row.expected.line &&
                   link.column == row.expected.column;
        });
        ASSERT_NE(found, links.end()) << row.label;
        EXPECT_EQ(linkAt(row.text, found->first), *found) << row.label;
        EXPECT_EQ(linkAt(row.text, found->end - 1), *found) << row.label;
    }
    EXPECT_FALSE(linkAt(u"just some words and 12:30", 6));
    EXPECT_FALSE(linkAt(u"https:// nothing", 3));
    // A long line must not take long.
    EXPECT_LT(linksIn(QString(20'000, u'a') + u'/' + QString(20'000, u'.')).size(), 10U);
}

} // namespace
} // namespace orv
