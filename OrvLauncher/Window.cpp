#include "Window.h"

#include "BrokenStores.h"
#include "Cli.h"
#include "Dialogs.h"
#include "Graphics.h"
#include "OrvCore/Async.h"
#include "OrvCore/Paths.h"
#include "OrvLauncher/platform/ActivationToken.h"
#include "OrvLauncher/platform/LoginItem.h"
#include "OrvLauncher/platform/SystemNotifier.h"
#include "OrvLauncher/platform/UserDefaults.h"
#include "OrvTerminal/TerminalTabs.h"
#include "OrvTerminal/View/ProgramsClipboard.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/DraftKeeper.h"
#include "OrvUI/OnboardingModel.h"
#include "OrvUI/OrphanedWork.h"
#include "OrvUI/QuitGuard.h"
#include "OrvUI/Screens/IllustrationExport.h"
#include "OrvUI/Screens/InputMode.h"
#include "OrvUI/Screens/PlaceKeeper.h"
#include "OrvUI/Screens/PlatformWords.h"
#include "OrvUI/Screens/Registration.h"
#include "OrvUI/Screens/SystemLook.h"
#include "OrvUI/Screens/TerminalLook.h"
#include "OrvUI/Screens/Theme.h"
#include "OrvUI/Screens/WindowState.h"
#include "OrvUI/StartPage.h"
#include "SignalWatcher.h"
#include "SingleInstance.h"
#include "StatusBarController.h"
#include "SystemEvents.h"

#ifdef Q_OS_MACOS
#include "OrvLauncher/platform/macos/MacDesktop.h"
#endif

#include <QApplication>
#include <QClipboard>
#include <QDeadlineTimer>
#include <QDesktopServices>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickItem>
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

/// How long one that is still coming up, or going, may take to answer another start.
constexpr auto answerLimit = 10s;
/// For the first frame of a window that may be covered.
constexpr auto frameLimit = 300ms;
/// For a desktop that is just coming up.
constexpr auto trayLimit = 20s;

/// By which the desktop lets the program that it starts bring a window to the front.
QString takenActivation() {
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qEnvironmentVariable("DESKTOP_STARTUP_ID") : token;
}

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
    WindowShell(SingleInstance& instance, const StartWish& wish)
        : m_instance(instance),
          m_wish(wish),
          m_stored(Paths::supportDirectory() + u"/window.ini"_s),
          m_state(WindowState::load(m_stored.file())),
          m_model(modelOptions()) {
        // The scan runs while the window is being made.
        m_model.refresh();
        m_model.orphans()->look();
    }

    [[nodiscard]] bool open();

private:
    static AppModel::Options modelOptions();
    void followLook();
    void place();
    void remember();
    void saveSoon();
    void saveState();
    void reportFrames();
    void startRest();
    void makeTrayItem();
    void awaitTray(QDeadlineTimer limit);
    void showShortcut();
    void showWindow();
    void makeVisible();
    void hideWindow();
    void answer(const StartWish& wish);
    Q_SLOT void windowClosed();
    Q_SLOT void askToQuit();
    Q_SLOT void chooseFolder() { Dialogs::chooseFolder(*m_window, m_model); }
    Q_SLOT void saveLogs() { Dialogs::saveLogs(*m_window, m_model); }
    Q_SLOT void answerToQuit(int choice);
    void quit();
    void kill();
    void leave();
    static void endWithoutDisplay();

    static WindowShell* s_open; ///< while the application runs
    SingleInstance& m_instance;
    const StartWish m_wish;
    WindowStateWriter m_stored;
    WindowState m_state;
    const QStringList m_broken = brokenStores(); ///< before the model writes over one
    AppModel m_model;
    DraftKeeper m_drafts{m_model};
    PlaceKeeper m_places{m_model};
    SystemLook m_look;
    QQmlApplicationEngine m_engine;
    QQuickWindow* m_window = nullptr;
    Qt::WindowStates m_hiddenStates; ///< in which it comes back
    QTimer m_settled;
    SignalWatcher m_signals;
    SystemEvents m_systemEvents;
    std::optional<StatusBarController> m_statusBar;
    bool m_quitting = false;
};

AppModel::Options WindowShell::modelOptions() {
    AppModel::Options options;
    options.notifier = makeSystemNotifier();
    options.login = makeLoginItem();
    // One that was just hidden has the focus for a moment still.
    options.appIsActive = [] {
        const QWindow* focused = QGuiApplication::focusWindow();
        return focused != nullptr && focused->isVisible();
    };
    return options;
}

bool WindowShell::open() {
    m_look.assume(m_state.isSystemDark);
    registerScreens(m_engine);
    followLook();
    TerminalLook::instance()->setFontSize(m_state.terminalFontSize);
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
    connect(m_model.terminalTabs(), &TerminalTabs::clipboardWriteRequested, m_window, &putOnClipboard);
    m_model.setOpenMainWindowAction([this] { showWindow(); });
#ifdef Q_OS_MACOS
    m_model.setActivationPolicy = &setActivationPolicy;
    m_model.setReloadWidgets(&reloadWidgets);
#endif
    m_model.applyDockIconPolicy();
    reportFrames();
    place();
    connect(m_window, SIGNAL(closeAsked()), this, SLOT(windowClosed()));
    connect(m_window, SIGNAL(quitAsked()), this, SLOT(askToQuit()));
    connect(m_window, SIGNAL(folderAsked()), this, SLOT(chooseFolder()));
    connect(m_window, SIGNAL(logsSaveAsked()), this, SLOT(saveLogs()));
    connect(m_window, SIGNAL(quitAnswered(int)), this, SLOT(answerToQuit(int)));
    connect(&m_signals, &SignalWatcher::stopAsked, this, [this] { m_quitting ? kill() : quit(); });
    connect(&m_systemEvents, &SystemEvents::addressOpened, this, [this](const QUrl& url) {
        showWindow();
        m_model.handle(url);
    });
    connect(&m_systemEvents, &SystemEvents::quitAsked, this, &WindowShell::askToQuit);
    connect(&m_instance, &SingleInstance::called, this, [this](const QByteArray& message) {
        answer(StartWish::ofMessage(message));
    });
    const QString page = m_wish.page.isEmpty() ? userDefault(u"OrvStartPage"_s) : m_wish.page;
    const bool isForAnother = openStartPage(m_model, page) || !m_wish.url.isEmpty();
    m_places.restore(m_state, isForAnother ? PlaceKeeper::Page::another : PlaceKeeper::Page::asItWas);
    if (!m_wish.url.isEmpty()) {
        m_model.handle(QUrl(m_wish.url));
    }
    // What the first frame does not need comes after it. There is none where the window is not to be seen.
    connect(
        m_window, &QQuickWindow::frameSwapped, this, [this] { QTimer::singleShot(0ms, this, &WindowShell::startRest); },
        Qt::SingleShotConnection);
    QTimer::singleShot(m_wish.staysInTray ? 0ms : frameLimit, this, &WindowShell::startRest);
    return true;
}

void WindowShell::startRest() {
    if (m_statusBar) {
        return;
    }
    m_look.start();
    if (m_model.notificationsEnabled()) {
        m_model.refreshNotificationStatus();
    }
    makeTrayItem();
    if (!m_broken.isEmpty()) {
        m_model.setModal(ModalContent{tr("Not everything could be read"), m_broken.join(u"\n\n"_s)});
    }
    m_instance.listen();
    if (m_wish.staysInTray) {
        awaitTray(QDeadlineTimer(trayLimit));
    }
    QGuiApplication::setWindowIcon(QIcon(u":/qt/qml/OrvLauncher/Screens/icons/app-icon.svg"_s));
}

void WindowShell::followLook() {
    Theme* theme = Theme::instance();
    const auto apply = [this, theme] {
        AppSettings settings = m_model.settings().settings();
        if (m_model.needsOnboarding()) {
            // What is chosen there is seen at once, and stored at its end.
            settings.appearance = m_model.onboarding()->form().appearance;
            settings.theme = m_model.onboarding()->form().theme;
        }
        const bool followsSystem = settings.appearance == AppearanceMode::system;
        theme->setDark(followsSystem ? m_look.isDark() : settings.appearance == AppearanceMode::dark);
        theme->setTheme(int(settings.theme));
        theme->setReducedMotion(m_look.reducedMotion());
        theme->setHigherContrast(m_look.higherContrast());
    };
    apply();
    connect(&m_model.settings(), &SettingsStore::settingsChanged, theme, apply);
    connect(&m_look, &SystemLook::changed, theme, apply);
    connect(m_model.onboarding(), &OnboardingModel::changed, theme, apply);
}

void WindowShell::makeTrayItem() {
    m_statusBar.emplace(m_model, m_engine);
    connect(&*m_statusBar, &StatusBarController::windowAsked, this, &WindowShell::showWindow);
    connect(&*m_statusBar, &StatusBarController::quitAsked, this, &WindowShell::askToQuit);
    connect(&*m_statusBar, &StatusBarController::settingsAsked, this, [this] {
        AppPage page;
        page.kind = AppPage::Kind::settings;
        m_model.setPage(page);
        showWindow();
    });
    // Most panels are dark; those of a desktop that asks for light mostly are not.
    const auto followPanel = [this] { m_statusBar->setPanelDark(!m_look.prefersLight()); };
    connect(&m_look, &SystemLook::changed, this, followPanel);
    followPanel();
    connect(&*m_statusBar, &StatusBarController::shortcutChanged, this, &WindowShell::showShortcut);
    showShortcut();
}

/// At login the tray may come after the application. Without one there has to be a window.
void WindowShell::awaitTray(QDeadlineTimer limit) {
    if (StatusItem::isAvailable() || m_window->isVisible()) {
        return;
    }
    if (limit.hasExpired()) {
        showWindow();
        return;
    }
    QTimer::singleShot(500ms, this, [this, limit] { awaitTray(limit); });
}

void WindowShell::showShortcut() {
    m_window->setProperty("shortcutNote", m_statusBar->shortcutNote());
    m_window->setProperty("shortcutTrigger", m_statusBar->shortcutTrigger());
}

void WindowShell::showWindow() {
    if (m_quitting) {
        return;
    }
    makeVisible();
    m_window->raise();
    m_window->requestActivate();
}

/// As large as it was: QWindow::show() would make it a normal one.
void WindowShell::makeVisible() {
    Qt::WindowStates states = m_window->isVisible() ? m_window->windowStates() : m_hiddenStates;
    states.setFlag(Qt::WindowMinimized, false);
    if (states != m_window->windowStates()) {
        m_window->setWindowStates(states);
    }
    m_window->setVisible(true);
}

void WindowShell::hideWindow() {
    if (m_window->isVisible()) {
        m_hiddenStates = m_window->windowStates();
        if (!m_hiddenStates.testFlag(Qt::WindowFullScreen)) {
            m_state.isMaximized = m_hiddenStates.testFlag(Qt::WindowMaximized);
        }
        m_window->hide();
    }
}

/// What another start was for.
void WindowShell::answer(const StartWish& wish) {
    {
        const ActivationToken token(wish.activation);
        if (wish.togglesPanel) {
            m_statusBar->togglePanel();
            return;
        }
        if (wish.staysInTray) {
            return;
        }
        showWindow();
    }
    if (!wish.url.isEmpty()) {
        m_model.handle(QUrl(wish.url));
    }
    openStartPage(m_model, wish.page);
}

/// With an icon in the tray the application lives on without its window.
void WindowShell::windowClosed() {
    if (StatusItem::isAvailable() && m_statusBar) {
        hideWindow();
    } else {
        askToQuit();
    }
}

void WindowShell::askToQuit() {
    const RunningWork work = RunningWork::of(m_model);
    if (m_quitting || !work.isAny()) {
        quit();
        return;
    }
    showWindow();
    QMetaObject::invokeMethod(
        m_window, "askToQuit", Q_ARG(QVariant, work.message()), Q_ARG(QVariant, StatusItem::isAvailable()));
}

void WindowShell::answerToQuit(int choice) {
    enum { stopAndQuit, keepRunning };
    if (choice == stopAndQuit) {
        quit();
    } else if (choice == keepRunning) {
        hideWindow();
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
    m_hiddenStates.setFlag(Qt::WindowMaximized, m_state.isMaximized);
    if (!m_wish.staysInTray) {
        makeVisible();
    }
    // Only what lasts counts: while a window is being maximised it has the large size, but not yet the state.
    m_settled.setSingleShot(true);
    m_settled.setInterval(500ms);
    connect(&m_settled, &QTimer::timeout, this, [this] {
        // What is closed on the way out was open.
        if (!m_quitting) {
            remember();
            saveState();
        }
    });
    for (const auto signal :
         {&QWindow::xChanged, &QWindow::yChanged, &QWindow::widthChanged, &QWindow::heightChanged}) {
        connect(m_window, signal, &m_settled, qOverload<>(&QTimer::start));
    }
    connect(m_window, &QWindow::visibilityChanged, &m_settled, qOverload<>(&QTimer::start));
    saveSoon();
}

/// Whatever ends the application, it comes back as it was a moment before.
void WindowShell::saveSoon() {
    connect(m_window, SIGNAL(sidebarHiddenChanged()), &m_settled, SLOT(start()));
    connect(&m_look, &SystemLook::changed, &m_settled, qOverload<>(&QTimer::start));
    connect(TerminalLook::instance(), &TerminalStyle::fontChanged, &m_settled, qOverload<>(&QTimer::start));
    connect(&m_places, &PlaceKeeper::changed, &m_settled, qOverload<>(&QTimer::start));
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
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    connect(m_window, &QQuickWindow::frameSwapped, this, [this, first = true]() mutable {
        if (std::exchange(first, false)) {
            std::puts("frame");
        }
        if (m_model.hasScanned()) {
            std::puts("content");
            std::_Exit(0);
        }
    });
}

void WindowShell::saveState() {
    m_state.isSidebarHidden = m_window->property("sidebarHidden").toBool();
    m_state.isSystemDark = m_look.isDark();
    m_places.store(m_state);
    m_state.terminalFontSize = TerminalLook::instance()->fontSize();
    m_stored.write(m_state);
}

void WindowShell::quit() {
    if (m_quitting) {
        return;
    }
    m_quitting = true;
    m_instance.leave();
    // What is being typed is taken over as it is left.
    if (QQuickItem* focused = m_window->activeFocusItem()) {
        focused->setFocus(false);
    }
    if (m_settled.isActive()) {
        remember();
    }
    hideWindow();
    saveState();
    m_model.terminals().closeAll();
    onFinished(m_model.quit(), this, [this] { leave(); });
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
    if (!s_open->m_quitting) { // else it is saved, and the terminals are closed since
        s_open->saveState();
    }
    s_open->m_stored.flush();
    s_open->m_drafts.flush();
    std::_Exit(exitFailed);
}

/// Without a window, and ended with that.
int exportIllustrations(const QString& folder) {
    const SettingsStore settings;
    const auto done =
        IllustrationExport{.folder = folder, .theme = int(settings.settings().theme)}.run(*Theme::instance());
    if (!done) {
        qWarning("Export failed: %s", qUtf8Printable(done.error()));
    }
    return done ? exitOk : exitFailed;
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

int runWindow(int argc, char** argv, const StartWish& wish) {
    QCoreApplication::setApplicationName(u"OrvLauncher"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ORV_VERSION));
    QGuiApplication::setApplicationDisplayName(u"OrvLauncher"_s);
    QGuiApplication::setDesktopFileName(u"orvlauncher"_s);
    const QString folder = wish.illustrations.isEmpty() ? userDefault(u"OrvExportIllustrations"_s) : wish.illustrations;
    SingleInstance instance;
    if (folder.isEmpty()) {
        StartWish message = wish;
        message.activation = takenActivation();
        const auto waits = [] { std::fputs("OrvLauncher still stops what ran; it starts after that.\n", stderr); };
        switch (instance.begin(message.toMessage(), answerLimit, waits)) {
        case SingleInstance::Role::handedOver:
            return exitOk;
        case SingleInstance::Role::unanswered:
            std::fputs("OrvLauncher runs already, and does not answer.\n", stderr);
            return exitFailed;
        case SingleInstance::Role::first:
            break;
        }
    }
    chooseGraphics();
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
    const QApplication application(argc, argv);
    drawWithoutDelay();
#ifndef Q_OS_MACOS
    PlatformWords words;
    QCoreApplication::installTranslator(&words);
#endif
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (!folder.isEmpty()) {
        return exportIllustrations(folder);
    }
    if (wish.togglesPanel) {
        std::fputs("OrvLauncher did not run; it is started, with its window.\n", stderr);
    }
    WindowShell shell(instance, wish.asFirst());
    if (!shell.open()) {
        return 1;
    }
    return QGuiApplication::exec();
}

} // namespace orv

#include "Window.moc"
