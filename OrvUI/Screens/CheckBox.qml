import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A choice to tick, with its words.
T.AbstractButton {
    id: control

    property int toldRole: Accessible.CheckBox
    // A name behind the words, in the letters of code.
    property string code
    // How its words are written.
    property int wordsRole: Theme.Body
    property color wordsColor: Theme.text

    implicitWidth: row.implicitWidth
    implicitHeight: Theme.controlMini
    checkable: true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: code.length > 0 ? text + " " + code : text
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

            Row {
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space4

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: control.wordsRole
                    color: control.enabled ? control.wordsColor : Theme.disabled
                    text: control.text
                }

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: text.length > 0
                    role: Theme.Mono
                    color: control.enabled ? Theme.text : Theme.disabled
                    text: control.code
                }
            }
        }
    }
}
