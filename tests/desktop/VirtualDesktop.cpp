#include "tests/desktop/VirtualDesktop.h"

#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <cstdlib>

#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace orv::test {

VirtualDesktop::VirtualDesktop() : m_environment(QProcessEnvironment::systemEnvironment()) {
    m_environment.remove(u"WAYLAND_DISPLAY"_s);
    m_environment.insert(u"HOME"_s, m_home.path());
    m_environment.insert(u"XDG_RUNTIME_DIR"_s, m_home.path());
    m_environment.insert(u"QT_LINUX_ACCESSIBILITY_ALWAYS_ON"_s, u"1"_s);

    m_environment.remove(u"ZDOTDIR"_s);
    m_environment.insert(u"PATH"_s, m_home.filePath(u"bin:"_s) + m_environment.value(u"PATH"_s));

    QDir(m_home.path()).mkdir(u"bin"_s);
    for (const QString& profile : {u".profile"_s, u".zprofile"_s}) {
        write(profile, "PATH=\"$HOME/bin:$PATH\"\n");
    }
    // Without one of its files zsh asks whether it shall make them.
    write(u".zshrc"_s, {});

    QProcess* server = start(
        u"Xvfb"_s,
        {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"%1x%2x24"_s.arg(screen().width()).arg(screen().height()),
         u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
    m_environment.insert(u"DISPLAY"_s, u':' + firstLine(server));
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

void VirtualDesktop::startTray() {
    start(
        u"trayer"_s, {u"--edge"_s, u"top"_s, u"--align"_s, u"right"_s, u"--SetDockType"_s, u"true"_s,
                      u"--SetPartialStrut"_s, u"true"_s, u"--width"_s, u"10"_s, u"--height"_s, u"32"_s});
    if (!waitFor([this] { return !windows(u"panel"_s).isEmpty(); }) && m_problem.isEmpty()) {
        m_problem = u"the tray did not come up"_s;
    }
}

QRect VirtualDesktop::trayIcon(const QString& application) const {
    const QString tree = tool(u"xwininfo"_s, {u"-name"_s, u"panel"_s, u"-tree"_s});
    const QRegularExpression line(
        u"\"%1\": .* (\\d+)x(\\d+)[+-]\\d+[+-]\\d+ +\\+(\\d+)\\+(\\d+)"_s.arg(QRegularExpression::escape(application)));
    const auto found = line.match(tree);
    const auto number = [&found](int index) { return found.captured(index).toInt(); };
    return found.hasMatch() ? QRect(number(3), number(4), number(1), number(2)) : QRect();
}

QByteArray VirtualDesktop::picture(const QRect& part) const {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(qPrintable(m_environment.value(u"DISPLAY"_s)), nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return {};
    }
    const xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    const auto cookie = xcb_get_image(
        connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, screens.data->root, static_cast<int16_t>(part.x()),
        static_cast<int16_t>(part.y()), static_cast<uint16_t>(part.width()), static_cast<uint16_t>(part.height()), ~0U);
    const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> image(
        xcb_get_image_reply(connection.get(), cookie, nullptr), &std::free);
    return image ? QByteArray(
                       reinterpret_cast<const char*>(xcb_get_image_data(image.get())),
                       xcb_get_image_data_length(image.get()))
                 : QByteArray();
}

VirtualDesktop::Holder VirtualDesktop::holdKeys(uint16_t modifiers) const {
    const std::shared_ptr<xcb_connection_t> connection(
        xcb_connect(qPrintable(m_environment.value(u"DISPLAY"_s)), nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return {};
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    const auto cookie = xcb_grab_key_checked(
        connection.get(), 0, root, modifiers, XCB_GRAB_ANY, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const std::unique_ptr<xcb_generic_error_t, decltype(&std::free)> error(
        xcb_request_check(connection.get(), cookie), &std::free);
    return error ? nullptr : connection;
}

QStringList VirtualDesktop::windows(const QString& title) const {
    return tool(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u'^' + title})
        .split(u'\n', Qt::SkipEmptyParts);
}

QRect VirtualDesktop::place(const QString& window) const {
    const QString said = tool(u"xdotool"_s, {u"getwindowgeometry"_s, u"--shell"_s, window});
    const auto number = [&said](const QString& name) {
        return QRegularExpression(u"^%1=(-?\\d+)$"_s.arg(name), QRegularExpression::MultilineOption)
            .match(said)
            .captured(1)
            .toInt();
    };
    return {number(u"X"_s), number(u"Y"_s), number(u"WIDTH"_s), number(u"HEIGHT"_s)};
}

void VirtualDesktop::write(const QString& name, const QByteArray& content) const {
    QFile file(m_home.filePath(name));
    file.open(QFile::WriteOnly);
    file.write(content);
}

void VirtualDesktop::addProgram(const QString& name, const QByteArray& script) const {
    write(u"bin/"_s + name, "#!/bin/sh\n" + script);
    QFile::setPermissions(m_home.filePath(u"bin/"_s + name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
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

void VirtualDesktop::point(QPoint at) const {
    tool(u"xdotool"_s, {u"mousemove"_s, QString::number(at.x()), QString::number(at.y())});
}

void VirtualDesktop::click(QPoint at, int button) const {
    point(at);
    tool(u"xdotool"_s, {u"click"_s, QString::number(button)});
}

void VirtualDesktop::drag(QPoint from, QPoint to) const {
    point(from);
    tool(u"xdotool"_s, {u"mousedown"_s, u"1"_s});
    point((from + to) / 2);
    point(to);
    tool(u"xdotool"_s, {u"mouseup"_s, u"1"_s});
}

void VirtualDesktop::key(const QString& keys) const {
    tool(u"xdotool"_s, {u"key"_s, keys});
}

void VirtualDesktop::type(const QString& text) const {
    tool(u"xdotool"_s, {u"type"_s, text});
}

} // namespace orv::test
