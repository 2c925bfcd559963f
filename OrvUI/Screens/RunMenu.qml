import OrvLauncher.Screens
import QtQuick
import QtQml

// What there is to run in a project.
Menu {
    id: menu

    property var actions: []
    signal chosen(string action)

    Instantiator {
        model: menu.actions
        onObjectAdded: (index, object) => menu.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => menu.removeItem(object as MenuRow)

        MenuRow {
            required property string modelData

            glyph: "own-play-fill"
            text: modelData
            onTriggered: menu.chosen(modelData)
        }
    }
}
