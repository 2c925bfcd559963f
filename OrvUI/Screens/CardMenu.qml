import OrvLauncher.Screens
import QtQuick
import QtQml

// Everything that a card can do.
Menu {
    id: menu

    property var card: null
    readonly property var services: card ? card.services : []
    readonly property var addresses: services.filter(service => service.address.length > 0)
    signal run(string action)
    signal stop
    signal restart
    signal open(string key)
    signal pin

    Instantiator {
        model: menu.services.length === 0 && menu.card ? menu.card.actions : []
        onObjectAdded: (index, object) => menu.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => menu.removeItem(object as MenuRow)

        MenuRow {
            required property string modelData

            glyph: "own-play-fill"
            text: qsTr("Run %1").arg(modelData)
            onTriggered: menu.run(modelData)
        }
    }

    Instantiator {
        model: menu.addresses
        onObjectAdded: (index, object) => menu.insertItem(index, object as MenuRow)
        onObjectRemoved: (index, object) => menu.removeItem(object as MenuRow)

        MenuRow {
            required property var modelData
            required property int index

            glyph: "arrow-up-right"
            text: menu.addresses.length > 1 ? qsTr("Open %1").arg(modelData.address) : qsTr("Open in your browser")
            shortcut: index === 0 ? qsTr("Ctrl O") : ""
            onTriggered: menu.open(modelData.key)
        }
    }

    MenuRow {
        glyph: "rotate-cw"
        text: qsTr("Restart")
        shortcut: qsTr("Ctrl Shift R")
        enabled: menu.services.length > 0
        onTriggered: menu.restart()
    }

    MenuRow {
        glyph: "own-stop-fill"
        text: qsTr("Stop")
        shortcut: qsTr("Ctrl Enter")
        enabled: menu.card !== null && menu.card.busy
        onTriggered: menu.stop()
    }

    MenuLine {}

    MenuRow {
        glyph: menu.card && menu.card.pinned ? "own-pin-fill" : "pin"
        text: menu.card && menu.card.pinned ? qsTr("Remove pin") : qsTr("Pin")
        shortcut: qsTr("Ctrl D")
        onTriggered: menu.pin()
    }
}
