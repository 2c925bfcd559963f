#include "OrvGit/GitPath.h"
#include "OrvGit/TaskWorktree.h"
#include "OrvGit/WorkSnapshot.h"
#include "tests/OrvGit/GitFixture.h"

#include <QDir>
#include <QFileInfo>

#include <unistd.h>

using namespace orv;
using namespace orv::test;
using namespace Qt::StringLiterals;

namespace {

/// "M path +1-2", "R old>new", a "*" behind what has no lines that could be counted.
QStringList shown(const WorkDifference& difference) {
    QStringList lines;
    for (const WorkFile& file : difference.files) {
        constexpr std::array letters{'M', 'A', 'D', 'R', 'C'};
        const QString from = file.originalPath.isEmpty() ? QString() : GitPath::fromBytes(file.originalPath) + u'>';
        lines.append(
            u"%1 %2%3"_s.arg(QLatin1Char(letters[static_cast<size_t>(file.change)]))
                .arg(from, GitPath::fromBytes(file.path)) +
            (file.isBinary ? u"*"_s : u" +%1-%2"_s.arg(file.added).arg(file.removed)));
    }
    return lines;
}

class WorkTest : public ::testing::Test {
protected:
    QString add(const QString& path, const QByteArray& content) { return home.add(u"repo/"_s + path, content); }
    void sh(const QByteArray& line) {
        EXPECT_EQ(::system(("cd '" + repository.toUtf8() + "' && " + line).constData()), 0) << line.constData();
    }

    GitHome home;
    const QString repository = home.makeRepository(
        u"repo"_s,
        {{u"a.txt"_s, "1\n2\n3\n"}, {u"b.txt"_s, "b\n"}, {u"dir/c.txt"_s, "c\n"}, {u".gitignore"_s, "*.log\n.env\n"}});
};

} // namespace

TEST_F(WorkTest, TellsWhatChangedBetweenTwoMomentsHoweverItWasCommitted) {
    const struct {
        const char* label;
        QByteArray before;
        QByteArray work;
        QStringList changes;
        int commits = 0;
    } cases[] = {
        {"nothing", "echo 9 >>a.txt; echo x >new; rm b.txt", "true", {}, 0},
        {"a dirty file goes on, a new one comes",
         "echo 9 >>a.txt",
         "echo 10 >>a.txt; echo n >n.txt",
         {u"M a.txt +1-0"_s, u"A n.txt +1-0"_s},
         0},
        {"committed work counts",
         "",
         "echo 4 >>a.txt; git commit -qam two; git mv b.txt z.txt; git commit -qm three",
         {u"M a.txt +1-0"_s, u"R b.txt>z.txt +0-0"_s},
         2},
        {"what was dirty is committed", "echo 9 >>a.txt; echo u >u", "git add -A; git commit -qm all", {}, 1},
        {"taken back", "echo 9 >>a.txt", "git checkout -q a.txt", {u"M a.txt +0-1"_s}, 0},
        {"deleted, ignored, a link",
         "",
         "rm b.txt; echo l >x.log; ln -s a.txt link",
         {u"D b.txt +0-1"_s, u"A link +1-0"_s},
         0},
        {"a folder for a file, a link for a folder",
         "",
         "rm b.txt; mkdir b.txt; echo i >b.txt/i; rm -r dir; ln -s /etc dir",
         {u"D b.txt +0-1"_s, u"A b.txt/i +1-0"_s, u"A dir +1-0"_s, u"D dir/c.txt +0-1"_s},
         0},
        {"odd names and bytes",
         "",
         "printf '\\0\\1' >bin; printf x >\"$(printf 'n\\nl\\377\\ttab')\"",
         {u"A bin*"_s, u"A n\nl\xdcff\ttab +1-0"_s},
         0},
        {"staged, then gone",
         "",
         "echo s >s; git add s; rm s; echo r >a.txt; git add a.txt; git rm -q --cached b.txt",
         {u"M a.txt +1-3"_s},
         0},
        {"another branch", "", "git switch -qc other; echo o >o; git add o; git commit -qm o", {u"A o +1-0"_s}, 1},
        {"too large to read",
         "head -c 5000 /dev/zero >large; echo s >small",
         "head -c 6000 /dev/zero >large; echo s >>small",
         {u"M large*"_s, u"M small +1-0"_s},
         0},
        {"small before, large after", "echo s >a.txt", "head -c 6000 /dev/zero >a.txt", {u"M a.txt*"_s}, 0},
        {"unreadable", "", "echo u >u; echo v >v; chmod 0 u", {}, 0},
    };
    for (const auto& [label, before, work, expected, commits] : cases) {
        sh("git checkout -q -f main && git reset -q --hard $(git rev-list --max-parents=0 HEAD) && chmod -R u+rw . && "
           "git clean -qfdx");
        if (!before.isEmpty()) {
            sh(before);
        }
        const QByteArray objects = gitText(repository, {u"count-objects"_s}).toUtf8();
        const QString scratch = home.path(u"scratch:with colon"_s);
        const WorkSnapshots snapshots(GitRunner{}, scratch, {.fileBytes = 4096});
        const auto first = value(snapshots.take(repository));
        EXPECT_EQ(gitText(repository, {u"count-objects"_s}).toUtf8(), objects) << label;
        sh(work);
        const auto second = value(snapshots.take(repository));
        const auto difference = value(snapshots.between(first, second));
        if (QByteArray(label) != "unreadable") {
            EXPECT_EQ(shown(difference), expected) << label;
        } else if (::geteuid() != 0) {
            EXPECT_EQ(shown(difference), (QStringList{u"M u*"_s, u"A v +1-0"_s})) << label;
        }
        EXPECT_EQ(difference.commits.size(), commits) << label;
        for (const FileDiff& file : parseDiff(value(snapshots.between(first, second, "sub/")).diff)) {
            EXPECT_TRUE(file.path().startsWith("sub/")) << label;
        }
        EXPECT_TRUE(QDir(scratch).removeRecursively());
    }
    git(repository, {u"fsck"_s, u"--strict"_s});
}

TEST_F(WorkTest, SeesConflictsSubmodulesAndRepositoriesWithoutACommit) {
    const QString empty = home.makeRepository(u"empty"_s);
    home.add(u"empty/x"_s, "1\n");
    const WorkSnapshots snapshots(GitRunner{}, home.path(u"scratch"_s));
    const auto unborn = value(snapshots.take(empty));
    EXPECT_TRUE(unborn.head.isEmpty());
    home.add(u"empty/x"_s, "1\n2\n");
    git(empty, {u"add"_s, u"-A"_s});
    git(empty, {u"commit"_s, u"-q"_s, u"-m"_s, u"First"_s});
    const auto born = value(snapshots.between(unborn, value(snapshots.take(empty))));
    EXPECT_EQ(shown(born), QStringList{u"M x +1-0"_s});
    EXPECT_EQ(born.commits.size(), 1);

    sh("git -c protocol.file.allow=always submodule --quiet add ../empty module && git commit -qm sub && git switch "
       "-qc "
       "side && echo side >a.txt && git commit -qam side && git switch -q main && echo main >a.txt && git commit -qam "
       "main");
    const auto before = value(snapshots.take(repository));
    sh("(git merge -q side || true) >/dev/null; cd module; echo 3 >x; git commit -qam more");
    const QStringList changes = shown(value(snapshots.between(before, value(snapshots.take(repository)))));
    EXPECT_EQ(changes, (QStringList{u"M a.txt +4-0"_s, u"M module +1-1"_s}));
    EXPECT_EQ(workTreesOf(repository + u"/dir"_s), QStringList{repository});
    EXPECT_EQ(workTreesOf(repository), (QStringList{repository, repository + u"/module"_s}));
    EXPECT_EQ(workTreesOf(u"/"_s + QStringLiteral("proc/self")).size(), 0);
}

/// Their names are longer together than a command line may be.
TEST_F(WorkTest, SaysOfManyFilesThatTheyCouldNotBeTaken) {
    const WorkSnapshots snapshots(GitRunner{}, home.path(u"scratch"_s), {.files = 0});
    const auto before = value(snapshots.take(repository));
    const QString deep = QString(240, u'd') + u'/';
    constexpr int count = 800;
    for (int i = 0; i < count; ++i) {
        add(deep.repeated(12) + QString::number(i), "x");
    }
    const auto difference = value(snapshots.between(before, value(snapshots.take(repository))));
    EXPECT_EQ(difference.files.size(), count);
    EXPECT_TRUE(difference.diff.isEmpty());
}

TEST_F(WorkTest, GivesATaskAWorkTreeAndTakesItBack) {
    add(u".env"_s, "SECRET=1\n");
    add(u"dir/.env.local"_s, "D=1\n");
    add(u"large.bin"_s, "untracked");
    const TaskWorktrees worktrees{GitRunner{}};
    const auto request = [this](const QString& name) {
        return TaskWorktrees::Request{
            .repository = repository,
            .folder = home.path(u"trees/"_s + name),
            .branch = u"agent/"_s + name,
            .copiesFrom = repository,
            .copies = {u".env"_s, u"dir/.env.*"_s, u"../outside"_s}};
    };
    const auto made = value(worktrees.make(request(u"one"_s)));
    EXPECT_EQ(made.copies, (QStringList{u".env"_s, u"dir/.env.local"_s}));
    EXPECT_EQ(readFile(made.folder + u"/.env"_s), "SECRET=1\n");
    EXPECT_FALSE(QFileInfo::exists(made.folder + u"/large.bin"_s));
    EXPECT_TRUE(value(worktrees.lossOf(made)).isNothing());
    EXPECT_FALSE(worktrees.make(request(u"one"_s)));

    // What was done there, committed and not, comes back; the copies do not.
    const QByteArray inTree = "cd '" + made.folder.toUtf8() + "' && ";
    sh(inTree + "echo 4 >>a.txt && git commit -qam four && echo new >new.txt");
    EXPECT_EQ(value(worktrees.lossOf(made)).text(), u"1 changed file and 1 commit"_s);
    EXPECT_FALSE(worktrees.discard(made, TaskWorktrees::Discard::ifNothingIsLost));
    sh("echo mine >>b.txt");
    EXPECT_EQ(value(worktrees.mergeBack(made, u"Add new"_s)), TaskWorktrees::AfterMerge::removed);
    EXPECT_EQ(gitText(repository, {u"log"_s, u"--format=%s"_s}), u"Add new\nfour\nFirst"_s);
    EXPECT_EQ(gitText(repository, {u"status"_s, u"--porcelain"_s}), u"M b.txt\n?? dir/.env.local\n?? large.bin"_s);
    EXPECT_FALSE(QFileInfo::exists(made.folder));
    EXPECT_EQ(gitText(repository, {u"branch"_s, u"--format=%(refname:short)"_s}), u"main"_s);

    // Thrown away by name only.
    const auto second = value(worktrees.make(request(u"two"_s)));
    sh("echo x >>'" + second.folder.toUtf8() + "/.env'");
    EXPECT_EQ(value(worktrees.lossOf(second)), (TaskWorktrees::Loss{.files = 1}));
    EXPECT_TRUE(worktrees.discard(second, TaskWorktrees::Discard::always));
    EXPECT_EQ(gitText(repository, {u"worktree"_s, u"list"_s}).count(u'\n'), 0);
}

TEST_F(WorkTest, LeavesEverythingAsItWasWhenAMergeIsNotPossible) {
    const TaskWorktrees worktrees{GitRunner{}};
    const auto made = value(worktrees.make(
        {.repository = repository,
         .folder = home.path(u"tree"_s),
         .branch = u"agent/x"_s,
         .copiesFrom = repository,
         .copies = {}}));
    const QByteArray inTree = "cd '" + made.folder.toUtf8() + "' && ";
    sh(inTree + "echo theirs >a.txt; echo n >n.txt");
    const auto state = [&](const QString& folder) {
        return gitText(folder, {u"status"_s, u"--porcelain=v2"_s, u"--branch"_s}) +
               QString::fromUtf8(readFile(folder + u"/a.txt"_s));
    };
    const struct {
        QByteArray line;
        GitError::Kind kind;
    } cases[] = {
        {"echo dirty >a.txt", GitError::Kind::commandFailed},
        {"echo ours >a.txt; git commit -qam ours; echo dirty >b.txt", GitError::Kind::conflicts},
        {"git checkout -q b.txt; git switch -qc other HEAD~1; echo o >a.txt; git commit -qam o; (git merge -q main || "
         "true) >/dev/null",
         GitError::Kind::refused},
        {"git merge --abort; git config user.name ''; git switch -q main; git reset -q --hard HEAD~1",
         GitError::Kind::commandFailed},
    };
    for (const auto& [line, kind] : cases) {
        sh(line);
        const QString before = state(repository) + state(made.folder);
        const auto merged = worktrees.mergeBack(made, u"Work"_s);
        ASSERT_FALSE(merged) << line.constData();
        EXPECT_EQ(merged.error().kind, kind) << merged.error().text().toStdString();
        EXPECT_EQ(state(repository) + state(made.folder), before) << line.constData();
    }
    EXPECT_EQ(
        failure(worktrees.make(
            {.repository = home.makeRepository(u"unborn"_s),
             .folder = home.path(u"t"_s),
             .branch = u"agent/y"_s,
             .copiesFrom = {},
             .copies = {}})),
        "There is no commit yet that a work tree could begin at.");
}

TEST(TaskBranch, IsABranchNameWhateverTheTaskIs) {
    for (const QString& task :
         {u"Fix the `flaky` test!\nmore"_s, u"..lock"_s, u""_s, u"été – 日本語"_s, QString(500, u'a')}) {
        const QString name = taskBranchName(task, u"3f2a"_s);
        EXPECT_TRUE(isBranchName(name)) << name.toStdString();
        EXPECT_LE(name.size(), 60);
    }
    EXPECT_EQ(taskBranchName(u"Fix the `flaky` test!\nmore"_s, u"3f2a"_s), u"agent/fix-the-flaky-test-3f2a"_s);
    EXPECT_EQ(taskBranchName(u"Été"_s, u"3f2a"_s), u"agent/ete-3f2a"_s);
}
