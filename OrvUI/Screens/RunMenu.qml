import OrvLauncher.Screens
import QtQuick
import QtQml

// What there is to run in a project, and to stop.
Menu {
    id: choice

    property var actions: []
    // Those of them that run or start.
    property var running: []
    property bool choosesDevice: false
    signal chosen(string action)
    signal stopped(string action)
    signal deviceAsked

    Instantiator {
        model: choice.actions
        onObjectAdded: (index, object) => choice.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => choice.removeItem(object as MenuRow)

        MenuRow {
            required property string modelData
            readonly property bool runs: choice.running.includes(modelData)

            glyph: runs ? "own-stop-fill" : "own-play-fill"
            text: !runs ? RunWords.of(modelData) : modelData === "Both" ? qsTr("Stop frontend and backend") : qsTr("Stop %1").arg(RunWords.of(modelData))
            onTriggered: runs ? choice.stopped(modelData) : choice.chosen(modelData)
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
