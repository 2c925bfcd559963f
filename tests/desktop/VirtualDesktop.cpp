#include "tests/desktop/VirtualDesktop.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace orv::test {

VirtualDesktop::VirtualDesktop() : m_environment(QProcessEnvironment::systemEnvironment()) {
    m_environment.remove(u"WAYLAND_DISPLAY"_s);
    m_environment.insert(u"HOME"_s, m_home.path());
    m_environment.insert(u"XDG_RUNTIME_DIR"_s, m_home.path());
    m_environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);

    // Without one of its files zsh asks whether it shall make them.
    QFile(m_home.filePath(u".zshrc"_s)).open(QFile::WriteOnly);

    QProcess* screen = start(
        u"Xvfb"_s,
        {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1400x1000x24"_s, u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
    m_environment.insert(u"DISPLAY"_s, u':' + firstLine(screen));
    QProcess* bus = start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address=1"_s});
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, firstLine(bus));
    start(u"openbox"_s, {});
    if (m_problem.isEmpty() &&
        !waitFor([this] { return tool(u"xprop"_s, {u"-root"_s, u"_NET_SUPPORTING_WM_CHECK"_s}).contains(u"0x"); })) {
        m_problem = u"the window manager did not come up"_s;
    }
}

VirtualDesktop::~VirtualDesktop() {
    for (auto process = m_processes.rbegin(); process != m_processes.rend(); ++process) {
        (*process)->terminate();
        (*process)->waitForFinished();
    }
}

void VirtualDesktop::endScreen() {
    m_processes.front()->terminate();
    m_processes.front()->waitForFinished();
}

QProcess* VirtualDesktop::start(const QString& program, const QStringList& arguments) {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(m_environment);
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(program, arguments);
    if (!process->waitForStarted() && m_problem.isEmpty()) {
        m_problem = u"%1 could not be started"_s.arg(program);
    }
    m_processes.push_back(std::move(process));
    return m_processes.back().get();
}

QString VirtualDesktop::firstLine(QProcess* process) {
    if (!waitFor([process] { return process->canReadLine(); }) && m_problem.isEmpty()) {
        m_problem = u"%1 said nothing"_s.arg(process->program());
    }
    return QString::fromUtf8(process->readLine()).trimmed();
}

QString VirtualDesktop::tool(const QString& program, const QStringList& arguments) const {
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

void VirtualDesktop::click(QPoint at) const {
    tool(u"xdotool"_s, {u"mousemove"_s, QString::number(at.x()), QString::number(at.y()), u"click"_s, u"1"_s});
}

void VirtualDesktop::key(const QString& keys) const {
    tool(u"xdotool"_s, {u"key"_s, keys});
}

void VirtualDesktop::type(const QString& text) const {
    tool(u"xdotool"_s, {u"type"_s, text});
}

} // namespace orv::test
