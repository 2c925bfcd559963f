import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A button of one icon; its name is its tooltip too.
T.AbstractButton {
    id: control

    property int toldRole: Accessible.Button
    required property string glyph
    property string shortcut
    property int edge: Theme.controlSmall
    property int glyphSize: Theme.icon
    // What the glyph is drawn in when it shows a state; otherwise it follows the pointer.
    property color tint: hovered || activeFocus ? Theme.text : Theme.text3

    implicitWidth: edge
    implicitHeight: edge
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.checkable: checkable
    Accessible.checked: checked
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()
    onPressed: Tooltips.leave(control)

    background: Rectangle {
        radius: Theme.radiusRow
        color: control.pressed ? Theme.pressed : control.hovered ? Theme.hover : "transparent"

        FocusRing {
            control: control
            shapeRadius: Theme.radiusRow
        }
    }

    contentItem: Icon {
        name: control.glyph
        size: control.glyphSize
        color: control.enabled ? control.tint : Theme.disabled
    }

    Tip {
        text: control.text
        shortcut: control.shortcut
    }
}
