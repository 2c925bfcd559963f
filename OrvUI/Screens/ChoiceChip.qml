import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// One of several things to choose: any number of them with a check before it, or just one.
T.AbstractButton {
    id: chip

    property int toldRole: single ? Accessible.RadioButton : Accessible.CheckBox
    property bool single: false

    implicitWidth: row.implicitWidth + 2 * (Theme.space10 + Theme.hairline)
    implicitHeight: Theme.chipHeight
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked
    Keys.onReturnPressed: chip.clicked()
    Keys.onEnterPressed: chip.clicked()

    background: Rectangle {
        radius: height / 2
        color: chip.checked ? Theme.selection : chip.pressed ? Theme.pressed : chip.hovered ? Theme.hover : "transparent"
        border.width: chip.checked ? 0 : Theme.hairline
        border.color: Theme.border

        FocusRing {
            control: chip
            shapeRadius: parent.radius
        }
    }

    contentItem: Item {
        Row {
            id: row

            anchors.centerIn: parent
            spacing: Theme.space4

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: chip.checked && !chip.single
                name: "check"
                size: Theme.iconSmall
                color: Theme.accentText
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.SmallStrong
                color: chip.checked ? Theme.accentText : chip.hovered ? Theme.text : Theme.text2
                text: chip.text
            }
        }
    }
}
