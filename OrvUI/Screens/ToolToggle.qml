import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A switch among the tools of a page: quiet while it is off, in the colour of what is chosen while it is on.
T.AbstractButton {
    id: control

    property string glyph
    property bool on: false
    // How much of something there is, in a bubble.
    property int count: 0
    property string shortcut

    implicitWidth: row.implicitWidth + Theme.space24
    implicitHeight: Theme.controlRegular
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: count > 0 ? qsTr("%1, %2 set").arg(text).arg(count) : text
    Accessible.checkable: true
    Accessible.checked: on
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: Rectangle {
        radius: Theme.radiusControl
        color: control.on ? Theme.selection : control.pressed ? Theme.pressed : control.hovered ? Theme.hover : "transparent"

        FocusRing {
            control: control
        }
    }

    contentItem: Item {
        Row {
            id: row

            anchors.centerIn: parent
            spacing: Theme.space6

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                name: control.glyph
                color: control.on ? Theme.accentText : Theme.text2
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.BodyStrong
                color: control.on ? Theme.accentText : Theme.text2
                text: control.text
            }

            Rectangle {
                anchors.verticalCenter: parent.verticalCenter
                visible: control.count > 0
                width: Math.max(height, number.implicitWidth + Theme.space8)
                height: Theme.iconLarge
                radius: height / 2
                color: Theme.accent

                Figures {
                    id: number

                    anchors.centerIn: parent
                    role: Theme.Caption
                    color: Theme.onAccent
                    text: control.count
                }
            }
        }
    }

    Tip {
        text: control.shortcut.length > 0 ? control.text : ""
        shortcut: control.shortcut
    }
}
