#include "OrvUI/DeviceRun.h"
#include "OrvUI/DevicesModel.h"
#include "tests/OrvUI/PartsFixture.h"

#include <QDir>
#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

using DevicesTest = PartsTest;

TEST_F(DevicesTest, DevicesAreListedAsTheirToolsAnswerAndStartedWithTheProject) {
    addTool(
        u"bin/flutter"_s,
        "if [ \"$1\" = devices ]; then cat '" + tree.path(u"devices.json"_s).toUtf8() +
            "'; elif [ \"$1\" = pub ]; then mkdir .dart_tool; else echo \"on $3\"; exec sleep 100; fi\n");
    tree.add(u"devices.json"_s, R"([{"id": "chrome", "name": "Chrome"}, {"id": "U2", "name": "iPhone 16"}])");
    addTool(u"tools/xcrun"_s, R"(echo '{"devices": {"r.iOS-17-2": [{"udid": "U1", "name": "iPhone 15"}],
        "r.iOS-18-2": [{"udid": "U2", "name": "iPhone 16", "state": "Booted"}]}}')");
    addTool(
        u"sdk/emulator/emulator"_s, "case $1 in -list-avds) echo Pixel_9;; *) touch '" +
                                        tree.path(u"booted"_s).toUtf8() + "'; exec sleep 2;; esac\n");
    addTool(
        u"sdk/platform-tools/adb"_s, "[ -e '" + tree.path(u"booted"_s).toUtf8() +
                                         "' ] || exit 0\n"
                                         "case $* in devices) printf 'List\\nemulator-5554\\tdevice\\n';; *name) "
                                         "printf 'Pixel_9\\nOK\\n';; *) echo 1;; esac\n");
    tree.add(u"projects/pocket/pubspec.yaml"_s, "name: pocket\ndependencies:\n  flutter:\n    sdk: flutter\n");
    scan();
    DevicesModel& devices = *model->devices();
    const Project pocket = project(u"pocket"_s);
    devices.setProjectID(pocket.id);
    EXPECT_TRUE(finishes(devices.refresh()));
    const QList<QByteArray> roles{"section", "title", "detail", "isBooted"};
    becomes(
        *devices.devices(), roles,
        u"Connected|Chrome|Web|false; iOS 18.2|iPhone 16|Simulator|true; "
        "iOS 17.2|iPhone 15|Simulator|false; Android|Pixel 9|Emulator|false"_s);
    EXPECT_TRUE(devices.hints().isEmpty());
    devices.setSearchText(u"PIX"_s);
    EXPECT_EQ(text(*devices.devices(), {"title"}), u"Pixel 9"_s);
    EXPECT_TRUE(devices.choose(pocket.id, u"avd:Pixel_9"_s));
    makeModel();
    scan();
    EXPECT_EQ(model->devices()->chosen(pocket.id), u"avd:Pixel_9"_s);
    EXPECT_TRUE(finishes(model->run(pocket, {ServiceKind::flutter})));
    EXPECT_EQ(model->pendingInstall(), (PendingInstall{pocket, {ServiceKind::flutter}, u"Pixel_9"_s}));
    EXPECT_FALSE(QFile::exists(tree.path(u"booted"_s))) << "who is asked first may say no";
    EXPECT_TRUE(finishes(model->confirmInstall()));
    EXPECT_FALSE(model->setup());
    EXPECT_TRUE(waitFor([&] { return logText(id(pocket, ServiceKind::flutter)) == u"on emulator-5554"_s; }))
        << logText(id(pocket, ServiceKind::flutter)).toStdString();

    EXPECT_TRUE(finishes(model->stop(pocket)));
    DeviceRun runner;
    runner.setModel(model.get());
    model->devices()->ask(pocket.id);
    ASSERT_TRUE(QFile::remove(tree.path(u"booted"_s)) && QDir(pocket.root + u"/.dart_tool"_s).removeRecursively());
    runner.start(u"avd:Pixel_9"_s, false);
    EXPECT_TRUE(waitFor([&] { return model->setup().has_value(); }));
    EXPECT_FALSE(QFile::exists(tree.path(u"booted"_s))) << "not before it is to be installed";
    model->cancelInstall();
    tree.add(u"projects/pocket/.dart_tool/x"_s);
    model->devices()->ask(pocket.id);
    EXPECT_TRUE(model->devices()->isAsking());
    runner.start(u"flutter:chrome"_s, false);
    EXPECT_FALSE(model->devices()->isAsking());
    EXPECT_TRUE(waitFor([&] { return logText(id(pocket, ServiceKind::flutter)) == u"on chrome"_s; }))
        << logText(id(pocket, ServiceKind::flutter)).toStdString();
    EXPECT_EQ(model->devices()->chosen(pocket.id), u"avd:Pixel_9"_s) << "only this time";
    EXPECT_TRUE(finishes(model->stop(pocket)));
    runner.start(u"flutter:web-server"_s, true);
    EXPECT_EQ(model->devices()->chosen(pocket.id), u"flutter:web-server"_s);
    EXPECT_TRUE(waitFor([&] { return logText(id(pocket, ServiceKind::flutter)).endsWith(u"on web-server"_s); }));
    EXPECT_TRUE(finishes(model->stop(pocket)));

    // A tool that fails is not one that finds nothing, and a Flutter that can't list its devices has the desktop still.
    QFile::remove(tree.path(u"tools/xcrun"_s));
    flutterLimit = 300;
    makeModel();
    const struct {
        QByteArray flutter;
        QByteArray emulator;
        QString rows;
        QString hints;
    } cases[] = {
        {"exec sleep 100\n", "exit 3\n", u"Linux"_s,
         u"^Flutter did not answer.*\nNo simulators.*\nThe Android emulators could not be listed.*emulator -list-avds"_s},
        {"exit 1\n", "true\n", u"Linux"_s,
         u"^Flutter could not.*\nNo simulators.*\nThere is no Android emulator yet"_s},
        {"echo Welcome to Flutter\n", "true\n", u"Linux"_s,
         u"^What Flutter says about its devices is not understood"_s},
        {"exit 127\n", {}, {}, u"^Flutter was not found.*\nNo simulators.*\nNo Android SDK was found"_s},
    };
    for (const auto& [flutter, emulator, rows, hints] : cases) {
        addTool(u"bin/flutter"_s, flutter);
        QFile::remove(tree.path(u"sdk/emulator/emulator"_s));
        if (!emulator.isEmpty()) {
            addTool(u"sdk/emulator/emulator"_s, emulator);
        }
        EXPECT_TRUE(finishes(model->devices()->refresh()));
        const QString said = model->devices()->hints().join(u'\n');
        EXPECT_TRUE(said.contains(QRegularExpression(hints))) << said.toStdString();
        EXPECT_EQ(text(*model->devices()->devices(), {"title"}), rows) << flutter.constData();
    }
    const auto gone = model->devices()->ready(u"avd:Pixel_9"_s);
    EXPECT_TRUE(waitFor([&] { return gone.isFinished(); }));
    EXPECT_FALSE(gone.result().has_value());
}

TEST_F(DevicesTest, AnEmulatorThatIsBootingIsWaitedFor) {
    const auto here = [this](const QString& name) { return '\'' + tree.path(name).toUtf8() + '\''; };
    addTool(
        u"sdk/emulator/emulator"_s, "echo started >> " + here(u"starts"_s) + "; for i in $(seq 300); do [ -e " +
                                        here(u"up"_s) + " ] && exec sleep 2; sleep 0.1; done\n");
    addTool(
        u"sdk/platform-tools/adb"_s, "echo \"$1\" >> " + here(u"asked"_s) + "; [ -e " + here(u"starts"_s) +
                                         " ] || exit 0; state=offline; [ -e " + here(u"up"_s) +
                                         " ] && state=device\n"
                                         "case $* in devices) printf \"List\\nemulator-5554\\t$state\\n\";; *name) "
                                         "printf 'Pixel_9\\nOK\\n';; *) [ $state = device ] && echo 1;; esac\n");
    const auto boot = [this] { return model->devices()->ready(u"avd:Pixel_9"_s); };
    const auto isReady = [](const QFuture<DeviceTools::Booted>& device) {
        return waitFor([&] { return device.isFinished(); }) && device.result() == u"emulator-5554"_s;
    };
    // By another process.
    const QString starts = tree.add(u"starts"_s);
    const auto others = boot();
    EXPECT_TRUE(waitFor([this] { return readFile(tree.path(u"asked"_s)).count("devices") > 1; }));
    EXPECT_FALSE(others.isFinished());
    const QString up = tree.add(u"up"_s);
    EXPECT_TRUE(isReady(others));
    EXPECT_EQ(readFile(starts), "");

    // For two projects at once.
    ASSERT_TRUE(QFile::remove(starts) && QFile::remove(up));
    const auto first = boot();
    const auto second = boot();
    EXPECT_TRUE(waitFor([&] { return QFile::exists(starts); }));
    tree.add(u"up"_s);
    EXPECT_TRUE(isReady(first) && isReady(second));
    EXPECT_EQ(readFile(starts), "started\n");

    // For a project that is stopped meanwhile.
    ASSERT_TRUE(QFile::remove(starts) && QFile::remove(tree.path(u"up"_s)));
    tree.add(u"projects/pocket/pubspec.yaml"_s, "name: pocket\ndependencies:\n  flutter:\n    sdk: flutter\n");
    tree.add(u"projects/pocket/.dart_tool/x"_s);
    scan();
    const Project pocket = project(u"pocket"_s);
    const QFuture<void> run = model->run(pocket, {ServiceKind::flutter}, u"avd:Pixel_9"_s);
    ASSERT_TRUE(waitFor([&] { return QFile::exists(starts); }));
    EXPECT_EQ(model->statusText(), u"Getting Pixel 9 ready…"_s);
    model->toggleRun(pocket);
    EXPECT_EQ(model->statusText(), QString()) << "it counts as what comes up, which is stopped";
    tree.add(u"up"_s);
    EXPECT_TRUE(finishes(run));
    EXPECT_FALSE(state(pocket, ServiceKind::flutter).isActive());
}
