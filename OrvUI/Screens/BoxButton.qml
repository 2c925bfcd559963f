import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A button of one icon with a button's face.
T.AbstractButton {
    id: control

    required property string glyph
    property string shortcut
    property int edge: Theme.controlRegular

    implicitWidth: edge
    implicitHeight: edge
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()
    onPressed: Tooltips.leave(control)

    background: ButtonFace {
        control: control

        FocusRing {
            control: control
        }
    }

    contentItem: Icon {
        name: control.glyph
        color: control.enabled ? Theme.text2 : Theme.disabled
    }

    Tip {
        text: control.text
        shortcut: control.shortcut
    }
}
