import OrvLauncher.Screens
import QtQuick

// What can be done with a folder of projects.
Menu {
    id: menu

    property var subject: null
    signal entered
    signal shown
    signal terminalAsked

    MenuRow {
        glyph: "folder-open"
        text: qsTr("Open")
        onTriggered: menu.entered()
    }

    MenuRow {
        glyph: "terminal"
        text: qsTr("New terminal here")
        onTriggered: menu.terminalAsked()
    }

    MenuLine {}

    MenuRow {
        glyph: "external-link"
        text: qsTr("Show in file manager")
        onTriggered: menu.shown()
    }
}
