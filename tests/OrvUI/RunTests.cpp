#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/ChildRecords.h"
#include "OrvProcess/ProcessSpawner.h"
#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AgentRun.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/InstallRecord.h"
#include "OrvUI/OrphanedWork.h"
#include "OrvUI/ProjectDetail.h"
#include "OrvUI/QuitGuard.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;
using testing::ElementsAre;
using Phase = ServiceState::Phase;

namespace {

const ServiceKinds both = kinds(RunAction::both);

class RunTest : public ModelFixture {
protected:
    RunTest() {
        addInstalled(u"shop/web"_s, "vite", up(3000));
        addInstalled(u"shop/api"_s, "express", "echo starting; exec sleep 100\n");
    }
    ~RunTest() override {
        for (const SpawnedProcess& process : left) {
            ProcessSpawner::discard(process.pid);
        }
    }

    /// As an application that was killed would have left it; without a kind an agent.
    void leave(
        const Project& project, const std::optional<ServiceKind>& kind, const QString& folder,
        const std::optional<QUuid>& run = {}) {
        const QDir records(QFileInfo(model->settings().filePath()).path() + u"/running"_s);
        left.push_back(*ProcessSpawner::spawn(u"exec sleep 600"_s, folder, {}));
        const auto note = model->processes().records().note(
            {.projectID = project.id, .directory = folder, .kind = kind, .command = u"x"_s, .run = run},
            left.back().pid);
        ASSERT_TRUE(note);
        const QString file = records.filePath(records.entryList({u"%1-*"_s.arg(left.back().pid)}).value(0));
        const QByteArray content = readFile(file).replace(
            "\"pid\": " + QByteArray::number(QCoreApplication::applicationPid()), "\"pid\": 1073741823");
        QFile kept(file + u".kept.json"_s);
        ASSERT_TRUE(kept.open(QIODevice::WriteOnly) && kept.write(content) == content.size());
    }

    std::vector<SpawnedProcess> left;
};

} // namespace

TEST_F(RunTest, StartsAndStopsTheKindsAskedFor) {
    scan();
    const Project shop = project(u"shop"_s);
    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::docker})));
    EXPECT_TRUE(model->processes().states().isEmpty());
    EXPECT_EQ(model->settings().settings().lastRun, std::nullopt) << "nothing was started";

    ASSERT_TRUE(finishes(model->run(shop, both)));
    EXPECT_EQ(SettingsStore(model->settings().filePath()).settings().lastRun, (LastRun{shop.id, u"Both"_s}));
    ASSERT_TRUE(waitForPhase(shop, ServiceKind::frontend, Phase::running));
    EXPECT_EQ(state(shop, ServiceKind::backend).phase, Phase::starting);
    EXPECT_EQ(model->runningCount(), 1);
    EXPECT_EQ(RunningWork::of(*model).message(), u"2 services still running"_s) << "what is coming up would end too";

    ASSERT_TRUE(finishes(model->stop(shop)));
    for (const ServiceKind kind : both) {
        EXPECT_TRUE(waitForPhase(shop, kind, Phase::stopped)) << rawValue(kind).toStdString();
    }
    ASSERT_TRUE(finishes(model->stop(shop))) << "a project that does not run is stopped at once";
}

TEST_F(RunTest, TogglesByWhatTheProjectDoes) {
    scan();
    const Project shop = project(u"shop"_s);
    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::backend})));
    ASSERT_EQ(state(shop, ServiceKind::backend).phase, Phase::starting);
    ASSERT_TRUE(finishes(model->toggleRun(shop)));
    EXPECT_TRUE(waitForPhase(shop, ServiceKind::backend, Phase::stopped)) << "one that starts is stopped";
    ASSERT_TRUE(finishes(model->toggleRun(shop)));
    EXPECT_TRUE(state(shop, ServiceKind::backend).isActive());
    EXPECT_EQ(state(shop, ServiceKind::frontend).phase, Phase::stopped) << "what was run last is run again";
}

TEST_F(RunTest, IsOffWhenAStopComesFirst) {
    scan();
    const Project shop = project(u"shop"_s);
    for (const bool isAll : {false, true}) {
        const QFuture<void> run = model->run(shop, both);
        ASSERT_TRUE(finishes(isAll ? model->stopAllServices() : model->stop(shop))) << isAll;
        ASSERT_TRUE(finishes(run)) << isAll;
        EXPECT_TRUE(model->processes().states().isEmpty()) << isAll;
    }
}

TEST_F(RunTest, StartsNothingOnceItQuits) {
    addNode(u"fresh"_s, "vite", up(3002));
    scan();
    const Project shop = project(u"shop"_s);
    const Project fresh = project(u"fresh"_s);
    ASSERT_TRUE(finishes(model->run(fresh, {ServiceKind::frontend})));
    ASSERT_TRUE(model->pendingInstall());
    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::backend})));
    const QFuture<void> end = model->quit();
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"a run", [&] { model->run(shop, both); }},
        {"a restart", [&] { model->restart(shop, {id(shop, ServiceKind::backend)}); }},
        {"a toggle", [&] { model->toggleRun(fresh); }},
        {"an address", [&] { model->handle(QUrl(u"orvlauncher://run?project="_s + shop.id)); }},
        {"an install", [&] { model->confirmInstall(); }},
        {"an agent", [&] { model->startAgent(AgentKind::claude, u"Tidy up"_s, shop); }},
        {"an agent in a terminal", [&] { model->startAgentInTerminal(AgentKind::claude, u"Tidy up"_s, shop); }},
    };
    for (const auto& [label, act] : cases) {
        model->dismissStatusMessage();
        act();
        EXPECT_EQ(model->statusText(), u"OrvLauncher is quitting."_s) << label;
    }
    ASSERT_TRUE(finishes(end));
    // Whatever was still to come would be there before this.
    ASSERT_TRUE(finishes(model->refresh()));
    EXPECT_TRUE(std::ranges::none_of(model->processes().states(), &ServiceState::isActive));
    EXPECT_TRUE(model->agentRuns().isEmpty() && model->terminals().sessions().isEmpty());
}

TEST_F(RunTest, WaitsForWhatIsStillStopping) {
    addScript(u"shop/api"_s, u"npm-run.sh"_s, "trap '' TERM; echo $$ >>pids.txt; while :; do sleep 0.1; done\n");
    scan();
    const Project shop = project(u"shop"_s);
    const auto pid = [&](ServiceKind kind) { return model->processes().processID(id(shop, kind)); };
    const auto starts = [&] { return readFile(root + u"/shop/api/pids.txt"_s).count('\n'); };
    ASSERT_TRUE(finishes(model->run(shop, both)));
    ASSERT_TRUE(waitFor([&] { return starts() == 1; }));
    const auto first = pid(ServiceKind::backend);
    const auto web = pid(ServiceKind::frontend);
    ASSERT_TRUE(finishes(model->restart(shop, {id(shop, ServiceKind::backend)})));
    EXPECT_TRUE(waitFor([&] { return starts() == 2; }));
    const auto second = pid(ServiceKind::backend);
    EXPECT_NE(second, first);
    EXPECT_EQ(pid(ServiceKind::frontend), web) << "a restart takes only the kinds asked for";
    model->stop(shop);
    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::backend})));
    EXPECT_TRUE(waitFor([&] { return starts() == 3; })) << "a run during a stop";
    EXPECT_NE(pid(ServiceKind::backend), second);

    const ServiceID api = id(shop, ServiceKind::backend);
    const QFuture<void> restart = model->restart(shop, {api});
    ASSERT_TRUE(finishes(model->stopService(api)));
    ASSERT_TRUE(finishes(restart));
    EXPECT_EQ(state(shop, ServiceKind::backend).phase, Phase::stopped) << "it was stopped while its restart waited";
}

TEST_F(RunTest, RestartsWhatRunsAsItWas) {
    addInstalled(u"shop/admin"_s, "vite", up(3001));
    tree.add(u"projects/pocket/pubspec.yaml"_s, "name: pocket\nflutter:\n");
    tree.add(u"projects/pocket/.dart_tool/"_s);
    addScript(u"pocket"_s, u"flutter-run.sh"_s, "echo args: $*; echo args: $* >>args.txt; exec sleep 100\n");
    scan();
    const Project shop = project(u"shop"_s);
    const Project pocket = project(u"pocket"_s);
    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::frontend})));
    ASSERT_TRUE(finishes(model->run(pocket, {ServiceKind::flutter}, u"emulator-5554"_s)));
    ASSERT_TRUE(waitFor([&] { return model->runningCount() == 2; }));
    const ServiceID admin = id(shop, ServiceKind::frontend);
    ASSERT_TRUE(admin.directory.endsWith(u"/admin"));
    ASSERT_TRUE(finishes(model->stopService(admin)));

    const auto args = [&] { return readFile(root + u"/pocket/args.txt"_s); };
    ASSERT_TRUE(waitFor([&] { return args().count('\n') == 1; }));
    for (const Project& restarted : {shop, pocket}) {
        model->restartProject(restarted.id);
    }
    EXPECT_TRUE(waitFor([&] { return args().count('\n') == 2 && model->runningCount() == 1; }));
    EXPECT_EQ(args(), "args: run -d emulator-5554\nargs: run -d emulator-5554\n");
    EXPECT_EQ(model->processes().state(admin).phase, Phase::stopped) << "the other front end did not run";
}

TEST_F(RunTest, WaitsForAStackToBeDown) {
    const QString docker = tree.add(
        u"bin/docker"_s, "#!/bin/sh\necho $2 >>seen.txt\n[ $2 = up ] && exec sleep 100\n"
                         "while [ ! -e go ]; do sleep 0.02; done; echo down >>seen.txt; rm go\n");
    QFile::setPermissions(docker, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    tree.add(u"projects/stack/compose.yaml"_s, "services: {}\n");
    scan();
    const Project stack = project(u"stack"_s);
    const auto seen = [&] { return readFile(root + u"/stack/seen.txt"_s).simplified(); };
    ASSERT_TRUE(finishes(model->run(stack, {ServiceKind::docker})));
    const struct {
        const char* label;
        std::function<QFuture<void>()> act;
        QByteArray seen;
    } cases[] = {
        {"a restart", [&] { return model->restart(stack, {id(stack, ServiceKind::docker)}); }, "up stop down up"},
        {"a run after a stop",
         [&] {
             model->stop(stack);
             return model->run(stack, {ServiceKind::docker});
         },
         "up stop down up stop down up"},
        {"a stop of everything after a stop",
         [&] {
             model->stop(stack);
             EXPECT_TRUE(waitForPhase(stack, ServiceKind::docker, Phase::stopped));
             return model->stopAllServices();
         },
         "up stop down up stop down up stop down"},
    };
    for (const auto& [label, act, expected] : cases) {
        ASSERT_TRUE(waitFor([&] { return seen().endsWith("up"); })) << label;
        const QFuture<void> end = act();
        ASSERT_TRUE(waitFor([&] { return seen().endsWith("stop"); })) << label;
        ASSERT_TRUE(waitForPhase(stack, ServiceKind::docker, Phase::stopped))
            << label << ": what brought it up is gone";
        EXPECT_FALSE(end.isFinished()) << label;
        tree.add(u"projects/stack/go"_s);
        ASSERT_TRUE(finishes(end)) << label;
        EXPECT_TRUE(waitFor([&] { return seen() == expected; })) << label << ": " << seen().constData();
    }
}

TEST_F(RunTest, EndsWhatAKilledApplicationHasLeft) {
    scan();
    const Project shop = project(u"shop"_s);
    const QString api = id(shop, ServiceKind::backend).directory;
    AgentRun::Facts facts;
    leave(shop, ServiceKind::backend, api);
    for (const QUuid& run : {facts.id, QUuid::createUuid()}) {
        leave(shop, {}, api, run);
    }
    OrphanedWork& orphans = *model->orphans();
    ASSERT_TRUE(finishes(orphans.look()));
    EXPECT_EQ(orphans.text(), u"1 service and 2 AI agents from last time are still running."_s);
    ProjectDetail detail;
    detail.setModel(model.get());
    detail.setProjectID(shop.id);
    const QAbstractListModel& rows = *detail.services();
    const auto stateOf = [&](int row) {
        return rows.data(rows.index(row), rows.roleNames().key("serviceState")).toString();
    };
    EXPECT_THAT((QStringList{stateOf(0), stateOf(1)}), ElementsAre(u"idle"_s, u"orphaned"_s));
    EXPECT_TRUE(detail.busy()) << "it can be stopped";
    orphans.dismiss();
    EXPECT_EQ(orphans.text(), QString());

    ASSERT_TRUE(finishes(model->run(shop, {ServiceKind::backend})));
    EXPECT_TRUE(state(shop, ServiceKind::backend).isActive());
    EXPECT_TRUE(waitFor([&] { return orphans.all().size() == 2; })) << "the agents work on";
    ASSERT_TRUE(model->settings().change([](AppSettings& settings) { settings.customAgentCommand = u"true"_s; }));
    facts.agent = AgentKind::custom;
    facts.projectID = shop.id;
    facts.projectRoot = api;
    facts.task = u"x"_s;
    const AgentRun* again = model->retryAgent(AgentRun(facts, {}, nullptr));
    ASSERT_TRUE(again && waitFor([&] { return !again->isRunning(); }));
    EXPECT_EQ(orphans.all().size(), 1) << "it began when its own was gone; that of another run works on";
    ASSERT_TRUE(finishes(model->stopService(id(shop, ServiceKind::backend))));
    EXPECT_TRUE(waitFor([&] { return stateOf(1) == u"idle"_s && !detail.busy(); })) << "no service is left";
    ASSERT_TRUE(finishes(model->stop(shop)));
    EXPECT_EQ(orphans.all().size(), 1) << "agents are no services";
    ASSERT_TRUE(finishes(model->quit()));
    EXPECT_TRUE(orphans.all().isEmpty()) << "what is being ended is waited for";
}

TEST_F(RunTest, EndsAnInstallThatIsLeftBeforeItBeginsAnother) {
    addNode(u"fresh"_s, "vite", up(3002));
    tree.add(u"projects/fresh/node_modules/"_s);
    scan();
    const Project fresh = project(u"fresh"_s);
    const ServiceTarget& web = fresh.targets.first();
    const ServiceID install = AppModel::installID(web, fresh.id);
    const QString file = tree.path(u"support/installs.json"_s);
    ASSERT_TRUE(InstallRecord(file).begin(web.directory, CommandBuilder::installBody(web)));
    const QByteArray owner = "\"owner\": \"";
    const QByteArray marks =
        readFile(file).replace(owner + QByteArray::number(QCoreApplication::applicationPid()), owner + "1073741823");
    tree.add(u"support/installs.json"_s, marks);
    Project installed = fresh;
    installed.id = install.projectID;
    leave(installed, install.kind, install.directory);
    ASSERT_TRUE(finishes(model->run(fresh, {ServiceKind::frontend})));
    ASSERT_TRUE(model->setup() && model->orphans()->holds(install));
    EXPECT_EQ(readFile(file), marks) << "nothing is settled while it goes on";
    const ChildRecord other = model->orphans()->all().first();
    EXPECT_TRUE(ChildRecords::isAlive(other)) << "nobody has confirmed yet";
    std::optional<bool> wasAlone;
    QObject::connect(model.get(), &AppModel::setupChanged, model.get(), [&] {
        const bool begins = model->setup() && model->setup()->steps.first().status == SetupStep::Status::running;
        wasAlone = begins ? !ChildRecords::isAlive(other) : wasAlone;
    });
    ASSERT_TRUE(finishes(model->confirmInstall()));
    EXPECT_EQ(wasAlone, true);
    EXPECT_EQ(readFile(root + u"/fresh/installed.txt"_s).simplified(), "installing");
}

TEST_F(RunTest, ShowsWhatIsLeftUntilItEnds) {
    scan();
    const Project shop = project(u"shop"_s);
    const ServiceID api = id(shop, ServiceKind::backend);
    OrphanedWork& orphans = *model->orphans();
    const auto shown = [&] {
        const QAbstractItemModel& running = model->home().running;
        const CardRow card = model->home().card(shop);
        QStringList words{card.cardState, model->menuBarTitle(), RunningWork::of(*model).message()};
        for (int row = 0; row < running.rowCount(); ++row) {
            words.append(running.index(row, 0).data(running.roleNames().key("serviceState")).toString());
        }
        for (const PinnedEntry& entry : model->pinnedEntries()) {
            words.append(entry.title);
        }
        return words.join(u" | "_s);
    };
    model->togglePin(shop);
    const QString idle = u"idle |  |  | Run shop"_s;
    const struct {
        const char* label;
        std::function<void()> end;
    } cases[] = {
        {"ends by itself", [&] { ::kill(left.back().pid, SIGKILL); }},
        {"is stopped on its own", [&] { model->stopServiceByKey(HomeModels::key(api)); }},
        {"is stopped with the project", [&] { model->toggleProject(shop.id); }},
        {"is stopped with all", [&] { model->stopAll(); }},
    };
    for (const auto& [label, end] : cases) {
        ASSERT_TRUE(waitFor([&] { return shown() == idle; })) << label << ": " << shown().toStdString();
        leave(shop, ServiceKind::backend, api.directory);
        ASSERT_TRUE(finishes(orphans.look()));
        const QString up = u"orphaned | 1 | 1 service still running | orphaned | Stop shop"_s;
        EXPECT_TRUE(waitFor([&] { return shown() == up; })) << label << ": " << shown().toStdString();
        EXPECT_TRUE(model->keeps(ProjectFilter::running, shop)) << label;
        end();
        EXPECT_TRUE(waitFor([&] { return shown() == idle && orphans.text().isEmpty(); }))
            << label << ": " << shown().toStdString();
    }

    leave(shop, {}, shop.root);
    leave(shop, {}, api.directory);
    ASSERT_TRUE(finishes(orphans.look()));
    EXPECT_EQ(orphans.agentProjects(), QStringList{shop.id}) << "the other one has a folder of its own";
    model->stopAll();
    EXPECT_FALSE(orphans.isStopping()) << "agents are no services";
    orphans.stopAgentsOf(shop.id);
    EXPECT_EQ(orphans.agentProjects(), QStringList());
    EXPECT_TRUE(waitFor([&] { return orphans.all().size() == 1; }));
    EXPECT_EQ(RunningWork::of(*model).message(), u"1 AI agent is still working"_s);
}

TEST_F(RunTest, GivesTheDeviceToFlutterAlone) {
    tree.add(u"projects/pocket/pubspec.yaml"_s, "name: pocket\nflutter:\n");
    tree.add(u"projects/pocket/.dart_tool/"_s);
    addScript(u"pocket"_s, u"flutter-run.sh"_s, "echo args: $*\n");
    const QString key = OverrideStore::key(root + u"/pocket"_s, ServiceKind::flutter);
    const struct {
        const char* label;
        std::optional<QString> device, ownCommand;
        QString printed;
    } cases[] = {
        {"no device: this machine", {}, {}, u"args: run -d linux"_s},
        {"a device", u"emulator-5554"_s, {}, u"args: run -d emulator-5554"_s},
        {"a command of the user's own", u"emulator-5554"_s, u"echo args: own"_s, u"args: own"_s},
    };
    for (const auto& [label, device, ownCommand, printed] : cases) {
        ASSERT_TRUE(model->overrides().set(key, Override{{}, ownCommand, {}}));
        scan();
        const Project pocket = project(u"pocket"_s);
        ASSERT_TRUE(finishes(model->run(pocket, {ServiceKind::flutter}, device))) << label;
        ASSERT_TRUE(waitForPhase(pocket, ServiceKind::flutter, Phase::stopped)) << label;
        EXPECT_EQ(logText(id(pocket, ServiceKind::flutter)), printed) << label;
    }
}

TEST_F(RunTest, ListsDevicesWithoutTheToolsComplaints) {
    const QString script =
        tree.add(u"bin/flutter"_s, "#!/bin/sh\necho '[' >&2\necho '[{\"id\":\"a\",\"name\":\"'$2'\"}]'\n");
    const QFuture<QList<FlutterDevice>> devices = model->flutterDevices();
    ASSERT_TRUE(waitFor([&] { return devices.isFinished(); }));
    EXPECT_THAT(devices.result(), ElementsAre(FlutterDevice{u"a"_s, u"--machine"_s}));
}

TEST_F(RunTest, OpensThePortThatReallyListens) {
    const QByteArray server = "exec python3 -c \"import os, socket, time\n"
                              "def await_file(name):\n"
                              "    while not os.path.exists(name): time.sleep(0.01)\n"
                              "print('%s', flush=True)\n"
                              "await_file('listen')\n"
                              "listeners = [socket.create_server(('127.0.0.1', 0)) for i in range(2)]\n"
                              "await_file('say')\n"
                              "last = max(listener.getsockname()[1] for listener in listeners)\n"
                              "print('trying http://localhost:%%d/' %% last, flush=True)\n"
                              "time.sleep(100)\"\n";
    const struct {
        QString name;
        const char* firstLine;
        std::optional<int> announced;
    } cases[] = {
        {u"taken"_s, "Local: http://localhost:5173/", 5173},
        {u"silent"_s, "ready", {}},
    };
    for (const auto& [name, firstLine, announced] : cases) {
        addInstalled(name, "vite", QByteArray(server).replace("%s", firstLine).replace("%%", "%"));
    }
    scan();
    for (const auto& [name, firstLine, announced] : cases) {
        const Project served = project(name);
        const ServiceID web = id(served, ServiceKind::frontend);
        const QString label = name + u": "_s;
        const auto shown = [&] {
            const int row = name == u"silent" ? 1 : 2; // behind "shop"
            const auto* cards = model->cards();
            const QModelIndex card = cards->index(row, 0);
            const auto services = card.data(cards->roleNames().key("services")).toList();
            const QVariantMap service = services.isEmpty() ? QVariantMap() : services[0].toMap();
            return service[u"address"_s].toString() + (service[u"portListening"_s].toBool() ? u" up"_s : u" not up"_s);
        };
        const auto becomes = [&](const QString& text) {
            return waitFor([&] { return shown() == text; }) ||
                   (ADD_FAILURE() << (label + shown()).toStdString(), false);
        };
        ASSERT_TRUE(finishes(model->run(served, {ServiceKind::frontend})));
        ASSERT_TRUE(becomes(announced ? u"localhost:%1 not up"_s.arg(*announced) : u" up"_s));
        tree.add(u"projects/"_s + name + u"/listen"_s);
        ASSERT_TRUE(waitFor([&] { return model->processes().listeningPorts(web).size() == 2; }));
        const QList<int> ports = model->processes().listeningPorts(web);
        ASSERT_TRUE(becomes(u"localhost:%1 up"_s.arg(ports.first())));
        tree.add(u"projects/"_s + name + u"/say"_s);
        ASSERT_TRUE(becomes(u"localhost:%1 up"_s.arg(ports.last()))) << "the one that was named last";
        EXPECT_EQ(state(served, ServiceKind::frontend).port, announced ? announced : ports.last());

        QList<QUrl> opened;
        model->openUrl = [&](const QUrl& url) {
            opened.append(url);
            return opened.size() == 1;
        };
        QString said;
        const QObject scope;
        QObject::connect(model.get(), &AppModel::statusMessageChanged, &scope, [&] { said += model->statusText(); });
        ASSERT_TRUE(finishes(model->openAddress(web)));
        EXPECT_EQ(said, QString());
        ASSERT_TRUE(finishes(model->openAddress(web)));
        const QUrl url(u"http://localhost:%1"_s.arg(ports.last()));
        EXPECT_THAT(opened, ElementsAre(url, url));
        EXPECT_EQ(said, u"Could not open %1: no browser was found."_s.arg(url.toString()));
        ASSERT_TRUE(finishes(model->stop(served)));
    }
}

TEST_F(RunTest, TakesNoDebuggerForTheService) {
    addInstalled(
        u"debugged"_s, "vite",
        "exec python3 -c \"import os, socket, time\n"
        "debugger = socket.create_server(('127.0.0.1', 0))\n"
        "print('Debugger listening on ws://127.0.0.1:%d/9f0c' % debugger.getsockname()[1], flush=True)\n"
        "while not os.path.exists('serve'): time.sleep(0.01)\n"
        "service = socket.create_server(('127.0.0.1', 0))\n"
        "time.sleep(100)\"\n");
    scan();
    const Project debugged = project(u"debugged"_s);
    const ServiceID web = id(debugged, ServiceKind::frontend);
    ASSERT_TRUE(finishes(model->run(debugged, {ServiceKind::frontend})));
    const auto listens = [&](qsizetype count) {
        return waitFor([&] { return model->processes().listeningPorts(web).size() == count; });
    };
    ASSERT_TRUE(waitFor([&] { return !model->processes().log(web).isEmpty(); }));
    ASSERT_TRUE(listens(1));
    const int debugger = model->processes().listeningPorts(web).first();
    EXPECT_EQ(state(debugged, ServiceKind::frontend), ServiceState::starting());
    EXPECT_EQ(model->addressPort(web), std::nullopt);
    tree.add(u"projects/debugged/serve"_s);
    ASSERT_TRUE(listens(2));
    QList<int> others = model->processes().listeningPorts(web);
    others.removeOne(debugger);
    EXPECT_EQ(model->addressPort(web), others.first());
    EXPECT_TRUE(waitFor([&] { return state(debugged, ServiceKind::frontend) == ServiceState::running({}); }))
        << "up, though it has not said so";
    EXPECT_EQ(model->runningCount(), 1);
    ASSERT_TRUE(finishes(model->stop(debugged)));
}
