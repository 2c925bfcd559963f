#pragma once

#include <QProcess>
#include <QRect>
#include <QTemporaryDir>

#include <cstdint>
#include <memory>
#include <vector>

namespace orv::test {

/// A screen that nobody sees: Xvfb on a display number that is free, a window manager, a session bus with the
/// accessibility bus behind it. All of it ends with the object.
class VirtualDesktop {
public:
    VirtualDesktop();
    ~VirtualDesktop();

    /// What could not be started, in words; empty when the desktop is there.
    [[nodiscard]] QString problem() const { return m_problem; }
    /// The environment of a program on this desktop, with a home of its own.
    [[nodiscard]] QProcessEnvironment environment() const { return m_environment; }
    [[nodiscard]] QString home() const { return m_home.path(); }
    [[nodiscard]] QString busAddress() const { return m_environment.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")); }

    /// Ends the X server under those who use it.
    void endScreen();
    /// A tray at the upper edge, for those who ask for one from now on.
    void startTray();
    /// The place of the icon that an application of that name has in the tray; empty when there is none.
    [[nodiscard]] QRect trayIcon(const QString& application) const;
    /// The pixels of a part of the screen, as the server has them; empty when it is not on the screen.
    [[nodiscard]] QByteArray picture(const QRect& part) const;
    /// The windows that can be seen and whose title begins so, as the tools of this desktop name them.
    [[nodiscard]] QStringList windows(const QString& title) const;
    /// Without the frame that the window manager draws.
    [[nodiscard]] QRect place(const QString& window) const;
    [[nodiscard]] static QRect screen() { return {0, 0, 1400, 1000}; }
    /// Puts a program where the shells of this desktop look first.
    void addProgram(const QString& name, const QByteArray& script) const;

    void point(QPoint at) const;
    /// `button` as X numbers them: 2 is the middle one.
    void click(QPoint at, int button = 1) const;
    /// With the first button held.
    void drag(QPoint from, QPoint to) const;
    /// As xdotool names them: "ctrl+d".
    void key(const QString& keys) const;
    void type(const QString& text) const;
    using Holder = std::shared_ptr<void>;
    /// Takes every key with these modifiers, as another application would, for as long as the holder lives; null while
    /// another application has one of them.
    [[nodiscard]] Holder holdKeys(uint16_t modifiers) const;
    /// The output of a tool that runs on this desktop.
    QString tool(const QString& program, const QStringList& arguments) const;

private:
    QProcess* start(const QString& program, const QStringList& arguments);
    QString firstLine(QProcess* process);
    /// Below the home.
    void write(const QString& name, const QByteArray& content) const;

    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    std::vector<std::unique_ptr<QProcess>> m_processes;
    QString m_problem;
};

} // namespace orv::test
