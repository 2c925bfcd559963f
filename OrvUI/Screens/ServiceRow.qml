import OrvLauncher.Screens
import QtQuick

// A service of a project's page: what it is, what it runs, its state, and what can be done with it.
Item {
    id: row

    required property int index
    required property string key
    required property string icon
    required property string label
    required property string framework
    required property string folder
    required property string command
    required property string serviceState
    required property string message
    required property string address
    required property bool portListening
    readonly property bool active: serviceState === "running" || serviceState === "starting"
    // By an application that was killed: it can be stopped, and is when it is started anew.
    readonly property bool orphaned: serviceState === "orphaned"
    readonly property var look: ({
            "idle": {
                "text": qsTr("Not running"),
                "tint": Theme.text2,
                "fill": Theme.control
            },
            "starting": {
                "text": qsTr("Starting…"),
                "tint": Theme.warning,
                "fill": Theme.warningSoft
            },
            "stopping": {
                "text": qsTr("Stopping…"),
                "tint": Theme.warning,
                "fill": Theme.warningSoft
            },
            "running": {
                "text": qsTr("Running"),
                "tint": Theme.success,
                "fill": Theme.successSoft
            },
            "orphaned": {
                "text": qsTr("Running from last time"),
                "tint": Theme.warning,
                "fill": Theme.warningSoft
            },
            "failed": {
                "text": qsTr("Failed"),
                "tint": Theme.danger,
                "fill": Theme.dangerSoft
            }
        })[serviceState]
    signal started
    signal stopped
    signal restarted
    signal opened
    signal corrected
    signal logsAsked

    implicitHeight: Theme.serviceRowHeight + (failure.visible ? failure.height + Theme.space8 : 0)
    Accessible.role: Accessible.ListItem
    Accessible.name: framework.length > 0 ? qsTr("%1, %2").arg(label).arg(framework) : label
    Accessible.description: address.length > 0 ? qsTr("Running on %1").arg(address) : look.text

    Rectangle {
        visible: row.index > 0
        width: parent.width
        height: Theme.hairline
        color: Theme.border
    }

    Rectangle {
        id: tile

        x: Theme.space16
        y: Math.round((Theme.serviceRowHeight - height) / 2)
        width: Theme.space40
        height: width
        radius: Theme.tileRadius(Theme.tile)
        color: Theme.control

        Icon {
            anchors.centerIn: parent
            name: row.icon
            size: Theme.iconLarge
            color: Theme.text2
        }
    }

    Row {
        id: title

        anchors.left: tile.right
        anchors.leftMargin: Theme.space12 + Theme.space2
        y: tile.y
        width: line.width
        height: Theme.space20
        spacing: Theme.space8

        Label {
            id: name

            anchors.verticalCenter: parent.verticalCenter
            width: Math.max(0, Math.min(implicitWidth, title.width - (kind.visible ? kind.width + title.spacing : 0)))
            role: Theme.CardTitle
            elide: Text.ElideMiddle
            text: row.label

            Tip {
                text: name.truncated ? name.text : ""
            }
        }

        Pill {
            id: kind

            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, Math.max(title.width / 3, Math.floor(title.width - name.implicitWidth - title.spacing)))
            visible: row.framework.length > 0
            text: row.framework
        }
    }

    Row {
        id: line

        anchors.left: title.left
        anchors.top: title.bottom
        anchors.topMargin: Theme.space2
        width: Math.max(0, state.x - x - Theme.space12)
        spacing: Theme.space6

        // The command is the same for many.
        Label {
            id: folder

            width: Math.max(0, Math.min(Math.ceil(implicitWidth), line.width - Math.min(command.implicitWidth + line.spacing, line.width / 3)))
            visible: text.length > 0
            elide: Text.ElideMiddle
            role: Theme.MonoPath
            color: Theme.text3
            text: row.folder

            Tip {
                text: folder.truncated ? folder.text : ""
            }
        }

        Label {
            id: command

            width: Math.max(0, line.width - x)
            role: Theme.MonoPath
            color: Theme.text2
            text: row.command

            Tip {
                text: command.truncated ? command.text : ""
            }
        }
    }

    Row {
        id: state

        anchors.right: tools.left
        anchors.rightMargin: Theme.space20
        y: Math.round((Theme.serviceRowHeight - height) / 2)
        height: Theme.controlSmall
        spacing: Theme.space10

        StatePill {
            anchors.verticalCenter: parent.verticalCenter
            serviceState: row.serviceState
            text: row.look.text
            tint: row.look.tint
            fill: row.look.fill
        }

        AddressLink {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, row.width / 3)
            visible: row.address.length > 0
            text: row.address
            listening: row.portListening
            onClicked: row.opened()
        }
    }

    Row {
        id: tools

        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: state.verticalCenter
        spacing: Theme.space2

        IconButton {
            visible: row.serviceState !== "idle" && !row.orphaned
            glyph: "logs"
            text: qsTr("Output of %1").arg(row.label)
            onClicked: row.logsAsked()
        }

        IconButton {
            visible: row.active
            glyph: "rotate-cw"
            text: qsTr("Restart %1").arg(row.label)
            onClicked: row.restarted()
        }

        IconButton {
            visible: row.orphaned
            glyph: "own-stop-fill"
            glyphSize: Theme.iconSmall
            tint: hovered ? Theme.text : Theme.text3
            text: qsTr("Stop %1").arg(row.label)
            onClicked: row.stopped()
        }

        IconButton {
            glyph: row.active ? "own-stop-fill" : "own-play-fill"
            glyphSize: Theme.iconSmall
            tint: !row.active ? Theme.accentText : hovered ? Theme.text : Theme.text3
            enabled: row.serviceState !== "stopping"
            text: row.active ? qsTr("Stop %1").arg(row.label) : qsTr("Run %1").arg(row.label)
            onClicked: row.active ? row.stopped() : row.started()
        }

        IconButton {
            id: more

            glyph: "ellipsis"
            text: qsTr("More for %1").arg(row.label)
            onClicked: {
                menu.active = true;
                const entries = menu.item as Menu;
                entries.popup(more, more.width - entries.width, more.height + Theme.space4);
            }
        }
    }

    Loader {
        id: menu

        active: false

        sourceComponent: Menu {
            MenuRow {
                glyph: "arrow-up-right"
                text: qsTr("Open in your browser")
                enabled: row.address.length > 0
                onTriggered: row.opened()
            }

            MenuRow {
                glyph: "copy"
                text: qsTr("Copy the command")
                onTriggered: Clipboard.copy(row.command)
            }

            MenuLine {}

            MenuRow {
                glyph: "folder-cog"
                text: qsTr("Correct this service…")
                onTriggered: row.corrected()
            }
        }
    }

    Rectangle {
        id: failure

        visible: row.serviceState === "failed" && row.message.length > 0
        anchors.left: title.left
        anchors.right: parent.right
        anchors.rightMargin: Theme.space16
        y: Theme.serviceRowHeight - Theme.space4
        height: reason.implicitHeight + Theme.space16
        radius: Theme.radiusControl
        color: Theme.dangerSoft
        border.width: Theme.softEdge
        border.color: Theme.danger

        Label {
            id: reason

            x: Theme.space10
            y: Theme.space8
            width: parent.width - 2 * x
            role: Theme.MonoPath
            color: Theme.danger
            wrapMode: Text.Wrap
            maximumLineCount: 4
            text: row.message
        }
    }
}
