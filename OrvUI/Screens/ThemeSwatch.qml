import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The accent of a theme to choose it by.
T.AbstractButton {
    id: control

    required property int theme

    implicitWidth: Theme.controlSmall
    implicitHeight: Theme.controlSmall
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.RadioButton
    Accessible.name: text
    Accessible.checked: checked
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: Rectangle {
        radius: width / 2
        color: "transparent"
        border.width: control.checked ? Theme.focusWidth : 0
        border.color: Theme.swatch(control.theme, Theme.isDark)

        FocusRing {
            control: control
            shapeRadius: Theme.controlSmall / 2
        }
    }

    contentItem: Item {
        Rectangle {
            anchors.centerIn: parent
            width: control.checked ? Theme.swatchSize - Theme.space2 : Theme.swatchSize
            height: width
            radius: width / 2
            color: Theme.swatch(control.theme, Theme.isDark)
        }
    }

    Tip {
        text: control.text
    }
}
