#include "OrvUI/Screens/LogLayout.h"
#include "OrvUI/Screens/LogPane.h"
#include "OrvUI/Screens/Theme.h"
#include "OrvUI/ServiceLogs.h"
#include "tests/Screens/MainWindow.h"

#include <QClipboard>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

LogText parsed(const QString& raw) {
    StyledText::Line line = StyledText::parse(raw, {});
    return {0, line.text, line.runs, line.links, {}, ErrorLines::Place::none};
}

TEST(LogLayout, KnowsWhereEachCharacterStands) {
    Theme::loadFonts();
    const qreal letter = LogLayout::advance();
    const struct {
        const char* label;
        QString text;
        int wrapLetters; ///< 0: none
        qsizetype start, end;
        QList<QRectF> areas; ///< in letters and rows
    } cases[] = {
        {"plain", u"GET /cart"_s, 0, 5, 9, {{5, 0, 4, 1}}},
        {"behind tabs", u"a\tb\tcart"_s, 0, 4, 8, {{16, 0, 4, 1}}},
        {"bold does not move it", u"\x1b[1mGET\x1b[m cart"_s, 0, 4, 8, {{4, 0, 4, 1}}},
        {"wrapped", u"0123456789cart"_s, 12, 10, 14, {{10, 0, 2, 1}, {0, 1, 2, 1}}},
        {"in the second row", u"0123456789cart"_s, 10, 10, 14, {{0, 1, 4, 1}}},
        {"nothing", u"GET"_s, 0, 1, 1, {}},
        {"what would end a line", u"a\u2028b"_s, 0, 2, 3, {{2, 0, 1, 1}}},
    };
    for (const auto& it : cases) {
        LogLayout layout;
        layout.set(parsed(it.text), {(it.wrapLetters + 0.5) * (it.wrapLetters > 0 ? letter : 0), 1000});
        const QList<QRectF> areas = layout.areas(it.start, it.end);
        ASSERT_EQ(areas.size(), it.areas.size()) << it.label;
        for (qsizetype i = 0; i < areas.size(); ++i) {
            EXPECT_NEAR(areas[i].x(), it.areas[i].x() * letter, 0.5) << it.label;
            EXPECT_NEAR(areas[i].width(), it.areas[i].width() * letter, 0.5) << it.label;
            EXPECT_EQ(areas[i].y(), it.areas[i].y() * LogLayout::rowHeight()) << it.label;
            EXPECT_EQ(layout.offsetAt(areas[i].topLeft() + QPointF(1, 1)), i == 0 ? it.start : 12) << it.label;
        }
    }
    // Other fonts' letters are as wide as they are; what follows begins where they end.
    LogLayout wide;
    wide.set(parsed(u"日本 🚀 cart"_s), {0, 1000});
    EXPECT_EQ(wide.areas(6, 10).first().left(), wide.areas(0, 6).first().right());
    EXPECT_EQ(wide.offsetAt(wide.areas(6, 10).first().center()), 8);
    EXPECT_EQ(wide.characterAt({wide.width() + 1, 1}), -1);
    LogLayout huge;
    huge.set(parsed(QString(60'000, u'x')), {0, 800});
    EXPECT_NEAR(huge.width(), 60'000 * letter, 1) << "of which little is laid out";
}

TEST(LogLayout, DrawsWhatProgramsSet) {
    const Theme& theme = *Theme::instance();
    const QColor text = theme.terminalForeground();
    const QColor ground = theme.terminalBackground();
    const struct {
        const char* label;
        QString raw;
        QColor ink, behind;
    } cases[] = {
        {"plain", u"█"_s, text, ground},
        {"palette", u"\x1b[31m█"_s, theme.ansi(1), ground},
        {"true colour", u"\x1b[38;2;1;250;3m█"_s, QColor(1, 250, 3), ground},
        {"background", u"\x1b[44m█"_s, text, theme.ansi(4)},
        {"inverse", u"\x1b[7m█"_s, ground, text},
        {"inverse of colours", u"\x1b[33;40;7m█"_s, theme.ansi(0), theme.ansi(3)},
        {"hidden", u"\x1b[8m█"_s, ground, ground},
        {"hardly to be read", u"\x1b[37;107m█"_s, Qt::black, theme.ansi(15)},
    };
    for (const auto& it : cases) {
        LogLayout layout;
        layout.set(parsed(it.raw + u"  "_s), {0, 100});
        QImage image(60, 20, QImage::Format_ARGB32_Premultiplied);
        image.fill(ground);
        QPainter painter(&image);
        layout.drawBackgrounds(painter);
        layout.drawText(painter, image.rect(), {}, {});
        painter.end();
        const QPoint block = layout.areas(0, 1).first().center().toPoint();
        const QPoint blank = layout.areas(1, 2).first().center().toPoint();
        EXPECT_EQ(image.pixelColor(block).name(), it.ink.name()) << it.label;
        EXPECT_EQ(image.pixelColor(blank).name(), it.behind.name()) << it.label;
    }
}

/// The window on the output of a service.
class LogWindow : public test::MainWindow {
protected:
    ~LogWindow() override { EXPECT_TRUE(test::finishes(model->stop(project(u"shop"_s)))); }

    void show(const QByteArray& output) {
        addInstalled(u"shop"_s, "vite", "cat out; sleep 100");
        tree.add(u"projects/shop/out"_s, output);
        scan();
        open(QSize(1280, 832));
        const Project shop = project(u"shop"_s);
        model->setPage({AppPage::Kind::project, shop.id, {}});
        model->setDetailTab(DetailTab::logs);
        ASSERT_TRUE(test::finishes(model->run(shop, {ServiceKind::frontend})));
    }
    template <typename Item>
    [[nodiscard]] static QList<Item*> visible(QQuickItem* below) {
        QList<Item*> found;
        for (QQuickItem* child : below->childItems()) {
            if (child->isVisible()) {
                auto* item = qobject_cast<Item*>(child);
                found += item != nullptr ? QList<Item*>{item} : visible<Item>(child);
            }
        }
        return found;
    }
    [[nodiscard]] LogLine* line(const QString& text) const {
        const QList<LogLine*> lines = visible<LogLine>(window->contentItem());
        const auto found = std::ranges::find(lines, text, &LogLine::text);
        return found != lines.end() ? *found : nullptr;
    }
    /// Where a character of it is in the window.
    [[nodiscard]] static QPoint place(const LogLine* line, qsizetype character) {
        const QRectF area = line->layout().areas(character, character + 1).value(0);
        return line->mapToScene(area.center() - line->inText({})).toPoint();
    }
};

TEST_F(LogWindow, SelectsCopiesAndOpensWhatIsPrinted) {
    const QString trace = u"  File \"src/app.py\", line 3, in main"_s;
    const QString address = u"ready on http://localhost:4400/a"_s;
    const QString named = u"the docs"_s;
    tree.add(u"projects/shop/src/app.py"_s);
    show(trace.toUtf8() + '\n' + address.toUtf8() + "\n\tafter\n\x1b]8;;https://docs.example/a\x07the docs\n");
    QList<QUrl> opened;
    model->openUrl = [&](const QUrl& url) {
        opened.append(url);
        return true;
    };
    ASSERT_TRUE(test::waitFor([&] { return line(trace) != nullptr && line(address) != nullptr; }));
    const auto copied = [] { return QGuiApplication::clipboard()->text(); };

    // By the mouse: over two lines, then a word.
    QTest::mousePress(window, Qt::LeftButton, {}, place(line(trace), 2) - QPoint(3, 0));
    QTest::mouseMove(window, place(line(address), 4) + QPoint(3, 0));
    QTest::mouseRelease(window, Qt::LeftButton, {}, place(line(address), 4) + QPoint(3, 0));
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(copied(), trace.sliced(2) + u"\nready"_s);
    QTest::mouseDClick(window, Qt::LeftButton, {}, place(line(address), 12));
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(copied(), u"http://localhost:4400/a"_s);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(copied() + u'\n', model->logs()->lines()->allText());
    press(Qt::Key_Escape);
    EXPECT_TRUE(model->logs()->selection()->isEmpty());

    press(Qt::Key_F, Qt::ControlModifier);
    type(u"ready"_s);
    EXPECT_EQ(model->logs()->lines()->searchText(), u"ready"_s);
    press(Qt::Key_Escape);
    EXPECT_EQ(model->logs()->lines()->searchText(), QString());
    EXPECT_FALSE(window->activeFocusItem()->inherits("QQuickTextInput")) << "it goes back to the lines: " << focus();

    // Links are to be seen, and opened with Ctrl alone.
    LogPane* pane = visible<LogPane>(window->contentItem()).value(0);
    ASSERT_NE(pane, nullptr);
    const QPoint file = place(line(trace), 10);
    QTest::mouseMove(window, file);
    const QString target = root + u"/shop/src/app.py:3"_s;
    EXPECT_TRUE(test::waitFor([&] { return pane->hoveredLink() == target; }));
    EXPECT_FALSE(pane->opensLink());
    QTest::keyPress(window, Qt::Key_Control);
    EXPECT_TRUE(test::waitFor([&] { return pane->opensLink(); })) << "while the mouse rests";
    QTest::keyRelease(window, Qt::Key_Control, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([&] { return !pane->opensLink(); }));
    QTest::mouseClick(window, Qt::LeftButton, {}, file);
    QTest::mouseClick(window, Qt::LeftButton, Qt::ControlModifier, file);
    EXPECT_EQ(pane->hoveredLink(), target);
    QTest::mouseClick(window, Qt::LeftButton, Qt::ControlModifier, place(line(address), 12));
    QTest::mouseClick(window, Qt::LeftButton, Qt::ControlModifier, place(line(address), 2));
    ASSERT_NE(line(named), nullptr);
    QTest::mouseClick(window, Qt::LeftButton, Qt::ControlModifier, place(line(named), 6));
    EXPECT_EQ(
        opened, (QList<QUrl>{
                    QUrl::fromLocalFile(root + u"/shop/src/app.py"_s), QUrl(u"http://localhost:4400/a"_s),
                    QUrl(u"https://docs.example/a"_s)}));
}

TEST_F(LogWindow, ShowsAllOfALineThatIsTooLong) {
    const QString text = QString(50'000, u'x') + u"needle"_s + QString(9'994, u'x');
    show(text.toUtf8() + '\n');
    ASSERT_TRUE(test::waitFor([&] { return line(text) != nullptr; }));
    LogPane* pane = visible<LogPane>(window->contentItem()).value(0);
    ASSERT_NE(pane, nullptr);

    pane->setOffset(1'000'000);
    const qreal widest = 60'000 * LogLayout::advance();
    EXPECT_NEAR(pane->offset(), widest - line(text)->room(), 1);
    pane->setOffset(0);
    model->logs()->lines()->setSearchText(u"needle"_s);
    EXPECT_TRUE(test::waitFor([&] {
        const QRectF match = line(text)->layout().areas(50'000, 50'006).value(0);
        return match.isValid() && match.left() >= pane->offset() &&
               match.right() <= pane->offset() + line(text)->room();
    })) << pane->offset();
    model->logs()->setProperty("wrap", true);
    const LogLine* wrapped = line(text);
    EXPECT_TRUE(test::waitFor([&] { return wrapped->height() >= 400 * LogLayout::rowHeight(); }));
    EXPECT_EQ(wrapped->height(), wrapped->layout().height());
    // Wherever one is in it, its text is there.
    const auto showsText = [&] {
        const QImage image = window->grabWindow();
        const QPoint middle = pane->mapToScene(pane->boundingRect().center()).toPoint();
        int inked = 0;
        for (int x = middle.x() - 100; x < middle.x() + 100; ++x) {
            for (int y = middle.y() - 20; y < middle.y() + 20; ++y) {
                inked += image.pixelColor(x, y).lightness() != Theme::instance()->terminalBackground().lightness();
            }
        }
        return inked > 500;
    };
    for (int pages = 0; pages < 6; ++pages) {
        EXPECT_TRUE(test::waitFor(showsText)) << pages << " pages above its end";
        pane->property("view").value<QQuickItem*>()->forceActiveFocus();
        press(Qt::Key_PageUp);
    }
}

} // namespace
} // namespace orv
