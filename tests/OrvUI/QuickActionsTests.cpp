#include "OrvUI/QuickActions.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

TEST(CardPrimaryAction, IsTheLastOneElseThePreferredOne) {
    using enum RunAction;
    const struct {
        const char* label;
        QList<RunAction> available;
        std::optional<QString> last;
        std::optional<RunAction> expected;
    } cases[] = {
        {"nothing", {}, u"App"_s, {}},
        {"both first", {frontend, backend, both, app}, {}, both},
        {"app before Flutter and Docker", {docker, flutter, app}, {}, app},
        {"last run", {frontend, backend, both}, u"Backend"_s, backend},
        {"last run not offered any more", {frontend, docker}, u"Backend"_s, frontend},
        {"last run unknown", {docker}, u"backend"_s, docker},
    };
    for (const auto& [label, available, last, expected] : cases) {
        EXPECT_EQ(CardPrimaryAction::defaultAction(available, last), expected) << label;
    }
}

TEST(QuickActions, SayWhatTheyDo) {
    const QList<Project> pinned{{u"/b"_s, u"bee"_s, u"/b"_s, {}}, {u"/a"_s, u"ant"_s, u"/a"_s, {}}};
    EXPECT_EQ(
        PinnedMenu::entries(pinned, [](const Project& project) { return project.id == "/a"_L1; }),
        (QList<PinnedEntry>{{u"/b"_s, u"Run bee"_s, false}, {u"/a"_s, u"Stop ant"_s, true}}));
    EXPECT_EQ(QuickGit::progress(QuickGitAction::fetch, u"shop"_s), u"Fetching shop\u2026"_s);
    EXPECT_EQ(QuickGit::done(QuickGitAction::pull, u"shop"_s, 1), (QuickGitReport{true, u"Pulled shop."_s}));
    EXPECT_EQ(
        QuickGit::done(QuickGitAction::push, u"shop"_s, 3), (QuickGitReport{true, u"Pushed shop (3 repositories)."_s}));
}
