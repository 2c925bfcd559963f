import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// What a list of the quick panel does not show.
T.AbstractButton {
    id: more

    required property int count

    visible: count > 0
    width: parent.width
    implicitHeight: Theme.controlSmall
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    text: qsTr("%1 more in OrvLauncher").arg(count)
    Accessible.role: Accessible.Button
    Accessible.name: text
    Keys.onReturnPressed: more.clicked()
    Keys.onEnterPressed: more.clicked()

    background: Item {
        FocusRing {
            control: more
            inside: true
        }
    }

    contentItem: Item {
        Label {
            x: Theme.space20
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.SmallStrong
            color: more.hovered ? Theme.text : Theme.text2
            text: more.text
        }
    }
}
