#include "tests/OrvTerminal/ViewFixture.h"

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
        QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QGuiApplication::sendEvent(&view(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QGuiApplication::sendEvent(&view(), &event);
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
