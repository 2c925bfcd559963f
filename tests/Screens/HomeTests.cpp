#include "OrvUI/FilterBar.h"
#include "tests/Screens/MainWindow.h"

#include <algorithm>
#include <cmath>

namespace orv {
namespace {

using namespace Qt::StringLiterals;

class HomeWindow : public test::MainWindow {
protected:
    HomeWindow() {
        for (const QString& folder : {u"alone"_s, u"clients/one"_s, u"clients/two"_s}) {
            addInstalled(folder, folder.endsWith(u"two") ? "express" : "vite", test::up(4301));
            tree.add(u"projects/"_s + folder + u"/.git/HEAD"_s, "ref: refs/heads/main\n");
        }
        scan();
    }

    /// The names of the cards, or of the rows, from top to bottom.
    [[nodiscard]] QStringList names(const QByteArray& component) const {
        QList<QQuickItem*> found = items(component);
        std::ranges::sort(found, {}, [](const QQuickItem* item) { return item->property("index").toInt(); });
        QStringList list;
        for (const QQuickItem* item : std::as_const(found)) {
            list.append(item->property("name").toString());
        }
        return list;
    }

    void becomes(const QByteArray& component, const QStringList& expected) const {
        EXPECT_TRUE(test::waitFor([&] { return names(component) == expected; }))
            << "focus: " << focus() << "\nis " << names(component).join(u' ').toStdString() << ", not "
            << expected.join(u' ').toStdString();
    }

    /// The title of the palette's result at that place.
    [[nodiscard]] QString result(int place) const {
        for (const QQuickItem* row : items("PaletteItem")) {
            if (row->property("index").toInt() == place) {
                return row->property("title").toString();
            }
        }
        return {};
    }

    void shows(const QByteArray& component, qsizetype count) const {
        EXPECT_TRUE(test::waitFor([&] { return items(component).size() == count; }))
            << items(component).size() << " of " << component.toStdString();
    }
};

TEST_F(HomeWindow, LetsTheLastCardsOutFromBelowTheStatusLine) {
    open(QSize(900, 560));
    becomes("ProjectCard", {u"alone"_s, u"clients"_s});
    auto* grid = window->findChild<QQuickItem*>(u"cardGrid"_s);
    ASSERT_NE(grid, nullptr);
    const auto lowest = [this] {
        qreal bottom = 0;
        for (const QQuickItem* card : items("ProjectCard")) {
            bottom = std::max(bottom, card->mapRectToScene(card->boundingRect()).bottom());
        }
        return bottom;
    };
    const auto atEnd = [&] {
        const auto its = [grid](const char* name) { return grid->property(name).toReal(); };
        grid->setProperty("contentY", its("originY") + its("contentHeight") + its("bottomMargin") - grid->height());
        return lowest();
    };
    const qreal usual = atEnd();
    model->setStatusMessage(StatusMessage{.text = u"Something happened."_s});
    EXPECT_TRUE(test::waitFor([&] {
        return std::ranges::any_of(items("Label"), [&](const QQuickItem* label) {
            return label->property("text") == u"Something happened."_s && atEnd() < label->mapToScene({}).y();
        });
    })) << lowest();
    model->setStatusMessage({});
    EXPECT_TRUE(test::waitFor([&] { return lowest() == usual; })) << lowest() << ", not " << usual;
}

TEST_F(HomeWindow, NarrowsByThePopoverAndSaysSoInChips) {
    open(QSize(1280, 832));
    becomes("ProjectCard", {u"alone"_s, u"clients"_s});
    shows("FilterPopover", 0);
    press(Qt::Key_F, Qt::ControlModifier | Qt::AltModifier);
    ASSERT_TRUE(test::waitFor([this] { return !items("ChoiceChip").isEmpty(); }));
    for (const QQuickItem* choice : items("Segmented")) {
        const QQuickItem* row = choice->property("contentItem").value<QQuickItem*>()->childItems().value(0);
        EXPECT_TRUE(test::waitFor([&] {
            return row->implicitWidth() == std::floor(choice->width()) - 4 &&
                   std::ranges::all_of(row->childItems(), [](const QQuickItem* part) {
                       return part->width() >= part->implicitWidth();
                   });
        })) << "the parts fill "
            << choice->width() << ", each with room for its words";
    }
    click(button(u"Backend"_s));
    becomes("ProjectCard", {u"two"_s});
    EXPECT_TRUE(model->filters().kinds.contains(KindFilter::backend));
    shows("FilterChip", 1);
    click(button(u"Only collections"_s));
    becomes("ProjectCard", {u"clients"_s});
    EXPECT_EQ(model->filterBar()->activeCount(), 2);
    press(Qt::Key_Escape);
    EXPECT_TRUE(test::waitFor([this] { return items("ChoiceChip").isEmpty(); }));
    click(named("FilterChip", u"Remove the filter Backend"_s));
    shows("FilterChip", 1);
    click(named("Button", u"Clear filters"_s));
    becomes("ProjectCard", {u"alone"_s, u"clients"_s});
    press(Qt::Key_U, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_TRUE(model->showOnlyUncommitted());
    shows("EmptyState", 1);
    EXPECT_TRUE(items("SuggestionCard").isEmpty()) << "a filter shows its result alone";
    click(named("Button", u"Clear filters"_s));
    becomes("ProjectCard", {u"alone"_s, u"clients"_s});
    model->filterBar()->setCollections(3);
    model->setSearchText(u"alone"_s);
    shows("EmptyState", 1);
    EXPECT_EQ(model->shownCount(), 0);
}

TEST_F(HomeWindow, OpensFoldersOfProjects) {
    open(QSize(1280, 832));
    becomes("ProjectCard", {u"alone"_s, u"clients"_s});
    click(named("Button", u"Open"_s));
    EXPECT_TRUE(test::waitFor([this] { return model->page().kind == AppPage::Kind::collection; }));
    becomes("ProjectCard", {u"one"_s, u"two"_s});
    press(Qt::Key_Left, Qt::AltModifier);
    press(Qt::Key_V, Qt::ControlModifier | Qt::AltModifier);
    becomes("FolderRow", {u"clients"_s, u"alone"_s});
    EXPECT_TRUE(items("ProjectCard").isEmpty());
    press(Qt::Key_Right);
    becomes("FolderRow", {u"clients"_s, u"one"_s, u"two"_s, u"alone"_s});
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return model->page().id == root + u"/clients/one"_s; }));
    press(Qt::Key_Left, Qt::AltModifier);
    EXPECT_TRUE(test::waitFor([this] { return model->page().kind == AppPage::Kind::home; }));
    press(Qt::Key_Up);
    press(Qt::Key_Left);
    becomes("FolderRow", {u"clients"_s, u"alone"_s});
    press(Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return model->page().kind == AppPage::Kind::folder; }));
    becomes("ProjectCard", {u"one"_s, u"two"_s});
    for (const int width : {760, 1000, 1720}) {
        window->resize(width, 832);
        const QString text = width < 1000 ? u"New terminal"_s : u"New terminal in clients"_s;
        EXPECT_TRUE(test::waitFor([&] {
            const QQuickItem* found = button(text);
            return found != nullptr && found->mapToScene(QPointF(found->width(), 0)).x() <= width - 8;
        })) << width;
    }
}

TEST_F(HomeWindow, RunsFromARowOfTheFolders) {
    model->changeSettings([](AppSettings& settings) { settings.viewMode = ViewMode::folders; });
    open(QSize(900, 832));
    becomes("FolderRow", {u"clients"_s, u"alone"_s});
    click(named("IconButton", u"Run Frontend in alone"_s));
    EXPECT_TRUE(test::waitFor([this] { return model->isRunning(project(u"alone"_s)); }));
    EXPECT_TRUE(test::waitFor([this] {
        const QList<QQuickItem*> links = items("AddressLink");
        return std::ranges::any_of(
            links, [](const QQuickItem* link) { return link->property("text") == u"localhost:4301"_s; });
    }));
    click(named("IconButton", u"Stop alone"_s));
    EXPECT_TRUE(test::waitFor([this] { return !model->isRunning(project(u"alone"_s)); }));
}

TEST_F(HomeWindow, FindsThingsInThePalette) {
    open(QSize(1280, 832));
    becomes("ProjectCard", {u"alone"_s, u"clients"_s});
    press(Qt::Key_K, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return !items("PaletteItem").isEmpty(); }));
    type(u"one"_s);
    ASSERT_TRUE(test::waitFor([this] { return result(0) == u"one"_s; })) << result(0).toStdString() << focus();
    press(Qt::Key_Tab);
    ASSERT_TRUE(test::waitFor([this] { return result(1) == u"Run one"_s; })) << result(1).toStdString();
    press(Qt::Key_Escape);
    type(u"set gen"_s);
    EXPECT_TRUE(test::waitFor([this] { return result(0) == u"Settings: General"_s; }));
    press(Qt::Key_Return);
    shows("SettingsGeneral", 1);
    shows("PaletteItem", 0);
    press(Qt::Key_K, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return !items("PaletteItem").isEmpty(); }));
    type(u"alone"_s);
    press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([this] { return model->isRunning(project(u"alone"_s)); }));
    press(Qt::Key_Slash, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return !items("ShortcutsSheet").isEmpty() || !items("KeyHint").isEmpty(); }));
    type(u"palette"_s);
    // Only the sheet has a key by itself: in the usual sequence, and where it is another one in a terminal's.
#ifdef Q_OS_MACOS
    constexpr int sequences = 1;
#else
    constexpr int sequences = 2;
#endif
    const auto keys = [this] {
        const auto all = items("KeyHint");
        return std::ranges::count_if(all, [](const QQuickItem* key) { return key->property("text") == u"K"_s; });
    };
    EXPECT_TRUE(test::waitFor([&] { return keys() == sequences; }));
    press(Qt::Key_Escape);
    press(Qt::Key_Escape);
    ASSERT_TRUE(test::waitFor([&] { return keys() == 0; }));
    press(Qt::Key_Home, Qt::AltModifier);
    EXPECT_TRUE(test::waitFor([this] { return model->page().kind == AppPage::Kind::home; }));
}

} // namespace
} // namespace orv
