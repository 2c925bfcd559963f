#include "OrvUI/Screens/Icon.h"
#include "OrvUI/Screens/Illustration.h"
#include "OrvUI/Screens/IllustrationExport.h"
#include "OrvUI/Screens/Theme.h"
#include "OrvUI/Screens/Tooltips.h"
#include "OrvUI/Screens/WindowState.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QImage>
#include <QLockFile>
#include <QSet>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TEST(Icon, IsDrawnInItsColourAtEverySize) {
    const QStringList files = QDir(u":/qt/qml/OrvLauncher/Screens/icons"_s).entryList({u"*.svg"_s});
    ASSERT_GT(files.size(), 20);
    for (const QString& file : files) {
        const QString name = file.chopped(4);
        if (name.startsWith(u"app-icon")) {
            continue; // has colours of its own
        }
        for (const int pixels : {12, 16, 28, 48}) {
            const QImage image = Icon::image(name, QColor(u"#22cc44"_s), 16, pixels);
            int inked = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const QColor pixel = image.pixelColor(x, y);
                    inked += pixel.alpha() > 100 ? 1 : 0;
                    if (pixel.alpha() > 200) {
                        EXPECT_NEAR(pixel.green(), 0xcc, 6) << name.toStdString() << " at " << pixels;
                    }
                }
            }
            EXPECT_GT(inked, pixels / 2) << name.toStdString() << " at " << pixels;
        }
    }
    EXPECT_TRUE(Icon::image(u"no-such-icon"_s, Qt::red, 16, 16).isNull());
}

TEST(IllustrationExport, WritesEachPictureInBothColours) {
    test::TemporaryTree tree;
    const IllustrationExport wish{.folder = tree.path(u"new/folder"_s), .theme = 1, .points = 40, .scale = 1.5};
    const QStringList names = Illustration::names();
    ASSERT_GT(names.size(), 8);
    EXPECT_EQ(wish.run(*Theme::instance()), 2 * names.size());
    for (const QString& name : names) {
        const QImage light(tree.path(u"new/folder/%1-light.png"_s.arg(name)));
        const QImage dark(tree.path(u"new/folder/%1-dark.png"_s.arg(name)));
        EXPECT_EQ(light.size(), QSize(60, 60)) << name.toStdString();
        QSet<QRgb> colours;
        for (int y = 0; y < dark.height(); ++y) {
            for (int x = 0; x < dark.width(); ++x) {
                colours.insert(dark.pixel(x, y));
            }
        }
        EXPECT_GT(colours.size(), 3) << name.toStdString();
        EXPECT_TRUE(name == u"app-icon"_s || light != dark) << name.toStdString();
        EXPECT_FALSE(Illustration::svg(name, *Theme::instance()).contains('$')) << name.toStdString();
    }
    Theme::instance()->setTheme(0);
    const IllustrationExport hopeless{.folder = u"/proc/nowhere"_s};
    EXPECT_FALSE(hopeless.run(*Theme::instance()));
}

TEST(WindowState, KeepsTheWindowWithinReach) {
    const QList<QRect> two{QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024)};
    struct Case {
        const char* label;
        QRect stored;
        QList<QRect> screens;
        QRect expected;
    };
    const Case cases[] = {
        {"where it was", QRect(100, 50, 1280, 832), two, QRect(100, 50, 1280, 832)},
        {"on the second screen", QRect(2000, 10, 900, 700), two, QRect(2000, 10, 900, 700)},
        {"the second screen is gone", QRect(2000, 10, 900, 700), {two[0]}, QRect(1020, 10, 900, 700)},
        {"larger than the screen", QRect(-50, -50, 4000, 3000), {two[0]}, QRect(0, 0, 1920, 1080)},
        {"smaller than allowed", QRect(10, 10, 20, 20), two, QRect(10, 10, 760, 560)},
        {"no screen", QRect(1, 2, 800, 600), {}, QRect(1, 2, 800, 600)},
    };
    for (const Case& it : cases) {
        EXPECT_EQ(WindowState::fitted(it.stored, it.screens, QSize(760, 560)), it.expected) << it.label;
    }
    test::TemporaryTree tree;
    const QString file = tree.path(u"window.ini"_s);
    EXPECT_EQ(WindowState::load(file), WindowState());
    const WindowState state{
        .geometry = QRect(5, 6, 900, 700),
        .isMaximized = true,
        .isSidebarHidden = true,
        .isSystemDark = false,
        .page = {.kind = AppPage::Kind::project, .id = u"/p/shop"_s},
        .tab = DetailTab::logs,
        .terminalFontSize = 17.5,
        .agentPanelID = u"/p/shop"_s,
        .logKey = u"frontend\n/p/shop\nweb, \"two\""_s,
        .outline = {u"/p"_s, u"/p/a, b"_s},
        .homeFolders = {{u"/p"_s, true}, {u"/p/c"_s, false}},
        .terminals = {
            {QUrl::fromLocalFile(u"/p/shop; 100%"_s), QUrl::fromLocalFile(u"/p"_s), u"vim \u00e4=b"_s, 2},
            {QUrl::fromLocalFile(u"/"_s), QUrl::fromLocalFile(u"/"_s), u"/"_s, 0}}};
    tree.add(u"window.ini.made/window.ini.lock"_s, "of a writer that was killed");
    QLockFile other(file + u".lock"_s);
    ASSERT_TRUE(other.lock());
    WindowStateWriter writer(file);
    writer.write(WindowState());
    writer.write(state);
    writer.flush();
    other.unlock();
    EXPECT_EQ(WindowState::load(file), state);
    EXPECT_EQ(QDir(tree.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{u"window.ini"_s});
    const QByteArrayView broken[] = {
        "[General]\npage=99\ntab=-1\nsection=x\nterminalFontSize=nan\noutline=@Invalid()\nlog=@Variant(\\0\\x1)\n",
        "[terminals]\nsize=2000000000\n1\\title=nowhere\n7\\folder=\n",
        "[terminals]\nsize=-3\n1\\folder=/\n",
        "\xff\xfe[[[\n===\n",
    };
    for (const QByteArrayView each : broken) {
        tree.add(u"odd.ini"_s, each.toByteArray());
        EXPECT_EQ(WindowState::load(tree.path(u"odd.ini"_s)), WindowState()) << each.toByteArray().constData();
    }
}

TEST(Tooltips, ComeAfterARestAndThenAtOnceForANeighbour) {
    Tooltips tooltips;
    QQuickItem first;
    QQuickItem second;
    QQuickItem silent;
    tooltips.enter(&first, u"Pin"_s, {});
    EXPECT_EQ(tooltips.target(), nullptr) << "before the pointer rested";
    tooltips.leave(&first);
    EXPECT_FALSE(test::waitFor([&] { return tooltips.target() != nullptr; }, std::chrono::milliseconds(700)))
        << "the pointer went on";
    tooltips.enter(&first, u"Pin"_s, {});
    EXPECT_TRUE(test::waitFor([&] { return tooltips.target() == &first; }));
    tooltips.leave(&first);
    EXPECT_EQ(tooltips.target(), nullptr);
    tooltips.enter(&second, u"More"_s, u"Ctrl M"_s);
    EXPECT_EQ(tooltips.target(), &second) << "a neighbour's comes at once";
    tooltips.leave(&first);
    EXPECT_EQ(tooltips.target(), &second) << "left long ago";
    tooltips.leave(&second);
    tooltips.enter(&silent, {}, {});
    EXPECT_EQ(tooltips.target(), nullptr) << "nothing to say";
}

} // namespace
} // namespace orv
