#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AgentModels.h"
#include "OrvUI/ProjectDetail.h"
#include "OrvUI/RunReview.h"
#include "OrvUI/TaskLists.h"
#include "tests/OrvUI/AgentFixture.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>

using namespace orv;
using namespace orv::test;
using namespace Qt::StringLiterals;

namespace {

QVariant at(const QAbstractListModel& list, int row, const QByteArray& role) {
    return list.data(list.index(row), list.roleNames().key(role));
}

QStringList column(const QAbstractListModel& list, const QByteArray& role) {
    QStringList values;
    for (int row = 0; row < list.rowCount(); ++row) {
        values.append(at(list, row, role).toString());
    }
    return values;
}

class AgentModelsTest : public AgentFixture {
protected:
    AgentModelsTest() {
        addRepository(u"shop"_s);
        addNode(u"plain"_s, "express", "true\n");
        scan();
    }
    [[nodiscard]] AgentModels& lists() const { return *model->agentModels(); }
    const QString shop = root + u"/shop"_s;
};

} // namespace

TEST_F(AgentModelsTest, ShowTheRunsAsTheyComeAndGo) {
    const QAbstractItemModelTester runsTester(lists().runs());
    const QAbstractItemModelTester panelTester(lists().projectRuns());
    model->setAiPanelProjectID(shop);
    play("echo 3 >>a.txt", u"claude-edit.jsonl"_s);
    ASSERT_TRUE(lists().start(0, u"First\nmore"_s, shop, 2));
    ASSERT_TRUE(settles(model->agentRuns().first()));
    const QString first = model->agentRuns().first()->facts().id.toString(QUuid::WithoutBraces);
    play("exit 3");
    ASSERT_TRUE(lists().start(1, u"Second"_s, root + u"/plain"_s, 0));
    ASSERT_TRUE(settles(model->agentRuns().first()));
    play("echo up; exec sleep 100");
    ASSERT_TRUE(lists().continueRun(first, u"Third"_s));
    AgentRun* third = model->agentRuns().first();
    ASSERT_TRUE(waitFor([third] { return !third->events().empty(); }));
    ASSERT_TRUE(waitFor([this] { return lists().runs()->rowCount() == 3; }));

    const QAbstractListModel& runs = *lists().runs();
    EXPECT_EQ(column(runs, "title"), (QStringList{u"Third"_s, u"Second"_s, u"First"_s}));
    EXPECT_EQ(column(runs, "runState"), (QStringList{u"running"_s, u"failed"_s, u"succeeded"_s}));
    EXPECT_EQ(column(runs, "agentLetters"), (QStringList{u"Cl"_s, u"Cx"_s, u"Cl"_s}));
    EXPECT_EQ(column(runs, "autonomyTitle"), (QStringList{u"Full auto"_s, u"Plan only"_s, u"Full auto"_s}));
    EXPECT_EQ(column(runs, "reason"), (QStringList{{}, u"Exited with code 3"_s, {}}));
    EXPECT_EQ(column(runs, "cost"), (QStringList{{}, {}, u"$0.02"_s}));
    EXPECT_EQ(column(runs, "changes"), (QStringList{{}, {}, u"1 file changed"_s}));
    EXPECT_EQ(at(runs, 0, "parentKey"), first);
    EXPECT_EQ(column(*lists().projectRuns(), "title"), (QStringList{u"First"_s, u"Third"_s}));
    EXPECT_EQ(lists().workingText(), u"1 working"_s);
    EXPECT_EQ(lists().projectTotalsText(), u"$0.02 · 15k in · 204 out"_s);
    lists().setFilterIndex(AgentModels::running);
    EXPECT_EQ(column(runs, "title"), QStringList{u"Third"_s});
    lists().setFilterIndex(AgentModels::finished);
    EXPECT_EQ(column(runs, "title"), (QStringList{u"Second"_s, u"First"_s}));

    lists().review(first);
    EXPECT_EQ(column(*lists().reviewFiles(), "key"), QStringList{u"a.txt"_s});
    EXPECT_EQ(lists().reviewText(), u"1 file changed, +1 −0."_s);
    RunReview review;
    review.setModel(model.get());
    review.setPath(u"a.txt"_s);
    review.setRunKey(first);
    EXPECT_TRUE(waitFor([&] { return review.lines()->added() == 1; })) << review.note().toStdString();
    EXPECT_EQ(review.note(), QString());
    review.setPath(u"b.txt"_s);
    EXPECT_EQ(review.lines()->rowCount(), 0);
    EXPECT_NE(review.note(), QString()) << "of which nothing is stored";
    review.setRunKey(at(runs, 0, "key").toString());
    EXPECT_TRUE(waitFor([&] { return review.note() == u"What this run changed is not known."; }))
        << review.note().toStdString();
    lists().stop(at(*lists().projectRuns(), 1, "key").toString());
    EXPECT_TRUE(waitFor([&] { return column(runs, "title").size() == 3; }));
    EXPECT_EQ(lists().workingText(), QString());
    play("true");
    EXPECT_TRUE(lists().retry(at(runs, 1, "key").toString()));
    EXPECT_EQ(model->agentRuns().first()->facts().task, u"Second"_s);
    EXPECT_FALSE(lists().retry(u"none"_s));
    EXPECT_EQ(lists().events(u"none"_s), nullptr);
}

TEST_F(AgentModelsTest, AreSeenAtTheirProjectAndAtTheTaskThatTheyWorkOn) {
    ProjectDetail detail;
    detail.setModel(model.get());
    detail.setProjectID(shop);
    const QAbstractItemModelTester tester(detail.latestRuns());
    model->addTask(u"Other"_s, {}, *model->project(shop));
    const QUuid task = model->addTask(u"Totals"_s, {}, *model->project(shop));
    model->projectTasks()->setProjectID(shop);
    play("true");
    for (const QString& title : {u"First"_s, u"Second"_s}) {
        ASSERT_TRUE(settles(model->startAgent(AgentKind::codex, title, *model->project(shop))));
    }
    play("echo up; exec sleep 100");
    model->startAgent(AgentKind::codex, u"Elsewhere"_s, *model->project(root + u"/plain"_s));
    AgentRun* run = model->startAgent(AgentKind::codex, u"Third"_s, *model->project(shop), task);
    ASSERT_NE(run, nullptr);
    EXPECT_TRUE(waitFor([&] { return column(*detail.latestRuns(), "title") == QStringList{u"Third"_s, u"Second"_s}; }));

    const auto withAgent = [this] {
        QStringList titles;
        const QAbstractListModel& open = *model->projectTasks()->open();
        for (int row = 0; row < open.rowCount(); ++row) {
            if (const QString agent = at(open, row, "agentName").toString(); !agent.isEmpty()) {
                titles.append(at(open, row, "title").toString() + u" by "_s + agent);
            }
        }
        return titles;
    };
    EXPECT_TRUE(waitFor([&] { return withAgent() == QStringList{u"Totals by Codex"_s}; }));
    model->stopAgent(run);
    EXPECT_TRUE(waitFor([&] { return withAgent().isEmpty(); }));
    EXPECT_TRUE(waitFor([&] { return column(*detail.latestRuns(), "runState").first() == u"stopped"; }));
    detail.setProjectID(u"/gone"_s);
    EXPECT_EQ(detail.latestRuns()->rowCount(), 0);
}

TEST_F(AgentModelsTest, GoOnInThePanelWithWhatWasSaidLast) {
    model->setAiPanelProjectID(shop);
    play("echo n >>a.txt; echo answer");
    const auto say = [this](const QString& text, int agent = -1, int autonomy = -1) {
        lists().setPanelAgent(agent);
        lists().setPanelAutonomy(autonomy);
        EXPECT_TRUE(lists().say(text)) << lists().error().toStdString();
        AgentRun* run = model->agentRuns().first();
        EXPECT_TRUE(settles(run));
        return run;
    };
    EXPECT_FALSE(lists().replies());
    const AgentRun* first = say(u"First"_s, 1, 2);
    EXPECT_TRUE(lists().replies());
    const AgentRun* reply = say(u"And\nmore"_s, -1, 0);
    EXPECT_EQ(reply->facts().parentID, first->facts().id);
    EXPECT_EQ(reply->facts().autonomy, AgentAutonomy::plan) << "as chosen now";
    EXPECT_TRUE(reply->facts().task.contains(u"First"_s)) << "an agent without sessions is told";
    EXPECT_EQ(lists().panelAgent(), 1);
    EXPECT_EQ(lists().panelAutonomy(), 0);
    EXPECT_EQ(say(u"Still"_s)->facts().autonomy, AgentAutonomy::plan) << "that of the run, not of the settings";
    lists().setPanelAgent(0);
    EXPECT_FALSE(lists().replies());
    EXPECT_EQ(lists().panelAutonomy(), 1);
    EXPECT_FALSE(say(u"To another one"_s)->facts().parentID);
    lists().beginAnew();
    EXPECT_FALSE(lists().replies());
    EXPECT_FALSE(say(u"New"_s)->facts().parentID);
    EXPECT_TRUE(lists().replies());
    const auto titles = [this] { return column(*lists().projectRuns(), "title").join(u'|'); };
    EXPECT_TRUE(waitFor([&] { return titles() == u"First|And|Still|To another one|New"_s; })) << titles().toStdString();
    EXPECT_EQ(column(*lists().projectRuns(), "asked")[1], u"And\nmore"_s);

    // A to-do item begins a run of its own, once, and none when its words were taken out.
    const QUuid task = model->addTask(u"Totals"_s, {}, *model->project(shop));
    lists().keepWords(shop, u"typed"_s);
    lists().keepWords({}, u"on the page"_s);
    lists().setPageProjectID(shop);
    model->draftAgentTaskFor(task.toString());
    model->setAiPanelProjectID(shop);
    EXPECT_FALSE(lists().replies());
    EXPECT_EQ(lists().words(shop), u"Totals\n\ntyped"_s) << "nothing is pushed aside";
    EXPECT_EQ(lists().words({}), u"Totals\n\non the page"_s);
    const AgentRun* drafted = say(u"Totals, please"_s);
    EXPECT_EQ(drafted->facts().linkedTaskID, task);
    EXPECT_EQ(drafted->facts().parentID, std::nullopt);
    EXPECT_EQ(model->agentDraft(), std::nullopt);
    EXPECT_EQ(lists().words(shop) + u'|' + lists().words({}), u"|on the page"_s);
    model->draftAgentTaskFor(task.toString());
    lists().forgetDraft(root + u"/plain"_s);
    EXPECT_NE(model->agentDraft(), std::nullopt) << "that of another project";
    lists().keepWords(shop, {});
    lists().beginAnew();
    EXPECT_EQ(say(u"Else"_s)->facts().linkedTaskID, std::nullopt);

    play("exec sleep 100");
    lists().beginAnew();
    ASSERT_TRUE(lists().say(u"Long"_s));
    EXPECT_FALSE(lists().replies()) << "it is at work";
    model->setAiPanelProjectID(root + u"/plain"_s);
    EXPECT_FALSE(lists().replies());
    lists().review(first->facts().id.toString(QUuid::WithoutBraces));
    EXPECT_EQ(lists().reviewBranch(), QString());
    lists().review(u"none"_s);
    EXPECT_EQ(lists().reviewKey(), QString());
}

TEST_F(AgentModelsTest, FillEachComposerWithWhatWasHandedToItLast) {
    const QString plain = root + u"/plain"_s;
    const auto task = [this](const QString& title, const QString& projectID) {
        return model->addTask(title, {}, *model->project(projectID)).toString();
    };
    const QString first = task(u"Round the totals"_s, shop);
    const QString second = task(u"Sort the cart"_s, shop);
    const QString other = task(u"Log less"_s, plain);
    // "p:" is what is typed on the page, "s:" in the panel of the first project; the others are handed over.
    struct Step {
        QStringList steps;
        QString page; ///< its project, linked item and words
        QString panel;
        QString otherPanel;
    };
    const QString firstOnly = u"Round the totals=Round the totals"_s;
    const QString otherOnly = u"Log less=Log less"_s;
    const Step table[]{
        {{first, other}, u"plain "_s + otherOnly, firstOnly, otherOnly},
        {{first, second}, u"shop Sort the cart=Sort the cart"_s, u"Sort the cart=Sort the cart"_s, u"="_s},
        {{first, u"p:Round totals up"_s, other},
         u"plain "_s + otherOnly,
         u"Round the totals=Round totals up"_s,
         otherOnly},
        {{first, u"p:Mine"_s, other}, u"plain "_s + otherOnly, u"=Mine"_s, otherOnly},
        {{first, u"s:Round the totals\n\nand mine"_s, second},
         u"shop Sort the cart=Sort the cart"_s,
         u"Sort the cart=Sort the cart\n\nand mine"_s,
         u"="_s},
        {{first, u"s:Total of the cart"_s}, u"shop "_s + firstOnly, u"Round the totals=Total of the cart"_s, u"="_s},
        {{first, u"s:Write the docs"_s}, u"shop "_s + firstOnly, u"=Write the docs"_s, u"="_s},
        {{first, u"s:Write the docs"_s, first},
         u"shop "_s + firstOnly,
         u"Round the totals=Round the totals\n\nWrite the docs"_s,
         u"="_s},
        {{first, u"s:"_s}, u"shop ="_s, u"="_s, u"="_s},
        {{first, u"unlink"_s}, u"shop "_s + firstOnly, u"=Round the totals"_s, u"="_s},
    };
    const auto shown = [this](const QString& place) {
        model->setAiPanelProjectID(place);
        return (place.isEmpty() ? lists().pageTask() : lists().panelTask()) + u'=' + lists().words(place);
    };
    for (const auto& [steps, page, panel, otherPanel] : table) {
        const std::string label = steps.join(u" > "_s).toStdString();
        for (const QString& place : {shop, plain, QString()}) {
            lists().keepWords(place, {});
        }
        lists().setPageProjectID({});
        for (const QString& step : steps) {
            model->setAgentError(u"Describe the task first."_s);
            if (step == u"unlink") {
                lists().unlinkTask(shop);
                continue;
            }
            if (step.startsWith(u"p:") || step.startsWith(u"s:")) {
                lists().keepWords(step.startsWith(u'p') ? QString() : shop, step.sliced(2));
            } else {
                model->draftAgentTaskFor(step);
            }
            EXPECT_EQ(lists().error(), QString()) << "it was said of what stood there: " << label;
        }
        EXPECT_EQ(QFileInfo(lists().pageProjectID()).fileName() + u' ' + shown({}), page) << label;
        EXPECT_EQ(shown(shop), panel) << label;
        EXPECT_EQ(shown(plain), otherPanel) << label;
    }

    // Each starts with its own item, whichever was handed over last.
    play("true");
    const auto itemOf = [this](bool isStarted) {
        EXPECT_TRUE(isStarted) << lists().error().toStdString();
        EXPECT_TRUE(settles(model->agentRuns().first()));
        return model->agentRuns().first()->facts().linkedTaskID.value_or(QUuid()).toString();
    };
    model->draftAgentTaskFor(first);
    model->draftAgentTaskFor(other);
    EXPECT_EQ(itemOf(lists().start(1, lists().words({}), plain, 0)), other);
    EXPECT_EQ(shown({}) + shown(plain), u"=="_s);
    model->setAiPanelProjectID(shop);
    lists().setPanelAgent(1);
    EXPECT_EQ(itemOf(lists().say(lists().words(shop))), first);
    model->draftAgentTaskFor(second);
    EXPECT_FALSE(lists().replies());
    lists().keepWords(shop, u"Thanks, and now?"_s);
    EXPECT_TRUE(lists().replies()) << "nothing of the item is left";
    EXPECT_EQ(itemOf(lists().say(u"Thanks, and now?"_s)), QUuid().toString());
    EXPECT_TRUE(model->agentRuns().first()->facts().parentID);
}

TEST_F(AgentModelsTest, GiveBackTheWordsOfWhatCouldNotStart) {
    model->setAiPanelProjectID(shop);
    lists().setPanelAgent(1);
    lists().setPanelAutonomy(0);
    ASSERT_TRUE(lists().say(u"First"_s));
    const AgentRun* first = model->agentRuns().first();
    ASSERT_TRUE(settles(first));
    const QString tooLong(200'000, u'x');
    ASSERT_TRUE(lists().say(u" "_s + tooLong));
    lists().keepWords(shop, u"typed meanwhile"_s);
    EXPECT_TRUE(waitFor([this] { return model->agentDraft().has_value(); }));
    EXPECT_TRUE(lists().error().contains(u"Argument list too long"_s)) << lists().error().toStdString();
    EXPECT_TRUE(model->agentDraft()->text == tooLong) << "what was said, not what the agent was told";
    EXPECT_TRUE(lists().words(shop) == tooLong + u"\n\ntyped meanwhile"_s);
    EXPECT_TRUE(lists().replies());
    lists().keepWords(shop, u"Shorter"_s);
    model->setAiPanelProjectID(root + u"/plain"_s);
    EXPECT_EQ(lists().words(root + u"/plain"_s), QString());
    EXPECT_EQ(lists().panelAgent(), 0);
    model->setAiPanelProjectID(shop);
    ASSERT_TRUE(lists().say(lists().words(shop)));
    const AgentRun* next = model->agentRuns().first();
    EXPECT_EQ(next->facts().parentID, first->facts().id);
    EXPECT_EQ(next->facts().autonomy, AgentAutonomy::plan);
    EXPECT_EQ(lists().words(shop), QString());
    EXPECT_EQ(model->agentDraft(), std::nullopt);
    EXPECT_TRUE(settles(next));
}

TEST_F(AgentModelsTest, RefuseAnAgentThatIsNotThere) {
    constexpr int gemini = 2;
    EXPECT_EQ(lists().whyMissing(gemini), QString()) << "nothing is known yet";
    ASSERT_TRUE(lists().start(gemini, u"x"_s, shop, 0));
    const AgentRun* before = model->agentRuns().first();
    ASSERT_TRUE(settles(before));
    const QString local = QDir::homePath() + u"/.local/bin"_s;
    ASSERT_TRUE(QDir().mkpath(local) && QFile::link(sourcePath(u"tests/agents/agent"_s), local + u"/gemini"_s));
    lists().lookForAgents();
    ASSERT_TRUE(waitFor([this] { return at(*lists().agents(), gemini, "isMissing").toBool(); }));
    EXPECT_TRUE(lists().whyMissing(gemini).contains(u"~/.local/bin")) << "a run of it does not look there";
    QFile::remove(local + u"/gemini"_s);
    EXPECT_EQ(lists().whyMissing(0) + lists().whyMissing(1), QString());
    model->setAiPanelProjectID(shop);
    lists().setPanelAgent(gemini);
    const std::pair<const char*, std::function<bool()>> ways[]{
        {"start", [this] { return lists().start(gemini, u"x"_s, shop, 0); }},
        {"say", [this] { return lists().say(u"x"_s); }}};
    for (const auto& [label, way] : ways) {
        model->setAgentError({});
        EXPECT_FALSE(way()) << label;
        EXPECT_TRUE(lists().error().contains(u"npm install -g @google/gemini-cli")) << label;
    }
    model->setAgentError({});
    QSignalSpy refused(&lists(), &AgentModels::refused);
    const QString key = before->facts().id.toString(QUuid::WithoutBraces);
    for (const bool isReply : {false, true}) {
        EXPECT_FALSE(isReply ? lists().continueRun(key, u"x"_s) : lists().retry(key));
        ASSERT_EQ(refused.count(), isReply ? 2 : 1);
        EXPECT_EQ(refused.last().first().toString(), key);
        EXPECT_TRUE(refused.last().last().toString().endsWith(u"then try again.")) << "there is no other to choose";
        EXPECT_EQ(lists().error(), QString()) << "it is said beside the run";
    }
    EXPECT_EQ(model->agentRuns().size(), 1);
    model->terminals().setShell(u"/bin/sh"_s);
    EXPECT_TRUE(lists().startInTerminal(gemini, u"x"_s, shop) && lists().error().isEmpty()) << "its shell says so";
    EXPECT_FALSE(lists().start(gemini, u"x"_s, shop, 0));
    lists().setPanelAgent(0);
    EXPECT_EQ(lists().error(), QString()) << "it was said of the other one";

    // Installed meanwhile: a press or two later it is found.
    EXPECT_FALSE(lists().start(gemini, u"x"_s, shop, 0));
    ASSERT_TRUE(QFile::link(sourcePath(u"tests/agents/agent"_s), tree.path(u"bin/gemini"_s)));
    ASSERT_TRUE(waitFor([this] { return lists().start(gemini, u"x"_s, shop, 0); }));
    EXPECT_TRUE(settles(model->agentRuns().first()));
}

TEST_F(AgentModelsTest, ShowTheEventsOfARunWithTheOneAtWork) {
    AgentRun run(AgentRun::Facts{}, {.events = 3, .textLength = 1000}, nullptr);
    auto* events = new AgentEventsModel(&run);
    const QAbstractItemModelTester tester(events);
    const auto appendTo = [](AgentRun& grown, const QList<AgentEvent>& added) {
        grown.append({AgentLine{.type = {}, .events = added, .sessionID = {}}});
    };
    const auto append = [&](const QList<AgentEvent>& added) { appendTo(run, added); };
    append({AgentText{u"I look"_s}, AgentTool{u"Grep"_s, u"cart"_s}});
    EXPECT_EQ(column(*events, "icon"), (QStringList{u"message-square"_s, u"search"_s}));
    EXPECT_EQ(column(*events, "isCurrent"), (QStringList{u"false"_s, u"true"_s}));
    append({AgentTool{u"Odd"_s, {}}, AgentTool{u"Bash"_s, u"ls"_s}});
    EXPECT_EQ(column(*events, "name"), (QStringList{u"Grep"_s, u"Odd"_s, u"Bash"_s}));
    append({AgentText{u"a"_s}, AgentText{u"b"_s}, AgentText{u"c"_s}, AgentText{u"d"_s}});
    EXPECT_EQ(column(*events, "text"), (QStringList{u"b"_s, u"c"_s, u"d"_s}));
    append({AgentResult{.success = false, .summary = u"No"_s, .costUSD = {}}});
    EXPECT_EQ(column(*events, "isCurrent"), (QStringList{u"false"_s, u"false"_s, u"true"_s}));
    EXPECT_EQ(column(*events, "icon").last(), u"circle-alert"_s);
    run.finish(1, QDateTime::currentDateTimeUtc());
    EXPECT_EQ(column(*events, "isCurrent"), (QStringList{u"false"_s, u"false"_s, u"false"_s}));

    // A plan that is written anew is one row until something else comes, also when the oldest go.
    AgentRun planned(AgentRun::Facts{}, {.events = 4, .textLength = 1000}, nullptr);
    const AgentTool plan{u"TodoWrite"_s, {}};
    appendTo(planned, {plan});
    auto* plans = new AgentEventsModel(&planned);
    const QAbstractItemModelTester plansTester(plans);
    const std::pair<QList<AgentEvent>, QString> steps[]{
        {{plan}, u"TodoWrite"_s},
        {{AgentText{u"Now"_s}, plan}, u"TodoWrite||TodoWrite"_s},
        {{plan}, u"TodoWrite||TodoWrite"_s},
        {{AgentTool{u"Bash"_s, u"ls"_s}}, u"|TodoWrite|Bash"_s},
        {{plan, plan, plan}, u"Bash|TodoWrite"_s},
        {{plan, plan}, u"TodoWrite"_s}};
    for (const auto& [added, names] : steps) {
        appendTo(planned, added);
        EXPECT_EQ(column(*plans, "name").join(u'|'), names);
        EXPECT_EQ(column(*plans, "isCurrent").last(), u"true"_s) << names.toStdString();
    }
}

TEST_F(AgentModelsTest, ShowTheAgentsAndChangeTheSettings) {
    const QAbstractItemModelTester tester(lists().agents());
    EXPECT_EQ(column(*lists().agents(), "status").first(), u"Not installed"_s);
    ASSERT_TRUE(finishes(model->agents().refresh()));
    const auto updated = [this](const QString& status) {
        return waitFor([&] { return column(*lists().agents(), "status").last() == status; });
    };
    EXPECT_TRUE(updated(u"No command set"_s));
    lists().setCustomCommand(u"mytool"_s);
    EXPECT_TRUE(updated(u"Command set"_s)) << "nothing has to be asked for that";
    EXPECT_EQ(column(*lists().agents(), "letters"), (QStringList{u"Cl"_s, u"Cx"_s, u"Ge"_s, u"An"_s, {}}));
    EXPECT_EQ(column(*lists().agents(), "action").mid(2), (QStringList{u"copyInstall"_s, u"copyInstall"_s, {}}));
    lists().setDefaultAgent(1);
    lists().setDefaultAgent(9);
    lists().setAutonomy(2);
    lists().setUsesWorktrees(true);
    EXPECT_TRUE(waitFor([this] { return at(*lists().agents(), 1, "isDefault").toBool(); }));
    EXPECT_EQ(column(*lists().autonomies(), "isDefault"), (QStringList{u"false"_s, u"false"_s, u"true"_s}));
    const AppSettings& settings = model->settings().settings();
    EXPECT_TRUE(settings.defaultAgent == AgentKind::codex && settings.agentWorktrees);
    EXPECT_EQ(lists().customCommand(), u"mytool"_s);

    // What holds an agent to a level is not the same for all of them, and nothing of ours holds a custom one.
    const struct {
        int agent, autonomy;
        QString words;
    } held[]{
        {0, 0, u"Changes nothing."_s},    {1, 0, u"sandbox"_s},     {1, 1, u"no network"_s},
        {2, 0, u"Is not told to plan"_s}, {2, 1, u"are refused"_s}, {4, 0, u"command line"_s},
        {4, 2, u"command line"_s},
    };
    for (const auto& [agent, autonomy, words] : held) {
        EXPECT_TRUE(lists().autonomyExplanation(agent, autonomy).contains(words)) << agent << ", " << autonomy;
    }
    EXPECT_EQ(column(*lists().agents(), "hasAutonomy").last(), u"false"_s);
    lists().setCustomCommand(u"true"_s);
    ASSERT_TRUE(lists().start(4, u"x"_s, shop, 0));
    ASSERT_TRUE(settles(model->agentRuns().first()));
    ASSERT_TRUE(waitFor([this] { return lists().runs()->rowCount() == 1; }));
    EXPECT_EQ(column(*lists().runs(), "autonomyTitle"), QStringList{QString()});
}

TEST_F(AgentModelsTest, TypeTasksAndSignInsIntoTerminals) {
    // The shell reads nothing of the user's and shows what it got.
    const QString task = u"it's\ta \"test\"\n$(id) `x`"_s;
    play("true");
    EXPECT_TRUE(lists().startInTerminal(0, task, shop));
    EXPECT_EQ(model->page(), (AppPage{.kind = AppPage::Kind::project, .id = shop}));
    EXPECT_EQ(model->detailTab(), DetailTab::terminal);
    ASSERT_EQ(model->terminals().sessions().size(), 1);
    EXPECT_EQ(model->terminals().sessions().first()->directory(), QUrl::fromLocalFile(shop));
    // The tab in it is none of the line editor's.
    EXPECT_TRUE(waitFor([this] { return readFile(tree.path(u"note"_s)).endsWith("\0\0"_ba); }));
    EXPECT_EQ(readFile(tree.path(u"note"_s)), "--\0"_ba + task.toUtf8() + "\0\0"_ba);
    EXPECT_FALSE(lists().startInTerminal(4, task, shop));
    EXPECT_EQ(lists().error(), u"A custom agent can't be started in a terminal."_s);
    QFile::remove(tree.path(u"note"_s));
    lists().signIn(1);
    EXPECT_TRUE(waitFor([this] { return readFile(tree.path(u"note"_s)).startsWith("login\0"_ba); }));
    lists().signIn(4);
    EXPECT_EQ(model->terminals().sessions().size(), 2);
    // No terminal that nobody would see.
    QDir(root).removeRecursively();
    tree.add(u"projects/"_s);
    scan();
    lists().signIn(1);
    EXPECT_EQ(model->terminals().sessions().size(), 2);
    EXPECT_TRUE(model->statusIsError() && model->statusText().contains(u"“codex login”"_s))
        << model->statusText().toStdString();
}

TEST_F(AgentModelsTest, OpenTheDesktopAgentWithTheTaskOnTheClipboard) {
    AppModel::Options options;
    options.settings = std::make_unique<SettingsStore>(tree.path(u"support/settings.json"_s));
    options.snapshotDirectory = tree.path(u"widgets"_s);
    options.agents = std::make_unique<AgentCatalog>(
        AgentCatalog::Options{.shell = {}, .antigravityApp = tree.add(u"Antigravity.app/"_s), .customCommand = {}});
    AppModel other(std::move(options));
    ASSERT_TRUE(finishes(other.refresh()));
    QStringList opened;
    other.openApplication = [&](const QString& application, const QString& folder) {
        opened << application << folder;
        return true;
    };
    other.setClipboard = [&](const QString& text) { opened << text; };
    EXPECT_EQ(other.startAgent(AgentKind::antigravity, u" Do it "_s, *other.project(shop)), nullptr);
    EXPECT_EQ(opened, (QStringList{tree.path(u"Antigravity.app"_s), shop, u"Do it"_s}));
    EXPECT_EQ(
        other.statusText(),
        u"Opened shop in Antigravity. The task is on your clipboard — paste it into the Agent Manager."_s);
    EXPECT_TRUE(other.agentRuns().isEmpty());
}
