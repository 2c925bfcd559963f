#include "tests/OrvLauncher/Launcher.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <csignal>

using namespace orv::test;
using namespace Qt::StringLiterals;

namespace {

/// A project "shop" in git, and a `claude` that plays a recorded stream and then what the test says.
class AgentCommand : public ::testing::Test, protected Launcher {
protected:
    AgentCommand() {
        for (const QString& profile : {u".zprofile"_s, u".profile"_s}) {
            tree.add(u"home/"_s + profile, "PATH=\"" + tree.path(u"bin"_s).toUtf8() + ":$PATH\"\n");
        }
        tree.add(u"home/.gitconfig"_s, "[user]\n\tname = Ada\n\temail = ada@example.org\n");
        tree.add(u"bin/"_s);
        EXPECT_TRUE(QFile::link(sourcePath(u"tests/agents/agent"_s), tree.path(u"bin/claude"_s)));
        tree.add(u"shop/package.json"_s, R"({"scripts": {"dev": "x"}})");
        tree.add(u"shop/a.txt"_s, "1\n");
        for (const QString& name : {u"HOME"_s, u"ZDOTDIR"_s}) {
            environment.insert(name, tree.path(u"home"_s));
        }
        environment.insert(u"REPLAY_STREAM"_s, sourcePath(u"tests/agents/streams/claude-edit.jsonl"_s));
        EXPECT_EQ(shell(u"cd '%1' && git init -q && git add -A && git commit -qm First"_s.arg(shop)).exitCode, 0);
    }
    void play(const QString& then) { environment.insert(u"REPLAY_THEN"_s, then); }
    [[nodiscard]] QJsonArray runs() const {
        return QJsonDocument::fromJson(call({u"agent"_s, u"list"_s, u"--json"_s}).out).array();
    }
    const QString shop = tree.path(u"shop"_s);
};

} // namespace

TEST_F(AgentCommand, StartsNoneThatIsNotThere) {
    for (const auto& [agent, hint] :
         {std::pair{u"gemini"_s, "Install it with “npm install -g"}, {u"custom"_s, "Set the custom agent's command"}}) {
        const Ended ended = call({u"agent"_s, u"run"_s, shop, u"x"_s, u"--agent"_s, agent, u"--autonomy"_s, u"plan"_s});
        EXPECT_EQ(ended.exitCode, 1);
        EXPECT_TRUE(ended.err.contains(hint)) << ended.err.constData();
        EXPECT_EQ(ended.err.contains("Nothing else holds it back"), agent == u"custom") << ended.err.constData();
    }
    EXPECT_TRUE(runs().isEmpty()) << "nothing is stored";
}

TEST_F(AgentCommand, RunsShowsContinuesAndComparesTasks) {
    play(u"echo 2 >>a.txt; printf '\\033[2J{'"_s);
    Ended ended = call({u"agent"_s, u"run"_s, shop, u"Keep the cents"_s});
    EXPECT_EQ(ended.exitCode, 0) << ended.err.constData();
    EXPECT_TRUE(ended.out.startsWith("I'll look at the cart first"));
    EXPECT_TRUE(ended.out.contains("\nGrep Math\\.round\nEdit cart.ts\nThe total keeps its cents now.\n"));
    EXPECT_FALSE(ended.out.contains('\x1b'));
    EXPECT_TRUE(ended.err.contains("1 file changed, +1 −0")) << ended.err.constData();
    EXPECT_TRUE(ended.err.contains("$0.02 · 15k in · 204 out"));
    EXPECT_TRUE(call({u"agent"_s, u"diff"_s, u"last"_s}).out.contains("\n 1\n+2\n"));
    EXPECT_EQ(shell(u"cd '%1' && \"$ORV\" agent diff last | git apply -R && git diff --quiet"_s.arg(shop)).exitCode, 0);

    play(u"exit 4"_s);
    environment.remove(u"REPLAY_STREAM"_s);
    ended = call({u"agent"_s, u"continue"_s, u"last"_s, u"Once more"_s, u"--autonomy"_s, u"full"_s, u"--json"_s});
    EXPECT_EQ(ended.exitCode, 1);
    QStringList events;
    QJsonObject last;
    for (const QByteArray& line : ended.out.trimmed().split('\n')) {
        last = QJsonDocument::fromJson(line).object();
        events.append(last[u"event"].toString());
    }
    EXPECT_EQ(events, (QStringList{u"started"_s, u"end"_s}));
    EXPECT_EQ(last[u"run"][u"reason"], u"Exited with code 4"_s);
    const QJsonArray stored = runs();
    ASSERT_EQ(stored.size(), 2);
    EXPECT_EQ(stored[0][u"parentID"], stored[1][u"id"]);
    EXPECT_EQ(stored[0][u"autonomy"], u"full"_s);
    const QString first = stored[1][u"id"].toString();
    EXPECT_TRUE(call({u"agent"_s, u"show"_s, first}).out.contains("Edit cart.ts"));
    EXPECT_TRUE(call({u"agent"_s, u"list"_s, u"other"_s}).err.contains("no project 'other'"));
    tree.add(u"other/go.mod"_s, "module other\n");
    const QByteArray theirs = call({u"tasks"_s, u"add"_s, tree.path(u"other"_s), u"Theirs"_s, u"--json"_s}).out;
    const QString othersTask = QJsonDocument::fromJson(theirs)[u"id"_s].toString();
    ASSERT_FALSE(othersTask.isEmpty()) << theirs.constData();
    const struct {
        QStringList words;
        int exitCode;
        QByteArray err;
    } refused[] = {
        {{u"show"_s, u"zzz"_s}, 1, "there is no run 'zzz'"},
        {{u"stop"_s, first}, 1, "that run is over"},
        {{u"run"_s, shop, u" "_s}, 1, "Describe the task first."},
        {{u"run"_s, shop, u"x"_s, u"--agent"_s, u"clod"_s}, 2, "--agent takes one of claude, codex"},
        {{u"continue"_s, first, u"x"_s, u"--autonomy"_s, u"all"_s}, 2, "--autonomy takes one of plan, edit, full"},
        {{u"run"_s, shop, u"x"_s, u"--task"_s, u"ff"_s}, 1, "there is no task 'ff'"},
        {{u"run"_s, shop, u"x"_s, u"--task"_s, u""_s}, 1, "there is no task ''"},
        {{u"run"_s, shop, u"x"_s, u"--task"_s, othersTask}, 1, "there is no task '"},
        {{u"merge"_s, first}, 1, "no work tree of its own"},
        {{u"diff"_s, u"last"_s}, 1, "This run changed nothing."},
    };
    for (const auto& [words, exitCode, err] : refused) {
        ended = call(QStringList{u"agent"_s} + words);
        EXPECT_EQ(ended.exitCode, exitCode) << words.join(u' ').toStdString();
        EXPECT_TRUE(ended.err.contains(err)) << ended.err.constData();
    }
    EXPECT_EQ(call({u"agent"_s, u"retry"_s, u"last"_s}).exitCode, 1);
    const QJsonArray after = runs();
    ASSERT_EQ(after.size(), 3);
    for (const QString& fact : {u"parentID"_s, u"task"_s, u"autonomy"_s}) {
        EXPECT_EQ(after[0][fact], stored[0][fact]) << fact.toStdString();
    }
}

TEST_F(AgentCommand, StopsFromHereAndFromElsewhere) {
    play(u"trap '' TERM; echo up; while :; do sleep 0.02; done"_s);
    auto running = start({u"agent"_s, u"run"_s, shop, u"Never ends"_s});
    ASSERT_TRUE(running->waitFor("Ctrl-C stops it"));
    ASSERT_TRUE(waitFor([this] { return !runs().isEmpty(); }));
    const QString id = runs().first()[u"id"].toString();
    EXPECT_TRUE(call({u"agent"_s, u"list"_s}).out.contains("working"));
    const Ended stopped = call({u"agent"_s, u"stop"_s, id.first(8)});
    EXPECT_EQ(stopped.exitCode, 0) << stopped.err.constData();
    EXPECT_EQ(running->end().exitCode, 1);
    running = start({u"agent"_s, u"run"_s, shop, u"Never ends"_s});
    ASSERT_TRUE(running->waitFor("Ctrl-C stops it"));
    running->signal(SIGINT);
    ASSERT_TRUE(running->waitFor("once more"));
    running->signal(SIGINT);
    EXPECT_EQ(running->end().exitCode, 1);
    for (const QJsonValue run : runs()) {
        EXPECT_EQ(run[u"state"], u"stopped"_s);
    }
    EXPECT_EQ(leftBehind(), QStringList());
}

TEST_F(AgentCommand, WorksInATreeOfItsOwn) {
    play(u"echo 2 >>a.txt"_s);
    EXPECT_EQ(call({u"agent"_s, u"run"_s, shop, u"Two"_s, u"--worktree"_s}).exitCode, 0);
    EXPECT_EQ(readFile(shop + u"/a.txt"_s), "1\n");
    EXPECT_TRUE(call({u"agent"_s, u"diff"_s, u"last"_s, u"--worktree"_s}).out.contains("+2\n"));
    const Ended kept = call({u"agent"_s, u"discard"_s, u"last"_s});
    EXPECT_EQ(kept.exitCode, 1);
    EXPECT_TRUE(kept.err.contains("1 changed file would be lost"));
    EXPECT_EQ(call({u"agent"_s, u"merge"_s, u"last"_s}).exitCode, 0);
    EXPECT_EQ(readFile(shop + u"/a.txt"_s), "1\n2\n");
    EXPECT_EQ(call({u"agent"_s, u"run"_s, shop, u"Three"_s, u"--worktree"_s}).exitCode, 0);
    EXPECT_EQ(call({u"agent"_s, u"discard"_s, u"last"_s, u"--force"_s}).exitCode, 0);
    EXPECT_EQ(shell(u"cd '%1' && git worktree list | wc -l"_s.arg(shop)).out.trimmed(), "1");
}
