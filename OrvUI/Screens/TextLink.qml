import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A few words to press beside a heading.
T.AbstractButton {
    id: control

    implicitWidth: label.implicitWidth
    implicitHeight: Theme.controlMini
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: Item {
        FocusRing {
            control: control
            shapeRadius: Theme.radiusKey
        }
    }

    contentItem: Label {
        id: label

        verticalAlignment: Text.AlignVCenter
        role: Theme.SmallStrong
        color: !control.enabled ? Theme.disabled : control.hovered ? Theme.text : Theme.text2
        text: control.text
    }
}
