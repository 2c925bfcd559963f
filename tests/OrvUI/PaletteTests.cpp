#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/Palette.h"
#include "OrvUI/Shortcuts.h"
#include "tests/OrvUI/ModelFixture.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

namespace {

class PaletteTest : public ModelFixture {
protected:
    PaletteTest() {
        addInstalled(u"client/harbor"_s, "vite", up(4200));
        addInstalled(u"client/wharf"_s, "vite", up(4201));
        tree.add(u"projects/client/harbor/.git/HEAD"_s, "ref: refs/heads/main\n");
        tree.add(u"projects/client/wharf/.git/HEAD"_s, "ref: refs/heads/main\n");
        addInstalled(u"shop"_s, "express", up(4202));
        addInstalled(u"sketch-pad"_s, "vite", up(4203));
        scan();
        openAgain();
    }

    ~PaletteTest() override { m_palette.reset(); }

    /// A new one, as at the next start.
    void openAgain() {
        m_palette = std::make_unique<Palette>();
        m_palette->setModel(model.get());
    }

    [[nodiscard]] Palette& palette() const { return *m_palette; }

    /// "Projects: shop, sketch-pad; Actions: Push shop"
    [[nodiscard]] QString found(qsizetype most = 100) const {
        QStringList groups;
        QString group;
        for (const PaletteRow& row : palette().rows().first(std::min(most, palette().rows().size()))) {
            groups.append(
                row.group == group ? groups.takeLast() + u", "_s + row.title : row.group + u": "_s + row.title);
            group = row.group;
        }
        return groups.join(u"; "_s);
    }

    /// Where the row of that title stands.
    [[nodiscard]] int place(const QString& title) const {
        for (int row = 0; row < palette().rows().size(); ++row) {
            if (palette().rows()[row].title == title) {
                return row;
            }
        }
        ADD_FAILURE() << title.toStdString() << " is not among " << found().toStdString();
        return -1;
    }

    void choose(const QString& query, const QString& title) {
        palette().open();
        palette().setQuery(query);
        palette().activate(place(title));
        EXPECT_FALSE(palette().isOpen()) << title.toStdString();
    }

private:
    std::unique_ptr<Palette> m_palette;
};

} // namespace

TEST_F(PaletteTest, FindsProjectsAndWhatCanBeDoneWithThem) {
    const QAbstractItemModelTester tester(palette().results(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    palette().setQuery(u"shop"_s);
    EXPECT_EQ(found(), QString()) << "it is closed";
    palette().open();
    palette().setQuery(u"shp"_s);
    EXPECT_TRUE(found().startsWith(u"Projects: shop, sketch-pad; Actions: "_s)) << found().toStdString();
    const PaletteRow shop = palette().rows().first();
    EXPECT_EQ(shop.detail, u"Express"_s);
    EXPECT_EQ(shop.hits.size(), 2);
    EXPECT_EQ(shop.hits[1].toMap()[u"start"_s], 3);
    EXPECT_FALSE(found().contains(u"Stop shop"_s)) << "it does not run";
    EXPECT_FALSE(found().contains(u"Push shop"_s)) << "it has no repository";
    palette().setQuery(u"notif"_s);
    EXPECT_EQ(found(1), u"Go to: Settings: Notifications"_s) << "the group of the best comes first";
    palette().setQuery(u"pull strategy email"_s);
    EXPECT_EQ(found(), QString());
    palette().setQuery(u"email"_s);
    EXPECT_EQ(found(1), u"Go to: Settings: Git"_s) << "by what is set there";
    for (const QString& typed : {u"port"_s, u"sale"_s, u"client"_s}) {
        palette().setQuery(typed);
        EXPECT_FALSE(found().contains(u"Settings: General"_s)) << "it only has these letters: " << typed.toStdString();
    }
    EXPECT_EQ(found(1), u"Go to: client"_s);
    palette().setQuery(u"no such thing"_s);
    EXPECT_EQ(palette().resultCount(), 0);
}

TEST_F(PaletteTest, FollowsTheModelWhileItIsOpen) {
    const Project shop = project(u"shop"_s);
    palette().open();
    palette().setQuery(u"shop"_s);
    palette().runOrStop(place(u"shop"_s));
    EXPECT_FALSE(palette().isOpen());
    palette().open();
    palette().setQuery(u"shop browser"_s);
    EXPECT_TRUE(waitFor([&] { return found(1) == u"Actions: Open shop in your browser"_s; })) << found().toStdString();
    EXPECT_EQ(palette().rows().first().detail, u"localhost:4202"_s);
    EXPECT_EQ(palette().query(), u"shop browser"_s);
    palette().setQuery(u"stop shop"_s);
    EXPECT_EQ(palette().rows()[place(u"Stop shop"_s)].detail, u"1 service"_s);
    palette().activate(place(u"Stop shop"_s));
    EXPECT_TRUE(waitForPhase(shop, ServiceKind::backend, ServiceState::Phase::stopped));
    palette().runOrStop(0);
    EXPECT_FALSE(state(shop, ServiceKind::backend).isActive()) << "a closed one does nothing";
}

TEST_F(PaletteTest, ShowsWhatIsTypedInTheSamePlacesAndWhatChangesByItselfWhereItWas) {
    palette().open();
    palette().setQuery(u"shop"_s);
    const QPersistentModelIndex first(palette().results()->index(0, 0));
    palette().setQuery(u"wharf"_s);
    ASSERT_TRUE(first.isValid()) << "its delegate was thrown away";
    EXPECT_EQ(first.row(), 0);
    palette().setQuery({});
    const QString marked = palette().rows().first().title;
    model->togglePinFor(project(u"sketch-pad"_s).id);
    EXPECT_TRUE(waitFor([&] { return place(u"sketch-pad"_s) == 0; })) << found().toStdString();
    EXPECT_EQ(palette().rows()[first.row()].title, marked);
}

TEST_F(PaletteTest, DoesWhatItsRowsSay) {
    const Project shop = project(u"shop"_s);
    const QString harbor = root + u"/client/harbor"_s;
    model->addTask(u"Upgrade the router"_s, {}, shop);
    const auto showsTab = [&](DetailTab tab) {
        return [this, tab, id = shop.id] {
            return model->page() == AppPage{AppPage::Kind::project, id, {}} && model->detailTab() == tab;
        };
    };
    const auto shows = [&](const AppPage& page) { return [this, page] { return model->page() == page; }; };
    const struct {
        QString query, title;
        std::function<bool()> done;
    } cases[] = {
        {u"harbor"_s, u"harbor"_s, shows({AppPage::Kind::project, harbor, {}})},
        {u"client"_s, u"client"_s, shows({AppPage::Kind::collection, root + u"/client"_s, {}})},
        {u"logs shop"_s, u"Logs of shop"_s, showsTab(DetailTab::logs)},
        {u"files shop"_s, u"Files of shop"_s, showsTab(DetailTab::files)},
        {u"tasks shop"_s, u"Tasks of shop"_s, showsTab(DetailTab::tasks)},
        {u"router"_s, u"Upgrade the router"_s, showsTab(DetailTab::tasks)},
        {u"new term shop"_s, u"New terminal in shop"_s,
         [&] { return showsTab(DetailTab::terminal)() && model->terminals().sessions().size() == 1; }},
        {u"ask shop"_s, u"Ask AI in shop"_s,
         [&] { return showsTab(DetailTab::terminal)() && model->aiPanelProjectID() == shop.id; }},
        {u"ask harbor"_s, u"Ask AI in harbor"_s,
         [&] { return shows({AppPage::Kind::project, harbor, {}})() && model->aiPanelProjectID() == harbor; }},
        {u"pin shop"_s, u"Pin shop"_s, [&] { return model->isPinned(shop); }},
        {u"pin shop"_s, u"Remove the pin of shop"_s, [&] { return !model->isPinned(shop); }},
        {u"set gen"_s, u"Settings: General"_s, shows({AppPage::Kind::settings, {}, SettingsSection::general})},
        {u"flutter"_s, u"Flutter"_s, [&] { return shows({})() && model->filter() == ProjectFilter::flutter; }},
        {u"theme ocean"_s, u"Theme: Ocean"_s, [&] { return model->themeIndex() == 1; }},
        {u"look dark"_s, u"Look: dark"_s, [&] { return model->appearance() == 2; }},
        {u"folders"_s, u"Show projects as folders"_s,
         [&] { return model->settings().settings().viewMode == ViewMode::folders; }},
        {u"unsaved"_s, u"Show projects with unsaved changes"_s, [&] { return model->showOnlyUncommitted(); }},
        {u"clear"_s, u"Clear filters and search"_s, [&] { return !model->showOnlyUncommitted(); }},
        {u"clone"_s, u"Clone repository"_s, [&] { return model->sheet()->mode == AddProjectMode::clone; }},
        {u"tour"_s, u"Start the welcome tour"_s, [&] { return model->needsOnboarding(); }},
    };
    for (const auto& it : cases) {
        choose(it.query, it.title);
        EXPECT_TRUE(it.done()) << it.title.toStdString();
    }
    QSignalSpy asked(&palette(), &Palette::shortcutsAsked);
    choose(u"keyboard"_s, u"Show all shortcuts"_s);
    EXPECT_EQ(asked.count(), 1);
    palette().open();
    palette().activate(-1);
    palette().activate(1000);
    EXPECT_TRUE(palette().isOpen());
}

TEST_F(PaletteTest, NarrowsToOneProject) {
    palette().open();
    palette().setQuery(u"sk"_s);
    ASSERT_TRUE(palette().narrow(place(u"sketch-pad"_s)));
    EXPECT_EQ(palette().scopeName(), u"sketch-pad"_s);
    EXPECT_EQ(palette().query(), QString());
    EXPECT_TRUE(found().startsWith(u"Projects: sketch-pad; Actions: Run sketch-pad, "_s)) << found().toStdString();
    EXPECT_FALSE(found().contains(u"shop"_s));
    EXPECT_FALSE(palette().narrow(0)) << "it is narrow already";
    palette().setQuery(u"settings"_s);
    EXPECT_EQ(palette().resultCount(), 0);
    EXPECT_TRUE(palette().widen());
    EXPECT_FALSE(palette().widen());
    EXPECT_TRUE(found().startsWith(u"Go to: Settings"_s)) << found().toStdString();
    EXPECT_FALSE(palette().narrow(place(u"Settings"_s))) << "that is of no project";
}

TEST_F(PaletteTest, PutsWhatIsOftenChosenFirst) {
    palette().open();
    palette().setQuery(u"h"_s);
    EXPECT_EQ(found(1), u"Projects: harbor"_s);
    palette().close();
    for (int times = 0; times < 4; ++times) {
        choose(u"shop"_s, u"shop"_s);
        choose(u"logs shop"_s, u"Logs of shop"_s);
        choose(u"logs sketch"_s, u"Logs of sketch-pad"_s);
        choose(u"theme"_s, u"Theme: Ocean"_s);
        choose(u"theme"_s, u"Theme: Ember"_s);
    }
    makeModel();
    scan();
    openAgain();
    palette().open();
    EXPECT_EQ(palette().rows().first().title, u"shop"_s) << "before anything is typed";
    EXPECT_LT(place(u"Theme: Ocean"_s), place(u"Tasks"_s));
    const struct {
        QString typed, first;
    } cases[] = {
        {u"s"_s, u"Projects: shop"_s},        // as well as sketch-pad, and more often chosen
        {u"h"_s, u"Projects: harbor"_s},      // begins with it, unlike what is often chosen
        {u"sho"_s, u"Projects: shop"_s},      // rather than its log
        {u"sk"_s, u"Projects: sketch-pad"_s}, // which was never chosen, unlike its log
        {u"sketch pad"_s, u"Projects: sketch-pad"_s},
        {u"pad"_s, u"Projects: sketch-pad"_s},
        {u"logs"_s, u"Go to: Logs of shop"_s},
        {u"settings"_s, u"Go to: Settings"_s},
    };
    for (const auto& it : cases) {
        palette().setQuery(it.typed);
        EXPECT_EQ(found(1), it.first) << it.typed.toStdString();
    }
}

TEST(Shortcuts, AreFoundByWhatTheyDoAndByTheirKeys) {
    const struct {
        QString typed;
        QStringList actions;
    } cases[] = {
        {u"palette"_s, {u"Command palette"_s}},
        {u"ctrl shift r"_s, {u"Restart"_s}},
#ifndef Q_OS_MACOS
        {u"ctrl shift k"_s, {u"Command palette"_s}},
#endif
        {u"HOME PAGE"_s, {u"Filters"_s, u"Cards or folders"_s, u"Unsaved changes only"_s}},
        {u" quit "_s, {u"Quit"_s}},
        {u"nothing such"_s, {}},
    };
    Shortcuts shortcuts;
    const QAbstractItemModelTester tester(&shortcuts, QAbstractItemModelTester::FailureReportingMode::Fatal);
    for (const auto& it : cases) {
        shortcuts.setSearchText(it.typed);
        QStringList actions;
        for (const ShortcutRow& row : shortcuts.rows()) {
            actions.append(row.action);
        }
        EXPECT_EQ(actions, it.actions) << it.typed.toStdString();
    }
    shortcuts.setSearchText({});
    QSet<QString> seen;
    for (const ShortcutRow& row : shortcuts.rows()) {
        const QString keys = row.group + row.keys.join(u' ');
        EXPECT_FALSE(seen.contains(keys)) << keys.toStdString() << " does two things";
        seen.insert(keys);
    }
}
