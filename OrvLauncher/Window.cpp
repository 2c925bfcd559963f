#include "Window.h"

#include "Cli.h"
#include "Graphics.h"
#include "OrvCore/Async.h"
#include "OrvCore/Paths.h"
#include "OrvLauncher/platform/LoginItem.h"
#include "OrvLauncher/platform/SystemNotifier.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/Screens/InputMode.h"
#include "OrvUI/Screens/Registration.h"
#include "OrvUI/Screens/SystemLook.h"
#include "OrvUI/Screens/Theme.h"
#include "OrvUI/Screens/WindowState.h"
#include "SignalWatcher.h"

#include <QDesktopServices>
#include <QGuiApplication>
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
    m_model.setOpenMainWindowAction([window = m_window] {
        window->show();
        window->raise();
        window->requestActivate();
    });
    m_model.applyDockIconPolicy();
    reportFrames();
    place();
    connect(m_window, &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible) {
            quit();
        }
    });
    connect(&m_signals, &SignalWatcher::stopAsked, this, [this] { m_quitting ? kill() : void(m_window->close()); });
    // What the first frame does not need comes after it.
    QMetaObject::invokeMethod(
        &m_look,
        [this] {
            m_look.start();
            if (m_model.notificationsEnabled()) {
                m_model.refreshNotificationStatus();
            }
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
    m_state.isSidebarHidden = m_window->property("sidebarHidden").toBool();
    m_state.isSystemDark = m_look.isDark();
    m_state.save(m_stateFile);
    onFinished(m_model.stopAllServices(), this, [this] { leave(); });
}

/// Whoever asks a second time does not wait for a stack of containers to come down.
void WindowShell::kill() {
    m_model.killServices();
    const auto leaveWhenGone = [this] {
        const auto& states = m_model.processes().states();
        if (std::ranges::none_of(states, &ServiceState::isActive)) {
            leave();
        }
    };
    connect(&m_model, &AppModel::servicesChanged, this, leaveWhenGone);
    QTimer::singleShot(1s, this, &WindowShell::leave); // what not even that ends
    leaveWhenGone();
}

void WindowShell::leave() {
    m_model.publishSnapshot();
    m_model.flushSnapshot();
    QGuiApplication::quit();
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
    QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    WindowShell shell;
    if (!shell.open()) {
        return 1;
    }
    return QGuiApplication::exec();
}

} // namespace orv
