#include "OrvTerminal/TerminalTabs.h"
#include "OrvUI/Palette.h"
#include "tests/OrvGit/GitFixture.h"
#include "tests/Screens/MainWindow.h"

#include <QAccessible>
#include <QQmlContext>
#include <QQmlProperty>
#include <QRegularExpression>
#include <QSet>
#include <QTranslator>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using test::waitFor;

/// A language whose words are all in brackets.
class Brackets : public QTranslator {
public:
    Brackets() { QCoreApplication::installTranslator(this); }
    ~Brackets() override { QCoreApplication::removeTranslator(this); }
    [[nodiscard]] QString translate(const char*, const char* source, const char*, int) const override {
        return u'⟦' + QString::fromUtf8(source) + u'⟧';
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

/// What those hear of the screens who do not see them.
class AccessibleWindow : public test::MainWindow {
protected:
    AccessibleWindow() { QAccessible::setActive(true); }
    ~AccessibleWindow() override { QAccessible::setActive(false); }

    /// Notes what is wrong with the items of the screen: whatever can have the focus, and every control that the
    /// pointer alone reaches, has a name and says what it is; no text is silent.
    void look(const QString& screen) {
        int seen = 0;
        lookAt(screen, window->contentItem(), seen);
        EXPECT_GT(seen, 3) << screen.toStdString() << " is empty";
    }

    /// Waits for an item of the component, and looks.
    void lookFor(const QString& screen, const QByteArray& component) {
        EXPECT_TRUE(waitFor([&] { return !items(component).isEmpty(); })) << screen.toStdString();
        look(screen);
    }

    /// Opens every screen, and looks at it.
    void walk();

    bool wantsBrackets = false;
    QStringList faults;
    QStringList modal; ///< the screens with something that takes the keyboard alone, and says so
    test::GitHome home;

private:
    [[nodiscard]] static bool isControl(QAccessible::Role role) {
        static const QSet<QAccessible::Role> controls{
            QAccessible::Button,       QAccessible::CheckBox,      QAccessible::RadioButton, QAccessible::Link,
            QAccessible::EditableText, QAccessible::PageTab,       QAccessible::MenuItem,    QAccessible::ListItem,
            QAccessible::ComboBox,     QAccessible::Slider,        QAccessible::TreeItem,    QAccessible::Cell,
            QAccessible::ButtonMenu,   QAccessible::ButtonDropDown};
        return controls.contains(role);
    }

    void lookAt(const QString& screen, QQuickItem* below, int& seen) {
        for (QQuickItem* item : below->childItems()) {
            if (!item->isVisible() || item->width() <= 0 || item->height() <= 0) {
                continue;
            }
            QAccessibleInterface* told = QAccessible::queryAccessibleInterface(item);
            const QAccessible::Role role = told != nullptr ? told->role() : QAccessible::NoRole;
            const bool takesFocus = item->activeFocusOnTab() && item->isEnabled();
            const bool isAbstract = role == QAccessible::NoRole || role == QAccessible::Client;
            const int given = QQmlProperty::read(item, u"Accessible.role"_s, qmlContext(item)).toInt();
            const bool isOther = told != nullptr && given != QAccessible::NoRole && given != role;
            if (told != nullptr && told->state().modal) {
                modal.append(screen);
            }
            if (takesFocus || isControl(role)) {
                ++seen;
                const QString name = told != nullptr ? told->text(QAccessible::Name).trimmed() : QString();
                if (name.isEmpty() || isOther || (takesFocus && isAbstract)) {
                    faults.append(u"%1: %2, role %3 for %4, name \"%5\""_s.arg(screen, pathOf(item))
                                      .arg(role)
                                      .arg(given)
                                      .arg(name));
                }
            }
            if (wantsBrackets && isUntranslated(item, told)) {
                faults.append(u"%1: %2, \"%3\" \"%4\""_s.arg(
                    screen, pathOf(item), item->property("text").toString(),
                    told != nullptr ? told->text(QAccessible::Name) : QString()));
            }
            if (item->inherits("QQuickText") && isSilent(item)) {
                faults.append(u"%1: %2, text \"%3\""_s.arg(screen, pathOf(item), item->property("text").toString()));
            }
            lookAt(screen, item, seen);
        }
    }

    /// Neither it nor what it stands in says anything.
    [[nodiscard]] static bool isSilent(QQuickItem* text) {
        for (QQuickItem* item = text; item != nullptr; item = item->parentItem()) {
            QAccessibleInterface* told = QAccessible::queryAccessibleInterface(item);
            const bool isText = told != nullptr && (told->role() == QAccessible::StaticText ||
                                                    told->role() == QAccessible::Heading || isControl(told->role()));
            if (isText && !told->text(QAccessible::Name).isEmpty()) {
                return false;
            }
        }
        return !text->property("text").toString().isEmpty();
    }

    /// But for names, what was typed and printed, and the keys as they are labelled.
    [[nodiscard]] static bool isUntranslated(QQuickItem* item, QAccessibleInterface* told) {
        static const QRegularExpression word(u"[A-Za-z]{3,}"_s);
        static const QRegularExpression data(
            u"^(shop|wharf|new|client|main|root|orv-screens-tests|Vite|Ada|First|Upgrade|after the release|npm [a-z ]+|"
            "[a-z-]+\\.(sh|json|ts)|[^ ]+@[^ ]+|(Local: )?https?://.*|localhost:\\d+|/.*|code -g .*|1 service|"
            "((Ctrl|Alt|Shift|Super|Home|End|Menu|Enter|Space|Del|Tab|PgUp|PgDown|Up|Down|F\\d+|.) ?)+)$"_s);
        QStringList texts{told != nullptr ? told->text(QAccessible::Name) : QString()};
        if (item->inherits("QQuickText")) {
            texts.append(item->property("text").toString());
        }
        return std::ranges::any_of(texts, [](const QString& text) {
            return !text.contains(u'⟦') && text.contains(word) && !data.match(text).hasMatch();
        });
    }

    [[nodiscard]] static QString pathOf(const QQuickItem* item) {
        QStringList names;
        for (; item != nullptr && names.size() < 5; item = item->parentItem()) {
            names.prepend(QString::fromLatin1(item->metaObject()->className()).section(u"_QML"_s, 0, 0));
        }
        return names.join(u" > "_s);
    }
};

void AccessibleWindow::walk() {
    const QString shop = root + u"/client/shop"_s;
    addInstalled(u"client/shop"_s, "vite", test::up(4700));
    addInstalled(u"client/wharf"_s, "vite", test::up(4701));
    addNode(u"new"_s, "vite", test::up(4702));
    test::git(shop, {u"init"_s, u"-q"_s});
    tree.add(u"projects/client/shop/a.ts"_s, "one\n");
    test::git(shop, {u"add"_s, u"a.ts"_s});
    test::git(shop, {u"commit"_s, u"-qm"_s, u"First"_s});
    tree.add(u"projects/client/shop/a.ts"_s, "two\n");
    scan();
    open(QSize(1280, 832));
    model->togglePinFor(shop);
    model->toggleProject(shop);
    model->addTask(u"Upgrade"_s, u"after the release"_s, *model->project(shop));
    ASSERT_TRUE(waitFor([this] { return !items("RunningItem").isEmpty(); }));
    lookFor(u"home"_s, "ProjectCard");
    model->setPage({AppPage::Kind::collection, root + u"/client"_s, {}});
    lookFor(u"collection"_s, "CollectionPage");

    model->setPage({AppPage::Kind::project, shop, {}});
    const std::pair<DetailTab, QByteArray> tabs[] = {
        {DetailTab::overview, "ServiceRow"}, {DetailTab::tasks, "TaskItem"},  {DetailTab::terminal, "TerminalPage"},
        {DetailTab::logs, "ProjectLogs"},    {DetailTab::git, "GitFileItem"}, {DetailTab::files, "FileTreeItem"}};
    for (const auto& [tab, component] : tabs) {
        model->setDetailTab(tab);
        // The tab that was left still has its keys until it is gone.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        lookFor(u"project, tab %1"_s.arg(static_cast<int>(tab)), component);
    }
    model->setDetailTab(DetailTab::terminal);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    model->terminals().open(QUrl::fromLocalFile(shop));
    lookFor(u"terminal"_s, "TerminalTab");
    EXPECT_TRUE(waitFor(
        [this] { return QByteArray(window->activeFocusItem()->metaObject()->className()) == "orv::TerminalView"; }));
    press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    lookFor(u"search in the terminal"_s, "TerminalFindBar");
    press(Qt::Key_Escape);
    model->setDetailTab(DetailTab::overview);
    press(Qt::Key_J, Qt::ControlModifier);
    lookFor(u"agent panel"_s, "AgentPanel");
    press(Qt::Key_J, Qt::ControlModifier);

    press(Qt::Key_6, Qt::ControlModifier);
    lookFor(u"tasks"_s, "TasksPage");
    press(Qt::Key_7, Qt::ControlModifier);
    lookFor(u"AI"_s, "AiPage");
    AppPage page;
    page.kind = AppPage::Kind::settings;
    for (const QByteArray section :
         {"SettingsProfile", "SettingsGit", "SettingsAi", "SettingsAppearance", "SettingsNotifications",
          "SettingsGeneral", "SettingsProjects"}) {
        model->setPage(page);
        lookFor(QString::fromLatin1(section), section);
        page.section = static_cast<SettingsSection>(static_cast<int>(page.section) + 1);
    }

    model->setPage({});
    press(Qt::Key_K, Qt::ControlModifier);
    lookFor(u"palette"_s, "PaletteItem");
    press(Qt::Key_Escape);
    press(Qt::Key_N, Qt::ControlModifier);
    lookFor(u"new folder"_s, "FormField");
    press(Qt::Key_Escape);
    press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    lookFor(u"clone"_s, "FormField");
    press(Qt::Key_Escape);
    press(Qt::Key_Slash, Qt::ControlModifier);
    lookFor(u"shortcuts"_s, "KeyHint");
    press(Qt::Key_Escape);
    model->setSheet(AppSheet{AppSheet::Kind::widgetsHowTo, {}});
    const QString confirm = QCoreApplication::translate("WidgetsSheet", "I added it");
    EXPECT_TRUE(waitFor([&] { return button(confirm) != nullptr; }));
    look(u"widgets"_s);
    press(Qt::Key_Escape);
    model->toggleProject(root + u"/new"_s);
    lookFor(u"setup"_s, "SetupStep");
    press(Qt::Key_Escape);
    QMetaObject::invokeMethod(window, "askToQuit", Q_ARG(QVariant, u"1 service"_s), Q_ARG(QVariant, true));
    look(u"question"_s);
}

TEST_F(AccessibleWindow, NamesWhateverCanBeUsed) {
    walk();
    EXPECT_EQ(faults, QStringList()) << faults.join(u'\n').toStdString();
    EXPECT_EQ(modal.join(u", "_s), u"palette, new folder, clone, shortcuts, widgets, setup, question"_s);
}

TEST_F(AccessibleWindow, SpeaksTheLanguageOfTheUser) {
    const Brackets language;
    wantsBrackets = true;
    makeModel();
    walk();
    EXPECT_EQ(faults, QStringList()) << faults.join(u'\n').toStdString();
}

} // namespace
} // namespace orv
