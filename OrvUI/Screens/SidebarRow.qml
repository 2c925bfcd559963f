import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A filter of the sidebar; in the rail only its icon.
T.AbstractButton {
    id: row

    property int toldRole: Accessible.ListItem
    required property string glyph
    property int count: 0
    property bool showsCount: true
    property bool selected: false
    property bool rail: false
    // A bubble at the icon of the rail.
    property bool badge: false
    // Something goes on there.
    property bool busy: false
    // As wide as its words need.
    readonly property int naturalWidth: title.x + Math.ceil(title.implicitWidth) + Theme.space10
    property string shortcut
    // Its name with the count in it.
    property string counts: count === 1 ? qsTr("%1, 1 project").arg(text) : qsTr("%1, %2 projects").arg(text).arg(count)

    implicitHeight: rail ? Theme.railButtonHeight : Theme.sidebarRowHeight
    implicitWidth: rail ? Theme.railButtonWidth : Theme.sidebarWidth
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: showsCount ? counts : text
    Accessible.selected: selected
    Keys.onReturnPressed: row.clicked()
    Keys.onEnterPressed: row.clicked()
    onPressed: Tooltips.leave(row)

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
            id: icon

            x: row.rail ? Math.round((row.width - width) / 2) : Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            visible: row.glyph.length > 0
            size: row.rail ? Theme.iconLarge : Theme.icon
            width: visible ? size : 0
            name: row.glyph
            color: row.selected ? Theme.accentText : Theme.text2
        }

        Label {
            id: title

            anchors.left: icon.right
            anchors.leftMargin: icon.visible ? Theme.space10 : 0
            anchors.right: row.showsCount ? number.left : parent.right
            anchors.rightMargin: row.showsCount ? Theme.space8 : Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            visible: !row.rail
            role: Theme.BodyStrong
            color: row.selected || row.hovered ? Theme.text : Theme.text2
            text: row.text
        }

        Figures {
            id: number

            anchors.right: parent.right
            anchors.rightMargin: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            visible: !row.rail && row.showsCount
            role: Theme.Small
            color: Theme.text2
            text: row.count
        }

        Loader {
            anchors.right: number.left
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            active: row.busy && number.visible

            sourceComponent: Spinner {
                size: Theme.iconMini
            }
        }

        Rectangle {
            anchors.right: parent.right
            width: Math.max(height, bubble.implicitWidth + Theme.space6)
            height: Theme.bubble
            radius: height / 2
            visible: row.rail && row.badge && row.count > 0
            color: Theme.accent

            Label {
                id: bubble

                anchors.centerIn: parent
                role: Theme.TileLetter
                color: Theme.onAccent
                text: row.count > 9 ? "9+" : row.count
            }
        }
    }

    Tip {
        text: row.rail ? row.text : ""
        shortcut: row.shortcut
    }
}
