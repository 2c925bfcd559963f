#include "OrvGit/GitChild_p.h"
#include "tests/OrvGit/GitFixture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QUuid>

#include <algorithm>
#include <csignal>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {
namespace {

class GitRuns : public ::testing::Test {
protected:
    GitHome home;
    const QString repository = home.makeRepository(u"r"_s, {{u"f"_s, "one\n"}});
    /// A word in the command line of everything that a test starts.
    const QByteArray mark = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);

    /// Arguments that make git run a shell line.
    [[nodiscard]] GitArguments shell(const QByteArray& line) const {
        return {"-c", "alias.play=!" + line + "; : " + mark, "play"};
    }
};

TEST_F(GitRuns, HaveTheFixedEnvironmentAndAskNobody) {
    const ScopedEnvironment elsewhere("GIT_DIR", "/nowhere");
    const ScopedEnvironment trace("GIT_TRACE", "1");
    const ScopedEnvironment ssh("GIT_SSH_COMMAND", "ssh -v");
    const QByteArray script =
        "echo $GIT_TERMINAL_PROMPT,$GIT_EDITOR,$LC_ALL,$GIT_LITERAL_PATHSPECS,$GIT_OPTIONAL_LOCKS,"
        "$GIT_ASKPASS,$SSH_ASKPASS,$GIT_SSH_COMMAND,$EXTRA; git config core.fsmonitor || echo unset; "
        "tty || :; readlink /proc/self/fd/0; ls /proc/self/fd | wc -l; pwd";
    GitRunner user{{{u"EXTRA"_s, u"x y"_s}, {u"GIT_EDITOR"_s, u"mine"_s}}, GitPurpose::userAction, {}};
    const auto asked = user.runRaw(shell(script), repository, 30s);
    ASSERT_TRUE(asked) << failure(asked);
    EXPECT_EQ(
        asked->stdoutText(), u"0,mine,C,1,,,,ssh -v,x y\nunset\nnot a tty\n/dev/null\n4\n"_s + repository + u'\n');
    EXPECT_EQ(asked->stderrText(), QString());

    const GitRunner background{{}, GitPurpose::background, {}};
    const auto unasked = background.runRaw(shell(script), repository, 30s);
    ASSERT_TRUE(unasked) << failure(unasked);
    EXPECT_TRUE(unasked->output.startsWith("0,true,C,1,0,false,false,ssh -v -o BatchMode=yes,\nfalse\n"))
        << unasked->output.constData();
}

/// A folder that somebody else packed: looking at it must not run what its configuration says.
TEST_F(GitRuns, OfNobodyRunNothingOfTheRepository) {
    const QString submodule = home.makeRepository(u"sub"_s, {{u"x"_s, "1\n"}});
    git(repository, {u"submodule"_s, u"--quiet"_s, u"add"_s, submodule, u"deep/module"_s});
    const QString module = repository + u"/deep/module"_s;
    // What "add all" makes of a repository that lies in another one.
    const QString nested = repository + u"/nested"_s;
    git(repository, {u"init"_s, u"--quiet"_s, u"nested"_s});
    home.add(u"x"_s, "1\n");
    ASSERT_TRUE(QFile::copy(home.path(u"x"_s), nested + u"/x"_s));
    git(nested, {u"add"_s, u"x"_s});
    git(nested, {u"commit"_s, u"--quiet"_s, u"-m"_s, u"x"_s});
    git(repository, {u"-c"_s, u"advice.addEmbeddedRepo=false"_s, u"add"_s, u"nested"_s});
    home.add(
        u"evil"_s,
        "[filter \"bad=name\"]\n\tclean = touch " + home.path(u"ran"_s).toUtf8() + "; cat\n\trequired = true\n");
    for (const auto& [folder, file] :
         {std::pair{repository, u"f"_s}, std::pair{module, u"x"_s}, std::pair{nested, u"x"_s}}) {
        git(folder, {u"config"_s, u"include.path"_s, home.path(u"evil"_s)});
        git(folder, {u"config"_s, u"core.fsmonitor"_s, u"touch "_s + home.path(u"ran"_s)});
        QFile attributes(folder + u"/.gitattributes"_s);
        ASSERT_TRUE(attributes.open(QIODevice::WriteOnly) && attributes.write("* filter=bad=name\n") > 0);
        QFile changed(folder + u'/' + file);
        ASSERT_TRUE(changed.open(QIODevice::WriteOnly) && changed.write("2\n") > 0);
    }
    const GitRunner background{{}, GitPurpose::background, {}};
    const auto status = GitService(background).status(repository);
    ASSERT_TRUE(status) << failure(status);
    QFile hook(repository + u"/.git/hooks/post-index-change"_s);
    ASSERT_TRUE(QDir().mkpath(repository + u"/.git/hooks"_s) && hook.open(QIODevice::WriteOnly));
    hook.write("#!/bin/sh\ntouch " + home.path(u"ran"_s).toUtf8() + "\n");
    hook.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    hook.close();
    EXPECT_TRUE(background.run({"update-index", "--chmod=+x", "f"}, repository, 30s));
    EXPECT_FALSE(QFile::exists(home.path(u"ran"_s)));
    EXPECT_TRUE(std::ranges::any_of(status->changes, [](const FileChange& change) { return change.path == u"f"_s; }));
    EXPECT_TRUE(GitService().status(repository));
    EXPECT_TRUE(QFile::exists(home.path(u"ran"_s)));
}

TEST_F(GitRuns, EndInWhatTheyWereOrWhyTheyWereNot) {
    const GitRunner runner;
    const auto flood = runner.runRaw(
        shell("yes out | head -c 3000000; yes err | head -c 3000000 >&2; printf 'tail \\377'; exit 7"), repository,
        60s);
    ASSERT_TRUE(flood) << failure(flood);
    EXPECT_EQ(flood->code, 7);
    EXPECT_EQ(flood->errors.size(), 3000000);
    EXPECT_TRUE(flood->stdoutText().endsWith(u"tail \uFFFD"_s));

    const auto cut = runner.runRaw(shell("yes"), repository, 60s, {.input = {}, .outputLimitBytes = 1000});
    ASSERT_TRUE(cut) << failure(cut);
    EXPECT_TRUE(cut->isCut);
    EXPECT_EQ(cut->output.size(), 1000);

    EXPECT_EQ(runner.runRaw(shell("kill -9 $PPID"), repository, 60s)->code, 128 + 9);
    EXPECT_EQ(failure(runner.run({"status"}, home.path(), 30s)), "This folder is not a git repository.");
    EXPECT_EQ(
        failure(runner.run({"status"}, home.path(u"none"_s), 30s)),
        "Could not start git: the folder " + home.path(u"none"_s).toStdString() + " is not there.");
    const auto echoed = runner.run({"hash-object", "--stdin"}, repository, 30s, {.input = "one\n"});
    EXPECT_EQ(*echoed, git(repository, {u"rev-parse"_s, u":f"_s}));
}

TEST_F(GitRuns, ArriveAsLinesThatEndEitherWay) {
    QStringList lines;
    const auto code = GitRunner().stream(
        shell("printf 'a\\rb\\n\\nc'; sleep 0; printf 'x\\ry' >&2; exit 3"), repository,
        [&lines](const QString& line) { lines.append(line); });
    EXPECT_EQ(*code, 3);
    lines.sort();
    EXPECT_EQ(lines, (QStringList{{}, u"a"_s, u"b"_s, u"c"_s, u"x"_s, u"y"_s}));
}

TEST_F(GitRuns, LeaveNoProcessWhenTheyAreEnded) {
    const ProcessResources before = ProcessResources::now();
    const struct {
        const char* label;
        QByteArray line;
    } cases[]{
        {"that waits", "sleep 600"},
        {"that ignores the signal", "trap '' TERM; while :; do sleep 600; done"},
        {"that has left children", "(trap '' TERM; sleep 600 & sleep 600) & wait"},
        {"that floods", "yes"},
    };
    for (const auto& each : cases) {
        const auto late = GitRunner().runRaw(shell(each.line), repository, 300ms);
        ASSERT_FALSE(late) << each.label;
        EXPECT_EQ(late.error().text(), u"git took too long and was stopped."_s) << each.label;
        EXPECT_EQ(processesWith(mark), 0) << each.label;

        GitRunner runner;
        runner.cancellation.emplace();
        std::thread canceller([&] {
            EXPECT_TRUE(comesTrue([this] { return processesWith(mark) > 0; }));
            runner.cancellation->cancel();
        });
        const auto cancelled = runner.stream(shell(each.line), repository, [](const QString&) {});
        canceller.join();
        ASSERT_FALSE(cancelled) << each.label;
        EXPECT_EQ(cancelled.error().kind, GitError::Kind::cancelled) << each.label;
        EXPECT_EQ(processesWith(mark), 0) << each.label;
        EXPECT_FALSE(runner.runRaw({"version"}, repository, 30s)) << each.label;
    }
    EXPECT_EQ(ProcessResources::now(), before);
}

/// As a hook does that starts a server: git has exited, its pipes are held.
TEST_F(GitRuns, DoNotWaitForWhatTheyLeftBehind) {
    QElapsedTimer timer;
    timer.start();
    const auto result =
        GitRunner().runRaw(shell("setsid sh -c 'echo $$ >pid; exec sleep 60' & echo done"), repository, 50s);
    ASSERT_TRUE(result) << failure(result);
    EXPECT_EQ(result->output, "done\n");
    EXPECT_LT(timer.elapsed(), 30000);
    EXPECT_EQ(::kill(readFile(repository + u"/pid"_s).trimmed().toInt(), SIGKILL), 0);
}

/// As when the machine slept, or the application was stopped: it comes back with the limit long gone.
TEST_F(GitRuns, AreReadToTheirEndByWhoStoodStillMeanwhile) {
    const auto hasExited = [] {
        siginfo_t info{};
        return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
    };
    const struct {
        const char* label;
        QByteArray line;
        GitChild::End end;
        QByteArray output;
    } cases[]{
        {"done by then", "printf a; printf b >&2; printf c", GitChild::End::exited, "abc"},
        {"what was left behind was, too",
         "(while [ -d /proc/$$/task ] && ! grep -q '^State:.Z' /proc/$$/status; do :; done; printf a; read x <go; "
         "printf b; echo >said) &",
         GitChild::End::exited, "ab"},
        {"still at it", "printf a; while :; do sleep 1; done", GitChild::End::timeout, "a"},
        {"flooding all the while", "printf a; yes", GitChild::End::timeout, {}},
    };
    for (const auto& each : cases) {
        home.add(u"still/here"_s, {});
        QFile::remove(home.path(u"still/said"_s));
        QFile::remove(home.path(u"still/go"_s));
        ASSERT_EQ(::mkfifo(home.path(u"still/go"_s).toUtf8().constData(), 0600), 0);
        auto child = GitChild::start(
            {.program = "/bin/sh",
             .arguments = {"sh", "-c", each.line},
             .variables = ChildProcess::environment({}),
             .directory = home.path(u"still"_s)},
            {});
        ASSERT_TRUE(child) << child.error().text().toStdString();
        QByteArray output;
        const QDeadlineTimer limit(300);
        const QDeadlineTimer longer(1300);
        bool hasStood = false;
        const auto read = [&](GitChild::Stream, QByteArrayView bytes) {
            output.append(bytes.first(std::min<qsizetype>(bytes.size(), 100)));
            if (!std::exchange(hasStood, true)) {
                EXPECT_TRUE(comesTrue([&] { return limit.hasExpired(); }));
                if (each.output == "ab") {
                    QFile go(home.path(u"still/go"_s));
                    EXPECT_TRUE(go.open(QIODevice::WriteOnly) && go.write("\n") == 1);
                    go.close();
                    EXPECT_TRUE(
                        comesTrue([&] { return longer.hasExpired() && QFile::exists(home.path(u"still/said"_s)); }));
                } else if (each.end == GitChild::End::exited) {
                    EXPECT_TRUE(comesTrue(hasExited));
                }
            }
            return GitChild::Wanted::more;
        };
        EXPECT_EQ((*child)->follow(limit, {}, read), each.end) << each.label;
        std::ranges::sort(output);
        if (!each.output.isEmpty()) {
            EXPECT_EQ(output, each.output) << each.label;
        }
    }
}

TEST_F(GitRuns, WaitForALockedIndexAndNeverRemoveIt) {
    const QString lock = home.add(u"r/.git/index.lock"_s, {});
    home.add(u"r/new"_s, "x");
    GitService service;
    const auto refused = service.stage(repository, {u"new"_s});
    ASSERT_FALSE(refused);
    EXPECT_TRUE(refused.error().text().contains(u"index.lock': File exists"_s)) << failure(refused);
    EXPECT_TRUE(QFile::exists(lock));
    EXPECT_TRUE(service.status(repository));

    const QString trace = home.path(u"trace"_s);
    service.runner.extraEnvironment = {{u"GIT_TRACE2"_s, trace}};
    std::thread unlock([&] {
        EXPECT_TRUE(comesTrue([&trace] { return readFile(trace).contains(" exit "); }));
        EXPECT_TRUE(QFile::remove(lock));
    });
    const auto staged = service.stage(repository, {u"new"_s});
    unlock.join();
    EXPECT_TRUE(staged) << failure(staged);
}

} // namespace
} // namespace orv::test
