#include "OrvUI/InstallRecord.h"
#include "tests/OrvUI/ModelFixture.h"

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

    [[nodiscard]] QString installs(const QString& folder) const {
        return QString::fromUtf8(readFile(root + u'/' + folder + u"/installed.txt"_s)).simplified();
    }
    /// "failed: Stopped.; Frontend `cd web && npm install` failed"
    [[nodiscard]] QString session() const {
        if (!model->setup()) {
            return u"none"_s;
        }
        QStringList parts{
            model->setupPhase() + (model->setupReason().isEmpty() ? u""_s : u": "_s + model->setupReason())};
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
    model->openMainWindowAction = [&] { ++raised; };
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
    addNode(u"shop/api"_s, "express", up(8000));
    QDir(root + u"/shop/api/node_modules"_s).removeRecursively();
    addScript(u"shop/api"_s, u"npm-install.sh"_s, "echo; echo fetching; echo no network; echo; exit 3\n");
    scan();
    const Project shop = project(u"shop"_s);
    ASSERT_TRUE(finishes(model->run(shop, kinds(RunAction::both))));
    ASSERT_TRUE(finishes(model->confirmInstall()));
    const bool isApiFirst = model->setup()->steps[0].title == u"Backend";
    EXPECT_EQ(model->setupPhase(), u"failed"_s);
    EXPECT_EQ(model->setupReason(), u"Exited with code 3: no network"_s);
    EXPECT_EQ(
        model->setup()->steps[isApiFirst ? 1 : 0].status,
        isApiFirst ? SetupStep::Status::pending : SetupStep::Status::done);
    EXPECT_EQ(model->setupLastLine(), u"no network"_s);
    EXPECT_EQ(model->setupOutput(), (QStringList{u"fetching"_s, u"no network"_s}));
    EXPECT_EQ(model->runningCount(), 0);

    addScript(u"shop/api"_s, u"npm-install.sh"_s, "mkdir node_modules\n");
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_EQ(session(), u"none"_s);
    EXPECT_TRUE(waitFor([&] { return model->runningCount() == 2; }));
    EXPECT_EQ(installs(u"shop/web"_s), u"installing"_s) << "what was done is not done again";
}

TEST_F(SetupTest, EndsWhenItIsStoppedOrCancelled) {
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "echo $$ >>installed.txt; exec sleep 100\n");
    scan();
    const Project shop = project(u"shop"_s);
    const ServiceID install =
        AppModel::installID(shop.targets[shop.targets[0].kind == ServiceKind::frontend ? 0 : 1], shop.id);
    const struct {
        const char* label;
        std::function<void()> stop;
        QString session;
    } cases[] = {
        {"stop of the project", [&] { model->stop(shop); },
         u"failed: Stopped.; Frontend `cd web && npm install` failed"_s},
        {"stop of the install", [&] { model->stopService(install); },
         u"failed: Stopped.; Frontend `cd web && npm install` failed"_s},
        {"toggled", [&] { model->toggleRun(shop); }, u"failed: Stopped.; Frontend `cd web && npm install` failed"_s},
        {"cancelled", [&] { model->cancelInstall(); }, u"none"_s},
        {"cancelled before its first step began", [&] { model->cancelInstall(); }, u"none"_s},
    };
    qsizetype started = 0;
    for (const auto& [label, stop, expected] : cases) {
        ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend}))) << label;
        const QFuture<void> end = model->confirmInstall();
        if (&label != &cases[4].label) {
            ++started;
            ASSERT_TRUE(waitFor([&] {
                return installs(u"shop/web"_s).split(u' ', Qt::SkipEmptyParts).size() == started;
            })) << label;
            EXPECT_EQ(model->runningCount(), 0) << label;
        }
        stop();
        ASSERT_TRUE(finishes(end)) << label;
        EXPECT_EQ(session(), expected) << label;
        ASSERT_TRUE(waitFor([&] { return !model->processes().state(install).isActive(); })) << label;
        EXPECT_EQ(state(shop, ServiceKind::frontend).phase, Phase::stopped) << label;
        EXPECT_EQ(model->pendingInstall(), std::nullopt) << label;
    }
}

TEST_F(SetupTest, KeepsAnotherProjectWaiting) {
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "exec sleep 100\n");
    addNode(u"other"_s, "vite", up(4001));
    addInstalled(u"ready"_s, "vite", up(4002));
    scan();
    ASSERT_TRUE(finishes(model->run(project(u"shop"_s), {ServiceKind::frontend})));
    model->confirmInstall();
    ASSERT_TRUE(finishes(model->run(project(u"other"_s), {ServiceKind::frontend})));
    ASSERT_TRUE(model->statusMessage());
    EXPECT_EQ(model->statusMessage()->text, u"Finish setting up shop first."_s);
    EXPECT_TRUE(model->statusMessage()->isError);
    EXPECT_EQ(model->setup()->project.name, u"shop"_s);
    ASSERT_TRUE(finishes(model->run(project(u"ready"_s), {ServiceKind::frontend})));
    EXPECT_TRUE(waitForPhase(project(u"ready"_s), ServiceKind::frontend, Phase::running))
        << "one without an install runs";
}

TEST_F(SetupTest, UsesTheCommandThatWasTyped) {
    addNode(u"it's here"_s, "vite", up(4001));
    scan();
    const Project other = project(u"it's here"_s);
    ASSERT_TRUE(finishes(model->run(other, {ServiceKind::frontend})));
    model->setInstallCommandOverride(u"  "_s);
    EXPECT_EQ(model->installCommandOverride(), std::nullopt) << "a blank one is none";
    model->setInstallCommandOverride(u"echo mine >typed.txt && mkdir node_modules"_s);
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_EQ(readFile(root + u"/it's here/typed.txt"_s), "mine\n");
    EXPECT_EQ(installs(u"it's here"_s), QString());
    EXPECT_TRUE(waitForPhase(other, ServiceKind::frontend, Phase::running));
    EXPECT_EQ(model->installCommandOverride(), std::nullopt) << "it was for this time only";
}

TEST_F(SetupTest, AsksOnceForAnInstallThatLeavesNoMarker) {
    addScript(u"shop/web"_s, u"npm-install.sh"_s, "echo installing >>installed.txt\n");
    scan();
    const Project shop = project(u"shop"_s);
    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend})));
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_TRUE(waitForPhase(shop, ServiceKind::frontend, Phase::running));
    EXPECT_EQ(session(), u"none"_s);
    const struct {
        const char* label;
        std::function<void()> before;
        bool asks;
    } cases[] = {
        {"the next run", [] {}, false},
        {"another start of the application", [this] { makeModel(); }, false},
        {"the manifest was changed",
         [this] {
             QFile manifest(root + u"/shop/web/package.json"_s);
             ASSERT_TRUE(manifest.open(QIODevice::ReadWrite));
             manifest.setFileTime(QDateTime::currentDateTime().addSecs(5), QFileDevice::FileModificationTime);
         },
         true},
    };
    for (const auto& [label, before, asks] : cases) {
        ASSERT_TRUE(finishes(model->stopAllServices())) << label;
        before();
        ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend}))) << label;
        EXPECT_EQ(model->setup().has_value(), asks) << label;
    }
}

TEST_F(SetupTest, InstallsAWorkspaceOnce) {
    tree.add(u"projects/mono/package.json"_s, R"({"workspaces": ["apps/*"]})");
    addNode(u"mono/apps/web"_s, "vite", up(4001));
    addNode(u"mono/apps/api"_s, "express", up(4002));
    addScript(u"mono"_s, u"npm-install.sh"_s, "echo installing >>installed.txt; mkdir node_modules\n");
    scan();
    ASSERT_TRUE(finishes(model->run(project(u"mono"_s), kinds(RunAction::both))));
    ASSERT_TRUE(model->setup());
    EXPECT_EQ(model->setup()->steps.size(), 2);
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_EQ(installs(u"mono"_s), u"installing"_s);
    EXPECT_TRUE(waitFor([&] { return model->runningCount() == 2; }));
}

TEST_F(SetupTest, RunsTheProjectAsItIsAfterTheInstall) {
    tree.add(u"projects/api/requirements.txt"_s, "flask\n");
    tree.add(u"projects/api/app.py"_s);
    scan();
    const Project api = project(u"api"_s);
    ASSERT_TRUE(finishes(model->run(api, {ServiceKind::backend})));
    model->setInstallCommandOverride(
        u"mkdir -p .venv/bin && printf '#!/bin/sh\\necho own python at http://localhost:5000; exec sleep 100\\n'"
        " >.venv/bin/python && chmod +x .venv/bin/python"_s);
    ASSERT_TRUE(finishes(model->confirmInstall()));
    ASSERT_TRUE(waitForPhase(api, ServiceKind::backend, Phase::running));
    EXPECT_EQ(logText(id(api, ServiceKind::backend)), u"own python at http://localhost:5000"_s);

    addNode(u"gone"_s, "vite", up(4001));
    scan();
    ASSERT_TRUE(finishes(model->run(project(u"gone"_s), {ServiceKind::frontend})));
    model->setInstallCommandOverride(u"rm package.json"_s);
    QString said;
    QObject::connect(model.get(), &AppModel::statusMessageChanged, model.get(), [&] { said += model->statusText(); });
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_EQ(said, u"gone is gone from your projects folder."_s);
}
