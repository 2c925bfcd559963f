#include "OrvUI/StartPage.h"
#include "tests/OrvUI/ModelFixture.h"

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

class StartPageTest : public ModelFixture {};

TEST_F(StartPageTest, OpensWhatItNames) {
    addInstalled(u"shop"_s, "vite", up(4121));
    addInstalled(u"a:b"_s, "vite", up(4122));
    const AppPage home;
    const auto page = [](AppPage::Kind kind, const QString& id = {}) { return AppPage{.kind = kind, .id = id}; };
    const AppPage shop = page(AppPage::Kind::project, root + u"/shop"_s);
    const AppPage ai{.kind = AppPage::Kind::settings, .id = {}, .section = SettingsSection::ai};
    const struct {
        QString value;
        AppPage page;
        ProjectFilter filter = ProjectFilter::all;
        std::optional<AppSheet> sheet = {};
        bool hasPanel = false;
    } cases[] = {
        {u"ai"_s, page(AppPage::Kind::ai)},
        {u"tasks"_s, page(AppPage::Kind::tasks)},
        {u"settings"_s, ai},
        {u"flutter"_s, home, ProjectFilter::flutter},
        {u"running"_s, home, ProjectFilter::running},
        {u"pinned"_s, home, ProjectFilter::pinned},
        {u"add-project"_s, home, ProjectFilter::all, AppSheet{AppSheet::Kind::addProject, AddProjectMode::newFolder}},
        {u"widgets-how-to"_s, home, ProjectFilter::all, AppSheet{AppSheet::Kind::widgetsHowTo}},
        {u"project:shop"_s, shop},
        {u"projects:shop"_s, shop},
        {u"project-ai:shop"_s, shop, ProjectFilter::all, {}, true},
        {u"project:a:b"_s, page(AppPage::Kind::project, root + u"/a:b"_s)},
        {u"project:Shop"_s, home},
        {u"project"_s, home},
        {u"AI"_s, home},
        {{}, home},
    };
    for (const auto& [value, wanted, filter, sheet, hasPanel] : cases) {
        makeModel();
        // From another page, where it is one that the value leads to; and before the projects are known.
        model->setPage(
            page(wanted == home && filter == ProjectFilter::all ? AppPage::Kind::home : AppPage::Kind::tasks));
        const bool isKnown = wanted != home || filter != ProjectFilter::all || sheet || value.startsWith(u"project"_s);
        EXPECT_EQ(openStartPage(*model, value), isKnown) << value.toStdString();
        EXPECT_NE(model->page().kind, AppPage::Kind::project);
        scan();
        EXPECT_TRUE(waitFor([&] { return model->page() == wanted; })) << value.toStdString();
        EXPECT_EQ(model->filter(), filter) << value.toStdString();
        EXPECT_EQ(model->sheet(), sheet) << value.toStdString();
        EXPECT_EQ(model->aiPanelProjectID().has_value(), hasPanel) << value.toStdString();
    }
}
