#include "OrvUI/AgentModels.h"
#include "OrvUI/AgentRuns.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/NewProject.h"
#include "OrvUI/Screens/PlaceKeeper.h"
#include "OrvUI/Screens/Theme.h"
#include "tests/Screens/MainWindow.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include <algorithm>
#include <functional>

namespace orv {
namespace {

using namespace Qt::StringLiterals;

using test::MainWindow;

TEST_F(MainWindow, LaysItsColumnsOutByTheWidth) {
    for (int number = 0; number < 30; ++number) {
        addInstalled(u"p%1"_s.arg(number), "vite", "");
    }
    scan();
    open(QSize(1280, 832));
    struct Case {
        int width;
        int columns;
        bool rail;
        double sidebar;
    };
    const Case cases[] = {{760, 2, true, 72},    {900, 2, true, 72},    {999, 2, true, 72},    {1000, 2, false, 240},
                          {1280, 3, false, 240}, {1520, 3, false, 256}, {1720, 4, false, 256}, {2560, 4, false, 256}};
    for (const Case& it : cases) {
        window->resize(it.width, 832);
        const QQuickItem* page = item("HomePage");
        const QQuickItem* sidebar = item("Sidebar");
        EXPECT_TRUE(test::waitFor([&] {
            return page->property("columns").toInt() == it.columns && sidebar->width() == it.sidebar;
        })) << it.width
            << ": " << page->property("columns").toInt() << " columns beside " << sidebar->width();
        EXPECT_EQ(sidebar->property("rail").toBool(), it.rail) << it.width;
        EXPECT_EQ(items("OutlineRow").isEmpty(), it.rail) << it.width;
        const double limit = it.width - Theme::panelInset - Theme::pagePaddingNarrow;
        const auto fits = [&] {
            const QList<QQuickItem*> cards = items("ProjectCard");
            return std::ranges::all_of(cards, [&](const QQuickItem* card) {
                return card->width() >= 296 && card->mapToScene(QPointF(card->width(), 0)).x() <= limit;
            });
        };
        EXPECT_TRUE(test::waitFor(fits)) << it.width;
    }
}

TEST_F(MainWindow, MakesOnlyTheCardsThatCanBeSeen) {
    for (int number = 0; number < 200; ++number) {
        addInstalled(u"p%1"_s.arg(number), "vite", "");
    }
    scan();
    open(QSize(1280, 832));
    EXPECT_TRUE(test::waitFor([this] { return !items("ProjectCard").isEmpty(); }));
    EXPECT_LE(items("ProjectCard").size(), 27);
}

TEST_F(MainWindow, ShowsTheProjectsThatComeIntoViewOnTheCardsThatLeaveIt) {
    for (int number = 0; number < 200; ++number) {
        addInstalled(u"p%1"_s.arg(number), "vite", test::up(4000));
    }
    scan();
    open(QSize(1280, 832));
    QQuickItem* grid = item("HomePage")->findChild<QQuickItem*>(u"cardGrid"_s);
    ASSERT_NE(grid, nullptr);
    ASSERT_TRUE(test::waitFor([this] { return !items("ProjectCard").isEmpty(); }));
    const auto& rows = model->home().homeCards;
    // Each card tells of the row that its place in the grid stands for.
    const auto tells = [&](const QQuickItem* card, const char* property, const QVariant& expected) {
        return card->property(property) == expected;
    };
    const auto allTell = [&] {
        const QList<QQuickItem*> cards = items("ProjectCard");
        QSet<int> shown;
        for (const QQuickItem* card : cards) {
            const int index = card->property("index").toInt();
            const CardRow& row = rows.rows()[index];
            if (shown.contains(index) || !tells(card, "projectID", row.key) || !tells(card, "name", row.name) ||
                !tells(card, "pinned", row.isPinned) || !tells(card, "cardState", row.cardState)) {
                return false;
            }
            shown.insert(index);
        }
        return !cards.isEmpty();
    };
    QSet<QQuickItem*> seen;
    for (int step = 0; step < 40; ++step) {
        const double by = step < 20 ? 300 : -300;
        grid->setProperty("contentY", grid->property("contentY").toDouble() + by);
        ASSERT_TRUE(test::waitFor(allTell)) << step;
        const QList<QQuickItem*> cards = items("ProjectCard");
        seen.unite({cards.begin(), cards.end()});
    }
    EXPECT_LE(seen.size(), 36) << "a card was made for what another one could have shown";

    const QString first = rows.rows()[0].key;
    model->togglePinFor(first);
    EXPECT_TRUE(test::waitFor([&] { return rows.rows()[0].isPinned && allTell(); })) << "a change reaches the card";
    model->toggleProject(first);
    EXPECT_TRUE(test::waitFor([&] { return rows.rows()[0].cardState == u"running" && allTell(); }));
    model->setSearchText(u"p19"_s);
    EXPECT_TRUE(test::waitFor([&] { return items("ProjectCard").size() == 11 && allTell(); })) << "rows went";
    model->setSearchText({});
    const auto isShown = [&](const QString& id) {
        return std::ranges::any_of(
            items("ProjectCard"), [&](const QQuickItem* card) { return tells(card, "projectID", id); });
    };
    EXPECT_TRUE(test::waitFor([&] { return isShown(first) && allTell(); })) << "rows came";
}

TEST_F(MainWindow, ClosesTheMenuOfAProjectThatIsShownNoMore) {
    for (int number = 0; number < 60; ++number) {
        addInstalled(u"p%1"_s.arg(number), "vite", "");
    }
    scan();
    open(QSize(1280, 832));
    const auto scrollTo = [this](double place) {
        item("HomePage")->findChild<QQuickItem*>(u"cardGrid"_s)->setProperty("contentY", place);
    };
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"lent to another project", [&] { scrollTo(1500); }},
        {"scrolled by the wheel",
         [this] {
             const QPointF place(window->width() / 2.0, window->height() / 2.0);
             QWheelEvent event(
                 place, window->mapToGlobal(place), {}, QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                 Qt::NoScrollPhase, false);
             QCoreApplication::sendEvent(window, &event);
         }},
        {"gone from the list", [&] { model->setSearchText(u"p59"_s); }},
        {"another page", [&] { model->setPage({.kind = AppPage::Kind::tasks, .id = {}}); }},
    };
    for (const ViewMode mode : {ViewMode::cards, ViewMode::folders}) {
        model->changeSettings([&](AppSettings& settings) { settings.viewMode = mode; });
        for (const auto& [way, goes] : ways) {
            const QByteArray place = mode == ViewMode::cards ? "ProjectCard" : "FolderRow";
            QQuickItem* card = nullptr;
            ASSERT_TRUE(test::waitFor([&] {
                const QList<QQuickItem*> cards = items(place);
                // The first one is the grid's current one, which keeps its card.
                const auto second = std::ranges::find_if(
                    cards, [](const QQuickItem* each) { return each->property("index").toInt() == 1; });
                card = second != cards.end() ? *second : nullptr;
                return cards.size() > 1 && card != nullptr;
            })) << way;
            const QPointF corner = card->mapToScene(QPointF(card->width() / 2, 8));
            QTest::mouseClick(window, Qt::RightButton, {}, corner.toPoint());
            ASSERT_TRUE(test::waitFor([this] { return items("MenuRow").size() > 3; })) << way;
            goes();
            EXPECT_TRUE(test::waitFor([this] { return items("MenuRow").isEmpty(); })) << way << ' ' << place.data();
            model->setPage({});
            model->setSearchText({});
            ASSERT_TRUE(test::waitFor([this] { return !items("HomePage").isEmpty(); }));
            scrollTo(item("HomePage")->findChild<QQuickItem*>(u"cardGrid"_s)->property("originY").toDouble());
        }
    }
}

TEST_F(MainWindow, ShowsWhatTheModelWantsToBeReadFirst) {
    open(QSize(1280, 832));
    const auto message = [this] {
        const QList<QQuickItem*> texts = items("EvenLabel") + items("Label");
        QStringList shown;
        for (const QQuickItem* text : texts) {
            if (const QString words = text->property("text").toString(); words.startsWith(u"Modal")) {
                shown.append(words);
            }
        }
        return shown.join(u'|');
    };
    for (const QString& title : {u"Modal one"_s, u"Modal two"_s}) {
        model->setModal(ModalContent{title, u"Modal words"_s});
        EXPECT_TRUE(test::waitFor([&] { return message() == title + u"|Modal words"_s; })) << message().toStdString();
        model->setModal(ModalContent{title, u"Modal, other words"_s});
        EXPECT_TRUE(test::waitFor([&] { return message() == title + u"|Modal, other words"_s; }));
        EXPECT_TRUE(test::waitFor([this] { return window->activeFocusItem() == button(u"OK"_s); })) << focus();
        press(title == u"Modal one" ? Qt::Key_Return : Qt::Key_Escape);
        EXPECT_TRUE(test::waitFor([&] { return message().isEmpty(); })) << message().toStdString();
        EXPECT_EQ(model->modal(), std::nullopt);
    }
}

TEST_F(MainWindow, ShowsSkeletonsUntilTheFirstScanEnds) {
    open(QSize(1280, 832));
    EXPECT_FALSE(items("Skeleton").isEmpty());
    EXPECT_TRUE(items("EmptyState").isEmpty());
    scan();
    EXPECT_TRUE(test::waitFor([this] { return items("Skeleton").isEmpty() && !items("EmptyState").isEmpty(); }));
    const auto says = [this](const QString& heading) {
        return test::waitFor([&] {
            const QList<QQuickItem*> states = items("EmptyState");
            return !states.isEmpty() && states.first()->property("heading") == heading;
        });
    };
    EXPECT_TRUE(says(u"Nothing here yet"_s));
    ASSERT_TRUE(QDir().rmdir(root));
    scan();
    EXPECT_TRUE(says(u"The projects folder is missing"_s));
    ASSERT_TRUE(QDir().mkdir(root));
    scan();
    EXPECT_TRUE(says(u"Nothing here yet"_s));
}

TEST_F(MainWindow, TakesTheColoursOfTheThemeAtOnce) {
    open(QSize(1280, 832));
    Theme* theme = Theme::instance();
    for (const bool dark : {false, true}) {
        for (int index = 4; index >= 0; --index) {
            theme->setDark(dark);
            theme->setTheme(index);
            EXPECT_EQ(window->color(), theme->sidebar()) << index << dark;
        }
    }
}

TEST_F(MainWindow, KeepsTheCardsInPlaceWhenAShelfComesWhileScrolledDown) {
    for (int number = 0; number < 60; ++number) {
        addInstalled(u"p%1"_s.arg(number), "vite", test::up(4000));
    }
    scan();
    open(QSize(1280, 832));
    QQuickItem* grid = item("HomePage")->findChild<QQuickItem*>(u"cardGrid"_s);
    ASSERT_NE(grid, nullptr);
    const auto offset = [&] { return grid->property("contentY").toDouble() - grid->property("originY").toDouble(); };
    const auto shelves = [this] { return items("RunningItem").size(); };
    model->toggleProject(root + u"/p0"_s);
    ASSERT_TRUE(test::waitFor([&] { return shelves() == 1; }));
    EXPECT_EQ(offset(), 0) << "at the top what is new is seen";
    model->stopProject(root + u"/p0"_s);
    ASSERT_TRUE(test::waitFor([&] { return shelves() == 0; }));
    grid->setProperty("contentY", grid->property("contentY").toDouble() + 900);
    const auto place = [&] { return items("ProjectCard").constFirst()->mapToScene(QPointF()).y(); };
    const double before = place();
    const double offsetBefore = offset();
    model->toggleProject(root + u"/p0"_s);
    ASSERT_TRUE(test::waitFor([&] { return offset() != offsetBefore; }));
    EXPECT_EQ(place(), before);
}

TEST_F(MainWindow, SetsTheFocusIntoTheSheetAndBack) {
    addNode(u"shop"_s, "vite", test::up(4001));
    scan();
    open(QSize(1280, 832));
    QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return model->setupActive() && !items("SetupStep").isEmpty(); }));
    EXPECT_TRUE(test::waitFor([this] {
        const QQuickItem* focused = window->activeFocusItem();
        return focused != nullptr && focused->property("text") == u"Install and run"_s;
    }));
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(model->setupActive());
    EXPECT_TRUE(test::waitFor([this] { return item("ProjectCard")->hasActiveFocus(); }))
        << "the focus is at " << window->activeFocusItem()->metaObject()->className();
}

TEST_F(MainWindow, PutsAsideWhatTakesItsTime) {
    addNode(u"shop"_s, "vite", test::up(4001));
    const QString server =
        tree.add(u"server"_s, "#!/bin/sh\nuntil [ -e " + tree.path(u"go"_s).toUtf8() + " ]; do sleep 0.02; done\n");
    ASSERT_TRUE(QFile::setPermissions(server, QFile::ReadOwner | QFile::ExeOwner));
    addScript(u"shop"_s, u"npm-install.sh"_s, "echo down; " + server.toUtf8() + "; exit 3\n");
    const test::ScopedEnvironment ssh("GIT_SSH_COMMAND", server.toUtf8().constData());
    scan();
    open(QSize(1280, 832));
    const auto says = [this](const QString& words) {
        return test::waitFor([&] {
            return std::ranges::any_of(items("Line"), [&](const QQuickItem* line) {
                return line->property("text").toString().startsWith(words);
            });
        });
    };
    const auto isShown = [this](const QByteArray& part, bool isExpected) {
        return test::waitFor([&] { return items(part).isEmpty() != isExpected; });
    };
    const auto lineFor = [this](const QString& name) {
        for (QQuickItem* line : items("Line")) {
            if (line->property("text").toString().contains(name)) {
                return line;
            }
        }
        return window->contentItem();
    };
    ASSERT_TRUE(isShown("ProjectCard", true));
    press(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return window->activeFocusItem() == button(u"Install and run"_s); })) << focus();
    press(Qt::Key_Return);
    ASSERT_TRUE(test::waitFor([this] { return window->activeFocusItem() == button(u"Hide"_s); })) << focus();
    press(Qt::Key_Escape);
    EXPECT_TRUE(says(u"Setting up shop… 0 of 1 done"_s));
    EXPECT_TRUE(isShown("SetupStep", false));
    press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(isShown("FormField", true));
    ASSERT_TRUE(test::waitFor([this] { return window->activeFocusItem()->inherits("QQuickTextInput"); })) << focus();
    type(u"ssh://host/site"_s);
    press(Qt::Key_Return);
    ASSERT_TRUE(test::waitFor([this] { return model->newProject()->isBusy(); }));
    press(Qt::Key_Escape);
    EXPECT_TRUE(says(u"Cloning site…"_s));
    EXPECT_TRUE(isShown("FormField", false));
    // Both come back as they were.
    click(button(u"Show"_s, lineFor(u"site"_s)));
    EXPECT_TRUE(isShown("FormField", true));
    EXPECT_TRUE(test::waitFor([this] { return window->activeFocusItem() == button(u"Hide"_s); })) << focus();
    press(Qt::Key_Return);
    EXPECT_TRUE(isShown("FormField", false));
    click(button(u"Show"_s, lineFor(u"shop"_s)));
    EXPECT_TRUE(isShown("SetupStep", true));
    press(Qt::Key_Escape);
    ASSERT_TRUE(isShown("SetupStep", false));
    // What is in the way goes, and comes back with what is asked for; an end is told all the same.
    const auto dismisses = [&](const QString& name) {
        click(button(u"Dismiss"_s, lineFor(name)));
        return test::waitFor([&] { return lineFor(name) == window->contentItem(); });
    };
    EXPECT_TRUE(dismisses(u"site"_s));
    press(Qt::Key_N, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([this] { return window->activeFocusItem() == button(u"Hide"_s); })) << focus();
    press(Qt::Key_Escape);
    EXPECT_TRUE(says(u"Cloning site…"_s));
    EXPECT_TRUE(isShown("FormField", false));
    EXPECT_TRUE(dismisses(u"shop"_s));
    EXPECT_TRUE(model->newProject()->isBusy());
    const QQuickItem* before = window->activeFocusItem();
    tree.add(u"go"_s);
    EXPECT_TRUE(says(u"Setting up shop stopped: Exited with code 3: down"_s));
    EXPECT_TRUE(says(u"site was not cloned: "_s));
    EXPECT_EQ(window->activeFocusItem(), before) << "nobody is disturbed: " << focus();
    click(button(u"Show"_s, lineFor(u"site"_s)));
    EXPECT_TRUE(isShown("FormField", true));
    EXPECT_FALSE(model->newProject()->error().isEmpty()) << "it still says why";
    press(Qt::Key_Escape);
    ASSERT_TRUE(isShown("FormField", false));
    click(button(u"Show"_s, lineFor(u"shop"_s)));
    EXPECT_TRUE(test::waitFor([this] { return window->activeFocusItem() == button(u"Try again"_s); })) << focus();
}

TEST_F(MainWindow, IsThePagesAgainAsSoonAsASheetCloses) {
    addInstalled(u"shop"_s, "vite", "");
    scan();
    open(QSize(1280, 832));
    ASSERT_TRUE(test::waitFor([this] { return !items("ProjectCard").isEmpty(); }));
    press(Qt::Key_Right);
    const QQuickItem* before = window->activeFocusItem();
    press(Qt::Key_N, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] {
        const QList<QQuickItem*> fields = items("FormField");
        return !fields.isEmpty() && window->activeFocusItem()->inherits("QQuickTextInput");
    })) << focus();
    press(Qt::Key_Escape);
    EXPECT_EQ(window->activeFocusItem(), before) << focus();
    press(Qt::Key_6, Qt::ControlModifier);
    EXPECT_EQ(model->page().kind, AppPage::Kind::tasks);

    const QSignalSpy answers(window, SIGNAL(quitAnswered(int)));
    QMetaObject::invokeMethod(window, "askToQuit", Q_ARG(QVariant, u"1 service"_s), Q_ARG(QVariant, true));
    ASSERT_TRUE(test::waitFor([this] { return button(u"Cancel"_s) != nullptr && items("FormField").isEmpty(); }));
    QQuickItem* cancel = button(u"Cancel"_s);
    click(cancel);
    click(cancel);
    EXPECT_EQ(answers.count(), 1) << "one answer is enough";
    for (const QString& letter : {u"a"_s, u"b"_s}) {
        click(named("SidebarRow", u"AI"_s));
        EXPECT_EQ(model->page().kind, AppPage::Kind::ai);
        type(letter);
    }
    EXPECT_EQ(window->activeFocusItem()->property("text"), u"ab"_s) << "by a click on the page that is shown, too";
}

TEST_F(MainWindow, LeavesTheKeyboardWhereOneTypes) {
    addInstalled(u"shop"_s, "vite", "");
    open(QSize(1280, 832));
    PlaceKeeper places(*model);
    WindowState last;
    last.page = {.kind = AppPage::Kind::project, .id = root + u"/shop"_s};
    places.restore(last, PlaceKeeper::Page::asItWas);
    press(Qt::Key_F, Qt::ControlModifier);
    type(u"sh"_s);
    scan();
    EXPECT_EQ(model->page(), AppPage()) << "what was open the last time comes too late";
    type(u"op"_s);
    EXPECT_TRUE(test::waitFor([this] { return model->searchText() == u"shop"; })) << focus();

    press(Qt::Key_K, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return !items("CommandPalette").isEmpty() || focus().contains("Overlay"); }));
    model->setPage(last.page);
    ASSERT_TRUE(test::waitFor([this] { return !items("ProjectPage").isEmpty(); }));
    type(u"set"_s);
    EXPECT_EQ(window->activeFocusItem()->property("text"), u"set"_s) << focus();
    press(Qt::Key_Escape);
    EXPECT_TRUE(test::waitFor([this] { return item("PageStack")->hasActiveFocus(); })) << focus();
}

TEST_F(MainWindow, TalksToAnAgentBesideThePage) {
    const QByteArray answer = "All done" + QByteArray("\\n- and this").repeated(60);
    const QString agent = tree.add(
        u"bin/claude"_s,
        "#!/bin/sh\ncat <<'END'\n{\"type\":\"result\",\"subtype\":\"success\",\"is_error\":false,\"result\":\"" +
            answer + "\",\"session_id\":\"s\",\"total_cost_usd\":0.5}\nEND\n");
    ASSERT_TRUE(QFile::setPermissions(agent, QFile::ReadOwner | QFile::ExeOwner));
    addInstalled(u"shop"_s, "vite", "");
    scan();
    open(QSize(1280, 832));
    model->setPage({.kind = AppPage::Kind::project, .id = root + u"/shop"_s});
    ASSERT_TRUE(test::waitFor([this] { return !items("ProjectPage").isEmpty(); }));
    const double wide = item("ProjectPage")->width();
    QTest::keyClick(window, Qt::Key_J, Qt::ControlModifier);
    ASSERT_TRUE(test::waitFor([this] { return !items("AgentPanel").isEmpty(); }));
    EXPECT_EQ(item("ProjectPage")->width(), wide - Theme::agentPanelWidth);
    EXPECT_EQ(model->aiPanelProjectID(), root + u"/shop"_s);

    const auto says = [this](const char* words, qsizetype turns) {
        for (const char* letter = words; *letter != 0; ++letter) {
            QTest::keyClick(window, *letter);
        }
        turns == 1 ? press(Qt::Key_Return, Qt::ControlModifier)
                   : press(Qt::Key_Enter, Qt::ControlModifier | Qt::KeypadModifier);
        return test::waitFor([this, turns] {
            const QList<QQuickItem*> found = items("AgentTurn");
            return found.size() == turns && found.last()->property("runState") == u"succeeded"_s;
        });
    };
    ASSERT_TRUE(says("Fix it", 1)) << items("AgentTurn").size() << ' ' << focus() << ' '
                                   << model->agentError().value_or(QString()).toStdString();
    const QString whole = QString::fromLatin1(answer).replace(u"\\n"_s, u"\n"_s);
    EXPECT_EQ(item("AgentTurn")->property("answer"), whole);
    // Where it stands settles with some frames.
    const auto push = [this](const QString& text) {
        return test::waitFor([&] {
            QQuickItem* found = button(text);
            return found != nullptr && QMetaObject::invokeMethod(found, "clicked");
        });
    };
    ASSERT_TRUE(test::waitFor([this] { return button(u"Show all"_s) != nullptr; }));
    const double cut = item("AgentAnswer")->height();
    EXPECT_TRUE(push(u"Copy the answer"_s));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), whole);
    EXPECT_TRUE(push(u"Show all"_s));
    EXPECT_TRUE(test::waitFor([&] { return item("AgentAnswer")->height() > 1.3 * cut; }));
    const auto isAtEnd = [this] {
        const QList<QQuickItem*> parts = item("AgentPanel")->childItems();
        return std::ranges::any_of(parts, [](QQuickItem* part) {
            return part->property("atEnd").toBool() && part->property("atYEnd").toBool();
        });
    };
    EXPECT_FALSE(isAtEnd()) << "it is read from its beginning";
    click(item("AgentComposer"));
    EXPECT_EQ(item("AgentTurn")->property("cost"), u"$0.50"_s);
    ASSERT_TRUE(says("More", 2));
    EXPECT_TRUE(test::waitFor(isAtEnd)) << "what is said last is looked at";
    EXPECT_EQ(model->agentRuns().first()->facts().parentID, model->agentRuns().last()->facts().id);

    // In a narrow window it stands over the page.
    window->resize(900, 832);
    EXPECT_TRUE(test::waitFor([this] { return item("AgentPanel")->property("floating").toBool(); }));
    EXPECT_GT(item("ProjectPage")->width(), 800);
    for (const char letter : QByteArrayView("not sent")) {
        QTest::keyClick(window, letter);
    }
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(test::waitFor([this] { return items("AgentPanel").isEmpty(); }));
    EXPECT_FALSE(model->aiPanelProjectID());
    QTest::keyClick(window, Qt::Key_J, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([this] { return items("AgentTurn").size() == 2; })) << "it comes back as it was";
    const auto isTyped = [this] { return window->activeFocusItem()->property("text") == u"not sent"_s; };
    EXPECT_TRUE(test::waitFor(isTyped)) << focus();
    EXPECT_EQ(window->activeFocusItem()->property("cursorPosition"), 8) << "one goes on typing";
}

TEST_F(MainWindow, KeepsTheDecisionOfAReviewInSight) {
    const QString agent = tree.add(
        u"bin/claude"_s,
        "#!/bin/sh\nfor i in 1 2 3 4 5 6 7 8; do seq 40 >$i.txt; done\n"
        "echo '{\"type\":\"result\",\"subtype\":\"success\",\"is_error\":false,\"result\":\"Done\"}'\n");
    ASSERT_TRUE(QFile::setPermissions(agent, QFile::ReadOwner | QFile::ExeOwner));
    addInstalled(u"shop"_s, "vite", "");
    QProcess git;
    git.setWorkingDirectory(root + u"/shop"_s);
    git.start(u"sh"_s, {u"-c"_s, u"git init -q && git add -A && git -c user.name=A -c user.email=a@b commit -qm 1"_s});
    ASSERT_TRUE(git.waitForFinished() && git.exitCode() == 0) << git.readAllStandardError().constData();
    ASSERT_TRUE(model->settings().change([](AppSettings& settings) { settings.agentWorktrees = true; }));
    scan();
    open(QSize(1000, Theme::minimumHeight));
    const AgentRun* run = model->startAgent(AgentKind::claude, u"Count"_s, project(u"shop"_s));
    ASSERT_NE(run, nullptr);
    ASSERT_TRUE(test::finishes(model->agentRunner().settled(run)));
    ASSERT_TRUE(test::waitFor([this] { return !items("WindowSheets").isEmpty(); })) << "the sheets come a moment later";
    model->agentModels()->review(run->facts().id.toString(QUuid::WithoutBraces));
    ASSERT_TRUE(test::waitFor([this] { return items("ReviewFile").size() > 4 && items("DiffLine").size() > 4; }))
        << items("ReviewFile").size() << ' ' << items("DiffLine").size();
    const QQuickItem* decision = button(u"Throw away"_s);
    ASSERT_NE(decision, nullptr);
    EXPECT_TRUE(test::waitFor([&] {
        const double bottom = decision->mapToScene(QPointF(0, decision->height())).y();
        return bottom <= Theme::minimumHeight - Theme::space16 - Theme::space24;
    })) << decision->mapToScene(QPointF()).y();
}

TEST_F(MainWindow, ShowsEveryPageAndSection) {
    addInstalled(u"client/harbor"_s, "vite", test::up(4003));
    addInstalled(u"client/wharf"_s, "vite", test::up(4004));
    tree.add(u"projects/client/harbor/.git/HEAD"_s, "ref: refs/heads/main\n");
    tree.add(u"projects/client/wharf/.git/HEAD"_s, "ref: refs/heads/main\n");
    scan();
    open(QSize(1280, 832));
    const auto shows = [this](const QByteArray& component) {
        EXPECT_TRUE(test::waitFor([&] { return !items(component).isEmpty(); })) << component.toStdString();
    };
    AppPage page;
    page.kind = AppPage::Kind::settings;
    for (const QByteArray section :
         {"SettingsProfile", "SettingsGit", "SettingsAi", "SettingsAppearance", "SettingsNotifications",
          "SettingsGeneral", "SettingsProjects"}) {
        model->setPage(page);
        shows(section);
        page.section = static_cast<SettingsSection>(static_cast<int>(page.section) + 1);
    }
    EXPECT_EQ(items("OverrideItem").size(), 2);
    model->setPage({AppPage::Kind::project, root + u"/client/harbor"_s, {}});
    shows("ServiceRow");
    EXPECT_TRUE(items("ProjectCard").isEmpty());
    for (const int width : {760, 1000, 1720}) {
        window->resize(width, 832);
        EXPECT_TRUE(test::waitFor([&] { return items("RunButton").isEmpty() == (width >= 1000); })) << width;
    }
    for (const auto& [tab, component] :
         {std::pair{DetailTab::tasks, "TaskComposer"},
          {DetailTab::terminal, "TerminalPage"},
          {DetailTab::logs, "ProjectLogs"},
          {DetailTab::overview, "ServiceRow"}}) {
        model->setDetailTab(tab);
        shows(component);
    }
    QTest::keyClick(window, Qt::Key_Left, Qt::AltModifier);
    shows("OverrideItem");
    model->addTask(u"Upgrade"_s, u"after the release"_s, *model->project(root + u"/client/harbor"_s));
    QTest::keyClick(window, Qt::Key_6, Qt::ControlModifier);
    shows("TaskItem");
    QTest::keyClick(window, Qt::Key_7, Qt::ControlModifier);
    shows("AgentComposer");
    shows("AgentListItem");
    click(button(u"Choose a project"_s));
    EXPECT_TRUE(test::waitFor([this] {
        const QQuickItem* field = window->activeFocusItem();
        return field != nullptr && field->property("placeholderText").toString() == u"Find a project"_s;
    })) << focus();
    type(u"harb"_s);
    press(Qt::Key_Return);
    EXPECT_TRUE(test::waitFor([this] { return button(u"harbor"_s, item("AgentComposer")) != nullptr; }));
    EXPECT_TRUE(test::waitFor([this] {
        const QQuickItem* text = window->activeFocusItem();
        return text != nullptr && text->inherits("QQuickTextArea");
    })) << focus();
    QTest::keyClick(window, Qt::Key_N, Qt::ControlModifier);
    shows("FormField");
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(test::waitFor([this] { return items("FormField").isEmpty(); }));
    model->setPage({AppPage::Kind::collection, root + u"/client"_s, {}});
    EXPECT_TRUE(test::waitFor([this] { return items("ProjectCard").size() == 2; }));
    QTest::keyClick(window, Qt::Key_Home, Qt::AltModifier);
    shows("HomeHeader");
}

TEST_F(MainWindow, CopiesWhatHelpsOthersToHelpAndNamesNobody) {
    addInstalled(u"client/confidential"_s, "vite", "");
    scan();
    open(QSize(1280, 832));
    press(Qt::Key_K, Qt::ControlModifier);
    EXPECT_TRUE(test::waitFor([this] { return !items("PaletteItem").isEmpty(); }));
    type(u"copy diag"_s);
    press(Qt::Key_Return);
    const auto copied = [] { return QGuiApplication::clipboard()->text(); };
    ASSERT_TRUE(test::waitFor([&] { return copied().startsWith(u"OrvLauncher: "_s); })) << copied().toStdString();
    for (const QString& line :
         {u"\nQt: %1\n"_s.arg(QString::fromLatin1(qVersion())), u"\nDisplays: offscreen"_s,
          u"\nProjects: 1 with 1 services, 0 active\n"_s, u"\nAgents: "_s}) {
        EXPECT_TRUE(copied().contains(line)) << line.toStdString() << " in " << copied().toStdString();
    }
    EXPECT_FALSE(copied().contains(u"confidential"_s) || copied().contains(root)) << copied().toStdString();
}

} // namespace
} // namespace orv
