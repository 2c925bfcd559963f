#include "tests/desktop/DesktopFixture.h"

#include <QJsonArray>

#include <algorithm>

namespace orv::test {
namespace {

/// The work in one project, from its page.
class DesktopProject : public Desktop {
protected:
    void SetUp() override {
        Desktop::SetUp();
        ASSERT_EQ(
            run(
                {u"config --global user.name Ada"_s, u"config --global user.email ada@example.org"_s,
                 u"config --global init.defaultBranch main"_s, u"init -q --bare ../../remote.git"_s, u"init -q"_s,
                 u"remote add origin ../../remote.git"_s, u"add -A"_s, u"commit -qm First"_s,
                 u"push -qu origin main"_s}),
            QString());
    }

    /// What git says to each of these in the site's folder.
    [[nodiscard]] QString run(const QStringList& lines) const {
        QString said;
        for (const QString& line : lines) {
            said += desktop.tool(u"git"_s, QStringList{u"-C"_s, site} + line.split(u' '));
        }
        return said.trimmed();
    }

    void openPage() {
        open();
        ASSERT_TRUE(clickShows(u"site"_s, u"Parts of site"_s)) << seen();
    }

    const QString site = launcher.tree.path(u"projects/site"_s);
};

TEST_F(DesktopProject, IsEditedInATerminalAndCommittedByTheLine) {
    openPage();
    openTerminal(u"site"_s);
    ASSERT_FALSE(HasFatalFailure());
    desktop.type(u"echo first >>index.html; echo second >>index.html; sleep 1000"_s);
    desktop.key(u"Return"_s);
    EXPECT_TRUE(waitFor([this] { return living().contains(u"sleep 1000 "_s); })) << seen();
    EXPECT_TRUE(readFile(site + u"/index.html"_s).endsWith("first\nsecond\n"));
    desktop.key(u"ctrl+shift+w"_s);
    ASSERT_TRUE(shows(u"A program still runs in this terminal."_s)) << seen();
    EXPECT_EQ(living().filter(u"sleep 1000"_s).size(), 1);
    click(u"Close anyway"_s);
    EXPECT_TRUE(shows(u"Run things by hand"_s)) << seen();
    EXPECT_TRUE(waitFor([this] { return living().filter(u"sleep 1000"_s).isEmpty(); }));

    desktop.key(u"alt+5"_s);
    ASSERT_TRUE(clickShows(u"index.html"_s, u"added, line 3: second"_s)) << seen();
    ASSERT_TRUE(clickShows(u"added, line 3: second"_s, u"Stage lines"_s)) << seen();
    desktop.key(u"space"_s);
    EXPECT_TRUE(waitFor([this] { return run({u"show :index.html"_s}).endsWith(u"</p>\nsecond"); }))
        << run({u"diff --cached"_s}).toStdString() << seen();
    click(u"Summary"_s);
    desktop.type(u"Say second"_s);
    desktop.key(u"ctrl+Return"_s);
    EXPECT_TRUE(waitFor([this] { return run({u"log -1 --format=%s"_s}) == u"Say second"; })) << seen();
    EXPECT_EQ(run({u"diff --numstat"_s}), u"1\t0\tindex.html"_s) << "the other line";
    ASSERT_TRUE(shows(u"Push, 1 commit"_s)) << seen();
    EXPECT_TRUE(waitFor([this] {
        desktop.key(u"ctrl+shift+p"_s); // refused while the commit is being finished
        return run({u"--git-dir=../../remote.git log -1 --format=%s main"_s}) == u"Say second";
    })) << seen();
    close();
}

TEST_F(DesktopProject, PastesWhatWasSelectedByTheMiddleButton) {
    launcher.tree.add(u"projects/site/words"_s, R"(stty -echo
printf '\033[2J\033[Hchosen words\n\033]2;shown\007'
read -r words
echo "$words" >pasted
)");
    openPage();
    desktop.key(u"alt+3"_s);
    ASSERT_TRUE(shows(u"New terminal in site"_s)) << seen();
    desktop.key(u"ctrl+shift+t"_s);
    ASSERT_TRUE(hides(u"Run things by hand"_s)) << seen();
    desktop.type(u". ./words"_s);
    desktop.key(u"Return"_s);
    ASSERT_TRUE(shows(u"shown"_s)) << seen();
    const auto isTerminal = [](const AccessibleTree::Item& item) { return item.role == u"terminal"; };
    const auto items = accessible->items(u"OrvLauncher"_s);
    const auto terminal = std::ranges::find_if(items, isTerminal);
    ASSERT_NE(terminal, items.end()) << seen();
    // Its first line, from the edge on.
    const QPoint line = terminal->place.topLeft() + QPoint(2, 24);
    desktop.drag(line, line + QPoint(400, 0));
    desktop.click(line + QPoint(400, 0), 2);
    desktop.key(u"Return"_s);
    EXPECT_TRUE(waitFor([this] { return readFile(site + u"/pasted"_s) == "chosen words\n"; }))
        << readFile(site + u"/pasted"_s).toStdString() << seen();
    desktop.key(u"ctrl+shift+w"_s); // the terminal has all other keys
    ASSERT_TRUE(shows(u"Run things by hand"_s)) << seen();
    close();
}

TEST_F(DesktopProject, FollowsAnAgentWhileItWorksAndGoesOnWithIt) {
    const QByteArray stream = readFile(sourcePath(u"tests/agents/streams/claude-edit.jsonl"_s));
    const qsizetype result = stream.lastIndexOf('\n', -2) + 1;
    const QString before = launcher.tree.add(u"before"_s, stream.first(result));
    const QString after = launcher.tree.add(u"after"_s, stream.sliced(result));
    const QString words = launcher.tree.path(u"words"_s);
    const QString go = launcher.tree.path(u"go"_s);
    desktop.addProgram(
        u"claude"_s, "export REPLAY_NOTE='" + words.toUtf8() + "' REPLAY_STREAM='" + before.toUtf8() +
                         "' REPLAY_THEN='until [ -e \"" + go.toUtf8() +
                         "\" ]; do sleep 0.05; done; echo more >>index.html; cat \"" + after.toUtf8() +
                         "\"'\nexec sh '" + sourcePath(u"tests/agents/agent"_s).toUtf8() + "' \"$@\"\n");
    openPage();
    desktop.key(u"ctrl+j"_s);
    ASSERT_TRUE(shows(u"Task for the agent"_s)) << seen();
    desktop.type(u"Keep the cents"_s);
    desktop.key(u"ctrl+Return"_s);
    EXPECT_TRUE(shows(u"Grep Math\\.round"_s)) << "while it works: " << seen();
    EXPECT_TRUE(shows(u"Stop Claude Code"_s)) << seen();
    EXPECT_FALSE(accessible->find(u"OrvLauncher"_s, u"The total keeps its cents now."_s));
    launcher.tree.add(u"go"_s);
    EXPECT_TRUE(shows(u"The total keeps its cents now."_s)) << seen();
    ASSERT_TRUE(clickShows(u"Review what Claude Code changed"_s, u"index.html, modified, 1 added, 0 removed"_s))
        << seen();
    EXPECT_TRUE(shows(u"added, line 2: more"_s)) << seen();
    desktop.key(u"Escape"_s);
    EXPECT_TRUE(hides(u"index.html, modified, 1 added, 0 removed"_s));
    EXPECT_EQ(run({u"diff --numstat"_s}), u"1\t0\tindex.html"_s);

    QFile::remove(go);
    click(u"Task for the agent"_s);
    desktop.type(u"Once more"_s);
    desktop.key(u"ctrl+Return"_s);
    ASSERT_TRUE(shows(u"Stop Claude Code"_s)) << seen();
    EXPECT_TRUE(waitFor([&] { return readFile(words).contains("Once more"); }));
    EXPECT_TRUE(readFile(words).contains("5f2c7a90-1d3e-4b52-9a77-0c6d1b2e3f40")) << "the session that it goes on with";
    click(u"Stop Claude Code"_s);
    EXPECT_TRUE(hides(u"Stop Claude Code"_s)) << seen();
    // Another process knows it once it is stored.
    QStringList states;
    EXPECT_TRUE(waitFor([&] {
        states.clear();
        for (const QJsonValue run : json({u"agent"_s, u"list"_s}).array()) {
            states.append(run[u"task"].toString() + u' ' + run[u"state"].toString());
        }
        return states == QStringList({u"Once more stopped"_s, u"Keep the cents succeeded"_s});
    })) << states.join(u'|').toStdString();
    close();
}

} // namespace
} // namespace orv::test
