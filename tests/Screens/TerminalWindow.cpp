// Shows the page of the terminals in a window of its own, to be looked at and driven from outside:
//
//     orv-terminal-window [--theme 0..4] [--light] [--empty] [--size WxH] [FOLDER]
//
// With ORV_BENCH_FRAMES=1 it prints a line a second: frames, lines painted, textures made.

#include "OrvTerminal/TerminalTabs.h"
#include "OrvTerminal/View/ProgramsClipboard.h"
#include "OrvTerminal/View/TerminalView.h"
#include "OrvUI/Screens/InputMode.h"
#include "OrvUI/Screens/Registration.h"
#include "OrvUI/Screens/Theme.h"

#include <QCommandLineParser>
#include <QDesktopServices>
#include <QDir>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr char window[] = R"(
import OrvLauncher.Screens
import QtQuick

Window {
    required property TerminalTabs tabs
    required property url folder
    required property string folderName

    title: "terminals"
    color: Theme.window

    TerminalPage {
        anchors.fill: parent
        anchors.margins: Theme.space32
        anchors.topMargin: Theme.space16
        anchors.bottomMargin: Theme.space20
        focus: true
        tabs: parent.Window.window.tabs
        folder: parent.Window.window.folder
        folderName: parent.Window.window.folderName
        onLinkActivated: link => console.info("link", link)
        onFileActivated: (path, line, column) => console.info("file", path, line, column)
    }

    TooltipLayer {}
}
)";

void printFrames(orv::TerminalTabs& tabs) {
    for (orv::TerminalSession* session : tabs.sessions()) {
        if (auto* view = qobject_cast<orv::TerminalView*>(session->terminalView())) {
            std::printf(
                "frames %llu lines %llu textures %llu\n", static_cast<unsigned long long>(view->frames()),
                static_cast<unsigned long long>(view->paintedLines()),
                static_cast<unsigned long long>(view->madeTextures()));
        }
    }
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addOptions({
        {u"theme"_s, {}, u"number"_s, u"0"_s},
        {u"light"_s, {}},
        {u"empty"_s, {}},
        {u"size"_s, {}, u"WxH"_s, u"1030x672"_s},
    });
    parser.addPositionalArgument(u"folder"_s, {});
    parser.process(application);
    const QStringList folders = parser.positionalArguments();
    const QDir folder(folders.isEmpty() ? QDir::currentPath() : folders.constFirst());
    const QStringList size = parser.value(u"size"_s).split(u'x');

    orv::Theme::instance()->setTheme(parser.value(u"theme"_s).toInt());
    orv::Theme::instance()->setDark(!parser.isSet(u"light"_s));
    orv::TerminalTabs tabs;
    QObject::connect(&tabs, &orv::TerminalTabs::clipboardWriteRequested, &tabs, &orv::putOnClipboard);
    QQmlApplicationEngine engine;
    orv::registerScreens(engine);
    const QUrl url = QUrl::fromLocalFile(folder.absolutePath());
    engine.setInitialProperties({
        {u"tabs"_s, QVariant::fromValue(&tabs)},
        {u"folder"_s, url},
        {u"folderName"_s, folder.dirName()},
        {u"width"_s, size.value(0).toInt()},
        {u"height"_s, size.value(1).toInt()},
        {u"visible"_s, true},
    });
    engine.loadData(QByteArray(window));
    if (engine.rootObjects().isEmpty()) {
        return 1;
    }
    engine.singletonInstance<orv::InputMode*>(qmlTypeId("OrvLauncher.Screens", 1, 0, "InputMode"))
        ->watch(engine.rootObjects().constFirst());
    if (!parser.isSet(u"empty"_s)) {
        tabs.open(url);
    }
    QTimer frames;
    if (qEnvironmentVariableIsSet("ORV_BENCH_FRAMES")) {
        QObject::connect(&frames, &QTimer::timeout, &tabs, [&tabs] { printFrames(tabs); });
        frames.start(std::chrono::seconds(1));
    }
    return QGuiApplication::exec();
}
