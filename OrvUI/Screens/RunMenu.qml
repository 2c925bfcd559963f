import OrvLauncher.Screens
import QtQuick
import QtQml

// What there is to run in a project.
Menu {
    id: choice

    property var actions: []
    signal chosen(string action)

    Instantiator {
        model: choice.actions
        onObjectAdded: (index, object) => choice.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => choice.removeItem(object as MenuRow)

        MenuRow {
            required property string modelData

            glyph: "own-play-fill"
            text: modelData
            onTriggered: choice.chosen(modelData)
        }
    }
}
