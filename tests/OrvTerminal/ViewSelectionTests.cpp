#include "tests/OrvTerminal/ViewFixture.h"

#include <QClipboard>
#include <QGuiApplication>

#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TEST_F(TerminalViews, SelectWithTheMouse) {
    feed("one two-three four\r\nsecond line that is long\r\nthird");
    const auto drag = [&](QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mousePress(&window, Qt::LeftButton, modifiers, from);
        QTest::mouseMove(&window, (from + to) / 2);
        QTest::mouseMove(&window, to);
        QTest::mouseRelease(&window, Qt::LeftButton, modifiers, to);
        return view().selectedText();
    };
    const CellGeometry cell = view().cell();
    const auto leftOf = [&](int column, int row) {
        return cellRect(column, row).topLeft() + QPoint(1, cell.height / 2);
    };
    EXPECT_EQ(drag(leftOf(4, 0), leftOf(9, 0)), u"two-t"_s);
    EXPECT_EQ(drag(leftOf(14, 0), leftOf(6, 1)), u"four\nsecond"_s);
    EXPECT_EQ(drag(leftOf(6, 1), leftOf(14, 0)), u"four\nsecond"_s) << "upwards";
    EXPECT_EQ(drag(leftOf(0, 0), leftOf(3, 2), Qt::AltModifier), u"one\nsec\nthi"_s) << "a rectangle";

    drag(leftOf(4, 0), leftOf(7, 0));
    QTest::mouseClick(&window, Qt::LeftButton, Qt::ShiftModifier, leftOf(9, 0));
    EXPECT_EQ(view().selectedText(), u"two-t"_s) << "shift extends";

    const QPoint word = middleOf(5, 0);
    QTest::mouseClick(&window, Qt::LeftButton, {}, word, 600);
    QTest::mouseClick(&window, Qt::LeftButton, {}, word);
    EXPECT_EQ(view().selectedText(), u"two-three"_s);
    QTest::mouseClick(&window, Qt::LeftButton, {}, word);
    EXPECT_EQ(view().selectedText(), u"one two-three four"_s);
    EXPECT_GT(pixelsOf(shown(), cellRect(0, 0), style.colors().selection), 0);
    feed("\r\nmore output");
    EXPECT_EQ(view().selectedText(), u"one two-three four"_s) << "output leaves it";
    QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"one two-three four"_s);
    QTest::mouseClick(&window, Qt::LeftButton, {}, middleOf(2, 4), 600);
    EXPECT_FALSE(view().hasSelection()) << "a click ends it";
}

struct Press {
    int key;
    Qt::KeyboardModifiers modifiers{};
};
constexpr Qt::KeyboardModifiers shift = Qt::ShiftModifier, ctrl = Qt::ControlModifier;
struct Selecting {
    const char* label;
    std::vector<Press> keys; ///< from behind the last character
    QString selected;
};
const std::array selections{
    Selecting{"back by characters", {{Qt::Key_Left, shift}, {Qt::Key_Left, shift}}, u"st"_s},
    Selecting{"there and back", {{Qt::Key_Left}, {Qt::Key_Left, shift}, {Qt::Key_Right, shift}}, u"t"_s},
    Selecting{"over a line's end", {{Qt::Key_Home}, {Qt::Key_Left, shift}, {Qt::Key_Left, shift}}, u"e\n\nl"_s},
    Selecting{"up", {{Qt::Key_Home}, {Qt::Key_Up}, {Qt::Key_Up}, {Qt::Key_End, shift}}, u"second 漢字 line"_s},
    Selecting{
        "a wide character",
        {{Qt::Key_Up}, {Qt::Key_Up}, {Qt::Key_End}, {Qt::Key_Left, ctrl}, {Qt::Key_Left}, {Qt::Key_Left, shift}},
        u"字 "_s},
    Selecting{"back by words", {{Qt::Key_Left, ctrl | shift}, {Qt::Key_Left, ctrl | shift}}, u"line\n\nlast"_s},
    Selecting{
        "on by words",
        {{Qt::Key_Up},
         {Qt::Key_Up},
         {Qt::Key_Up},
         {Qt::Key_Home},
         {Qt::Key_Right, ctrl},
         {Qt::Key_Right, ctrl | shift}},
        u"two-three  f"_s},
    Selecting{
        "as in vi",
        {{Qt::Key_K},
         {Qt::Key_K},
         {Qt::Key_K},
         {Qt::Key_0},
         {Qt::Key_W},
         {Qt::Key_V},
         {Qt::Key_W},
         {Qt::Key_H},
         {Qt::Key_H}},
        u"two-three "_s},
    Selecting{"a mark, and no more", {{Qt::Key_Space}, {Qt::Key_Left}, {Qt::Key_Space}}, {}},
    Selecting{"plain moves end it", {{Qt::Key_Left, shift}, {Qt::Key_Left}}, {}},
    Selecting{"lines", {{Qt::Key_V, shift}, {Qt::Key_Up}, {Qt::Key_Up}}, u"second 漢字 line\n\nlast"_s},
    Selecting{
        "a rectangle",
        {{Qt::Key_Home}, {Qt::Key_V, ctrl}, {Qt::Key_Right}, {Qt::Key_Right}, {Qt::Key_Up}, {Qt::Key_Up}, {Qt::Key_Up}},
        u"one\nsec\n\nlas"_s},
    Selecting{"its other end", {{Qt::Key_Left}, {Qt::Key_V}, {Qt::Key_Left}, {Qt::Key_O}, {Qt::Key_Left}}, u"s"_s},
    Selecting{"to a prompt", {{Qt::Key_Up, ctrl}, {Qt::Key_End, shift}}, u"history 29"_s},
    Selecting{"all", {{Qt::Key_Home, ctrl}, {Qt::Key_End, shift}}, u"history 0"_s},
    Selecting{"the end", {{Qt::Key_G}, {Qt::Key_G, shift}, {Qt::Key_B}, {Qt::Key_End, ctrl | shift}}, u"last"_s},
};

TEST_F(TerminalViews, SelectByKeys) {
    for (int line = 0; line < 30; ++line) {
        terminal().feed("\x1b]133;A\x07history " + std::to_string(line) + "\x1b]133;C\x07\r\n");
    }
    feed("one two-three  four\r\nsecond 漢字 line\r\n\r\nlast");
    for (const Selecting& row : selections) {
        QTest::keyClick(&window, Qt::Key_Space, ctrl | shift);
        ASSERT_TRUE(view().keyboardSelection()->isActive()) << row.label;
        for (const Press& press : row.keys) {
            QTest::keyClick(&window, static_cast<Qt::Key>(press.key), press.modifiers);
        }
        EXPECT_EQ(view().selectedText(), row.selected) << row.label;
        QTest::keyClick(&window, Qt::Key_Escape);
        EXPECT_FALSE(view().keyboardSelection()->isActive()) << row.label;
        EXPECT_FALSE(view().hasSelection()) << row.label;
        view().scrollTo(view().historyLines());
    }
}

TEST_F(TerminalViews, KeepKeysFromTheShellWhileTheySelect) {
    for (int line = 0; line < 30; ++line) {
        terminal().feed("history " + std::to_string(line) + "\r\n");
    }
    startShell();
    const QString before = session->outputForTesting();
    QTest::keyClick(&window, Qt::Key_Space, ctrl | shift);
    QTest::keyClick(&window, Qt::Key_Home, ctrl);
    EXPECT_EQ(view().topLine(), 0);
    EXPECT_EQ(view().keyboardSelection()->spoken(), u"history 0"_s);
    EXPECT_GT(pixelsOf(shown(), cellRect(0, 0), style.colors().cursor), areaOf(cellRect(0, 0)) / 2);
    terminal().feed(std::string(500, '\n'));
    feed("output");
    EXPECT_EQ(view().topLine(), 0) << "output leaves it where it is";
    QTest::keyClick(&window, Qt::Key_X);
    QTest::keyClick(&window, Qt::Key_End, shift);
    EXPECT_FALSE(view().inputMethodQuery(Qt::ImEnabled).toBool());
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"history 0"_s);
    EXPECT_FALSE(view().keyboardSelection()->isActive());
    QTest::keyClick(&window, Qt::Key_Space, ctrl | shift);
    QTest::mouseClick(&window, Qt::LeftButton, {}, middleOf(3, 3));
    EXPECT_FALSE(view().keyboardSelection()->isActive()) << "the mouse takes over";
    for (const char key : "echo a''b") {
        if (key != '\0') {
            QTest::keyClick(&window, key);
        }
    }
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(u"echo a''b\nab\n"_s); }))
        << session->outputForTesting().toStdString();
    EXPECT_FALSE(session->outputForTesting().contains(u"xecho"_s));
}

TEST_F(TerminalViews, SelectByKeysWhateverHappensMeanwhile) {
    constexpr std::array keys{Qt::Key_Left,     Qt::Key_Right, Qt::Key_Up,    Qt::Key_Down, Qt::Key_PageUp,
                              Qt::Key_PageDown, Qt::Key_Home,  Qt::Key_End,   Qt::Key_W,    Qt::Key_B,
                              Qt::Key_V,        Qt::Key_O,     Qt::Key_Space, Qt::Key_G};
    constexpr std::array<Qt::KeyboardModifiers, 4> modifiers{
        Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier, Qt::ControlModifier | Qt::ShiftModifier};
    constexpr std::array<std::string_view, 9> output{
        "words and 漢字 e\xCC\x81 🎉\r\n",
        "\n\n\n\n\n\n",
        "\x1b[3J",
        "\x1b[2J\x1b[H",
        "\x1b[?1049h",
        "\x1b[?1049l",
        "\x1b#6wide\r\n",
        "\x1b[5T漢",
        "\x1b"
        "c"};
    std::uint32_t seed = 7;
    const auto random = [&seed](size_t count) {
        seed = seed * 1664525 + 1013904223;
        return static_cast<size_t>(seed >> 16) % count;
    };
    view().keyboardSelection()->start();
    for (int step = 0; step < 3000; ++step) {
        SCOPED_TRACE(step);
        if (random(4) == 0) {
            terminal().feed(output[random(output.size())]);
        } else if (random(20) == 0) {
            session->resize(2 + static_cast<int>(random(40)), 1 + static_cast<int>(random(10)), {8, 16});
        }
        const QKeyEvent press(QEvent::KeyPress, keys[random(keys.size())], modifiers[random(modifiers.size())]);
        if (view().keyboardSelection()->press(press) == KeyboardSelection::Outcome::unknown) {
            continue;
        }
        const term::Buffer& buffer = terminal().buffer();
        const term::TextPlace cursor = view().keyboardSelection()->cursor();
        const auto index = cursor.line - static_cast<std::int64_t>(buffer.trimmedCount());
        ASSERT_GE(index, 0);
        ASSERT_LT(index, buffer.lineCount());
        ASSERT_GE(cursor.col, 0);
        ASSERT_LT(cursor.col, buffer.cols());
        ASSERT_LE(view().keyboardSelection()->spoken().size(), 300);
    }
}

} // namespace
} // namespace orv
