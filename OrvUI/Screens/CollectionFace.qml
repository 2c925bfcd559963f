import OrvLauncher.Screens
import QtQuick

// What a card shows of a folder of projects: its name, how many there are, the first of them, and how many run.
Item {
    id: face

    required property string name
    // Of maps with a name and a tile.
    required property var members
    required property int runningMembers
    required property bool reachable
    readonly property int shownTiles: members.length > 6 ? 5 : members.length
    signal opened

    Rectangle {
        id: tile

        x: Theme.space16
        y: Theme.space16
        width: Theme.tile
        height: width
        radius: Theme.tileRadius(width)
        color: Theme.accentSoft

        Icon {
            anchors.centerIn: parent
            name: "folder"
            size: Theme.iconLarge
            color: Theme.accentText
        }
    }

    Label {
        id: title

        anchors.left: tile.right
        anchors.leftMargin: Theme.space12
        anchors.right: parent.right
        anchors.rightMargin: Theme.space16
        anchors.top: tile.top
        anchors.topMargin: -Theme.hairline
        role: Theme.CardTitle
        text: face.name

        Tip {
            text: title.truncated ? face.name : ""
        }
    }

    Label {
        anchors.left: title.left
        anchors.top: title.bottom
        role: Theme.Small
        color: Theme.text2
        text: face.members.length === 1 ? qsTr("1 project") : qsTr("%1 projects").arg(face.members.length)
    }

    Row {
        anchors.left: tile.left
        anchors.top: tile.bottom
        anchors.topMargin: Theme.space8
        spacing: Theme.space8

        Repeater {
            model: face.members.slice(0, face.shownTiles)

            Tile {
                id: member

                required property var modelData

                size: Theme.tileSmall
                tileIndex: modelData.tileIndex
                tileLetter: modelData.tileLetter

                Tip {
                    text: member.modelData.name
                }
            }
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            visible: face.members.length > face.shownTiles
            role: Theme.SmallStrong
            color: Theme.text3
            text: qsTr("+%1").arg(face.members.length - face.shownTiles)
        }
    }

    Row {
        anchors.left: tile.left
        anchors.leftMargin: -Theme.space4
        anchors.verticalCenter: open.verticalCenter
        spacing: Theme.space6

        StatusDot {
            anchors.verticalCenter: parent.verticalCenter
            cardState: face.runningMembers > 0 ? "running" : "idle"
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Small
            color: face.runningMembers > 0 ? Theme.text2 : Theme.text3
            text: face.runningMembers > 0 ? qsTr("%1 running").arg(face.runningMembers) : qsTr("None running")
        }
    }

    Button {
        id: open

        anchors.right: parent.right
        anchors.rightMargin: Theme.space16
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.space16
        text: qsTr("Open")
        focusPolicy: face.reachable ? Qt.StrongFocus : Qt.ClickFocus
        Accessible.name: qsTr("Open %1").arg(face.name)
        onClicked: face.opened()
    }
}
