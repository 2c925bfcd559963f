#include "OrvUI/CTA.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

TEST(CTAEngine, SuggestsWhatApplies) {
    const CTAContext nothingLeft{
        .gitIdentitySet = true,
        .lastRunName = {},
        .themeChanged = true,
        .widgetsConfirmed = true,
        .launchAtLogin = true};
    CTAContext everything{.projectsWithChanges = 2, .lastRunName = u"%1 shop"_s};
    CTAContext busy = nothingLeft;
    busy.lastRunName = u"shop"_s;
    busy.anythingRunning = true;
    CTAContext one = nothingLeft;
    one.projectsWithChanges = 1;
    const struct {
        const char* label;
        CTAContext context;
        QSet<QString> dismissed;
        qsizetype limit;
        QString cards;
    } cases[] = {
        {"all set", nothingLeft, {}, 9, u"add-project"_s},
        {"all set and dismissed", nothingLeft, {u"add-project"_s}, 9, u""_s},
        {"everything", everything, {}, 9, u"git-identity uncommitted resume add-project login themes widgets"_s},
        {"the dismissed ones make room", everything, {u"git-identity"_s, u"resume"_s}, 2, u"uncommitted add-project"_s},
        {"none", everything, {}, 0, u""_s},
        {"something runs", busy, {}, 9, u"add-project"_s},
        {"one project", one, {}, 9, u"uncommitted add-project"_s},
    };
    for (const auto& [label, context, dismissed, limit, expected] : cases) {
        QStringList ids;
        for (const CTA& card : CTAEngine::visible(context, dismissed, limit)) {
            ids << rawValue(card.id);
        }
        EXPECT_EQ(ids.join(u' '), expected) << label;
    }
    EXPECT_EQ(CTAEngine::visible(one, {}, 1)[0].headline, u"1 project has unsaved changes"_s);
    const QList<CTA> cards = CTAEngine::visible(everything, {}, 3);
    EXPECT_EQ(cards[1].headline, u"2 projects have unsaved changes"_s);
    EXPECT_EQ(cards[2].body, u"Start %1 shop again with the same setup."_s);
    EXPECT_EQ(cards[2].button, u"Run %1 shop"_s);
}
