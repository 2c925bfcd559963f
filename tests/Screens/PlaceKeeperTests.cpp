#include "OrvUI/HomeModels.h"
#include "OrvUI/Screens/PlaceKeeper.h"
#include "OrvUI/ServiceLogs.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QDir>
#include <QSignalSpy>

#include <functional>

namespace orv {
namespace {

using namespace Qt::StringLiterals;

/// The model with two projects in a folder, and what is open in it.
class Places : public test::ModelFixture {
protected:
    Places() {
        for (const QString& name : {u"client/harbor"_s, u"client/wharf"_s}) {
            addInstalled(name, "vite", test::up(4010));
            tree.add(u"projects/%1/.git/HEAD"_s.arg(name), "ref: refs/heads/main\n");
        }
        scan();
    }
    ~Places() override { keeper.reset(); }

    /// The application ends and starts again.
    void startAgain(const WindowState& last, PlaceKeeper::Page page = PlaceKeeper::Page::asItWas) {
        keeper.reset();
        makeModel();
        keeper.emplace(*model);
        keeper->restore(last, page);
    }
    [[nodiscard]] WindowState stored() const {
        WindowState state;
        keeper->store(state);
        return state;
    }

    const QString client = root + u"/client"_s;
    const QString harbor = client + u"/harbor"_s;
    std::optional<PlaceKeeper> keeper;
};

TEST_F(Places, AreAsTheyWereLeft) {
    ASSERT_TRUE(test::waitFor([this] { return model->outline()->rowCount() > 0; }));
    keeper.emplace(*model);
    const QSignalSpy changes(&*keeper, &PlaceKeeper::changed);
    const std::pair<const char*, std::function<void()>> steps[] = {
        {"a page", [this] { model->setPage({.kind = AppPage::Kind::project, .id = harbor}); }},
        {"a tab", [this] { model->setDetailTab(DetailTab::terminal); }},
        {"the agent panel", [this] { model->setAiPanelProjectID(harbor); }},
        {"a folder of the sidebar", [this] { model->outline()->setExpanded(0, true); }},
        {"a folder of the home page", [this] { model->home().setFolderOpen(client, true); }},
        {"a terminal", [this] { model->terminals().open(QUrl::fromLocalFile(client)); }},
    };
    for (const auto& [label, step] : steps) {
        const qsizetype before = changes.count();
        step();
        EXPECT_GT(changes.count(), before) << label;
    }
    const WindowState left = stored();
    EXPECT_EQ(left.outline, QSet<QString>{client});
    EXPECT_EQ(left.terminals.size(), 1);

    startAgain(left);
    EXPECT_EQ(model->page(), AppPage()) << "it is not found yet";
    WindowState meanwhile = left;
    keeper->store(meanwhile);
    EXPECT_EQ(meanwhile, left) << "and not forgotten by then";
    scan();
    EXPECT_EQ(model->page(), left.page);
    EXPECT_EQ(model->detailTab(), DetailTab::terminal);
    EXPECT_EQ(model->aiPanelProjectID(), harbor);
    EXPECT_EQ(stored(), left);

    startAgain(left, PlaceKeeper::Page::another);
    scan();
    EXPECT_EQ(model->page(), AppPage());
    EXPECT_EQ(stored().terminals, left.terminals);
}

TEST_F(Places, HaveTheOutputThatWasLookedAt) {
    for (const auto& [part, package] : {std::pair(u"shop/frontend"_s, "vite"), {u"shop/backend"_s, "express"}}) {
        addInstalled(part, package, test::up(4020));
    }
    scan();
    const Project shop = project(u"shop"_s);
    const QString chosen = HomeModels::key(id(shop, ServiceKind::backend));
    const auto look = [&] {
        model->logs()->setProjectID(shop.id);
        return test::finishes(model->run(shop, {ServiceKind::frontend, ServiceKind::backend})) &&
               test::waitFor([this] { return model->logs()->services()->rowCount() == 2; });
    };
    keeper.emplace(*model);
    ASSERT_TRUE(look());
    ASSERT_NE(model->logs()->shownKey(), chosen);
    model->logs()->show(chosen);
    ASSERT_TRUE(test::finishes(model->stop(shop)));
    startAgain(stored());
    scan();
    ASSERT_TRUE(look());
    EXPECT_TRUE(test::waitFor([&] { return model->logs()->shownKey() == chosen; }));
    ASSERT_TRUE(test::finishes(model->stop(shop)));
}

TEST_F(Places, OfWhichNothingIsFoundAgain) {
    const QString emptied = tree.add(u"projects/emptied/notes"_s).chopped(6);
    for (const AppPage& page : std::initializer_list<AppPage>{
             {.kind = AppPage::Kind::project, .id = root + u"/gone"_s},
             {.kind = AppPage::Kind::collection, .id = root + u"/gone"_s},
             {.kind = AppPage::Kind::folder, .id = emptied},
             {.kind = AppPage::Kind::folder, .id = client}}) {
        WindowState left;
        left.page = page;
        left.agentPanelID = root + u"/gone"_s;
        // Its drive may come a moment later.
        const QUrl gone = QUrl::fromLocalFile(root + u"/gone"_s), found = QUrl::fromLocalFile(client);
        left.terminals = {{gone, gone, u"gone"_s, 1}, {found, gone, u"client"_s}};
        startAgain(left);
        EXPECT_EQ(stored().terminals, left.terminals);
        scan();
        EXPECT_EQ(model->page(), page.id == client ? page : AppPage()) << page.id.toStdString();
        EXPECT_FALSE(model->aiPanelProjectID());
    }
}

} // namespace
} // namespace orv
