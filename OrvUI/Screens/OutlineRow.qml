import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A folder or a project of the outline.
T.AbstractButton {
    id: row

    property int toldRole: Accessible.TreeItem
    required property int index
    required property int depth
    required property bool expanded
    required property bool isFolder
    required property bool hasChildren
    required property string name
    required property string path
    required property string projectID
    required property int tileIndex
    required property string tileLetter
    required property string cardState
    required property int gitChanges
    property bool selected: false
    readonly property string stateText: RunWords.ofState(cardState)
    signal chosen
    signal expandedSet(bool value)

    implicitHeight: Theme.outlineRowHeight
    focusPolicy: Qt.ClickFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: name
    Accessible.description: gitChanges === 0 ? stateText : stateText.length > 0 ? qsTr("%1, %2 changes").arg(stateText).arg(gitChanges) : qsTr("%1 changes").arg(gitChanges)
    Accessible.checkable: hasChildren
    Accessible.checked: expanded
    Accessible.selected: selected
    Keys.onReturnPressed: row.chosen()
    Keys.onEnterPressed: row.chosen()
    Keys.onRightPressed: row.expandedSet(true)
    Keys.onLeftPressed: row.expandedSet(false)
    onClicked: row.chosen()

    background: Rectangle {
        radius: Theme.radiusControl
        color: row.selected ? Theme.selection : row.pressed ? Theme.pressed : row.hovered ? Theme.hover : "transparent"

        FocusRing {
            control: row
            inside: true
        }
    }

    contentItem: Item {
        Icon {
            id: chevron

            x: Theme.space4 + row.depth * Theme.outlineIndent
            anchors.verticalCenter: parent.verticalCenter
            visible: row.hasChildren
            name: row.expanded ? "chevron-down" : "chevron-right"
            size: Theme.iconMini
            color: Theme.text3

            TapHandler {
                onTapped: row.expandedSet(!row.expanded)
            }
        }

        Icon {
            id: folder

            x: chevron.x + Theme.outlineIndent
            anchors.verticalCenter: parent.verticalCenter
            visible: row.isFolder
            name: row.expanded ? "folder-open" : "folder"
            size: Theme.iconSmall
            color: Theme.text2
        }

        Tile {
            x: folder.x
            anchors.verticalCenter: parent.verticalCenter
            visible: !row.isFolder
            size: Theme.tileMini
            tileIndex: row.tileIndex
            tileLetter: row.tileLetter
        }

        Label {
            id: title

            anchors.left: folder.left
            anchors.leftMargin: row.isFolder ? Theme.space20 : Theme.space20 + Theme.space2
            anchors.right: dot.left
            anchors.rightMargin: Theme.space4
            anchors.verticalCenter: parent.verticalCenter
            color: row.selected || row.hovered ? Theme.text : Theme.text2
            text: row.name

            Tip {
                text: title.truncated ? row.name : ""
            }
        }

        StatusDot {
            id: dot

            anchors.right: parent.right
            anchors.rightMargin: Theme.space6
            anchors.verticalCenter: parent.verticalCenter
            visible: row.cardState !== "idle" && row.cardState.length > 0
            size: Theme.dotSmall
            cardState: row.cardState
        }
    }
}
