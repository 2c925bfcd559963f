import OrvLauncher.Screens
import QtQuick

// Shows that a control has the keyboard's focus; a ring around it, or inside it in rows.
Rectangle {
    required property Item control
    property bool inside: false
    property int shapeRadius: Theme.radiusControl
    readonly property int reach: inside ? -Theme.focusGap : Theme.focusGap + Theme.focusWidth

    anchors.fill: parent
    anchors.margins: -reach
    radius: shapeRadius + reach
    color: "transparent"
    border.width: Theme.focusWidth
    border.color: Theme.focus
    visible: control.activeFocus && InputMode.keyboard
}
