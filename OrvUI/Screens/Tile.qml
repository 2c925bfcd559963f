import OrvLauncher.Screens
import QtQuick

// A project's letter on its colour.
Rectangle {
    id: tile

    required property int tileIndex
    required property string tileLetter
    property int size: Theme.tile

    implicitWidth: size
    implicitHeight: size
    radius: Theme.tileRadius(size)
    color: Theme.tileFill(tileIndex, Theme.isDark)

    Label {
        anchors.centerIn: parent
        role: tile.size > Theme.tile ? Theme.SheetTitle : tile.size > Theme.controlRegular ? Theme.Heading
            : tile.size > Theme.tileList ? Theme.Section
            : tile.size > Theme.swatchSize ? Theme.Caption : Theme.TileLetter
        color: Theme.tileLetter(tile.tileIndex, Theme.isDark)
        text: tile.tileLetter
    }
}
