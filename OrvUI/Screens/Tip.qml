import OrvLauncher.Screens
import QtQuick

// Gives the item it is put into a tooltip.
HoverHandler {
    id: tip

    property string text
    property string shortcut

    onHoveredChanged: hovered ? Tooltips.enter(tip.parent, tip.text, tip.shortcut) : Tooltips.leave(tip.parent)
}
