#include "tests/OrvTerminal/ViewFixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QStyleHints>

#include <algorithm>
#include <array>
#include <functional>
#include <optional>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// How many pixels of a part are of a colour.
int pixelsOf(const QImage& image, const QRect& part, QRgb color) {
    int found = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            found += image.pixel(x, y) == color ? 1 : 0;
        }
    }
    return found;
}

int areaOf(const QRect& rect) {
    return rect.width() * rect.height();
}

constexpr QRgb black = 0xFF101010, white = 0xFFF0F0F0, red = 0xFFC80000;

TEST_F(TerminalViews, PaintCellsInTheirColours) {
    feed("ab\x1b[41mcd\x1b[m\x1b[7m \x1b[m \x1b[48;2;1;2;3m\x1b[K\x1b[m\r\n"
         "\x1b[4mu\x1b[m\x1b[9ms\x1b[m\x1b[53mo\x1b[m\x1b[8mh\x1b[m\x1b[31m\xE2\x96\x88\x1b[2m\xE2\x96\x88\x1b[m\r\n"
         "\xE2\x94\x80\xE2\x94\x80\xE2\x94\xBC\r\n  \xE2\x94\x82\r\n");
    const QImage image = shown();
    const CellGeometry& cell = view().cell();
    const auto count = [&](int column, int row, QRgb color) { return pixelsOf(image, cellRect(column, row), color); };
    const int all = areaOf(cellRect(0, 0));

    EXPECT_GT(count(0, 0, black), all / 2);
    EXPECT_LT(count(0, 0, black), all) << "a letter stands in it";
    EXPECT_GT(count(2, 0, red), all / 2) << "its own background";
    EXPECT_EQ(count(4, 0, white), all) << "an inverse blank";
    EXPECT_EQ(count(5, 0, black), all);
    EXPECT_EQ(count(30, 0, qRgb(1, 2, 3)), all) << "erased with a colour, to the end of the line";

    const auto rowIs = [&](int column, int y, QRgb color) {
        return pixelsOf(image, QRect(column * cell.width, cell.height + y, cell.width, 1), color) == cell.width;
    };
    EXPECT_TRUE(rowIs(0, cell.underline, white));
    EXPECT_TRUE(rowIs(1, cell.strike, white));
    EXPECT_TRUE(rowIs(2, 0, white));
    EXPECT_EQ(count(3, 1, black), all) << "hidden";
    EXPECT_EQ(count(4, 1, red), all);
    EXPECT_EQ(count(5, 1, red), 0) << "dim";

    // A line goes through three cells and turns down into the next line without a gap.
    const int middle = 2 * cell.height + (cell.height - cell.thickness) / 2;
    EXPECT_EQ(pixelsOf(image, QRect(0, middle, 3 * cell.width, 1), white), 3 * cell.width);
    const int column = 2 * cell.width + (cell.width - cell.thickness) / 2;
    EXPECT_EQ(pixelsOf(image, QRect(column, 2 * cell.height, 1, 2 * cell.height), white), 2 * cell.height);
}

TEST_F(TerminalViews, KeepTextReadableOnItsBackground) {
    // Letters that hardly differ, letters that shall not be seen, and an edge between two areas.
    feed("\x1b[48;2;0;0;200;38;2;30;30;190mM\x1b[38;2;0;0;200mM\x1b[38;2;30;30;190m\xEE\x82\xB0\x1b[38;2;255;200;"
         "0mM\x1b[m\r\n");
    const QImage image = shown();
    const auto count = [&](int column, QRgb color) { return pixelsOf(image, cellRect(column, 0), color); };
    EXPECT_GT(count(0, qRgb(255, 255, 255)), 0);
    EXPECT_EQ(count(1, qRgb(0, 0, 200)), areaOf(cellRect(1, 0)));
    EXPECT_GT(count(2, qRgb(30, 30, 190)), 0);
    EXPECT_EQ(count(2, qRgb(255, 255, 255)), 0);
    EXPECT_GT(count(3, qRgb(255, 200, 0)), 0);
}

TEST_F(TerminalViews, ShowTheCursorAsTheProgramWants) {
    QGuiApplication::styleHints()->setCursorFlashTime(0);
    startShell();
    const QRgb color = style.colors().cursor;
    struct Row {
        const char* label;
        std::string_view bytes;
        int least;
        int most; ///< of the cell's pixels
    };
    const int all = areaOf(cellRect(0, 0));
    const std::array rows{
        Row{"block", "\x1b[2 q", all, all},
        Row{"block on a letter", "\x1b[2 qx\b", all / 2, all - 1},
        Row{"underline", "\x1b[4 q", cellRect(0, 0).width(), all / 4},
        Row{"bar", "\x1b[6 q", cellRect(0, 0).height(), all / 2},
        Row{"hidden", "\x1b[?25l", 0, 0},
        Row{"another colour", "\x1b[2 q\x1b]12;#010203\x07", 0, 0},
    };
    for (const Row& row : rows) {
        feed("\x1b"
             "c");
        feed(row.bytes);
        const int found = pixelsOf(shown(), cellRect(0, 0), color);
        EXPECT_GE(found, row.least) << row.label;
        EXPECT_LE(found, row.most) << row.label;
    }

    // Where it blinks it comes back at its place, wherever the view stands.
    QGuiApplication::styleHints()->setCursorFlashTime(200);
    host.setPosition({40, 30});
    feed("\x1b"
         "c\x1b[1 q");
    int before = all;
    int returns = 0;
    const QRect place = cellRect(0, 0).translated(40, 30);
    EXPECT_TRUE(test::waitFor([&] {
        const QImage image = window.grabWindow();
        const int found = pixelsOf(image, image.rect(), color);
        returns += before == 0 && pixelsOf(image, place, color) == all ? 1 : 0;
        before = found;
        EXPECT_TRUE(found == 0 || found == all) << found;
        return view().isIdle();
    }));
    EXPECT_GE(returns, 1);
    QGuiApplication::styleHints()->setCursorFlashTime(1000);
}

TEST_F(TerminalViews, PaintOnlyLinesThatHaveChanged) {
    for (int line = 0; line < 100; ++line) {
        terminal().feed("line " + std::to_string(line) + "\r\n");
    }
    feed("last");
    auto painted = [&, before = view().paintedLines(), textures = view().madeTextures()]() mutable {
        shown();
        const std::pair cost(view().paintedLines() - before, view().madeTextures() - textures);
        before = view().paintedLines();
        textures = view().madeTextures();
        return cost;
    };
    painted();
    feed("x");
    const auto typed = painted();
    EXPECT_EQ(typed.first, 1U);
    EXPECT_LE(typed.second, 2U) << "the line, and the cursor's character";
    feed("\r\nnew");
    const auto scrolled = painted();
    EXPECT_EQ(scrolled.first, 1U) << "the others only move";
    EXPECT_LE(scrolled.second, 2U);
    view().scrollTo(view().topLine() - 3);
    EXPECT_EQ(painted().first, 3U) << "those that come into view";
    view().scrollTo(view().historyLines());
    EXPECT_EQ(painted().first, 3U);
    QSignalSpy selections(&view(), &TerminalView::selectionChanged);
    terminal().startSelection({view().historyLines() + 1, 0}, term::TextSelection::Unit::line);
    ASSERT_TRUE(selections.wait());
    EXPECT_EQ(painted().first, 1U) << "the one that was selected";
    style.setFontSize(15);
    const std::uint64_t all = painted().first;
    EXPECT_EQ(all, static_cast<std::uint64_t>(terminal().rows()));
    EXPECT_EQ(painted().first, 0U);
}

TEST_F(TerminalViews, CostNothingWhileNothingHappens) {
    QGuiApplication::styleHints()->setCursorFlashTime(40);
    startShell();
    feed("\x1b[1 q");
    EXPECT_FALSE(view().isIdle()) << "the cursor blinks";
    const std::uint64_t painted = view().paintedLines();
    const std::uint64_t frames = view().frames();
    EXPECT_TRUE(test::waitFor([this] { return view().isIdle(); })) << "nobody types";
    EXPECT_GE(view().frames(), frames + 4) << "it did blink";
    EXPECT_EQ(view().paintedLines(), painted) << "without painting text";
    feed("\x1b[2 q");
    EXPECT_TRUE(view().isIdle()) << "a steady cursor";
    feed("\x1b[1 q");
    host.setFocus(false);
    EXPECT_TRUE(view().isIdle()) << "without the focus";
    window.hide();
    const std::uint64_t hidden = view().frames();
    terminal().feed("more");
    Q_EMIT session->outputReceived();
    EXPECT_TRUE(view().isIdle());
    EXPECT_EQ(view().frames(), hidden);
    QGuiApplication::styleHints()->setCursorFlashTime(1000);
}

TEST_F(TerminalViews, BlinkTextWhileItCanBeSeen) {
    QGuiApplication::styleHints()->setCursorFlashTime(40);
    feed("\x1b[?25l\x1b[5;41mslow\x1b[25;49m still \x1b[6;4mfast\x1b[m\r\nplain");
    EXPECT_FALSE(view().isIdle());
    const std::uint64_t painted = view().paintedLines();
    const auto isWhite = [&](int column, int columns) {
        return pixelsOf(window.grabWindow(), cellRect(column, 0, columns), white) > 0;
    };
    for (const bool isOn : {false, true, false}) {
        EXPECT_TRUE(test::waitFor([&] { return isWhite(0, 4) == isOn && isWhite(11, 4) == isOn; })) << isOn;
        EXPECT_TRUE(isWhite(5, 5)) << "what does not blink stays";
    }
    EXPECT_TRUE(test::waitFor([&] {
        return pixelsOf(window.grabWindow(), cellRect(0, 0, 4), red) == areaOf(cellRect(0, 0, 4));
    })) << "so do backgrounds";
    EXPECT_EQ(view().paintedLines(), painted);

    struct Row {
        const char* label;
        std::function<void()> stop;
        std::function<void()> go;
    };
    const std::array rows{
        Row{"motion is reduced", [&] { style.setBlinksText(false); }, [&] { style.setBlinksText(true); }},
        Row{"the window is minimized", [&] { window.showMinimized(); }, [&] { window.showNormal(); }},
        Row{"the view is hidden", [&] { host.setVisible(false); }, [&] { host.setVisible(true); }},
        Row{"nothing blinks", [&] { feed("\x1b[H\x1b[2K"); }, [&] { feed("\x1b[5mM\x1b[m"); }},
        Row{"it has scrolled away", [&] { feed("\x1b[100;1H\n\n"); }, [&] { view().scrollTo(0); }},
    };
    for (const Row& row : rows) {
        row.stop();
        EXPECT_TRUE(test::waitFor([this] { return view().isIdle(); })) << row.label;
        row.go();
        EXPECT_TRUE(test::waitFor([this] { return !view().isIdle(); })) << row.label;
    }
    style.setBlinksText(false);
    EXPECT_TRUE(test::waitFor([&] { return isWhite(0, 4); })) << "where it does not blink it is there";
    QGuiApplication::styleHints()->setCursorFlashTime(1000);
}

TEST_F(TerminalViews, ShowWholeFramesOfSynchronizedOutput) {
    feed("before");
    terminal().feed("\r\x1b[2Kwhole");
    Q_EMIT session->outputReceived();
    feed("\x1b[?2026h\r\x1b[2Khalf");
    const QImage whole = shown();
    feed("\x1b[?2026l\r\x1b[2Kwhole");
    EXPECT_EQ(shown().copy(0, 0, 200, 20), whole.copy(0, 0, 200, 20)) << "what stood there when it began";
}

TEST_F(TerminalViews, ShowImagesWhereTheyStand) {
    // A red picture of one pixel, over two by one cells.
    feed("\x1b[H\x1b_Ga=T,f=24,s=1,v=1,c=2,r=1;yAAA\x1b\\");
    EXPECT_EQ(pixelsOf(shown(), cellRect(0, 0, 2), red), areaOf(cellRect(0, 0, 2)));
    feed("\x1b[2J\x1b[H\x1b_Ga=T,f=24,s=1,v=1,c=2,r=1,z=-1,C=1;yAAA\x1b\\\x1b[44m \x1b[m");
    const QImage below = shown();
    EXPECT_EQ(pixelsOf(below, cellRect(0, 0), red), 0) << "a background of its own";
    EXPECT_GT(pixelsOf(below, cellRect(1, 0), red), 0) << "shines through";
}

TEST_F(TerminalViews, FitTheirCellsToTheWindow) {
    EXPECT_EQ(terminal().cols(), 400 / view().cell().width);
    EXPECT_EQ(terminal().rows(), 200 / view().cell().height);
    window.resize(333, 111);
    host.setSize({333, 111});
    shown();
    EXPECT_EQ(terminal().cols(), 333 / view().cell().width);
    const int usual = view().cell().height;
    style.zoom(4);
    shown();
    EXPECT_EQ(terminal().rows(), 111 / view().cell().height);
    EXPECT_GT(view().cell().height, usual);
    // Where the equals sign stands above the zero, that key is still the zero.
    QKeyEvent zero(QEvent::KeyPress, Qt::Key_Equal, Qt::ControlModifier | Qt::ShiftModifier, 19, 0, 0, u"="_s);
    QGuiApplication::sendEvent(&view(), &zero);
    shown();
    EXPECT_EQ(view().cell().height, usual);
    host.setPadding({10, 20});
    shown();
    EXPECT_EQ(terminal().cols(), 313 / view().cell().width);
    EXPECT_EQ(terminal().rows(), 91 / view().cell().height);
}

TEST_F(TerminalViews, FollowTheTheme) {
    TerminalColors light = style.colors();
    light.base.background = {250, 250, 250};
    light.scheme = term::ColorScheme::light;
    style.setColors(light);
    EXPECT_EQ(shown().pixel(300, 150), qRgb(250, 250, 250));
    EXPECT_EQ(view().background(), QColor(250, 250, 250));
    feed("\x1b]11;#010203\x07");
    EXPECT_EQ(shown().pixel(300, 150), qRgb(1, 2, 3)) << "what a program set";
    feed("\x1b]111\x07\x1b[?5h");
    EXPECT_EQ(shown().pixel(300, 150), white) << "reverse video";
}

TEST_F(TerminalViews, MoveBetweenContainers) {
    TerminalView* before = host.view();
    feed("text");
    TerminalHost other;
    other.setParentItem(window.contentItem());
    other.setPosition({0, 100});
    other.setSize({400, 100});
    other.setPadding({0, 0});
    other.setStyle(&style);
    other.setSession(session.get());
    EXPECT_EQ(other.view(), before) << "the one long-lived view";
    EXPECT_EQ(before->parentItem(), &other);
    EXPECT_EQ(host.view(), nullptr);
    shown();
    EXPECT_EQ(terminal().rows(), 100 / before->cell().height);
    EXPECT_EQ(terminal().lineText(0), "text");
    EXPECT_TRUE(test::waitFor([&] { return before->hasActiveFocus(); }));
    host.attach();
    EXPECT_EQ(before->parentItem(), &host);
    session.reset();
    EXPECT_EQ(host.view(), nullptr);
    EXPECT_EQ(host.session(), nullptr);
}

TEST_F(TerminalViews, SendKeysToTheShell) {
    startShell();
    for (const char key : "echo a''b") {
        if (key != '\0') {
            QTest::keyClick(&window, key);
        }
    }
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(u"\nab\n"_s); }));

    // What an input method writes, with its unfinished text shown on the way.
    const QImage before = shown();
    QInputMethodEvent unfinished(u"にほ"_s, {});
    QGuiApplication::sendEvent(&window, &unfinished);
    EXPECT_NE(shown(), before);
    EXPECT_FALSE(session->outputForTesting().contains(u"にほ"_s));
    QInputMethodEvent finished;
    finished.setCommitString(u"日本"_s);
    QGuiApplication::sendEvent(&window, &finished);
    EXPECT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(u"日本"_s); }));

    QTest::keyClick(&window, Qt::Key_U, Qt::ControlModifier);
    QTest::keyClick(&window, Qt::Key_D, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([this] { return !session->isAlive(); }));
    const QSignalSpy renewals(&view(), &TerminalView::renewRequested);
    QTest::keyClick(&window, Qt::Key_A);
    EXPECT_EQ(renewals.count(), 0);
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_EQ(renewals.count(), 1) << "a new shell is for the owner of the tabs";
}

TEST_F(TerminalViews, KeepKeysFromTheWindowButForItsOwn) {
    startShell();
    struct Row {
        const char* label;
        int key;
        Qt::KeyboardModifiers modifiers;
        bool isKept;
    };
    const std::array rows{
        Row{"letter", Qt::Key_A, {}, true},
        Row{"ctrl", Qt::Key_W, Qt::ControlModifier, true},
        Row{"alt", Qt::Key_1, Qt::AltModifier, true},
        Row{"copy", Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier, true},
        Row{"new tab", Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier, false},
        Row{"next tab", Qt::Key_Tab, Qt::ControlModifier, false},
        Row{"leave", Qt::Key_F6, Qt::ShiftModifier, false},
    };
    for (const Row& row : rows) {
        QKeyEvent event(QEvent::ShortcutOverride, row.key, row.modifiers);
        event.ignore();
        QGuiApplication::sendEvent(&view(), &event);
        EXPECT_EQ(event.isAccepted(), row.isKept) << row.label;
    }
}

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

TEST_F(TerminalViews, TellProgramsOfTheMouse) {
    startShell();
    session->send(u"stty -echo; printf '\\033[?1002h\\033[?1006h\\033[2J'; cat -v\n"_s);
    ASSERT_TRUE(test::waitFor([this] {
        return session->hasForegroundProgram() && terminal().modes().mouseTracking == term::MouseTracking::buttonEvent;
    }));
    const QPoint at = middleOf(4, 2);
    QTest::mousePress(&window, Qt::LeftButton, {}, at);
    QTest::mouseMove(&window, middleOf(5, 2));
    QTest::mouseRelease(&window, Qt::LeftButton, {}, middleOf(5, 2));
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] {
        return session->outputForTesting().contains(u"^[[<0;5;3M^[[<32;6;3M^[[<0;6;3m"_s);
    })) << session->outputForTesting().toStdString();
    // Each of two buttons that are held at once is let go of.
    QTest::mousePress(&window, Qt::LeftButton, {}, at);
    QTest::mousePress(&window, Qt::RightButton, {}, at);
    QTest::mouseRelease(&window, Qt::LeftButton, {}, at);
    QTest::mouseRelease(&window, Qt::RightButton, {}, at);
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] {
        return session->outputForTesting().contains(u"^[[<0;5;3M^[[<2;5;3M^[[<0;5;3m^[[<2;5;3m"_s);
    })) << session->outputForTesting().toStdString();
    QTest::mousePress(&window, Qt::LeftButton, Qt::ShiftModifier, middleOf(0, 0));
    QTest::mouseMove(&window, middleOf(6, 0));
    QTest::mouseRelease(&window, Qt::LeftButton, Qt::ShiftModifier, middleOf(6, 0));
    EXPECT_TRUE(view().hasSelection()) << "with shift the mouse is the person's";
    QTest::mousePress(&window, Qt::LeftButton, Qt::ShiftModifier, middleOf(2, 0));
    QTest::mouseMove(&window, middleOf(4, 0));
    QTest::mouseRelease(&window, Qt::LeftButton, Qt::ShiftModifier, middleOf(4, 0));
    ASSERT_TRUE(view().hasSelection());
    EXPECT_EQ(terminal().selection().range()->start.col, 2) << "a second time it selects anew";
    EXPECT_EQ(terminal().selection().range()->end.col, 4);
}

TEST_F(TerminalViews, AskBeforeLinesRunAsTheyCome) {
    startShell();
    struct Row {
        const char* label;
        std::string_view mode;
        QString text;
        int lines;
    };
    const std::array rows{
        Row{"one line", "\x1b[?2004l", u"echo one"_s, 0},
        Row{"two lines", "\x1b[?2004l", u"echo one\necho two"_s, 2},
        Row{"a line with its end", "\x1b[?2004l", u"echo one\r\n"_s, 1},
        Row{"bracketed", "\x1b[?2004h", u"echo one\necho two"_s, 0},
    };
    for (const Row& row : rows) {
        terminal().feed(row.mode);
        view().paste(row.text);
        EXPECT_EQ(view().pasteLines(), row.lines) << row.label;
        view().answerPaste(false);
        EXPECT_EQ(view().pasteLines(), 0) << row.label;
        QTest::keyClick(&window, Qt::Key_U, Qt::ControlModifier);
    }
    terminal().feed("\x1b[?2004l");
    view().paste(u"echo fir''st\necho sec''ond\n"_s);
    view().answerPaste(true);
    EXPECT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(u"second"_s); }));
    EXPECT_TRUE(session->outputForTesting().contains(u"first"_s));
    // A program that asks to be told of pastes could not read the clipboard.
    terminal().feed("\x1b[?5522h");
    view().paste(u"echo thi''rd"_s);
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(u"third"_s); }));
    session->terminate();
    view().paste(u"echo one\necho two"_s);
    EXPECT_EQ(view().pasteLines(), 0) << "nothing would come of the answer";
}

TEST_F(TerminalViews, FindInScreenAndHistory) {
    for (int line = 0; line < 60; ++line) {
        terminal().feed((line % 20 == 0 ? "A needle here\r\n" : "straw\r\n"));
    }
    feed("end");
    TerminalFind& find = *view().find();
    find.setText(u"needle"_s);
    EXPECT_EQ(find.count(), 0) << "not before it is opened";
    find.setActive(true);
    EXPECT_EQ(find.count(), 3);
    EXPECT_EQ(find.current(), 3) << "the newest first";
    EXPECT_EQ(find.marks().size(), 3);
    const int bottom = view().topLine();
    find.previous();
    EXPECT_EQ(find.current(), 2);
    EXPECT_LT(view().topLine(), bottom) << "it is to be seen";
    const int row = 20 - view().topLine();
    EXPECT_GT(pixelsOf(shown(), cellRect(2, row, 6), style.colors().currentMatch), areaOf(cellRect(0, 0)));
    find.next();
    find.next();
    EXPECT_EQ(find.current(), 1) << "round the end";
    feed("\r\na needle more");
    EXPECT_TRUE(test::waitFor([&] { return find.count() == 4; })) << "output is searched too";
    EXPECT_EQ(find.current(), 1);

    struct Row {
        const char* label;
        QString text;
        bool matchesCase;
        bool isExpression;
        int count;
        bool isValid;
    };
    const std::array rows{
        Row{"another case", u"NEEDLE"_s, false, false, 4, true}, Row{"its case", u"NEEDLE"_s, true, false, 0, true},
        Row{"expression", u"^A ne+dle"_s, true, true, 3, true},  Row{"none", u"ne(dle"_s, false, true, 0, false},
        Row{"as it stands", u"ne(dle"_s, false, false, 0, true},
    };
    for (const Row& it : rows) {
        find.setMatchesCase(it.matchesCase);
        find.setExpression(it.isExpression);
        find.setText(it.text);
        EXPECT_EQ(find.count(), it.count) << it.label;
        EXPECT_EQ(find.isValid(), it.isValid) << it.label;
    }
    find.setActive(false);
    EXPECT_TRUE(find.marksOn(20).empty());
}

TEST_F(TerminalViews, OpenLinksWithTheModifier) {
    home.add(u"src/main.cpp"_s, "x");
    feed("go https://a.example/x now\r\nsrc/main.cpp:12:3 "
         "src/none.cpp:1\r\n\x1b]8;;https://b.example\x1b\\here\x1b]8;;\x1b\\");
    QSignalSpy links(&view(), &TerminalView::linkActivated);
    QSignalSpy files(&view(), &TerminalView::fileActivated);
    struct Row {
        const char* label;
        QPoint cell;
        Qt::KeyboardModifiers modifiers;
        QString hovered;
    };
    const std::array rows{
        Row{"address", {6, 0}, Qt::ControlModifier, u"https://a.example/x"_s},
        Row{"without the modifier", {6, 0}, {}, {}},
        Row{"word", {0, 0}, Qt::ControlModifier, {}},
        Row{"file", {3, 1}, Qt::ControlModifier, home.path(u"src/main.cpp"_s)},
        Row{"file that is not there", {24, 1}, Qt::ControlModifier, {}},
        Row{"named", {1, 2}, Qt::ControlModifier, u"https://b.example"_s},
    };
    for (const Row& row : rows) {
        QHoverEvent hover(QEvent::HoverMove, middleOf(row.cell.x(), row.cell.y()), QPointF(), QPointF(), row.modifiers);
        QGuiApplication::sendEvent(&view(), &hover);
        EXPECT_EQ(view().hoveredLink(), row.hovered) << row.label;
        QTest::mouseClick(&window, Qt::LeftButton, row.modifiers, middleOf(row.cell.x(), row.cell.y()));
    }
    ASSERT_EQ(links.count(), 2);
    EXPECT_EQ(links.at(0).at(0).toUrl(), QUrl(u"https://a.example/x"_s));
    EXPECT_EQ(links.at(1).at(0).toUrl(), QUrl(u"https://b.example"_s));
    ASSERT_EQ(files.count(), 1);
    EXPECT_EQ(files.at(0), (QVariantList{home.path(u"src/main.cpp"_s), 12, 3}));
}

TEST_F(TerminalViews, ScrollThroughTheHistoryAndBack) {
    for (int command = 0; command < 5; ++command) {
        terminal().feed("\x1b]133;A\x07$ \x1b]133;B\x07run\r\n\x1b]133;C\x07");
        for (int line = 0; line < 12; ++line) {
            terminal().feed("output " + std::to_string(line) + "\r\n");
        }
        terminal().feed("\x1b]133;D;1\x07");
    }
    feed("\x1b]133;A\x07$ \x1b]133;B\x07");
    const int bottom = view().historyLines();
    ASSERT_GT(bottom, 40);
    const auto wheel = [&](int angle) {
        QWheelEvent event(
            middleOf(1, 1), QPointF(), QPoint(), QPoint(0, angle), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
            false);
        QGuiApplication::sendEvent(&view(), &event);
    };
    wheel(120);
    EXPECT_EQ(view().topLine(), bottom - 3);
    wheel(-40);
    wheel(-40);
    EXPECT_EQ(view().topLine(), bottom - 1) << "parts of a notch add up";
    feed("more\r\n");
    EXPECT_EQ(view().topLine(), bottom - 1) << "output leaves the view where it is";
    QTest::keyClick(&window, Qt::Key_PageUp, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(terminal().buffer().lineAt(view().topLine()).translateToString(terminal().arena(), true), "$ run");
    view().selectOutput();
    EXPECT_EQ(view().selectedText().count(u"output"_s), 12);
    QTest::keyClick(&window, Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(view().topLine(), 0);
    QTest::keyClick(&window, Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(view().topLine(), view().historyLines());
}

TEST_F(TerminalViews, SayWhatNobodySaw) {
    session->setShown(false);
    feed("\x07\x1b]9;4;1;40\x07");
    EXPECT_TRUE(test::waitFor([this] { return session->hasUnseenBell() && session->progressPercent() == 40; }));
    session->setShown(true);
    EXPECT_FALSE(session->hasUnseenBell());
    feed("\x07");
    EXPECT_FALSE(test::waitFor([this] { return session->hasUnseenBell(); }, std::chrono::milliseconds(50)));
}

TEST_F(TerminalViews, LetProgramsCopyAsTheUserWants) {
    QSignalSpy requests(session.get(), &TerminalSession::clipboardWriteRequested);
    struct Row {
        const char* label;
        ClipboardWrite choice;
        std::string_view bytes;
        std::optional<bool> answer;
        QString asked;
        QString copied;
    };
    const std::array rows{
        Row{"asked, and refused", ClipboardWrite::ask, "\x1b]52;c;aGVsbG8=\x07", false, u"hello"_s, u"mine"_s},
        Row{"asked, and allowed", ClipboardWrite::ask, "\x1b]52;c;aGVsbG8=\x07", true, u"hello"_s, u"hello"_s},
        Row{"the last of several", ClipboardWrite::ask, "\x1b]52;c;aGVsbG8=\x07\x1b]52;c;YnllCg==\x07", true, u"bye"_s,
            u"bye\n"_s},
        Row{"more than is shown", ClipboardWrite::ask,
            "\x1b]52;c;MDEyMzQ1Njc4OTAxMjM0NTY3ODkwMTIzNDU2Nzg5MDEyMzQ1Njc4OSE=\x07", false,
            u"0123456789012345678901234567890123456789…"_s, u"mine"_s},
        Row{"not to be seen", ClipboardWrite::ask, "\x1b]52;c;Cgo=\x07", false, u"…"_s, u"mine"_s},
        Row{"allowed", ClipboardWrite::on, "\x1b]52;c;aGVsbG8=\x07", {}, {}, u"hello"_s},
        Row{"refused", ClipboardWrite::off, "\x1b]52;c;aGVsbG8=\x07", {}, {}, u"mine"_s},
    };
    for (const Row& row : rows) {
        QGuiApplication::clipboard()->setText(u"mine"_s);
        requests.clear();
        session->setClipboardWrite(row.choice);
        feed(row.bytes);
        const auto wanted = std::ranges::count(row.bytes, '\a');
        ASSERT_TRUE(test::waitFor([&] { return requests.count() == wanted; })) << row.label;
        EXPECT_EQ(view().programsCopy(), row.asked) << row.label;
        if (row.answer) {
            EXPECT_EQ(QGuiApplication::clipboard()->text(), u"mine"_s) << row.label << ", before it is answered";
            view().answerProgramsCopy(*row.answer);
        }
        EXPECT_EQ(QGuiApplication::clipboard()->text(), row.copied) << row.label;
        EXPECT_EQ(view().programsCopy(), QString()) << row.label;
    }
    // A program that reads gets no answer at all: what it would type is seen behind what it sends itself.
    startShell();
    session->send(u"stty raw -echo; printf '\\033]52;c;?\\007\\033[c'; head -c 3 | od -c; stty sane\n"_s);
    EXPECT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(u"033   [   ?"_s); }))
        << session->outputForTesting().toStdString();
}

} // namespace
} // namespace orv
