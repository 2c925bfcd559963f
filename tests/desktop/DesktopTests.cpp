#include "tests/desktop/DesktopFixture.h"

#include <QUrl>

namespace orv::test {
namespace {

TEST_F(Desktop, RunsAProjectByAClickUntilItAnswersAndStopsIt) {
    open(Drawing::openGL);
    EXPECT_TRUE(httpGet(port).isEmpty());
    click(u"Run Frontend in site"_s);
    ASSERT_TRUE(shows(address)) << seen().toStdString();
    EXPECT_EQ(accessible->find(u"OrvLauncher"_s, address)->role, u"link"_s);
    EXPECT_TRUE(httpGet(port).contains("hello from the site"));
    EXPECT_TRUE(shows(u"Stop all"_s)) << "the shelf of what runs";
    click(u"Stop site"_s);
    EXPECT_TRUE(hides(address));
    EXPECT_TRUE(httpGet(port).isEmpty());
    EXPECT_TRUE(shows(u"Run Frontend in site"_s));
    close();
}

TEST_F(Desktop, IsDrivenByKeysAlone) {
    open(Drawing::software);
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"sit"_s);
    ASSERT_TRUE(shows(u"Results for “sit”"_s)) << seen().toStdString();
    desktop.key(u"Return"_s); // to the cards
    desktop.key(u"ctrl+Return"_s);
    EXPECT_TRUE(shows(address)) << seen().toStdString();
    desktop.key(u"ctrl+d"_s);
    EXPECT_TRUE(waitFor([this] { return pins() == QStringList(launcher.tree.path(u"projects/site"_s)); }));
    desktop.key(u"ctrl+Return"_s);
    EXPECT_TRUE(hides(address));
    desktop.key(u"ctrl+f"_s);
    desktop.type(u"x"_s);
    EXPECT_TRUE(shows(u"No projects match"_s)) << seen().toStdString();
    desktop.key(u"Escape"_s);
    desktop.key(u"ctrl+3"_s);
    EXPECT_TRUE(shows(u"Show all projects"_s)) << "nothing runs";
    desktop.key(u"ctrl+1"_s);
    EXPECT_TRUE(shows(u"Run Frontend in site"_s));
    // What is added to the folder comes with a refresh.
    launcher.tree.add(u"projects/second/index.html"_s, "second");
    desktop.key(u"F5"_s);
    EXPECT_TRUE(shows(u"Run Frontend in second"_s)) << seen().toStdString();
    close();
}

TEST_F(Desktop, ASecondStartIsTheFirstOnes) {
    open(Drawing::software);
    const auto start = [this](const QStringList& words) {
        QProcess second;
        second.setProcessEnvironment(application.processEnvironment());
        second.start(QStringLiteral(ORV_LAUNCHER), words);
        EXPECT_TRUE(second.waitForFinished(20'000)) << words.join(u' ').toStdString();
        EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    };
    const QString site = launcher.tree.path(u"projects/site"_s);
    start({u"orvlauncher://run?project="_s + QString::fromLatin1(QUrl::toPercentEncoding(site, "/"))});
    EXPECT_TRUE(shows(address)) << seen().toStdString();
    const std::pair<QString, QString> pages[] = {
        {u"project:site"_s, u"Parts of site"_s},
        {u"ai"_s, u"Which runs"_s},
        {u"settings"_s, u"Appearance"_s},
        {u"add-project"_s, u"How"_s},
        {u"tasks"_s, u"New task"_s},
    };
    for (const auto& [page, name] : pages) {
        start({u"-OrvStartPage"_s, page});
        EXPECT_TRUE(shows(name)) << seen().toStdString();
        EXPECT_EQ(unnamed(), QStringList()) << page.toStdString();
        desktop.key(u"Escape"_s);
    }
    const auto hasPanel = [this] {
        const QStringList search{u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^Quick panel"_s};
        return !desktop.tool(u"xdotool"_s, search).trimmed().isEmpty();
    };
    start({u"toggle"_s});
    EXPECT_TRUE(waitFor(hasPanel));
    start({u"toggle"_s});
    EXPECT_TRUE(waitFor([&] { return !hasPanel(); }));
    start({});
    EXPECT_EQ(application.state(), QProcess::Running);
    start({u"-OrvStartPage"_s, u"running"_s});
    EXPECT_TRUE(shows(u"Stop site"_s)) << seen().toStdString();
    close();
}

TEST_F(Desktop, LeavesNothingRunningWhenTheDisplayIsGone) {
    open(Drawing::software);
    EXPECT_TRUE(clickShows(u"Run Frontend in site"_s, address)) << seen().toStdString();
    desktop.endScreen();
    EXPECT_TRUE(waitFor([this] { return application.state() == QProcess::NotRunning; }));
    EXPECT_EQ(application.exitStatus(), QProcess::NormalExit);
    EXPECT_TRUE(waitFor([this] { return launcher.leftBehind().isEmpty(); }))
        << launcher.leftBehind().join(u'\n').toStdString();
}

TEST_F(Desktop, AsksBeforeAnInstallAndStopsWhatRunsWhenItIsClosed) {
    launcher.tree.add(
        u"projects/shop/package.json"_s, R"({"scripts": {"dev": "vite"}, "dependencies": {"vite": "1"}})");
    open(Drawing::software);
    click(u"Run Frontend in shop"_s);
    EXPECT_TRUE(shows(u"Set up shop"_s)) << seen().toStdString();
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(hides(u"Set up shop"_s));
    EXPECT_FALSE(QFile::exists(launcher.tree.path(u"projects/shop/node_modules"_s)));
    EXPECT_TRUE(clickShows(u"Run Frontend in site"_s, address)) << seen().toStdString();
    close();
    EXPECT_TRUE(httpGet(port).isEmpty());
}

} // namespace
} // namespace orv::test
