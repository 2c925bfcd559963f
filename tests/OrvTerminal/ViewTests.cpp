#include "tests/OrvTerminal/ViewFixture.h"

#include <QGuiApplication>
#include <QSignalSpy>
#include <QStyleHints>

#include <array>
#include <functional>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

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

    // Where it is hidden an input method still writes at its place.
    feed("\x1b"
         "c\x1b[?25l\x1b[3;5H");
    EXPECT_EQ(view().inputMethodQuery(Qt::ImCursorRectangle).toRectF().topLeft(), view().placeOf(4, 2));
    QInputMethodEvent unfinished(u"nihon"_s, {});
    QGuiApplication::sendEvent(&window, &unfinished);
    EXPECT_GT(pixelsOf(shown(), cellRect(4, 2, 5), white), 0);
    QInputMethodEvent finished;
    QGuiApplication::sendEvent(&window, &finished);

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
    session->send(u"stty -echo; printf 'qui''et\n'; exec cat >/dev/null\n"_s);
    ASSERT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(u"quiet"_s); }));
    shown();
    const std::uint64_t quiet = view().frames();
    QTest::keyClick(&window, Qt::Key_X);
    shown();
    EXPECT_EQ(view().frames(), quiet) << "a key that nothing answers";
    feed("\n");
    QTest::keyClick(&window, Qt::Key_X);
    terminal().feed("x");
    Q_EMIT session->outputReceived();
    EXPECT_TRUE(view().isIdle()) << "an answer to a key is not put off, however soon after another frame it comes";
    shown();
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

TEST_F(TerminalViews, DrawOneFrameOfWhatComes) {
    QQuickWindow other;
    other.setFlag(Qt::WindowDoesNotAcceptFocus);
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&other));
    // Frames come in the order in which they were asked for.
    const auto waitForAll = [&] {
        QSignalSpy last(&other, &QQuickWindow::frameSwapped);
        other.update();
        ASSERT_TRUE(test::waitFor([&] { return last.count() > 0; }));
    };
    shown();
    waitForAll();
    QSignalSpy frames(&window, &QQuickWindow::frameSwapped);
    terminal().feed("x");
    Q_EMIT session->outputReceived();
    ASSERT_TRUE(test::waitFor([&] { return frames.count() > 0; }));
    waitForAll();
    EXPECT_EQ(frames.count(), 1);
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

TEST_F(TerminalViews, ClearThemselvesBetweenTwoPiecesOfOutput) {
    for (int line = 0; line < 60; ++line) {
        terminal().feed("line\r\n");
    }
    feed("\x1b[4");
    ASSERT_GT(view().historyLines(), 0);
    view().clear();
    feed("1m ");
    EXPECT_EQ(view().historyLines(), 0);
    const int row = terminal().buffer().y();
    EXPECT_EQ(pixelsOf(shown(), cellRect(0, row), red), areaOf(cellRect(0, row))) << "a sequence goes on";
}

TEST_F(TerminalViews, MoveBetweenContainers) {
    TerminalView* before = host.view();
    feed("text");
    TerminalHostView other;
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

TEST_F(TerminalViews, SayWhatNobodySaw) {
    struct Row {
        const char* label;
        std::function<void()> hide;
        std::function<void()> show;
    };
    const std::array rows{
        Row{"the view is hidden", [&] { host.setVisible(false); }, [&] { host.setVisible(true); }},
        Row{"the window is minimized", [&] { window.showMinimized(); }, [&] { window.showNormal(); }},
        Row{"the window is hidden", [&] { window.hide(); }, [&] { window.show(); }},
    };
    QSignalSpy bells(session.get(), &TerminalSession::bellRang);
    const auto rings = [&] {
        terminal().feed("\x07");
        Q_EMIT session->outputReceived();
        bells.clear();
        return test::waitFor([&] { return bells.count() == 1; });
    };
    for (const Row& row : rows) {
        row.hide();
        EXPECT_TRUE(test::waitFor([this] { return !session->isShown(); })) << row.label;
        const std::uint64_t painted = view().paintedLines();
        terminal().feed("\r\nmore\x1b]9;4;1;40\x07\x1b[?2026h\x1b[?2026l");
        EXPECT_TRUE(rings()) << row.label;
        EXPECT_TRUE(session->hasUnseenBell()) << row.label;
        EXPECT_EQ(session->progressPercent(), 40) << row.label;
        EXPECT_EQ(view().paintedLines(), painted) << row.label;
        EXPECT_TRUE(view().isIdle()) << row.label;
        row.show();
        EXPECT_TRUE(test::waitFor([this] { return session->isShown() && !view().isWaiting(); })) << row.label;
        EXPECT_FALSE(session->hasUnseenBell()) << row.label;
        EXPECT_GT(view().paintedLines(), painted) << row.label << ": what came meanwhile";
        EXPECT_TRUE(rings()) << row.label;
        EXPECT_FALSE(session->hasUnseenBell()) << row.label;
    }
}

} // namespace
} // namespace orv
