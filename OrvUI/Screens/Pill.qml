import OrvLauncher.Screens
import QtQuick

// A short word in a rounded field, with a dot or icon where it stands for a state.
Rectangle {
    id: pill

    property alias text: label.text
    property string glyph
    property color tint: Theme.text2
    property color fill: Theme.control

    implicitWidth: label.implicitWidth + Theme.space16 + (glyph.length > 0 ? Theme.iconMini + Theme.space4 : 0)
    implicitHeight: Theme.space20
    radius: height / 2
    color: fill
    border.width: Qt.colorEqual(fill, Theme.control) ? 0 : Theme.softEdge
    border.color: tint

    Row {
        id: row

        anchors.centerIn: parent
        spacing: Theme.space4

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            visible: pill.glyph.length > 0
            name: pill.glyph
            size: Theme.iconMini
            color: pill.tint
        }

        Label {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, pill.width - Theme.space16 - (pill.glyph.length > 0 ? Theme.iconMini + Theme.space4 : 0))
            role: Theme.Caption
            color: pill.tint
        }
    }
}
