#include "OrvTerminal/TerminalTabs.h"
#include "OrvTerminal/View/ProgramsClipboard.h"
#include "OrvTerminal/View/TerminalView.h"
#include "OrvUI/Screens/Registration.h"
#include "OrvUI/Screens/TerminalLook.h"
#include "OrvUI/Screens/TerminalTabList.h"
#include "OrvUI/Screens/Theme.h"
#include "OrvUI/TerminalTyping.h"
#include "tests/Screens/MainWindow.h"
#include "tests/support/TestSupport.h"

#include <QAbstractItemModelTester>
#include <QClipboard>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <functional>

namespace orv {
namespace {

using namespace Qt::StringLiterals;
using test::MainWindow;
using test::waitFor;

constexpr char windowOfThePage[] = R"(
import OrvLauncher.Screens
import QtQuick

Window {
    id: root

    required property TerminalTabs tabs
    property string hint

    width: 800
    height: 500
    visible: true

    TerminalPage {
        anchors.fill: parent
        focus: true
        tabs: root.tabs
        folder: "file:///tmp"
        folderName: "shop"
        onHinted: text => root.hint = text
    }
}
)";

QStringList* pageWarnings = nullptr;

void collectWarnings(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    Q_UNUSED(context)
    if (type != QtDebugMsg && type != QtInfoMsg) {
        pageWarnings->append(text);
    }
}

class TerminalPage : public ::testing::Test {
protected:
    TerminalPage() {
        for (const QString& name : {u".zshrc"_s, u".profile"_s}) {
            home.add(name, "PS1='ready> '\n");
        }
        pageWarnings = &warnings;
        before = qInstallMessageHandler(collectWarnings);
        QObject::connect(&tabs, &TerminalTabs::clipboardWriteRequested, &tabs, &putOnClipboard);
        registerScreens(*engine);
        engine->setInitialProperties({{u"tabs"_s, QVariant::fromValue(&tabs)}});
        engine->loadData(windowOfThePage);
        window = qobject_cast<QQuickWindow*>(engine->rootObjects().value(0));
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    }

    ~TerminalPage() override {
        engine.reset();
        tabs.closeAll();
        qInstallMessageHandler(before);
        EXPECT_EQ(warnings, QStringList());
    }

    /// A visible item with this text or name.
    [[nodiscard]] QQuickItem* shown(const QString& text, QQuickItem* below = nullptr) const {
        for (QQuickItem* item : (below != nullptr ? below : window->contentItem())->childItems()) {
            if (!item->isVisible()) {
                continue;
            }
            if (item->property("text").toString() == text) {
                return item;
            }
            if (QQuickItem* found = shown(text, item)) {
                return found;
            }
        }
        return nullptr;
    }

    /// Items of a component, from left to right.
    [[nodiscard]] QList<QQuickItem*> items(const QByteArray& component) const {
        QList<QQuickItem*> found;
        const std::function<void(QQuickItem*)> collect = [&](QQuickItem* item) {
            if (QByteArray(item->metaObject()->className()).startsWith(component + "_QMLTYPE")) {
                found.append(item);
            }
            std::ranges::for_each(item->childItems(), collect);
        };
        collect(window->contentItem());
        std::ranges::sort(found, {}, &QQuickItem::x);
        return found;
    }

    /// Whether something below turns, which is a frame after the other.
    [[nodiscard]] static bool turns(const QQuickItem* below) {
        const auto isTurning = [](const QObject* one) {
            return one->inherits("QQuickRotationAnimator") && one->property("running").toBool();
        };
        return std::ranges::any_of(below->children(), isTurning) || std::ranges::any_of(below->childItems(), turns);
    }

    /// Where it stands once it is laid out.
    void click(const QString& text) {
        QPoint middle;
        ASSERT_TRUE(waitFor([&] {
            QQuickItem* item = shown(text);
            middle =
                item == nullptr ? QPoint() : item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
            return item != nullptr && QRect(QPoint(), window->size()).contains(middle);
        })) << text.toStdString();
        QTest::mouseClick(window, Qt::LeftButton, {}, middle);
    }

    test::TemporaryTree home;
    test::ScopedEnvironment homeSetting{"HOME", home.path().toUtf8().constData()};
    test::ScopedEnvironment zshFolder{"ZDOTDIR", nullptr};
    QStringList warnings;
    QtMessageHandler before = nullptr;
    TerminalTabs tabs;
    std::unique_ptr<QQmlApplicationEngine> engine = std::make_unique<QQmlApplicationEngine>();
    QQuickWindow* window = nullptr;
};

TEST_F(TerminalPage, OpensTerminalsAndClosesThem) {
    EXPECT_NE(shown(u"Run things by hand"_s), nullptr);
    EXPECT_NE(shown(u"Open a real terminal in shop"_s), nullptr);
    click(u"New terminal in shop"_s);
    ASSERT_EQ(tabs.sessions().size(), 1);
    TerminalSession* session = tabs.sessions().constFirst();
    EXPECT_EQ(session->directory(), QUrl(u"file:///tmp"_s));
    EXPECT_EQ(shown(u"Run things by hand"_s), nullptr);
    ASSERT_TRUE(waitFor([&] { return session->outputForTesting().contains(u"ready>"_s); }));
    auto* view = qobject_cast<TerminalView*>(session->terminalView());
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(waitFor([&] { return view->hasActiveFocus(); })) << "keys go to the shell at once";

    QTest::keyClick(window, Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(tabs.sessions().size(), 2);
    EXPECT_EQ(tabs.selectedID(), tabs.sessions().at(1)->id());
    EXPECT_EQ(view->parentItem(), nullptr) << "the other view is shown now";
    QTest::keyClick(window, Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(tabs.selectedID(), session->id());
    EXPECT_TRUE(waitFor([&] { return view->hasActiveFocus(); }));
    const auto names = [this] {
        QStringList all;
        for (const QQuickItem* tab : items("TerminalTab")) {
            all.append(tab->property("name").toString());
        }
        return all.join(u'|');
    };
    EXPECT_TRUE(waitFor([&] { return names() == u"tmp, 1 of 2|tmp, 2 of 2"; })) << names().toStdString();
    session->send(u"cd /usr\n"_s);
    ASSERT_TRUE(waitFor([&] { return session->currentDirectory() == QUrl(u"file:///usr"_s); }));
    tabs.select(tabs.sessions().at(1)->id());
    EXPECT_EQ(names(), u"tmp, 1 of 2, in usr|tmp, 2 of 2"_s);
    tabs.select(session->id());

    // A program that runs is asked about; Escape keeps it.
    session->send(u"cat\n"_s);
    ASSERT_TRUE(waitFor([&] { return session->hasForegroundProgram(); }));
    const QString question = u"A program still runs in this terminal."_s;
    QTest::keyClick(window, Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(waitFor([&] { return shown(question) != nullptr; }));
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(waitFor([&] { return shown(question) == nullptr && view->hasActiveFocus(); }));
    EXPECT_EQ(tabs.sessions().size(), 2);
    const auto ask = [&] {
        QTest::keyClick(window, Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_TRUE(waitFor([&] { return shown(question) != nullptr; }));
    };
    // The question is of its tab only.
    ask();
    tabs.select(tabs.sessions().at(1)->id());
    EXPECT_EQ(shown(question), nullptr);
    ASSERT_TRUE(waitFor([&] { return session->isBusy(); }));
    EXPECT_FALSE(turns(window->contentItem())) << "a program may run for days";
    session->terminal().feed("\x1b]9;4;3\x07");
    EXPECT_TRUE(waitFor([&] { return turns(window->contentItem()); })) << "it says that it is at work";
    session->terminal().feed("\x1b]9;4;0\x07");
    EXPECT_TRUE(waitFor([&] { return !turns(window->contentItem()); }));
    tabs.select(session->id());
    EXPECT_TRUE(waitFor([&] { return shown(question) != nullptr; }));
    // The program ends before anyone answers.
    session->send(u"\x04"_s);
    EXPECT_TRUE(waitFor([&] { return shown(question) == nullptr; }));
    ASSERT_FALSE(session->hasForegroundProgram());
    session->send(u"cat\n"_s);
    ASSERT_TRUE(waitFor([&] { return session->hasForegroundProgram(); }));
    ask();
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_EQ(tabs.sessions().size(), 1);
    EXPECT_EQ(names(), u"tmp"_s) << "there is no other one";
}

TEST_F(TerminalPage, AsksFindsAndStartsAgain) {
    TerminalSession* session = tabs.open(QUrl(u"file:///tmp"_s));
    ASSERT_TRUE(waitFor([&] { return session->outputForTesting().contains(u"ready>"_s); }));
    auto* view = qobject_cast<TerminalView*>(session->terminalView());
    session->terminal().feed("\x1b[?2004l");
    view->paste(u"echo one\necho two\n"_s);
    EXPECT_NE(shown(u"Paste 2 lines? The shell runs each one as it comes."_s), nullptr);
    click(u"Cancel"_s);
    EXPECT_EQ(view->pasteLines(), 0);

    // What is typed while a program asks goes on into the terminal; only its own key is an answer.
    session->terminal().feed("\x1b]52;c;bGluZQ==\x07");
    const QString question = u"A program wants to copy “line”."_s;
    ASSERT_TRUE(waitFor([&] { return shown(question) != nullptr; }));
    QTest::keyClick(window, Qt::Key_Space);
    EXPECT_TRUE(view->hasActiveFocus());
    EXPECT_NE(shown(question), nullptr);
    QTest::keyClick(window, Qt::Key_Y, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"line"_s);
    EXPECT_EQ(shown(question), nullptr);
    session->terminal().feed("\x1b]52;c;b3RoZXI=\x07");
    ASSERT_TRUE(waitFor([&] { return shown(u"A program wants to copy “other”."_s) != nullptr; }));
    click(u"Cancel"_s);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"line"_s);
    EXPECT_TRUE(waitFor([&] { return view->hasActiveFocus(); }));

    QTest::keyClick(window, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    for (const char letter : {'r', 'e', 'a', 'd', 'y'}) {
        QTest::keyClick(window, letter);
    }
    EXPECT_EQ(view->find()->text(), u"ready"_s);
    EXPECT_NE(shown(u"1 of 1"_s), nullptr);
    session->terminal().feed(std::string(60, '\n') + "ready");
    Q_EMIT session->outputReceived();
    const auto marks = [this] {
        const QQuickItem* bar = items("TerminalScrollBar").value(0);
        return bar == nullptr || !bar->isVisible()
                   ? 0
                   : std::ranges::count_if(bar->childItems(), [](const QQuickItem* item) {
                         return item->property("color") == Theme::instance()->property("warning");
                     });
    };
    EXPECT_TRUE(waitFor([&] { return marks() == 2; })) << "one above the other, on the scroll bar";
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(view->find()->isActive());
    EXPECT_TRUE(waitFor([&] { return view->hasActiveFocus(); }));

    session->send(u"exit 3\n"_s);
    EXPECT_TRUE(
        waitFor([&] { return shown(u"The shell has ended with code 3. Press Return to start again."_s) != nullptr; }));
    EXPECT_TRUE(waitFor([&] {
        const QQuickItem* note = shown(u"The shell has ended with code 3. Press Return to start again."_s);
        return note != nullptr && view->mapToScene(QPointF(0, view->height())).y() <= note->mapToScene(QPointF()).y();
    })) << "it covers nothing of the last screen";
    QTest::keyClick(window, Qt::Key_Return);
    ASSERT_EQ(tabs.sessions().size(), 1);
    EXPECT_NE(tabs.sessions().constFirst(), session);
    EXPECT_TRUE(tabs.sessions().constFirst()->isAlive());
    tabs.sessions().constFirst()->send(u"kill -KILL $$\n"_s);
    const QString killed = u"The shell was ended by a signal (%1). Press Return to start again."_s;
    EXPECT_TRUE(waitFor([&] { return shown(killed.arg(QString::fromLocal8Bit(::strsignal(SIGKILL)))) != nullptr; }));
}

TEST_F(TerminalPage, SaysHowToGoOnWithoutTheMouse) {
    TerminalSession* session = tabs.open(QUrl(u"file:///tmp"_s));
    auto* view = qobject_cast<TerminalView*>(session->terminalView());
    ASSERT_TRUE(waitFor([&] { return view->hasActiveFocus(); }));
    QTest::keyClick(window, Qt::Key_Space, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NE(shown(u"Arrows move, with Shift they select. Enter copies, Esc ends it."_s), nullptr);
    QTest::keyClick(window, Qt::Key_Escape);
    const auto hints = [&](Qt::Key key) {
        window->setProperty("hint", QString());
        QTest::keyClick(window, key, Qt::ControlModifier | Qt::ShiftModifier);
        return window->property("hint").toString().contains(u"OSC 133"_s);
    };
    EXPECT_TRUE(hints(Qt::Key_Z)) << "there is no prompt to go to";
    EXPECT_TRUE(hints(Qt::Key_O)) << "and no output";
    session->terminal().feed("\r\n\x1b]133;A\x07$ ");
    EXPECT_FALSE(hints(Qt::Key_Z));
    session->terminal().feed("\r\nhttps://a.example ");
    QTest::keyClick(window, Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NE(shown(u"Type the letters of a link to open it, with Shift to copy it. Esc ends it."_s), nullptr);
    EXPECT_NE(shown(u"a"_s), nullptr) << "its letter stands beside it";
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_EQ(shown(u"a"_s), nullptr);
}

TEST_F(TerminalPage, SaysThatAShellDidNotStart) {
    tabs.setShell(u"/no/such/shell"_s);
    tabs.open(QUrl(u"file:///tmp"_s));
    const QString words = u"The shell could not be started (/no/such/shell: No such file or directory). "
                          "Press Return to start again."_s;
    EXPECT_TRUE(waitFor([&] { return shown(words) != nullptr && window->activeFocusItem() != nullptr; }));
    tabs.setShell({});
    QTest::keyClick(window, Qt::Key_Return);
    ASSERT_EQ(tabs.sessions().size(), 1);
    EXPECT_TRUE(tabs.sessions().constFirst()->isAlive());
    EXPECT_TRUE(waitFor([&] { return shown(words) == nullptr; }));
}

TEST_F(TerminalPage, MovesTabsByKeys) {
    for (int number = 0; number < 3; ++number) {
        tabs.open(QUrl(u"file:///tmp"_s));
    }
    const QList<TerminalSession*> opened = tabs.sessions();
    auto* view = qobject_cast<TerminalView*>(opened.at(2)->terminalView());
    ASSERT_NE(view, nullptr);
    ASSERT_TRUE(waitFor([&] { return view->hasActiveFocus(); }));
    const auto press = [this](Qt::Key key) { QTest::keyClick(window, key, Qt::ControlModifier | Qt::ShiftModifier); };
    press(Qt::Key_PageUp);
    EXPECT_EQ(tabs.sessions(), (QList<TerminalSession*>{opened.at(0), opened.at(2), opened.at(1)}));
    EXPECT_EQ(tabs.selectedID(), opened.at(2)->id()) << "the same one is shown";
    press(Qt::Key_PageDown);
    press(Qt::Key_PageDown);
    EXPECT_EQ(tabs.sessions(), opened) << "at the end it stays";
    press(Qt::Key_2);
    EXPECT_EQ(tabs.selectedID(), opened.at(1)->id()) << "by their number";
}

TEST_F(TerminalPage, MovesTabsByTheMouse) {
    for (int number = 0; number < 3; ++number) {
        tabs.open(QUrl(u"file:///tmp"_s));
    }
    const QList<TerminalSession*> opened = tabs.sessions();
    const auto middleOf = [this](int place) {
        const QQuickItem* tab = items("TerminalTab").value(place);
        return tab == nullptr ? QPoint() : tab->mapToScene(QPointF(tab->width() / 2, tab->height() / 2)).toPoint();
    };
    ASSERT_TRUE(waitFor([&] { return middleOf(0).x() < middleOf(1).x() && middleOf(1).x() < middleOf(2).x(); }));
    const QPoint from = middleOf(0), to = middleOf(2);
    QTest::mousePress(window, Qt::LeftButton, {}, from);
    for (int step = 1; step <= 10; ++step) {
        QTest::mouseMove(window, from + (to - from) * step / 10);
    }
    QTest::mouseRelease(window, Qt::LeftButton, {}, to);
    EXPECT_TRUE(waitFor([&] { return tabs.sessions().constLast() == opened.constFirst(); }));
    EXPECT_EQ(tabs.sessions().size(), 3);
}

TEST(TerminalTabList, FollowsTheTabsByRows) {
    TerminalTabs tabs;
    TerminalTabList list;
    const QAbstractItemModelTester tester(list.rows(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    list.setTabs(&tabs);
    const QUrl folder(u"file:///tmp"_s);
    list.open(folder);
    list.open(folder);
    list.open(folder);
    const QList<TerminalSession*> opened = tabs.sessions();
    EXPECT_EQ(list.selected(), opened.at(2));
    list.step(1);
    EXPECT_EQ(list.selected(), opened.at(0)) << "round the end";
    list.moveSelected(-1);
    EXPECT_EQ(tabs.sessions(), opened) << "it is the first one";
    list.moveTo(opened.at(0), opened.at(2));
    EXPECT_EQ(tabs.sessions(), (QList<TerminalSession*>{opened.at(1), opened.at(2), opened.at(0)}));
    list.selectAt(7);
    list.selectAt(1);
    EXPECT_EQ(list.selected(), opened.at(2));
    list.renew(opened.at(2));
    EXPECT_EQ(list.count(), 3);
    EXPECT_EQ(tabs.sessions().indexOf(list.selected()), 1) << "at the same place";
    list.close(list.selected());
    EXPECT_EQ(list.count(), 2);
}

TEST_F(MainWindow, ShowsEachProjectItsOwnTerminals) {
    addInstalled(u"blog"_s, "vite", "");
    addInstalled(u"shop"_s, "vite", "");
    scan();
    open(QSize(1280, 832));
    const AppPage shop{.kind = AppPage::Kind::project, .id = root + u"/shop"_s};
    const AppPage blog{.kind = AppPage::Kind::project, .id = root + u"/blog"_s};
    TerminalTabs& terminals = model->terminals();
    const TerminalSession* first = terminals.open(QUrl::fromLocalFile(shop.id));
    terminals.open(QUrl::fromLocalFile(shop.id));
    terminals.select(first->id());
    const auto go = [this](const AppPage& page) {
        model->setPage(page);
        // The page that was left still has its keys until it is gone.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        item("Sidebar")->forceActiveFocus();
        press(Qt::Key_3, Qt::AltModifier);
    };
    const auto shows = [this](const TerminalSession* session, qsizetype tabs) {
        return test::waitFor([&] {
            const auto* view = qobject_cast<TerminalView*>(window->activeFocusItem());
            return view != nullptr && view->session() == session && items("TerminalTab").size() == tabs;
        });
    };
    go(blog);
    ASSERT_TRUE(test::waitFor([this] {
        const QQuickItem* button = this->button(u"New terminal in blog"_s);
        return button != nullptr && button->hasActiveFocus();
    })) << focus();
    press(Qt::Key_Return);
    const TerminalSession* third = terminals.sessions().constLast();
    EXPECT_TRUE(shows(third, 1)) << focus();
    go(shop);
    EXPECT_TRUE(shows(first, 2)) << "the one that was used last: " << focus();
    click(button(u"1 elsewhere"_s));
    ASSERT_TRUE(test::waitFor([this] { return button(u"blog"_s) != nullptr; }));
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_TRUE(shows(third, 1)) << focus();
    EXPECT_EQ(model->page(), blog);
    const TerminalSession* loose = openTerminal(*model, root);
    EXPECT_TRUE(shows(loose, 2)) << "of no project, and a guest where it was opened: " << focus();
    go(shop);
    EXPECT_TRUE(shows(first, 2)) << focus();
    EXPECT_NE(button(u"2 elsewhere"_s), nullptr);
    go(blog);
    EXPECT_TRUE(shows(third, 1)) << focus();
}

TEST(TerminalLook, HasTheColoursOfTheTheme) {
    Theme& theme = *Theme::instance();
    theme.setDark(false);
    const TerminalColors light = TerminalLook::instance()->colors();
    EXPECT_EQ(light.base.background, toTerm(theme.terminalBackground()));
    EXPECT_EQ(light.scheme, term::ColorScheme::light);
    theme.setDark(true);
    EXPECT_NE(TerminalLook::instance()->colors().base.ansi, light.base.ansi);
    theme.setReducedMotion(true);
    EXPECT_FALSE(TerminalLook::instance()->blinksText());
    theme.setReducedMotion(false);
    EXPECT_TRUE(TerminalLook::instance()->blinksText());
}

} // namespace
} // namespace orv
