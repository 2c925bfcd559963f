import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A filter that is set. Pressing it takes it away.
T.AbstractButton {
    id: chip

    required property string key
    required property string title

    implicitWidth: row.implicitWidth + Theme.space16 + Theme.space2
    implicitHeight: Theme.controlMini
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    text: qsTr("Remove the filter %1").arg(title)
    Accessible.role: Accessible.Button
    Accessible.name: text
    Keys.onReturnPressed: chip.clicked()
    Keys.onEnterPressed: chip.clicked()
    Keys.onDeletePressed: chip.clicked()

    background: Rectangle {
        radius: height / 2
        color: Theme.selection
        border.width: chip.hovered ? Theme.hairline : 0
        border.color: Theme.accentText

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

            Label {
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.SmallStrong
                color: Theme.accentText
                text: chip.title
            }

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                name: "x"
                size: Theme.iconMini
                color: Theme.accentText
            }
        }
    }
}
