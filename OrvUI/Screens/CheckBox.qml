import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A choice to tick, with its words.
T.AbstractButton {
    id: control

    property int toldRole: Accessible.CheckBox

    implicitWidth: row.implicitWidth
    implicitHeight: Theme.controlMini
    checkable: true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked

    background: Item {
        FocusRing {
            control: control
            shapeRadius: Theme.radiusKey
        }
    }

    contentItem: Item {
        Row {
            id: row

            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space10

            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.checkbox
                height: width
                radius: Theme.radiusKey + Theme.hairline
                color: !control.enabled ? Theme.control : control.checked ? Theme.accent : "transparent"
                border.width: control.checked ? 0 : Theme.hairline
                border.color: control.hovered ? Theme.accent : Theme.text3

                Icon {
                    anchors.centerIn: parent
                    visible: control.checked
                    name: "check"
                    size: Theme.iconMini
                    color: control.enabled ? Theme.onAccent : Theme.disabled
                }
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                color: control.enabled ? Theme.text : Theme.disabled
                text: control.text
            }
        }
    }
}
