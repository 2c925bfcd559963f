#include "Launcher.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <csignal>

namespace orv::test {

using namespace Qt::StringLiterals;

namespace {

class RunCommand : public ::testing::Test {
protected:
    /// A project of one service that runs these lines of shell.
    QString project(const QByteArray& script) {
        launcher.tree.add(u"projects/app/run.sh"_s, script);
        launcher.tree.add(u"projects/app/Makefile"_s, "dev:\n\t@exec sh run.sh\n");
        return launcher.tree.path(u"projects/app"_s);
    }
    QString server(int port) {
        return project("exec python3 -m http.server --bind 127.0.0.1 " + QByteArray::number(port) + '\n');
    }

    /// A Vite project in whose folder an `npm` of ours does what "npm-install.sh" and "npm-run.sh" say.
    QString nodeProject(const QByteArray& install) {
        const QString npm = launcher.tree.add(u"bin/npm"_s, "#!/bin/sh\n. ./npm-$1.sh\n");
        QFile::setPermissions(npm, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        launcher.environment.insert(u"PATH"_s, launcher.tree.path(u"bin:"_s) + launcher.environment.value(u"PATH"_s));
        launcher.tree.add(
            u"projects/web/package.json"_s, R"({"scripts": {"dev": "x"}, "dependencies": {"vite": "1"}})");
        launcher.tree.add(u"projects/web/npm-install.sh"_s, install);
        launcher.tree.add(u"projects/web/npm-run.sh"_s, "echo served\n");
        return launcher.tree.path(u"projects/web"_s);
    }

    Launcher launcher;
};

constexpr auto fallbackServer = R"(exec python3 -c '
from http.server import *
print("Port 5173 is in use, trying another one...")
server = HTTPServer(("127.0.0.1", 0), SimpleHTTPRequestHandler)
print(f"  Local:   http://localhost:{server.server_port}/")
server.serve_forever()'
)";
constexpr auto silentServer = R"(exec python3 -c '
from http.server import *
print("ready")
HTTPServer(("127.0.0.1", 0), SimpleHTTPRequestHandler).serve_forever()'
)";

} // namespace

TEST_F(RunCommand, EndsWithItsServices) {
    struct Case {
        const char* label;
        QByteArray script;
        int exitCode;
        QByteArray out;
        QByteArray err;
    };
    const Case cases[] = {
        {"ends by itself", "printf 'a\\033[35mb\\nlast'", 0, "app │ ab\napp │ last\n", "app stopped.\n"},
        {"fails", "echo boom; kill -9 $$", 1, "app │ boom\n", "app failed: Exited with code "},
    };
    for (const Case& c : cases) {
        const Ended ended = launcher.call({u"run"_s, project(c.script)});
        EXPECT_EQ(ended.exitCode, c.exitCode) << c.label << ended.err.data();
        EXPECT_TRUE(ended.out.startsWith(c.out)) << c.label << ": " << ended.out.data();
        EXPECT_TRUE(ended.err.contains(c.err)) << c.label << ": " << ended.err.data();
        EXPECT_EQ(launcher.leftBehind(), QStringList()) << c.label;
    }
}

TEST_F(RunCommand, StopsCleanlyOnASignal) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const int port = freePort();
        auto run = launcher.start({u"run"_s, server(port)});
        ASSERT_TRUE(run->waitFor("app is up at http://localhost:" + QByteArray::number(port))) << run->end().err.data();
        EXPECT_TRUE(httpGet(port).contains("run.sh"));
        run->signal(number);
        const Ended ended = run->end();
        EXPECT_EQ(ended.exitCode, 0) << number;
        EXPECT_TRUE(ended.err.contains("Stopping…") && ended.err.endsWith("app stopped.\n")) << ended.err.data();
        EXPECT_EQ(launcher.leftBehind(), QStringList()) << number;
        EXPECT_EQ(httpGet(port), "") << number;
    }
}

TEST_F(RunCommand, KillsWhatDoesNotStopAtOnceOnASecondSignal) {
    auto run = launcher.start({u"run"_s, project("trap '' TERM; echo on port 1234; while :; do sleep 60; done")});
    ASSERT_TRUE(run->waitFor("app does not listen yet at http://localhost:1234\n"));
    run->signal(SIGINT);
    ASSERT_TRUE(run->waitFor("Stopping…"));
    run->signal(SIGINT);
    const Ended ended = run->end();
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.err.contains("Killing everything")) << ended.err.data();
    EXPECT_TRUE(waitFor([&] { return launcher.leftBehind().isEmpty(); }));
}

TEST_F(RunCommand, EndsWhatAKilledOneHasLeft) {
    const int port = freePort();
    const QString folder = server(port);
    const QByteArray isUp = "app is up at http://localhost:" + QByteArray::number(port);
    auto killed = launcher.start({u"run"_s, folder});
    ASSERT_TRUE(killed->waitFor(isUp)) << killed->end().err.data();
    killed->signal(SIGKILL);
    EXPECT_NE(killed->end().exitCode, 0);
    EXPECT_NE(launcher.leftBehind(), QStringList()) << "it holds the port";

    auto next = launcher.start({u"run"_s, folder});
    ASSERT_TRUE(next->waitFor(isUp)) << next->end().err.data();
    next->signal(SIGINT);
    const Ended ended = next->end();
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(ended.err.startsWith("Stopping what an earlier run has left…\n")) << ended.err.data();
    EXPECT_EQ(launcher.leftBehind(), QStringList());
}

TEST_F(RunCommand, SaysWhereAServiceReallyListens) {
    struct Case {
        const char* label;
        const char* script;
    };
    const Case cases[] = {
        {"not where it said first", fallbackServer},
        {"where it never said", silentServer},
    };
    for (const Case& c : cases) {
        auto run = launcher.start({u"run"_s, project(c.script)});
        ASSERT_TRUE(run->waitFor("app is up at")) << c.label << run->end().err.data();
        const QMap<QString, int> addresses = run->addresses();
        ASSERT_EQ(addresses.size(), 1) << c.label;
        EXPECT_TRUE(httpGet(addresses.first()).contains("run.sh")) << c.label;
        run->signal(SIGINT);
        const Ended ended = run->end();
        EXPECT_EQ(ended.err.count("is up at"), 1) << c.label << ended.err.data();
    }
}

TEST_F(RunCommand, CountsTheLinesOfAFloodThatItSkips) {
    const Ended ended = launcher.call({u"run"_s, project("seq 1 400000")});
    EXPECT_EQ(ended.exitCode, 0);
    EXPECT_TRUE(ended.out.endsWith("app │ 400000\n")) << ended.out.last(100).data();
    static const QRegularExpression skipping(u"… ([\\d,]+) lines? skipped"_s);
    qsizetype lines = 0;
    for (const QByteArray& line : ended.out.split('\n')) {
        const auto skip = skipping.match(QString::fromUtf8(line));
        lines += skip.hasMatch() ? skip.captured(1).remove(u',').toLongLong() : line.isEmpty() ? 0 : 1;
    }
    EXPECT_EQ(lines, 400'000);
}

TEST_F(RunCommand, StopsWhenTheReaderOfItsOutputGoesAway) {
    const QString folder = project("while echo tick; do sleep 0.05; done");
    const Ended ended = launcher.shell(u"{ \"$ORV\" run "_s + folder + u"; echo exit $? >&2; } | head -1"_s);
    EXPECT_EQ(ended.out, "app │ tick\n");
    EXPECT_TRUE(ended.err.endsWith("exit 0\n")) << ended.err.data();
    EXPECT_EQ(launcher.leftBehind(), QStringList());
}

TEST_F(RunCommand, InstallsOnlyWhenAskedTo) {
    const QString plain = launcher.tree.path(u"projects/plain"_s);
    launcher.tree.add(u"projects/plain/package.json"_s, R"({"scripts":{"dev":"node server.js"}})");
    launcher.tree.add(u"projects/plain/server.js"_s, "console.log('served')\n");
    const QString broken = launcher.tree.path(u"projects/broken"_s);
    launcher.tree.add(
        u"projects/broken/package.json"_s, R"({"scripts":{"dev":"true"},"dependencies":{"gone":"file:./gone.tgz"}})");
    struct Case {
        const char* label;
        QStringList words;
        int exitCode;
        QByteArray out;
        QByteArray err;
    };
    const Case cases[] = {
        {"not asked", {plain}, 1, "", "  npm install\nRun it again with --install"},
        {"asked", {plain, u"--install"_s}, 0, "frontend │ served\n", "Installing frontend: npm install"},
        {"remembered, though there is no marker", {plain}, 0, "frontend │ served\n", "frontend stopped."},
        {"failing", {broken, u"--install"_s}, 1, "gone.tgz", "The install failed: Exited with code "},
    };
    for (const Case& c : cases) {
        const Ended ended = launcher.call(QStringList{u"run"_s} + c.words);
        EXPECT_EQ(ended.exitCode, c.exitCode) << c.label;
        EXPECT_TRUE(c.out.isEmpty() ? ended.out.isEmpty() : ended.out.contains(c.out)) << c.label << ended.out.data();
        EXPECT_TRUE(ended.err.contains(c.err)) << c.label << ended.err.data();
        const bool isNeeded = launcher.call({u"detect"_s, c.words.first()}).out.contains("needed: cd ");
        EXPECT_EQ(isNeeded, c.exitCode != 0) << c.label;
    }
}

TEST_F(RunCommand, FailsWhenAnInstallIsFollowedByNoRun) {
    struct Case {
        const char* label;
        QByteArray install;
        QByteArray err;
    };
    const Case cases[] = {
        {"the project went", "rm package.json", "web is gone from your projects folder.\n"},
        {"another install is needed", "mkdir node_modules admin; cp package.json admin",
         "After the install web needs another one:\n  cd admin && npm install\nRun it again with --install"},
        {"run again", "mkdir node_modules", "frontend admin stopped.\n"},
    };
    for (const Case& c : cases) {
        const bool isLast = c.err == "frontend admin stopped.\n";
        const QString folder = nodeProject(c.install);
        if (isLast) {
            launcher.tree.add(u"projects/web/admin/npm-install.sh"_s, c.install);
            launcher.tree.add(u"projects/web/admin/npm-run.sh"_s, "echo served\n");
        }
        const Ended ended = launcher.call({u"run"_s, folder, u"--install"_s});
        EXPECT_EQ(ended.exitCode, isLast ? 0 : 1) << c.label;
        EXPECT_EQ(ended.out.count("served"), isLast ? 2 : 0) << c.label;
        EXPECT_TRUE(ended.err.contains(c.err)) << c.label << ended.err.data();
    }
}

TEST_F(RunCommand, StopsAnInstallOnASignal) {
    // So many lines are on their way then that the last ones come long after the install is gone.
    const QString folder =
        nodeProject("l=$(head -c 1500 /dev/zero | tr '\\0' x); i=0\n"
                    "while [ $((i += 1)) -lt 20000 ]; do echo $l; done; echo >full; while :; do echo $l; done\n");
    const QString line = u"exec \"$ORV\" run '%1' --install >/dev/null"_s.arg(folder);
    Running run(u"/bin/sh"_s, {u"-c"_s, line}, launcher.environment, {});
    ASSERT_TRUE(waitFor([&] { return QFile::exists(folder + u"/full"_s); })) << run.end().err.data();
    run.signal(SIGINT);
    const Ended ended = run.end(std::chrono::seconds(30));
    EXPECT_EQ(ended.exitCode, 130) << "nothing of the project was started";
    EXPECT_TRUE(ended.err.endsWith("Stopping… (once more kills at once)\n")) << ended.err.data();
    EXPECT_EQ(launcher.leftBehind(), QStringList());
}

TEST_F(RunCommand, TellsEverythingAsJsonLines) {
    const int port = freePort();
    auto run = launcher.start({u"run"_s, server(port), u"--json"_s});
    ASSERT_TRUE(waitFor([&] { return httpGet(port).contains("200"); }));
    run->signal(SIGINT);
    const Ended ended = run->end();
    QStringList states;
    QJsonObject last;
    for (const QByteArray& line : ended.out.trimmed().split('\n')) {
        last = QJsonDocument::fromJson(line).object();
        ASSERT_TRUE(last.contains(u"event"_s)) << line.data();
        if (last[u"event"_s] == u"state"_s) {
            states.append(last[u"state"_s].toString());
        }
    }
    EXPECT_EQ(states, (QStringList{u"starting"_s, u"running"_s, u"stopped"_s}));
    EXPECT_EQ(last, (QJsonObject{{u"event"_s, u"end"_s}, {u"exitCode"_s, 0}}));
    EXPECT_EQ(ended.err, "");
}

TEST_F(RunCommand, RunsTheSamples) {
    struct Case {
        QString sample;
        QStringList services;
    };
    const Case cases[] = {
        {u"static-site"_s, {u"frontend"_s}},
        {u"python-server"_s, {u"app"_s}},
        {u"full-stack"_s, {u"backend"_s, u"frontend"_s}},
    };
    for (const auto& [sample, services] : cases) {
        const QString copy = launcher.tree.path(u"projects/"_s + sample);
        ASSERT_EQ(QProcess::execute(u"cp"_s, {u"-r"_s, sourcePath(u"samples/"_s + sample), copy}), 0);
        auto run = launcher.start({u"run"_s, copy, u"--install"_s});
        for (const QString& service : services) {
            ASSERT_TRUE(run->waitFor(service.toUtf8() + " is up")) << run->end().err.data();
        }
        const QMap<QString, int> addresses = run->addresses();
        EXPECT_EQ(addresses.keys(), services);
        for (const int port : addresses) {
            EXPECT_TRUE(httpGet(port).startsWith("HTTP/1.")) << sample.toStdString() << port;
        }
        run->signal(SIGINT);
        EXPECT_EQ(run->end().exitCode, 0) << sample.toStdString();
        EXPECT_EQ(launcher.leftBehind(), QStringList()) << sample.toStdString();
    }
}

} // namespace orv::test
