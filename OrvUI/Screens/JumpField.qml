import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Looks like a field and opens the command palette; in the rail only its icon.
T.AbstractButton {
    id: control

    property bool rail: false

    implicitHeight: rail ? Theme.railButtonHeight : Theme.controlRegular
    text: qsTr("Jump to…")
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: qsTr("Command palette")
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()
    onPressed: Tooltips.leave(control)

    background: Rectangle {
        id: face

        radius: Theme.radiusControl
        color: control.rail ? (control.hovered ? Theme.controlHover : Theme.control) : control.hovered ? Theme.hover : Theme.field
        border.width: Theme.hairline
        border.color: control.rail ? Qt.tint(face.color, Theme.buttonEdge) : control.hovered ? Theme.borderStrong : Theme.border

        FocusRing {
            control: control
        }
    }

    contentItem: Item {
        Icon {
            id: glass

            x: control.rail ? Math.round((control.width - width) / 2) : Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            name: "search"
            color: Theme.text2
        }

        Label {
            anchors.left: glass.right
            anchors.leftMargin: Theme.space6
            anchors.verticalCenter: parent.verticalCenter
            visible: !control.rail
            color: Theme.text2
            text: control.text
        }

        KeyHint {
            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            visible: !control.rail
            text: Keymap.text("palette")
        }
    }

    Tip {
        text: control.rail ? qsTr("Jump to…") : ""
        shortcut: Keymap.text("palette")
    }
}
