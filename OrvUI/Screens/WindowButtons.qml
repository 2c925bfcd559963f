import OrvLauncher.Screens
import QtQuick

// Minimise, maximise and close of a window without a frame of the system.
Row {
    id: buttons

    required property Window target
    readonly property bool maximized: target.visibility === Window.Maximized

    IconButton {
        edge: Theme.controlRegular
        glyph: "minus"
        glyphSize: Theme.iconSmall
        text: qsTr("Minimise")
        onClicked: buttons.target.showMinimized()
    }

    IconButton {
        edge: Theme.controlRegular
        glyph: buttons.maximized ? "copy" : "square"
        glyphSize: Theme.iconSmall
        text: buttons.maximized ? qsTr("Restore") : qsTr("Maximise")
        onClicked: buttons.maximized ? buttons.target.showNormal() : buttons.target.showMaximized()
    }

    IconButton {
        edge: Theme.controlRegular
        glyph: "x"
        glyphSize: Theme.iconSmall
        text: qsTr("Close")
        shortcut: Keymap.text("closeWindow")
        onClicked: buttons.target.close()
    }
}
