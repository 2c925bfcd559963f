#include "../../OrvLauncher/SingleInstance.h"
#include "Launcher.h"
#include "OrvCore/OverrideStore.h"
#include "OrvCore/ProjectScanner.h"
#include "OrvCore/Settings.h"
#include "OrvCore/Tasks.h"
#include "OrvCore/WidgetSnapshot.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <csignal>

namespace orv::test {

using namespace Qt::StringLiterals;

namespace {

/// A shop with two services, two projects of one name, and a folder without anything.
class CommandLine : public ::testing::Test {
protected:
    CommandLine() {
        launcher.tree.add(
            u"projects/shop/web/package.json"_s, R"({"scripts":{"dev":"x"},"dependencies":{"vite":"5"}})");
        launcher.tree.add(u"projects/shop/api/requirements.txt"_s, "flask\n");
        launcher.tree.add(u"projects/shop/api/app.py"_s);
        launcher.tree.add(u"projects/one/Twin/Makefile"_s, "dev:\n\ttrue\n");
        launcher.tree.add(u"projects/one/.git/"_s);
        launcher.tree.add(u"projects/one/Twin/.git/"_s);
        launcher.tree.add(u"projects/two/twin/Makefile"_s, "dev:\n\ttrue\n");
        launcher.tree.add(u"projects/two/twin/.git/"_s);
        launcher.tree.add(u"projects/empty/"_s);
    }

    [[nodiscard]] QString folder(const QString& name) const { return launcher.tree.path(u"projects/"_s + name); }

    /// The one JSON value that a call prints, and nothing beside it.
    QJsonDocument json(const QStringList& words) const {
        const Ended ended = launcher.call(words + QStringList{u"--json"_s});
        EXPECT_EQ(ended.exitCode, 0) << words.join(u' ').toStdString() << ended.err.toStdString();
        QJsonParseError error;
        const QJsonDocument parsed = QJsonDocument::fromJson(ended.out, &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << ended.out.toStdString();
        return parsed;
    }

    Launcher launcher;
};

} // namespace

TEST_F(CommandLine, AnswersWithAnExitCodeAndInWords) {
    struct Case {
        const char* label;
        QStringList words;
        int exitCode;
        QList<QByteArray> out;
        QList<QByteArray> err;
        QByteArray input = {};
    };
    const Case cases[] = {
        {"version", {u"--version"_s}, 0, {"OrvLauncher 0."}, {}},
        {"help", {u"--help"_s}, 0, {"scan", "settings", "Exit codes"}, {}},
        {"help of a command", {u"help"_s, u"run"_s}, 0, {"--only KIND", "orvlauncher run ."}, {}},
        {"help as an option", {u"tasks"_s, u"add"_s, u"--help"_s}, 0, {"tasks add PROJECT TITLE"}, {}},
        {"help of a form", {u"help"_s, u"git"_s, u"commit"_s}, 0, {"--amend", "orvlauncher git commit \"Fix"}, {}},
        {"help of no form", {u"help"_s, u"git"_s, u"comit"_s}, 2, {}, {"git has no 'comit'", "mean 'commit'"}},
        {"unknown command", {u"scna"_s}, 2, {}, {"no command 'scna'", "mean 'scan'"}},
        {"unknown help", {u"help"_s, u"runn"_s}, 2, {}, {"mean 'run'"}},
        {"unknown option", {u"scan"_s, u"--jsn"_s}, 2, {}, {"no option '--jsn'", "mean '--json'", "help scan"}},
        {"unknown action", {u"tasks"_s, u"lst"_s}, 2, {}, {"tasks has no 'lst'", "mean 'list'"}},
        {"option first", {u"--json"_s, u"scan"_s}, 2, {}, {"'--json' before a command"}},
        {"missing word", {u"detect"_s}, 2, {}, {"missing: orvlauncher detect FOLDER"}},
        {"a word too many", {u"scan"_s, u"a"_s, u"b"_s}, 2, {}, {"'b' is one word too many"}},
        {"a task without quotes",
         {u"agent"_s, u"run"_s, u"shop"_s, u"Fix"_s, u"it"_s},
         2,
         {},
         {"'it' is one word too many: orvlauncher agent run PROJECT TASK", "needs quotes", "help agent run"}},
        {"option without its value", {u"run"_s, u"."_s, u"--only"_s}, 2, {}, {"only"}},
        {"scan", {u"scan"_s}, 0, {"PROJECT", "shop", "Vite + Flask", "backend, frontend"}, {"3 projects in"}},
        {"scan of two of a kind",
         {u"scan"_s, sourcePath(u"samples/workspace"_s)},
         0,
         {"frontend (api), frontend (site)"},
         {}},
        {"scan of nothing", {u"scan"_s, folder(u"empty"_s)}, 0, {}, {"No projects in"}},
        {"scan of no folder", {u"scan"_s, u"/nowhere"_s}, 1, {}, {"folder not found: /nowhere"}},
        {"detect",
         {u"detect"_s, folder(u"shop"_s)},
         0,
         {"Vite", "npm run dev", "node_modules (missing)", "/shop/api' && python3 -m flask --app app run"},
         {}},
        {"detect of parts that are installed at once",
         {u"detect"_s, sourcePath(u"samples/workspace"_s)},
         0,
         {"samples/workspace' && npm install", "needed: the same"},
         {}},
        {"detect of nothing", {u"detect"_s, folder(u"empty"_s)}, 1, {}, {"nothing that can be run"}},
        {"ports",
         {u"ports"_s},
         0,
         {" 5173    Local: http://localhost:5173/\n", "    -  ready\n", " 3000  port 3000"},
         {},
         "  Local: http://\x1b[36mlocalhost:5173\x1b[0m/\nready\r\nport 3000"},
        {"run of no such name", {u"run"_s, u"shpo"_s}, 1, {}, {"no project 'shpo'", "mean 'shop'"}},
        {"run of no such folder", {u"run"_s, u"./gone"_s}, 1, {}, {"folder not found"}},
        {"run of an empty folder", {u"run"_s, folder(u"empty"_s)}, 1, {}, {"nothing that can be run"}},
        {"run of a project's folder that is empty yet", {u"run"_s, u"Empty"_s}, 1, {}, {"nothing that can be run"}},
        {"run of what only holds projects", {u"run"_s, u"two"_s}, 2, {}, {"has some in it", "two/twin"}},
        {"detect of one by its name", {u"detect"_s, u"empty"_s}, 1, {}, {"nothing that can be run"}},
        {"pin of one", {u"pin"_s, u"add"_s, u"empty"_s}, 0, {"Pinned empty"}, {"as soon as there is something to run"}},
        {"tasks of one", {u"tasks"_s, u"list"_s, u"empty"_s}, 0, {}, {"No tasks"}},
        {"run of a name that two have", {u"run"_s, u"TWIN"_s}, 2, {}, {"one/Twin", "two/twin"}},
        {"run of a kind that is not there",
         {u"run"_s, u"shop"_s, u"--only"_s, u"docker"_s},
         2,
         {},
         {"shop has no 'docker'; it has frontend, backend"}},
        {"override of no kind",
         {u"override"_s, u"set"_s, u"shop"_s, u"web"_s, u"--port"_s, u"1"_s},
         2,
         {},
         {"no kind"}},
        {"override of a kind that is not there",
         {u"override"_s, u"set"_s, u"shop"_s, u"app"_s, u"--port"_s, u"1"_s},
         1,
         {},
         {"it has: backend in api, frontend in web"}},
        {"override of no port",
         {u"override"_s, u"set"_s, u"shop"_s, u"backend"_s, u"--port"_s, u"70000"_s},
         2,
         {},
         {"'70000' is no port"}},
        {"override of nothing", {u"override"_s, u"set"_s, u"shop"_s, u"backend"_s}, 2, {}, {"say what to change"}},
        {"unknown setting", {u"settings"_s, u"get"_s, u"them"_s}, 2, {}, {"no setting 'them'", "mean 'theme'"}},
        {"setting of another type", {u"settings"_s, u"set"_s, u"showDockIcon"_s, u"maybe"_s}, 2, {}, {"true or false"}},
        {"setting of no case", {u"settings"_s, u"set"_s, u"theme"_s, u"pink"_s}, 2, {}, {"theme", "ember"}},
        {"device of no Flutter app", {u"run"_s, u"shop"_s, u"--device"_s, u"avd:a"_s}, 2, {}, {"for Flutter apps"}},
        {"no key of a device", {u"devices"_s, u"boot"_s, u"pixel"_s}, 2, {}, {"'pixel' is no key of a device"}},
        {"unknown task", {u"tasks"_s, u"done"_s, u"ffff"_s}, 1, {}, {"no task 'ffff'"}},
        {"task without a title", {u"tasks"_s, u"add"_s, u"shop"_s, u" "_s}, 2, {}, {"needs a title"}},
        {"completions", {u"completions"_s, u"fish"_s}, 0, {"complete -c orvlauncher", "save pop apply drop list"}, {}},
    };
    for (const Case& c : cases) {
        const Ended ended = launcher.call(c.words, c.input);
        EXPECT_EQ(ended.exitCode, c.exitCode) << c.label << ": " << ended.err.toStdString();
        for (const QByteArray& part : c.out) {
            EXPECT_TRUE(ended.out.contains(part)) << c.label << ": " << part.data() << "\n" << ended.out.toStdString();
        }
        EXPECT_EQ(ended.out.isEmpty(), c.out.isEmpty()) << c.label << ": " << ended.out.toStdString();
        for (const QByteArray& part : c.err) {
            EXPECT_TRUE(ended.err.contains(part)) << c.label << ": " << part.data() << "\n" << ended.err.toStdString();
        }
    }
}

TEST_F(CommandLine, PutsOptionsWhereTheyBelong) {
    const QByteArray text = launcher.call({u"git"_s, u"--help"_s}).out;
    const auto at = [&text](const char* words) { return text.indexOf(words); };
    EXPECT_LT(at("git commit SUMMARY"), at("--amend"));
    EXPECT_LT(at("--amend"), at("git branch [BRANCH]")) << text.toStdString();
    EXPECT_FALSE(launcher.call({u"git"_s, u"commit"_s, u"--help"_s}).out.contains("--set-upstream"));
}

TEST_F(CommandLine, SaysWhatToDoWithoutAFolderOfProjects) {
    ASSERT_TRUE(QFile::rename(launcher.tree.path(u"projects"_s), launcher.tree.path(u"moved"_s)));
    const struct {
        QStringList words;
        QByteArray option;
    } cases[] = {
        {{u"new"_s, u"ledger"_s}, "--in FOLDER"},
        {{u"git"_s, u"clone"_s, u"file:///x"_s}, "--into FOLDER"},
        {{u"run"_s, u"shop"_s}, ""},
        {{u"scan"_s}, ""},
    };
    for (const auto& [words, option] : cases) {
        const Ended ended = launcher.call(words);
        EXPECT_EQ(ended.exitCode, 1) << words.join(u' ').toStdString();
        EXPECT_TRUE(ended.err.contains("settings set scanRoot FOLDER")) << ended.err.toStdString();
        EXPECT_TRUE(ended.err.contains(option)) << ended.err.toStdString();
    }
}

TEST_F(CommandLine, PrintsTheRecordsThemselvesAsJson) {
    const QList<Project> expected = ProjectScanner().scan(launcher.tree.path(u"projects"_s)).value();
    QList<Project> scanned;
    for (const QJsonValue& value : json({u"scan"_s}).array()) {
        const auto project = Project::fromJson(value.toObject());
        ASSERT_TRUE(project) << project.error().text().toStdString();
        scanned.append(*project);
    }
    EXPECT_EQ(scanned.size(), 3);
    EXPECT_EQ(scanned, expected);

    const QJsonObject detected = json({u"detect"_s, folder(u"shop"_s)}).object();
    EXPECT_EQ(detected[u"stacks"_s].toArray().size(), 2);
    EXPECT_EQ(Project::fromJson(detected[u"project"_s].toObject()), expected[1]);
    EXPECT_TRUE(json({u"detect"_s, folder(u"empty"_s)}).object()[u"project"_s].isNull());

    EXPECT_TRUE(AppSettings::fromJson(json({u"settings"_s}).object()));
    EXPECT_EQ(json({u"tasks"_s}).array().size(), 0);
    EXPECT_EQ(
        launcher.call({u"ports"_s, u"--json"_s}, "localhost:80\nx").out.simplified(),
        "[ {\"line\":\"localhost:80\",\"port\":80}, {\"line\":\"x\",\"port\":null} ]");
}

TEST_F(CommandLine, CorrectsAServiceAndForgetsThat) {
    const auto set = [this](const QStringList& options) {
        return json(QStringList{u"override"_s, u"set"_s, u"shop"_s, u"backend"_s} + options).object();
    };
    const QString key = OverrideStore::key(folder(u"shop/api"_s), ServiceKind::backend);
    EXPECT_EQ(Override::fromJson(set({u"--port"_s, u"8001"_s})[key].toObject()), (Override{{}, {}, 8001}));
    EXPECT_EQ(
        Override::fromJson(set({u"--kind"_s, u"app"_s, u"--command"_s, u"true"_s})[key].toObject()),
        (Override{ServiceKind::app, u"true"_s, 8001}))
        << "what was set before stays";
    EXPECT_TRUE(launcher.call({u"scan"_s}).out.contains("app:8001, frontend"));
    EXPECT_EQ(set({u"--kind"_s, u""_s, u"--command"_s, u""_s, u"--port"_s, u""_s}), QJsonObject())
        << "nothing is left of it";
    set({u"--port"_s, u"1"_s});
    ASSERT_TRUE(QFile::rename(folder(u"shop"_s), folder(u"sold"_s)));
    EXPECT_EQ(launcher.call({u"override"_s, u"clear"_s, key}).exitCode, 0) << "the folder is gone";
    EXPECT_EQ(json({u"override"_s}).object(), QJsonObject());
}

TEST_F(CommandLine, KeepsTasks) {
    const QJsonObject added =
        json({u"tasks"_s, u"add"_s, u"Shop"_s, u"Retry  payments"_s, u"--notes"_s, u"twice"_s}).object();
    const auto task = ProjectTask::fromJson(added);
    ASSERT_TRUE(task) << task.error().text().toStdString();
    EXPECT_EQ(task->projectID, folder(u"shop"_s));
    EXPECT_EQ(task->title, u"Retry payments"_s);
    const QString shortID = task->id.toString(QUuid::WithoutBraces).first(6);
    EXPECT_TRUE(json({u"tasks"_s, u"done"_s, shortID}).object().contains(u"doneAt"_s));
    EXPECT_FALSE(json({u"tasks"_s, u"reopen"_s, shortID}).object().contains(u"doneAt"_s));
    EXPECT_EQ(json({u"tasks"_s, u"rename"_s, shortID, u"Pay"_s}).object()[u"notes"_s], u"twice"_s);
    json({u"tasks"_s, u"add"_s, folder(u"one/Twin"_s), u"Another"_s});
    EXPECT_EQ(json({u"tasks"_s, u"list"_s, u"shop"_s}).array().size(), 1);
    EXPECT_TRUE(launcher.call({u"tasks"_s}).out.contains("Pay"));
    json({u"tasks"_s, u"delete"_s, shortID});
    EXPECT_EQ(json({u"tasks"_s}).array().size(), 1);
}

TEST_F(CommandLine, KeepsPinsDevicesAndWhatIsNotToBeSuggested) {
    const QString shop = folder(u"shop"_s);
    json({u"pin"_s, u"add"_s, folder(u"one/Twin"_s)});
    EXPECT_EQ(json({u"pin"_s, u"add"_s, u"Shop"_s}).object()[u"id"_s], shop);
    json({u"pin"_s, u"add"_s, shop});
    EXPECT_EQ(json({u"pin"_s}).array().size(), 2);
    ASSERT_TRUE(QFile::rename(shop, folder(u"sold"_s)));
    EXPECT_EQ(json({u"pin"_s, u"remove"_s, u"shop"_s}).object()[u"pinned"_s], false) << "the folder is gone";
    EXPECT_EQ(launcher.call({u"pin"_s, u"remove"_s, u"shop"_s}).exitCode, 1);
    ASSERT_TRUE(QFile::rename(folder(u"sold"_s), shop));

    const auto ids = [this] {
        QStringList found;
        for (const QJsonValue& suggestion : json({u"suggestions"_s}).array()) {
            found.append(suggestion[u"id"_s].toString());
        }
        return found;
    };
    EXPECT_TRUE(ids().contains(u"themes"_s));
    json({u"suggestions"_s, u"dismiss"_s, u"themes"_s});
    EXPECT_FALSE(ids().contains(u"themes"_s));
    EXPECT_EQ(launcher.call({u"suggestions"_s, u"dismiss"_s, u"theme"_s}).exitCode, 2);
    EXPECT_EQ(json({u"suggestions"_s, u"restore"_s}).object()[u"dismissed"_s].toArray().size(), 0);

    const auto choice = [&] { return readFile(launcher.tree.path(u"support/choices.json"_s)); };
    json({u"devices"_s, u"choose"_s, u"shop"_s, u"avd:Pixel_9"_s});
    EXPECT_TRUE(choice().contains("avd:Pixel_9")) << choice().constData();
    EXPECT_TRUE(json({u"devices"_s, u"choose"_s, u"shop"_s}).object()[u"device"_s].isNull());
    EXPECT_FALSE(choice().contains("Pixel")) << choice().constData();
    EXPECT_EQ(launcher.call({u"devices"_s, u"choose"_s, u"shop"_s, u"Pixel"_s}).exitCode, 2);
    EXPECT_TRUE(json({u"devices"_s}).isArray());
}

TEST_F(CommandLine, TellsTheWidgetsWhatNoWindowTells) {
    const auto widgets = [this] {
        return SharedContainer::read(launcher.tree.path(u"support/widgets"_s)).value_or(WidgetSnapshot());
    };
    const QString runtime = launcher.tree.add(u"runtime/"_s);
    ASSERT_TRUE(QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    launcher.environment.insert(u"XDG_RUNTIME_DIR"_s, runtime.chopped(1));
    json({u"pin"_s, u"add"_s, u"shop"_s});
    const QString task = json({u"tasks"_s, u"add"_s, u"shop"_s, u"Retry"_s}).object()[u"id"_s].toString();
    json({u"tasks"_s, u"add"_s, u"shop"_s, u"Sell"_s});
    EXPECT_EQ(widgets().pinned, (QList<WidgetSnapshot::PinnedProject>{{folder(u"shop"_s), u"shop"_s}}));
    EXPECT_EQ(widgets().openTaskCount, 2);
    json({u"tasks"_s, u"done"_s, task});
    EXPECT_EQ(widgets().tasks, (QList<WidgetSnapshot::TaskSummary>{{u"Retry"_s, u"shop"_s, true}}));

    // Runs in two terminals stand there together, as long as they last.
    launcher.tree.add(u"projects/one/Twin/Makefile"_s, "dev:\n\techo http://localhost:4131/; exec sleep 100\n");
    launcher.tree.add(u"projects/two/twin/Makefile"_s, "dev:\n\techo http://localhost:4132/; exec sleep 100\n");
    const auto ports = [&] {
        QSet<int> found;
        for (const WidgetSnapshot::Running& running : widgets().running) {
            found.insert(running.port.value_or(0));
        }
        return found;
    };
    const auto one = launcher.start({u"run"_s, folder(u"one/Twin"_s)});
    const auto two = launcher.start({u"run"_s, folder(u"two/twin"_s)});
    EXPECT_TRUE(waitFor([&] { return ports() == QSet<int>{4131, 4132}; })) << ports().size();
    json({u"pin"_s, u"remove"_s, u"shop"_s});
    EXPECT_EQ(ports().size(), 2);
    EXPECT_TRUE(widgets().pinned.isEmpty());
    one->signal(SIGINT);
    EXPECT_EQ(one->end().exitCode, 0);
    EXPECT_EQ(ports(), QSet<int>{4132});

    // With a window it is the window that writes.
    SingleInstance window(
        SingleInstance::Place::in(runtime.chopped(1), QFileInfo(launcher.tree.path(u"support"_s)).canonicalFilePath()));
    ASSERT_EQ(window.begin({}, std::chrono::milliseconds(0)), SingleInstance::Role::first);
    json({u"pin"_s, u"add"_s, u"shop"_s});
    two->signal(SIGINT);
    EXPECT_EQ(two->end().exitCode, 0);
    EXPECT_TRUE(widgets().pinned.isEmpty());
    EXPECT_EQ(ports(), QSet<int>{4132});

    // Who only asks for devices writes nothing, also when something changes meanwhile.
    for (const QString& profile : {u".zprofile"_s, u".profile"_s}) {
        launcher.tree.add(u"home/"_s + profile, "PATH=\"$HOME/bin:$PATH\"\n");
    }
    const QString flutter = launcher.tree.add(
        u"home/bin/flutter"_s, "#!/bin/sh\ntouch \"$HOME/asked\"\nuntil [ -e \"$HOME/answer\" ]; do sleep 0.02; done\n"
                               "echo '[]'\n");
    ASSERT_TRUE(QFile::setPermissions(flutter, QFile::ReadOwner | QFile::ExeOwner));
    for (const QString& name : {u"HOME"_s, u"ZDOTDIR"_s}) {
        launcher.environment.insert(name, launcher.tree.path(u"home"_s));
    }
    const auto devices = launcher.start({u"devices"_s});
    EXPECT_TRUE(waitFor([&] { return QFile::exists(launcher.tree.path(u"home/asked"_s)); }));
    json({u"tasks"_s, u"add"_s, u"shop"_s, u"Buy"_s});
    EXPECT_EQ(json({u"tasks"_s}).array().size(), 3);
    launcher.tree.add(u"home/answer"_s);
    EXPECT_EQ(devices->end().exitCode, 0);
    EXPECT_EQ(ports(), QSet<int>{4132});
}

TEST_F(CommandLine, SaysWhenNothingShowsNotifications) {
    launcher.environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nowhere"_s);
    const Ended ended = launcher.call({u"notify"_s, u"--test"_s, u"--json"_s});
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_EQ(QJsonDocument::fromJson(ended.out)[u"sent"_s], false) << ended.out.constData();
    EXPECT_TRUE(ended.err.contains("shows notifications")) << ended.err.constData();
    EXPECT_EQ(launcher.call({u"notify"_s, u"--wait"_s}).exitCode, 2);
}

TEST_F(CommandLine, SaysWhatIsWrongWithBrokenStoresAndKeepsThem) {
    launcher.tree.add(u"support/settings.json"_s, "{\"displayName\": 3}");
    launcher.tree.add(u"support/tasks.json"_s, "[{\"id\"");
    launcher.tree.add(u"support/drafts.json"_s, R"([{"kind": "agent", "text": 1}])");
    const Ended listed = launcher.call({u"settings"_s});
    EXPECT_EQ(listed.exitCode, 0);
    EXPECT_TRUE(listed.err.contains("settings.json is broken") && listed.err.contains("displayName"))
        << listed.err.data();
    EXPECT_TRUE(listed.err.contains("tasks.json is broken") && listed.err.contains("at byte")) << listed.err.data();
    EXPECT_TRUE(listed.err.contains("drafts.json is broken")) << listed.err.data();
    EXPECT_EQ(launcher.call({u"settings"_s, u"set"_s, u"theme"_s, u"ocean"_s}).exitCode, 0);
    EXPECT_EQ(json({u"settings"_s, u"list"_s}).object()[u"theme"_s], u"ocean"_s);
    EXPECT_EQ(readFile(launcher.tree.path(u"support/settings.json.corrupt"_s)), "{\"displayName\": 3}");
}

TEST_F(CommandLine, FitsIntoPipesAndTerminals) {
    struct Case {
        const char* label;
        QString line;
        QByteArray out;
        QByteArray err;
    };
    const Case cases[] = {
        {"a reader that goes away", u"yes localhost:3000 | { \"$ORV\" ports; echo exit $? >&2; } | head -1"_s,
         " 3000  localhost:3000\n", "exit 0\n"},
        {"colours on a terminal",
         u"TERM=xterm script -qec '\"$ORV\" settings' /dev/null | grep -c \"$(printf '\\033')\\[1m\""_s,
         "29\n",
         {}},
        {"none with NO_COLOR",
         u"NO_COLOR=1 TERM=xterm script -qec '\"$ORV\" settings' /dev/null | grep -c \"$(printf '\\033')\""_s,
         "0\n",
         {}},
        {"rows end at the terminal's width",
         u"TERM=xterm script -qec 'stty cols 40; NO_COLOR=1 \"$ORV\" settings' /dev/null | tr -d '\\r' | grep -cE '^.{41,}'"_s,
         "0\n",
         {}},
    };
    for (const Case& c : cases) {
        const Ended ended = launcher.shell(c.line);
        EXPECT_EQ(ended.out, c.out) << c.label;
        EXPECT_EQ(ended.err, c.err) << c.label;
    }
}

} // namespace orv::test
