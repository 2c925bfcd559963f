#include "OrvUI/OnboardingForm.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

TEST(OnboardingForm, GoesOnlyWhereItMay) {
    test::TemporaryTree tree;
    OnboardingForm form;
    form.back();
    EXPECT_EQ(form.step, OnboardingStep::welcome);
    const auto isStuck = [&form] {
        const OnboardingStep before = form.step;
        form.next();
        return form.step == before && !form.canAdvance();
    };
    form.next();
    form.name = u" \t "_s;
    EXPECT_TRUE(isStuck());
    form.name = u" Sam "_s;
    form.next();
    for (const QString& folder : {QString(), tree.path(u"nowhere"_s), tree.add(u"file"_s), u"."_s}) {
        form.folder = folder;
        EXPECT_TRUE(isStuck()) << folder.toStdString();
    }
    form.folder = tree.path();
    for (size_t step = 0; step < 2 * allOnboardingSteps.size(); ++step) {
        form.next();
    }
    EXPECT_EQ(form.step, OnboardingStep::extras);
    form.back();
    EXPECT_EQ(form.step, OnboardingStep::ai);
}

TEST(OnboardingForm, WritesWhatItAskedAndNothingElse) {
    AppSettings settings;
    settings.displayName = u"Kim"_s;
    settings.scanRoot = u"/old"_s;
    settings.theme = ThemeID::forest;
    settings.appearance = AppearanceMode::dark;
    settings.notificationsEnabled = true;
    settings.defaultAgent = AgentKind::gemini;
    settings.agentAutonomy = AgentAutonomy::full;
    settings.pinnedProjectIDs = {u"/p"_s};
    AppSettings written = settings;
    OnboardingForm form = OnboardingForm::from(settings);
    form.applyTo(written);
    settings.onboardingCompleted = true;
    EXPECT_EQ(written, settings);

    form.name = u" Sam "_s;
    form.applyTo(written);
    EXPECT_EQ(written.displayName, u"Sam"_s);
}
