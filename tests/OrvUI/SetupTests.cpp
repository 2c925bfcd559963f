#include "OrvUI/QuitGuard.h"
#include "OrvUI/SetupRunner.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;
using Phase = ServiceState::Phase;

namespace {

class SetupTest : public ModelFixture {
protected:
    SetupTest() {
        addNode(u"shop/web"_s, "vite", up(3000));
        addInstalled(u"shop/api"_s, "express", up(8000));
    }

    /// Runs the project's kinds, which asks for an install, and confirms that.
    void install(const QString& name, const ServiceKinds& kinds, const QString& typed = {}) {
        scan();
        ASSERT_TRUE(finishes(model->run(project(name), kinds)));
        ASSERT_TRUE(model->setup());
        model->setInstallCommandOverride(typed);
        ASSERT_TRUE(finishes(model->confirmInstall()));
    }
    [[nodiscard]] QString installs(const QString& folder) const {
        return QString::fromUtf8(readFile(root + u'/' + folder + u"/installed.txt"_s)).simplified();
    }
    /// "failed: Stopped.; Frontend `cd web && npm install` failed"
    [[nodiscard]] QString session() const {
        if (!model->setup()) {
            return u"none"_s;
        }
        const QString reason = model->setupReason();
        QStringList parts{model->setupPhase() + (reason.isEmpty() ? QString() : u": "_s + reason)};
        for (const SetupStep& step : model->setup()->steps) {
            parts.append(u"%1 `%2` %3"_s.arg(step.title, step.command, rawValue(step.status)));
        }
        return parts.join(u"; "_s);
    }
};

} // namespace

TEST_F(SetupTest, InstallsWhatIsMissingThenRunsEverything) {
    scan();
    const Project shop = project(u"shop"_s);
    int raised = 0;
    model->setOpenMainWindowAction([&] { ++raised; });
    ASSERT_TRUE(finishes(model->run(shop, kinds(RunAction::both))));
    EXPECT_EQ(session(), u"confirm; Frontend `cd web && npm install` pending"_s);
    EXPECT_EQ(raised, 1);
    EXPECT_EQ(model->pendingInstall(), (PendingInstall{shop, kinds(RunAction::both), {}}));
    EXPECT_TRUE(model->processes().states().isEmpty());
    EXPECT_EQ(model->settings().settings().lastRun, std::nullopt);

    QStringList seen;
    QObject::connect(model.get(), &AppModel::setupChanged, model.get(), [&] { seen.append(session()); });
    const QFuture<void> end = model->confirmInstall();
    ASSERT_TRUE(finishes(model->run(shop, kinds(RunAction::frontend)))) << "again while it is being installed";
    EXPECT_EQ(model->runningCount(), 0);
    ASSERT_TRUE(finishes(end));
    EXPECT_EQ(
        seen.join(u'\n'), u"running; Frontend `cd web && npm install` pending\n"
                          "running; Frontend `cd web && npm install` running\n"
                          "running; Frontend `cd web && npm install` done\nnone"_s);
    ASSERT_TRUE(waitFor([&] { return model->runningCount() == 2; }));
    EXPECT_EQ(installs(u"shop/web"_s), u"installing"_s);
    EXPECT_EQ(installs(u"shop/api"_s), QString());
    EXPECT_EQ(model->settings().settings().lastRun->action, u"Both"_s);
    EXPECT_EQ(snapshot()->running.size(), 2) << "an install is no running service";
}

TEST_F(SetupTest, StaysOnScreenWhenItFailsAndCanBeTriedAgain) {
    addNode(u"shop/worker"_s, "express", up(8001));
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "echo; echo fetching; echo no network; echo; exit 3\n");
    QDir(root + u"/shop/api/node_modules"_s).removeRecursively();
    install(u"shop"_s, kinds(RunAction::both));
    EXPECT_EQ(
        session(), u"failed: Exited with code 3: no network; Backend · api `cd api && npm install` done; "
                   "Frontend `cd web && npm install` failed; Backend · worker `cd worker && npm install` pending"_s);
    EXPECT_EQ(model->setupOutput(), (QStringList{u"fetching"_s, u"no network"_s}));
    EXPECT_EQ(model->runningCount(), 0);

    addScript(u"shop/web"_s, u"npm-install.sh"_s, "mkdir node_modules\n");
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_EQ(session(), u"none"_s);
    EXPECT_TRUE(waitFor([&] { return model->runningCount() == 3; }));
    EXPECT_EQ(installs(u"shop/api"_s), u"installing"_s) << "what was done is not done again";
}

TEST_F(SetupTest, EndsWhenItIsStoppedOrCancelled) {
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "echo $$ >begun.txt; exec sleep 100\n");
    scan();
    const Project shop = project(u"shop"_s);
    const ServiceID install = AppModel::installID(shop.targets.last(), shop.id);
    const QString stopped = u"failed: Stopped.; Frontend `cd web && npm install` failed"_s;
    const struct {
        const char* label;
        bool hasBegun;
        std::function<void()> stop;
        QString session;
    } cases[] = {
        {"stop of the project", true, [&] { model->stop(shop); }, stopped},
        {"stop of the install", true, [&] { model->stopService(install); }, stopped},
        {"toggled", true, [&] { model->toggleRun(shop); }, stopped},
        {"cancelled", true, [&] { model->cancelInstall(); }, u"none"_s},
        {"cancelled before its first step began", false, [&] { model->cancelInstall(); }, u"none"_s},
    };
    for (const auto& [label, hasBegun, stop, expected] : cases) {
        QFile::remove(root + u"/shop/web/begun.txt"_s);
        ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend}))) << label;
        const QFuture<void> end = model->confirmInstall();
        const auto isAsFar = [&] { return !hasBegun || !readFile(root + u"/shop/web/begun.txt"_s).isEmpty(); };
        ASSERT_TRUE(waitFor(isAsFar)) << label;
        EXPECT_TRUE(!hasBegun || RunningWork::of(*model) == RunningWork{.isInstalling = true})
            << label << ": quitting would end it, and no service";
        stop();
        ASSERT_TRUE(finishes(end)) << label;
        EXPECT_EQ(session(), expected) << label;
        EXPECT_TRUE(waitFor([&] { return !model->processes().state(install).isActive(); })) << label;
        EXPECT_EQ(state(shop, ServiceKind::frontend).phase, Phase::stopped) << label;
        EXPECT_TRUE(waitFor([&] { return model->findChild<SetupRunner*>() == nullptr; })) << label;
        EXPECT_FALSE(readFile(tree.path(u"support/installs.json"_s)).contains("owner")) << label << ": it is over";
    }
}

TEST_F(SetupTest, StartsNothingWhenItIsStoppedBetweenItsSteps) {
    QDir(root + u"/shop/api/node_modules"_s).removeRecursively();
    scan();
    const Project shop = project(u"shop"_s);
    const QString first = u"running; Backend `cd api && npm install` done; Frontend `cd web && npm install` pending"_s;
    const QString last = QString(first).replace(u"pending"_s, u"done"_s);
    const QString failed =
        QString(first).replace(u"pending"_s, u"failed"_s).replace(u"running"_s, u"failed: Stopped."_s);
    const struct {
        const char* label;
        QString when;
        std::function<void()> stop;
        QString session;
        int installs; ///< of the second step
    } cases[] = {
        {"the project, before the second step", first, [&] { model->stop(shop); }, failed, 0},
        {"everything, before the second step", first, [&] { model->stopAllServices(); }, failed, 0},
        {"the project, before the services", last, [&] { model->stop(shop); }, u"none"_s, 1},
        {"everything, before the services", last, [&] { model->stopAllServices(); }, u"none"_s, 1},
        {"the project, while it is looked up again", last,
         [&] { QMetaObject::invokeMethod(model.get(), [&] { model->stop(shop); }, Qt::QueuedConnection); }, u"none"_s,
         1},
        {"cancelled before the services", last, [&] { model->cancelInstall(); }, u"none"_s, 1},
        {"toggled before the services", last, [&] { model->toggleRun(shop); }, u"none"_s, 1},
    };
    for (const auto& [label, when, stop, expected, count] : cases) {
        for (const QString& folder : {u"/shop/api"_s, u"/shop/web"_s}) {
            QDir(root + folder + u"/node_modules"_s).removeRecursively();
            QFile::remove(root + folder + u"/installed.txt"_s);
        }
        ASSERT_TRUE(finishes(model->run(shop, kinds(RunAction::both)))) << label;
        const QObject scope;
        QObject::connect(
            model.get(), &AppModel::setupChanged, &scope, [this, when, stop] { session() == when ? stop() : void(); });
        ASSERT_TRUE(finishes(model->confirmInstall())) << label;
        EXPECT_EQ(session(), expected) << label;
        EXPECT_EQ(installs(u"shop/web"_s).count(u"installing"_s), count) << label;
        // Whatever was still to come would be there before this.
        ASSERT_TRUE(finishes(model->refresh())) << label;
        EXPECT_FALSE(state(shop, ServiceKind::backend).isActive()) << label;
        EXPECT_FALSE(state(shop, ServiceKind::frontend).isActive()) << label;
        model->cancelInstall();
    }
}

TEST_F(SetupTest, KeepsAnotherProjectWaiting) {
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "exec sleep 100\n");
    addNode(u"other"_s, "vite", up(4001));
    addInstalled(u"ready"_s, "vite", up(4002));
    scan();
    int raised = 0;
    model->setOpenMainWindowAction([&] { ++raised; });
    ASSERT_TRUE(finishes(model->run(project(u"shop"_s), {ServiceKind::frontend})));
    for (const bool isAsking : {true, false}) {
        model->dismissStatusMessage();
        ASSERT_TRUE(finishes(model->run(project(u"other"_s), {ServiceKind::frontend})));
        EXPECT_EQ(raised, isAsking ? 2 : 3) << "who asked in the quick panel sees why nothing comes of it";
        ASSERT_TRUE(model->statusMessage());
        EXPECT_EQ(model->statusMessage()->text, u"Finish setting up shop first."_s);
        EXPECT_TRUE(model->statusMessage()->isError);
        EXPECT_EQ(model->setup()->project.name, u"shop"_s);
        model->confirmInstall();
    }
    ASSERT_TRUE(finishes(model->run(project(u"ready"_s), {ServiceKind::frontend})));
    EXPECT_TRUE(waitForPhase(project(u"ready"_s), ServiceKind::frontend, Phase::running))
        << "one without an install runs";
}

TEST_F(SetupTest, CanBePutAsideOnceItRuns) {
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "until [ -e go ]; do sleep 0.02; done; exit 3\n");
    addNode(u"pad"_s, "vite", up(4001));
    scan();
    const Project shop = project(u"shop"_s);
    const auto putAside = [this] {
        model->setSetupAside(true);
        return model->isSetupAside();
    };
    EXPECT_FALSE(putAside()) << "there is none";
    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend})));
    EXPECT_FALSE(putAside()) << "it asks";
    const QFuture<void> end = model->confirmInstall();
    EXPECT_TRUE(putAside());
    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend})));
    EXPECT_FALSE(model->isSetupAside()) << "somebody asks for what it is for";
    EXPECT_TRUE(putAside());
    tree.add(u"projects/shop/web/go"_s);
    ASSERT_TRUE(finishes(end));
    EXPECT_EQ(model->setupPhase(), u"failed"_s);
    EXPECT_TRUE(model->isSetupAside()) << "nobody is disturbed";
    ASSERT_TRUE(finishes(model->run(project(u"pad"_s), {ServiceKind::frontend})));
    EXPECT_FALSE(model->isSetupAside()) << "it asks anew";
    EXPECT_TRUE(model->statusText().startsWith(u"Setting up shop stopped: Exited with code 3"_s))
        << model->statusText().toStdString();
}

TEST_F(SetupTest, UsesTheCommandThatWasTyped) {
    addNode(u"it's here"_s, "vite", up(4001));
    install(u"it's here"_s, {ServiceKind::frontend}, u"echo mine >installed.txt && mkdir node_modules"_s);
    EXPECT_EQ(installs(u"it's here"_s), u"mine"_s);
    EXPECT_TRUE(waitForPhase(project(u"it's here"_s), ServiceKind::frontend, Phase::running));
    EXPECT_EQ(model->installCommandOverride(), std::nullopt) << "it was for this time only";

    // As it is shown, with its folder, it is the command of every step that is not done, and each shows what it runs.
    addNode(u"shop/api"_s, "express", up(8000));
    QDir(root + u"/shop/api/node_modules"_s).removeRecursively();
    const QString typed = u"cd web && echo two >installed.txt; test -e ../ok && mkdir node_modules"_s;
    install(u"shop"_s, kinds(RunAction::both), typed);
    const QString body = typed.sliced(u"cd web && "_s.size());
    EXPECT_EQ(
        session(),
        u"failed: Exited with code 1; Backend `cd api && %1` failed; Frontend `cd web && %1` pending"_s.arg(body));
    tree.add(u"projects/shop/ok"_s);
    model->setInstallCommandOverride({});
    addScript(u"shop/api"_s, u"npm-install.sh"_s, "exit 1\n");
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_TRUE(session().contains(u"Backend `cd api && npm install` failed"_s)) << session().toStdString();
    model->setInstallCommandOverride(typed);
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_EQ(session() + installs(u"shop/api"_s) + installs(u"shop/web"_s), u"nonetwotwo"_s);
}

TEST_F(SetupTest, AsksOnceForAnInstallThatLeavesNoMarker) {
    const QString manifest = root + u"/shop/web/package.json"_s;
    const auto edit = [&](int secondsFromNow) {
        QFile file(manifest);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::currentDateTime().addSecs(secondsFromNow), QFileDevice::FileModificationTime);
    };
    const QByteArray lock = "echo installing >>installed.txt; echo $$ >package-lock.json\n";
    addScript(u"shop/web"_s, u"npm-install.sh"_s, lock);
    edit(3600);
    install(u"shop"_s, {ServiceKind::frontend}, u"  "_s);
    EXPECT_EQ(installs(u"shop/web"_s), u"installing"_s) << "a blank command is none";
    const Project shop = project(u"shop"_s);
    EXPECT_TRUE(waitForPhase(shop, ServiceKind::frontend, Phase::running));
    const auto installWhileEdited = [&] {
        addScript(u"shop/web"_s, u"npm-install.sh"_s, lock + "echo ' ' >>package.json\n");
        ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend})));
        ASSERT_TRUE(finishes(model->confirmInstall()));
        EXPECT_TRUE(waitForPhase(shop, ServiceKind::frontend, Phase::running)) << "for this time it counts";
        ASSERT_TRUE(finishes(model->stopAllServices()));
    };
    const struct {
        const char* label;
        std::function<void()> before;
        bool asks;
    } cases[] = {
        {"the next run", [] {}, false},
        {"another start of the application", [this] { makeModel(); }, false},
        {"the manifest was changed, and the clock is wrong", [&] { edit(-3600); }, true},
        {"the manifest was changed while it was being installed", installWhileEdited, true},
    };
    for (const auto& [label, before, asks] : cases) {
        ASSERT_TRUE(finishes(model->stopAllServices())) << label;
        before();
        ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend}))) << label;
        EXPECT_EQ(model->setup().has_value(), asks) << label;
        model->cancelInstall();
    }
}

TEST_F(SetupTest, DoesNotTakeAnInstallThatFailedForDoneBecauseItsMarkerIsThere) {
    addScript(
        u"shop/web"_s, u"npm-install.sh"_s,
        "mkdir -p node_modules; echo 'getaddrinfo EAI_AGAIN here' >&2; echo log; exit 7\n");
    install(u"shop"_s, {ServiceKind::frontend});
    EXPECT_EQ(model->setupPhase(), u"failed"_s);
    EXPECT_EQ(model->setupReason(), u"The network could not be reached: getaddrinfo EAI_AGAIN here"_s);
    model->cancelInstall();
    makeModel(); // nor after a restart
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "echo installing >>installed.txt\n");
    install(u"shop"_s, {ServiceKind::frontend});
    EXPECT_EQ(installs(u"shop/web"_s), u"installing"_s);
    EXPECT_TRUE(waitForPhase(project(u"shop"_s), ServiceKind::frontend, Phase::running));
    ASSERT_TRUE(finishes(model->stop(project(u"shop"_s))));
    ASSERT_TRUE(finishes(model->run(project(u"shop"_s), {ServiceKind::frontend})));
    EXPECT_FALSE(model->setup()) << "one that ended well does";
}

TEST_F(SetupTest, CountsWhatWasInstalledByHandAfterAnInstallThatDidNotEndWell) {
    scan();
    const Project shop = project(u"shop"_s);
    const auto asks = [&] {
        EXPECT_TRUE(finishes(model->run(shop, {ServiceKind::frontend})));
        return model->setup().has_value();
    };
    const struct {
        const char* label;
        QByteArray install;
        bool hasEnd;
        QString mark; ///< of who installs by hand
    } cases[] = {
        {"it failed", "mkdir node_modules; exit 7\n", true, u"node_modules/.package-lock.json"_s},
        {"it failed before it had made anything", "exit 7\n", true, u"node_modules/.modules.yaml"_s},
        {"it was killed with the application", "mkdir node_modules; echo $$ >begun.txt; exec sleep 100\n", false,
         u".yarn/install-state.gz"_s},
    };
    for (const auto& [label, script, hasEnd, mark] : cases) {
        SCOPED_TRACE(label);
        ASSERT_TRUE(finishes(model->stopAllServices()));
        QDir(root + u"/shop/web/node_modules"_s).removeRecursively();
        addScript(u"shop/web"_s, u"npm-install.sh"_s, script);
        ASSERT_TRUE(asks());
        const QFuture<void> end = model->confirmInstall();
        ASSERT_TRUE(
            hasEnd ? finishes(end) : waitFor([&] { return !readFile(root + u"/shop/web/begun.txt"_s).isEmpty(); }));
        makeModel();
        scan();
        if (!hasEnd) {
            const QString file = QFileInfo(model->settings().filePath()).path() + u"/installs.json"_s;
            QByteArray marks = readFile(file);
            EXPECT_TRUE(asks());
            model->cancelInstall();
            EXPECT_EQ(readFile(file), marks) << "nothing is settled while who installs lives";
            marks.replace(
                "\"owner\": \"" + QByteArray::number(QCoreApplication::applicationPid()), "\"owner\": \"1073741823");
            QFile changed(file);
            ASSERT_TRUE(changed.open(QIODevice::WriteOnly) && changed.write(marks) == marks.size());
        }
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(asks());
            model->cancelInstall();
        }
        const auto writeLater = [this](const QString& name) {
            QFile file(tree.add(u"projects/shop/web/"_s + name, "by hand"));
            ASSERT_TRUE(file.open(QIODevice::ReadWrite));
            file.setFileTime(QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime);
        };
        writeLater(u"node_modules/.vite"_s);
        EXPECT_TRUE(asks()) << "what was started with half of it keeps a cache there";
        model->cancelInstall();
        writeLater(mark);
        EXPECT_FALSE(asks());
        QDir(root + u"/shop/web/.yarn"_s).removeRecursively();
        EXPECT_TRUE(waitForPhase(shop, ServiceKind::frontend, Phase::running));
    }
}

TEST_F(SetupTest, InstallsAWorkspaceOnce) {
    const struct {
        QString name;
        QByteArray end; ///< of its install
    } cases[] = {{u"mono"_s, "mkdir node_modules"}, {u"unmarked"_s, "true"}};
    for (const auto& [name, end] : cases) {
        tree.add(u"projects/"_s + name + u"/package.json"_s, R"({"workspaces": ["apps/*"]})");
        addNode(name + u"/apps/web"_s, "vite", up(4001));
        addNode(name + u"/apps/api"_s, "express", up(4002));
        addScript(name, u"npm-install.sh"_s, "echo installing >>installed.txt; " + end + "\n");
        scan();
        ASSERT_TRUE(finishes(model->run(project(name), kinds(RunAction::both))));
        EXPECT_EQ(session(), u"confirm; Backend `npm install` pending"_s);
        ASSERT_TRUE(finishes(model->confirmInstall()));
        EXPECT_EQ(installs(name), u"installing"_s) << "and not once for each service";
        EXPECT_TRUE(waitFor([&] { return model->runningCount() == 2; }));
        ASSERT_TRUE(finishes(model->stop(project(name))));
        ASSERT_TRUE(finishes(model->run(project(name), kinds(RunAction::both))));
        EXPECT_EQ(session(), u"none"_s) << name.toStdString() << " is installed for both";
        ASSERT_TRUE(finishes(model->stop(project(name))));
    }
}

TEST_F(SetupTest, RunsTheProjectAsItIsAfterTheInstall) {
    tree.add(u"projects/api/requirements.txt"_s, "flask\n");
    tree.add(u"projects/api/app.py"_s);
    install(
        u"api"_s, {ServiceKind::backend},
        u"mkdir -p .venv/bin && printf '#!/bin/sh\necho own python at http://localhost:5000; exec sleep 100\n'"
        " >.venv/bin/python && chmod +x .venv/bin/python"_s);
    const Project api = project(u"api"_s);
    ASSERT_TRUE(waitForPhase(api, ServiceKind::backend, Phase::running));
    EXPECT_EQ(logText(id(api, ServiceKind::backend)), u"own python at http://localhost:5000"_s);

    addNode(u"gone"_s, "vite", up(4001));
    QString said;
    QObject::connect(model.get(), &AppModel::statusMessageChanged, model.get(), [&] { said += model->statusText(); });
    install(u"gone"_s, {ServiceKind::frontend}, u"rm package.json"_s);
    EXPECT_EQ(said, u"gone is gone from your projects folder."_s);
    EXPECT_EQ(session(), u"none"_s);

    addNode(u"grows"_s, "vite", up(4002));
    const QByteArray manifest = readFile(root + u"/grows/package.json"_s);
    tree.add(u"projects/grows/other"_s, manifest);
    install(u"grows"_s, {ServiceKind::frontend}, u"mkdir -p node_modules admin && cp other admin/package.json"_s);
    EXPECT_EQ(session(), u"confirm; Frontend · admin `cd admin && npm install` pending"_s)
        << "what came with the install";
}
