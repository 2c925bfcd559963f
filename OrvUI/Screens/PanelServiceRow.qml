import OrvLauncher.Screens
import QtQuick

// A service that runs, in the quick panel.
Item {
    id: row

    required property int index
    required property string key
    required property string name
    required property string kindLabel
    required property string address
    required property string serviceState
    required property int tileIndex
    required property string tileLetter
    signal opened
    signal stopped

    height: visible ? Theme.panelRowHeight : 0
    Accessible.role: Accessible.ListItem
    Accessible.name: qsTr("%1, %2").arg(name).arg(kindLabel)
    Accessible.description: state.text

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.space8
        anchors.rightMargin: Theme.space8
        radius: Theme.radiusControl
        color: hover.hovered ? Theme.hover : "transparent"
    }

    HoverHandler {
        id: hover
    }

    Tile {
        id: tile

        x: Theme.space20
        anchors.verticalCenter: parent.verticalCenter
        size: Theme.controlRegular
        tileIndex: row.tileIndex
        tileLetter: row.tileLetter

        Rectangle {
            readonly property int edge: Theme.space2

            x: parent.width - width / 2 - edge
            y: parent.height - height / 2 - edge
            width: Theme.dot + 2 * edge
            height: width
            radius: width / 2
            color: Theme.raised

            StatusDot {
                anchors.centerIn: parent
                cardState: row.serviceState
            }
        }
    }

    Row {
        id: title

        anchors.left: tile.right
        anchors.leftMargin: Theme.space12
        anchors.top: tile.top
        anchors.topMargin: -Theme.space2
        anchors.right: buttons.left
        anchors.rightMargin: Theme.space8
        spacing: Theme.space4

        Label {
            id: project

            width: Math.min(implicitWidth, row.width / 3)
            role: Theme.Section
            text: row.name

            Tip {
                text: project.truncated ? project.text : ""
            }
        }

        Label {
            id: kind

            anchors.verticalCenter: parent.verticalCenter
            width: Math.max(0, Math.min(implicitWidth, title.width - x))
            role: Theme.Small
            color: Theme.text2
            elide: Text.ElideMiddle
            text: row.kindLabel

            Tip {
                text: kind.truncated ? kind.text : ""
            }
        }
    }

    Label {
        id: state

        anchors.left: title.left
        anchors.right: title.right
        anchors.top: title.bottom
        role: Theme.Small
        color: row.serviceState === "running" ? Theme.text2 : Theme.warning
        elide: Text.ElideMiddle
        text: row.address.length > 0 ? qsTr("Running · %1").arg(row.address) : RunWords.ofState(row.serviceState)
    }

    Row {
        id: buttons

        anchors.right: parent.right
        anchors.rightMargin: Theme.space16
        anchors.verticalCenter: parent.verticalCenter

        IconButton {
            visible: row.address.length > 0
            glyph: "arrow-up-right"
            text: qsTr("Open it in your browser")
            onClicked: row.opened()
        }

        IconButton {
            enabled: row.serviceState !== "stopping"
            glyph: "own-stop-fill"
            glyphSize: Theme.iconSmall
            text: qsTr("Stop %1 of %2").arg(row.kindLabel).arg(row.name)
            onClicked: row.stopped()
        }
    }
}
