#include "OrvGit/GitBadges.h"
#include "OrvGit/ProjectRepositories.h"
#include "tests/OrvGit/GitFixture.h"

using namespace Qt::StringLiterals;

namespace orv::test {

TEST(ProjectRepositories, AreThoseInsideAndTheOneThatItIsAPartOf) {
    GitHome home;
    const QString dev = home.path(u"dev"_s);
    const QString mono = home.makeRepository(
        u"dev/mono"_s, {{u"web/package.json"_s, "{}"}, {u"*/[api]/x"_s, "x"}, {u".gitignore"_s, "/scratch/\n"}});
    const QString lib = home.makeRepository(u"dev/mono/web/lib"_s, {{u"x"_s, "x"}});
    home.add(u"dev/mono/scratch/app/x"_s, "x");
    home.add(u"dev/mono/:(top)/x"_s, "x");
    home.add(u"dev/mono/web/src/a/x"_s, "x");
    home.add(u"dev/plain/x"_s, "x");
    home.makeRepository(u"home"_s);
    home.add(u"home/dev/app/x"_s, "x");
    const GitService service;
    const struct {
        const char* label;
        QString project, scanRoot;
        ProjectRepositories found;
    } cases[]{
        {"a repository", mono, dev, {{mono, lib}, {}}},
        {"a package, with one of its own inside", mono + u"/web"_s, dev, {{mono, lib}, mono}},
        {"a package with a name like a pattern", mono + u"/*/[api]"_s, dev, {{mono}, mono}},
        {"a package with a name like magic", mono + u"/:(top)"_s, dev, {{mono}, mono}},
        {"ignored", mono + u"/scratch/app"_s, dev, {{}, mono}},
        {"in none", dev + u"/plain"_s, dev, {{}, {}}},
        {"the scanned folder is the repository", mono + u"/web"_s, mono, {{mono, lib}, mono}},
        {"it is the one above", mono + u"/web/src"_s, mono + u"/web"_s, {{mono}, mono}},
        {"it is higher", mono + u"/web/src/a"_s, mono + u"/web/src"_s, {{}, mono}},
        {"the home", home.path(u"home/dev/app"_s), home.path(u"home/dev"_s), {{}, home.path(u"home"_s)}},
        {"nothing was scanned", mono + u"/web"_s, {}, {{lib}, mono}},
    };
    for (const auto& each : cases) {
        const auto found = ProjectRepositories::of(service.runner, each.project, each.scanRoot);
        EXPECT_EQ(found, each.found) << each.label << ": " << found.own.join(u' ').toStdString() << " in "
                                     << found.enclosing.toStdString();
    }

    // As many as there are, at once.
    QStringList projects;
    QList<ProjectRepositories> expected;
    for (const auto& each : cases) {
        if (each.scanRoot == dev) {
            projects.append(each.project);
            expected.append(each.found);
        }
    }
    EXPECT_EQ(ProjectRepositories::ofEach(service.runner, projects, dev), expected);

    // Of a repository with several projects, each counts its own changes.
    home.add(u"dev/mono/web/new"_s, "x");
    home.add(u"dev/mono/*/[api]/x"_s, "y");
    home.add(u"dev/mono/other"_s, "x");
    GitBadges badges(2);
    EXPECT_EQ(badges.readRepositories({mono}, mono + u"/*/[api]"_s).result(), (GitBadge{1, 0, 0, 1, u"main"_s}));
    EXPECT_EQ(badges.readRepositories({mono}, mono).result().changes, 6) << "the repository in it is a change, too";
}

} // namespace orv::test
