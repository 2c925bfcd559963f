#include "Window.h"

#include "Cli.h"
#include "Graphics.h"
#include "OrvCore/Async.h"
#include "OrvCore/Paths.h"
#include "OrvLauncher/platform/HotKey.h"
#include "OrvLauncher/platform/LoginItem.h"
#include "OrvLauncher/platform/SystemNotifier.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/QuitGuard.h"
#include "OrvUI/Screens/InputMode.h"
#include "OrvUI/Screens/PlatformWords.h"
#include "OrvUI/Screens/Registration.h"
#include "OrvUI/Screens/SystemLook.h"
#include "OrvUI/Screens/Theme.h"
#include "OrvUI/Screens/WindowState.h"
#include "QuickPanel.h"
#include "SignalWatcher.h"
#include "StatusItem.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

#ifdef Q_OS_MACOS
constexpr bool drawsOwnFrame = false;
#else
constexpr bool drawsOwnFrame = true;
#endif

/// Everything that the window needs while the application runs. Lives on the main thread.
class WindowShell : public QObject {
    Q_OBJECT
public:
    ~WindowShell() override { s_open = nullptr; }
    WindowShell()
        : m_stateFile(Paths::supportDirectory() + u"/window.ini"_s),
          m_state(WindowState::load(m_stateFile)),
          m_model(modelOptions()) {
        // The scan runs while the window is being made.
        m_model.refresh();
    }

    [[nodiscard]] bool open();

private:
    static AppModel::Options modelOptions();
    void followLook();
    void place();
    void remember();
    void reportFrames();
    void makeTrayItem();
    void applyShortcut();
    void showWindow();
    Q_SLOT void windowClosed();
    Q_SLOT void askToQuit();
    Q_SLOT void chooseFolder();
    Q_SLOT void answerToQuit(int choice);
    void quit();
    void kill();
    void leave();
    static void endWithoutDisplay();

    static WindowShell* s_open; ///< while the application runs
    QString m_stateFile;
    WindowState m_state;
    AppModel m_model;
    SystemLook m_look;
    QQmlApplicationEngine m_engine;
    QQuickWindow* m_window = nullptr;
    QTimer m_settled;
    SignalWatcher m_signals;
    std::optional<StatusItem> m_statusItem;
    std::optional<QuickPanel> m_panel;
    std::optional<HotKey> m_hotKey;
    bool m_quitting = false;
};

AppModel::Options WindowShell::modelOptions() {
    AppModel::Options options;
    options.notifier = makeSystemNotifier();
    options.login = makeLoginItem();
    options.appIsActive = [] { return QGuiApplication::applicationState() == Qt::ApplicationActive; };
    return options;
}

bool WindowShell::open() {
    m_look.assume(m_state.isSystemDark);
    registerScreens(m_engine);
    followLook();
    m_engine.setInitialProperties({
        {u"model"_s, QVariant::fromValue(&m_model)},
        {u"ownFrame"_s, drawsOwnFrame},
        {u"sidebarHidden"_s, m_state.isSidebarHidden},
    });
    m_engine.load(QUrl(u"qrc:/qt/qml/OrvLauncher/Screens/Main.qml"_s));
    if (m_engine.rootObjects().isEmpty()) {
        return false;
    }
    s_open = this;
    std::atexit(&WindowShell::endWithoutDisplay);
    m_window = qobject_cast<QQuickWindow*>(m_engine.rootObjects().constFirst());
    m_engine.singletonInstance<InputMode*>(qmlTypeId("OrvLauncher.Screens", 1, 0, "InputMode"))->watch(m_window);
    m_model.openUrl = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
    m_model.setClipboard = [](const QString& text) { QGuiApplication::clipboard()->setText(text); };
    m_model.setOpenMainWindowAction([this] { showWindow(); });
    m_model.applyDockIconPolicy();
    reportFrames();
    place();
    connect(m_window, SIGNAL(closeAsked()), this, SLOT(windowClosed()));
    connect(m_window, SIGNAL(quitAsked()), this, SLOT(askToQuit()));
    connect(m_window, SIGNAL(folderAsked()), this, SLOT(chooseFolder()));
    connect(m_window, SIGNAL(quitAnswered(int)), this, SLOT(answerToQuit(int)));
    connect(&m_signals, &SignalWatcher::stopAsked, this, [this] { m_quitting ? kill() : quit(); });
    // What the first frame does not need comes after it.
    QMetaObject::invokeMethod(
        &m_look,
        [this] {
            m_look.start();
            if (m_model.notificationsEnabled()) {
                m_model.refreshNotificationStatus();
            }
            makeTrayItem();
            QGuiApplication::setWindowIcon(QIcon(u":/qt/qml/OrvLauncher/Screens/icons/app-icon.svg"_s));
        },
        Qt::QueuedConnection);
    return true;
}

void WindowShell::followLook() {
    Theme* theme = Theme::instance();
    const auto apply = [this, theme] {
        const AppSettings& settings = m_model.settings().settings();
        const bool followsSystem = settings.appearance == AppearanceMode::system;
        theme->setDark(followsSystem ? m_look.isDark() : settings.appearance == AppearanceMode::dark);
        theme->setTheme(int(settings.theme));
        theme->setReducedMotion(m_look.reducedMotion());
    };
    apply();
    connect(&m_model.settings(), &SettingsStore::settingsChanged, theme, apply);
    connect(&m_look, &SystemLook::changed, theme, apply);
}

void WindowShell::makeTrayItem() {
    m_panel.emplace(m_model, m_engine);
    m_statusItem.emplace(m_model);
    const auto togglePanel = [this] { m_panel->toggle(m_statusItem->place()); };
    connect(&*m_statusItem, &StatusItem::panelAsked, this, togglePanel);
    connect(&*m_statusItem, &StatusItem::windowAsked, this, &WindowShell::showWindow);
    connect(&*m_statusItem, &StatusItem::quitAsked, this, &WindowShell::askToQuit);
    connect(&*m_panel, &QuickPanel::windowAsked, this, &WindowShell::showWindow);
    connect(&*m_panel, &QuickPanel::quitAsked, this, &WindowShell::askToQuit);
    connect(&*m_panel, &QuickPanel::settingsAsked, this, [this] {
        AppPage page;
        page.kind = AppPage::Kind::settings;
        m_model.setPage(page);
        showWindow();
    });
    // Most panels are dark; those of a desktop that asks for light mostly are not.
    const auto followPanel = [this] { m_statusItem->setPanelDark(!m_look.prefersLight()); };
    connect(&m_look, &SystemLook::changed, this, followPanel);
    followPanel();
    connect(&m_model, &AppModel::preferencesChanged, this, &WindowShell::applyShortcut);
    applyShortcut();
}

void WindowShell::applyShortcut() {
    const bool isWanted = m_model.settings().settings().quickPanelShortcutEnabled;
    if (!isWanted) {
        m_hotKey.reset();
    } else if (!m_hotKey) {
        m_hotKey.emplace([this] { m_panel->toggle(m_statusItem->place()); });
    }
    m_window->setProperty("shortcutTaken", isWanted && !m_hotKey->isRegistered());
}

void WindowShell::showWindow() {
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

/// With an icon in the tray the application lives on without its window.
void WindowShell::windowClosed() {
    if (StatusItem::isAvailable() && m_statusItem) {
        m_window->hide();
    } else {
        askToQuit();
    }
}

void WindowShell::askToQuit() {
    const RunningWork work{
        .services = m_model.runningCount(),
        .isProgramInTerminal = m_model.terminals().anyForegroundProgram(),
        .agents = m_model.runningAgentCount()};
    if (m_quitting || !work.isAny()) {
        quit();
        return;
    }
    showWindow();
    QMetaObject::invokeMethod(
        m_window, "askToQuit", Q_ARG(QVariant, work.message()), Q_ARG(QVariant, StatusItem::isAvailable()));
}

/// The desktop's own dialog where it has one for Qt, otherwise Qt's, in the colours of the theme.
void WindowShell::chooseFolder() {
    auto* dialog = new QFileDialog(nullptr, tr("Choose the folder of your projects"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    const QString current = m_model.settings().settings().scanRoot;
    const bool isThere = QFileInfo(current).isDir();
    dialog->setDirectory(isThere ? QFileInfo(current).path() : Paths::realHome());
    if (isThere) {
        dialog->selectFile(current);
    }
    QPalette palette;
    const Theme& theme = *Theme::instance();
    for (const auto& [role, color] : {
             std::pair{QPalette::Window, theme.window()},
             {QPalette::Base, theme.surface()},
             {QPalette::AlternateBase, theme.window()},
             {QPalette::Button, theme.control()},
             {QPalette::WindowText, theme.text()},
             {QPalette::Text, theme.text()},
             {QPalette::ButtonText, theme.text()},
             {QPalette::PlaceholderText, theme.text3()},
             {QPalette::Highlight, theme.accent()},
             {QPalette::HighlightedText, theme.onAccent()},
         }) {
        palette.setColor(role, color);
    }
    dialog->setPalette(palette);
    connect(dialog, &QFileDialog::fileSelected, &m_model, &AppModel::chooseScanRoot);
    dialog->winId(); // makes the window that the next line speaks of
    dialog->windowHandle()->setTransientParent(m_window);
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->show();
}

void WindowShell::answerToQuit(int choice) {
    enum { stopAndQuit, keepRunning };
    if (choice == stopAndQuit) {
        quit();
    } else if (choice == keepRunning) {
        m_window->hide();
    }
}

void WindowShell::place() {
    const QSize minimum(Theme::minimumWidth, Theme::minimumHeight);
    QList<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        screens.append(screen->availableGeometry());
    }
    if (m_state.geometry.isEmpty()) {
        const QRect screen = screens.isEmpty() ? QRect() : screens.constFirst();
        QRect first(QPoint(), QSize(Theme::defaultWidth, Theme::defaultHeight));
        first.moveCenter(screen.center());
        m_state.geometry = first;
    }
    m_window->setGeometry(WindowState::fitted(m_state.geometry, screens, minimum));
    if (m_state.isMaximized) {
        m_window->showMaximized();
    } else {
        m_window->show();
    }
    // Only what lasts counts: while a window is being maximised it has the large size, but not yet the state.
    m_settled.setSingleShot(true);
    m_settled.setInterval(500ms);
    connect(&m_settled, &QTimer::timeout, this, &WindowShell::remember);
    for (const auto signal :
         {&QWindow::xChanged, &QWindow::yChanged, &QWindow::widthChanged, &QWindow::heightChanged}) {
        connect(m_window, signal, &m_settled, qOverload<>(&QTimer::start));
    }
    connect(m_window, &QWindow::visibilityChanged, &m_settled, qOverload<>(&QTimer::start));
}

void WindowShell::remember() {
    const QWindow::Visibility visibility = m_window->visibility();
    if (visibility == QWindow::Windowed) {
        m_state.geometry = m_window->geometry();
    }
    if (visibility == QWindow::Windowed || visibility == QWindow::Maximized) {
        m_state.isMaximized = visibility == QWindow::Maximized;
    }
}

void WindowShell::reportFrames() {
    if (!qEnvironmentVariableIsSet("ORV_BENCH_FIRST_FRAME")) {
        return;
    }
    connect(m_window, &QQuickWindow::frameSwapped, this, [this, first = true]() mutable {
        if (std::exchange(first, false)) {
            std::puts("frame");
            std::fflush(stdout);
        }
        if (m_model.hasScanned()) {
            std::puts("content");
            std::fflush(stdout);
            std::_Exit(0);
        }
    });
}

void WindowShell::quit() {
    if (m_quitting) {
        return;
    }
    m_quitting = true;
    m_window->hide();
    m_state.isSidebarHidden = m_window->property("sidebarHidden").toBool();
    m_state.isSystemDark = m_look.isDark();
    m_state.save(m_stateFile);
    m_model.terminals().closeAll();
    onFinished(m_model.stopEverything(), this, [this] { leave(); });
}

/// Whoever asks a second time does not wait for a stack of containers to come down.
void WindowShell::kill() {
    m_model.killServices();
    const auto leaveWhenGone = [this] {
        const auto& states = m_model.processes().states();
        if (std::ranges::none_of(states, &ServiceState::isActive) && m_model.agentRunner().groups().isEmpty()) {
            leave();
        }
    };
    connect(&m_model, &AppModel::servicesChanged, this, leaveWhenGone);
    connect(&m_model, &AppModel::runningAgentCountChanged, this, leaveWhenGone);
    QTimer::singleShot(1s, this, &WindowShell::leave); // what not even that ends
    leaveWhenGone();
}

void WindowShell::leave() {
    m_model.publishSnapshot();
    m_model.flushSnapshot();
    QCoreApplication::exit(); // quit() asks the windows first
}

WindowShell* WindowShell::s_open = nullptr;

/// When the display is gone, Qt ends the process by exit(), from within the event loop. The services go too, as with
/// the window; and nothing else is taken down, for threads still run that use it.
void WindowShell::endWithoutDisplay() {
    if (s_open == nullptr) {
        return;
    }
    s_open->m_model.endServices(3s);
    s_open->m_state.save(s_open->m_stateFile);
    std::_Exit(exitFailed);
}

} // namespace

bool hasDisplay() {
#ifdef Q_OS_MACOS
    return true;
#else
    return std::ranges::any_of(std::array{"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}, [](const char* name) {
        return !qEnvironmentVariableIsEmpty(name);
    });
#endif
}

int runWindow(int argc, char** argv) {
    QCoreApplication::setApplicationName(u"OrvLauncher"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ORV_VERSION));
    QGuiApplication::setApplicationDisplayName(u"OrvLauncher"_s);
    QGuiApplication::setDesktopFileName(u"orvlauncher"_s);
    chooseGraphics();
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
    QApplication application(argc, argv);
    PlatformWords words;
    QCoreApplication::installTranslator(&words);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    WindowShell shell;
    if (!shell.open()) {
        return 1;
    }
    return QGuiApplication::exec();
}

} // namespace orv

#include "Window.moc"
