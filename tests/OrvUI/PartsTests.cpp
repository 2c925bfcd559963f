#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/DevicesModel.h"
#include "OrvUI/FilterBar.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/NewProject.h"
#include "OrvUI/ProjectChoice.h"
#include "OrvUI/ProjectDetail.h"
#include "OrvUI/RelativeDate.h"
#include "OrvUI/RunChoices.h"
#include "OrvUI/ServiceLogs.h"
#include "OrvUI/StatusErrors.h"
#include "OrvUI/Suggestions.h"
#include "OrvUI/TaskLists.h"
#include "OrvUI/UndoOffer.h"
#include "tests/OrvUI/PartsFixture.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

TEST(RelativeDate, CountsDaysAsPeopleDo) {
    const QDateTime now(QDate(2026, 3, 2), QTime(0, 30), QTimeZone("Europe/Paris"));
    const struct {
        qint64 secondsAgo;
        QString day, moment;
    } cases[] = {
        {-100, u"today"_s, u"just now"_s},
        {59, u"today"_s, u"just now"_s},
        {60, u"today"_s, u"1 minute ago"_s},
        {2 * 3600, u"yesterday"_s, u"2 hours ago"_s},
        {13 * 3600, u"yesterday"_s, u"yesterday"_s},
        {2 * 86400, u"2 days ago"_s, u"2 days ago"_s},
        {7 * 86400, u"last week"_s, u"last week"_s},
        {15 * 86400, u"2 weeks ago"_s, u"2 weeks ago"_s},
        {31 * 86400, u"last month"_s, u"last month"_s},
        {100 * 86400, u"3 months ago"_s, u"3 months ago"_s},
        {400 * 86400, u"last year"_s, u"last year"_s},
        {800 * 86400, u"2 years ago"_s, u"2 years ago"_s},
    };
    for (const auto& [seconds, day, moment] : cases) {
        const QDateTime then = now.addSecs(-seconds).toUTC();
        EXPECT_EQ(RelativeDate::day(then, now), day) << seconds;
        EXPECT_EQ(RelativeDate::moment(then, now), moment) << seconds;
    }
}

TEST_F(PartsTest, FiltersNarrowTheProjectsAndSayWhatIsChosen) {
    addInstalled(u"alone"_s, "vite", up(4101));
    addInstalled(u"clients/one"_s, "express", up(4102));
    addInstalled(u"clients/two"_s, "vite", up(4103));
    tree.add(u"projects/clients/one/.git/"_s);
    tree.add(u"projects/clients/two/.git/"_s);
    scan();
    FilterBar& bar = *model->filterBar();
    const QAbstractItemModelTester tester(model->homeCards(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    const QList<QByteArray> roles{"name", "isCollection"};
    becomes(*model->homeCards(), roles, u"alone|false; clients|true"_s);
    EXPECT_EQ(model->appsInCollections().size(), 2);
    becomes(*bar.frameworks(), {"title", "isOn"}, u"Express|false; Vite|false"_s);

    bar.toggle(u"framework:Vite"_s);
    bar.toggle(u"kind:Frontend"_s);
    becomes(*model->homeCards(), roles, u"alone|false; two|false"_s);
    bar.setCollections(2);
    becomes(*model->homeCards(), roles, u"alone|false"_s);
    EXPECT_EQ(text(*bar.chips(), {"title"}), u"Frontend; Vite; Collections hidden"_s);
    EXPECT_EQ(bar.activeCount(), 3);
    bar.toggle(u"collections"_s);
    bar.toggle(u"kind:Frontend"_s);
    EXPECT_EQ(text(*bar.chips(), {"title"}), u"Vite"_s);
    bar.setCollections(3);
    becomes(*model->homeCards(), roles, u"clients|true"_s);
    bar.setCollections(9);
    bar.clear();
    EXPECT_EQ(model->filters(), ProjectFilterSet());
    bar.setCollections(1);
    bar.setOnlyPinned(true);
    model->togglePin(project(u"clients/one"_s));
    becomes(*model->homeCards(), roles, u"one|false"_s);
    bar.setOnlyPinned(false);
    bar.setGit(1);
    becomes(*model->homeCards(), roles, u""_s);
    ASSERT_EQ(QProcess::execute(u"git"_s, {u"-C"_s, root + u"/alone"_s, u"init"_s, u"-q"_s}), 0);
    EXPECT_TRUE(finishes(model->refreshGitBadges()));
    becomes(*model->homeCards(), roles, u"alone|false"_s);
    bar.clear();
    bar.setOnlyUncommitted(true);
    becomes(*model->homeCards(), roles, u"alone|false"_s);
    model->suggestions()->perform(u"uncommitted"_s);
    EXPECT_EQ(model->page().id, root + u"/alone"_s);
    EXPECT_EQ(model->detailTab(), DetailTab::git);

    ASSERT_EQ(QProcess::execute(u"git"_s, {u"-C"_s, root + u"/clients/one"_s, u"init"_s, u"-q"_s}), 0);
    EXPECT_TRUE(finishes(model->refreshGitBadges()));
    bar.setCollections(2);
    bar.setOnlyRunning(true);
    model->setFilter(ProjectFilter::running);
    model->setSearchText(u"nothing"_s);
    model->suggestions()->perform(u"uncommitted"_s);
    EXPECT_EQ(model->page(), AppPage());
    becomes(*model->homeCards(), roles, u"alone|false; one|false"_s);
}

TEST_F(PartsTest, TasksStandByProject) {
    for (const QString& name : {u"zoo"_s, u"ant"_s, u"bee"_s}) {
        addInstalled(name, "vite", up(4104));
    }
    scan();
    model->togglePin(project(u"zoo"_s));
    TaskLists& lists = *model->taskLists();
    const QAbstractItemModelTester tester(lists.open(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    EXPECT_FALSE(lists.add(u"  "_s, {}, project(u"ant"_s).id));
    EXPECT_FALSE(lists.add(u"title"_s, {}, u"/nowhere"_s));
    for (const auto& [title, owner] :
         {std::pair{u"b1"_s, u"bee"_s}, {u"a1"_s, u"ant"_s}, {u"z1"_s, u"zoo"_s}, {u"a2"_s, u"ant"_s}}) {
        EXPECT_TRUE(lists.add(title, u" note "_s, project(owner).id));
    }
    const QList<QByteArray> roles{"projectName", "title", "groupCount", "when"};
    becomes(*lists.open(), roles, u"zoo|z1|1|today; ant|a1|2|today; ant|a2|2|today; bee|b1|1|today"_s);
    const auto key = [&](int row) {
        return lists.open()->index(row, 0).data(lists.open()->roleNames().key("key")).toString();
    };
    lists.rename(key(1), u" renamed "_s, {});
    lists.rename(key(2), u" "_s, {});
    lists.setDone(key(0), true);
    becomes(*lists.open(), roles, u"ant|renamed|2|today; ant|a2|2|today; bee|b1|1|today"_s);
    becomes(*lists.recentlyDone(), {"title", "when", "isDone"}, u"z1|just now|true"_s);
    model->setPage({.kind = AppPage::Kind::project, .id = project(u"bee"_s).id});
    becomes(*model->projectTasks()->open(), {"title"}, u"b1"_s);
    EXPECT_EQ(model->projectTasks()->doneCount(), 0);
    lists.remove(key(2));
    becomes(*model->projectTasks()->open(), {"title"}, u""_s);
}

TEST_F(PartsTest, AProjectIsChosenAmongAllOfThem) {
    for (const QString& name : {u"shop"_s, u"shopfront"_s, u"blog"_s}) {
        tree.add(u"projects/%1/index.html"_s.arg(name), "");
    }
    ProjectChoice choice;
    const QAbstractItemModelTester tester(choice.rows(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    choice.setModel(model.get());
    choice.choose(root + u"/blog"_s);
    EXPECT_EQ(choice.name(), QString()) << "nothing was found yet";
    scan();
    EXPECT_EQ(choice.name(), u"blog"_s);
    EXPECT_EQ(choice.rows()->rowCount(), 0) << "nobody looks";
    model->setSearchText(u"nothing of that name"_s);
    choice.setListing(true);
    EXPECT_EQ(text(*choice.rows(), {"name"}), u"blog; shop; shopfront"_s) << "whatever the home page shows";
    choice.setText(u"SHOP"_s);
    EXPECT_EQ(text(*choice.rows(), {"name"}), u"shop; shopfront"_s);
    EXPECT_FALSE(choice.chooseAt(2));
    EXPECT_TRUE(choice.chooseAt(1));
    EXPECT_EQ(choice.projectID(), root + u"/shopfront"_s);
    EXPECT_EQ(choice.tileLetter(), u"S"_s);
    choice.setListing(false);
    EXPECT_EQ(choice.rows()->rowCount(), 0);
}

TEST_F(PartsTest, ErrorsOutliveANewerMessageUntilTheyAreDismissedOrOver) {
    StatusErrors errors;
    const QAbstractItemModelTester tester(errors.rows(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    errors.setTime(std::chrono::hours(1));
    errors.setModel(model.get());
    const auto say = [this](const QString& words, bool isError) {
        model->setStatusMessage(StatusMessage{.text = words, .isError = isError});
    };
    const auto kept = [&] { return text(*errors.rows(), {"text"}); };
    say(u"no network"_s, true);
    EXPECT_EQ(kept(), QString()) << "it is the newest";
    say(u"pulled shop"_s, false);
    EXPECT_EQ(kept(), u"no network"_s);
    say(u"no disk"_s, true);
    EXPECT_EQ(kept(), u"no network"_s) << "a report makes room";
    say(u"no power"_s, true);
    say(u"no network"_s, true);
    EXPECT_EQ(kept(), u"no disk; no power"_s) << "what comes again stands once";
    say(u"no hope"_s, true);
    EXPECT_EQ(kept(), u"no power; no network"_s) << "two at most";
    errors.dismiss(errors.rows()->index(0, 0).data(Qt::UserRole).toString());
    EXPECT_EQ(kept(), u"no network"_s);
    model->dismissStatusMessage();
    say(u"pulled blog"_s, false);
    EXPECT_EQ(kept(), u"no network"_s) << "what was dismissed does not come back";
    errors.dismiss(errors.rows()->index(0, 0).data(Qt::UserRole).toString());
    errors.setTime(std::chrono::milliseconds(20));
    say(u"no luck"_s, true);
    say(u"pulled shop"_s, false);
    EXPECT_TRUE(waitFor([&] { return kept().isEmpty(); }));
}

TEST_F(PartsTest, NotificationsTellWhatHappenedBehindTheUsersBack) {
    addNode(u"shop"_s, "express", "echo http://localhost:4105; while [ ! -e stop ]; do sleep 0.1; done; exit 3\n");
    scan();
    EXPECT_TRUE(finishes(model->setNotificationsEnabled(true)));
    EXPECT_EQ(model->notificationStatusText(), u"Shown by asked"_s);
    const Project shop = project(u"shop"_s);
    model->run(shop, {ServiceKind::backend});
    ASSERT_TRUE(waitFor([&] { return model->setup().has_value(); }));
    model->confirmInstall();
    const QString ready = u"shop is ready / Backend is running on localhost:4105. / http://localhost:4105"_s;
    ASSERT_TRUE(waitFor([&] { return !posted.isEmpty(); }));
    EXPECT_EQ(posted, QStringList{ready}) << "the install is none of it";
    EXPECT_EQ(model->runningPorts(shop), QList{4105});
    tree.add(u"projects/shop/stop"_s);
    ASSERT_TRUE(waitFor([&] { return posted.size() == 2; }));
    EXPECT_TRUE(posted[1].startsWith(u"shop stopped unexpectedly / Backend: Exited with code 3"_s));

    isActive = true;
    // What was put aside, with the window in front: told where that is wanted.
    addNode(u"broken"_s, "vite", "true\n");
    addScript(u"broken"_s, u"npm-install.sh"_s, "while [ ! -e go ]; do sleep 0.02; done; exit 3\n");
    scan();
    for (const bool onlyInBackground : {true, false}) {
        model->changeSettings([=](AppSettings& settings) { settings.notifyOnlyInBackground = onlyInBackground; });
        QFile::remove(tree.path(u"projects/broken/go"_s));
        EXPECT_TRUE(finishes(model->run(project(u"broken"_s), {ServiceKind::frontend})));
        const QFuture<void> end = model->confirmInstall();
        model->setSetupAside(true);
        tree.add(u"projects/broken/go"_s);
        ASSERT_TRUE(finishes(end));
        EXPECT_EQ(posted.size(), onlyInBackground ? 2 : 3) << posted.join(u'\n').toStdString();
        model->cancelInstall();
    }
    EXPECT_TRUE(posted.takeLast().startsWith(u"Setting up broken stopped / Exited with code 3"_s));
    model->newProject()->clone(root + u"/none.git"_s, u"none"_s, root);
    model->newProject()->setAside(true);
    EXPECT_TRUE(waitFor([&] { return posted.size() == 3; }));
    EXPECT_TRUE(posted.takeLast().startsWith(u"none was not cloned / "_s));
    model->changeSettings([](AppSettings& settings) { settings.notifyOnlyInBackground = true; });

    QFile::remove(tree.path(u"projects/shop/stop"_s));
    model->toggleRun(shop);
    ASSERT_TRUE(waitForPhase(shop, ServiceKind::backend, ServiceState::Phase::running));
    EXPECT_TRUE(finishes(model->stop(shop)));
    isActive = false;
    model->post(AgentFinished{u"shop"_s, shop.id, u"Codex"_s, true, {}});
    EXPECT_EQ(posted.size(), 3) << "neither what the user sees nor what he stopped";
    Q_EMIT model->projectAdded(u"blog"_s, root + u"/blog"_s, true);
    EXPECT_TRUE(posted.last().startsWith(u"blog was cloned"_s));

    bool isOpen = false;
    model->setOpenMainWindowAction([&] { isOpen = true; });
    const QString service = HomeModels::key(id(shop, ServiceKind::backend));
    const TerminalSession* terminal = model->terminals().open(QUrl::fromLocalFile(root));
    model->terminals().open(QUrl::fromLocalFile(root));
    const AppPage page{.kind = AppPage::Kind::project, .id = shop.id};
    const AppPage all{.kind = AppPage::Kind::ai, .id = {}};
    using Part = NotificationPart::Kind;
    const struct {
        QString project;
        NotificationPart part;
        AppPage page;
        DetailTab tab;
        std::optional<QString> panel;
    } clicks[] = {
        {shop.id, {Part::terminal, terminal->id().toString()}, page, DetailTab::terminal, {}},
        {shop.id, {}, page, DetailTab::overview, {}},
        {shop.id, {Part::logs, service}, page, DetailTab::logs, {}},
        {u"/gone"_s, {Part::logs, service}, AppPage(), DetailTab::logs, {}},
        {u"/gone"_s, {Part::agents, {}}, all, DetailTab::logs, {}},
        {shop.id, {Part::agents, {}}, page, DetailTab::logs, shop.id},
    };
    for (const auto& it : clicks) {
        model->setPage({});
        isOpen = false;
        notifier->projectClicked(it.project, it.part);
        EXPECT_TRUE(isOpen);
        EXPECT_EQ(model->page(), it.page) << static_cast<int>(it.part.kind);
        EXPECT_EQ(model->detailTab(), it.tab) << static_cast<int>(it.part.kind);
        EXPECT_EQ(model->aiPanelProjectID(), it.panel) << static_cast<int>(it.part.kind);
    }
    EXPECT_EQ(model->terminals().selectedID(), terminal->id());
    EXPECT_EQ(model->logs()->shownKey(), service);
    QUrl opened;
    model->openUrl = [&](const QUrl& url) {
        opened = url;
        return true;
    };
    notifier->addressClicked(QUrl(u"http://localhost:4105"_s));
    EXPECT_EQ(opened.port(), 4105);
}

TEST_F(PartsTest, ProgramsInTerminalsAreHeardUnlessTheUserSeesThem) {
    addNode(u"shop"_s, "express", "true\n");
    scan();
    const QUrl folder = QUrl::fromLocalFile(root + u"/shop/lib"_s);
    tree.add(u"projects/shop/lib/a"_s);
    TerminalSession* build = model->terminals().open(folder);
    TerminalSession* tests = model->terminals().open(folder);
    const auto says = [](TerminalSession* session, const std::string& bytes) {
        QSignalSpy heard(session, &TerminalSession::notificationRequested);
        session->terminal().feed(bytes);
        return waitFor([&] { return !heard.isEmpty(); });
    };
    EXPECT_TRUE(says(build, "\x1b]777;notify;Build;off\a"));
    EXPECT_TRUE(finishes(model->setNotificationsEnabled(true)));
    EXPECT_TRUE(says(build, "\x1b]777;notify;Build;first\a"));
    EXPECT_TRUE(says(build, "\x1b]777;notify;Build;too soon\a"));
    isActive = true;
    tests->setShown(true);
    EXPECT_TRUE(says(tests, "\x1b]777;notify;Tests;seen\a"));
    tests->setShown(false);
    EXPECT_TRUE(says(tests, "\x1b]9;" + std::string(2000, 'x') + "\a"));
    ASSERT_EQ(posted.size(), 2) << posted.join(u'\n').toStdString();
    EXPECT_EQ(posted.first(), u"Build / first / "_s);
    EXPECT_EQ(posted.last(), tests->title() + u" / "_s + QString(500, u'x') + u" / "_s);
}

TEST_F(PartsTest, TheLastActionIsTheCardsOwnAfterARestartToo) {
    addInstalled(u"shop/web"_s, "vite", up(4106));
    addInstalled(u"shop/api"_s, "express", up(4107));
    addInstalled(u"blog"_s, "astro", up(4108));
    scan();
    EXPECT_EQ(model->primaryAction(project(u"shop"_s)), RunAction::both);
    EXPECT_TRUE(finishes(model->run(project(u"shop"_s), {ServiceKind::backend})));
    EXPECT_TRUE(finishes(model->run(project(u"blog"_s), {ServiceKind::frontend})));
    const QList<ServiceID> services = model->services(project(u"blog"_s));
    EXPECT_TRUE(finishes(model->stopAllServices()));
    makeModel();
    scan();
    const Project shop = project(u"shop"_s);
    EXPECT_EQ(model->primaryAction(shop), RunAction::backend) << "another project was run since";
    ProjectDetail page;
    page.setModel(model.get());
    page.setProjectID(shop.id);
    EXPECT_TRUE(waitFor([&] { return page.defaultAction() == u"Backend"; })) << "and its page's";
    model->togglePin(shop);
    EXPECT_EQ(model->pinnedEntries(), (QList<PinnedEntry>{{shop.id, u"Run shop"_s, false}}));
    EXPECT_TRUE(finishes(model->toggleRun(shop)));
    EXPECT_TRUE(state(shop, ServiceKind::backend).isActive());
    EXPECT_FALSE(state(shop, ServiceKind::frontend).isActive());
    EXPECT_TRUE(waitFor([&] { return page.defaultAction() == u"Frontend"; })) << "that one runs already";
}

TEST_F(PartsTest, WhatAnotherProcessChoosesIsTakenIn) {
    addInstalled(u"shop/web"_s, "vite", up(4112));
    addInstalled(u"shop/api"_s, "express", up(4113));
    scan();
    const Project shop = project(u"shop"_s);
    model->devices()->setProjectID(shop.id);
    becomes(*model->cards(), {"defaultAction"}, u"Both"_s);
    RunChoices other(tree.path(u"support/choices.json"_s));
    EXPECT_TRUE(other.setAction(shop.id, u"Backend"_s));
    EXPECT_TRUE(other.setDevice(shop.id, u"flutter:linux"_s));
    becomes(*model->cards(), {"defaultAction"}, u"Backend"_s);
    EXPECT_EQ(model->devices()->chosenKey(), u"flutter:linux"_s);
    // Neither loses what the other one has written since it last looked.
    EXPECT_TRUE(model->devices()->choose(u"/other"_s, u"flutter:chrome"_s));
    EXPECT_TRUE(other.setDevice(shop.id, {}));
    const RunChoices now(tree.path(u"support/choices.json"_s));
    EXPECT_EQ(now.of(u"/other"_s).device, u"flutter:chrome"_s);
    EXPECT_EQ(now.of(shop.id), (RunChoice{.action = u"Backend"_s, .device = {}}));
}

TEST_F(PartsTest, SuggestionsDoWhatTheySayAndStayAway) {
    addInstalled(u"shop"_s, "express", up(4109));
    model->settings().change(
        [&](AppSettings& settings) { settings.lastRun = LastRun{root + u"/shop"_s, u"Backend"_s}; });
    scan();
    Suggestions& suggestions = *model->suggestions();
    suggestions.setLimit(4);
    becomes(*suggestions.cards(), {"key"}, u"resume; add-project; login; themes"_s);
    suggestions.perform(u"login"_s);
    EXPECT_TRUE(startsAtLogin);
    suggestions.dismiss(u"themes"_s);
    suggestions.dismiss(u"no such"_s);
    becomes(*suggestions.cards(), {"key"}, u"resume; add-project"_s);
    suggestions.perform(u"add-project"_s);
    EXPECT_TRUE(model->sheet().has_value());
    suggestions.perform(u"git-identity"_s);
    EXPECT_EQ(model->page().section, SettingsSection::git);
    suggestions.perform(u"resume"_s);
    ASSERT_TRUE(waitForPhase(project(u"shop"_s), ServiceKind::backend, ServiceState::Phase::running));
    becomes(*suggestions.cards(), {"key"}, u"add-project"_s);
    makeModel();
    scan();
    becomes(*model->suggestions()->cards(), {"key"}, u"resume; add-project"_s);
    model->suggestions()->bringBack();
    becomes(*model->suggestions()->cards(), {"key"}, u"resume; add-project; themes"_s);
}

TEST_F(PartsTest, SuggestionsResumeWhatIsStillThere) {
    addInstalled(u"shop"_s, "express", up(4116));
    scan();
    Suggestions& suggestions = *model->suggestions();
    suggestions.setLimit(9);
    const auto isOffered = [&] { return text(*suggestions.cards(), {"key"}).contains(u"resume"_s); };
    for (const auto& [action, isThere] :
         {std::pair{u"Backend"_s, true},
          {u"Frontend"_s, false},
          {u"Older than this"_s, true},
          {u"Docker"_s, false},
          {u"Both"_s, true}}) {
        const LastRun last{root + u"/shop"_s, action};
        EXPECT_TRUE(model->settings().change([&](AppSettings& settings) { settings.lastRun = last; }));
        EXPECT_TRUE(waitFor([&] { return isOffered() == isThere; })) << action.toStdString();
    }
    suggestions.perform(u"resume"_s);
    EXPECT_TRUE(waitForPhase(project(u"shop"_s), ServiceKind::backend, ServiceState::Phase::running));
}

TEST_F(PartsTest, WhatWasDoneLastIsTakenBackForAWhile) {
    for (const QString& name : {u"ant"_s, u"bee"_s, u"cat"_s}) {
        addInstalled(name, "vite", up(4117));
    }
    scan();
    const Project bee = project(u"bee"_s);
    for (const QString& title : {u"first"_s, u"second"_s, u"third"_s}) {
        model->addTask(title, u"note"_s, bee);
    }
    const QList<ProjectTask> tasks = model->tasks();
    model->deleteTask(tasks[1].id);
    EXPECT_EQ(model->undoText(), u"Deleted “second”."_s);
    model->deleteTask(QUuid::createUuid());
    model->undo();
    EXPECT_EQ(model->tasks(), tasks) << "where it stood, as it was";
    EXPECT_EQ(model->undoText(), QString());
    model->undo();
    EXPECT_EQ(model->tasks(), tasks);

    for (const QString& name : {u"cat"_s, u"bee"_s, u"ant"_s}) {
        model->togglePin(project(name));
        EXPECT_EQ(model->undoText(), QString()) << "a pin is taken away the way it was set";
    }
    const auto pins = [this] { return model->settings().settings().pinnedProjectIDs; };
    const auto before = pins();
    model->deleteTask(tasks[0].id);
    model->togglePin(bee);
    EXPECT_EQ(model->undoText(), u"Unpinned bee."_s);
    model->undo();
    EXPECT_EQ(pins(), before);
    EXPECT_EQ(model->tasks().size(), 2) << "the last thing only";
    model->togglePin(bee);
    model->dismissUndo();
    model->undo();
    EXPECT_FALSE(pins().contains(bee.id));

    UndoOffer offer(std::chrono::milliseconds(20));
    int undone = 0;
    offer.offer(u"Gone."_s, [&] { ++undone; });
    EXPECT_TRUE(waitFor([&] { return offer.text().isEmpty(); }));
    offer.accept();
    EXPECT_EQ(undone, 0) << "too late";
}

TEST_F(PartsTest, TheLogOfAServiceIsReadFromItsFirstLineOn) {
    addInstalled(u"shop"_s, "express", "seq 7000; echo Listening on http://localhost:4111; exec sleep 100\n");
    scan();
    const Project shop = project(u"shop"_s);
    model->setPage({.kind = AppPage::Kind::project, .id = shop.id});
    model->run(shop, {ServiceKind::backend});
    ASSERT_TRUE(waitForPhase(shop, ServiceKind::backend, ServiceState::Phase::running));
    ServiceLogs& logs = *model->logs();
    becomes(*logs.services(), {"label", "phase", "port", "isShown"}, u"Backend|running|:4111|true"_s);
    const auto row = [&](int place) {
        const QModelIndex index = logs.lines()->index(place);
        return index.data(LogModel::NumberRole).toString() + u' ' + index.data(LogModel::TextRole).toString();
    };
    EXPECT_EQ(logs.lines()->rowCount(), ProcessManager::maxLogLines);
    EXPECT_EQ(row(0), u"2002 2002"_s);
    logs.setProjectID({});
    EXPECT_EQ(logs.lines()->rowCount(), 0);
    logs.setProjectID(shop.id);
    EXPECT_EQ(row(4999), u"7001 Listening on http://localhost:4111"_s) << "opened later, the numbers are the same";
    logs.lines()->clear();
    logs.setProjectID({});
    logs.setProjectID(shop.id);
    EXPECT_EQ(logs.lines()->rowCount(), 0) << "what was cleared stays away";
    const QFuture<void> restarted = model->restart(shop, {id(shop, ServiceKind::backend)});
    EXPECT_TRUE(test::finishes(restarted));
    EXPECT_TRUE(waitFor([&] { return logs.lines()->rowCount() == ProcessManager::maxLogLines; }))
        << "until the next start";
}
