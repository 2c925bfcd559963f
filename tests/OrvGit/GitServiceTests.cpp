#include "OrvCore/UniqueFd.h"
#include "OrvGit/DiscardedWork.h"
#include "OrvGit/GitPath.h"
#include "tests/OrvGit/GitFixture.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

class GitActions : public ::testing::Test {
protected:
    GitHome home;
    const GitService service;
    const QString r = home.makeRepository(u"r"_s, {{u"a"_s, "one\n"}, {u"b"_s, "two\n"}});

    /// "M. a|.M b": what there is, as its letters and paths.
    QString changes(const QString& repository) {
        const auto status = service.status(repository);
        EXPECT_TRUE(status) << failure(status);
        QStringList found;
        for (const FileChange& change : status ? status->changes : QList<FileChange>()) {
            found.append(
                QString(QChar::fromLatin1(change.index)) + QChar::fromLatin1(change.worktree) + u' ' + change.path);
        }
        return found.join(u'|');
    }
    /// Leaves "a" in conflict between "main" and "other".
    void makeConflict(const QString& command) {
        git(r, {u"switch"_s, u"-qc"_s, u"other"_s});
        home.add(u"r/a"_s, "theirs\n");
        git(r, {u"commit"_s, u"-qam"_s, u"Theirs"_s});
        git(r, {u"switch"_s, u"-q"_s, u"main"_s});
        home.add(u"r/a"_s, "ours\n");
        git(r, {u"commit"_s, u"-qam"_s, u"Ours"_s});
        git(r, {command, u"other"_s}, 1);
    }
};

TEST_F(GitActions, StageUnstageAndDiscardOddNames) {
    const QStringList names{u"a b"_s, u"new\nline"_s,           u"-n"_s,     u"*"_s, u":(top)x"_s, u"\"q\""_s,
                            u"é"_s,   u"bad"_s + QChar(0xDCFF), u"d/e f/g"_s};
    ASSERT_TRUE(QDir(r).mkpath(u"d/e f"_s));
    for (const QString& name : names) {
        // Qt has no way to a name that is not UTF-8.
        const UniqueFd file(::open((r.toUtf8() + '/' + GitPath::toBytes(name)).constData(), O_CREAT | O_WRONLY, 0600));
        ASSERT_EQ(::write(file.get(), "x\n", 2), 2);
    }
    QStringList found;
    for (const FileChange& change : value(service.status(r)).changes) {
        found.append(change.path);
        EXPECT_TRUE(change.isUntracked()) << qPrintable(change.path);
        EXPECT_EQ(service.fileDiff(r, DiffRequest::of(change))->count(DiffLineKind::added), 1)
            << qPrintable(change.path);
    }
    EXPECT_EQ(QSet<QString>(found.begin(), found.end()), QSet<QString>(names.begin(), names.end()));
    EXPECT_EQ(failure(service.stage(r, {u"*"_s})), "");
    EXPECT_EQ(changes(r).count(u"A. "_s), 1);
    EXPECT_EQ(failure(service.stage(r, names)), "");
    EXPECT_EQ(changes(r).count(u"A. "_s), names.size());
    for (const FileChange& change : value(service.status(r)).changes) {
        const auto diff = service.fileDiff(r, DiffRequest::of(change));
        EXPECT_EQ(GitPath::fromBytes(diff->newPath), change.path);
        ASSERT_EQ(diff->count(DiffLineKind::added), 1) << qPrintable(change.path);
        EXPECT_EQ(diff->text(diff->hunks.first().lines.first()), "x") << "what is staged is shown first";
    }
    EXPECT_EQ(failure(service.unstage(r, names)), "");
    EXPECT_EQ(changes(r).count(u"?? "_s), names.size());
    EXPECT_EQ(failure(service.discard(r, names)), "");
    EXPECT_EQ(changes(r), QString());
}

TEST_F(GitActions, DiscardEveryStateOfAFile) {
    home.add(u"r/a"_s, "changed\n");
    home.add(u"r/new"_s, "x\n");
    home.add(u"r/staged"_s, "x\n");
    home.add(u"r/intended"_s, "x\n");
    home.add(u"r/kept"_s, "x\n");
    git(r, {u"add"_s, u"staged"_s});
    git(r, {u"add"_s, u"-N"_s, u"intended"_s});
    git(r, {u"rm"_s, u"-q"_s, u"b"_s});
    EXPECT_EQ(changes(r), u".M a|D. b|.A intended|A. staged|?? kept|?? new"_s);
    const auto done = service.discard(r, {u"a"_s, u"b"_s, u"intended"_s, u"new"_s, u"staged"_s});
    EXPECT_EQ(failure(done), "");
    EXPECT_EQ(changes(r), u"?? kept"_s);
    EXPECT_EQ(readFile(r + u"/b"_s), "two\n");

    const QString inner = home.makeRepository(u"r/inner"_s, {{u"f"_s, "x"}});
    EXPECT_EQ(failure(service.discard(r, {u"inner/"_s})), "“inner” is a repository of its own. Delete it by hand.");
    EXPECT_TRUE(QFile::exists(inner + u"/f"_s));
    EXPECT_EQ(service.fileDiff(r, {u"inner/"_s, {}, DiffSide::untracked})->content, DiffContent::folder);
}

TEST_F(GitActions, BringBackWhatTheyDiscarded) {
    for (const QString& name : {u"c"_s, u"d"_s}) {
        home.add(u"r/"_s + name, name.toUtf8() + "\n");
    }
    git(r, {u"add"_s, u"-A"_s});
    git(r, {u"commit"_s, u"-qm"_s, u"More"_s});
    home.add(u"r/a"_s, "changed\n");
    git(r, {u"rm"_s, u"-q"_s, u"b"_s});
    QFile::remove(r + u"/c"_s);
    git(r, {u"mv"_s, u"d"_s, u"e"_s});
    home.add(u"r/staged"_s, "staged\n");
    home.add(u"r/lost"_s, "lost\n");
    git(r, {u"add"_s, u"staged"_s, u"lost"_s});
    home.add(u"r/staged"_s, "and changed\n");
    QFile::remove(r + u"/lost"_s);
    home.add(u"r/x/new one"_s, "x\n");
    const QString before = changes(r);
    EXPECT_EQ(before, u".M a|D. b|.D c|R. e|AD lost|AM staged|?? x/new one"_s);
    QStringList paths;
    for (const FileChange& change : value(service.status(r)).changes) {
        paths += change.touchedPaths();
    }
    for (int i = 0; i < DiscardedWork::mostKept + 2; ++i) {
        git(r, {u"update-ref"_s, u"refs/orvlauncher/discarded/%1"_s.arg(i), u"HEAD"_s});
    }
    // Nobody has said who commits, which is nothing to him who discards.
    git(r, {u"config"_s, u"user.useConfigOnly"_s, u"true"_s});
    auto kept = DiscardedWork::keep(service, r, paths);
    ASSERT_TRUE(kept) << failure(kept);
    EXPECT_EQ(changes(r), before) << "keeping changes nothing";
    EXPECT_EQ(
        gitText(r, {u"for-each-ref"_s, u"--format=x"_s, u"refs/orvlauncher"_s}).split(u'\n').size(),
        DiscardedWork::mostKept);
    EXPECT_EQ(failure(service.discard(r, paths)), "");
    EXPECT_EQ(changes(r), QString());
    EXPECT_EQ(failure(kept->noteAfterwards(service)), "");
    EXPECT_EQ(failure(kept->bringBack(service)), "");
    EXPECT_EQ(changes(r), before);
    EXPECT_EQ(
        readFile(r + u"/a"_s) + readFile(r + u"/staged"_s) + readFile(r + u"/x/new one"_s),
        "changed\nand changed\nx\n");
    EXPECT_EQ(gitText(r, {u"show"_s, u":staged"_s}), u"staged"_s);

    EXPECT_EQ(failure(service.discard(r, paths)), "");
    home.add(u"r/a"_s, "mine\n");
    EXPECT_TRUE(failure(kept->bringBack(service)).starts_with("“a” has changed since."));
    EXPECT_EQ(readFile(r + u"/a"_s), "mine\n");

    const QString fresh = home.makeRepository(u"fresh"_s);
    home.add(u"fresh/z"_s, "1\n");
    git(fresh, {u"add"_s, u"z"_s});
    auto first = DiscardedWork::keep(service, fresh, {u"z"_s});
    ASSERT_TRUE(first) << failure(first);
    EXPECT_EQ(failure(service.discard(fresh, {u"z"_s})), "");
    EXPECT_EQ(failure(first->noteAfterwards(service)), "");
    EXPECT_EQ(failure(first->bringBack(service)), "");
    EXPECT_EQ(changes(fresh), u"A. z"_s);

    git(r, {u"checkout"_s, u"-q"_s, u"."_s});
    makeConflict(u"merge"_s);
    EXPECT_EQ(failure(DiscardedWork::keep(service, r, {u"a"_s})), "A conflict can't be brought back.");

    // Beside a conflict the others can: changed, staged and changed again, removed, new.
    git(r, {u"rm"_s, u"-q"_s, u"--cached"_s, u"b"_s});
    home.add(u"r/staged"_s, "staged\n");
    git(r, {u"add"_s, u"staged"_s});
    home.add(u"r/staged"_s, "and changed\n");
    const QStringList beside{u"b"_s, u"staged"_s, u"x/new one"_s};
    home.add(u"r/x/new one"_s, "x\n");
    const QString amid = changes(r);
    auto others = DiscardedWork::keep(service, r, beside);
    ASSERT_TRUE(others) << failure(others);
    EXPECT_EQ(failure(service.discard(r, beside)), "");
    EXPECT_NE(changes(r), amid);
    EXPECT_EQ(failure(others->noteAfterwards(service)), "");
    EXPECT_EQ(failure(others->bringBack(service)), "");
    EXPECT_EQ(changes(r), amid);
    EXPECT_EQ(readFile(r + u"/staged"_s) + gitText(r, {u"show"_s, u":staged"_s}).toUtf8(), "and changed\nstaged");
}

/// What of the discard is asked, and what has to stand there before it, after it, and after its undo.
TEST_F(GitActions, LoseNothingThatStandsInTheWay) {
    struct Case {
        const char* label;
        std::function<void()> prepare;
        QStringList paths;
        QString refusal;   ///< of the discard
        QString after;     ///< the changes then
        QString back = {}; ///< the changes after the undo, where that is other than it was
    };
    const auto run = [this](const QStringList& words) { git(r, words); };
    const Case cases[]{
        {"a new file at the old name of a rename stays",
         [&] {
             run({u"mv"_s, u"a"_s, u"n"_s});
             home.add(u"r/a"_s, "mine\n");
         },
         {u"n"_s},
         {},
         u".M a"_s},
        {"and goes when it is asked for, with the rename",
         [&] {
             run({u"mv"_s, u"a"_s, u"n"_s});
             home.add(u"r/a"_s, "mine\n");
         },
         {u"n"_s, u"a"_s},
         {},
         {}},
        {"or without it",
         [&] {
             run({u"mv"_s, u"a"_s, u"n"_s});
             home.add(u"r/a"_s, "mine\n");
         },
         {u"a"_s},
         {},
         u"R. n"_s},
        {"a file under a new name that was only announced",
         [&] {
             QFile::rename(r + u"/a"_s, r + u"/n"_s);
             run({u"add"_s, u"-N"_s, u"n"_s});
         },
         {u"n"_s},
         {},
         {},
         u".D a|?? n"_s},
        {"a file that is ignored at the name of one that was taken out of the index",
         [&] {
             run({u"rm"_s, u"-q"_s, u"--cached"_s, u"b"_s});
             home.add(u"r/b"_s, "mine\n");
             home.add(u"r/.git/info/exclude"_s, "b\n");
         },
         {u"b"_s},
         {},
         {}},
        {"a new file where a folder was",
         [&] {
             QDir(r + u"/d"_s).removeRecursively();
             home.add(u"r/d"_s, "mine\n");
         },
         {u"d/t"_s},
         u"“d” stands in the way of “d/t”. Move it away first."_s,
         {}},
        {"and goes when it is asked for",
         [&] {
             QDir(r + u"/d"_s).removeRecursively();
             home.add(u"r/d"_s, "mine\n");
         },
         {u"d/t"_s, u"d"_s},
         {},
         {}},
        {"a link where a folder was",
         [&] {
             QDir(r + u"/d"_s).removeRecursively();
             QFile::link(home.path(), r + u"/d"_s);
         },
         {u"d/t"_s},
         u"“d” stands in the way of “d/t”. Move it away first."_s,
         {}},
        {"a new folder at the old name of a rename",
         [&] {
             ASSERT_TRUE(QDir(r).mkdir(u"n"_s));
             run({u"mv"_s, u"a"_s, u"n/a"_s});
             home.add(u"r/a/new"_s, "mine\n");
         },
         {u"n/a"_s},
         u"“a/new” stands in the way of “a”. Move it away first."_s,
         {}},
        {"a new folder where a file was",
         [&] {
             QFile::remove(r + u"/a"_s);
             home.add(u"r/a/new"_s, "mine\n");
         },
         {u"a"_s},
         u"“a/new” stands in the way of “a”. Move it away first."_s,
         {}},
        {"and goes when it is asked for",
         [&] {
             QFile::remove(r + u"/a"_s);
             home.add(u"r/a/new"_s, "mine\n");
         },
         {u"a"_s, u"a/new"_s},
         {},
         {}},
        {"a submodule keeps what was changed in it",
         [&] { home.add(u"r/sub/f"_s, "mine\n"); },
         {u"sub"_s},
         u"“sub” is a repository of its own. Discard its changes there."_s,
         {}},
    };
    home.add(u"r/d/t"_s, "three\n");
    const QString other = home.makeRepository(u"other"_s, {{u"f"_s, "x\n"}});
    git(r, {u"submodule"_s, u"--quiet"_s, u"add"_s, other, u"sub"_s});
    git(r, {u"add"_s, u"-A"_s});
    git(r, {u"commit"_s, u"-qm"_s, u"More"_s});
    const QString files = home.path(u"r"_s);
    // Every file but git's own, with what is in it.
    const auto everything = [&] {
        QStringList all;
        QDirIterator entries(files, QDir::Files | QDir::System | QDir::Hidden, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const QString path = entries.next();
            if (!path.contains(u"/.git/"_s)) {
                all.append(path + u'=' + QString::fromUtf8(readFile(path)));
            }
        }
        all.sort();
        return all.join(u' ');
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.label);
        each.prepare();
        const QString before = changes(r);
        const QString content = everything();
        auto kept = DiscardedWork::keep(service, r, each.paths);
        EXPECT_TRUE(kept || failure(kept) == each.refusal.toStdString()) << failure(kept);
        EXPECT_EQ(failure(service.discard(r, each.paths)), each.refusal.toStdString());
        if (each.refusal.isEmpty() && kept) {
            EXPECT_EQ(changes(r), each.after);
            EXPECT_EQ(failure(kept->noteAfterwards(service)), "");
            EXPECT_EQ(failure(kept->bringBack(service)), "");
        }
        EXPECT_EQ(changes(r), each.back.isEmpty() ? before : each.back);
        EXPECT_EQ(everything(), content);

        QFile::remove(r + u"/.git/info/exclude"_s);
        QFile::remove(r + u"/d"_s);
        git(r, {u"reset"_s, u"-q"_s, u"--hard"_s});
        git(r, {u"clean"_s, u"-qfd"_s});
        git(r + u"/sub"_s, {u"checkout"_s, u"-q"_s, u"."_s});
        ASSERT_EQ(changes(r), QString());
    }

    // What came into the way since.
    home.add(u"r/x/y"_s, "mine\n");
    auto kept = DiscardedWork::keep(service, r, {u"x/y"_s});
    ASSERT_TRUE(kept) << failure(kept);
    EXPECT_EQ(failure(service.discard(r, {u"x/y"_s})), "");
    EXPECT_EQ(failure(kept->noteAfterwards(service)), "");
    QDir(r).rmdir(u"x"_s);
    home.add(u"r/x"_s, "other\n");
    EXPECT_EQ(failure(kept->bringBack(service)), "“x” stands in the way of “x/y”. Move it away first.");
    EXPECT_EQ(readFile(r + u"/x"_s), "other\n");
}

TEST_F(GitActions, WorkWithoutACommit) {
    const QString fresh = home.makeRepository(u"fresh"_s);
    home.add(u"fresh/x/y"_s, "1\n");
    home.add(u"fresh/z"_s, "1\n");
    EXPECT_EQ(failure(service.stage(fresh, {u"x/y"_s, u"z"_s})), "");
    EXPECT_FALSE(service.status(fresh)->hasCommits);
    EXPECT_EQ(service.status(fresh)->branch, u"main"_s);
    EXPECT_EQ(failure(service.unstage(fresh, {u"x/y"_s})), "");
    EXPECT_EQ(changes(fresh), u"A. z|?? x/y"_s);
    home.add(u"fresh/z"_s, "2\n");
    EXPECT_EQ(failure(service.unstage(fresh, {u"z"_s})), "") << "other than in the index";
    EXPECT_EQ(readFile(fresh + u"/z"_s), "2\n");
    EXPECT_EQ(failure(service.stage(fresh, {u"z"_s})), "");
    EXPECT_EQ(failure(service.discard(fresh, {u"z"_s})), "");
    EXPECT_EQ(changes(fresh), u"?? x/y"_s);
    EXPECT_TRUE(service.log(fresh, 10)->isEmpty());
    EXPECT_TRUE(service.history(fresh, {})->isEmpty());
    EXPECT_EQ(failure(service.commit(fresh, u"First"_s, {})), "There are no staged changes to commit.");
}

TEST_F(GitActions, CommitWhatIsStaged) {
    EXPECT_EQ(failure(service.commit(r, u" \n "_s, u"x"_s)), "Enter a commit summary first.");
    EXPECT_EQ(failure(service.commit(r, u"x"_s, {})), "There are no staged changes to commit.");
    home.add(u"r/a"_s, "1\n");
    EXPECT_EQ(failure(service.stage(r, {u"a"_s})), "");
    EXPECT_EQ(failure(service.commit(r, u" -m #1 \"q\" \n"_s, u"\n# kept\n"_s)), "");
    EXPECT_EQ(gitText(r, {u"log"_s, u"-1"_s, u"--format=%B"_s}), u"-m #1 \"q\"\n\n# kept"_s);
    EXPECT_EQ(failure(service.amend(r, u"Second"_s, {})), "");
    const auto log = service.log(r, 5);
    ASSERT_EQ(log->size(), 2);
    EXPECT_EQ(log->front().subject, u"Second"_s);
    EXPECT_EQ(log->front().author, u"Ada"_s);
    const auto shown = service.commitDiff(r, log->front().id);
    ASSERT_EQ(shown->size(), 1);
    EXPECT_EQ(shown->front().newPath, "a");
    git(r, {u"tag"_s, u"v1"_s});
    const auto page = service.history(r, {.limit = 1, .skip = 0, .from = {}, .path = {}});
    EXPECT_EQ(page->front().refs, (QStringList{u"HEAD"_s, u"refs/heads/main"_s, u"refs/tags/v1"_s}));
    EXPECT_EQ(page->front().parents, QStringList{log->back().id});
    EXPECT_EQ(service.history(r, {.limit = 9, .skip = 1, .from = u"v1"_s, .path = u"a"_s})->size(), 1);
}

TEST_F(GitActions, GoOnWithWhatWasBegun) {
    const struct {
        QString command;
        GitOperation operation;
    } cases[]{
        {u"merge"_s, GitOperation::merge},
        {u"rebase"_s, GitOperation::rebase},
        {u"cherry-pick"_s, GitOperation::cherryPick},
    };
    for (const auto& each : cases) {
        git(r, {u"checkout"_s, u"-q"_s, u"-B"_s, u"main"_s, u"main~0"_s});
        git(r, {u"branch"_s, u"-D"_s, u"other"_s}, each.operation == GitOperation::merge ? 1 : 0);
        makeConflict(each.command);
        const auto state = service.operation(r);
        ASSERT_TRUE(state) << failure(state);
        EXPECT_EQ(state->operation, each.operation) << qPrintable(each.command);
        EXPECT_EQ(state->conflicts, QStringList{u"a"_s});
        EXPECT_EQ(changes(r), u"UU a"_s);
        EXPECT_EQ(service.fileDiff(r, {u"a"_s, {}, DiffSide::unstaged})->content, DiffContent::conflict);
        EXPECT_EQ(failure(service.continueOperation(r)), "Merge conflicts in: a");
        EXPECT_EQ(failure(service.discard(r, {u"a"_s})), "");
        EXPECT_EQ(changes(r), QString());
        EXPECT_EQ(failure(service.abortOperation(r)), "");
        EXPECT_EQ(changes(r), QString());
        git(r, {each.command, u"other"_s}, 1);
        home.add(u"r/a"_s, "both " + each.command.toUtf8() + '\n');
        EXPECT_EQ(failure(service.stage(r, {u"a"_s})), "");
        EXPECT_EQ(failure(service.continueOperation(r)), "");
        EXPECT_EQ(service.operation(r)->operation, GitOperation::none);
    }
    EXPECT_EQ(failure(service.abortOperation(r)), "Nothing is in progress that could be aborted.");
    EXPECT_EQ(failure(service.skipOperation(r)), "Nothing is in progress of which a commit could be skipped.");
}

/// Of two commits the first stops at a conflict.
TEST_F(GitActions, SkipACommitAndGoOnAfterOneCommittedByHand) {
    home.add(u"r/n"_s, "1\n");
    git(r, {u"add"_s, u"n"_s});
    git(r, {u"commit"_s, u"-qm"_s, u"n"_s});
    for (const char* content : {"2\n", "3\n"}) {
        home.add(u"r/a"_s, content);
        home.add(u"r/n"_s, content);
        git(r, {u"commit"_s, u"-qam"_s, QString::fromLatin1(content).trimmed()});
    }
    git(r, {u"branch"_s, u"picked"_s});
    const struct {
        QStringList words;
        GitOperation operation;
        const char* atSecond;
    } cases[]{
        {{u"cherry-pick"_s, u"picked~1"_s, u"picked"_s}, GitOperation::cherryPick, "Merge conflicts in: a, n"},
        {{u"revert"_s, u"--no-edit"_s, u"picked~1"_s, u"picked~2"_s}, GitOperation::revert, "Merge conflicts in: n"},
    };
    for (const auto& each : cases) {
        const char* label = each.words.front() == u"revert"_s ? "revert" : "cherry-pick";
        const auto begin = [&] {
            git(r, {u"reset"_s, u"-q"_s, u"--hard"_s, u"picked~2"_s});
            home.add(u"r/a"_s, "ours\n");
            home.add(u"r/n"_s, "ours\n");
            git(r, {u"commit"_s, u"-qam"_s, u"Ours"_s});
            git(r, each.words, 1);
        };
        const auto now = [&] { return service.operation(r)->operation; };
        begin();
        git(r, {u"checkout"_s, u"HEAD"_s, u"--"_s, u"."_s});
        EXPECT_EQ(failure(service.continueOperation(r)), "Nothing is left of this commit. Skip it to go on.") << label;
        EXPECT_EQ(failure(service.skipOperation(r)), each.atSecond) << label;
        EXPECT_EQ(failure(service.abortOperation(r)), "") << label;
        EXPECT_EQ(now(), GitOperation::none) << label;
        begin();
        home.add(u"r/a"_s, "both\n");
        git(r, {u"add"_s, u"-A"_s});
        git(r, {u"commit"_s, u"-qm"_s, u"By hand"_s});
        EXPECT_EQ(now(), each.operation) << label;
        EXPECT_EQ(failure(service.abortOperation(r)), "") << label;
        EXPECT_EQ(now(), GitOperation::none) << label;
    }
}

TEST_F(GitActions, ManageBranches) {
    for (const char* bad : {"", "a b", "a..b", "-x", "a/", "x.lock", "@{", "HEAD", "a\n"}) {
        EXPECT_FALSE(isBranchName(QString::fromUtf8(bad))) << bad;
        EXPECT_NE(
            QProcess::execute(GitRunner::executable(), {u"check-ref-format"_s, u"--branch"_s, QString::fromUtf8(bad)}),
            0);
        EXPECT_FALSE(service.createBranch(r, QString::fromUtf8(bad)));
    }
    const QString odd = u"fix/é(1)+%"_s;
    EXPECT_EQ(failure(service.createBranch(r, odd)), "");
    EXPECT_EQ(service.status(r)->branch, odd);
    EXPECT_EQ(*service.branches(r), (QStringList{odd, u"main"_s}));
    home.add(u"r/a"_s, "1\n");
    git(r, {u"commit"_s, u"-qam"_s, u"Fix"_s});
    EXPECT_EQ(failure(service.setUpstream(r, odd, u"main"_s)), "");
    const auto infos = service.branchInfos(r);
    ASSERT_EQ(infos->size(), 2);
    EXPECT_TRUE(infos->front().isCurrent);
    EXPECT_EQ(infos->front().upstream, u"main"_s);
    EXPECT_EQ(infos->front().ahead, 1);
    EXPECT_EQ(infos->front().worktree, r);
    EXPECT_EQ(failure(service.setUpstream(r, odd, {})), "");
    EXPECT_EQ(failure(service.switchBranch(r, u"main"_s)), "");
    EXPECT_TRUE(failure(service.deleteBranch(r, odd, GitService::Deletion::ifMerged)).contains("not fully merged"));
    EXPECT_EQ(failure(service.deleteBranch(r, odd, GitService::Deletion::always)), "");
    git(r, {u"switch"_s, u"-q"_s, u"--detach"_s});
    EXPECT_TRUE(service.status(r)->isDetached);
    EXPECT_EQ(*service.branches(r), QStringList{u"main"_s});
    EXPECT_EQ(failure(service.push(r)), "Can't push from a detached HEAD. Switch to a branch first.");
}

TEST_F(GitActions, StashAndBringBack) {
    EXPECT_EQ(failure(service.stashSave(r, {}, GitService::Untracked::kept)), "There are no local changes to stash.");
    home.add(u"r/a"_s, "mine\n");
    home.add(u"r/new"_s, "x\n");
    EXPECT_EQ(failure(service.stashSave(r, u"wip: one"_s, GitService::Untracked::included)), "");
    EXPECT_EQ(changes(r), QString());
    const auto stashes = service.stashes(r);
    ASSERT_EQ(stashes->size(), 1);
    EXPECT_EQ(stashes->front().message, u"On main: wip: one"_s);
    home.add(u"r/b"_s, "other\n");
    EXPECT_EQ(failure(service.stashSave(r, {}, GitService::Untracked::kept)), "");
    EXPECT_TRUE(failure(service.stashPop(r, stashes->front())).contains("has changed"));
    EXPECT_EQ(failure(service.stashDrop(r, service.stashes(r)->front())), "");
    EXPECT_EQ(failure(service.stashPop(r, stashes->front())), "");
    EXPECT_EQ(changes(r), u".M a|?? new"_s);
}

TEST_F(GitActions, ReadAndSetWhoCommits) {
    EXPECT_EQ(*service.identity(r, GitScope::repo), GitIdentity{});
    EXPECT_EQ(failure(service.setIdentity({u"Bob"_s, {}}, r, GitScope::repo)), "");
    EXPECT_EQ(*service.identity(r, GitScope::global), (GitIdentity{u"Ada"_s, u"ada@example.org"_s}));
    EXPECT_EQ(*service.effectiveIdentity(r), (GitIdentity{u"Bob"_s, u"ada@example.org"_s}));
    EXPECT_EQ(failure(service.setGlobalConfig(u"pull.rebase"_s, u"a \"b\""_s)), "");
    EXPECT_EQ(service.globalConfigValue(u"pull.rebase"_s), u"a \"b\""_s);
    EXPECT_EQ(service.effectiveConfigValue(u"user.name"_s), u"Ada"_s);
    EXPECT_EQ(service.effectiveConfigValue(u"no.such"_s), std::nullopt);
    EXPECT_EQ(service.globalConfigValue(u"not a key"_s), std::nullopt);
}

/// What is no text is taken as a whole, or not at all.
TEST_F(GitActions, DivideNothingButText) {
    const DiffSelection first{{0, {}}};
    const QString sub = home.makeRepository(u"sub"_s, {{u"f"_s, "x\n"}});
    git(r, {u"submodule"_s, u"--quiet"_s, u"add"_s, sub, u"module"_s});
    git(r, {u"commit"_s, u"-qm"_s, u"Module"_s});
    const DiffRequest module{.path = u"module"_s, .originalPath = {}, .side = DiffSide::unstaged};
    for (const char* file : {"r/module/untracked", "r/module/f"}) {
        home.add(QString::fromLatin1(file), "other\n");
        const auto diff = service.fileDiff(r, module);
        ASSERT_TRUE(diff) << failure(diff);
        EXPECT_EQ(diff->content, DiffContent::submodule) << file;
        EXPECT_FALSE(service.stageLines(r, module, *diff, first)) << file;
        EXPECT_FALSE(service.discardLines(r, module, *diff, first)) << file;
        EXPECT_EQ(
            failure(service.stage(r, {u"module"_s})),
            "“module” is a repository of its own, at the commit that is noted. Commit its changes there first.");
        EXPECT_FALSE(DiscardedWork::keep(service, r, {u"module"_s})) << file;
    }
    home.add(u"r/a"_s, "beside\n");
    EXPECT_EQ(failure(service.stage(r, {u"module"_s, u"a"_s})), "");
    git(r + u"/module"_s, {u"commit"_s, u"-qam"_s, u"x"_s});
    EXPECT_EQ(failure(service.stage(r, {u"module"_s})), "");
    EXPECT_EQ(gitText(r, {u"diff"_s, u"--cached"_s, u"--name-only"_s}), u"a\nmodule"_s);
    git(r, {u"commit"_s, u"-qm"_s, u"Both"_s});

    const DiffRequest kind{.path = u"a"_s, .originalPath = {}, .side = DiffSide::unstaged};
    const auto toLink = [this] {
        EXPECT_TRUE(QFile::remove(r + u"/a"_s));
        EXPECT_EQ(::symlink("b", (r + u"/a"_s).toUtf8().constData()), 0);
    };
    toLink();
    const auto diff = service.fileDiff(r, kind);
    ASSERT_TRUE(diff) << failure(diff);
    EXPECT_EQ(diff->content, DiffContent::otherKind);
    EXPECT_EQ(diff->count(DiffLineKind::removed), 1);
    EXPECT_EQ(diff->count(DiffLineKind::added), 1);
    EXPECT_EQ(failure(service.stageLines(r, kind, *diff, first)), "“a” can only be taken as a whole.");
    EXPECT_EQ(failure(service.discard(r, {u"a"_s})), "");
    EXPECT_EQ(readFile(r + u"/a"_s), "beside\n");
    toLink();
    EXPECT_EQ(failure(service.stage(r, {u"a"_s})), "");
    EXPECT_TRUE(gitText(r, {u"ls-files"_s, u"-s"_s, u"a"_s}).startsWith(u"120000"_s));
}

} // namespace
} // namespace orv::test
