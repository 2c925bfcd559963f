#include "OrvUI/BranchChoices.h"
#include "OrvUI/CommitForm.h"
#include "OrvUI/GitModel.h"
#include "tests/OrvGit/GitFixture.h"

#include <QAbstractItemModelTester>
#include <QFile>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

/// The model behind the git page as the page uses it.
class GitForms : public ::testing::Test {
protected:
    void open(const QString& folder) {
        Project project;
        project.id = folder;
        project.root = folder;
        project.name = u"r"_s;
        overview.setProjects({project});
        git = std::make_unique<GitModel>(overview, project);
        form = git->commitForm();
        new QAbstractItemModelTester(git->files(), QAbstractItemModelTester::FailureReportingMode::Fatal, git->files());
        QObject::connect(git->files(), &QAbstractItemModel::modelReset, git->files(), [] { ADD_FAILURE() << "reset"; });
        ASSERT_TRUE(waitFor([this] { return git->state() != u"loading"; }));
    }
    /// "staged: a M; changes: b ?": what the list shows, the selected file in brackets.
    [[nodiscard]] QString shown() const {
        QString text;
        for (int row = 0; row < git->files()->rowCount(); ++row) {
            const GitFileRow* each = git->files()->at(row);
            const QString name = row == git->currentRow() ? u'[' + each->name + u']' : each->name;
            text += each->kind == u"heading" ? (text.isEmpty() ? QString() : u"; "_s) + each->section + u':'
                                             : u' ' + name + u' ' + each->letter;
        }
        return text;
    }
    void becomes(const QString& text) {
        EXPECT_TRUE(waitFor([&] { return !git->isBusy() && shown() == text; })) << shown().toStdString();
    }

    GitHome home;
    const QString r = home.makeRepository(u"r"_s, {{u"a"_s, "1\n"}, {u"b"_s, "1\n"}});
    GitOverview overview;
    std::unique_ptr<GitModel> git;
    CommitForm* form = nullptr;
};

TEST_F(GitForms, StagesByRowsAndGoesOnToTheNext) {
    for (const char* file : {"a", "b", "c"}) {
        home.add(u"r/"_s + QString::fromLatin1(file), "2\n");
    }
    open(r);
    EXPECT_EQ(shown(), u"changes: a M b M c ?"_s);
    EXPECT_EQ(git->files()->step(-1, 1), 1) << "a heading can't be chosen";
    EXPECT_EQ(git->files()->step(1, -1), 1);
    EXPECT_EQ(git->files()->step(1, 100), 3);
    git->selectRow(2);
    EXPECT_EQ(shown(), u"changes: a M [b] M c ?"_s);
    git->toggleRow(git->currentRow());
    becomes(u"staged: b M; changes: a M [c] ?"_s);
    git->toggleRow(git->currentRow());
    becomes(u"staged: b M c A; changes: [a] M"_s);
    git->toggleRow(git->currentRow());
    becomes(u"staged: [a] M b M c A"_s);
    EXPECT_EQ(git->files()->step(-100, 1), 1);
    git->toggleRow(0);
    git->toggleRow(99);
    EXPECT_FALSE(git->isBusy()) << "no file stands there";
    git->toggleRow(3);
    becomes(u"staged: [a] M b M; changes: c ?"_s);
    git->stashSave(u"later"_s, true);
    becomes(u"stashes: On main: later "_s);
    EXPECT_EQ(git->currentRow(), -1);
    EXPECT_EQ(git->files()->neighbour(1), -1);
}

TEST_F(GitForms, KeepsTheMessageUntilItIsCommitted) {
    home.add(u"r/a"_s, "2\n");
    open(r);
    EXPECT_EQ(form->actionText() + (form->isReady() ? u"!"_s : QString()), u"Commit"_s);
    git->stageAll();
    EXPECT_TRUE(waitFor([this] { return form->isReady(); }));
    EXPECT_EQ(form->actionText(), u"Commit 1 file"_s);
    int asked = 0;
    QObject::connect(form, &CommitForm::summaryNeeded, form, [&] { ++asked; });
    form->submit();
    EXPECT_EQ(asked, 1);
    form->setSummary(u"Draft"_s);
    form->setAmending(true);
    EXPECT_EQ(form->summary(), git->headSummary());
    EXPECT_EQ(form->actionText(), u"Amend"_s);
    form->setAmending(false);
    EXPECT_EQ(form->summary(), u"Draft"_s) << "what was being written comes back";
    form->setDescription(u"why"_s);
    form->submit();
    EXPECT_TRUE(waitFor([this] { return form->summary().isEmpty() && git->headSummary() == u"Draft"; }));
    EXPECT_EQ(git->headDescription(), u"why"_s);
    EXPECT_EQ(form->description(), QString());
    form->setAmending(true);
    form->setSummary(u"Better"_s);
    form->submit();
    EXPECT_TRUE(waitFor([this] { return !form->isAmending() && git->headSummary() == u"Better"; }));
    EXPECT_EQ(gitText(r, {u"rev-list"_s, u"--count"_s, u"HEAD"_s}).trimmed(), u"2"_s);

    // A message stays when git refuses.
    home.add(u"r/.git/hooks/pre-commit"_s, "#!/bin/sh\necho no such luck >&2; exit 1\n");
    QFile::setPermissions(r + u"/.git/hooks/pre-commit"_s, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    home.add(u"r/a"_s, "3\n");
    git->stageAll();
    EXPECT_TRUE(waitFor([this] { return form->isReady(); }));
    form->setSummary(u"Kept"_s);
    form->submit();
    EXPECT_TRUE(waitFor([this] { return git->error().contains(u"no such luck"); }));
    EXPECT_EQ(form->summary(), u"Kept"_s);
    git->clearError();
    EXPECT_EQ(git->error(), QString());

    // Nor is it lost by a look at another project, whatever was begun before.
    const QString other = home.makeRepository(u"other"_s, {{u"a"_s, "1\n"}});
    form->setDescription(u"because"_s);
    form->setAmending(true);
    form->setSummary(u"Of the amendment"_s);
    open(other);
    EXPECT_EQ(form->summary(), QString());
    form->setSummary(u"Elsewhere"_s);
    open(r);
    EXPECT_EQ(form->summary() + u'\n' + form->description(), u"Kept\nbecause"_s);

    // One that is committed while the other is looked at is done with.
    home.add(u"r/.git/hooks/pre-commit"_s, "#!/bin/sh\nuntil [ -e go ]; do sleep 0.05; done\n");
    form->submit();
    open(other);
    EXPECT_EQ(form->summary(), u"Elsewhere"_s);
    home.add(u"r/go"_s, {});
    EXPECT_TRUE(waitFor([this] { return overview.draft(r) == CommitMessage(); }));
    open(r);
    EXPECT_EQ(form->summary() + git->headSummary(), u"Kept"_s);
}

TEST_F(GitForms, KeepsWhatIsWrittenWhileACommitIsMade) {
    const QString inner = home.makeRepository(u"r/inner"_s, {{u"a"_s, "1\n"}});
    home.add(u"r/.git/hooks/pre-commit"_s, "#!/bin/sh\nuntil [ -e ../go ]; do sleep 0.05; done\n");
    QFile::setPermissions(r + u"/.git/hooks/pre-commit"_s, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    for (const QByteArrayView shown : {"r", "r/inner", "an amendment"}) {
        QFile::remove(home.path(u"go"_s));
        home.add(u"r/a"_s, shown.toByteArray());
        test::git(r, {u"add"_s, u"a"_s});
        open(r);
        ASSERT_TRUE(waitFor([this] { return form->isReady(); })) << shown.data();
        int commits = 0;
        QObject::connect(git.get(), &GitModel::succeeded, git.get(), [&] { ++commits; });
        form->setSummary(u"Of a commit"_s);
        form->submit();
        if (shown == "r/inner") {
            git->setRepository(inner);
            ASSERT_TRUE(waitFor([&] { return git->repository() == inner && git->state() == u"ready"; }));
        }
        form->setAmending(shown == "an amendment");
        form->setSummary(u"The next"_s);
        home.add(u"go"_s, {});
        ASSERT_TRUE(waitFor([&] { return commits == 1; })) << shown.data();
        EXPECT_EQ(form->summary(), u"The next"_s) << shown.data();
        form->setAmending(false);
        EXPECT_EQ(form->summary(), shown == "an amendment" ? QString() : u"The next"_s);
        EXPECT_EQ(overview.draft(r).summary, shown == "r" ? u"The next"_s : QString());
        form->setSummary({});
    }
}

TEST_F(GitForms, AsksWhoCommitsBeforeItDoes) {
    home.add(u"home/.gitconfig"_s, "[user]\n\tuseConfigOnly = true\n");
    home.add(u"r/a"_s, "2\n");
    open(r);
    git->stageAll();
    EXPECT_TRUE(waitFor([this] { return form->isReady(); }));
    int asked = 0;
    QObject::connect(form, &CommitForm::identityNeeded, form, [&] { ++asked; });
    form->setSummary(u"Second"_s);
    const auto commits = [this] { return gitText(r, {u"rev-list"_s, u"--count"_s, u"HEAD"_s}); };

    // Whoever turns away is not surprised by a commit later.
    form->submit();
    form->withdraw();
    git->setIdentity(u"Ada"_s, u"ada@example.org"_s, false);
    EXPECT_TRUE(waitFor([this] { return git->identityName() == u"Ada" && !git->isBusy(); }));
    EXPECT_EQ(commits(), u"1"_s);
    test::git(r, {u"config"_s, u"--unset"_s, u"user.email"_s});
    git->refresh();
    EXPECT_TRUE(waitFor([this] { return git->identityEmail().isEmpty(); }));

    form->submit();
    EXPECT_EQ(asked, 2);
    git->setIdentity(u"Grace"_s, u"grace@example.org"_s, true);
    EXPECT_TRUE(waitFor([this] { return git->identityEmail() == u"grace@example.org" && form->summary().isEmpty(); }));
    EXPECT_EQ(commits(), u"2"_s) << "once it is known, without another word";
    EXPECT_EQ(gitText(home.path(), {u"config"_s, u"--global"_s, u"user.name"_s}), u"Grace"_s);
}

TEST_F(GitForms, FindsSwitchesAndMakesBranches) {
    const QString origin = home.path(u"origin.git"_s);
    test::git(r, {u"branch"_s, u"feat/coupons"_s});
    test::git(r, {u"branch"_s, u"release"_s});
    test::git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, r, origin});
    test::git(r, {u"branch"_s, u"-D"_s, u"-q"_s, u"release"_s});
    test::git(r, {u"remote"_s, u"add"_s, u"origin"_s, origin});
    test::git(r, {u"fetch"_s, u"-q"_s, u"origin"_s});
    open(r);
    BranchChoices choices;
    choices.setGit(git.get());
    const auto names = [&] {
        QStringList all;
        for (const BranchRow& row : choices.rows()->rows()) {
            all.append(row.name);
        }
        all.sort();
        return all.join(u' ');
    };
    EXPECT_EQ(names(), u"feat/coupons main origin/release"_s) << "no remote's branch beside a local one";
    EXPECT_EQ(choices.rows()->rows().first().name, u"main"_s);
    struct Case {
        const char* label;
        const char* text;
        const char* names;
        const char* newName;
        bool hasProblem;
    };
    const Case cases[] = {
        {"a part, in any case", "COUP", "feat/coupons", "COUP", false},
        {"the whole name", "main", "main", "", false},
        {"another name", "topic", "", "topic", false},
        {"none that git takes", "a..b", "", "", true},
        {"blank", "  ", "feat/coupons main origin/release", "", false},
    };
    for (const Case& it : cases) {
        choices.setText(QString::fromLatin1(it.text));
        EXPECT_EQ(names(), QString::fromLatin1(it.names)) << it.label;
        EXPECT_EQ(choices.newName(), QString::fromLatin1(it.newName)) << it.label;
        EXPECT_EQ(!choices.problem().isEmpty(), it.hasProblem) << it.label;
    }
    choices.setText({});
    choices.setFollower(u"main"_s);
    EXPECT_EQ(names(), u"origin/feat/coupons origin/main origin/release"_s) << "those that can be followed";
    EXPECT_FALSE(choices.unfollow());
    choices.setText(u"MAIN"_s);
    EXPECT_EQ(choices.newName() + choices.problem(), QString());
    EXPECT_TRUE(choices.choose(0));
    EXPECT_TRUE(waitFor([this] { return git->upstream() == u"origin/main" && !git->isBusy(); }));
    EXPECT_TRUE(choices.rows()->rows().first().isCurrent) << "the one that it follows";
    EXPECT_TRUE(choices.unfollow());
    EXPECT_TRUE(waitFor([this] { return git->upstream().isEmpty() && !git->isBusy(); }));
    choices.setFollower({});
    choices.setText(u"release"_s);
    EXPECT_TRUE(choices.choose(0));
    EXPECT_TRUE(waitFor([this] { return git->branch() == u"release"; }));
    EXPECT_EQ(git->upstream(), u"origin/release"_s);
    // One that two remotes have.
    test::git(origin, {u"branch"_s, u"both"_s, u"main"_s});
    test::git(r, {u"remote"_s, u"add"_s, u"backup"_s, origin});
    test::git(r, {u"fetch"_s, u"-q"_s, u"--all"_s});
    const QFuture<void> read = git->refresh();
    EXPECT_TRUE(waitFor([&] { return read.isFinished(); }));
    choices.setText(u"backup/both"_s);
    EXPECT_TRUE(choices.choose(0));
    EXPECT_TRUE(waitFor([this] { return git->branch() == u"both"; }));
    EXPECT_EQ(git->upstream(), u"backup/both"_s);
    choices.setCreating(true);
    choices.setText(u"main"_s);
    EXPECT_FALSE(choices.problem().isEmpty()) << "there is one";
    EXPECT_FALSE(choices.create());
    choices.setText(u"topic"_s);
    EXPECT_TRUE(choices.create());
    EXPECT_TRUE(waitFor([this] { return git->branch() == u"topic"; }));
    EXPECT_FALSE(choices.choose(0)) << "nothing is listed for a new one";
}

TEST_F(GitForms, StartsARepositoryWhereThereIsNone) {
    home.add(u"plain/x"_s, "x");
    open(home.path(u"plain"_s));
    EXPECT_EQ(git->state(), u"none"_s);
    git->defaultBranch = [] { return u"trunk"_s; };
    git->initRepository();
    EXPECT_TRUE(waitFor([this] { return git->state() == u"ready"; }));
    EXPECT_EQ(git->branch(), u"trunk"_s);
    becomes(u"changes: x ?"_s);
    EXPECT_FALSE(form->canAmend()) << "there is no commit";
}

} // namespace
} // namespace orv::test
