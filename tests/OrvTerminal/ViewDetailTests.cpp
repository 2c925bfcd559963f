#include "tests/OrvTerminal/ViewFixture.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QMimeData>

#include <algorithm>
#include <array>
#include <functional>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TEST_F(TerminalViews, MarkPromptsByHowTheirCommandsWent) {
    constexpr int left = 18, top = 14;
    host.setPadding({left, top});
    shown();
    const auto prompt = [](std::string_view command) {
        return "\x1b]133;A\x07$ \x1b]133;B\x07" + std::string(command) + "\r\n\x1b]133;C\x07";
    };
    feed(
        prompt("true") + "output\r\n\x1b]133;D;0\x07" + prompt("false") + "\x1b]133;D;1\x07" + prompt("sleep") +
        "output");
    const QImage image = shown();
    const struct {
        const char* label;
        QRgb color; ///< 0: none
    } rows[] = {
        {"went well", style.colors().mark},
        {"output", 0},
        {"failed", style.colors().failure},
        {"still runs", 0},
    };
    for (int row = 0; row < static_cast<int>(std::size(rows)); ++row) {
        const QRect beside(0, top + row * view().cell().height, left, view().cell().height);
        for (const QRgb color : {style.colors().mark, style.colors().failure}) {
            EXPECT_EQ(pixelsOf(image, beside, color) > 0, color == rows[row].color) << rows[row].label;
        }
    }

    const std::string failed = "\x1b]133;D;1\x07";
    const std::string blankFirst = "\x1b]133;A\x07\r\n$ \x1b]133;B\x07run\r\n\x1b]133;C\x07output\r\n";
    const struct {
        const char* label;
        std::string bytes;
        int row; ///< the only one that is marked
    } shells[] = {
        {"output without an end of its line", prompt("run") + "output" + failed + prompt("run"), 0},
        {"prompts that begin with a blank line", blankFirst + failed + blankFirst, 1},
        {"both", "\x1b]133;A\x07\r\n$ \x1b]133;B\x07run\r\n\x1b]133;C\x07output" + failed + "\r\n" + blankFirst, 1},
        {"the newest of two", prompt("run") + "\x1b]133;D;0\x07output\r\n" + prompt("") + failed + prompt("run"), 2},
    };
    for (const auto& shell : shells) {
        feed(
            "\x1b"
            "c" +
            shell.bytes);
        const QImage gutter = shown();
        for (int row = 0; row < 8; ++row) {
            const QRect beside(0, top + row * view().cell().height, left, view().cell().height);
            EXPECT_EQ(pixelsOf(gutter, beside, style.colors().failure) > 0, row == shell.row) << shell.label << row;
        }
    }
}

TEST_F(TerminalViews, DrawEmojiInTheirOwnColours) {
    const QStringList families = QFontDatabase::families();
    if (std::ranges::none_of(families, [](const QString& family) { return family.contains(u"Color Emoji"_s); })) {
        GTEST_SKIP() << "no font with emoji is installed";
    }
    feed("\x1b[1;31m🟩\x1b[0;4;34m🟥\x1b[0;7m🟦");
    const QImage image = shown();
    for (int emoji = 0; emoji < 3; ++emoji) {
        const QColor color = image.pixelColor(cellRect(2 * emoji, 0, 2).center());
        const std::array parts{color.green(), color.red(), color.blue()};
        for (int other = 0; other < 3; ++other) {
            EXPECT_TRUE(other == emoji || parts.at(emoji) > parts.at(other) + 40)
                << emoji << color.name().toStdString();
        }
    }
}

TEST_F(TerminalViews, FlashWhenTheBellRings) {
    const QRgb before = shown().pixel(300, 150);
    Q_EMIT session->bellRang();
    EXPECT_NE(window.grabWindow().pixel(300, 150), before);
    EXPECT_TRUE(test::waitFor([this] { return view().isIdle(); }));
    EXPECT_EQ(shown().pixel(300, 150), before);
}

TEST_F(TerminalViews, TakeWhatIsDroppedOnThem) {
    startShell();
    const auto drop = [this](const std::function<void(QMimeData&)>& fill) {
        QMimeData data;
        fill(data);
        // As a platform does: an editor proposes to move its text, and a drop follows only where it may move.
        constexpr Qt::DropActions possible = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(QPoint(20, 20), possible, &data, Qt::LeftButton, Qt::ShiftModifier);
        QGuiApplication::sendEvent(&window, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDragMoveEvent move(QPoint(24, 20), possible, &data, Qt::LeftButton, Qt::ShiftModifier);
        move.ignore();
        QGuiApplication::sendEvent(&window, &move);
        EXPECT_TRUE(move.isAccepted());
        QDropEvent event(QPointF(24, 20), possible, &data, Qt::LeftButton, Qt::ShiftModifier);
        QGuiApplication::sendEvent(&window, &event);
        EXPECT_TRUE(event.isAccepted());
        EXPECT_EQ(event.dropAction(), Qt::CopyAction);
    };
    drop([](QMimeData& data) {
        data.setUrls(
            {QUrl::fromLocalFile(u"/tmp/two words"_s), QUrl::fromLocalFile(u"/tmp/it's"_s),
             QUrl(u"https://a.example/?b"_s)});
    });
    const QString words = uR"('/tmp/two words' '/tmp/it'\''s' 'https://a.example/?b')"_s;
    EXPECT_TRUE(test::waitFor([&] { return session->outputForTesting().remove(u'\n').contains(words); }))
        << session->outputForTesting().toStdString();
    QTest::keyClick(&window, Qt::Key_U, Qt::ControlModifier);
    terminal().feed("\x1b[?2004l");
    drop([](QMimeData& data) { data.setText(u"echo one\necho two"_s); });
    EXPECT_EQ(view().pasteLines(), 2) << "text is a paste";
}

TEST_F(TerminalViews, GoOnSelectingBeyondTheirEdge) {
    for (int line = 0; line < 60; ++line) {
        terminal().feed("line-" + std::to_string(line) + " end\r\n");
    }
    feed("last");
    const int bottom = view().topLine();
    // By words, as it began with a double click.
    QTest::mouseClick(&window, Qt::LeftButton, {}, middleOf(2, 1));
    QTest::mousePress(&window, Qt::LeftButton, {}, middleOf(2, 1));
    QTest::mouseMove(&window, middleOf(9, 1));
    EXPECT_EQ(view().selectedText(), u"line-%1 end"_s.arg(bottom + 1));
    QTest::mouseMove(&window, QPoint(middleOf(2, 0).x(), -40));
    EXPECT_TRUE(test::waitFor([&] { return view().topLine() <= bottom - 3; }));
    QTest::mouseRelease(&window, Qt::LeftButton, {}, QPoint(middleOf(2, 0).x(), -40));
    EXPECT_TRUE(view().isIdle());
    EXPECT_TRUE(view().selectedText().startsWith(u"line-%1 end\n"_s.arg(view().topLine())))
        << view().selectedText().toStdString();
    EXPECT_TRUE(view().selectedText().endsWith(u"line-%1"_s.arg(bottom + 1))) << view().selectedText().toStdString();
}

TEST_F(TerminalViews, TellProgramsWhatHappens) {
    startShell();
    const auto wheel = [this] {
        QWheelEvent event(
            middleOf(4, 2), QPointF(), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
            false);
        QGuiApplication::sendEvent(&view(), &event);
    };
    struct Row {
        const char* label;
        std::string_view mode;
        std::function<void()> act;
        QString told; ///< as cat -v shows it
    };
    const std::array rows{
        Row{"the focus", "\x1b[?1004h",
            [this] {
                host.setFocus(false);
                host.setFocus(true);
            },
            u"^[[O^[[I"_s},
        Row{"the theme", "\x1b[?1004l\x1b[?2031h",
            [this] {
                TerminalColors light = style.colors();
                light.scheme = term::ColorScheme::light;
                style.setColors(light);
            },
            u"^[[?997;2n"_s},
        Row{"the wheel", "\x1b[?2031l\x1b[?1000h\x1b[?1006h", wheel, u"^[[<64;5;3M"_s},
        Row{"as arrows where it has none", "\x1b[?1000l\x1b[?1049h\x1b[?1007h", wheel, u"^[[A^[[A^[[A"_s},
        Row{"that nobody sees them", "",
            [this] {
                session->setShown(false);
                terminal().feed("\x1b[?998n");
                session->setShown(true);
                terminal().feed("\x1b[?998n");
            },
            u"^[[?999;2n^[[?999;1n"_s},
        Row{"keys that go up, unless they did something here", "\x1b[>11u",
            [this] {
                QTest::keyClick(&window, Qt::Key_A);
                QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
                QTest::keyRelease(&window, Qt::Key_B);
                QTest::keyClick(&window, Qt::Key_X);
                terminal().feed("\x1b[<u");
            },
            // C, which copies, is not among them.
            u"^[[97u^[[97;1:3u^[[57441;2u^[[57442;6u^[[57442;2:3u^[[57441;1:3u^[[120u^[[120;1:3u"_s},
    };
    session->send(u"stty -echo; printf 'rea''dy to listen\\n'; cat -v\n"_s);
    ASSERT_TRUE(test::waitFor([this] {
        return session->hasForegroundProgram() && session->outputForTesting().contains(u"ready to listen"_s);
    }));
    for (const Row& row : rows) {
        feed(row.mode);
        row.act();
        QTest::keyClick(&window, Qt::Key_Return);
        EXPECT_TRUE(test::waitFor([&] { return session->outputForTesting().contains(row.told); }))
            << row.label << "\n"
            << session->outputForTesting().toStdString();
    }
}

} // namespace
} // namespace orv
