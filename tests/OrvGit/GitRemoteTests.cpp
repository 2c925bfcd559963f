#include "tests/OrvGit/GitFixture.h"

#include <QDir>
#include <QFileInfo>

#include <thread>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

class GitRemotes : public ::testing::Test {
protected:
    GitRemotes() {
        git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, seed, origin});
        git(home.path(), {u"clone"_s, u"-q"_s, origin, r});
        git(home.path(), {u"clone"_s, u"-q"_s, origin, peer});
    }
    void commit(const QString& folder, const QByteArray& content) {
        home.add(QFileInfo(folder).fileName() + u"/a"_s, content);
        git(folder, {u"commit"_s, u"-qam"_s, QString::fromUtf8(content.trimmed())});
    }
    void commitAtPeer(const QByteArray& content) {
        git(peer, {u"pull"_s, u"-q"_s, u"--rebase"_s});
        commit(peer, content);
        git(peer, {u"push"_s, u"-q"_s});
    }

    GitHome home;
    const GitService service;
    const QString seed = home.makeRepository(u"seed"_s, {{u"a"_s, "one\n"}, {u"b"_s, "two\n"}});
    const QString origin = home.path(u"origin.git"_s);
    const QString r = home.path(u"r"_s);
    const QString peer = home.path(u"peer"_s);
};

TEST_F(GitRemotes, ArePulledAndPushed) {
    commitAtPeer("two\n");
    EXPECT_EQ(failure(service.fetch(r)), "");
    EXPECT_EQ(service.status(r)->behind, 1);
    EXPECT_EQ(failure(service.pull(r, PullStrategy::ffOnly)), "");
    EXPECT_EQ(readFile(r + u"/a"_s), "two\n");

    commitAtPeer("theirs\n");
    home.add(u"r/c"_s, "mine\n");
    git(r, {u"add"_s, u"c"_s});
    EXPECT_EQ(failure(service.commit(r, u"Mine"_s, {})), "");
    EXPECT_EQ(
        failure(service.pull(r, PullStrategy::ffOnly)),
        "Can't fast-forward: your branch and the remote have diverged.");
    EXPECT_EQ(failure(service.pull(r, PullStrategy::rebase)), "");
    EXPECT_EQ(service.log(r, 9)->front().subject, u"Mine"_s);
    EXPECT_EQ(failure(service.push(r)), "");
    EXPECT_EQ(gitText(origin, {u"rev-parse"_s, u"main"_s}), gitText(r, {u"rev-parse"_s, u"HEAD"_s}));

    commitAtPeer("theirs again\n");
    commit(r, "mine\n");
    EXPECT_TRUE(failure(service.push(r)).contains("rejected"));
    EXPECT_EQ(failure(service.pull(r, PullStrategy::merge)), "Merge conflicts in: a");
    EXPECT_TRUE(failure(service.commit(r, u"x"_s, {})).contains("you have unmerged files"));
    EXPECT_EQ(failure(service.abortOperation(r)), "");

    EXPECT_EQ(failure(service.createBranch(r, u"topic/é"_s)), "");
    EXPECT_EQ(failure(service.pull(r, PullStrategy::merge)), "This branch has no upstream branch yet.");
    EXPECT_EQ(failure(service.push(r)), "");
    EXPECT_EQ(service.status(r)->upstream, u"origin/topic/é"_s);
    EXPECT_EQ(failure(service.fetch(peer)), "");
    EXPECT_EQ(failure(service.switchBranch(peer, u"topic/é"_s)), "");
    EXPECT_EQ(service.status(peer)->upstream, u"origin/topic/é"_s);
    git(origin, {u"branch"_s, u"-D"_s, u"topic/é"_s});
    EXPECT_EQ(failure(service.fetch(r)), "");
    EXPECT_TRUE(service.branchInfos(r)->at(1).isUpstreamGone);
}

TEST_F(GitRemotes, AreCloned) {
    QList<CloneProgress> progress;
    const auto follow = [&progress](const QString& line) {
        if (const auto step = parseCloneProgress(line)) {
            progress.append(*step);
        }
    };
    EXPECT_EQ(failure(service.clone(u"file://"_s + origin, home.path(), u"-new one"_s, follow)), "");
    EXPECT_EQ(readFile(home.path(u"-new one/a"_s)), "one\n");
    EXPECT_EQ(progress.last().percent, 100);

    const struct {
        QString url;
        QString name;
        const char* text;
    } refused[]{
        {origin, u"r"_s, "“r” exists already."},
        {origin, u".."_s, "“..” is not a name for a folder."},
        {origin, u"a/b"_s, "“a/b” is not a name for a folder."},
        {u" "_s, u"x"_s, "Enter the address of a repository first."},
    };
    for (const auto& each : refused) {
        EXPECT_EQ(failure(service.clone(each.url, home.path(), each.name, follow)), each.text);
    }
    const auto missing = service.clone(u"file:///no/such"_s, home.path(), u"missing"_s, follow);
    EXPECT_TRUE(failure(missing).contains("does not appear to be a git repository")) << failure(missing);
    EXPECT_FALSE(QFileInfo::exists(home.path(u"missing"_s)));
}

TEST_F(GitRemotes, AreNotClonedAfterAll) {
    // A server that never answers.
    home.add(u"server"_s, "#!/bin/sh\nsleep 600\n");
    ASSERT_TRUE(QFile::setPermissions(home.path(u"server"_s), QFile::ReadOwner | QFile::ExeOwner));
    GitService cancelled;
    cancelled.runner.cancellation.emplace();
    cancelled.runner.extraEnvironment = {{u"GIT_SSH_COMMAND"_s, home.path(u"server"_s)}};
    std::thread canceller([&] {
        EXPECT_TRUE(comesTrue([this] { return QFileInfo::exists(home.path(u"half/.git"_s)); }));
        cancelled.runner.cancellation->cancel();
    });
    const auto half = cancelled.clone(u"ssh://host/x"_s, home.path(), u"half"_s, [](const QString&) {});
    canceller.join();
    ASSERT_FALSE(half);
    EXPECT_EQ(half.error().kind, GitError::Kind::cancelled);
    EXPECT_FALSE(QFileInfo::exists(home.path(u"half"_s)));
    EXPECT_EQ(processesWith(home.path(u"server"_s).toUtf8()), 0);
}

} // namespace
} // namespace orv::test
