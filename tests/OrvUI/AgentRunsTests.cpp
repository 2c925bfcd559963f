#include "OrvProcess/ProcessSpawner.h"
#include "OrvUI/QuitGuard.h"
#include "tests/OrvUI/AgentFixture.h"

#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTimer>

#include <csignal>

#include <sys/resource.h>

using namespace orv;
using namespace orv::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class AgentRunsTest : public AgentFixture {
protected:
    AgentRunsTest() {
        addRepository(u"shop"_s);
        addNode(u"plain"_s, "express", "true\n");
        scan();
    }
    [[nodiscard]] AgentRunFiles files() const { return AgentRunFiles(tree.path(u"support/agents"_s)); }
    [[nodiscard]] bool isUp(const AgentRun* run) const {
        return waitFor([run] { return !run->events().empty(); });
    }
    template <typename T>
    T result(const QFuture<T>& future) {
        EXPECT_TRUE(waitFor([&future] { return future.isFinished(); }));
        return future.result();
    }
    const QString shop = root + u"/shop"_s;
};

} // namespace

TEST_F(AgentRunsTest, SaysWhatARunDidAndWhatItTook) {
    tree.add(u"projects/shop/a.txt"_s, "1\n2\nmine\n");
    const QUuid task = model->addTask(u"Round it"_s, {}, project(u"shop"_s));
    model->draftAgentTask(model->tasks().first(), project(u"shop"_s));
    EXPECT_EQ(model->agentDraft(), (AgentDraft{shop, u"Round it"_s, task}));
    QList<AgentFinished> ends;
    QObject::connect(model.get(), &AppModel::agentRunEnded, [&](const AgentFinished& end) { ends.append(end); });
    play("echo 4 >>a.txt; git commit -qam four; echo n >new.txt; rm b.txt", u"claude-edit.jsonl"_s);

    AgentRun* run = model->startAgent(AgentKind::claude, u" it's \"$HOME\"\n"_s, project(u"shop"_s), task);
    ASSERT_TRUE(run && run->isRunning() && model->runningAgentCount() == 1);
    ASSERT_TRUE(settles(run));
    EXPECT_EQ(
        shown(*run),
        (QStringList{u"succeeded"_s, u"modified a.txt +1-0"_s, u"deleted b.txt +0-1"_s, u"added new.txt +1-0"_s}));
    EXPECT_EQ(run->changes()->commits.size(), 1);
    EXPECT_EQ(run->changes()->dirtyBefore, 1);
    EXPECT_EQ(run->answer(), u"The total keeps its cents now."_s);
    EXPECT_EQ(run->tokens(), (AgentTokens{.input = 15221, .output = 204}));
    EXPECT_EQ(run->sessionID(), u"5f2c7a90-1d3e-4b52-9a77-0c6d1b2e3f40"_s);
    EXPECT_TRUE(model->tasks().first().isDone());
    EXPECT_EQ(model->runningAgentCount(), 0);
    EXPECT_EQ(ends, (QList<AgentFinished>{{u"shop"_s, shop, u"Claude Code"_s, true, *run->answer()}}));
    const auto diff = result(model->agentRunner().diff(run));
    ASSERT_TRUE(diff) << diff.error().toStdString();
    EXPECT_EQ(diff->files.size(), 3);
    EXPECT_FALSE(QFileInfo::exists(files().scratchFolder(run->facts().id)));
    EXPECT_TRUE(readFile(tree.path(u"note"_s)).endsWith("\0it's \"$HOME\"\0"_ba));

    // The session is gone on with; another agent is told what went before.
    model->setTaskDone(task, false);
    play("true", u"claude-edit.jsonl"_s);
    AgentRun* next = model->continueAgent(*run, u" And now? "_s);
    ASSERT_TRUE(next && settles(next));
    EXPECT_EQ(next->status().kind, AgentRunState::succeeded);
    EXPECT_FALSE(model->tasks().first().isDone()) << "somebody found that it was not";
    EXPECT_EQ(next->facts().parentID, run->facts().id);
    EXPECT_TRUE(readFile(tree.path(u"note"_s))
                    .contains("--resume\0"
                              "5f2c7a90"_ba));
    EXPECT_EQ(model->continueAgent(*run, u" \n"_s), nullptr);
    EXPECT_EQ(model->agentRuns(), (QList<AgentRun*>{next, run}));
    const AgentTotals totals = model->agentRunner().totals(shop);
    EXPECT_EQ(totals.runs, 2);
    EXPECT_NEAR(totals.costUSD, 2 * 0.0231, 1e-9);
    EXPECT_EQ(totals.tokens.output, 408);
    EXPECT_EQ(model->agentRunner().totals(u"/other"_s), AgentTotals{});
}

TEST_F(AgentRunsTest, RefusesWhatCantStart) {
    const struct {
        AgentKind kind;
        QString task;
        QString root;
        QString error;
    } cases[] = {
        {AgentKind::claude, u" \n"_s, shop, u"Describe the task first."_s},
        {AgentKind::custom, u"x"_s, shop, u"Set the custom agent's command in Settings → AI first."_s},
        {AgentKind::codex, u"x"_s, u"/not/there"_s, u"Couldn't start Codex: No such file or directory"_s},
    };
    for (const auto& [kind, task, folder, error] : cases) {
        Project there = project(u"shop"_s);
        there.root = folder;
        EXPECT_EQ(model->startAgent(kind, task, there), nullptr);
        EXPECT_EQ(model->agentError(), error);
        EXPECT_TRUE(model->agentRuns().isEmpty());
    }
    // What comes out later takes the run away again, and leaves nothing.
    AgentRun* run = start(u"shop"_s, QString(200'000, u'x'));
    EXPECT_FALSE(model->agentError());
    const QString folder = files().runFolder(run->facts().id);
    EXPECT_TRUE(waitFor([&] { return model->agentRuns().isEmpty(); }));
    EXPECT_EQ(model->agentError(), u"Couldn't start Claude Code: Argument list too long"_s);
    EXPECT_TRUE(waitFor([&] { return !QFileInfo::exists(folder); }));
    // One that is not installed has a run, with the shell's own words.
    AgentRun* missing = model->startAgent(AgentKind::gemini, u"x"_s, project(u"plain"_s));
    ASSERT_TRUE(missing && settles(missing));
    EXPECT_EQ(missing->status().reason, u"Exited with code 127"_s);
    EXPECT_FALSE(missing->changes());
    // One whose project is gone does not go on.
    ASSERT_TRUE(QDir(root + u"/plain"_s).removeRecursively());
    scan();
    EXPECT_EQ(model->continueAgent(*missing, u"x"_s), nullptr);
    EXPECT_EQ(model->agentError(), u"plain is not among your projects any more."_s);
    EXPECT_EQ(model->retryAgent(*missing), nullptr);
}

TEST_F(AgentRunsTest, StopsWhateverARunHasStarted) {
    for (const QByteArray& then :
         {QByteArray("trap '' TERM; (trap '' TERM; while :; do sleep 1; done) & echo up; while :; do sleep 1; done"),
          QByteArray("echo up; sleep 1000 & yes"), QByteArray("echo up; exec sleep 1000")}) {
        play(then);
        AgentRun* one = start(u"shop"_s);
        AgentRun* two = start(u"shop"_s);
        ASSERT_TRUE(isUp(one) && isUp(two));
        const pid_t groups[]{one->pid(), two->pid()};
        EXPECT_TRUE(finishes(model->stopAllAgents()));
        for (const AgentRun* run : {one, two}) {
            EXPECT_EQ(run->status().kind, AgentRunState::stopped);
            EXPECT_TRUE(run->changes() && run->changes()->isShared);
        }
        for (const pid_t group : groups) {
            EXPECT_TRUE(waitFor([group] { return !ProcessSpawner::groupExists(group); })) << then.constData();
        }
    }
    // Before it is prepared; and by the end of the model.
    AgentRun* early = start(u"shop"_s);
    EXPECT_TRUE(finishes(model->stopAgent(early)));
    EXPECT_EQ(early->status().kind, AgentRunState::stopped);
    EXPECT_EQ(early->pid(), -1);
    EXPECT_FALSE(QFileInfo::exists(files().scratchFolder(early->facts().id)));
    AgentRun* last = start(u"shop"_s);
    ASSERT_TRUE(isUp(last));
    const pid_t group = last->pid();
    const QUuid id = last->facts().id;
    makeModel();
    EXPECT_TRUE(waitFor([group] { return !ProcessSpawner::groupExists(group); }));
    EXPECT_EQ(files().read().first().record.id, id);
    EXPECT_EQ(files().read().first().record.state, AgentRunState::stopped);
}

TEST_F(AgentRunsTest, AreThereAgainAfterARestart) {
    play("echo 3 >>a.txt; printf 'no line feed'", u"claude-edit.jsonl"_s);
    ASSERT_TRUE(settles(start(u"shop"_s, u"First"_s)));
    const AgentRunRecord before = model->agentRuns().first()->record();
    const auto events = model->agentRuns().first()->events();
    // One whose process was killed with ours.
    AgentRunRecord lost = before;
    lost.id = QUuid::createUuid();
    lost.state = AgentRunState::running;
    lost.endedAt.reset();
    lost.startedAt = before.startedAt.addSecs(-60);
    ASSERT_TRUE(files().write(lost));
    ASSERT_TRUE(QDir().mkpath(files().scratchFolder(lost.id)));
    makeModel();
    scan();
    ASSERT_TRUE(waitFor([this] { return model->agentRuns().size() == 2; }));
    AgentRun* run = model->agentRuns().first();
    EXPECT_EQ(run->record(), before);
    EXPECT_TRUE(finishes(model->agentRunner().loadEvents(run)));
    EXPECT_EQ(run->events(), events);
    EXPECT_EQ(run->record(), before);
    EXPECT_TRUE(result(model->agentRunner().diff(run)));
    EXPECT_EQ(model->agentRuns().last()->status().reason, u"OrvLauncher ended while it ran."_s);
    EXPECT_FALSE(QFileInfo::exists(files().scratchFolder(lost.id)));
    AgentRun* next = model->continueAgent(*run, u"Go on"_s);
    ASSERT_TRUE(next && settles(next));
    EXPECT_TRUE(readFile(tree.path(u"note"_s))
                    .contains("--resume\0"
                              "5f2c7a90"_ba));
}

TEST_F(AgentRunsTest, AreSeenAndStoppedByAnotherProcess) {
    play("echo one; trap 'printf bye; exit 3' TERM; while :; do sleep 0.01; done");
    AgentRun* run = start(u"plain"_s);
    ASSERT_TRUE(isUp(run));
    AgentRuns other(
        {.files = files(),
         .worktreeFolder = tree.path(u"w"_s),
         .settings = [] { return AppSettings::defaults(); },
         .children = ChildRecords()});
    ASSERT_TRUE(waitFor([&] { return !other.runs().isEmpty(); }));
    AgentRun* seen = other.runs().first();
    EXPECT_EQ(seen->owner(), AgentRun::Owner::elsewhere);
    EXPECT_TRUE(seen->isRunning());
    // Only its own process's quitting would end it.
    EXPECT_EQ(RunningWork::of(*model).message(), u"1 AI agent is still working"_s);
    AppModel::Options options;
    options.settings = std::make_unique<SettingsStore>(tree.path(u"support/settings.json"_s));
    options.snapshotDirectory = tree.path(u"widgets"_s);
    AppModel bystander(std::move(options));
    EXPECT_TRUE(waitFor([&] { return bystander.runningAgentCount() == 1; }));
    EXPECT_FALSE(RunningWork::of(bystander).isAny());
    EXPECT_TRUE(finishes(other.loadEvents(seen)));
    EXPECT_EQ(seen->events(), (std::deque<AgentEvent>{AgentText{u"one"_s}}));
    EXPECT_TRUE(finishes(other.stop(seen)));
    EXPECT_TRUE(settles(run));
    EXPECT_EQ(seen->status().kind, AgentRunState::stopped);
    EXPECT_EQ(seen->owner(), AgentRun::Owner::here);
    EXPECT_TRUE(finishes(other.allEventsLoaded(seen)));
    EXPECT_EQ(seen->events(), run->events());
    EXPECT_EQ(seen->events().back(), AgentEvent(AgentText{u"bye"_s})) << "it has no end of line";
}

TEST_F(AgentRunsTest, SurvivesFloodsLongLinesAndAFullDisk) {
    play("head -c 6000000 /dev/zero | tr '\\0' x; echo; "
         "yes '{\"type\":\"assistant\",\"message\":{\"content\":[{\"type\":\"text\",\"text\":\"y\"}]}}' | head -n "
         "100000");
    AgentRun* run = start(u"plain"_s);
    // The event loop turns all the while.
    auto longest = 0ms;
    auto last = std::chrono::steady_clock::now();
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout, [&] {
        const auto now = std::chrono::steady_clock::now();
        longest = std::max(longest, std::chrono::duration_cast<std::chrono::milliseconds>(now - last));
        last = now;
    });
    beat.start(1ms);
    ASSERT_TRUE(settles(run));
    EXPECT_EQ(run->events().size(), 5000U);
    EXPECT_EQ(run->droppedEvents(), 95001);
    EXPECT_LT(longest, 1000ms);

    // What is beyond the limit can't be written, as on a full disk.
    play("head -c 300000 /dev/zero | tr '\\0' x; echo; echo last");
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{.rlim_cur = 100'000, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    run = start(u"plain"_s);
    const bool isSettled = settles(run);
    ::setrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, SIG_DFL);
    ASSERT_TRUE(isSettled);
    EXPECT_EQ(run->status().kind, AgentRunState::succeeded);
    EXPECT_EQ(run->events().back(), AgentEvent(AgentText{u"last"_s}));
    EXPECT_EQ(QFileInfo(files().outputFile(run->facts().id)).size(), 100'000);

    // Nothing at all can be stored.
    ASSERT_TRUE(QDir(tree.path(u"support/agents"_s)).removeRecursively());
    tree.add(u"support/agents"_s, "a file");
    play("echo 1");
    run = start(u"shop"_s);
    ASSERT_TRUE(settles(run));
    EXPECT_EQ(run->status().kind, AgentRunState::succeeded);
    EXPECT_TRUE(run->changes()->note.contains(u"What changed in shop can't be told"_s));
}

TEST_F(AgentRunsTest, WorksInATreeOfItsOwnUntilThatIsMergedOrThrownAway) {
    tree.add(u"projects/shop/.env"_s, "SECRET=1\n");
    tree.add(u"projects/shop/a.txt"_s, "1\n2\nmine\n");
    ASSERT_TRUE(model->settings().change([](AppSettings& settings) { settings.agentWorktrees = true; }));
    play("cat .env >>b.txt; printf x >n.txt", u"claude-edit.jsonl"_s);
    AgentRun* run = start(u"shop"_s, u"Add the secret\nnow"_s);
    ASSERT_TRUE(settles(run));
    const AgentWorktree worktree = run->worktree().value();
    EXPECT_EQ(shown(*run), (QStringList{u"succeeded"_s, u"modified b.txt +1-0"_s, u"added n.txt +1-0"_s}));
    EXPECT_TRUE(worktree.folder.startsWith(tree.path(u"support/worktrees/shop-"_s)));
    EXPECT_EQ(readFile(shop + u"/b.txt"_s), "b\n");

    // A run that goes on works there too, and nothing is taken away under it.
    play("trap 'exit 1' TERM; echo 3 >>n.txt; echo up; while :; do sleep 0.01; done");
    AgentRun* next = model->continueAgent(*run, u"More"_s);
    ASSERT_TRUE(next && isUp(next));
    EXPECT_EQ(next->facts().projectRoot, worktree.folder);
    EXPECT_EQ(result(model->agentRunner().mergeBack(run)).error(), u"Something still works in that work tree."_s);
    EXPECT_TRUE(finishes(model->stopAgent(next)));
    // Once more is the same message to the same session.
    play("true");
    AgentRun* again = model->retryAgent(*next);
    ASSERT_TRUE(again && settles(again));
    EXPECT_EQ(again->facts().parentID, run->facts().id);
    EXPECT_EQ(again->facts().task, u"More"_s);
    EXPECT_EQ(again->facts().projectRoot, worktree.folder);
    EXPECT_TRUE(readFile(tree.path(u"note"_s)).contains("--resume"));
    const auto whole = result(model->agentRunner().worktreeDiff(run));
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->files.size(), 2);
    EXPECT_EQ(
        result(model->agentRunner().discardWorktree(run, TaskWorktrees::Discard::ifNothingIsLost)).error(),
        u"2 changed files would be lost with the work tree."_s);

    const auto merged = result(model->agentRunner().mergeBack(next));
    ASSERT_TRUE(merged) << merged.error().toStdString();
    EXPECT_EQ(git(shop, {u"log"_s, u"-1"_s, u"--format=%s"_s}), u"More"_s);
    EXPECT_EQ(readFile(shop + u"/n.txt"_s), "x3\n");
    EXPECT_EQ(readFile(shop + u"/a.txt"_s), "1\n2\nmine\n");
    for (const AgentRunFiles::Stored& stored : files().read()) {
        EXPECT_EQ(stored.record.worktree->state, AgentWorktreeState::merged);
    }
    // What came of it is in the project now, and so is the conversation.
    play("true");
    AgentRun* after = model->continueAgent(*run, u"And?"_s);
    ASSERT_TRUE(after && settles(after));
    EXPECT_EQ(after->facts().projectRoot, shop);
    EXPECT_TRUE(after->facts().task.startsWith(u"Earlier in this project you were asked:"_s));
    EXPECT_FALSE(readFile(tree.path(u"note"_s)).contains("--resume"));
    const auto isTold = [&](const AgentRun* more, AgentAutonomy autonomy) {
        ASSERT_TRUE(more && settles(more));
        EXPECT_EQ(more->facts().parentID, run->facts().id);
        EXPECT_EQ(more->facts().autonomy, autonomy);
        EXPECT_TRUE(more->facts().task.startsWith(u"Earlier in this project you were asked:"_s))
            << more->facts().task.toStdString();
        EXPECT_FALSE(readFile(tree.path(u"note"_s)).contains("--resume"));
    };
    isTold(model->continueAgent(*run, u"With another freedom"_s, AgentAutonomy::full), AgentAutonomy::full);
    isTold(model->retryAgent(*next), next->facts().autonomy);

    // A project without git, or without a commit, can't have one, which matters where it was asked for.
    git(tree.add(u"projects/plain/unborn/"_s), {u"init"_s, u"-q"_s});
    const struct {
        QString folder;
        QString reason;
    } cases[] = {{root + u"/plain"_s, u"in no git repository"_s}, {root + u"/plain/unborn"_s, u"no commit yet"_s}};
    for (const auto& [folder, reason] : cases) {
        AgentRuns::Start wish{
            .agent = AgentKind::claude,
            .task = u"x"_s,
            .projectID = root + u"/plain"_s,
            .projectName = u"plain"_s,
            .projectRoot = folder};
        AgentRun* without = model->startAgent(wish, project(u"plain"_s));
        ASSERT_TRUE(without && settles(without));
        EXPECT_EQ(without->status().kind, AgentRunState::succeeded);
        EXPECT_EQ(without->facts().projectRoot, folder);
        EXPECT_TRUE(without->changes() && without->changes()->note.contains(reason)) << reason.toStdString();
        wish.ownWorktree = true;
        EXPECT_NE(model->startAgent(wish, project(u"plain"_s)), nullptr);
        EXPECT_TRUE(waitFor([this] { return model->agentError().has_value(); }));
        EXPECT_TRUE(model->agentError()->contains(reason)) << model->agentError()->toStdString();
    }
}

TEST_F(AgentRunsTest, SaysWhenARunWaitsOrIsSilent) {
    model.reset();
    AgentRuns runs(
        {.files = files(),
         .worktreeFolder = {},
         .settings = [] { return AppSettings::defaults(); },
         .children = ChildRecords(),
         .questionTime = 20ms,
         .quietTime = 300ms});
    const struct {
        QByteArray then;
        AgentRun::Attention attention;
    } cases[] = {
        {"printf 'Overwrite? [y/N] '; sleep 100", AgentRun::Attention::input},
        {"echo working; exec sleep 100", AgentRun::Attention::quiet},
        {R"(echo '{"type":"control_request","request":{"subtype":"can_use_tool"}}'; sleep 100)",
         AgentRun::Attention::input},
        {R"(echo '{"type":"assistant","message":{"content":[{"type":"tool_use","name":"AskUserQuestion"}]}}'; sleep 99)",
         AgentRun::Attention::input},
    };
    for (const auto& [then, attention] : cases) {
        play(then);
        const auto run = runs.start(
            {.agent = AgentKind::claude,
             .task = u"x"_s,
             .projectID = shop,
             .projectName = u"shop"_s,
             .projectRoot = shop});
        ASSERT_TRUE(run);
        EXPECT_TRUE(waitFor([&] { return (*run)->attention() == attention; })) << then.constData();
        EXPECT_TRUE(finishes(runs.stop(*run)));
        EXPECT_EQ((*run)->attention(), AgentRun::Attention::none);
    }
    for (const QByteArray& quiet : {"Continue?\n"_ba, "the [y/n] prompt was answered"_ba, "password: x"_ba, ""_ba}) {
        EXPECT_FALSE(AgentWork::asksForInput(quiet)) << quiet.constData();
    }
}
