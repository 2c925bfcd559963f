#include "Launcher.h"
#include "tests/OrvGit/GitFixture.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

namespace orv::test {

using namespace Qt::StringLiterals;

namespace {

/// A project "shop" with a repository, its origin, and a home in which git knows who commits.
class GitCommands : public ::testing::Test {
protected:
    GitCommands() {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "GIT_CONFIG_NOSYSTEM"}) {
            launcher.environment.insert(QString::fromLatin1(name), qEnvironmentVariable(name));
        }
        launcher.environment.remove(u"GIT_CONFIG_GLOBAL"_s);
        launcher.tree.add(u"projects/shop/package.json"_s, R"({"scripts":{"dev":"x"},"dependencies":{"vite":"5"}})");
        launcher.tree.add(u"projects/shop/a b"_s, "one\n");
        git(shop, {u"init"_s, u"-q"_s});
        git(shop, {u"add"_s, u"-A"_s});
        git(shop, {u"commit"_s, u"-qm"_s, u"First"_s});
        git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, shop, origin});
        git(shop, {u"remote"_s, u"add"_s, u"origin"_s, origin});
        git(shop, {u"fetch"_s, u"-q"_s});
        git(shop, {u"branch"_s, u"-q"_s, u"-u"_s, u"origin/main"_s});
    }

    /// The one JSON value that a call prints.
    QJsonDocument json(const QStringList& words) const {
        const Ended ended = launcher.call(words + QStringList{u"--json"_s});
        EXPECT_EQ(ended.exitCode, 0) << words.join(u' ').toStdString() << ended.err.toStdString();
        QJsonParseError error;
        const QJsonDocument parsed = QJsonDocument::fromJson(ended.out, &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << ended.out.toStdString();
        return parsed;
    }
    /// "A new; .M a b": the changes that a repository's JSON lists.
    static QString changes(const QJsonObject& repository) {
        QStringList found;
        for (const QJsonValue each : repository[u"changes"_s].toArray()) {
            const QJsonObject change = each.toObject();
            found.append(
                change[u"index"_s].toString() + change[u"worktree"_s].toString() + u' ' + change[u"path"_s].toString());
        }
        return found.join(u"; "_s);
    }
    /// A call in the folder of the project or below it.
    Ended inShop(const QString& line, const QString& below = {}) const {
        return launcher.shell(u"cd '%1%2' && \"$ORV\" %3"_s.arg(shop, below, line));
    }

    GitHome home;
    Launcher launcher;
    const QString shop = launcher.tree.path(u"projects/shop"_s);
    const QString origin = home.path(u"origin.git"_s);
};

} // namespace

TEST_F(GitCommands, FollowAChangeToTheRemote) {
    launcher.tree.add(u"projects/shop/a b"_s, "two\n");
    launcher.tree.add(u"projects/shop/sub/new"_s, "n\n");
    const QJsonObject before = json({u"git"_s, u"status"_s, u"shop"_s}).array().first().toObject();
    EXPECT_EQ(before[u"repository"_s], shop);
    EXPECT_EQ(before[u"branch"_s], u"main"_s);
    EXPECT_EQ(before[u"operation"_s], QJsonValue::Null);
    EXPECT_EQ(changes(before), u".M a b; ?? sub/new"_s);
    EXPECT_TRUE(launcher.call({u"git"_s, u"status"_s, shop}).out.contains("M a b\n"));

    const QJsonArray files = json({u"git"_s, u"diff"_s, u"--in"_s, shop}).array();
    ASSERT_EQ(files.size(), 2);
    const QJsonArray lines = files.first()[u"hunks"_s][0][u"lines"_s].toArray();
    EXPECT_EQ(lines[1].toObject()[u"text"_s], u"two"_s);
    EXPECT_EQ(lines[1].toObject()[u"new"_s], 1);
    EXPECT_TRUE(inShop(u"git diff 'a b'"_s).out.endsWith("@@ -1,1 +1,1 @@\n-one\n+two\n"));
    EXPECT_FALSE(inShop(u"git diff sub"_s).out.contains("one"));

    // Paths count from where one stands.
    EXPECT_EQ(inShop(u"git stage new"_s, u"/sub"_s).exitCode, 0);
    EXPECT_EQ(changes(json({u"git"_s, u"stage"_s, u"--all"_s, u"--in"_s, shop}).object()), u"M. a b; A. sub/new"_s);
    EXPECT_EQ(inShop(u"git diff --staged sub/new"_s).out.count('\n'), 3);
    EXPECT_EQ(inShop(u"git unstage sub"_s).exitCode, 0);
    EXPECT_EQ(inShop(u"git unstage sub"_s).exitCode, 1) << "nothing there";
    const QJsonObject made =
        json({u"git"_s, u"commit"_s, u"Second"_s, u"--description"_s, u"why"_s, u"--in"_s, shop}).object();
    EXPECT_EQ(made[u"id"_s].toString(), gitText(shop, {u"rev-parse"_s, u"HEAD"_s}));
    EXPECT_EQ(gitText(shop, {u"log"_s, u"-1"_s, u"--format=%b"_s}), u"why"_s);
    EXPECT_EQ(inShop(u"git discard ."_s).exitCode, 0);
    EXPECT_FALSE(QFileInfo::exists(shop + u"/sub/new"_s));

    const QJsonArray log = json({u"git"_s, u"log"_s, u"--limit"_s, u"1"_s, u"--in"_s, shop}).array();
    ASSERT_EQ(log.size(), 1);
    EXPECT_EQ(log[0].toObject()[u"subject"_s], u"Second"_s);
    EXPECT_EQ(log[0].toObject()[u"parents"_s].toArray().size(), 1);
    EXPECT_EQ(json({u"git"_s, u"log"_s, u"package.json"_s, u"--in"_s, shop}).array().size(), 1);
    const Ended nowhere = inShop(u"git log pakcage.json"_s);
    EXPECT_EQ(nowhere.exitCode, 1);
    EXPECT_TRUE(nowhere.err.contains("no commit knows it")) << nowhere.err.constData();
    EXPECT_TRUE(inShop(u"git diff --commit HEAD"_s).out.contains("+two"));

    EXPECT_EQ(launcher.call({u"git"_s, u"push"_s, u"shop"_s}).exitCode, 0);
    EXPECT_EQ(gitText(origin, {u"rev-parse"_s, u"main"_s}), made[u"id"_s].toString());
    EXPECT_EQ(json({u"git"_s, u"fetch"_s, u"shop"_s}).array(), QJsonArray{shop});
    EXPECT_EQ(launcher.call({u"git"_s, u"pull"_s, u"shop"_s, u"--strategy"_s, u"rebase"_s}).exitCode, 0);

    EXPECT_EQ(inShop(u"git switch topic --create"_s).exitCode, 0);
    EXPECT_EQ(inShop(u"git switch main"_s).exitCode, 0);
    EXPECT_TRUE(inShop(u"git branch"_s).out.contains("topic"));
    const QJsonArray left = json({u"git"_s, u"branch"_s, u"--delete"_s, u"topic"_s, u"--in"_s, shop}).array();
    EXPECT_EQ(left.first().toObject()[u"name"_s], u"main"_s);
    EXPECT_EQ(left.size(), 2) << "main and origin/main";
    const auto upstream = [this] { return gitText(shop, {u"config"_s, u"branch.main.merge"_s}, anyCode); };
    EXPECT_EQ(inShop(u"git branch --unset-upstream"_s).exitCode, 0);
    EXPECT_EQ(upstream(), QString());
    EXPECT_EQ(inShop(u"git branch main --set-upstream origin/main"_s).exitCode, 0);
    EXPECT_EQ(upstream(), u"refs/heads/main"_s);
}

TEST_F(GitCommands, AskBeforeWhatCanNotBeTakenBack) {
    const auto conflict = [this](const QByteArray& ours) {
        launcher.tree.add(u"projects/shop/a b"_s, "theirs\n");
        git(shop, {u"stash"_s, u"-q"_s});
        launcher.tree.add(u"projects/shop/a b"_s, ours);
        git(shop, {u"commit"_s, u"-qam"_s, u"Ours"_s});
        git(shop, {u"stash"_s, u"pop"_s, u"-q"_s}, 1);
    };
    const auto content = [this] { return readFile(shop + u"/a b"_s); };
    conflict("ours\n");
    const QByteArray inConflict = content();
    const Ended refused = inShop(u"git discard 'a b'"_s);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains("A conflict can't be brought back.") && refused.err.contains("--force"))
        << refused.err.constData();
    EXPECT_EQ(content(), inConflict);
    const QString onTerminal = u"cd '%1' && echo %2 | script -qec '\"$ORV\" git discard \"a b\"' /dev/null"_s;
    EXPECT_EQ(launcher.shell(onTerminal.arg(shop, u"no"_s)).exitCode, 1);
    EXPECT_EQ(content(), inConflict);
    const Ended agreed = launcher.shell(onTerminal.arg(shop, u"yes"_s));
    EXPECT_TRUE(agreed.out.contains("Discard it for good? [yes/no]")) << agreed.out.constData();
    EXPECT_EQ(content(), "ours\n");
    conflict("ours again\n");
    EXPECT_EQ(inShop(u"git discard 'a b' --force"_s).exitCode, 0);
    EXPECT_EQ(content(), "ours again\n");
}

TEST_F(GitCommands, GoOnAfterARepositoryThatCanNotBeRead) {
    launcher.tree.add(u"projects/shop/broken/.git/HEAD"_s, "nonsense");
    const Ended all = launcher.call({u"git"_s, u"status"_s, shop + u"/.."_s});
    EXPECT_EQ(all.exitCode, 1);
    EXPECT_TRUE(all.out.contains("main")) << all.out.constData();
    EXPECT_TRUE(all.err.contains("broken: ")) << all.err.constData();
    const QJsonArray states =
        QJsonDocument::fromJson(launcher.call({u"git"_s, u"status"_s, shop, u"--json"_s}).out).array();
    ASSERT_EQ(states.size(), 2);
    EXPECT_EQ(states[0][u"branch"_s], u"main"_s);
    EXPECT_NE(states[1][u"error"_s].toString(), QString());
}

TEST_F(GitCommands, TakePartsOfAFile) {
    const auto lines = [](const QByteArray& second, const QByteArray& last) {
        QByteArray text("1\n" + second + "\n");
        for (int i = 3; i < 30; ++i) {
            text += QByteArray::number(i) + '\n';
        }
        return text + last + '\n';
    };
    const auto write = [&](const QByteArray& text) { launcher.tree.add(u"projects/shop/long"_s, text); };
    write(lines("2", "30"));
    git(shop, {u"add"_s, u"long"_s});
    git(shop, {u"commit"_s, u"-qm"_s, u"Long"_s});
    write(lines("two", "thirty"));
    const QByteArray shown = inShop(u"git diff long"_s).out;
    EXPECT_TRUE(shown.contains("\n1 @@ -1,5 +1,5 @@\n") && shown.contains("\n2 @@ ")) << shown.constData();
    const auto staged = [this] { return json({u"git"_s, u"diff"_s, u"--staged"_s, u"--in"_s, shop}).array(); };

    EXPECT_EQ(inShop(u"git stage long --hunk 2"_s).exitCode, 0);
    const QJsonArray hunks = staged().first()[u"hunks"_s].toArray();
    ASSERT_EQ(hunks.size(), 1);
    EXPECT_EQ(hunks[0][u"hunk"_s], 1);
    EXPECT_EQ(gitText(shop, {u"show"_s, u":long"_s}).toUtf8() + '\n', lines("2", "thirty"));
    EXPECT_EQ(inShop(u"git stage long --hunk 2"_s).exitCode, 1) << "one is left";
    EXPECT_EQ(inShop(u"git unstage long --hunk 1"_s).exitCode, 0);
    EXPECT_TRUE(staged().isEmpty());
    EXPECT_EQ(inShop(u"git discard long --hunk 1"_s).exitCode, 0);
    EXPECT_EQ(readFile(shop + u"/long"_s), lines("2", "thirty"));
    write(lines("two", "thirty"));
    EXPECT_EQ(inShop(u"git stage long --hunk 1,2"_s).exitCode, 0);
    EXPECT_EQ(changes(json({u"git"_s, u"status"_s, shop}).array().first().toObject()), u"M. long"_s);
    launcher.tree.add(u"projects/shop/new"_s, "n\n");
    EXPECT_EQ(inShop(u"git discard new --hunk 1"_s).exitCode, 1) << "there is nothing to go back to";
    EXPECT_EQ(inShop(u"git stage new --hunk 1"_s).exitCode, 0);
}

TEST_F(GitCommands, PutChangesAwayAndBack) {
    const auto state = [this] { return changes(json({u"git"_s, u"status"_s, shop}).array().first().toObject()); };
    const auto listed = [this] {
        QStringList found;
        for (const QJsonValue each : json({u"git"_s, u"stash"_s, u"list"_s, u"--in"_s, shop}).array()) {
            found.append(u"%1 %2"_s.arg(each[u"entry"_s].toInt()).arg(each[u"message"_s].toString()));
        }
        return found.join(u"; "_s);
    };
    EXPECT_TRUE(inShop(u"git stash list"_s).err.contains("No stashes."));
    launcher.tree.add(u"projects/shop/a b"_s, "two\n");
    launcher.tree.add(u"projects/shop/new"_s, "n\n");
    EXPECT_EQ(inShop(u"git stash --message 'half done'"_s).exitCode, 0);
    EXPECT_EQ(state(), u"?? new"_s);
    EXPECT_EQ(inShop(u"git stash save --untracked"_s).exitCode, 0);
    EXPECT_EQ(state(), QString());
    EXPECT_TRUE(listed().startsWith(u"0 "_s) && listed().endsWith(u"; 1 On main: half done"_s))
        << listed().toStdString();
    EXPECT_TRUE(inShop(u"git stash list"_s).out.contains("half done"));
    EXPECT_EQ(inShop(u"git stash apply 1"_s).exitCode, 0);
    EXPECT_EQ(state(), u".M a b"_s);
    EXPECT_EQ(inShop(u"git stash drop 1"_s).exitCode, 0);
    EXPECT_EQ(inShop(u"git stash pop"_s).exitCode, 0);
    EXPECT_EQ(state(), u".M a b; ?? new"_s);
    EXPECT_EQ(listed(), QString());
}

TEST_F(GitCommands, SayWhoCommits) {
    const auto identity = [this](const QStringList& words) {
        return json(QStringList{u"git"_s, u"identity"_s, u"--in"_s, shop} + words).object();
    };
    const QJsonObject before = identity({});
    EXPECT_EQ(before[u"name"_s], gitText(shop, {u"config"_s, u"user.name"_s}));
    EXPECT_EQ(before[u"repository"_s][u"name"_s], QJsonValue::Null);
    const QJsonObject own = identity({u"--name"_s, u"Grace"_s});
    EXPECT_EQ(own[u"name"_s], u"Grace"_s);
    EXPECT_EQ(own[u"repository"_s][u"name"_s], u"Grace"_s);
    EXPECT_EQ(own[u"email"_s], before[u"email"_s]);
    EXPECT_TRUE(inShop(u"git identity"_s).out.contains("Grace  (this repository)"));
    const QJsonObject global = identity({u"--global"_s, u"--email"_s, u"ada@example.org"_s});
    EXPECT_EQ(global[u"name"_s], before[u"name"_s]);
    EXPECT_EQ(gitText(home.path(), {u"config"_s, u"--global"_s, u"user.email"_s}), u"ada@example.org"_s);
    const Ended doubtful = inShop(u"git identity --email ada"_s);
    EXPECT_EQ(doubtful.exitCode, 0);
    EXPECT_TRUE(doubtful.err.contains("no @ between two parts")) << doubtful.err.constData();
    EXPECT_TRUE(doubtful.out.contains("ada  (this repository)")) << "it is said, and set";
}

TEST_F(GitCommands, ReadABareRepository) {
    EXPECT_EQ(json({u"git"_s, u"log"_s, u"--in"_s, origin}).array().first()[u"subject"_s], u"First"_s);
    EXPECT_EQ(json({u"git"_s, u"branch"_s, u"--in"_s, origin}).array().first()[u"name"_s], u"main"_s);
    EXPECT_TRUE(launcher.call({u"git"_s, u"status"_s, origin}).err.contains("must be run in a work tree"));
}

TEST_F(GitCommands, SayWhyNot) {
    launcher.tree.add(u"projects/plain/"_s);
    const struct {
        const char* label;
        QString line;
        int exitCode;
        QByteArray err;
    } cases[]{
        {"no repository", u"git status ../plain"_s, 1, "there is no git repository in"},
        {"no folder", u"git status ./no"_s, 1, "folder not found"},
        {"a path elsewhere", u"git stage ../plain"_s, 1, "lies outside of"},
        {"no such path", u"git stage no"_s, 1, "did not match any files"},
        {"neither paths nor all", u"git stage"_s, 2, "name paths, or say --all"},
        {"both", u"git unstage --all x"_s, 2, "either name paths"},
        {"no such path to compare", u"git diff no"_s, 1, "there is no 'no', and no change of it"},
        {"nor among the staged", u"git diff --staged no"_s, 1, "there is no 'no', and no change of it"},
        {"a path without a change", u"git diff package.json"_s, 0, ""},
        {"nothing staged", u"git commit x"_s, 1, "There are no staged changes to commit."},
        {"no summary", u"git commit ' '"_s, 1, "Enter a commit summary first."},
        {"no branch of that name", u"git switch a..b"_s, 1, "is not a name for a branch"},
        {"nothing in progress", u"git abort"_s, 1, "Nothing is in progress that could be aborted."},
        {"no such strategy", u"git pull --strategy x"_s, 2, "the strategies are"},
        {"no number", u"git log --limit x"_s, 2, "take a number"},
        {"nothing to discard", u"git discard ."_s, 1, "nothing is changed there"},
        {"nothing changed to choose from", u"git stage 'a b' --hunk 1"_s, 1, "nothing is changed in “a b”"},
        {"nothing staged to choose from", u"git unstage 'a b' --hunk 1"_s, 1, "nothing of “a b” is staged"},
        {"no hunk's number", u"git stage 'a b' --hunk x"_s, 2, "--hunk takes numbers"},
        {"hunks of several files", u"git stage a b --hunk 1"_s, 2, "--hunk goes with the path of one file"},
        {"nothing to stash", u"git stash"_s, 1, "There are no local changes to stash."},
        {"no stash", u"git stash pop"_s, 1, "There is no stash."},
        {"a branch and a word for it", u"git branch main"_s, 2, "named with --set-upstream"},
        {"two things at once", u"git branch --delete x --unset-upstream"_s, 2, "is deleted, or what it follows is set"},
        {"nothing to follow", u"git branch --set-upstream no/such"_s, 1, "no/such"},
        {"no such thing to do with one", u"git stash burn"_s, 2, "not 'burn'"},
        {"no entry's number", u"git stash drop x"_s, 2, "an entry is a number"},
        {"an entry to save", u"git stash save 1"_s, 2, "save takes no entry"},
        {"a message to pop", u"git stash pop --message x"_s, 2, "belong to save"},
        {"no name", u"git identity --name ' '"_s, 2, "take a text"},
        {"a name that is taken", u"git clone file:///x/shop.git"_s, 1, "There is already a folder with this name."},
        {"no name in it", u"git clone ://"_s, 2, "the address has no name in it"},
        {"nothing there", u"git clone file:///no/such"_s, 1, "does not appear to be a git repository"},
        {"a folder that is there", u"new shop"_s, 1, "There is already a folder with this name."},
        {"no name for a folder", u"new a/b"_s, 1, "This is not a name for a folder."},
        {"no branch without git", u"new x --no-git --branch y"_s, 2, "--no-git has no branch"},
    };
    for (const auto& each : cases) {
        const Ended ended = inShop(each.line);
        EXPECT_EQ(ended.exitCode, each.exitCode) << each.label << ended.err.toStdString();
        EXPECT_TRUE(ended.err.contains(each.err)) << each.label << ended.err.toStdString();
        EXPECT_EQ(ended.out, "") << each.label;
    }
}

TEST_F(GitCommands, MakeProjects) {
    const QString projects = launcher.tree.path(u"projects"_s);
    const QJsonObject made = json({u"new"_s, u"ledger"_s, u"--branch"_s, u"trunk"_s}).object();
    EXPECT_EQ(made[u"path"_s], projects + u"/ledger"_s);
    EXPECT_EQ(gitText(projects + u"/ledger"_s, {u"symbolic-ref"_s, u"HEAD"_s}), u"refs/heads/trunk"_s);
    EXPECT_EQ(launcher.call({u"new"_s, u"bare"_s, u"--no-git"_s}).exitCode, 0);
    EXPECT_FALSE(QFileInfo::exists(projects + u"/bare/.git"_s));
    EXPECT_EQ(json({u"git"_s, u"clone"_s, u"file://"_s + origin}).object()[u"name"_s], u"origin"_s);
    EXPECT_EQ(readFile(projects + u"/origin/a b"_s), "one\n");
    const QFileInfo place(origin);
    EXPECT_EQ(
        launcher.shell(u"cd '%1' && \"$ORV\" git clone ./%2 near"_s.arg(place.path(), place.fileName())).exitCode, 0);
    EXPECT_EQ(readFile(projects + u"/near/a b"_s), "one\n");

    // A clone that is given up leaves nothing.
    home.add(u"server"_s, "#!/bin/sh\nexec sleep 600\n");
    ASSERT_TRUE(QFile::setPermissions(home.path(u"server"_s), QFile::ReadOwner | QFile::ExeOwner));
    launcher.environment.insert(u"GIT_SSH_COMMAND"_s, home.path(u"server"_s));
    const auto clone = launcher.start({u"git"_s, u"clone"_s, u"ssh://host/half"_s});
    ASSERT_TRUE(waitFor([&] { return QFileInfo::exists(projects + u"/half/.git"_s); }));
    clone->signal(SIGINT);
    EXPECT_EQ(clone->end().exitCode, 130);
    EXPECT_FALSE(QFileInfo::exists(projects + u"/half"_s));
    EXPECT_EQ(launcher.leftBehind(), QStringList());
}

TEST_F(GitCommands, ShowSeveralRepositoriesAndConflicts) {
    launcher.tree.add(u"projects/shop/inner/x"_s, "x\n");
    const QString inner = shop + u"/inner"_s;
    git(inner, {u"init"_s, u"-q"_s});
    git(inner, {u"add"_s, u"x"_s});
    git(inner, {u"commit"_s, u"-qm"_s, u"x"_s});
    EXPECT_EQ(json({u"git"_s, u"status"_s, u"shop"_s}).array().size(), 2);
    const Ended pushed = launcher.call({u"git"_s, u"push"_s, u"shop"_s});
    EXPECT_EQ(pushed.exitCode, 1);
    EXPECT_TRUE(pushed.err.contains("shop/inner: ")) << pushed.err.toStdString();

    git(inner, {u"switch"_s, u"-qc"_s, u"other"_s});
    launcher.tree.add(u"projects/shop/inner/x"_s, "theirs\n");
    git(inner, {u"commit"_s, u"-qam"_s, u"Theirs"_s});
    git(inner, {u"switch"_s, u"-q"_s, u"main"_s});
    launcher.tree.add(u"projects/shop/inner/x"_s, "ours\n");
    git(inner, {u"commit"_s, u"-qam"_s, u"Ours"_s});
    git(inner, {u"merge"_s, u"other"_s}, 1);
    const QJsonObject state = json({u"git"_s, u"status"_s, inner}).array().first().toObject();
    EXPECT_EQ(state[u"operation"_s], u"merge"_s);
    EXPECT_EQ(state[u"conflicts"_s].toArray(), QJsonArray{u"x"_s});
    EXPECT_TRUE(launcher.call({u"git"_s, u"status"_s, inner}).out.contains("UU x"));
    EXPECT_EQ(launcher.call({u"git"_s, u"continue"_s, u"--in"_s, inner}).exitCode, 1);
    EXPECT_EQ(changes(json({u"git"_s, u"abort"_s, u"--in"_s, inner}).object()), QString());
}

} // namespace orv::test
