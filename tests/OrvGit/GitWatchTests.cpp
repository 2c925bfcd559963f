#include "OrvGit/GitBadges.h"
#include "OrvGit/RepositoryLayout.h"
#include "OrvGit/RepositoryWatch.h"
#include "tests/OrvGit/GitFixture.h"

#include <QDir>
#include <QFile>
#include <QHash>

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

class GitLooks : public ::testing::Test {
protected:
    GitHome home;
    const GitService service;
    const QString r = home.makeRepository(u"r"_s, {{u"a"_s, "one\n"}, {u"b"_s, "two\n"}});
};

TEST_F(GitLooks, SayWhatAChangeIs) {
    home.add(u"r/binary"_s, QByteArray("\0\1\2", 3));
    QFile large(r + u"/large"_s);
    ASSERT_TRUE(large.open(QIODevice::WriteOnly) && large.resize(100 * 1024 * 1024));
    QByteArray lines;
    for (int i = 0; i < 100'000; ++i) {
        lines += QByteArray::number(i) + '\n';
    }
    home.add(u"r/long"_s, lines);
    ASSERT_EQ(::symlink("/nowhere", (r + u"/link"_s).toUtf8().constData()), 0);
    const QString sub = home.makeRepository(u"sub"_s, {{u"f"_s, "x"}});
    git(r, {u"submodule"_s, u"--quiet"_s, u"add"_s, sub, u"module"_s});
    ASSERT_TRUE(QFile::rename(r + u"/a"_s, r + u"/moved"_s));
    git(r, {u"add"_s, u"-A"_s});
    const QHash<QString, DiffContent> expected{
        {u"binary"_s, DiffContent::binary},    {u"large"_s, DiffContent::tooLarge},   {u"long"_s, DiffContent::text},
        {u"link"_s, DiffContent::symlink},     {u"module"_s, DiffContent::submodule}, {u"moved"_s, DiffContent::text},
        {u".gitmodules"_s, DiffContent::text},
    };
    const auto status = service.status(r);
    EXPECT_EQ(status->changes.size(), expected.size());
    for (const FileChange& change : status->changes) {
        const auto diff = service.fileDiff(r, DiffRequest::of(change));
        ASSERT_TRUE(diff) << failure(diff);
        EXPECT_EQ(diff->content, expected.value(change.path)) << qPrintable(change.path);
        EXPECT_EQ(diff->change, change.index == 'R' ? DiffChange::renamed : DiffChange::added);
        EXPECT_EQ(
            diff->count(DiffLineKind::added), change.path == u"long"_s ? 100'000 : diff->count(DiffLineKind::added));
    }
}

TEST_F(GitLooks, KnowWhatKindOfRepositoryItIs) {
    const QString tree = home.path(u"tree"_s);
    git(r, {u"worktree"_s, u"add"_s, u"-q"_s, tree});
    const QString bare = home.path(u"bare"_s);
    git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, r, bare});
    using Kind = RepositoryLayout::Kind;
    EXPECT_EQ(RepositoryLayout::of(r)->kind, Kind::repository);
    EXPECT_EQ(RepositoryLayout::of(tree)->kind, Kind::linked);
    EXPECT_EQ(RepositoryLayout::of(tree)->commonDirectory, r + u"/.git"_s);
    EXPECT_EQ(RepositoryLayout::of(bare)->kind, Kind::bare);
    EXPECT_EQ(RepositoryLayout::of(home.path()), std::nullopt);
    EXPECT_EQ(service.status(tree)->branch, u"tree"_s);
    EXPECT_EQ(failure(service.status(bare)), "fatal: this operation must be run in a work tree");
    EXPECT_EQ(service.log(bare, 9)->size(), 1);
    home.makeRepository(u"r/node_modules/x"_s);
    home.makeRepository(u"r/x/y"_s);
    ASSERT_EQ(::symlink(r.toUtf8().constData(), home.path(u"r/x/loop"_s).toUtf8().constData()), 0);
    EXPECT_EQ(GitService::findRepos(home.path()), (QStringList{r, r + u"/x/y"_s, tree}));
}

TEST_F(GitLooks, SumUpBadges) {
    home.add(u"r/a"_s, "changed\n");
    const QString inner = home.makeRepository(u"r/inner"_s, {{u"f"_s, "x"}});
    git(inner, {u"switch"_s, u"-q"_s, u"-c"_s, u"next"_s, u"--track"_s, u"main"_s});
    git(inner, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"x"_s});
    home.add(u"empty/.git/HEAD"_s, "nonsense");
    GitBadges badges(2);
    QFuture<GitBadge> project = badges.read(r);
    QFuture<GitBadge> broken = badges.read(home.path(u"empty"_s));
    QFuture<GitBadge> none = badges.read(home.path(u"home"_s));
    EXPECT_EQ(project.result(), (GitBadge{2, 1, 0, 2, {}}));
    EXPECT_EQ(broken.result(), (GitBadge{0, 0, 0, 1, {}, 1})) << "what can't be read is not clean";
    EXPECT_EQ(none.result(), GitBadge{});
    EXPECT_EQ(badges.readRepositories({inner}, r).result(), (GitBadge{0, 1, 0, 1, u"next"_s}));
}

/// The status of one stands still, at a named pipe.
TEST_F(GitLooks, OfOneRepositoryKeepNoBadgeOfAnotherWaiting) {
    const QString slow = home.makeRepository(u"slow"_s, {{u"a/f"_s, "x\n"}, {u"b/f"_s, "x\n"}, {u"c/f"_s, "x\n"}});
    const QString exclude = slow + u"/.git/info/exclude"_s;
    QFile::remove(exclude);
    ASSERT_TRUE(QDir().mkpath(slow + u"/.git/info"_s));
    ASSERT_EQ(::mkfifo(exclude.toUtf8().constData(), 0600), 0);
    QList<QFuture<GitBadge>> still;
    {
        GitBadges badges(2);
        for (const QString& project : {u"/a"_s, u"/b"_s, u"/c"_s}) {
            still.append(badges.readRepositories({slow}, slow + project));
        }
        EXPECT_EQ(badges.readRepositories({r}, r).result(), (GitBadge{0, 0, 0, 1, u"main"_s}));
        EXPECT_TRUE(std::ranges::none_of(still, [](const auto& badge) { return badge.isFinished(); }));
    }
    EXPECT_TRUE(std::ranges::all_of(still, [](const auto& badge) { return badge.isFinished(); }));
}

TEST_F(GitLooks, AreNoticedByAWatch) {
    const QString tree = home.path(u"tree"_s);
    git(r, {u"worktree"_s, u"add"_s, u"-q"_s, tree});
    RepositoryWatch watch;
    QStringList told;
    QObject::connect(
        &watch, &RepositoryWatch::changed, &watch, [&told](const QString& folder) { told.append(folder); });
    watch.setRepositories({r, tree, home.path()});
    home.add(u"r/a"_s, "1\n");
    const struct {
        QStringList words;
        QString folder;
    } cases[]{
        {{u"add"_s, u"a"_s}, r},
        {{u"switch"_s, u"-qc"_s, u"deep/er/name"_s}, r},
        {{u"commit"_s, u"-qm"_s, u"x"_s}, r},
        {{u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"x"_s}, tree},
        {{u"pack-refs"_s, u"--all"_s}, tree},
    };
    for (const auto& each : cases) {
        told.clear();
        git(each.folder, each.words);
        EXPECT_TRUE(waitFor([&] { return told.contains(each.folder); })) << qPrintable(each.words.join(u' '));
    }
    EXPECT_TRUE(waitFor([&] { return told.contains(r); }));
    EXPECT_EQ(watch.repositories().size(), 2);
    // A look of ours is no change.
    told.clear();
    EXPECT_TRUE(GitService(GitRunner{{}, GitPurpose::background, {}}).status(r));
    git(tree, {u"tag"_s, u"last"_s});
    EXPECT_TRUE(waitFor([&] { return told.contains(tree); }));
    EXPECT_EQ(told.count(tree), 1);
}

TEST_F(GitLooks, AreWatchedAgainWhereTheRepositoryComesBack) {
    RepositoryWatch watch;
    QStringList told;
    QObject::connect(
        &watch, &RepositoryWatch::changed, &watch, [&told](const QString& folder) { told.append(folder); });
    watch.setRepositories({r});
    EXPECT_TRUE(waitFor([&] { return watch.repositories().size() == 1 && watch.isIdle(); }));
    ASSERT_TRUE(QDir().rename(r + u"/.git"_s, r + u"/gone"_s));
    EXPECT_TRUE(waitFor([&] { return watch.repositories().isEmpty() && told.contains(r); }));
    git(r, {u"init"_s, u"-q"_s});
    EXPECT_TRUE(waitFor([&] { return watch.repositories().size() == 1 && watch.isIdle(); }));
    told.clear();
    git(r, {u"tag"_s, u"x"_s}, anyCode);
    git(r, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"x"_s});
    EXPECT_TRUE(waitFor([&] { return told.contains(r); }));
}

TEST_F(GitLooks, AreNotLookedForAgainAndAgainWhereNothingCanBeWatched) {
    const QString tree = home.path(u"tree"_s);
    git(r, {u"worktree"_s, u"add"_s, u"-q"_s, tree});
    home.add(u"r/.git/worktrees/tree/commondir"_s, "nowhere\n");
    RepositoryWatch watch;
    watch.setRepositories({tree});
    EXPECT_FALSE(watch.isIdle());
    EXPECT_TRUE(waitFor([&] { return watch.isIdle(); }));
}

} // namespace
} // namespace orv::test
