import OrvLauncher.Screens
import QtQuick

// The output of a project's services, one at a time, with search.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    required property ProjectDetail detail
    property bool narrow: false
    property int padding: Theme.pagePadding
    property alias follow: tools.follow
    // Of which there can be output.
    readonly property bool hasServices: services.count > 0
    readonly property ServiceLogs logs: model.logs
    readonly property LogModel lines: logs.lines

    Binding {
        target: page.logs
        property: "projectID"
        value: page.detail.projectID
    }

    Item {
        id: bar

        visible: page.hasServices
        x: page.padding
        y: Theme.space12
        width: page.width - 2 * x
        height: Theme.controlRegular

        ServiceChoice {
            id: services

            visible: page.hasServices && !tools.covers
            logs: page.logs
            room: bar.width - tools.leastWidth - Theme.space12
        }

        LogTools {
            id: tools

            anchors.right: parent.right
            lines: page.lines
            nav: page.nav
            room: bar.width - services.width - Theme.space12
            fullRoom: bar.width
            wrap: page.logs.wrap
            timed: page.logs.timed
            onWrapChanged: page.logs.wrap = wrap
            onTimedChanged: page.logs.timed = timed
            topRow: output.topRow
            onSearchLeft: output.forceActiveFocus(Qt.OtherFocusReason)
        }
    }

    LogOutput {
        id: output

        anchors.fill: parent
        anchors.topMargin: bar.y + bar.height + Theme.space12
        anchors.leftMargin: page.padding
        anchors.rightMargin: page.padding
        anchors.bottomMargin: Theme.space20
        visible: page.hasServices
        focus: page.hasServices
        logs: page.logs
        tools: tools
        service: services.count > 0 ? services.shownText : ""
        onLinkActivated: link => page.nav.followLink(link)
        onFileActivated: (path, line, column) => page.model.openFile(path, line, column)
    }

    EmptyState {
        x: Math.round((page.width - width) / 2)
        y: Math.max(Theme.space16, Math.round((page.height - height) / 2) - Theme.space28)
        visible: !page.hasServices
        picture: "no-output"
        heading: qsTr("No output yet")
        text: qsTr("Start a service to see its logs here.")

        RunButton {
            id: run

            focus: !page.hasServices
            projectName: page.detail.name
            action: choice.preferred
            actions: page.detail.startable
            choosesDevice: page.detail.isFlutter
            busy: false
            onStarted: page.model.runAction(page.detail.projectID, action)
            onChoose: anchor => choice.open(anchor)
        }
    }

    RunChoice {
        id: choice

        model: page.model
        detail: page.detail
    }

    Shortcut {
        sequences: Keymap.of("search")
        onActivated: tools.focusSearch()
    }

    Shortcut {
        sequences: Keymap.of("nextHit")
        onActivated: page.lines.nextMatch()
    }

    Shortcut {
        sequences: Keymap.of("previousHit")
        onActivated: page.lines.previousMatch()
    }

    Shortcut {
        sequences: Keymap.of("follow")
        onActivated: output.followEnd()
    }

    Shortcut {
        sequences: Keymap.of("copyLogs")
        onActivated: Clipboard.copy(page.lines.allText())
    }

    Shortcut {
        sequences: Keymap.of("clearLogs")
        onActivated: page.lines.clear()
    }
}
