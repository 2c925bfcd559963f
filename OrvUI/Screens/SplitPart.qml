import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The menu part at the right of a split button.
T.AbstractButton {
    id: part

    property int toldRole: Accessible.ButtonMenu
    property bool primary: false

    implicitWidth: Theme.splitWidth
    implicitHeight: Theme.controlRegular
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Keys.onReturnPressed: part.clicked()
    Keys.onEnterPressed: part.clicked()

    background: ButtonFace {
        control: part
        primary: part.primary
        joinedLeft: true

        Rectangle {
            width: Theme.hairline
            height: parent.height
            color: part.primary ? Theme.accentPressed : Theme.borderStrong
        }

        FocusRing {
            control: part
        }
    }

    contentItem: Icon {
        name: "chevron-down"
        size: Theme.iconSmall
        color: part.primary ? Theme.onAccent : Theme.text2
    }

    Tip {
        text: part.text
    }
}
