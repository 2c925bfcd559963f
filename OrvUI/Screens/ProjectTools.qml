import OrvLauncher.Screens
import QtQuick

// What the bar over a project's page offers.
Row {
    id: tools

    required property AppModel model
    required property Navigator nav
    // Of the project that is shown; null: not yet, or none.
    property ProjectDetail detail

    spacing: Theme.space8

    IconButton {
        visible: tools.detail !== null
        edge: Theme.controlRegular
        checkable: true
        checked: tools.detail?.pinned ?? false
        glyph: checked ? "own-pin-fill" : "pin"
        tint: checked ? Theme.accentText : hovered ? Theme.text : Theme.text3
        text: checked ? qsTr("Remove pin") : qsTr("Pin %1").arg(tools.detail?.name ?? "")
        shortcut: Keymap.text("pin")
        onClicked: {
            checked = Qt.binding(() => tools.detail?.pinned ?? false);
            tools.model.togglePinFor(tools.detail.projectID);
        }
    }

    Button {
        lit: tools.nav.agentPanel
        glyph: "sparkles"
        text: qsTr("Ask AI")
        Accessible.checkable: true
        Accessible.checked: tools.nav.agentPanel
        onClicked: tools.nav.agentPanel = !tools.nav.agentPanel

        Tip {
            text: qsTr("Hand a task to an agent here")
            shortcut: Keymap.text("ask")
        }
    }

    IconButton {
        id: more

        visible: tools.detail !== null
        edge: Theme.controlRegular
        glyph: "ellipsis"
        text: qsTr("More for %1").arg(tools.detail?.name ?? "")
        onClicked: {
            menu.active = true;
            (menu.item as Menu).popup(more, width - Theme.menuWidth, height + Theme.space4);
        }
    }

    Loader {
        id: menu

        active: false
        visible: false

        sourceComponent: Menu {
            MenuRow {
                glyph: "folder-open"
                text: qsTr("Show in the file manager")
                onTriggered: tools.model.openLink(tools.detail.folderUrl)
            }

            MenuRow {
                glyph: "copy"
                text: qsTr("Copy the path")
                onTriggered: Clipboard.copy(tools.detail.projectID)
            }

            MenuRow {
                glyph: "folder-cog"
                text: qsTr("Correct its services…")
                onTriggered: tools.nav.settings(6)
            }
        }
    }
}
