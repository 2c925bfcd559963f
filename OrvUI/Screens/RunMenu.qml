import OrvLauncher.Screens
import QtQuick
import QtQml

// What there is to run in a project.
Menu {
    id: choice

    property var actions: []
    property bool choosesDevice: false
    signal chosen(string action)
    signal deviceAsked

    Instantiator {
        model: choice.actions
        onObjectAdded: (index, object) => choice.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => choice.removeItem(object as MenuRow)

        MenuRow {
            required property string modelData

            glyph: "own-play-fill"
            text: RunWords.of(modelData)
            onTriggered: choice.chosen(modelData)
        }
    }

    MenuLine {
        visible: choice.choosesDevice
        height: visible ? implicitHeight : 0
    }

    MenuRow {
        visible: choice.choosesDevice
        height: visible ? implicitHeight : 0
        glyph: "smartphone"
        text: qsTr("Choose a device…")
        onTriggered: choice.deviceAsked()
    }
}
