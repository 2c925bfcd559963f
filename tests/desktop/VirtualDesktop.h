#pragma once

#include <QProcess>
#include <QRect>
#include <QTemporaryDir>

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
    [[nodiscard]] QString busAddress() const { return m_environment.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")); }

    /// Ends the X server under those who use it.
    void endScreen();
    void click(QPoint at) const;
    /// As xdotool names them: "ctrl+d".
    void key(const QString& keys) const;
    void type(const QString& text) const;
    /// The output of a tool that runs on this desktop.
    QString tool(const QString& program, const QStringList& arguments) const;

private:
    QProcess* start(const QString& program, const QStringList& arguments);
    QString firstLine(QProcess* process);

    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    std::vector<std::unique_ptr<QProcess>> m_processes;
    QString m_problem;
};

} // namespace orv::test
