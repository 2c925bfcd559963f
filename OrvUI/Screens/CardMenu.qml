import OrvLauncher.Screens
import QtQuick
import QtQml

// Everything that a card can do.
Menu {
    id: cardMenu

    // The project, as it was when this was opened.
    property var subject: null
    readonly property var services: subject ? subject.services : []
    readonly property var addresses: services.filter(service => service.address.length > 0)
    signal run(string action)
    signal stop
    signal restart
    signal open(string key)
    signal pin
    signal deviceAsked
    signal logsAsked
    signal terminalAsked
    signal agentAsked
    signal folderAsked

    Instantiator {
        model: cardMenu.subject ? cardMenu.subject.actions : []
        onObjectAdded: (index, object) => cardMenu.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => cardMenu.removeItem(object as MenuRow)

        MenuRow {
            required property string modelData

            glyph: "own-play-fill"
            text: qsTr("Run %1").arg(RunWords.of(modelData))
            onTriggered: cardMenu.run(modelData)
        }
    }

    Instantiator {
        model: cardMenu.addresses
        onObjectAdded: (index, object) => cardMenu.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => cardMenu.removeItem(object as MenuRow)

        MenuRow {
            required property var modelData
            required property int index

            glyph: "arrow-up-right"
            text: cardMenu.addresses.length > 1 ? qsTr("Open %1").arg(modelData.address) : qsTr("Open in your browser")
            shortcut: index === 0 ? Keymap.text("browse") : ""
            onTriggered: cardMenu.open(modelData.key)
        }
    }

    MenuRow {
        visible: cardMenu.subject !== null && cardMenu.subject.isFlutter
        height: visible ? implicitHeight : 0
        glyph: "smartphone"
        text: qsTr("Choose a device…")
        onTriggered: cardMenu.deviceAsked()
    }

    MenuRow {
        glyph: "rotate-cw"
        text: qsTr("Restart")
        shortcut: Keymap.text("restart")
        enabled: cardMenu.services.some(service => service.phase === "running" || service.phase === "starting")
        onTriggered: cardMenu.restart()
    }

    MenuRow {
        glyph: "own-stop-fill"
        text: qsTr("Stop")
        shortcut: Keymap.text("run")
        enabled: cardMenu.subject !== null && cardMenu.subject.busy
        onTriggered: cardMenu.stop()
    }

    MenuLine {}

    MenuRow {
        glyph: cardMenu.subject && cardMenu.subject.pinned ? "own-pin-fill" : "pin"
        text: cardMenu.subject && cardMenu.subject.pinned ? qsTr("Remove pin") : qsTr("Pin")
        shortcut: Keymap.text("pin")
        onTriggered: cardMenu.pin()
    }

    MenuRow {
        glyph: "sparkles"
        text: qsTr("Ask AI")
        shortcut: Keymap.text("ask")
        onTriggered: cardMenu.agentAsked()
    }

    MenuRow {
        glyph: "logs"
        text: qsTr("Logs")
        onTriggered: cardMenu.logsAsked()
    }

    MenuRow {
        glyph: "terminal"
        text: qsTr("New terminal")
        shortcut: Keymap.text("newTerminal")
        onTriggered: cardMenu.terminalAsked()
    }

    MenuRow {
        glyph: "folder-open"
        text: qsTr("Show in the file manager")
        onTriggered: cardMenu.folderAsked()
    }
}
