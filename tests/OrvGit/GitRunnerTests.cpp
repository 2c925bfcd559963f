#include "OrvGit/GitChild_p.h"
#include "tests/OrvGit/GitFixture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
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
    const ScopedEnvironment trace2("GIT_TRACE2_PERF", "2");
    const ScopedEnvironment counted("GIT_CONFIG_COUNT", "1");
    const ScopedEnvironment countedKey("GIT_CONFIG_KEY_0", "core.fsmonitor");
    const ScopedEnvironment countedValue("GIT_CONFIG_VALUE_0", "inherited");
    const ScopedEnvironment given("GIT_CONFIG_PARAMETERS", "'core.fsmonitor'='inherited'");
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

/// Each leads git to a repository with a filter of its own in another way.
TEST_F(GitRuns, OfNobodyFindEveryRepositoryThatGitLooksInto) {
    const QByteArray functions =
        "set -e; fill() { git init -q \"$1\"; (cd \"$1\"; echo 1 > x; git add x; git commit -qm x; spoil); }\n"
        "spoil() { git config filter.evil.clean \"touch $RAN; cat\"; echo '* filter=evil' > .gitattributes;"
        " echo 2 > x; }\n"
        "embed() { git init -q r; cd r; fill \"$1\"; git -c advice.addEmbeddedRepo=false add \"$1\"; }\n";
    const struct {
        const char* label;
        QByteArray line;
        QString folder = u"r"_s;
    } cases[]{
        {"in the work tree", "embed m"},
        {"a file .git that leads elsewhere", "embed m; mv m/.git hidden; echo 'gitdir: ../hidden' > m/.git"},
        {"several parts of the index", "embed m; git update-index --split-index"},
        {"an index of version 4", "embed m; touch m2 m3; git add m2 m3; git update-index --index-version 4"},
        {"a name that is no text", "embed \"$(printf 'm\\377')\""},
        {"hashes of another length",
         "git init -q --object-format=sha256 r; cd r; git init -q --object-format=sha256 m; cd m; echo 1 > x;"
         " git add x; git commit -qm x; spoil; cd ..; git -c advice.addEmbeddedRepo=false add m"},
        {"a submodule of a submodule", "embed m; cd m; fill n; git -c advice.addEmbeddedRepo=false add n"},
        {"another work tree", "embed m; mkdir ../w; mv m ../w/; git config core.worktree ../../w"},
        {"another work tree of a submodule",
         "embed m; cd m; fill n; git -c advice.addEmbeddedRepo=false add n; mv x n .gitattributes ..;"
         " git config core.worktree ../.."},
        {"a submodule of a further work tree",
         "fill s; git init -q o; cd o; git submodule --quiet add ../s m; git commit -qm m; git worktree add -q ../r;"
         " cd ../r; git submodule --quiet update --init; cd m; spoil"},
        {"a blank at the end of .git",
         "fill r; cd r; mv .git '../h '; git init -q --bare ../h; echo 'gitdir: ../h ' > .git"},
        {"a blank at the end of commondir",
         "fill r; cd r; mkdir 'c ' c; mv .git/refs .git/objects .git/config 'c '; mkdir c/refs c/objects;"
         " echo '../c ' > .git/commondir"},
        {"a line break in .git", "fill r; cd r; mv .git \"$(printf '../h\\nh')\"; git init -q --bare ../h;"
                                 " printf 'gitdir: ../h\\nh\\n' > .git"},
        {"a link before ..", "fill r; cd r; mkdir -p ../a/b; ln -s ../a/b l; mv .git ../a/h; git init -q --bare h;"
                             " echo 'gitdir: l/../h' > .git"},
        {"from a folder in it", "fill r; mkdir r/deep", u"r/deep"_s},
        {"of the work tree only", "fill r; cd r; git config extensions.worktreeConfig true;"
                                  " git config --unset filter.evil.clean;"
                                  " git config --worktree filter.evil.clean \"touch $RAN; cat\""},
        {"from another file, on this branch only",
         "fill r; cd r; mv .git/config .git/more; git init -q; git config includeIf.onbranch:main.path more"},
    };
    int made = 0;
    for (const auto& each : cases) {
        const QString place = home.add(u"case%1/"_s.arg(++made), {});
        const QString ran = place + u"/ran"_s;
        const ScopedEnvironment ranName("RAN", ran.toUtf8().constData());
        QProcess script;
        script.setWorkingDirectory(place);
        script.start(u"/bin/sh"_s, {u"-c"_s, QString::fromUtf8(functions + each.line)});
        ASSERT_TRUE(script.waitForFinished(60000)) << each.label;
        ASSERT_EQ(script.exitCode(), 0) << each.label << script.readAllStandardError().constData();
        QFile::remove(ran);
        const QString folder = place + u'/' + each.folder;
        const auto seen = GitService(GitRunner{{}, GitPurpose::background, {}}).status(folder);
        EXPECT_TRUE(seen) << each.label << failure(seen);
        EXPECT_FALSE(QFile::exists(ran)) << each.label;
        git(folder, {u"status"_s});
        EXPECT_TRUE(QFile::exists(ran)) << each.label << ": git itself does not get there";
    }
    // A name that is no text is none to QTemporaryDir either.
    EXPECT_EQ(QProcess::execute(u"/bin/rm"_s, {u"-rf"_s, home.path(u"case5"_s)}), 0);
}

TEST_F(GitRuns, OfNobodyReadNothingButFiles) {
    const struct {
        const char* file;
        const char* target; ///< of a link; a named pipe when there is none
    } cases[]{
        {"index", nullptr}, {"index", "/dev/zero"}, {"config", nullptr},    {"config", "/dev/zero"},
        {"HEAD", nullptr},  {"HEAD", "/dev/zero"},  {"commondir", nullptr}, {"commondir", "/dev/zero"},
    };
    int made = 0;
    for (const auto& each : cases) {
        const QString folder = home.makeRepository(u"special%1"_s.arg(++made), {{u"f"_s, "one\n"}});
        const QByteArray path = QFile::encodeName(folder) + "/.git/" + each.file;
        QFile::remove(QFile::decodeName(path));
        ASSERT_EQ(each.target == nullptr ? ::mkfifo(path, 0600) : ::symlink(each.target, path), 0);
        const auto seen = GitService(GitRunner{{}, GitPurpose::background, {}}).status(folder);
        EXPECT_FALSE(seen) << path.constData();
        EXPECT_NE(failure(seen), GitError::of(GitError::Kind::timeout).text().toStdString()) << path.constData();
    }
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
