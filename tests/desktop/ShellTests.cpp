#include "tests/desktop/DesktopFixture.h"
#include "tests/desktop/NotificationServer.h"

namespace orv::test {
namespace {

/// What the application is to the desktop that it lives on.
class DesktopShell : public Desktop {
protected:
    void set(const QString& name, const QString& value) {
        EXPECT_EQ(launcher.call({u"settings"_s, u"set"_s, name, value}).exitCode, 0) << name.toStdString();
    }

    /// By the window manager's word.
    [[nodiscard]] bool isMaximized() const {
        const QString window =
            desktop.tool(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^OrvLauncher$"_s}).trimmed();
        return desktop.tool(u"xprop"_s, {u"-id"_s, window, u"_NET_WM_STATE"_s})
            .contains(u"_NET_WM_STATE_MAXIMIZED_VERT");
    }
};

TEST_F(DesktopShell, TellsOfACrashAndAClickOpensTheProject) {
    NotificationServer notifications(desktop.busAddress());
    ASSERT_TRUE(notifications.isThere());
    set(u"notificationsEnabled"_s, u"true"_s);
    set(u"notifyOnlyInBackground"_s, u"false"_s);
    const QString folder = launcher.tree.path(u"projects/broken"_s);
    launcher.tree.add(u"projects/broken/index.html"_s, "");
    ASSERT_EQ(
        launcher.call({u"override"_s, u"set"_s, folder, u"frontend"_s, u"--command"_s, u"echo out of paper; exit 3"_s})
            .exitCode,
        0);
    open(Drawing::software);
    ASSERT_TRUE(clickShows(u"Run Frontend in broken"_s, u"Run Frontend in site"_s));
    ASSERT_TRUE(waitFor([&] { return !notifications.shown().isEmpty(); })) << seen().toStdString();
    const NotificationServer::Shown crash = notifications.shown().first();
    EXPECT_EQ(crash.title, u"broken stopped unexpectedly"_s);
    EXPECT_EQ(crash.body, u"Frontend: Exited with code 3: out of paper"_s);
    EXPECT_TRUE(crash.actions.contains(u"default"_s)) << "so that it can be clicked";
    notifications.invoke(crash.id, u"default"_s);
    EXPECT_TRUE(shows(u"Latest output"_s)) << seen().toStdString();
    EXPECT_TRUE(shows(u"Stop broken"_s)) << seen().toStdString();
    close();
    EXPECT_EQ(notifications.shown().size(), 1) << "nobody is told what he did himself";
}

TEST_F(DesktopShell, HasRealTerminalsAndAsksBeforeWhatRunsInThemEnds) {
    open(Drawing::software);
    ASSERT_TRUE(clickShows(u"site"_s, u"Parts of site"_s)) << seen().toStdString();
    desktop.key(u"alt+3"_s);
    ASSERT_TRUE(shows(u"New terminal in site"_s)) << seen().toStdString();
    desktop.key(u"ctrl+shift+t"_s);
    ASSERT_TRUE(hides(u"Run things by hand"_s)) << seen().toStdString();
    const QString folder = launcher.tree.path(u"projects/site"_s);
    desktop.type(u"touch made-by-hand; sleep 1000"_s);
    desktop.key(u"Return"_s);
    EXPECT_TRUE(waitFor([&] { return QFile::exists(folder + u"/made-by-hand"_s); })) << seen().toStdString();
    desktop.key(u"alt+F4"_s);
    EXPECT_TRUE(shows(u"Stop and Quit"_s)) << seen().toStdString();
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(hides(u"Stop and Quit"_s)) << seen().toStdString();
    EXPECT_EQ(application.state(), QProcess::Running);
    desktop.key(u"alt+F4"_s);
    ASSERT_TRUE(shows(u"Stop and Quit"_s));
    click(u"Stop and Quit"_s);
    EXPECT_TRUE(waitFor([this] { return application.state() == QProcess::NotRunning; }));
    EXPECT_TRUE(waitFor([this] { return launcher.leftBehind().isEmpty(); }))
        << launcher.leftBehind().join(u'\n').toStdString();
}

TEST_F(DesktopShell, ComesBackToThePageAndTheSizeThatWereLeft) {
    open(Drawing::software);
    click(u"Maximise"_s);
    EXPECT_TRUE(shows(u"Restore"_s)) << seen().toStdString();
    QProcess second;
    second.setProcessEnvironment(application.processEnvironment());
    second.start(QStringLiteral(ORV_LAUNCHER), {u"-OrvStartPage"_s, u"tasks"_s});
    EXPECT_TRUE(second.waitForFinished(20'000));
    EXPECT_TRUE(shows(u"New task"_s)) << seen().toStdString();
    EXPECT_TRUE(isMaximized()) << "it was only to come to the front";
    desktop.key(u"ctrl+1"_s);
    ASSERT_TRUE(clickShows(u"site"_s, u"Parts of site"_s)) << seen().toStdString();
    desktop.key(u"alt+2"_s);
    ASSERT_TRUE(shows(u"New task"_s)) << seen().toStdString();
    close();
    application.start(QStringLiteral(ORV_LAUNCHER), QStringList());
    EXPECT_TRUE(shows(u"Parts of site"_s)) << seen().toStdString();
    EXPECT_TRUE(shows(u"New task"_s)) << seen().toStdString();
    EXPECT_TRUE(shows(u"Restore"_s)) << seen().toStdString();
    EXPECT_TRUE(isMaximized());
    close();
}

} // namespace
} // namespace orv::test
