#include "tests/desktop/DesktopFixture.h"
#include "tests/desktop/NotificationServer.h"
#include "tests/desktop/TrayHost.h"

#include <algorithm>

#include <xcb/xcb.h>

namespace orv::test {
namespace {

/// What the application is to a desktop with a tray.
class DesktopTray : public Desktop {
protected:
    void SetUp() override {
        Desktop::SetUp();
        desktop.startTray();
        ASSERT_EQ(desktop.problem(), QString());
    }
};

TEST_F(DesktopTray, CountsWhatRunsAndTellsOfACrashWhileThereIsNoWindow) {
    NotificationServer notifications(desktop.busAddress());
    ASSERT_TRUE(notifications.isThere());
    tell({u"settings"_s, u"set"_s, u"notificationsEnabled"_s, u"true"_s});
    const QString broken =
        addProject(u"broken"_s, "touch started; until [ -e crash ]; do sleep 0.05; done; echo out of paper; exit 3");
    tell({u"pin"_s, u"add"_s, broken});
    open();
    QRect icon;
    QByteArray idle;
    ASSERT_TRUE(waitFor([&] {
        icon = desktop.trayIcon(u"OrvLauncher"_s);
        idle = icon.isValid() ? desktop.picture(icon) : QByteArray();
        return !idle.isEmpty() && idle != QByteArray(idle.first(4)).repeated(idle.size() / 4);
    })) << "more than an empty place";
    click(u"Run Frontend in site"_s);
    EXPECT_TRUE(shows(address)) << seen();
    EXPECT_TRUE(waitFor([&] { return desktop.picture(icon) != idle; })) << "the count";
    desktop.point(icon.center());
    EXPECT_TRUE(shows(u"OrvLauncher: 1 service running"_s)) << seen();

    click(u"Close"_s);
    ASSERT_TRUE(waitFor([this] { return !hasWindow(); })) << seen();
    // The window that goes away has the focus for a moment still.
    const auto panelIs = [this](bool isOpen) {
        return waitFor([&] { return hasPanel() == isOpen && isActive() == isOpen; });
    };
    EXPECT_TRUE(panelIs(false));
    desktop.click(icon.center());
    EXPECT_TRUE(panelIs(true)) << "by the icon";
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(panelIs(false));
    for (const bool isOpen : {true, false, true}) {
        desktop.key(u"ctrl+alt+super+l"_s);
        EXPECT_TRUE(panelIs(isOpen)) << "by the key";
    }
    EXPECT_TRUE(waitFor([this] {
        const QRect panel = desktop.place(desktop.windows(u"Quick panel"_s).value(0));
        const auto pixel = [&](int x) { return desktop.picture(QRect(panel.topLeft() + QPoint(x, 0), QSize(1, 1))); };
        return !pixel(0).startsWith(QByteArray(3, '\0')) && pixel(0) == pixel(panel.width() / 2);
    })) << "a black corner, for there is no compositor";
    // The focus of before is still on its way when the panel comes again.
    desktop.key(u"Escape"_s);
    for (int i = 0; i < 5; ++i) {
        desktop.key(u"ctrl+alt+super+l"_s);
    }
    EXPECT_TRUE(panelIs(true));
    EXPECT_TRUE(clickShows(u"Stop Frontend of site"_s, u"Run broken"_s)) << seen();
    EXPECT_TRUE(waitFor([this] { return httpGet(port).isEmpty(); }));
    EXPECT_TRUE(waitFor([&] { return desktop.picture(icon) == idle; })) << "nothing runs";

    click(u"Run broken"_s);
    EXPECT_TRUE(waitFor([&] { return QFile::exists(broken + u"/started"_s); })) << seen();
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(waitFor([this] { return !hasPanel(); })) << "which has the focus still";
    launcher.tree.add(u"projects/broken/crash"_s);
    ASSERT_TRUE(waitFor([&] { return !notifications.shown().isEmpty(); })) << seen();
    const NotificationServer::Shown crash = notifications.shown().first();
    EXPECT_EQ(crash.title, u"broken stopped unexpectedly"_s);
    EXPECT_EQ(crash.body, u"Frontend: Exited with code 3: out of paper"_s);
    EXPECT_TRUE(crash.actions.contains(u"default"_s)) << "so that it can be clicked";
    EXPECT_FALSE(hasWindow());
    notifications.invoke(crash.id, u"default"_s);
    EXPECT_TRUE(waitFor([this] { return hasWindow(); }));
    EXPECT_TRUE(shows(u"Parts of broken"_s)) << seen();
    EXPECT_TRUE(shows(u"Search the output"_s)) << "its logs: " << seen();
    close();
    EXPECT_EQ(notifications.shown().size(), 1) << "nobody is told what he did himself";
}

TEST_F(Desktop, HasAMenuInTheTrayWithAllThatItIsFor) {
    TrayHost tray(desktop.busAddress());
    ASSERT_TRUE(tray.isThere());
    open();
    const QString panel = u"Quick Panel (Ctrl+Alt+Super+L)"_s;
    const auto beginsWith = [&](const QString& first) {
        const QStringList all{first, u"-"_s, panel, u"Open OrvLauncher"_s, u"-"_s, u"Quit"_s};
        return waitFor([&] { return tray.menu() == all; });
    };
    EXPECT_TRUE(beginsWith(u"(Pin projects in OrvLauncher to list them here)"_s))
        << tray.menu().join(u'|').toStdString();
    tell({u"pin"_s, u"add"_s, launcher.tree.path(u"projects/site"_s)});
    ASSERT_TRUE(beginsWith(u"Run site"_s)) << tray.menu().join(u'|').toStdString();
    EXPECT_TRUE(tray.choose(u"Run site"_s));
    EXPECT_TRUE(shows(address)) << seen();
    EXPECT_TRUE(httpGet(port).contains("hello from the site"));
    EXPECT_TRUE(beginsWith(u"Stop site"_s)) << tray.menu().join(u'|').toStdString();
    EXPECT_TRUE(tray.choose(u"Stop site"_s));
    EXPECT_TRUE(waitFor([this] { return httpGet(port).isEmpty(); }));
    click(u"Close"_s);
    ASSERT_TRUE(waitFor([this] { return !hasWindow(); })) << seen();
    EXPECT_TRUE(tray.choose(panel));
    EXPECT_TRUE(waitFor([this] { return hasPanel(); })) << seen();
    tray.activate();
    EXPECT_TRUE(waitFor([this] { return !hasPanel(); })) << "as by a click";
    EXPECT_TRUE(tray.choose(u"Open OrvLauncher"_s));
    EXPECT_TRUE(waitFor([this] { return hasWindow(); })) << seen();
    EXPECT_TRUE(tray.choose(u"Quit"_s));
    hasEnded();
}

TEST_F(DesktopTray, HoldsItsKeyWhereTheKeyboardHasItAndNoLonger) {
    open();
    desktop.key(u"ctrl+comma"_s);
    ASSERT_TRUE(clickShows(u"General"_s, u"Window and tray"_s)) << seen();
    desktop.tool(u"setxkbmap"_s, {u"us"_s, u"-variant"_s, u"dvorak"_s});
    desktop.key(u"alt+Home"_s); // what is heard after the change
    ASSERT_TRUE(shows(u"Run Frontend in site"_s)) << seen();
    desktop.key(u"ctrl+alt+super+l"_s);
    EXPECT_TRUE(waitFor([this] { return hasPanel(); })) << seen();
    desktop.key(u"ctrl+alt+super+l"_s);
    EXPECT_TRUE(waitFor([this] { return !hasPanel(); })) << seen();

    const auto turn = [this](const QString& isOn) {
        tell({u"settings"_s, u"set"_s, u"quickPanelShortcutEnabled"_s, isOn});
    };
    startAgain({u"-OrvStartPage"_s, u"settings"_s});
    ASSERT_TRUE(clickShows(u"General"_s, u"Window and tray"_s)) << seen();
    const QString taken = u"Another application holds Ctrl+Alt+Super+L. The panel still opens from the tray."_s;
    turn(u"false"_s);
    VirtualDesktop::Holder other;
    ASSERT_TRUE(waitFor([&] {
        other = desktop.holdKeys(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4);
        return other != nullptr;
    })) << "free again";
    turn(u"true"_s);
    EXPECT_TRUE(shows(taken)) << seen();
    turn(u"false"_s);
    EXPECT_TRUE(hides(taken)) << seen();
    close();
}

TEST_F(DesktopTray, AsksWhatBecomesOfWhatRunsBeforeItQuits) {
    desktop.addProgram(u"claude"_s, "[ \"$1\" = --version ] || exec sleep 1000\n");
    open();
    ASSERT_TRUE(clickShows(u"Run Frontend in site"_s, address)) << seen();
    ASSERT_TRUE(clickShows(u"site"_s, u"Parts of site"_s)) << seen();
    openTerminal(u"site"_s);
    ASSERT_FALSE(HasFatalFailure());
    desktop.type(u"vim -c \"w made-by-hand\" made-by-hand"_s);
    desktop.key(u"Return"_s);
    const QString folder = launcher.tree.path(u"projects/site"_s);
    EXPECT_TRUE(waitFor([&] { return QFile::exists(folder + u"/made-by-hand"_s); })) << seen();
    ASSERT_TRUE(clickShows(u"Ask AI"_s, u"Task for the agent"_s)) << seen();
    desktop.type(u"Never ends"_s);
    desktop.key(u"ctrl+Return"_s);
    ASSERT_TRUE(shows(u"Stop Claude Code"_s)) << seen();

    const QString question =
        u"1 service still running and a program is still running in a terminal and 1 AI agent is still working"_s;
    const auto waiting = [this] {
        const QStringList lines = living();
        return std::ranges::count_if(
            lines, [](const QString& line) { return line.startsWith(u"sleep ") || line.startsWith(u"vim "); });
    };
    EXPECT_TRUE(waitFor([&] { return waiting() == 2; })) << living().join(u'\n').toStdString();
    for (const QString& answer : {u"Escape"_s, u"Cancel"_s, u"Keep Running in Tray"_s, u"Stop and Quit"_s}) {
        desktop.key(u"ctrl+q"_s);
        ASSERT_TRUE(shows(question)) << answer.toStdString() << seen();
        EXPECT_EQ(waiting(), 2) << answer.toStdString();
        EXPECT_TRUE(httpGet(port).contains("hello from the site")) << answer.toStdString();
        if (answer == u"Escape") {
            desktop.key(answer);
        } else {
            click(answer);
        }
        if (answer == u"Stop and Quit") {
            hasEnded();
        } else {
            EXPECT_TRUE(hides(question)) << answer.toStdString();
        }
        EXPECT_TRUE(waitFor([&] { return hasWindow() == (answer == u"Escape" || answer == u"Cancel"); }))
            << answer.toStdString();
        if (answer == u"Keep Running in Tray") {
            startAgain({});
            EXPECT_TRUE(waitFor([this] { return hasWindow() && isActive(); }));
        }
    }
    EXPECT_TRUE(httpGet(port).isEmpty());
}

} // namespace
} // namespace orv::test
