#include "OrvTerminal/TerminalTabs.h"
#include "OrvTerminal/View/ProgramsClipboard.h"
#include "tests/OrvTerminal/ViewFixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>

#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

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
        Row{"move the tab", Qt::Key_PageUp, Qt::ControlModifier | Qt::ShiftModifier, false},
        Row{"leave", Qt::Key_F6, Qt::ShiftModifier, false},
    };
    for (const Row& row : rows) {
        QKeyEvent event(QEvent::ShortcutOverride, row.key, row.modifiers);
        event.ignore();
        QGuiApplication::sendEvent(&view(), &event);
        EXPECT_EQ(event.isAccepted(), row.isKept) << row.label;
    }
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
    terminal().feed("\x1b[?1016h");
    QTest::mousePress(&window, Qt::LeftButton, {}, at);
    QTest::mouseMove(&window, at + QPoint(2, 0));
    QTest::mouseRelease(&window, Qt::LeftButton, {}, at + QPoint(2, 0));
    QTest::keyClick(&window, Qt::Key_Return);
    const QString pixels = u"^[[<0;%1;%3M^[[<32;%2;%3M^[[<0;%2;%3m"_s.arg(at.x() + 1).arg(at.x() + 3).arg(at.y() + 1);
    EXPECT_TRUE(test::waitFor([&] { return session->outputForTesting().remove(u'\n').contains(pixels); }))
        << session->outputForTesting().toStdString();
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
    find.setText(u"x"_s);
    for (int line = 0; line < 1500; ++line) {
        terminal().feed("xxxxxxxxxx\r\n");
    }
    feed("x");
    EXPECT_TRUE(test::waitFor([&] { return find.count() == 15'001; })) << "as many as there are";
    // Takes millions of steps, so that a slice does not suffice.
    find.setExpression(true);
    find.setText(u"(x?){200}(x|end)$"_s);
    EXPECT_FALSE(find.isComplete());
    EXPECT_TRUE(test::waitFor([&] { return find.isComplete(); }));
    EXPECT_EQ(find.count(), 1502);
    EXPECT_EQ(find.current(), 1502) << "the newest";
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
        Row{"without the modifier", {7, 0}, {}, {}},
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

TEST_F(TerminalViews, OpenLinksByTheirLetters) {
    home.add(u"src/main.cpp"_s, "x");
    feed("https://gone.example\x1b[2J\x1b[Hgo https://a.example/x now src/none.cpp\r\nsrc/main.cpp:12:3\r\n"
         "\x1b]8;;https://b.example\x1b\\https://a.example\x1b]8;;\x1b\\");
    QSignalSpy links(&view(), &TerminalView::linkActivated);
    QSignalSpy files(&view(), &TerminalView::fileActivated);
    const auto choose = [this] {
        QTest::keyClick(&window, Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
        QStringList targets;
        for (const QVariant& hint : view().linkHints()) {
            targets.append(hint.value<LinkHint>().target);
        }
        return targets;
    };
    const QStringList targets = choose();
    EXPECT_EQ(targets, (QStringList{u"https://a.example/x"_s, home.path(u"src/main.cpp"_s), u"https://b.example"_s}));
    const auto hint = view().linkHints().at(1).value<LinkHint>();
    EXPECT_EQ(hint.place, view().placeOf(0, 1));
    QTest::keyClick(&window, hint.letters.at(0).toLatin1());
    ASSERT_EQ(files.count(), 1);
    EXPECT_EQ(files.at(0), (QVariantList{home.path(u"src/main.cpp"_s), 12, 3}));
    EXPECT_FALSE(view().choosesLink());
    choose();
    QTest::keyClick(&window, view().linkHints().at(2).value<LinkHint>().letters.at(0).toLatin1());
    ASSERT_EQ(links.count(), 1);
    EXPECT_EQ(links.at(0).at(0).toUrl(), QUrl(u"https://b.example"_s));
    choose();
    QTest::keyClick(
        &window, view().linkHints().at(0).value<LinkHint>().letters.at(0).toUpper().toLatin1(), Qt::ShiftModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"https://a.example/x"_s);
    choose();
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(view().choosesLink());
    EXPECT_TRUE(view().linkHints().isEmpty());

    // One that goes on in the next line, and one that begins above the view.
    const int columns = terminal().cols();
    const std::string text(static_cast<size_t>(columns) + 5, 'x');
    feed("\x1b[2J\x1b[H\x1b]8;;https://long.example\x1b\\" + text + "\x1b]8;;\x1b\\");
    EXPECT_EQ(choose(), QStringList{u"https://long.example"_s});
    QTest::keyClick(&window, Qt::Key_Escape);
    const QImage plain = shown().copy(cellRect(0, 1, 5));
    QTest::mouseMove(&window, middleOf(3, 0));
    QTest::keyPress(&window, Qt::Key_Control);
    EXPECT_NE(shown().copy(cellRect(0, 1, 5)), plain);
    QTest::keyRelease(&window, Qt::Key_Control);
    feed("\x1b[" + std::to_string(terminal().rows()) + ";1H\n");
    EXPECT_EQ(choose(), QStringList{u"https://long.example"_s});
    EXPECT_EQ(view().linkHints().at(0).value<LinkHint>().place, view().placeOf(0, 0));
    QTest::keyClick(&window, Qt::Key_Escape);

    // What goes on behind the edge, and what only looks like it.
    const std::string wide = "https://wide.example/" + std::string(static_cast<size_t>(columns) - 22, 'x');
    const QString whole = QString::fromStdString(wide) + u"漢字"_s;
    struct Wrapped {
        const char* label;
        std::string bytes;
        QString target;
    };
    const std::array wraps{
        Wrapped{"a wide character that did not fit", wide + "漢字 end", whole},
        Wrapped{
            "the same, named", "\x1b]8;;https://b.example\x1b\\" + wide + "漢字\x1b]8;;\x1b\\", u"https://b.example"_s},
        Wrapped{"a blank at the edge", wide + " end", QString::fromStdString(wide)},
        Wrapped{
            "an edge that was erased", wide + "xend\x1b[1;" + std::to_string(columns) + "H\x1b[X",
            QString::fromStdString(wide)},
    };
    for (const Wrapped& row : wraps) {
        feed("\x1b[2J\x1b[H" + row.bytes);
        EXPECT_EQ(choose(), QStringList{row.target}) << row.label;
        QTest::keyClick(&window, Qt::Key_Escape);
    }

    // More links than letters.
    std::string many;
    for (int link = 0; link < 30; ++link) {
        many += "\x1b]8;;https://example/" + std::to_string(link) + "\x1b\\x\x1b]8;;\x1b\\ ";
    }
    feed("\x1b[2J\x1b[H" + many);
    EXPECT_EQ(choose().size(), 30);
    const QString letters = view().linkHints().at(27).value<LinkHint>().letters;
    ASSERT_EQ(letters.size(), 2);
    QTest::keyClick(&window, letters.at(0).toLatin1());
    EXPECT_EQ(view().linkHints().size(), 4) << "those that begin with it";
    QTest::keyClick(&window, Qt::Key_1);
    QTest::keyClick(&window, letters.at(1).toLatin1());
    EXPECT_EQ(links.last().at(0).toUrl(), QUrl(u"https://example/27"_s));
    EXPECT_EQ(links.count(), 2);
    EXPECT_EQ(files.count(), 1);
}

TEST_F(TerminalViews, ScrollThroughTheHistoryAndBack) {
    for (int command = 0; command < 5; ++command) {
        terminal().feed("\x1b]133;A\x07$ \x1b]133;B\x07run\r\n\x1b]133;C\x07");
        for (int line = 0; line < 12; ++line) {
            terminal().feed("\toutput " + std::to_string(line) + "\r\n");
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
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(terminal().buffer().lineAt(view().topLine()).translateToString(terminal().arena(), true), "$ run");
    view().selectOutput();
    EXPECT_EQ(view().selectedText().count(u"output"_s), 12);
    QTest::keyClick(&window, Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(view().topLine(), 0);
    QTest::keyClick(&window, Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(view().topLine(), view().historyLines());
}

TEST_F(TerminalViews, LetProgramsCopyAsTheUserWants) {
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
    TerminalTabs tabs;
    tabs.setShell(u"/bin/sleep"_s); // which ends at once, for it knows no -l
    QObject::connect(&tabs, &TerminalTabs::clipboardWriteRequested, &tabs, &putOnClipboard);
    for (const bool hasView : {true, false}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.label + std::string(hasView ? "" : ", shown only then"));
            QGuiApplication::clipboard()->setText(u"mine"_s);
            tabs.setClipboardWrite(row.choice);
            TerminalSession* copying = tabs.open(QUrl::fromLocalFile(home.path()));
            if (hasView) {
                host.setSession(copying);
            }
            // What comes behind it is heard of behind it.
            copying->terminal().feed(row.bytes);
            copying->terminal().feed("\x1b]2;copied\x07");
            ASSERT_TRUE(test::waitFor([&] { return copying->title() == u"copied"; }));
            EXPECT_EQ(QGuiApplication::clipboard()->text(), row.answer ? u"mine"_s : row.copied);
            EXPECT_EQ(copying->hasUnseenQuestion(), row.answer && !hasView);
            EXPECT_EQ(copying->hasUnseen(), copying->hasUnseenQuestion());
            host.setSession(copying);
            EXPECT_EQ(host.view()->programsCopy(), row.asked);
            EXPECT_TRUE(test::waitFor([&] { return !copying->hasUnseen(); })) << "it is looked at";
            if (row.answer) {
                host.view()->answerProgramsCopy(*row.answer);
            }
            EXPECT_EQ(QGuiApplication::clipboard()->text(), row.copied);
            EXPECT_EQ(host.view()->programsCopy(), QString());
            host.setSession(session.get());
            tabs.closeAll();
        }
    }
    // A program that reads gets no answer at all: what it would type is seen behind what it sends itself.
    startShell();
    session->send(u"stty raw -echo; printf '\\033]52;c;?\\007\\033[c'; head -c 3 | od -c; stty sane\n"_s);
    EXPECT_TRUE(test::waitFor([this] { return session->outputForTesting().contains(u"033   [   ?"_s); }))
        << session->outputForTesting().toStdString();
}

} // namespace
} // namespace orv
