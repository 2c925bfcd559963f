#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/HomeModels.h"
#include "tests/OrvGit/GitFixture.h"
#include "tests/Screens/MainWindow.h"

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using test::waitFor;

/// The window over projects whose names, services, files and tasks are more and longer than it has room for.
class FullWindow : public test::MainWindow {
protected:
    ~FullWindow() override {
        for (const Project& each : model->projects()) {
            EXPECT_TRUE(test::finishes(model->stop(each)));
        }
    }

    void fill();
    void project(const QString& name, DetailTab tab) const {
        model->setPage({AppPage::Kind::project, root + u'/' + name, {}});
        model->setDetailTab(tab);
        // The tab that was left still has its keys until it is gone.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void settings(SettingsSection section) const {
        AppPage page;
        page.kind = AppPage::Kind::settings;
        page.section = section;
        model->setPage(page);
    }
    void sheet(int key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) const {
        model->setPage({});
        press(key, modifiers);
    }
    void fitsAtEverySize(const char* label) const;
    /// What is wrong with the texts and controls of the window: cut, or one over the other.
    [[nodiscard]] QStringList faults() const;
    /// Of a sheet, which covers what is below it; null: there is none.
    [[nodiscard]] const QQuickItem* overlay() const {
        for (const QQuickItem* child : window->contentItem()->childItems()) {
            if (child->inherits("QQuickOverlay") && child->isVisible()) {
                return child;
            }
        }
        return nullptr;
    }

    const QString longName =
        u"a-project-whose-folder-somebody-gave-a-name-of-eighty-two-letters-since-there-was-room"_s.left(82);
    test::GitHome home;

private:
    struct Seen {
        const QQuickItem* item;
        QRectF place; ///< where it is painted
    };
    struct Screen {
        QList<Seen> texts;
        QList<Seen> controls;
        QStringList faults;
    };
    void collect(const QQuickItem* below, const QRectF& clip, Screen& screen) const;
    /// A delegate that its list keeps for later, and does not paint.
    [[nodiscard]] static bool isSpare(const QQuickItem* item) {
        QQuickItem* view = item->parentItem() != nullptr ? item->parentItem()->parentItem() : nullptr;
        const QVariant index = item->property("index");
        if (view == nullptr || !view->inherits("QQuickItemView") || !index.isValid()) {
            return false;
        }
        QQuickItem* shown = nullptr;
        QMetaObject::invokeMethod(view, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, shown), Q_ARG(int, index.toInt()));
        return shown != item;
    }
    [[nodiscard]] static QString told(const QQuickItem* item) {
        QString names;
        for (const QQuickItem* at = item; at != nullptr; at = at->parentItem()) {
            const QString name = QString::fromLatin1(at->metaObject()->className());
            if (name.contains(u"_QML")) {
                names.prepend(name.section(u"_QML"_s, 0, 0) + u" > "_s);
            }
        }
        return names.section(u" > "_s, -5) + u'"' + item->property("text").toString() + u'"';
    }
};

void FullWindow::fill() {
    const QString shop = root + u"/shop"_s;
    addInstalled(u"shop/web"_s, "vite", test::up(4801));
    const QStringList parts{
        u"accounts-and-identity-management"_s,
        u"billing"_s,
        u"catalogue-and-its-synchronisation"_s,
        u"orders"_s,
        u"search"_s,
        u"notifications-and-their-delivery"_s,
        u"recommendations"_s,
        u"shipping"_s};
    for (qsizetype i = 0; i < parts.size(); ++i) {
        addInstalled(u"shop/services/"_s + parts[i], "express", test::up(4802 + static_cast<int>(i)));
        addNode(u"fresh/services/"_s + parts[i], "express", {});
    }
    addInstalled(longName, "vite", test::up(4820));
    const QString deep =
        u"packages/verification/src/main/java/org/example/enterprise/module-%1/AbstractFactoryImplementation%2.java"_s;
    for (int i = 0; i < 60; ++i) {
        tree.add(u"projects/shop/"_s + deep.arg(i / 6).arg(i), "one\n");
    }
    test::git(
        shop, {u"init"_s, u"-q"_s, u"-b"_s,
               u"feature/a-branch-whose-name-tells-everything-about-the-change-and-its-number"_s});
    test::git(root + u'/' + longName, {u"init"_s, u"-q"_s});
    test::git(root + u'/' + longName, {u"commit"_s, u"-q"_s, u"--allow-empty"_s, u"-m"_s, u"First"_s});
    for (int i = 0; i < 30; ++i) {
        test::git(
            root + u'/' + longName, {u"branch"_s, u"topic/%1-a-branch-whose-name-tells-everything-about-it"_s.arg(i)});
    }
    scan();
    const Project full = *model->project(shop);
    for (int i = 0; i < 40; ++i) {
        model->addTask(
            u"Task %1 that says in many words what there is to be done, and then goes on for a while"_s.arg(i),
            u"Notes that go on for longer than one line of any window can hold, so that they have to be cut"_s, full);
    }
    model->toggleProject(shop);
    ASSERT_TRUE(waitFor([&] { return model->home().running.rowCount() == 9; }, std::chrono::minutes(1)));
}

void FullWindow::collect(const QQuickItem* below, const QRectF& clip, Screen& screen) const {
    const QRectF all(QPointF(), window->size());
    for (const QQuickItem* item : below->childItems()) {
        if (!item->isVisible() || item->opacity() == 0 || isSpare(item)) {
            continue;
        }
        const QRectF whole = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
        const bool isText = item->inherits("QQuickText") && !item->property("text").toString().isEmpty();
        if (isText || item->inherits("QQuickAbstractButton")) {
            const double needed = isText ? item->property("contentWidth").toDouble() : item->width();
            const QRectF seen = whole & clip;
            if (needed > item->width() + 1) {
                screen.faults.append(u"longer than its place: "_s + told(item));
            }
            if (!seen.isEmpty() && seen.width() < whole.width() - 1 && seen.width() < needed) {
                screen.faults.append(u"cut at a side: "_s + told(item));
            }
            // Nothing that scrolls would bring it back.
            if (clip == all && whole.width() > 0 && !all.contains(whole)) {
                screen.faults.append(u"out of the window: "_s + told(item));
            }
            if (!seen.isEmpty()) {
                (isText ? screen.texts : screen.controls).append({item, seen});
            }
        }
        collect(item, item->clip() ? clip & whole : clip, screen);
    }
}

QStringList FullWindow::faults() const {
    Screen screen;
    const QQuickItem* cover = overlay();
    collect(cover != nullptr ? cover : window->contentItem(), QRectF(QPointF(), window->size()), screen);
    const auto touch = [](const Seen& a, const Seen& b) {
        const QRectF both = a.place & b.place;
        return both.width() > 1.5 && both.height() > 4;
    };
    for (qsizetype i = 0; i < screen.texts.size(); ++i) {
        const Seen& text = screen.texts[i];
        for (const Seen& other : screen.texts.sliced(i + 1)) {
            if (touch(text, other)) {
                screen.faults.append(u"one over the other: %1 and %2"_s.arg(told(text.item), told(other.item)));
            }
        }
        for (const Seen& control : screen.controls) {
            const bool isPart = control.item->isAncestorOf(text.item) || text.item->isAncestorOf(control.item);
            if (!isPart && touch(text, control) && !text.item->parentItem()->isAncestorOf(control.item)) {
                screen.faults.append(u"under a control: %1 and %2"_s.arg(told(text.item), told(control.item)));
            }
        }
    }
    return screen.faults;
}

void FullWindow::fitsAtEverySize(const char* label) const {
    for (const QSize size : {QSize(820, 560), QSize(900, 720), QSize(1280, 832), QSize(1720, 1000)}) {
        window->resize(size);
        EXPECT_TRUE(waitFor([&] { return window->contentItem()->size().toSize() == size && faults().isEmpty(); }))
            << label << ' ' << size.width() << " wide:\n"
            << faults().join(u'\n').toStdString();
    }
}

TEST_F(FullWindow, CutsAndCoversNothing) {
    fill();
    open(QSize(1280, 832));
    const struct {
        const char* label;
        QByteArray component; ///< is there when the screen is
        std::function<void()> show;
        bool isSheet = false;
    } screens[] = {
        {"home", "RunningItem", [&] { model->setPage({}); }},
        {"overview", "OverviewOutput", [&] { project(u"shop"_s, DetailTab::overview); }},
        {"tasks of a project", "TaskItem", [&] { project(u"shop"_s, DetailTab::tasks); }},
        {"logs", "LogTools", [&] { project(u"shop"_s, DetailTab::logs); }},
        {"git", "GitFileItem", [&] { project(u"shop"_s, DetailTab::git); }},
        {"files", "FileTreeItem", [&] { project(u"shop"_s, DetailTab::files); }},
        {"no terminal", "TerminalPage", [&] { project(longName, DetailTab::terminal); }},
        {"terminals", "TerminalTab",
         [&] {
             for (int i = 0; i < 4; ++i) {
                 model->terminals().open(QUrl::fromLocalFile(root + u'/' + longName));
             }
         }},
        {"long name", "OverviewGit", [&] { project(longName, DetailTab::overview); }},
        {"tasks", "TasksPage", [&] { model->setPage({AppPage::Kind::tasks, {}, {}}); }},
        {"agents", "AiPage", [&] { model->setPage({AppPage::Kind::ai, {}, {}}); }},
        {"profile", "SettingsProfile", [&] { settings(SettingsSection::profile); }},
        {"git settings", "SettingsGit", [&] { settings(SettingsSection::git); }},
        {"agents' settings", "SettingsAi", [&] { settings(SettingsSection::ai); }},
        {"appearance", "SettingsAppearance", [&] { settings(SettingsSection::appearance); }},
        {"notifications", "SettingsNotifications", [&] { settings(SettingsSection::notifications); }},
        {"general settings", "SettingsGeneral", [&] { settings(SettingsSection::general); }},
        {"corrections", "OverrideItem", [&] { settings(SettingsSection::projects); }},
        {"new folder", "FormField", [&] { sheet(Qt::Key_N); }, true},
        {"clone", "FormField", [&] { sheet(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier); }, true},
        {"palette", "PaletteItem", [&] { sheet(Qt::Key_K); }, true},
        {"branches", "BranchItem",
         [&] {
             project(longName, DetailTab::git);
             EXPECT_TRUE(waitFor([this] { return !items("GitBranchBar").isEmpty(); }));
             press(Qt::Key_B, Qt::ControlModifier);
         },
         true},
        {"identity", "Segmented",
         [&] {
             EXPECT_TRUE(waitFor([this] { return !items("CommitBox").isEmpty(); }));
             QMetaObject::invokeMethod(item("CommitBox"), "identityAsked");
         },
         true},
        {"widgets", "Button",
         [&] {
             model->setSheet(AppSheet{AppSheet::Kind::widgetsHowTo, {}});
             EXPECT_TRUE(waitFor([this] { return button(u"I added it"_s) != nullptr; }));
         },
         true},
        {"shortcuts", "KeyHint", [&] { sheet(Qt::Key_Slash); }, true},
        {"setup", "SetupStep", [&] { model->toggleProject(root + u"/fresh"_s); }, true},
    };
    for (const auto& screen : screens) {
        screen.show();
        EXPECT_TRUE(waitFor([&] {
            return !items(screen.component).isEmpty() && (overlay() != nullptr) == screen.isSheet;
        })) << screen.label;
        fitsAtEverySize(screen.label);
        press(Qt::Key_Escape);
        EXPECT_TRUE(waitFor([this] { return overlay() == nullptr; })) << screen.label;
    }
}

} // namespace
} // namespace orv
