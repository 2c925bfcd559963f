#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/NewProject.h"
#include "OrvUI/QuitGuard.h"
#include "tests/OrvGit/GitFixture.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace orv::test {
namespace {

class AppModelGit : public ModelFixture {
protected:
    /// A project that is the clone of "<name>.git" beside it.
    QString addClone(const QString& name, const QString& folder) {
        const QString origin = home.path(name + u".git"_s);
        git(home.path(), {u"clone"_s, u"-q"_s, u"--bare"_s, seed, origin});
        git(home.path(), {u"clone"_s, u"-q"_s, origin, root + u'/' + folder});
        return root + u'/' + folder;
    }
    void refreshBadges() { EXPECT_TRUE(finishes(model->refreshGitBadges())); }
    [[nodiscard]] std::optional<GitBadge> badge(const QString& name) const { return model->gitBadge(project(name)); }
    [[nodiscard]] QuickGitReport quick(QuickGitAction action, const QString& name) {
        const QFuture<QuickGitReport> report = model->quickGit(action, project(name));
        EXPECT_TRUE(waitFor([&] { return report.isFinished(); }));
        return report.result();
    }
    [[nodiscard]] QVariant onCard(const QString& name, const QByteArray& role) const {
        const QAbstractListModel* cards = model->cards();
        for (int row = 0; row < cards->rowCount(); ++row) {
            if (cards->index(row).data(cards->roleNames().key("name")) == name) {
                return cards->index(row).data(cards->roleNames().key(role));
            }
        }
        return {};
    }

    GitHome home;
    const QString seed =
        home.makeRepository(u"seed"_s, {{u"package.json"_s, R"({"scripts":{"dev":"x"},"dependencies":{"vite":"1"}})"}});
};

TEST_F(AppModelGit, KeepsBadgesOnTheCards) {
    const QString shop = addClone(u"shop"_s, u"shop"_s);
    addInstalled(u"plain"_s, "vite", up(4001));
    scan();
    ASSERT_TRUE(waitFor([this] { return model->isGitKnown(project(u"plain"_s)) && badge(u"shop"_s); }));
    EXPECT_EQ(badge(u"shop"_s), (GitBadge{0, 0, 0, 1, u"main"_s}));
    EXPECT_EQ(badge(u"plain"_s), std::nullopt);
    EXPECT_TRUE(waitFor([this] { return onCard(u"plain"_s, "gitRepositories") == 0; }));

    // Whoever commits or stages is noticed.
    tree.add(u"projects/shop/new"_s, "x");
    tree.add(u"projects/shop/other"_s, "x");
    git(shop, {u"add"_s, u"new"_s});
    EXPECT_TRUE(waitFor([this] { return onCard(u"shop"_s, "gitChanges") == 2; }));
    EXPECT_EQ(model->summaryLine(), u"1 project with unsaved changes"_s);
    git(shop, {u"commit"_s, u"-qm"_s, u"x"_s});
    EXPECT_TRUE(waitFor([this] { return badge(u"shop"_s) == GitBadge{1, 1, 0, 1, u"main"_s}; }));
    git(shop, {u"switch"_s, u"-qc"_s, u"topic"_s});
    EXPECT_TRUE(waitFor([this] { return onCard(u"shop"_s, "gitBranch") == u"topic"_s; }));
    // Only the work tree has changed, which a look finds.
    ASSERT_TRUE(QFile::remove(shop + u"/other"_s));
    refreshBadges();
    EXPECT_EQ(badge(u"shop"_s)->changes, 0);
    tree.add(u"projects/shop/.git/index"_s, "none of git's");
    refreshBadges();
    EXPECT_TRUE(waitFor([this] { return onCard(u"shop"_s, "gitUnread") == 1; })) << "it can't be read";

    ASSERT_TRUE(QDir(shop + u"/.git"_s).removeRecursively());
    scan();
    refreshBadges();
    EXPECT_EQ(badge(u"shop"_s), std::nullopt);
    ASSERT_TRUE(QDir(shop).removeRecursively());
    scan();
    EXPECT_TRUE(model->gitBadges().isEmpty());
}

TEST_F(AppModelGit, LooksAgainAfterWorkInATerminalAndAtAnotherTab) {
    const QString shop = addClone(u"shop"_s, u"shop"_s);
    scan();
    ASSERT_TRUE(waitFor([this] { return badge(u"shop"_s).has_value(); }));
    const auto changes = [this](int count) { return waitFor([&] { return badge(u"shop"_s)->changes == count; }); };
    model->terminals().setShell(u"/bin/sh"_s);
    TerminalSession* session = model->terminals().open(QUrl::fromLocalFile(shop));
    bool looksInProgram = false;
    QObject::connect(session, &TerminalSession::commandSettled, session, [&] { looksInProgram |= session->isBusy(); });
    session->send(u"touch one\n"_s);
    EXPECT_TRUE(changes(1));
    session->send(u"cat; touch two\n"_s);
    ASSERT_TRUE(waitFor([&] { return session->isBusy(); }));
    session->send(u"\x04"_s);
    EXPECT_TRUE(changes(2)) << "when the shell is back";
    EXPECT_FALSE(looksInProgram);
    model->openGit(project(u"shop"_s).id);
    ASSERT_TRUE(waitFor([this] { return model->gitModel()->changeCount() == 2; }));
    model->setPage({.kind = AppPage::Kind::project, .id = project(u"shop"_s).id});
    model->setDetailTab(DetailTab::terminal);
    session->send(u"rm two\n"_s);
    EXPECT_TRUE(changes(1));
    model->setDetailTab(DetailTab::overview);
    EXPECT_TRUE(waitFor([this] { return model->gitModel()->changeCount() == 1; }));
    tree.add(u"projects/shop/two"_s, "x");
    tree.add(u"projects/shop/three"_s, "x");
    EXPECT_TRUE(waitFor([&] {
        model->setDetailTab(model->detailTab() == DetailTab::git ? DetailTab::files : DetailTab::git);
        return badge(u"shop"_s)->changes == 3;
    })) << "unless it was looked at just now";
}

TEST_F(AppModelGit, CountsOfASharedRepositoryWhatIsTheProjects) {
    addInstalled(u"shop"_s, "vite", up(4001));
    addInstalled(u"blog"_s, "vite", up(4002));
    tree.add(u"projects/.gitignore"_s, "node_modules/\n");
    git(root, {u"init"_s, u"-q"_s});
    git(root, {u"add"_s, u"-A"_s});
    git(root, {u"commit"_s, u"-qm"_s, u"First"_s});
    tree.add(u"projects/shop/new"_s, "x");
    scan();
    ASSERT_TRUE(waitFor([this] { return badge(u"shop"_s) && badge(u"blog"_s); }));
    EXPECT_EQ(badge(u"shop"_s), (GitBadge{1, 0, 0, 1, u"main"_s}));
    EXPECT_EQ(badge(u"blog"_s), (GitBadge{0, 0, 0, 1, u"main"_s}));
    EXPECT_EQ(quick(QuickGitAction::fetch, u"blog"_s), (QuickGitReport{true, u"Fetched blog."_s}));
    model->openGit(project(u"blog"_s).id);
    EXPECT_TRUE(waitFor([this] { return model->gitModel()->repository() == root; }));
    git(root, {u"add"_s, u"-A"_s});
    git(root, {u"commit"_s, u"-qm"_s, u"Second"_s});
    EXPECT_TRUE(waitFor([this] { return badge(u"shop"_s)->changes == 0; })) << "it is watched";
}

TEST_F(AppModelGit, ReportsQuickActions) {
    const QString shop = addClone(u"shop"_s, u"shop"_s);
    addClone(u"lib"_s, u"shop/lib"_s);
    addInstalled(u"plain"_s, "vite", up(4001));
    scan();
    QStringList said;
    QObject::connect(
        model.get(), &AppModel::statusMessageChanged, model.get(), [&] { said.append(model->statusText()); });
    EXPECT_EQ(quick(QuickGitAction::fetch, u"shop"_s), (QuickGitReport{true, u"Fetched shop (2 repositories)."_s}));
    EXPECT_EQ(quick(QuickGitAction::push, u"plain"_s), (QuickGitReport{false, u"plain isn't a git repository."_s}));
    EXPECT_EQ(said, QStringList{u"Fetching shop…"_s}) << "nothing begins where there is nothing to do";

    // The setting says how.
    git(seed, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"Theirs"_s});
    git(seed, {u"push"_s, u"-q"_s, home.path(u"shop.git"_s), u"main"_s});
    git(shop, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"Ours"_s});
    EXPECT_EQ(
        quick(QuickGitAction::pull, u"shop"_s),
        (QuickGitReport{false, u"Can't fast-forward: your branch and the remote have diverged."_s}));
    model->settings().change([](AppSettings& settings) { settings.defaultPullStrategy = PullPreference::rebase; });
    model->quickGitFor(project(u"shop"_s).id, u"pull"_s);
    EXPECT_TRUE(model->isGitBusy(project(u"shop"_s)));
    EXPECT_EQ(quick(QuickGitAction::push, u"shop"_s), (QuickGitReport{false, u"shop is still busy with git."_s}));
    EXPECT_TRUE(waitFor([&] { return said.contains(u"Pulled shop (2 repositories)."_s); }));
    EXPECT_FALSE(model->isGitBusy(project(u"shop"_s)));
    // A submodule stands where its outer repository wants it, on no branch.
    git(shop, {u"submodule"_s, u"--quiet"_s, u"add"_s, u"file://"_s + home.path(u"lib.git"_s), u"part"_s});
    git(shop + u"/part"_s, {u"switch"_s, u"-q"_s, u"--detach"_s});
    git(shop, {u"commit"_s, u"-qm"_s, u"Part"_s});
    EXPECT_EQ(quick(QuickGitAction::fetch, u"shop"_s).message, u"Fetched shop (3 repositories)."_s);
    EXPECT_EQ(quick(QuickGitAction::push, u"shop"_s).message, u"Pushed shop (2 repositories)."_s);
    EXPECT_EQ(quick(QuickGitAction::pull, u"shop"_s).message, u"Pulled shop (2 repositories)."_s);
    EXPECT_TRUE(waitFor([this] { return badge(u"shop"_s)->ahead == 0; }));
}

TEST_F(AppModelGit, OpensThePageOfOneProject) {
    addClone(u"shop"_s, u"shop"_s);
    addClone(u"blog"_s, u"blog"_s);
    scan();
    model->openGit(project(u"shop"_s).id);
    const QPointer<GitModel> shop = model->gitModel();
    ASSERT_TRUE(shop);
    model->openGit(project(u"shop"_s).id);
    EXPECT_EQ(model->gitModel(), shop);
    QObject::connect(model.get(), &AppModel::gitModelChanged, model.get(), [&] { EXPECT_TRUE(shop); });
    model->openGit(project(u"blog"_s).id);
    EXPECT_FALSE(shop);
    EXPECT_EQ(model->gitModel()->projectID(), project(u"blog"_s).id);
    model->gitModel()->setIdentity({}, {}, true);
    EXPECT_EQ(model->statusText(), u"Enter a name and an e-mail first."_s);
    QObject::disconnect(model.get(), &AppModel::gitModelChanged, nullptr, nullptr);
    model->openGit({});
    EXPECT_EQ(model->gitModel(), nullptr);

    EXPECT_TRUE(model->gitIdentitySet());
    home.add(u"home/.gitconfig"_s, "[user]\n\tname = Ada\n");
    EXPECT_TRUE(finishes(model->refreshGitIdentity()));
    EXPECT_FALSE(model->gitIdentitySet());
}

TEST_F(AppModelGit, MakesNewProjects) {
    scan();
    NewProject& made = *model->newProject();
    tree.add(u"projects/there/"_s);
    ASSERT_TRUE(QFile::link(u"nowhere"_s, root + u"/link"_s));
    const struct {
        QString name;
        QString folder;
        QString branch;
        QString problem;
    } refused[]{
        {u" "_s, root, {}, u"Enter a name first."_s},
        {u"a/b"_s, root, {}, u"This is not a name for a folder."_s},
        {u".."_s, root, {}, u"This is not a name for a folder."_s},
        {u"there"_s, root, {}, u"There is already a folder with this name."_s},
        {u"link"_s, root, {}, u"There is already a folder with this name."_s},
        {u"new"_s, root + u"/no"_s, {}, u"There is no folder %1/no."_s.arg(root)},
        {u"new"_s, root, u"a..b"_s, u"“a..b” is not a name for a branch."_s},
    };
    for (const auto& each : refused) {
        made.createFolder(each.name, each.folder, each.branch);
        EXPECT_EQ(made.error(), each.problem);
        EXPECT_FALSE(made.isBusy()) << each.name.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(root + u"/new"_s));

    QStringList added;
    QObject::connect(
        model.get(), &AppModel::projectAdded, model.get(),
        [&](const QString& name, const QString& folder, bool cloned) {
            EXPECT_EQ(folder, root + u'/' + name);
            added.append(name + (cloned ? u" cloned"_s : u" created"_s));
        });
    model->setSheet(AppSheet{});
    made.createFolder(u"new"_s, root, u"trunk"_s);
    EXPECT_TRUE(waitFor([&] { return !added.isEmpty(); }));
    EXPECT_EQ(gitText(root + u"/new"_s, {u"symbolic-ref"_s, u"HEAD"_s}), u"refs/heads/trunk"_s);
    EXPECT_EQ(model->page(), AppPage()) << "nothing can be run there yet";
    EXPECT_TRUE(model->statusText().startsWith(u"new is in your projects folder."_s))
        << model->statusText().toStdString();
    EXPECT_EQ(model->sheet(), std::nullopt);

    QStringList lines;
    double last = 0;
    QObject::connect(&made, &NewProject::progressChanged, &made, [&] {
        lines.append(made.progressLine());
        EXPECT_TRUE(made.fraction() < 0 || made.fraction() >= last);
        last = made.fraction();
    });
    EXPECT_EQ(NewProject::nameOf(u"https://host/a/seed.git"_s), u"seed"_s);
    made.clone(u"file://"_s + seed, u"cloned"_s, root);
    EXPECT_TRUE(waitFor([&] { return added.size() == 2; }));
    EXPECT_EQ(added, (QStringList{u"new created"_s, u"cloned cloned"_s}));
    EXPECT_EQ(model->page(), (AppPage{.kind = AppPage::Kind::project, .id = project(u"cloned"_s).id}));
    EXPECT_FALSE(lines.filter(u" objects: "_s).isEmpty()) << lines.join(u'\n').toStdString();

    // Whoever has put it aside stays where he is.
    const AppPage elsewhere{.kind = AppPage::Kind::tasks, .id = {}};
    model->setPage(elsewhere);
    made.clone(u"file://"_s + seed, u"aside"_s, root);
    made.setAside(true);
    EXPECT_TRUE(waitFor([&] { return added.size() == 3; }));
    EXPECT_EQ(model->page(), elsewhere);
    EXPECT_EQ(model->statusText(), u"aside was cloned."_s);
    EXPECT_FALSE(made.isAside()) << "there is nothing left of it";

    const auto addFolder = [this] {
        model->setSheet(AppSheet{AppSheet::Kind::addProject, AddProjectMode::newFolder});
        return model->sheet()->mode;
    };
    made.clone(u"file:///no/such"_s, u"failed"_s, root);
    made.setAside(true);
    EXPECT_EQ(addFolder(), AddProjectMode::clone) << "that comes back";
    EXPECT_TRUE(waitFor([&] { return !made.isBusy(); }));
    EXPECT_TRUE(made.isAside()) << "until it is read";
    EXPECT_TRUE(made.error().contains(u"does not appear to be a git repository"_s)) << made.error().toStdString();
    made.clearError();
    EXPECT_FALSE(made.isAside());
    EXPECT_EQ(addFolder(), AddProjectMode::newFolder);
}

TEST_F(AppModelGit, LeavesNothingOfACloneThatIsGivenUp) {
    // A server that never answers.
    home.add(u"server"_s, "#!/bin/sh\nexec sleep 600\n");
    ASSERT_TRUE(QFile::setPermissions(home.path(u"server"_s), QFile::ReadOwner | QFile::ExeOwner));
    const ScopedEnvironment ssh("GIT_SSH_COMMAND", home.path(u"server"_s).toUtf8().constData());
    NewProject& made = *model->newProject();
    bool isCancelled = false;
    QObject::connect(&made, &NewProject::cancelled, &made, [&] { isCancelled = true; });
    made.clone(u"ssh://host/x"_s, u"half"_s, root);
    EXPECT_TRUE(waitFor([&] { return QFileInfo::exists(root + u"/half/.git"_s); }));
    EXPECT_EQ(RunningWork::of(*model), RunningWork{.isMakingProject = true});
    made.clone(u"ssh://host/x"_s, u"second"_s, root);
    made.cancel();
    EXPECT_TRUE(waitFor([&] { return isCancelled; }));
    EXPECT_FALSE(QFileInfo::exists(root + u"/half"_s));
    EXPECT_FALSE(QFileInfo::exists(root + u"/second"_s)) << "one at a time";
    EXPECT_EQ(made.error(), QString());
    EXPECT_EQ(made.fraction(), -1);

    // So does the end of the application.
    made.clone(u"ssh://host/x"_s, u"third"_s, root);
    EXPECT_TRUE(waitFor([&] { return QFileInfo::exists(root + u"/third/.git"_s); }));
    model.reset();
    EXPECT_FALSE(QFileInfo::exists(root + u"/third"_s));
    EXPECT_EQ(processesWith(home.path(u"server"_s).toUtf8()), 0);
}

TEST_F(AppModelGit, BringsBackWhatWasDiscarded) {
    const QString shop = addClone(u"shop"_s, u"shop"_s);
    scan();
    const auto write = [&](const QByteArray& content) { tree.add(u"projects/shop/package.json"_s, content); };
    const auto content = [&] { return readFile(shop + u"/package.json"_s); };
    const QByteArray committed = content();
    write("changed");
    model->openGit(project(u"shop"_s).id);
    const auto discards = [&] {
        const QFuture<void> read = model->gitModel()->refresh();
        EXPECT_TRUE(finishes(read));
        model->gitModel()->discard({u"package.json"_s});
        EXPECT_TRUE(waitFor([&] { return !model->undoText().isEmpty(); }));
        EXPECT_EQ(model->undoText(), u"Discarded changes of “package.json”."_s);
        EXPECT_EQ(content(), committed);
    };
    discards();
    model->openGit({}); // whose page is left does not matter
    model->undo();
    EXPECT_TRUE(waitFor([&] { return content() == "changed"; }));
    EXPECT_TRUE(waitFor([&] { return !model->isGitBusy(project(u"shop"_s)); }));

    // A part of a file in which more is changed: that is the state to which nothing must have been done.
    model->openGit(project(u"shop"_s).id);
    const QByteArray parts = "first\n" + QByteArray("same\n").repeated(20) + "last\n";
    write(parts);
    git(shop, {u"add"_s, u"."_s});
    git(shop, {u"commit"_s, u"-qm"_s, u"Parts"_s});
    const QByteArray edited = "1st\n" + parts.sliced(6) + "more\n";
    write(edited);
    const QFuture<void> listed = model->gitModel()->refresh();
    EXPECT_TRUE(finishes(listed));
    model->gitModel()->selectFile(u"package.json"_s, false);
    EXPECT_TRUE(waitFor([&] { return model->gitModel()->diff()->hunkCount() == 2; }));
    model->gitModel()->discardHunk(0);
    EXPECT_TRUE(waitFor([&] { return content() == parts + "more\n" && !model->undoText().isEmpty(); }));
    model->undo();
    EXPECT_TRUE(waitFor([&] { return content() == edited && !model->isGitBusy(project(u"shop"_s)); }));
    write(committed);
    git(shop, {u"commit"_s, u"-qam"_s, u"Back"_s});

    write("changed");
    discards();
    write("mine");
    QString said;
    const QObject scope;
    QObject::connect(model.get(), &AppModel::statusMessageChanged, &scope, [&] { said += model->statusText(); });
    model->undo();
    EXPECT_TRUE(waitFor([&] { return !said.isEmpty(); }));
    EXPECT_TRUE(said.startsWith(u"“package.json” has changed since."_s)) << said.toStdString();
    EXPECT_EQ(content(), "mine");
}

} // namespace
} // namespace orv::test
