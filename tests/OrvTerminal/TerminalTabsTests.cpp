#include "OrvTerminal/MainThreadQueue.h"
#include "OrvTerminal/TerminalTabs.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstring>

#include <sys/resource.h>

namespace orv {
namespace {

using namespace Qt::StringLiterals;
using test::waitFor;

/// Shells with a home of their own, whose prompt says nothing but "ready>".
class Terminals : public ::testing::Test {
protected:
    Terminals() {
        for (const QString& name : {u".zshrc"_s, u".profile"_s}) {
            home.add(name, "PS1='ready> '\n");
        }
        home.add(u"shop/"_s);
    }

    TerminalSession* open(const QString& folder = u"shop"_s) {
        TerminalSession* session = tabs->open(QUrl::fromLocalFile(home.path(folder)));
        EXPECT_TRUE(waitFor([&] { return session->outputForTesting().contains(u"ready>"); }))
            << session->outputForTesting().toStdString();
        return session;
    }

    /// Carries a line out and waits for what it prints; the line itself must not show that.
    [[nodiscard]] static bool prints(TerminalSession* session, const QString& line, const QString& expected) {
        session->send(line + u'\n');
        return waitFor([&] { return session->outputForTesting().contains(expected); });
    }

    test::TemporaryTree home;
    test::ScopedEnvironment homeSetting{"HOME", home.path().toUtf8().constData()};
    test::ScopedEnvironment zshFolder{"ZDOTDIR", nullptr};
    test::ScopedEnvironment language{"LANG", "C.UTF-8"};
    test::ScopedEnvironment allLocales{"LC_ALL", nullptr};
    test::ScopedEnvironment agent{"SSH_AUTH_SOCK", "/run/agent"};
    std::unique_ptr<TerminalTabs> tabs = std::make_unique<TerminalTabs>();
};

TEST_F(Terminals, RunALoginShellInTheirFolder) {
    TerminalSession* session = open();
    EXPECT_TRUE(session->isAlive());
    EXPECT_EQ(session->title(), u"shop"_s);
    EXPECT_EQ(TerminalSession(QUrl::fromLocalFile(u"/"_s), std::make_shared<MainThreadQueue>()).title(), u"/"_s);
    EXPECT_TRUE(prints(session, u"echo in:${PWD##*/}:"_s, u"in:shop:"_s));
    EXPECT_TRUE(prints(session, u"case $0 in -*) echo log''in ;; esac; [[ -o login ]] && echo log''in"_s, u"login"_s));
    EXPECT_TRUE(prints(session, u"echo term:$TERM:; test -t 0 && stty size | tr ' ' x"_s, u"24x150"_s));
    session->resize(100, 30, {8, 17});
    EXPECT_TRUE(prints(session, u"stty size | tr ' ' x"_s, u"30x100"_s));

    EXPECT_TRUE(prints(session, u"echo lang:$LANG: agent:$SSH_AUTH_SOCK:"_s, u"lang:C.UTF-8: agent:/run/agent:"_s));

    const std::optional<qint64> shell = session->shellPID();
    session->start();
    EXPECT_EQ(session->shellPID(), shell) << "a second start starts nothing";
    EXPECT_TRUE(prints(session, u"echo $((6*7)) \u00e4\u00f6"_s, u"42 \u00e4\u00f6"_s))
        << session->outputForTesting().toStdString();
}

TEST_F(Terminals, TakeTheTitleThatAProgramSets) {
    TerminalSession* session = open();
    const QSignalSpy changes(session, &TerminalSession::titleChanged);
    session->send(u"printf '\\033]0;build\\007'\n"_s);
    EXPECT_TRUE(waitFor([&] { return session->title() == u"build"; }));
    EXPECT_TRUE(prints(session, u"printf '\\033]2;\\007'; echo aft''er"_s, u"after"_s));
    EXPECT_EQ(session->title(), u"build"_s) << "an empty title blanks nothing";
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(Terminals, EndSynchronizedOutputThatAProgramForgets) {
    TerminalSession* session = open();
    session->send(u"printf '\\033[?2026h'\n"_s);
    EXPECT_TRUE(waitFor([&] { return session->terminal().decPrivateMode(2026) == true; }));
    EXPECT_TRUE(waitFor([&] { return session->terminal().decPrivateMode(2026) == false; }));
}

TEST_F(Terminals, KnowWhatIsInTheForeground) {
    TerminalSession* idle = open();
    TerminalSession* busy = open();
    EXPECT_FALSE(tabs->anyForegroundProgram());
    busy->send(u"cat\n"_s);
    EXPECT_TRUE(waitFor([&] { return busy->hasForegroundProgram(); }));
    EXPECT_TRUE(tabs->anyForegroundProgram());
    EXPECT_FALSE(idle->hasForegroundProgram());
    busy->send(u"\x03"_s);
    EXPECT_TRUE(waitFor([&] { return !tabs->anyForegroundProgram(); }));
    // A program that the shell starts long after it has echoed the line, and that prints nothing.
    busy->send(u"i=0; while [ $i -lt 100000 ]; do i=$((i+1)); done; cat\n"_s);
    EXPECT_TRUE(waitFor([&] { return busy->isBusy(); }));
}

TEST_F(Terminals, StayWhenTheirShellHasEnded) {
    struct Row {
        const char* label;
        QString line;
        std::optional<int> code;
        const char* signal;
        bool isCollected = true;
    };
    const std::array rows{
        Row{"exit", u"exit 3"_s, 3, ""},
        Row{"killed", u"kill -KILL $$"_s, 128 + SIGKILL, ::strsignal(SIGKILL)},
        Row{"with a signal's code", u"exit 137"_s, 137, ""},
        Row{"nobody knows how", u"exit 3"_s, {}, "", false},
    };
    for (const Row& row : rows) {
        TerminalSession* session = open();
        EXPECT_FALSE(session->hasEnded()) << row.label;
        std::signal(SIGCHLD, row.isCollected ? SIG_DFL : SIG_IGN);
        session->send(row.line + u'\n');
        EXPECT_TRUE(waitFor([&] { return !session->isAlive(); })) << row.label;
        std::signal(SIGCHLD, SIG_DFL);
        EXPECT_TRUE(session->hasEnded()) << row.label;
        EXPECT_EQ(session->exitCode(), row.code) << row.label;
        EXPECT_EQ(session->endSignal(), QString::fromLocal8Bit(row.signal)) << row.label;
        EXPECT_FALSE(session->hasForegroundProgram()) << row.label;
        EXPECT_EQ(session->shellPID(), std::nullopt) << row.label;
        EXPECT_TRUE(session->outputForTesting().contains(row.line)) << row.label << ": the last screen is kept";
        EXPECT_TRUE(tabs->sessions().contains(session)) << row.label;
        session->start();
        session->send(u"x"_s);
        session->terminate();
        EXPECT_FALSE(session->isAlive()) << row.label;
    }
}

TEST_F(Terminals, AreSelectedAsTheyComeAndGo) {
    const QUrl folder = QUrl::fromLocalFile(home.path(u"shop"_s));
    const TerminalSession* first = tabs->open(folder);
    const TerminalSession* second = tabs->open(folder);
    const TerminalSession* third = tabs->open(folder);
    EXPECT_NE(first->id(), second->id());
    EXPECT_EQ(first->title(), second->title());
    EXPECT_EQ(tabs->selectedID(), third->id());
    const QUuid firstID = first->id();

    tabs->close(QUuid::createUuid());
    EXPECT_EQ(tabs->sessions().size(), 3);
    tabs->select(second->id());
    tabs->close(firstID);
    EXPECT_EQ(tabs->selectedID(), second->id()) << "closing a tab that is not shown moves nothing";
    tabs->select(firstID);
    EXPECT_EQ(tabs->selectedID(), second->id()) << "what is gone can't be selected";
    const TerminalSession* fourth = tabs->open(folder);
    tabs->select(second->id());
    tabs->close(second->id());
    EXPECT_EQ(tabs->selectedID(), fourth->id()) << "the last one, not the neighbour";
    tabs->closeAll();
    EXPECT_TRUE(tabs->sessions().isEmpty());
    EXPECT_EQ(tabs->selectedID(), std::nullopt);
}

TEST_F(Terminals, ComeBackWhereTheirShellsWere) {
    home.add(u"shop/deep/"_s);
    TerminalSession* moved = open();
    QSignalSpy moves(tabs.get(), &TerminalTabs::currentDirectoryChanged);
    EXPECT_TRUE(prints(moved, u"cd deep; printf '\\033]0;tit''led\\007'; echo in:${PWD##*/}:"_s, u"in:deep:"_s));
    EXPECT_TRUE(waitFor([&] { return moved->title() == u"titled"; }));
    EXPECT_TRUE(waitFor([&] { return moves.count() == 1; })) << "though nobody looks at it";
    TerminalSession* ended = open();
    ended->send(u"exit\n"_s);
    EXPECT_TRUE(waitFor([&] { return !ended->isAlive(); }));
    open(u"shop"_s);
    tabs->select(moved->id());
    const QUrl shop = QUrl::fromLocalFile(home.path(u"shop"_s));
    const QList<TerminalPlace> places{
        {shop, QUrl::fromLocalFile(home.path(u"shop/deep"_s)), u"titled"_s, 2}, {shop, shop, u"shop"_s, 1}};
    EXPECT_EQ(tabs->places(), places);

    tabs = std::make_unique<TerminalTabs>();
    tabs->restore(places);
    EXPECT_EQ(tabs->places(), places) << "before anybody has looked at them";
    ASSERT_EQ(tabs->sessions().size(), 2);
    TerminalSession* shown = tabs->sessions().first();
    EXPECT_EQ(tabs->selectedID(), shown->id());
    EXPECT_FALSE(shown->shellPID());
    shown->setShown(true);
    EXPECT_TRUE(waitFor([&] { return shown->outputForTesting().contains(u"ready>"); }));
    EXPECT_TRUE(prints(shown, u"echo in:${PWD##*/}:"_s, u"in:deep:"_s));
    EXPECT_EQ(shown->title(), u"shop"_s) << "what had the other title does not run";
    EXPECT_TRUE(tabs->sessions().last()->isWaiting());
    EXPECT_FALSE(tabs->sessions().last()->shellPID());
}

TEST_F(Terminals, EndWithTheirJobs) {
    TerminalSession* session = open();
    session->send(u"sh -c 'echo job:$$; exec sleep 1000'\n"_s);
    static const QRegularExpression number(u"job:(\\d+)"_s);
    ASSERT_TRUE(waitFor([&] { return number.match(session->outputForTesting()).hasMatch(); }));
    const auto job = static_cast<pid_t>(number.match(session->outputForTesting()).captured(1).toInt());
    const auto shell = static_cast<pid_t>(session->shellPID().value_or(0));
    ASSERT_GT(shell, 1);
    const QPointer<TerminalSession> closed(session);
    tabs->close(session->id());
    EXPECT_TRUE(waitFor([&] { return ::kill(shell, 0) != 0; }));
    EXPECT_TRUE(waitFor([&] { return ::kill(job, 0) != 0; }));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(closed.isNull());
}

TEST_F(Terminals, StartWhereverTheyCanAndSaySo) {
    TerminalSession* session = open(u"is\nnot there"_s);
    EXPECT_TRUE(session->isAlive()) << "a folder that is gone leaves the shell where the application is";
    const QString said = session->outputForTesting().remove(u'\n');
    const QString line = home.path(u"is?not there"_s) + u" can't be entered: this shell starts in "_s;
    EXPECT_TRUE(said.contains(line + QDir::currentPath())) << said.toStdString();
    EXPECT_EQ(session->startError(), QString());
}

TEST_F(Terminals, SayWhyTheirShellDidNotStart) {
    struct Row {
        const char* label;
        QString shell;
        QString words;
    };
    const QString text = home.add(u"text"_s, "no program");
    const QString broken = home.add(u"broken"_s, "no program");
    ASSERT_TRUE(QFile::setPermissions(broken, QFile::ReadOwner | QFile::ExeOwner));
    const std::array rows{
        Row{"not there", u"/no/such/shell"_s, u"/no/such/shell: No such file or directory"_s},
        Row{"no right", text, text + u": Permission denied"_s},
        Row{"no program", broken, broken + u": Exec format error"_s},
    };
    for (const Row& row : rows) {
        tabs->setShell(row.shell);
        TerminalSession* session = tabs->open(QUrl::fromLocalFile(home.path(u"shop"_s)));
        EXPECT_FALSE(session->isAlive()) << row.label;
        EXPECT_TRUE(waitFor([&] { return !session->startError().isEmpty() && session->exitCode(); })) << row.label;
        EXPECT_EQ(session->startError(), row.words) << row.label;
        EXPECT_FALSE(session->hasForegroundProgram()) << row.label;
        EXPECT_EQ(session->shellPID(), std::nullopt) << row.label;
    }
    // Without descriptors there is not even a process.
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    tabs->setShell({});
    ::setrlimit(RLIMIT_NOFILE, &none);
    TerminalSession* starved = tabs->open(QUrl::fromLocalFile(home.path(u"shop"_s)));
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_TRUE(waitFor([&] { return starved->startError() == u"Too many open files"_s; }))
        << starved->startError().toStdString();
    TerminalSession* again = tabs->renew(starved->id());
    EXPECT_TRUE(waitFor([&] { return again->outputForTesting().contains(u"ready>"_s); }));
}

TEST_F(Terminals, LeaveNothingBehind) {
    const auto settled = [] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return test::ProcessResources::now();
    };
    // Of the terminals of the tests before, some may still be going.
    ASSERT_TRUE(waitFor([&] { return settled().children == 0 && settled().threads == 1; }));
    const test::ProcessResources before = settled();
    for (int round = 0; round < 4; ++round) {
        for (int i = 0; i < 25; ++i) {
            tabs->open(QUrl::fromLocalFile(home.path(u"shop"_s)));
        }
        if (round % 2 == 0) {
            open();
        }
        tabs->closeAll();
        EXPECT_TRUE(waitFor([&] {
            const test::ProcessResources now = settled();
            return now.descriptors <= before.descriptors && now.threads == 1 && now.children == 0;
        })) << ::testing::PrintToString(settled());
    }
}

TEST_F(Terminals, KeepTheApplicationAliveUnderAFlood) {
    TerminalSession* session = open();
    const QSignalSpy pieces(session, &TerminalSession::outputReceived);
    session->send(u"yes 0123456789012345678901234567890123456789\n"_s);
    ASSERT_TRUE(waitFor([&] { return pieces.count() > 200; }));
    session->send(u"\x03"_s);
    EXPECT_TRUE(prints(session, u"echo st''ill"_s, u"still"_s)) << "the shell is there again after Ctrl-C";
    EXPECT_FALSE(session->hasForegroundProgram());
}

} // namespace
} // namespace orv
