import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

T.MenuItem {
    id: row

    property int toldRole: Accessible.MenuItem
    property string glyph
    property string shortcut
    readonly property color ink: !enabled ? Theme.disabled : highlighted ? Theme.accentText : Theme.text2

    implicitWidth: leftPadding + rightPadding + title.anchors.leftMargin + title.implicitWidth + (hint.visible ? hint.implicitWidth + Theme.space16 : 0)
    implicitHeight: Theme.menuRowHeight
    leftPadding: Theme.space8
    rightPadding: Theme.space8
    Accessible.role: toldRole
    Accessible.name: text

    background: Rectangle {
        radius: Theme.radiusRow
        color: row.highlighted ? Theme.selection : "transparent"
    }

    contentItem: Item {
        Icon {
            id: icon

            anchors.verticalCenter: parent.verticalCenter
            visible: row.glyph.length > 0
            name: row.glyph
            color: row.ink
        }

        Label {
            id: title

            anchors.left: parent.left
            anchors.leftMargin: row.glyph.length > 0 ? Theme.space24 : 0
            anchors.right: hint.left
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            color: row.enabled ? Theme.text : Theme.disabled
            text: row.text
        }

        KeyHint {
            id: hint

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            width: visible ? implicitWidth : 0
            visible: text.length > 0
            text: row.shortcut
        }
    }
}
