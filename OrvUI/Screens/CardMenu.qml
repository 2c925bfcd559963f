import OrvLauncher.Screens
import QtQuick
import QtQml

// Everything that a card can do.
Menu {
    id: cardMenu

    property var card: null
    readonly property var services: card ? card.services : []
    readonly property var addresses: services.filter(service => service.address.length > 0)
    signal run(string action)
    signal stop
    signal restart
    signal open(string key)
    signal pin

    Instantiator {
        model: cardMenu.card ? cardMenu.card.actions : []
        onObjectAdded: (index, object) => cardMenu.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => cardMenu.removeItem(object as MenuRow)

        MenuRow {
            required property string modelData

            glyph: "own-play-fill"
            text: qsTr("Run %1").arg(modelData)
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
            shortcut: index === 0 ? qsTr("Ctrl O") : ""
            onTriggered: cardMenu.open(modelData.key)
        }
    }

    MenuRow {
        glyph: "rotate-cw"
        text: qsTr("Restart")
        shortcut: qsTr("Ctrl Shift R")
        enabled: cardMenu.services.length > 0
        onTriggered: cardMenu.restart()
    }

    MenuRow {
        glyph: "own-stop-fill"
        text: qsTr("Stop")
        shortcut: qsTr("Ctrl Enter")
        enabled: cardMenu.card !== null && cardMenu.card.busy
        onTriggered: cardMenu.stop()
    }

    MenuLine {}

    MenuRow {
        glyph: cardMenu.card && cardMenu.card.pinned ? "own-pin-fill" : "pin"
        text: cardMenu.card && cardMenu.card.pinned ? qsTr("Remove pin") : qsTr("Pin")
        shortcut: qsTr("Ctrl D")
        onTriggered: cardMenu.pin()
    }
}
