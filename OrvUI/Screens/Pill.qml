import OrvLauncher.Screens
import QtQuick

// A short word in a rounded field, with a dot or icon where it stands for a state.
Rectangle {
    id: pill

    property alias text: label.text
    property string glyph
    // Something goes on: a spinner stands before the word.
    property bool busy: false
    readonly property int lead: glyph.length > 0 || busy ? Theme.iconMini + Theme.space4 : 0
    property color tint: Theme.text2
    property color fill: Theme.control

    implicitWidth: label.implicitWidth + Theme.space16 + lead
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

        Loader {
            anchors.verticalCenter: parent.verticalCenter
            active: pill.busy
            visible: active

            sourceComponent: Spinner {
                size: Theme.iconMini
                color: pill.tint
            }
        }

        Figures {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, pill.width - Theme.space16 - pill.lead)
            role: Theme.Caption
            color: pill.tint
        }
    }
}
