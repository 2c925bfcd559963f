#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/AgentModels.h"
#include "OrvUI/Screens/Diagnostics.h"
#include "OrvUI/TaskLists.h"
#include "tests/OrvGit/GitFixture.h"
#include "tests/Screens/MainWindow.h"

#include <QAccessible>
#include <QDir>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using test::MainWindow;

/// The window on a project of a repository, whose card has the focus.
class KeyWindow : public test::MainWindow {
protected:
    KeyWindow() {
        addInstalled(u"shop"_s, "vite", test::up(4400));
        test::git(root + u"/shop"_s, {u"init"_s, u"-q"_s});
        test::git(root + u"/shop"_s, {u"commit"_s, u"-qm"_s, u"First"_s, u"--allow-empty"_s});
        scan();
        open(QSize(1280, 832));
    }
    void focusCard() {
        model->setPage({});
        ASSERT_TRUE(test::waitFor([this] { return !items("ProjectCard").isEmpty(); }));
        item("CardGrid")->forceActiveFocus();
        // The page that was left still has its keys until it is gone.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    [[nodiscard]] QString focusedHint() const {
        const QQuickItem* focused = window->activeFocusItem();
        return focused != nullptr ? focused->property("placeholderText").toString() : QString();
    }
    [[nodiscard]] bool isIn(const char* component) const {
        for (const QQuickItem* each : items(component)) {
            for (const QQuickItem* at = window->activeFocusItem(); at != nullptr; at = at->parentItem()) {
                if (at == each) {
                    return true;
                }
            }
        }
        return false;
    }
    /// The part of the window in which the focus is.
    [[nodiscard]] QByteArray part() const {
        for (const char* name : {"Sidebar", "TopBar", "HomePage", "AgentPanel", "ProjectPage"}) {
            if (isIn(name)) {
                return name;
            }
        }
        return {};
    }
};

TEST_F(KeyWindow, DoesWithACardWhatItsPageDoes) {
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        DetailTab tab;
        QString hint; ///< of the field that has the focus then
    } cases[] = {
        {Qt::Key_B, Qt::ControlModifier, DetailTab::git, u"Find or create a branch"_s},
        {Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier, DetailTab::git, u"Name of the new branch"_s},
        {Qt::Key_P, Qt::ControlModifier, DetailTab::files, u"Find a file"_s},
    };
    for (const auto& it : cases) {
        focusCard();
        press(it.key, it.modifiers);
        EXPECT_TRUE(test::waitFor([&] {
            return model->page().kind == AppPage::Kind::project && model->detailTab() == it.tab &&
                   focusedHint() == it.hint;
        })) << it.hint.toStdString()
            << " is not " << focusedHint().toStdString() << ", tab " << static_cast<int>(model->detailTab());
        press(Qt::Key_Escape);
        EXPECT_TRUE(test::waitFor([this] { return items("BranchItem").isEmpty(); }));
    }
    focusCard();
    press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(test::waitFor([this] { return model->terminals().sessions().size() == 1; }));
    EXPECT_EQ(model->detailTab(), DetailTab::terminal);
    focusCard();
    press(Qt::Key_J, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([this] { return part() == "AgentPanel"; })) << focus();
    press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_TRUE(test::waitFor([this] { return isIn("TaskComposer"); })) << focus();
    EXPECT_EQ(model->detailTab(), DetailTab::tasks);
    EXPECT_EQ(model->page().kind, AppPage::Kind::project);
}

TEST_F(MainWindow, GoesThroughTheLinesOfTheQuickPanelUntilItQuits) {
    for (const QString& name : {u"blog"_s, u"shop"_s}) {
        addInstalled(name, "vite", "");
    }
    scan();
    for (const QString& name : {u"blog"_s, u"shop"_s}) {
        model->togglePin(project(name));
    }
    model->addTask(u"Upgrade"_s, {}, project(u"shop"_s));
    openPanel();
    const auto focused = [this] {
        const QQuickItem* at = window->activeFocusItem();
        return at->inherits("QQuickTextInput") ? u"field"_s : at->property("text").toString();
    };
    ASSERT_TRUE(test::waitFor([&] { return focused() == u"field"; })) << focus();
    const std::pair<Qt::Key, QString> steps[] = {{Qt::Key_Down, u"Run blog"_s}, {Qt::Key_Down, u"Run shop"_s},
                                                 {Qt::Key_Down, u"Upgrade"_s},  {Qt::Key_Down, u"Open OrvLauncher"_s},
                                                 {Qt::Key_Down, u"field"_s},    {Qt::Key_Up, u"Open OrvLauncher"_s},
                                                 {Qt::Key_Up, u"Upgrade"_s},    {Qt::Key_Up, u"Run shop"_s}};
    for (const auto& [key, expected] : steps) {
        press(key);
        EXPECT_EQ(focused(), expected) << focus();
    }
    ASSERT_TRUE(test::finishes(model->quit()));
    EXPECT_TRUE(test::waitFor([this] { return button(u"Run shop"_s) == nullptr && button(u"Quit"_s) == nullptr; }));
    EXPECT_NE(named("Label", u"OrvLauncher is quitting"_s), nullptr);
    press(Qt::Key_Down);
}

TEST_F(KeyWindow, TakesOverWhatWasTypedInTheSettingsHoweverTheyAreLeft) {
    const struct {
        SettingsSection section;
        QString hint;
        QString AppSettings::* member;
    } fields[] = {
        {SettingsSection::profile, u"Name"_s, &AppSettings::displayName},
        {SettingsSection::git, u"Default branch"_s, &AppSettings::defaultBranch},
        {SettingsSection::ai, u"mytool --ask \"$ORV_TASK\""_s, &AppSettings::customAgentCommand},
        {SettingsSection::general, u"code -g {file}:{line}:{column}"_s, &AppSettings::editorCommand},
    };
    const std::pair<QString, std::function<void()>> ways[] = {
        {u"back"_s, [this] { press(Qt::Key_Left, Qt::AltModifier); }},
        {u"home"_s, [this] { press(Qt::Key_Home, Qt::AltModifier); }},
        {u"section"_s, [this] { model->setPage({AppPage::Kind::settings, {}, SettingsSection::appearance}); }},
        {u"entered"_s, [this] { press(Qt::Key_Return); }},
    };
    for (const auto& field : fields) {
        for (const auto& [way, leave] : ways) {
            focusCard();
            model->setPage({AppPage::Kind::settings, {}, field.section});
            QQuickItem* place = nullptr;
            ASSERT_TRUE(test::waitFor([&] {
                const QList<QQuickItem*> all = items("Field");
                const auto found = std::ranges::find_if(
                    all, [&](const QQuickItem* each) { return each->property("placeholderText") == field.hint; });
                place = found != all.end() ? *found : nullptr;
                return place != nullptr;
            })) << field.hint.toStdString();
            place->forceActiveFocus();
            press(Qt::Key_A, Qt::ControlModifier);
            type(way);
            leave();
            EXPECT_TRUE(test::waitFor([&] { return model->settings().settings().*field.member == way; }))
                << field.hint.toStdString() << " left by " << way.toStdString();
        }
    }
}

TEST_F(KeyWindow, KeepsATaskForAnAgentThatWasNotSentYet) {
    const auto words = [this] {
        const QQuickItem* focused = window->activeFocusItem();
        return focused != nullptr ? focused->property("text").toString() : QString();
    };
    const auto composer = [&] {
        press(Qt::Key_6, Qt::ControlModifier);
        EXPECT_TRUE(test::waitFor([&] { return words() == u"Tasks"; })) << "the heading: " << focus();
        press(Qt::Key_7, Qt::ControlModifier);
        EXPECT_TRUE(test::waitFor([&] { return isIn("AgentComposer"); })) << focus();
        return item("AgentComposer");
    };
    QQuickItem* box = composer();
    type(u"by"_s);
    EXPECT_EQ(words(), u"by"_s) << "at once: " << focus();
    press(Qt::Key_Tab);
    EXPECT_NE(words(), u"by"_s) << focus();
    type(u"hand"_s);
    EXPECT_EQ(words(), u"byhand"_s) << "what no button takes: " << focus();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    press(Qt::Key_6, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([&] { return words() == u"Tasks"; })) << focus();
    type(u"Call"_s);
    EXPECT_EQ(words(), u"Call"_s) << focus();
    focusCard();
    box = composer();
    const QString project = root + u"/shop"_s;
    model->agentModels()->setPageProjectID(project);
    // Below the words, beside the buttons.
    const auto clickBelowTheWords = [&] {
        const QPointF empty = box->mapToScene(QPointF(box->width() / 2, 60));
        QTest::mouseClick(window, Qt::LeftButton, {}, empty.toPoint());
    };
    clickBelowTheWords();
    type(u"half a task"_s);
    EXPECT_EQ(words(), u"half a task"_s) << focus();
    press(Qt::Key_Home, Qt::AltModifier);
    ASSERT_TRUE(test::waitFor([this] { return items("AgentComposer").isEmpty(); }));
    box = composer();
    EXPECT_EQ(box->property("projectID").toString(), project);
    clickBelowTheWords();
    EXPECT_EQ(words(), u"half a task"_s) << focus();
}

TEST_F(KeyWindow, SettlesASheetByReturnFromWhateverIsNoButton) {
    press(Qt::Key_N, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return focusedHint() == u"Name of the folder"; })) << focus();
    press(Qt::Key_Return);
    type(u"fresh"_s);
    item("CheckBox")->forceActiveFocus();
    press(Qt::Key_Space);
    button(u"Cancel"_s)->forceActiveFocus();
    press(Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return items("FormField").isEmpty(); })) << "by its own button";
    EXPECT_FALSE(QFileInfo::exists(root + u"/fresh"_s));
    press(Qt::Key_N, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return focusedHint() == u"Name of the folder"; })) << focus();
    type(u"fresh"_s);
    item("CheckBox")->forceActiveFocus();
    press(Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return QFileInfo::exists(root + u"/fresh"_s); })) << focus();
    EXPECT_TRUE(test::waitFor([this] { return items("FormField").isEmpty(); }));
}

TEST_F(KeyWindow, LeavesWhatStandsOverThePageByAClickBesideIt) {
    const std::pair<int, const char*> popups[]{{Qt::Key_N, "FormField"}, {Qt::Key_K, "PaletteItem"}};
    for (const auto& [key, part] : popups) {
        press(key, Qt::ControlModifier);
        ASSERT_TRUE(test::waitFor([&] { return !items(part).isEmpty(); })) << part;
        const QQuickItem* popup = items(part).first();
        while (popup != nullptr && !popup->inherits("QQuickPopupItem")) {
            popup = popup->parentItem();
        }
        ASSERT_NE(popup, nullptr) << part;
        const QPoint corner = popup->mapToScene({}).toPoint();
        QTest::mouseClick(window, Qt::LeftButton, {}, corner + QPoint(40, 4));
        EXPECT_FALSE(items(part).isEmpty()) << part << ": that is in it";
        QTest::mouseClick(window, Qt::LeftButton, {}, corner - QPoint(20, -40));
        EXPECT_TRUE(test::waitFor([&] { return items(part).isEmpty(); })) << part;
    }
}

TEST_F(KeyWindow, KeepsATaskOfEachProjectThatWasNotAddedYet) {
    addInstalled(u"site"_s, "vite", "");
    scan();
    const AppPage shop{.kind = AppPage::Kind::project, .id = root + u"/shop"_s};
    const AppPage site{.kind = AppPage::Kind::project, .id = root + u"/site"_s};
    const AppPage all{.kind = AppPage::Kind::tasks, .id = {}};
    const auto stands = [this](const QString& text) {
        return test::waitFor([&] {
            const QQuickItem* focused = window->activeFocusItem();
            return isIn("TaskComposer") && focused->property("text") == text;
        });
    };
    model->setDetailTab(DetailTab::tasks);
    for (const AppPage& page : {shop, site, all}) {
        model->setPage(page);
        press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier);
        ASSERT_TRUE(stands({})) << page.id.toStdString() << ' ' << focus();
        type(u"for "_s + page.id.section(u'/', -1));
    }
    model->taskLists()->keepWords({}, model->taskLists()->words({}), site.id);
    for (const AppPage& page : {shop, site, all}) {
        model->setPage(page);
        model->setDetailTab(DetailTab::git);
        model->setDetailTab(DetailTab::tasks);
        press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier);
        EXPECT_TRUE(stands(u"for "_s + page.id.section(u'/', -1))) << page.id.toStdString() << ' ' << focus();
    }
    press(Qt::Key_Return);
    EXPECT_TRUE(stands({})) << focus();
    EXPECT_EQ(model->tasks(*model->project(site.id)).size(), 1) << "for the project that was chosen there";
    EXPECT_EQ(model->tasks(*model->project(shop.id)).size(), 0);
}

TEST_F(KeyWindow, TakesBackWhatWasDeleted) {
    const QString id = root + u"/shop"_s;
    model->togglePinFor(id);
    model->togglePinFor(id);
    // In its place, with all of the line above the window's edge.
    ASSERT_TRUE(test::waitFor([this] {
        const QQuickItem* undo = button(u"Undo"_s);
        return undo != nullptr && undo->mapToScene(QPointF(0, undo->height())).y() < window->height() - 20;
    }));
    click(button(u"Undo"_s));
    EXPECT_TRUE(test::waitFor([&] { return model->isPinned(project(u"shop"_s)); }));
    EXPECT_TRUE(test::waitFor([this] { return button(u"Undo"_s) == nullptr; }));
    model->togglePinFor(id);
    focusCard();
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([&] { return model->isPinned(project(u"shop"_s)); })) << "by its key";
}

TEST_F(KeyWindow, SaysNothingOfTheUserInItsDiagnostics) {
    const QString text = Diagnostics::text(model.get());
    EXPECT_TRUE(text.contains(u"Projects: 1 with 1 services, 0 active"_s)) << text.toStdString();
    for (const QString& word : {u"shop"_s, root, QDir::homePath() + u'/'}) {
        EXPECT_FALSE(text.contains(word)) << text.toStdString();
    }
}

TEST_F(KeyWindow, GoesRoundThePartsOfTheWindow) {
    focusCard();
    const QByteArrayList round{"Sidebar", "TopBar", "HomePage", "Sidebar"};
    for (const QByteArray& each : round) {
        press(Qt::Key_F6);
        EXPECT_EQ(part(), each) << focus();
    }
    press(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_EQ(part(), "HomePage") << focus();
    for (const DetailTab tab : {DetailTab::overview, DetailTab::git}) {
        model->setPage({});
        model->setPage({.kind = AppPage::Kind::project, .id = root + u"/shop"_s});
        model->setDetailTab(tab);
        ASSERT_TRUE(test::waitFor([&, shown = tab] {
            return part() == "ProjectPage" && (shown == DetailTab::overview || isIn("GitChanges"));
        })) << focus();
        press(Qt::Key_Tab);
        EXPECT_EQ(part(), "ProjectPage") << "Tab goes on where one has come to, from " << focus();
    }
    focusCard();
    press(Qt::Key_J, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return part() == "AgentPanel"; })) << focus();
    press(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_EQ(part(), "ProjectPage") << focus();
}

TEST_F(KeyWindow, HasNothingInTheWayOfTab) {
    const auto focused = [this](const char* property) {
        return window->activeFocusItem()->property(property).toString();
    };
    focusCard();
    press(Qt::Key_Tab);
    EXPECT_TRUE(focused("text") != u"" && isIn("ProjectCard")) << "into the card: " << focus();
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(focused("name") == u"shop" && isIn("ProjectCard")) << focus();
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focused("name"), u"Show projects as"_s) << "what stands above it: " << focus();
    press(Qt::Key_Tab);
    EXPECT_TRUE(focused("name") == u"shop" && isIn("ProjectCard")) << focus();
    model->togglePinFor(root + u"/shop"_s);
    ASSERT_TRUE(test::waitFor([this] { return !items("PinnedItem").isEmpty(); }));
    items("PinnedItem").first()->forceActiveFocus();
    model->togglePinFor(root + u"/shop"_s);
    EXPECT_TRUE(test::waitFor([&] { return items("PinnedItem").isEmpty() && isIn("ProjectCard"); })) << focus();
    const std::pair<DetailTab, QByteArray> tabs[] = {
        {DetailTab::git, "GitChanges"},
        {DetailTab::files, "FileTreeItem"},
        {DetailTab::tasks, "TaskComposer"},
        {DetailTab::logs, "RunButton"}};
    for (const auto& [tab, component] : tabs) {
        model->setPage({.kind = AppPage::Kind::project, .id = root + u"/shop"_s});
        model->setDetailTab(tab);
        EXPECT_TRUE(test::waitFor([&, name = component] { return isIn(name); })) << component.data() << ' ' << focus();
        model->setPage({});
    }
    model->setPage({AppPage::Kind::settings, {}, SettingsSection::git});
    EXPECT_TRUE(test::waitFor([&] { return focused("text") == u"Git"; })) << focus();
}

TEST_F(KeyWindow, GoesOnToTheNextTaskWhenOneGoes) {
    for (const QString& title : {u"One"_s, u"Two"_s, u"Three"_s}) {
        model->addTask(title, {}, *model->project(root + u"/shop"_s));
    }
    model->setPage({AppPage::Kind::tasks, {}, {}});
    ASSERT_TRUE(test::waitFor([this] { return items("TaskItem").size() == 3; }));
    items("TaskItem").at(1)->forceActiveFocus();
    const auto title = [this] { return window->activeFocusItem()->property("title").toString(); };
    const std::pair<Qt::Key, QString> steps[] = {
        {Qt::Key_Delete, u"Three"_s}, {Qt::Key_Space, u"One"_s}, {Qt::Key_Delete, {}}};
    for (const auto& [key, next] : steps) {
        press(key);
        EXPECT_TRUE(test::waitFor([&, wanted = next] {
            return wanted.isEmpty() ? isIn("TaskComposer") : title() == wanted;
        })) << next.toStdString()
            << ": " << focus();
    }
    // The field that has the focus now has nothing of its own to take back, until something is typed in it.
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(model->undoText(), QString()) << focus();
    EXPECT_EQ(model->tasks().size(), 2) << "with the one that is done";
    model->deleteTask(model->tasks().first().id);
    type(u"x"_s);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_NE(model->undoText(), QString()) << "what was typed goes first";
    type(u"y"_s);
    press(Qt::Key_Escape);
    EXPECT_EQ(window->activeFocusItem()->property("text"), QString());
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(window->activeFocusItem()->property("text"), u"y"_s) << "what Escape has taken away, too";
    press(Qt::Key_Z, Qt::ControlModifier);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(model->undoText(), QString());
}

TEST_F(KeyWindow, IsWithinReachOfATerminal) {
    const AppPage page{.kind = AppPage::Kind::project, .id = root + u"/shop"_s};
    model->terminals().open(QUrl::fromLocalFile(page.id));
    const auto isInTerminal = [this] {
        const QQuickItem* focused = window->activeFocusItem();
        return focused != nullptr && focused->inherits("orv::TerminalView");
    };
    const auto goThere = [&] {
        model->setPage(page);
        // The page that was left still has its keys until it is gone.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        model->setDetailTab(DetailTab::terminal);
        return test::waitFor(isInTerminal);
    };
    constexpr Qt::KeyboardModifiers both = Qt::ControlModifier | Qt::ShiftModifier;
    const struct {
        Qt::Key ofProgram;
        Qt::KeyboardModifiers modifiers;
        Qt::Key key; ///< with both
        std::function<bool()> isThere;
    } cases[] = {
        {Qt::Key_Comma, Qt::ControlModifier, Qt::Key_Comma,
         [&] { return model->page().kind == AppPage::Kind::settings; }},
        {Qt::Key_Home, Qt::AltModifier, Qt::Key_H, [&] { return model->page() == AppPage(); }},
        {Qt::Key_F6, {}, Qt::Key_F6, [&] { return part() == "Sidebar"; }},
        {Qt::Key_J, Qt::ControlModifier, Qt::Key_J, [&] { return part() == "AgentPanel"; }},
        {Qt::Key_K, Qt::ControlModifier, Qt::Key_K, [&] { return !items("PaletteItem").isEmpty(); }},
    };
    for (const auto& it : cases) {
        ASSERT_TRUE(goThere()) << focus();
        press(it.ofProgram, it.modifiers);
        EXPECT_TRUE(isInTerminal() && model->page() == page) << it.ofProgram << " is not the program's: " << focus();
        press(it.key, both);
        EXPECT_TRUE(test::waitFor(it.isThere)) << it.key << ' ' << focus();
        press(Qt::Key_Escape);
        ASSERT_TRUE(test::waitFor([&] { return items("PaletteItem").isEmpty() && items("AgentPanel").isEmpty(); }))
            << focus();
        model->setPage({});
    }
    ASSERT_TRUE(goThere()) << focus();
    press(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_EQ(part(), "TopBar") << focus();
    press(Qt::Key_F6);
    EXPECT_TRUE(isInTerminal()) << "where one was: " << focus();
    press(Qt::Key_F10, both);
    EXPECT_TRUE(test::waitFor([this] { return !items("MenuRow").isEmpty(); })) << "its menu";
    press(Qt::Key_Escape);
    EXPECT_TRUE(test::waitFor(isInTerminal)) << focus();
}

TEST_F(KeyWindow, GoesToThePartOfAProjectThatItsKeyShows) {
    const AppPage shop{.kind = AppPage::Kind::project, .id = root + u"/shop"_s};
    model->setPage(shop);
    ASSERT_TRUE(test::waitFor([this] { return !items("ProjectPage").isEmpty(); }));
    // The page that was left still has its keys until it is gone.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (int tab = 0; tab < 6; ++tab) {
        item("Sidebar")->forceActiveFocus();
        press(Qt::Key_1 + tab, Qt::AltModifier);
        EXPECT_EQ(part(), "ProjectPage") << tab << ' ' << focus();
        EXPECT_EQ(static_cast<int>(model->detailTab()), tab);
    }
    EXPECT_TRUE(test::waitFor([this] {
        return std::ranges::any_of(
            items("FileTreeItem"), [](const QQuickItem* row) { return row->property("focused").toBool(); });
    })) << "a file, though none was chosen: "
        << focus();
    focusCard();
    press(Qt::Key_4, Qt::AltModifier);
    EXPECT_TRUE(test::waitFor([&] { return model->detailTab() == DetailTab::logs && part() == "ProjectPage"; }))
        << focus();
    EXPECT_EQ(model->page(), shop);
    press(Qt::Key_J, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return part() == "AgentPanel"; })) << focus();
    press(Qt::Key_5, Qt::AltModifier);
    EXPECT_EQ(part(), "ProjectPage") << focus();
    item("AgentComposer")->forceActiveFocus();
    press(Qt::Key_7, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return isIn("AiPage"); })) << focus();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    press(Qt::Key_5, Qt::AltModifier);
    EXPECT_EQ(window->activeFocusItem()->property("text"), QString()) << "it is no figure";
    EXPECT_TRUE(model->statusText().contains(u"5"_s));
}

TEST_F(KeyWindow, ReadsOutputBackWhileMoreComes) {
    addInstalled(u"talk"_s, "vite", "seq 200; while [ ! -e more ]; do sleep 0.01; done; echo last; sleep 100");
    scan();
    const Project talk = project(u"talk"_s);
    const ServiceID service = id(talk, ServiceKind::frontend);
    model->setPage({AppPage::Kind::project, talk.id, {}});
    model->setDetailTab(DetailTab::logs);
    ASSERT_TRUE(test::finishes(model->run(talk, {ServiceKind::frontend})));
    QQuickItem* view = nullptr;
    ASSERT_TRUE(test::waitFor([&] {
        const QList<QQuickItem*> children = item("ProjectLogs")->findChildren<QQuickItem*>();
        const auto found = std::ranges::find_if(
            children, [](const QQuickItem* child) { return child->inherits("QQuickListView") && child->isVisible(); });
        view = found != children.end() ? *found : nullptr;
        return view != nullptr && view->property("count").toInt() >= 200 && view->property("atYEnd").toBool();
    }));
    // The page may still be taking the focus to where it begins.
    ASSERT_TRUE(test::waitFor([&] {
        view->forceActiveFocus();
        press(Qt::Key_Home);
        return view->property("atYBeginning").toBool();
    }));
    tree.add(u"projects/talk/more"_s);
    ASSERT_TRUE(test::waitFor([&] { return logText(service).contains(u"last"_s); }));
    ASSERT_TRUE(test::waitFor([&] { return view->property("count").toInt() > 200; }));
    EXPECT_TRUE(view->property("atYBeginning").toBool());
    press(Qt::Key_End);
    EXPECT_TRUE(test::waitFor([&] { return view->property("atYEnd").toBool(); }));
    ASSERT_TRUE(test::finishes(model->stop(talk)));
}

TEST_F(KeyWindow, TakesNoNameForAKey) {
    QAccessible::setActive(true);
    const QString title = u"Write the Q&A page"_s;
    const QString shop = root + u"/shop"_s;
    model->addTask(title, {}, *model->project(shop));
    const std::pair<DetailTab, QByteArray> places[] = {
        {DetailTab::overview, "OverviewTasks"}, {DetailTab::tasks, "TaskItem"}};
    for (const auto& [tab, component] : places) {
        model->setPage({AppPage::Kind::project, shop, {}});
        model->setDetailTab(tab);
        ASSERT_TRUE(test::waitFor([&, name = component] { return !items(name).isEmpty() && button(title) != nullptr; }))
            << component.toStdString();
        press(Qt::Key_A, Qt::AltModifier);
        EXPECT_FALSE(model->tasks().constFirst().isDone()) << component.toStdString();
        QAccessibleInterface* told = QAccessible::queryAccessibleInterface(button(title));
        EXPECT_EQ(told->text(QAccessible::Name), title) << component.toStdString();
    }
    QAccessible::setActive(false);
}

TEST_F(KeyWindow, ShowsWhatTabCameTo) {
    window->resize(900, 640);
    for (int number = 0; number < 30; ++number) {
        model->addTask(u"Task %1"_s.arg(number), {}, *model->project(root + u"/shop"_s));
    }
    const std::pair<AppPage, QByteArray> pages[] = {
        {{AppPage::Kind::settings, {}, SettingsSection::general}, "SettingsPage"},
        {{AppPage::Kind::tasks, {}, {}}, "TaskListView"}};
    for (const auto& [page, component] : pages) {
        model->setPage(page);
        ASSERT_TRUE(test::waitFor([&, name = component] { return !items(name).isEmpty(); }));
        QQuickItem* view = item(component)->findChild<QQuickItem*>(u"view"_s);
        ASSERT_NE(view, nullptr) << component.toStdString();
        ASSERT_TRUE(test::waitFor([&] { return view->property("contentHeight").toDouble() > view->height(); }))
            << component.toStdString();
        bool hasScrolled = false;
        for (int step = 0; step < 60 && !hasScrolled; ++step) {
            press(Qt::Key_Tab);
            const QQuickItem* focused = window->activeFocusItem();
            if (focused == nullptr || !view->isAncestorOf(focused)) {
                continue;
            }
            hasScrolled = view->property("contentY").toDouble() > 0;
            const double top = focused->mapToItem(view, QPointF()).y();
            EXPECT_GE(top, 0) << component.toStdString() << " step " << step << ' ' << focus();
            EXPECT_LE(top + focused->height(), view->height())
                << component.toStdString() << " step " << step << ' ' << focus();
        }
        EXPECT_TRUE(hasScrolled) << component.toStdString();
        view->setProperty("contentY", 0);
        press(Qt::Key_PageDown);
        EXPECT_GT(view->property("contentY").toDouble(), 0) << component.toStdString();
        press(Qt::Key_PageUp);
        EXPECT_EQ(view->property("contentY").toDouble(), 0) << component.toStdString();
    }
}

} // namespace
} // namespace orv
