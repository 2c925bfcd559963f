import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Opens and closes what stands below it.
T.AbstractButton {
    id: control

    // Over a part of a page, with how many there are.
    property bool heading: false
    property int count: 0

    implicitWidth: row.implicitWidth + Theme.space8
    implicitHeight: Theme.controlSmall
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: Item {
        FocusRing {
            control: control
            inside: true
        }
    }

    contentItem: Item {
        Row {
            id: row

            x: Theme.space4
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space6

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                name: control.checked ? "chevron-down" : "chevron-right"
                size: Theme.iconSmall
                color: Theme.text2
            }

            Label {
                role: control.heading ? Theme.Section : Theme.Small
                color: control.heading || control.hovered ? Theme.text : Theme.text2
                text: control.text
            }

            Figures {
                anchors.verticalCenter: parent.verticalCenter
                visible: control.count > 0
                role: Theme.Small
                color: Theme.text3
                text: control.count
            }
        }
    }
}
