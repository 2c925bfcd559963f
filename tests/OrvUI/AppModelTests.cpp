#include "OrvUI/NameSearch.h"
#include "OrvUI/ScanWatch.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QDir>

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;
using testing::ElementsAre;

using AppModelTest = ModelFixture;

TEST_F(AppModelTest, ScansOnceForTwoCallers) {
    addInstalled(u"shop"_s, "vite", up(4001));
    QStringList changes;
    QObject::connect(model.get(), &AppModel::isScanningChanged, model.get(), [&] {
        changes.append(model->isScanning() ? u"begin"_s : u"end with %1"_s.arg(model->projects().size()));
    });
    const QFuture<void> first = model->refresh();
    const QFuture<void> second = model->refresh();
    EXPECT_TRUE(model->isScanning());
    ASSERT_TRUE(finishes(first) && finishes(second));
    EXPECT_THAT(changes, ElementsAre(u"begin"_s, u"end with 1"_s));

    int told = 0;
    QObject::connect(model.get(), &AppModel::projectsChanged, model.get(), [&] { ++told; });
    scan();
    EXPECT_EQ(told, 0) << "nothing had changed";
}

TEST_F(AppModelTest, EndsInTheMiddleOfAScan) {
    for (int i = 0; i < 200; ++i) {
        addInstalled(u"p%1/web"_s.arg(i), "vite", up(4001));
    }
    const QFuture<void> scan = model->refresh();
    model.reset();
    EXPECT_TRUE(scan.isFinished());
}

TEST_F(AppModelTest, RunsWhatAUrlNames) {
    addInstalled(u"shop/web"_s, "vite", up(3000));
    addInstalled(u"shop/api"_s, "express", up(8000));
    addInstalled(u"with space+1"_s, "express", up(8001));
    addInstalled(u"other"_s, "express", up(8002));
    const QUrl shop(u"orvlauncher://run?project="_s + root + u"/shop"_s);

    ASSERT_TRUE(finishes(model->handle(QUrl(u"orvlauncher://run?project="_s + root + u"/other"_s))));
    ASSERT_TRUE(finishes(model->handle(shop)));
    EXPECT_EQ(model->queuedURL(), shop) << "the later one takes the place of the earlier";
    EXPECT_TRUE(model->processes().states().isEmpty());
    scan();
    EXPECT_EQ(model->queuedURL(), std::nullopt);
    ASSERT_TRUE(waitFor([&] { return model->runningCount() == 2; })) << "both services of the queued one";

    const struct {
        const char* label;
        QString url;
        bool isRun;
    } cases[] = {
        {"another scheme", u"http://run?project=%1/other"_s, false},
        {"another host", u"orvlauncher://stop?project=%1/other"_s, false},
        {"no project", u"orvlauncher://run?name=%1/other"_s, false},
        {"an unknown project", u"orvlauncher://run?project=%1/nothing"_s, false},
        {"percent-encoded", u"orvlauncher://run?project=%1/with%20space%2B1"_s, true},
        {"in capitals", u"OrvLauncher://RUN?project=%1/other"_s, true},
    };
    for (const auto& [label, url, isRun] : cases) {
        const auto before = model->processes().states().size();
        ASSERT_TRUE(finishes(model->handle(QUrl(url.arg(root))))) << label;
        EXPECT_EQ(model->processes().states().size() - before, isRun ? 1 : 0) << label;
    }
    EXPECT_EQ(model->statusMessage(), std::nullopt) << "what makes no sense is dropped without a word";
}

TEST_F(AppModelTest, PublishesWhatTheWidgetsShow) {
    addInstalled(u"b/web"_s, "vite", up(3000));
    addInstalled(u"b/api"_s, "express", up(8000));
    // Its last lines are still on their way when its processes are gone.
    const QByteArray chatty = "echo Local: http://localhost:8001/\nl=$(head -c 1500 /dev/zero | tr '\\0' x)\n"
                              "while :; do echo $l; done\n";
    addInstalled(u"B2"_s, "express", chatty);
    addInstalled(u"a"_s, "express", "echo no port yet; exec sleep 100\n");
    scan();
    int reloads = 0;
    model->setReloadWidgets([&] { ++reloads; });
    const Project b = project(u"b"_s);
    const Project big = project(u"B2"_s);
    for (const Project& started : {b, big, project(u"a"_s)}) {
        ASSERT_TRUE(finishes(model->run(started, kinds(*AppModel::defaultAction(started)))));
    }
    ASSERT_TRUE(waitFor([&] { return model->runningCount() == 3; }));
    EXPECT_EQ(model->menuBarTitle(), u"3"_s) << "one is only starting";
    QStringList running;
    const auto published = snapshot();
    for (const auto& entry : published->running) {
        running.append(u"%1 %2 %3"_s.arg(entry.projectName, rawValue(entry.kind)).arg(entry.port.value_or(0)));
    }
    EXPECT_THAT(running, ElementsAre(u"B2 backend 8001"_s, u"b backend 8000"_s, u"b frontend 3000"_s));
    EXPECT_TRUE(model->shouldConfirmQuit());
    model->togglePin(big);
    for (int i = 0; i < 7; ++i) {
        model->setTaskDone(model->addTask(u"task %1"_s.arg(i), {}, b), i != 0);
    }

    const auto shown = snapshot();
    EXPECT_THAT(shown->pinned, ElementsAre(WidgetSnapshot::PinnedProject{big.id, big.name}));
    EXPECT_EQ(shown->tasks.size(), 5);
    EXPECT_EQ(shown->openTaskCount, 1);

    ASSERT_TRUE(finishes(model->stopAllServices()));
    EXPECT_EQ(model->menuBarTitle(), QString());
    EXPECT_EQ(snapshot()->running.size(), 0);
    ASSERT_TRUE(waitFor([&] { return reloads > 0; }));
    const int before = reloads;
    model->publishSnapshot();
    model->flushSnapshot();
    EXPECT_EQ(reloads, before) << "the same again is not written";
}

TEST_F(AppModelTest, AsksTheShellForTheDockIconThatTheSettingsWant) {
    model->applyDockIconPolicy(); // on a platform that has none
    QList<ActivationPolicy> policies;
    model->setActivationPolicy = [&](ActivationPolicy policy) { policies.append(policy); };
    model->applyDockIconPolicy();
    model->settings().change([](AppSettings& settings) { settings.showDockIcon = false; });
    model->applyDockIconPolicy();
    EXPECT_THAT(policies, ElementsAre(ActivationPolicy::regular, ActivationPolicy::accessory));
}

TEST_F(AppModelTest, KnowsWhetherTheQuickPanelHasItsKey) {
    QList<bool> asked;
    bool isFree = false;
    int told = 0;
    QObject::connect(model.get(), &AppModel::quickPanelShortcutAppliedChanged, model.get(), [&] { ++told; });
    const auto turn = [this](bool isOn) {
        model->changeSettings([isOn](AppSettings& settings) { settings.quickPanelShortcutEnabled = isOn; });
    };
    turn(true);
    EXPECT_FALSE(model->isQuickPanelShortcutApplied()) << "nobody takes keys";
    model->setApplyQuickPanelShortcut([&](bool isOn) {
        asked.append(isOn);
        return isFree || !isOn;
    });
    EXPECT_FALSE(model->isQuickPanelShortcutApplied()) << "another application has it";
    turn(false);
    EXPECT_TRUE(model->isQuickPanelShortcutApplied()) << "it was to be let go of";
    isFree = true;
    turn(true);
    EXPECT_TRUE(model->isQuickPanelShortcutApplied());
    model->changeSettings([](AppSettings& settings) { settings.displayName = u"Ada"_s; });
    EXPECT_EQ(asked, (QList<bool>{true, false, true})) << "only when it changes";
    model->noteQuickPanelShortcut(false);
    EXPECT_FALSE(model->isQuickPanelShortcutApplied());
    EXPECT_EQ(told, 2);
}

TEST_F(AppModelTest, TellsOfChangesOnly) {
    int told = 0;
    const auto count = [&] { ++told; };
    QObject::connect(model.get(), &AppModel::pageChanged, model.get(), count);
    QObject::connect(model.get(), &AppModel::sheetChanged, model.get(), count);
    QObject::connect(model.get(), &AppModel::modalChanged, model.get(), count);
    QObject::connect(model.get(), &AppModel::detailTabChanged, model.get(), count);
    QObject::connect(model.get(), &AppModel::aiPanelProjectIDChanged, model.get(), count);
    QObject::connect(model.get(), &AppModel::showOnlyUncommittedChanged, model.get(), count);
    QObject::connect(model.get(), &AppModel::refreshTokenChanged, model.get(), count);
    const struct {
        const char* label;
        std::function<void()> change;
        int again; ///< how often the second time is told
    } cases[] = {
        {"page", [&] { model->setPage({AppPage::Kind::project, u"/p"_s}); }, 0},
        {"sheet", [&] { model->setSheet(AppSheet{AppSheet::Kind::widgetsHowTo}); }, 0},
        {"modal", [&] { model->setModal(ModalContent{u"title"_s, u"body"_s}); }, 0},
        {"tab", [&] { model->setDetailTab(DetailTab::logs); }, 0},
        {"agent panel", [&] { model->setAiPanelProjectID(u"/p"_s); }, 0},
        {"uncommitted", [&] { model->setShowOnlyUncommitted(true); }, 0},
        {"reload", [&] { model->reloadViews(); }, 1},
        {"refresh by hand", [&] { model->refreshNow(); }, 1},
    };
    for (const auto& [label, change, again] : cases) {
        told = 0;
        change();
        EXPECT_EQ(told, 1) << label;
        change();
        EXPECT_EQ(told, 1 + again) << label;
    }
}

TEST_F(AppModelTest, NoticesWhatAnotherProcessWrites) {
    addInstalled(u"shop"_s, "vite", up(4001));
    tree.add(u"elsewhere/blog/Procfile"_s, "web: sleep 1\n");
    scan();
    const Project shop = project(u"shop"_s);
    int greetings = 0;
    QObject::connect(model.get(), &AppModel::greetingChanged, model.get(), [&] { ++greetings; });

    OverrideStore(tree.path(u"support/overrides.json"_s))
        .set(OverrideStore::key(shop.root, ServiceKind::frontend), Override{{}, u"mine"_s, {}});
    EXPECT_TRUE(waitFor([&] { return project(u"shop"_s).targets[0].command == u"mine"; }));

    TaskStore(tree.path(u"support/tasks.json"_s)).add(u"from outside"_s, {}, shop.id, shop.name);
    EXPECT_TRUE(waitFor([&] { return model->tasks(shop).size() == 1; }));

    SettingsStore(tree.path(u"support/settings.json"_s)).change([&](AppSettings& settings) {
        settings.scanRoot = tree.path(u"elsewhere"_s);
        settings.displayName = u"Someone else"_s;
        settings.pinnedProjectIDs = {tree.path(u"elsewhere/blog"_s)};
    });
    EXPECT_TRUE(waitFor([&] { return model->pinnedProjects().size() == 1; }));
    EXPECT_EQ(model->projects().size(), 1);
    EXPECT_EQ(greetings, 1);
}

TEST_F(AppModelTest, ScansAnewWhenTheRootChangesDuringAScan) {
    addInstalled(u"shop"_s, "vite", up(4001));
    tree.add(u"elsewhere/blog/Procfile"_s, "web: sleep 1\n");
    const QFuture<void> scan = model->refresh();
    model->chooseScanRoot(u"file://"_s + tree.path(u"elsewhere"_s));
    ASSERT_TRUE(finishes(scan));
    EXPECT_NE(model->project(tree.path(u"elsewhere/blog"_s)), nullptr);
}

TEST_F(AppModelTest, KeepsPinsInTheirOrder) {
    for (const QString& name : {u"a"_s, u"b"_s, u"c"_s}) {
        addInstalled(name, "vite", up(4001));
    }
    scan();
    for (const QString& name : {u"c"_s, u"a"_s, u"b"_s, u"b"_s}) {
        model->togglePin(project(name));
    }
    EXPECT_EQ(model->pinnedProjects(), (QList{project(u"c"_s), project(u"a"_s)}));
    QDir(root + u"/c"_s).removeRecursively();
    scan();
    EXPECT_EQ(model->pinnedProjects(), QList{project(u"a"_s)}) << "a project that is gone is passed over";
    EXPECT_EQ(SettingsStore(model->settings().filePath()).settings().pinnedProjectIDs.size(), 2) << "its pin is kept";
}

TEST_F(AppModelTest, FiltersByTheSidebarAndTheSearch) {
    addInstalled(u"Shop/web"_s, "vite", up(4001));
    addInstalled(u"Shop/api"_s, "express", up(4002));
    addInstalled(u"cafe\u0301"_s, "vite", up(4003));
    tree.add(u"projects/pocket/pubspec.yaml"_s, "name: pocket\nflutter:\n");
    scan();
    model->togglePin(project(u"pocket"_s));
    ASSERT_TRUE(finishes(model->run(project(u"Shop"_s), {ServiceKind::backend})));
    ASSERT_TRUE(waitFor([&] { return model->runningCount() == 1; }));
    const struct {
        const char* label;
        ProjectFilter filter;
        QString search, shown;
    } cases[] = {
        {"all", ProjectFilter::all, {}, u"cafe\u0301 pocket Shop"_s},
        {"running", ProjectFilter::running, {}, u"Shop"_s},
        {"full-stack", ProjectFilter::fullStack, {}, u"Shop"_s},
        {"Flutter", ProjectFilter::flutter, {}, u"pocket"_s},
        {"capitals", ProjectFilter::all, u"SHO"_s, u"Shop"_s},
        {"composed against decomposed", ProjectFilter::all, u"CAF\u00c9"_s, u"cafe\u0301"_s},
        {"both", ProjectFilter::pinned, u"shop"_s, {}},
    };
    for (const auto& [label, filter, search, shown] : cases) {
        model->setFilter(filter);
        model->setSearchText(search);
        QStringList names;
        for (const Project& project : model->filteredProjects()) {
            names.append(project.name);
        }
        EXPECT_EQ(names.join(u' '), shown) << label;
    }
}

TEST(NameSearch, KnowsTheLettersOfTheUsersLanguage) {
    const struct {
        QLocale::Language language;
        QString name, text;
        bool isFound;
    } cases[] = {
        {QLocale::Turkish, u"Istanbul"_s, u"\u0131stan"_s, true},
        {QLocale::Turkish, u"Istanbul"_s, u"istan"_s, false},
        {QLocale::Turkish, u"\u0130zmir"_s, u"izm"_s, true},
        {QLocale::English, u"Istanbul"_s, u"iSTAN"_s, true},
        {QLocale::Greek, u"\u039f\u0394\u039f\u03a3"_s, u"\u03bf\u03b4\u03bf\u03c3"_s, true},
    };
    const QLocale before;
    for (const auto& [language, name, text, isFound] : cases) {
        QLocale::setDefault(QLocale(language));
        EXPECT_EQ(NameSearch(text).matches(name), isFound) << name.toStdString() << " by " << text.toStdString();
    }
    QLocale::setDefault(before);
}

TEST_F(AppModelTest, TakesAReportAwayUnlessANewerOneCame) {
    model->report(u"one"_s, false);
    model->setStatusMessage(StatusMessage{.text = u"one"_s});
    int changes = 0;
    QObject::connect(model.get(), &AppModel::statusMessageChanged, model.get(), [&] { ++changes; });
    bool isPast = false;
    QTimer::singleShot(150, model.get(), [&] { isPast = true; });
    ASSERT_TRUE(waitFor([&] { return isPast; }));
    EXPECT_EQ(changes, 0) << "the report's end took the message away that came after it";
    model->report(u"two"_s, true);
    EXPECT_TRUE(model->statusIsError());
    EXPECT_TRUE(waitFor([&] { return !model->hasStatus(); }));
}

TEST_F(AppModelTest, TellsWhatAnotherScanWouldFind) {
    addInstalled(u"shop"_s, "vite", up(4001));
    tree.add(u"projects/notes/a.txt"_s);
    scan();
    const auto move = [this](const QString& from, const QString& to) {
        return QDir().rename(tree.path(from), tree.path(to));
    };
    addInstalled(u"../aside/moved"_s, "vite", up(4002));
    struct Step {
        const char* label;
        std::function<void()> change;
        QString news;
    };
    const QList<Step> steps{
        {"made where a plain folder was", [&] { addInstalled(u"notes"_s, "vite", up(4003)); }, u"notes is new"_s},
        {"moved in", [&] { EXPECT_TRUE(move(u"aside/moved"_s, u"projects/moved"_s)); }, u"2 projects are new"_s},
        {"another service", [&] { addInstalled(u"shop/api"_s, "express", up(4004)); }, u"2 projects are new"_s},
        {"moved away again", [&] { EXPECT_TRUE(move(u"projects/moved"_s, u"aside/moved"_s)); }, u"notes is new"_s},
        {"removed", [&] { EXPECT_TRUE(QDir(root + u"/shop"_s).removeRecursively()); }, u"notes is new, shop is gone"_s},
        {"all of it away", [&] { EXPECT_TRUE(move(u"projects"_s, u"away"_s)); }, u"shop is gone"_s},
        {"and back", [&] { EXPECT_TRUE(move(u"away"_s, u"projects"_s)); }, u"notes is new, shop is gone"_s},
        {"another one in its place", [&] { EXPECT_TRUE(move(u"projects"_s, u"away"_s) && QDir().mkpath(root)); },
         u"shop is gone"_s},
        {"which is watched", [&] { addInstalled(u"blog"_s, "vite", up(4005)); }, u"blog is new, shop is gone"_s},
        {"one that can't be looked at", [&] { EXPECT_TRUE(QDir(root).removeRecursively() && QFile::link(root, root)); },
         QString()},
        {"the first one again", [&] { EXPECT_TRUE(QFile::remove(root) && move(u"away"_s, u"projects"_s)); },
         u"notes is new, shop is gone"_s},
    };
    for (const int limit : {256, 1}) {
        ScanWatch watch;
        watch.settleTime = std::chrono::milliseconds(1);
        watch.mostFolders = limit;
        watch.setModel(model.get());
        for (const auto& [label, change, news] : steps) {
            change();
            // What can't be watched is looked at when the window is come to.
            EXPECT_TRUE(waitFor([&] {
                watch.lookIfBlind();
                return watch.news() == news;
            })) << label
                << ", " << limit << ": " << watch.news().toStdString();
            EXPECT_EQ(model->projects().size(), 1) << "nothing is listed unasked";
        }
        scan();
        EXPECT_EQ(watch.news(), QString());
        EXPECT_NE(model->project(root + u"/notes"_s), nullptr);
        // As before.
        EXPECT_TRUE(QDir(root + u"/notes"_s).removeRecursively());
        addInstalled(u"shop"_s, "vite", up(4001));
        tree.add(u"projects/notes/a.txt"_s);
        scan();
    }
}
