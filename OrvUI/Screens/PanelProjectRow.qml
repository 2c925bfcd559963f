import OrvLauncher.Screens
import QtQuick

// A pinned project in the quick panel.
Item {
    id: row

    required property int index
    required property string projectID
    required property string name
    required property string cardState
    required property int tileIndex
    required property string tileLetter
    readonly property bool busy: cardState !== "idle" && cardState !== "failed"
    signal toggled

    height: visible ? Theme.space40 : 0
    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.description: RunWords.ofState(cardState)

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
        size: Theme.controlMini
        tileIndex: row.tileIndex
        tileLetter: row.tileLetter
    }

    Label {
        anchors.left: tile.right
        anchors.leftMargin: Theme.space12
        anchors.right: word.left
        anchors.rightMargin: Theme.space8
        anchors.verticalCenter: parent.verticalCenter
        role: Theme.BodyStrong
        text: row.name
    }

    Label {
        id: word

        anchors.right: button.left
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        role: Theme.Small
        color: row.cardState === "failed" ? Theme.danger : Theme.warning
        text: row.cardState === "running" ? "" : RunWords.ofState(row.cardState)
    }

    IconButton {
        id: button

        anchors.right: parent.right
        anchors.rightMargin: Theme.space16
        anchors.verticalCenter: parent.verticalCenter
        glyph: row.busy ? "own-stop-fill" : "own-play-fill"
        glyphSize: Theme.iconSmall
        text: row.busy ? qsTr("Stop %1").arg(row.name) : qsTr("Run %1").arg(row.name)
        onClicked: row.toggled()
    }
}
