#include "OrvUI/GitModel.h"
#include "tests/OrvGit/GitFixture.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

/// A project with one repository, "r", and the model behind its page.
class GitPage : public ::testing::Test {
protected:
    void open(const QString& folder, const QString& scanRoot = {}) {
        Project project;
        project.id = folder;
        project.root = folder;
        project.name = QFileInfo(folder).fileName();
        overview.setProjects({project}, scanRoot);
        model = std::make_unique<GitModel>(overview, project);
        for (QAbstractItemModel* list : QList<QAbstractItemModel*>{
                 model->repositories(), model->staged(), model->unstaged(), model->conflicted(), model->branches(),
                 model->history(), model->stashes(), model->commitFiles(), model->diff()}) {
            new QAbstractItemModelTester(list, QAbstractItemModelTester::FailureReportingMode::Fatal, list);
            QObject::connect(list, &QAbstractItemModel::modelReset, list, [] { ADD_FAILURE() << "reset"; });
        }
        QObject::connect(model.get(), &GitModel::failed, model.get(), [this](const QString& text) {
            ended = text;
            hasEnded = true;
        });
        QObject::connect(model.get(), &GitModel::succeeded, model.get(), [this](const QString&) {
            ended.clear();
            hasEnded = true;
        });
        ASSERT_TRUE(waitFor([this] { return model->state() != u"loading"; }));
    }
    /// Runs an action to its end, and until the model shows what came of it. Gives why it failed.
    template <typename Action>
    QString after(Action action) {
        hasEnded = false;
        action();
        EXPECT_TRUE(waitFor([this] { return hasEnded && !model->isBusy(); }));
        refresh();
        return ended;
    }
    void refresh() {
        const QFuture<void> end = model->refresh();
        EXPECT_TRUE(waitFor([&] { return end.isFinished() && !model->isLoadingDiff(); }));
    }
    void select(const QString& path, bool isStaged) {
        model->selectFile(path, isStaged);
        EXPECT_TRUE(waitFor([this] { return !model->isLoadingDiff(); }));
    }
    /// "M a": the letters and paths of a list.
    static QString listed(const RowModel<ChangeRow>& list) {
        QStringList rows;
        for (const ChangeRow& row : list.rows()) {
            rows.append(row.letter + u' ' + row.name);
        }
        return rows.join(u"; "_s);
    }
    /// "staged | not staged | in conflict"
    [[nodiscard]] QString changes() const {
        return QStringList{listed(*model->staged()), listed(*model->unstaged()), listed(*model->conflicted())}.join(
            u" | "_s);
    }
    [[nodiscard]] QString content(const QString& file) const { return QString::fromUtf8(readFile(r + u'/' + file)); }
    [[nodiscard]] static QByteArray numbered(int lines) {
        QByteArray text;
        for (int i = 1; i <= lines; ++i) {
            text += QByteArray::number(i) + '\n';
        }
        return text;
    }

    GitHome home;
    const QString r = home.makeRepository(u"r"_s, {{u"a"_s, numbered(40)}, {u"sub/b"_s, "two\n"}});
    GitOverview overview;
    std::unique_ptr<GitModel> model;
    QString ended;
    bool hasEnded = false;
};

TEST_F(GitPage, StagesWhatIsAskedForWhileTheSameIsReadAgain) {
    home.add(u"r/a"_s, "one\n" + numbered(40).mid(2));
    home.add(u"r/new"_s, "n\n");
    open(r);
    select(u"a"_s, false);
    model->stage({u"new"_s});
    EXPECT_TRUE(waitFor([this] { return !model->isBusy(); }));
    model->stageHunk(0);
    EXPECT_TRUE(waitFor([this] { return changes() == u"M a; A new |  | "; })) << changes().toStdString();
}

TEST_F(GitPage, StagesPartsAndCommits) {
    home.add(u"r/a"_s, "one\n" + numbered(40).mid(2).replace("\n20\n", "\n20\ntwenty\nplus\n"));
    home.add(u"r/new"_s, "n\n");
    open(r);
    EXPECT_EQ(model->branch(), u"main"_s);
    EXPECT_EQ(changes(), u" | M a; ? new | "_s);

    select(u"a"_s, false);
    EXPECT_EQ(model->diff()->hunkCount(), 2);
    EXPECT_TRUE(model->canDivide());
    EXPECT_EQ(after([this] { model->stageHunk(0); }), QString());
    EXPECT_EQ(changes(), u"M a | M a; ? new | "_s);
    EXPECT_EQ(model->diff()->hunkCount(), 1) << "the rest of the file";

    // One of two added lines.
    const auto rows = model->diff()->match(model->diff()->index(0), DiffModel::text, u"plus"_s);
    ASSERT_EQ(rows.size(), 1);
    model->diff()->setSelected(rows.first().row(), true);
    EXPECT_EQ(after([this] { model->stageLines(); }), QString());
    EXPECT_EQ(model->diff()->added(), 1);
    EXPECT_EQ(model->diff()->index(4).data(DiffModel::text), u"twenty"_s);
    EXPECT_EQ(after([this] { model->discardHunk(0); }), QString());
    EXPECT_FALSE(content(u"a"_s).contains(u"twenty"_s));
    EXPECT_TRUE(model->selectedIsStaged()) << "nothing of it is left on the other side";
    EXPECT_EQ(changes(), u"M a | ? new | "_s);
    EXPECT_EQ(model->diff()->hunkCount(), 2);
    EXPECT_EQ(after([this] { model->unstageHunk(1); }), QString());
    EXPECT_EQ(git(r, {u"diff"_s, u"--cached"_s, u"--numstat"_s}), "1\t1\ta\n");

    // What has changed since it was shown is not touched.
    home.add(u"r/a"_s, "other\n");
    EXPECT_EQ(after([this] { model->stageHunk(0); }), u"There is nothing here of which a part could be changed."_s);
    EXPECT_EQ(after([this] { model->commit(u" "_s, {}); }), u"Enter a commit summary first."_s);
    EXPECT_EQ(after([this] { model->stageAll(); }), QString());
    EXPECT_EQ(changes(), u"M a; A new |  | "_s);
    EXPECT_EQ(after([this] { model->unstageAll(); }), QString());
    EXPECT_EQ(changes(), u" | M a; ? new | "_s);
    EXPECT_EQ(after([this] { model->discard({u"a"_s}); }), QString());
    EXPECT_EQ(after([this] { model->stage({u"new"_s}); }), QString());
    EXPECT_EQ(after([this] { model->commit(u"Second"_s, u"More\n\nof it"_s); }), QString());
    EXPECT_EQ(changes(), u" |  | "_s);
    EXPECT_EQ(model->headSummary(), u"Second"_s);
    EXPECT_EQ(model->headDescription(), u"More\n\nof it"_s);
    EXPECT_EQ(after([this] { model->amend(u"Other"_s, {}); }), QString());
    EXPECT_EQ(model->history()->rows().first().subject, u"Other"_s);
    EXPECT_EQ(after([this] { model->commit(u"x"_s, {}); }), u"There are no staged changes to commit."_s);

    model->selectCommit(model->history()->rows().first().key);
    ASSERT_TRUE(waitFor([this] { return !model->isLoadingDiff(); }));
    EXPECT_EQ(listed(*model->commitFiles()), u"A new"_s);
    EXPECT_EQ(model->diff()->added(), 1);
    EXPECT_FALSE(model->canDivide());
}

TEST_F(GitPage, SaysWhatOddFilesAre) {
    const QString inner = home.makeRepository(u"inner"_s, {{u"x"_s, "x"}});
    git(r, {u"-c"_s, u"protocol.file.allow=always"_s, u"submodule"_s, u"add"_s, u"-q"_s, inner, u"module"_s});
    git(r, {u"commit"_s, u"-qm"_s, u"Module"_s});
    git(r + u"/module"_s, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"On"_s});
    home.add(u"r/binary"_s, QByteArray("a\0b", 3));
    QFile huge(home.path(u"r/huge"_s));
    ASSERT_TRUE(huge.open(QFile::WriteOnly) && huge.resize(100 * 1024 * 1024));
    ASSERT_EQ(::symlink("a", home.path(u"r/link"_s).toUtf8().constData()), 0);
    home.add(u"r/two\nlines"_s, "x\n");
    home.add(u"r/empty"_s, {});
    home.makeRepository(u"r/own"_s);
    home.add(u"r/long"_s, numbered(100'000));
    ASSERT_TRUE(QFile::setPermissions(r + u"/a"_s, QFile::permissions(r + u"/a"_s) | QFile::ExeOwner));
    open(r);
    EXPECT_EQ(changes(), u" | M a; M module; ? binary; ? empty; ? huge; ? link; ? long; ? own; ? two\u23celines | "_s);
    const struct {
        QString path;
        QString note;
        int rows;
    } cases[]{
        {u"a"_s, u"Only its mode changed, from 100644 to 100755."_s, 0},
        {u"module"_s, u"This is a submodule: a commit of another repository."_s, 3},
        {u"binary"_s, u"This is a binary file."_s, 0},
        {u"empty"_s, u"This file is empty."_s, 0},
        {u"huge"_s, u"This file is too large to be shown."_s, 0},
        {u"link"_s, u"This is a symbolic link."_s, 2},
        {u"long"_s, QString(), 100'001},
        {u"own/"_s, u"This folder is a repository of its own."_s, 0},
        {u"two\nlines"_s, QString(), 2},
    };
    for (const auto& each : cases) {
        select(each.path, false);
        EXPECT_EQ(model->diffNote(), each.note) << each.path.toStdString();
        EXPECT_EQ(model->diff()->rowCount(), each.rows) << each.path.toStdString();
    }
    EXPECT_EQ(model->diff()->index(1).data(DiffModel::text), u"x"_s);
    EXPECT_EQ(after([this] { model->stage({u"two\nlines"_s}); }), QString());
    EXPECT_EQ(listed(*model->staged()), u"A two\u23celines"_s);
}

TEST_F(GitPage, NamesRepositoriesThatHangOnOthers) {
    // A folder that is called as git calls that of its submodules.
    const QString app = home.makeRepository(u"all/modules/app"_s, {{u"f"_s, "x"}});
    const QString tree = home.path(u"all/modules/app-wt"_s);
    git(app, {u"worktree"_s, u"add"_s, u"-q"_s, u"-b"_s, u"side"_s, tree});
    git(app, {u"-c"_s, u"protocol.file.allow=always"_s, u"submodule"_s, u"add"_s, u"-q"_s, r, u"lib"_s});
    open(home.path(u"all"_s));
    QStringList labels;
    QStringList notes;
    for (int row = 0; row < model->repositories()->rowCount(); ++row) {
        const QModelIndex index = model->repositories()->index(row, 0);
        const auto at = [&](const char* role) {
            return index.data(model->repositories()->roleNames().key(role)).toString();
        };
        labels.append(at("label"));
        model->setRepository(at("path"));
        refresh();
        notes.append(model->note());
    }
    EXPECT_EQ(
        labels,
        (QStringList{u"modules/app"_s, u"modules/app-wt (work tree of app)"_s, u"modules/app/lib (submodule)"_s}));
    EXPECT_EQ(notes, (QStringList{{}, u"A work tree of %1."_s.arg(app), u"A submodule of another repository."_s}));
}

TEST_F(GitPage, SaysWhatOddRepositoriesAre) {
    const QString bare = home.path(u"bare"_s);
    git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, r, bare});
    git(r, {u"worktree"_s, u"add"_s, u"-q"_s, u"-b"_s, u"side"_s, home.path(u"tree"_s)});
    git(r, {u"checkout"_s, u"-q"_s, u"--detach"_s});
    home.makeRepository(u"unborn"_s);
    home.add(u"broken/.git/HEAD"_s, "nonsense");
    home.add(u"plain/file"_s, "x");
    const struct {
        QString folder;
        QString state;
        QString branch;
        QString note;
        int commits;
    } cases[]{
        {r, u"ready"_s, {}, {}, 1},
        {bare, u"bare"_s, u"main"_s, {}, 1},
        {home.path(u"tree"_s), u"ready"_s, u"side"_s, u"A work tree of "_s + r + u'.', 1},
        {home.path(u"unborn"_s), u"ready"_s, u"main"_s, {}, 0},
        {home.path(u"broken"_s), u"failed"_s, {}, {}, 0},
        {home.path(u"plain"_s), u"none"_s, {}, {}, 0},
        {r + u"/sub"_s,
         u"none"_s,
         {},
         u"It lies in the repository %1, which is not listed with it. One that is started here is nested in that one, "
         u"and "
         u"has a history of its own."_s.arg(r),
         0},
    };
    for (const auto& each : cases) {
        open(each.folder);
        EXPECT_EQ(model->state(), each.state) << each.folder.toStdString();
        EXPECT_EQ(model->branch(), each.branch) << each.folder.toStdString();
        EXPECT_EQ(model->note(), each.note) << each.folder.toStdString();
        EXPECT_EQ(model->history()->rowCount(), each.commits) << each.folder.toStdString();
        EXPECT_EQ(model->problem().isEmpty(), each.state != u"failed") << model->problem().toStdString();
    }
}

TEST_F(GitPage, ShowsTheRepositoryThatTheProjectIsAPartOf) {
    home.add(u"r/a"_s, "other\n");
    home.add(u"r/sub/dir/new"_s, "n\n");
    home.add(u"r/sub/broken/.git/HEAD"_s, "nonsense");
    open(r + u"/sub"_s, home.path());
    EXPECT_EQ(model->state(), u"ready"_s) << model->problem().toStdString();
    EXPECT_EQ(model->repository(), r);
    EXPECT_EQ(model->note(), u"sub is a part of the repository %1, all of which is shown here."_s.arg(r));
    EXPECT_EQ(changes(), u" | M a; ? new | "_s);
    EXPECT_EQ(model->changeCount() - model->ownChangeCount(), 1);
    const QVariantList first = model->firstChanges();
    ASSERT_EQ(first.size(), 1);
    EXPECT_EQ(first[0].toMap()[u"folder"_s].toString() + first[0].toMap()[u"name"_s].toString(), u"dir/new"_s);

    // One that can't be read does not pass for one without changes.
    const auto& rows = model->repositories()->rows();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0].label + rows[0].problem, u"r"_s);
    EXPECT_EQ(rows[1].name, u"broken"_s);
    EXPECT_NE(rows[1].problem, QString());
    model->setRepository(rows[1].key);
    EXPECT_TRUE(waitFor([this] { return model->state() == u"failed"; }));
    EXPECT_EQ(model->history()->rowCount() + model->branches()->rowCount(), 0) << "those of the repository around it";
    EXPECT_EQ(after([this] { model->createBranch(u"topic"_s); }), u"This folder is not a git repository."_s);
    EXPECT_EQ(gitText(r, {u"branch"_s, u"--list"_s, u"topic"_s}), QString());
}

TEST_F(GitPage, GoesThroughConflicts) {
    git(r, {u"switch"_s, u"-qc"_s, u"other"_s});
    home.add(u"r/sub/b"_s, "theirs\n");
    git(r, {u"commit"_s, u"-qam"_s, u"Theirs"_s});
    git(r, {u"switch"_s, u"-q"_s, u"main"_s});
    home.add(u"r/sub/b"_s, "ours\n");
    git(r, {u"commit"_s, u"-qam"_s, u"Ours"_s});
    for (const QString& command : {u"merge"_s, u"rebase"_s, u"cherry-pick"_s}) {
        git(r, {command, u"other"_s}, 1);
        open(r);
        EXPECT_EQ(model->operation(), command);
        EXPECT_TRUE(model->operationText().endsWith(u": 1 file in conflict"_s)) << model->operationText().toStdString();
        EXPECT_EQ(changes(), u" |  | U b"_s);
        EXPECT_FALSE(model->canContinue());
        select(u"sub/b"_s, false);
        EXPECT_EQ(model->diffNote(), u"Both sides changed this file. Resolve it, then stage it."_s);
        EXPECT_EQ(after([this] { model->stageAll(); }), QString());
        EXPECT_EQ(changes(), u" |  | U b"_s) << "a conflict is not resolved by the way";
        EXPECT_EQ(after([this] { model->abortOperation(); }), QString());
        EXPECT_EQ(model->operation(), QString());
        EXPECT_EQ(content(u"sub/b"_s), u"ours\n"_s);
    }
    EXPECT_FALSE(model->canSkip());
    git(r, {u"cherry-pick"_s, u"other"_s}, 1);
    git(r, {u"checkout"_s, u"HEAD"_s, u"--"_s, u"sub/b"_s});
    refresh();
    EXPECT_EQ(after([this] { model->continueOperation(); }), u"Nothing is left of this commit. Skip it to go on."_s);
    EXPECT_TRUE(model->canSkip());
    EXPECT_EQ(after([this] { model->skipOperation(); }), QString());
    EXPECT_EQ(model->operation(), QString());
    git(r, {u"rebase"_s, u"other"_s}, 1);
    refresh();
    home.add(u"r/sub/b"_s, "both\n");
    EXPECT_EQ(after([this] { model->stage({u"sub/b"_s}); }), QString());
    EXPECT_TRUE(model->canContinue());
    EXPECT_EQ(after([this] { model->continueOperation(); }), QString());
    EXPECT_EQ(model->operation(), QString());
    EXPECT_EQ(model->history()->rows().at(1).subject, u"Theirs"_s);
}

TEST_F(GitPage, HandlesBranchesStashesAndRemotes) {
    const QString origin = home.path(u"origin.git"_s);
    git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, r, origin});
    git(r, {u"remote"_s, u"add"_s, u"origin"_s, origin});
    open(r);
    EXPECT_EQ(after([this] { model->pull(); }), u"This branch has no upstream branch yet."_s);
    EXPECT_EQ(after([this] { model->push(); }), QString());
    EXPECT_EQ(model->upstream(), u"origin/main"_s);
    EXPECT_EQ(after([this] { model->createBranch(u"topic"_s); }), QString());
    EXPECT_EQ(model->branches()->rows().first().name, u"topic"_s) << "the current one first";
    EXPECT_TRUE(after([this] { model->createBranch(u"to pic"_s); }).contains(u"is not a name for a branch"_s));
    git(r, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"x"_s});
    EXPECT_EQ(after([this] { model->setUpstream(u"topic"_s, u"origin/main"_s); }), QString());
    EXPECT_EQ(model->ahead(), 1);

    home.add(u"r/a"_s, "stashed\n");
    home.add(u"r/new"_s, "new\n");
    EXPECT_EQ(after([this] { model->stashSave(u"later"_s, true); }), QString());
    EXPECT_EQ(changes(), u" |  | "_s);
    ASSERT_EQ(model->stashes()->rowCount(), 1);
    const QString stash = model->stashes()->rows().first().key;
    EXPECT_EQ(after([this] { model->switchBranch(u"main"_s); }), QString());
    EXPECT_TRUE(after([this] { model->deleteBranch(u"topic"_s, false); }).contains(u"not fully merged"_s));
    EXPECT_EQ(after([this] { model->deleteBranch(u"topic"_s, true); }), QString());
    EXPECT_EQ(after([&] { model->stashApply(stash); }), QString());
    EXPECT_EQ(changes(), u" | M a; ? new | "_s);
    EXPECT_EQ(after([this] { model->discard({u"a"_s, u"new"_s}); }), QString());
    EXPECT_EQ(after([&] { model->stashPop(stash); }), QString());
    EXPECT_EQ(after([&] { model->stashDrop(stash); }), u"This stash is gone."_s);

    git(r, {u"config"_s, u"--unset"_s, u"user.name"_s}, anyCode);
    EXPECT_EQ(after([this] { model->setIdentity(u" "_s, u"x"_s, false); }), u"Enter a name and an e-mail first."_s);
    EXPECT_EQ(after([this] { model->setIdentity(u"Bo"_s, u"bo@example.org"_s, false); }), QString());
    EXPECT_EQ(model->identityName(), u"Bo"_s);
    model->readIdentities();
    EXPECT_TRUE(waitFor([this] { return !model->identities().isEmpty(); }));
    EXPECT_EQ(model->identities()[u"globalName"_s], u"Ada"_s);
    EXPECT_EQ(model->identities()[u"ownEmail"_s], u"bo@example.org"_s);
    EXPECT_EQ(gitText(home.path(), {u"config"_s, u"user.name"_s}), u"Ada"_s);
}

TEST_F(GitPage, PagesThroughTheHistory) {
    QByteArray commits;
    for (int i = 0; i < 249; ++i) {
        commits += "commit refs/heads/main\ncommitter A <a@b> " + QByteArray::number(1'800'000'000 + i) +
                   " +0000\ndata 1\nx\n" + (i == 0 ? "from refs/heads/main^0\n" : "");
    }
    git(r, {u"fast-import"_s, u"--quiet"_s}, 0, commits);
    open(r);
    EXPECT_EQ(model->history()->rowCount(), 100);
    EXPECT_EQ(model->history()->rows().first().refs, QStringList{u"main"_s});
    for (const int expected : {200, 250}) {
        EXPECT_TRUE(model->hasMoreHistory());
        model->loadMoreHistory();
        model->loadMoreHistory();
        EXPECT_TRUE(waitFor([&] { return model->history()->rowCount() == expected; }));
    }
    EXPECT_FALSE(model->hasMoreHistory());
    const QString wanted = gitText(r, {u"log"_s, u"--format=%H"_s});
    QStringList found;
    for (const CommitRow& row : model->history()->rows()) {
        found.append(row.key);
    }
    EXPECT_EQ(found.join(u'\n'), wanted);
    refresh();
    EXPECT_EQ(model->history()->rowCount(), 250) << "what was read stays";
}

TEST_F(GitPage, ShowsOneOfSeveralRepositories) {
    const QString inner = home.makeRepository(u"r/inner"_s, {{u"x"_s, "x\n"}});
    home.add(u"r/inner/x"_s, "changed\n");
    open(r);
    EXPECT_EQ(model->repository(), r);
    ASSERT_EQ(model->repositories()->rowCount(), 2);
    EXPECT_EQ(model->repositories()->rows().at(1).name, u"inner"_s);
    EXPECT_EQ(model->repositories()->rows().at(1).changes, 1);
    select(u"inner/"_s, false);
    // The last one that is asked for is the one that is shown.
    model->setRepository(inner);
    model->setRepository(r + u"/no"_s);
    model->setRepository(inner);
    EXPECT_TRUE(waitFor([&] { return model->repository() == inner; }));
    model->setRepository(r);
    model->setRepository(inner);
    refresh();
    EXPECT_EQ(model->repository(), inner);
    EXPECT_EQ(changes(), u" | M x | "_s);
    EXPECT_EQ(model->selectedPath(), QString());
    EXPECT_EQ(model->diff()->rowCount(), 0);
    select(u"x"_s, false);
    EXPECT_EQ(model->diff()->added(), 1);
    // A change by someone else is seen without being asked for.
    git(inner, {u"commit"_s, u"-qam"_s, u"Elsewhere"_s});
    EXPECT_TRUE(waitFor([this] { return model->history()->rows().first().subject == u"Elsewhere"_s; }));
    EXPECT_TRUE(waitFor([this] { return model->diff()->rowCount() == 0; }));
}

TEST_F(GitPage, DropsWhatIsStale) {
    home.add(u"r/a"_s, "a\n");
    home.add(u"r/sub/b"_s, "b\n");
    open(r);
    // Asked for one after the other, without waiting: the last one counts, whichever comes last.
    for (int round = 0; round < 20; ++round) {
        model->selectFile(u"a"_s, false);
        model->selectFile(u"sub/b"_s, false);
    }
    ASSERT_TRUE(waitFor([this] { return !model->isLoadingDiff(); }));
    EXPECT_EQ(model->diff()->rowCount(), 3);
    overview.pool().waitForDone();
    EXPECT_TRUE(waitFor([this] { return !model->isLoadingDiff(); }));
    EXPECT_EQ(QString::fromUtf8(model->diff()->diff().path()), u"sub/b"_s);
    // While an action runs, another one is refused; both ends are told.
    QStringList ends;
    QObject::connect(model.get(), &GitModel::failed, model.get(), [&](const QString& text) { ends.append(text); });
    QObject::connect(model.get(), &GitModel::succeeded, model.get(), [&](const QString& name) { ends.append(name); });
    model->stageAll();
    model->commit(u"x"_s, {});
    EXPECT_TRUE(model->isBusy());
    EXPECT_TRUE(waitFor([&] { return ends.size() == 2; }));
    EXPECT_EQ(ends, (QStringList{u"r is still busy with git."_s, u"stage"_s}));
    // It goes on when the page is gone.
    model->commit(u"Last"_s, {});
    model.reset();
    EXPECT_TRUE(waitFor([this] { return overview.busy().isEmpty(); }));
    EXPECT_EQ(gitText(r, {u"log"_s, u"-1"_s, u"--format=%s"_s}), u"Last"_s);
}

TEST_F(GitPage, FollowsEditsWhileItIsLookedAt) {
    home.add(u"r/a"_s, "changed\n" + numbered(40));
    open(r);
    select(u"a"_s, false);
    model->diff()->setSelected(1, true);
    ASSERT_TRUE(model->diff()->hasSelection());
    model->lookInterval = std::chrono::milliseconds(1);
    model->setLookedAt(true);
    // A file that was clean, the shown one once more, and one that is gone again: none of it touches .git.
    home.add(u"r/sub/b"_s, "edited\n");
    EXPECT_TRUE(waitFor([this] { return changes() == u" | M a; M b | "; })) << changes().toStdString();
    EXPECT_TRUE(model->diff()->hasSelection()) << "its diff is the same";
    home.add(u"r/a"_s, "changes\n" + numbered(40));
    EXPECT_TRUE(
        waitFor([this] { return model->diff()->diff().text(model->diff()->diff().hunks[0].lines[0]) == "changes"; }));
    home.add(u"r/sub/b"_s, "two\n");
    EXPECT_TRUE(waitFor([this] { return changes() == u" | M a | "; })) << changes().toStdString();
    EXPECT_EQ(model->selectedPath(), u"a");
    EXPECT_TRUE(waitFor([this] { return overview.badge(r).value_or(GitBadge()).changes == 1; }));
    // Without a change nothing is read again, and so nothing is told: from the third look on, for what was under way
    // before may be told still.
    const QString trace = home.path(u"trace"_s);
    git(r, {u"config"_s, u"--global"_s, u"trace2.eventTarget"_s, trace});
    const auto areLooks = [&](int count) {
        return waitFor([&] { return readFile(trace).count("\"name\":\"status\"") >= count; });
    };
    EXPECT_TRUE(areLooks(3));
    EXPECT_TRUE(waitFor([this] { return !model->isLoadingDiff(); }));
    model->diff()->setSelected(1, true);
    int told = 0;
    QObject::connect(model.get(), &GitModel::statusChanged, model.get(), [&told] { ++told; });
    EXPECT_TRUE(areLooks(7)) << "they went on";
    EXPECT_EQ(told, 0);
    EXPECT_TRUE(model->diff()->hasSelection());
}

TEST_F(GitPage, RunsOneStatusOfARepositoryAtATime) {
    const QString trace = home.path(u"trace"_s);
    git(r, {u"config"_s, u"--global"_s, u"trace2.eventTarget"_s, trace});
    open(r);
    QList<QFuture<void>> ends;
    for (int i = 0; i < 8; ++i) {
        ends.append(model->refresh());
        ends.append(overview.refresh(r));
        git(r, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"x"_s});
        EXPECT_TRUE(waitFor([&] { return ends.at(ends.size() - 2).isFinished(); }));
    }
    EXPECT_TRUE(waitFor([&] { return std::ranges::all_of(ends, [](const auto& end) { return end.isFinished(); }); }));
    // By the trace's own clock: none begins before the last one has ended.
    QSet<QString> statuses;
    int running = 0;
    int most = 0;
    const auto count = [&] {
        statuses.clear();
        running = 0;
        for (const QByteArray& line : readFile(trace).split('\n')) {
            const QJsonObject event = QJsonDocument::fromJson(line).object();
            const QString session = event[u"sid"_s].toString();
            const QString name = event[u"event"_s].toString();
            if (name == u"cmd_name" && event[u"name"_s].toString() == u"status" && !statuses.contains(session)) {
                statuses.insert(session);
                most = std::max(most, ++running);
            } else if (name == u"atexit" && statuses.contains(session)) {
                --running;
            }
        }
        return running == 0;
    };
    // The watch may have one more begun.
    EXPECT_TRUE(waitFor(count)) << running;
    EXPECT_GE(statuses.size(), 8);
    EXPECT_EQ(most, 1);
}

} // namespace
} // namespace orv::test
