#include "tests/desktop/DesktopFixture.h"

#include <QDir>
#include <QUrl>

#include <algorithm>
#include <tuple>

namespace orv::test {
namespace {

TEST_F(Desktop, InstallsAStackAndRunsItUntilItAnswers) {
    const QString opened = launcher.tree.path(u"opened"_s);
    desktop.addProgram(u"xdg-open"_s, "echo \"$1\" >'" + opened.toUtf8() + "'\n");
    desktop.addProgram(u"npm"_s, ". ./npm-$1.sh\n");
    const int frontPort = freePort();
    const int backPort = freePort();
    for (const auto& [part, package, its] :
         {std::tuple("frontend", R"({"scripts": {"dev": "vite"}, "dependencies": {"vite": "1"}})", frontPort),
          std::tuple("backend", R"({"scripts": {"dev": "node ."}, "dependencies": {"express": "1"}})", backPort)}) {
        const QString folder = u"projects/shop/%1/"_s.arg(QLatin1StringView(part));
        launcher.tree.add(folder + u"package.json"_s, package);
        launcher.tree.add(folder + u"index.html"_s, part);
        launcher.tree.add(folder + u"npm-install.sh"_s, "until [ -e ../go ]; do sleep 0.05; done; mkdir node_modules");
        launcher.tree.add(folder + u"npm-run.sh"_s, "exec python3 -m http.server " + QByteArray::number(its));
    }
    open(Drawing::openGL);
    ASSERT_TRUE(clickShows(u"Run Both in shop"_s, u"Set up shop"_s)) << seen();
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(hides(u"Set up shop"_s));
    EXPECT_FALSE(QFile::exists(launcher.tree.path(u"projects/shop/frontend/node_modules"_s)));
    ASSERT_TRUE(clickShows(u"Run Both in shop"_s, u"Install and run"_s)) << seen();
    ASSERT_TRUE(clickShows(u"Install and run"_s, u"Backend, Installing"_s)) << seen();
    EXPECT_TRUE(httpGet(frontPort).isEmpty());
    launcher.tree.add(u"projects/shop/go"_s);
    EXPECT_TRUE(hides(u"Set up shop"_s)) << seen();
    for (const int its : {frontPort, backPort}) {
        EXPECT_TRUE(shows(u"Open localhost:%1 in your browser"_s.arg(its))) << seen();
    }
    EXPECT_TRUE(httpGet(frontPort).endsWith("frontend"));
    EXPECT_TRUE(httpGet(backPort).endsWith("backend"));
    click(u"Open localhost:%1 in your browser"_s.arg(backPort));
    EXPECT_TRUE(waitFor([&] { return readFile(opened) == "http://localhost:" + QByteArray::number(backPort) + '\n'; }))
        << readFile(opened).toStdString();
    ASSERT_TRUE(clickShows(u"Stop all 2 services of all projects"_s, u"Run Both in shop"_s)) << seen();
    EXPECT_TRUE(waitFor([&] { return httpGet(frontPort).isEmpty() && httpGet(backPort).isEmpty(); }));
    // What runs when it is closed ends with it.
    ASSERT_TRUE(clickShows(u"Run Frontend in site"_s, address)) << seen();
    EXPECT_EQ(accessible->find(u"OrvLauncher"_s, address)->role, u"link"_s);
    EXPECT_TRUE(httpGet(port).contains("hello from the site"));
    close();
    EXPECT_TRUE(httpGet(port).isEmpty());
}

TEST_F(Desktop, IsDrivenByKeysAlone) {
    open();
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"sit"_s);
    ASSERT_TRUE(shows(u"Results for “sit”"_s)) << seen();
    desktop.key(u"Return"_s); // to the cards
    desktop.key(u"ctrl+Return"_s);
    EXPECT_TRUE(shows(address)) << seen();
    desktop.key(u"ctrl+d"_s);
    EXPECT_TRUE(waitFor([this] {
        const QByteArray file = readFile(launcher.tree.path(u"support/settings.json"_s));
        const QStringList pins = QJsonDocument::fromJson(file)[u"pinnedProjectIDs"].toVariant().toStringList();
        return pins == QStringList(launcher.tree.path(u"projects/site"_s));
    }));
    desktop.key(u"ctrl+shift+period"_s);
    EXPECT_TRUE(hides(address));
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"x"_s);
    EXPECT_TRUE(shows(u"No projects match"_s)) << seen();
    // The letter of the quick panel's key, by itself.
    desktop.tool(u"xdotool"_s, {u"keydown"_s, u"l"_s});
    EXPECT_TRUE(waitFor([this] {
        const QList<AccessibleTree::Item> items = accessible->items(u"OrvLauncher"_s);
        return std::ranges::any_of(items, [](const auto& item) { return item.name.contains(u"xlll"); });
    })) << "is repeated while it is held: "
        << seen();
    desktop.tool(u"xdotool"_s, {u"keyup"_s, u"l"_s});
    desktop.key(u"Escape"_s);
    desktop.key(u"ctrl+3"_s);
    EXPECT_TRUE(shows(u"Show all projects"_s)) << "nothing runs";
    desktop.key(u"ctrl+1"_s);
    EXPECT_TRUE(shows(u"Run Frontend in site"_s));
    // What is added to the folder comes with a refresh.
    launcher.tree.add(u"projects/second/index.html"_s, "second");
    desktop.key(u"F5"_s);
    EXPECT_TRUE(shows(u"Run Frontend in second"_s)) << seen();
    close();
}

TEST_F(Desktop, ASecondStartIsTheFirstOnes) {
    open();
    const QString site = launcher.tree.path(u"projects/site"_s);
    startAgain({u"orvlauncher://run?project="_s + QString::fromLatin1(QUrl::toPercentEncoding(site, "/"))});
    EXPECT_TRUE(shows(address)) << seen();
    const std::pair<QString, QString> pages[] = {
        {u"project:site"_s, u"Parts of site"_s},
        {u"ai"_s, u"Which runs"_s},
        {u"settings"_s, u"Appearance"_s},
        {u"add-project"_s, u"How"_s},
        {u"tasks"_s, u"New task"_s},
    };
    for (const auto& [page, name] : pages) {
        startAgain({u"-OrvStartPage"_s, page});
        EXPECT_TRUE(shows(name)) << seen();
        EXPECT_EQ(unnamed(), QStringList()) << page.toStdString();
        desktop.key(u"Escape"_s);
    }
    startAgain({u"toggle"_s});
    EXPECT_TRUE(waitFor([this] { return hasPanel(); }));
    startAgain({u"toggle"_s});
    EXPECT_TRUE(waitFor([this] { return !hasPanel(); }));
    startAgain({});
    EXPECT_EQ(application.state(), QProcess::Running);
    startAgain({u"-OrvStartPage"_s, u"running"_s});
    EXPECT_TRUE(shows(u"Stop site"_s)) << seen();
    close();
}

TEST_F(Desktop, UserDefaultsSayWhatAStartIsFor) {
    const QString defaults = launcher.tree.add(u"support/defaults.ini"_s, "[General]\nOrvStartPage=tasks\n");
    start({});
    EXPECT_TRUE(shows(u"New task"_s)) << seen();
    close();
    start({u"-OrvStartPage"_s, u"ai"_s});
    EXPECT_TRUE(shows(u"Which runs"_s)) << "the command line comes first: " << seen();
    close();

    const QString pictures = launcher.tree.path(u"pictures, small"_s);
    launcher.tree.add(u"support/defaults.ini"_s, "OrvExportIllustrations=" + pictures.toUtf8() + '\n');
    const auto ends = [&](const QStringList& words, int code) {
        start(words);
        EXPECT_TRUE(waitFor([this] { return application.state() == QProcess::NotRunning; }));
        EXPECT_EQ(application.exitCode(), code);
        return QString::fromUtf8(application.readAllStandardError());
    };
    ends({}, 0);
    const QStringList found = QDir(pictures).entryList(QDir::Files);
    EXPECT_GT(found.size(), 10) << found.join(u' ').toStdString();
    const QString said = ends({u"-OrvExportIllustrations"_s, defaults}, 1);
    EXPECT_TRUE(said.contains(u"Export failed: "_s)) << said.toStdString();
}

TEST_F(Desktop, LeavesNothingRunningWhenTheDisplayIsGone) {
    open();
    EXPECT_TRUE(clickShows(u"Run Frontend in site"_s, address)) << seen();
    desktop.endScreen();
    EXPECT_TRUE(waitFor([this] { return application.state() == QProcess::NotRunning; }));
    EXPECT_EQ(application.exitStatus(), QProcess::NormalExit);
    EXPECT_TRUE(waitFor([this] { return living().isEmpty(); })) << living().join(u'\n').toStdString();
}

TEST_F(Desktop, ComesBackAsItWasLeft) {
    open();
    const QString site = launcher.tree.path(u"projects/site"_s);
    const auto place = [this] { return desktop.place(desktop.windows(u"OrvLauncher$"_s).value(0)); };
    const auto corner = [&] { return desktop.picture(QRect(place().topLeft() + QPoint(4, 4), QSize(1, 1))); };
    QByteArray light;
    ASSERT_TRUE(waitFor([&] {
        light = corner();
        return !light.startsWith(QByteArray(3, '\0'));
    })) << "what lies under the window is black";
    desktop.key(u"ctrl+comma"_s);
    ASSERT_TRUE(clickShows(u"Appearance"_s, u"Graphite"_s)) << seen();
    click(u"Dark"_s);
    EXPECT_TRUE(waitFor([&] { return corner() != light; }));
    const QRect card = accessible->find(u"OrvLauncher"_s, u"System"_s).value_or(AccessibleTree::Item()).place;
    const QByteArray ember = desktop.picture(card);
    click(u"Ocean"_s);
    EXPECT_TRUE(waitFor([&] { return desktop.picture(card) != ember; }));
    const QByteArray dark = corner();
    desktop.key(u"alt+Home"_s);
    const QString window = desktop.windows(u"OrvLauncher$"_s).value(0);
    desktop.tool(
        u"xdotool"_s, {u"windowsize"_s, window, u"1100"_s, u"700"_s, u"windowmove"_s, window, u"80"_s, u"120"_s});
    const QRect small(80, 120, 1100, 700);
    EXPECT_TRUE(waitFor([&] { return place() == small; })) << seen();
    ASSERT_TRUE(clickShows(u"site"_s, u"Parts of site"_s)) << seen();
    openTerminal(u"site"_s);
    ASSERT_FALSE(HasFatalFailure());
    desktop.key(u"ctrl+shift+slash"_s);
    ASSERT_TRUE(shows(u"Find a shortcut"_s)) << seen();
    desktop.key(u"Escape"_s);
    ASSERT_TRUE(hides(u"Find a shortcut"_s)) << seen();
    desktop.key(u"shift+F6"_s); // out of the terminal, which keeps the next one
    desktop.key(u"alt+2"_s);
    ASSERT_TRUE(shows(u"New task"_s)) << seen();
    const QString state = launcher.tree.path(u"support/window.ini"_s);
    EXPECT_TRUE(waitFor([&] { return readFile(state).contains("\npageID=" + site.toUtf8() + '\n'); }))
        << readFile(state).toStdString();
    EXPECT_TRUE(waitFor([&] { return readFile(state).contains("\ntab=1\n"); })) << readFile(state).toStdString();
    application.kill(); // it was kept before
    EXPECT_TRUE(waitFor([this] { return application.state() == QProcess::NotRunning; }));

    start({u"-OrvStartPage"_s, u"no such page"_s});
    EXPECT_TRUE(shows(u"Parts of site"_s)) << seen();
    EXPECT_TRUE(shows(u"New task"_s)) << seen();
    EXPECT_TRUE(waitFor([&] { return place() == small; })) << seen();
    EXPECT_TRUE(waitFor([&] { return corner() == dark; })) << "the first frame on";
    EXPECT_EQ(json({u"settings"_s})[u"theme"], u"ocean"_s);
    desktop.key(u"alt+3"_s);
    EXPECT_TRUE(shows(u"Close site"_s)) << "the terminal's tab: " << seen();
    desktop.type(u"touch came-back"_s);
    desktop.key(u"Return"_s);
    EXPECT_TRUE(waitFor([&] { return QFile::exists(site + u"/came-back"_s); })) << seen();
    desktop.key(u"ctrl+shift+w"_s);
    EXPECT_TRUE(shows(u"Run things by hand"_s)) << seen();
    ASSERT_TRUE(clickShows(u"Maximise"_s, u"Restore"_s)) << seen();
    close();

    // An address comes before the first scan is done.
    start({u"orvlauncher://run?project="_s + QString::fromLatin1(QUrl::toPercentEncoding(site, "/"))});
    EXPECT_TRUE(shows(address)) << seen();
    EXPECT_TRUE(shows(u"Restore"_s)) << seen();
    EXPECT_TRUE(waitFor([&] { return place() == desktop.screen(); }));
    startAgain({u"-OrvStartPage"_s, u"tasks"_s});
    EXPECT_TRUE(shows(u"New task"_s)) << seen();
    EXPECT_EQ(place().size(), desktop.screen().size()) << "it was only to come to the front";
    ASSERT_TRUE(clickShows(u"Restore"_s, u"Maximise"_s)) << seen();
    EXPECT_TRUE(waitFor([&] { return place() == small; })) << seen();
    startAgain({u"-OrvStartPage"_s, u"settings"_s});
    ASSERT_TRUE(clickShows(u"Profile"_s, u"Colour"_s)) << seen();
    click(u"Name"_s);
    desktop.key(u"ctrl+a"_s);
    desktop.type(u"Ada"_s);
    close();
    EXPECT_EQ(json({u"settings"_s})[u"displayName"], u"Ada"_s) << "what was typed last";
}

TEST_F(Desktop, IsSetUpByKeysAtItsFirstStart) {
    tell({u"settings"_s, u"set"_s, u"onboardingCompleted"_s, u"false"_s});
    start({});
    ASSERT_TRUE(shows(u"Welcome to OrvLauncher"_s)) << seen();
    ASSERT_TRUE(waitFor([this] { return isActive(); }));
    const auto page = [this](const QStringList& keys, const QString& expected) {
        for (const QString& key : keys) {
            desktop.key(key);
        }
        ASSERT_TRUE(shows(expected)) << seen();
    };
    page({u"Return"_s}, u"What should we call you?"_s);
    desktop.key(u"ctrl+a"_s);
    desktop.type(u"Kim"_s);
    page({u"Return"_s}, u"1 project found"_s);
    EXPECT_TRUE(shows(u"Where are your projects?"_s));
    page({u"Return"_s}, u"Tell git who you are"_s);
    desktop.type(u"Kim Doe"_s);
    desktop.key(u"Tab"_s);
    desktop.type(u"kim@example.org"_s);
    page({u"Return"_s}, u"Make it yours"_s);
    page({u"Right"_s, u"Right"_s, u"Return"_s}, u"Hand tasks to an agent"_s);
    page({u"Return"_s}, u"Two more things"_s);
    page({u"space"_s, u"Tab"_s, u"space"_s, u"Tab"_s, u"Tab"_s, u"Return"_s}, u"Run Frontend in site"_s);
    const QVariantMap settings = json({u"settings"_s}).toVariant().toMap();
    EXPECT_EQ(settings[u"displayName"_s].toString(), u"Kim"_s);
    EXPECT_EQ(settings[u"appearance"_s].toString(), u"dark"_s);
    EXPECT_TRUE(settings[u"notificationsEnabled"_s].toBool());
    EXPECT_TRUE(settings[u"onboardingCompleted"_s].toBool());
    EXPECT_TRUE(readFile(desktop.home() + u"/.gitconfig"_s).contains("name = Kim Doe"));
    EXPECT_TRUE(readFile(desktop.home() + u"/.gitconfig"_s).contains("email = kim@example.org"));
    EXPECT_FALSE(QDir(desktop.home() + u"/.config/autostart"_s).isEmpty());
    close();
}

} // namespace
} // namespace orv::test
