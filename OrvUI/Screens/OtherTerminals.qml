import OrvLauncher.Screens
import QtQuick

// How many terminals are open elsewhere; a menu names them.
MenuButton {
    id: others

    required property TerminalTabList list
    signal chosen(var session, string projectID)

    name: qsTr("Terminals of other projects")
    glyph: "terminal"
    text: qsTr("%1 elsewhere").arg(list.otherCount)
    Accessible.description: list.hasUnseenElsewhere ? qsTr("wants to be looked at") : ""
    onClicked: menu.popup(others, width - menu.width, height + Theme.space4)

    UnseenMark {
        x: Theme.space16
        y: Theme.space4
        visible: others.list.hasUnseenElsewhere
    }

    Menu {
        id: menu

        Instantiator {
            model: others.list.others
            onObjectAdded: (index, object) => menu.insertItem(index, object as MenuRow)
            onObjectRemoved: (index, object) => menu.removeItem(object as MenuRow)

            MenuRow {
                required property TerminalSession session
                required property string projectID
                required property bool hasUnseen
                required text

                glyph: hasUnseen ? "circle-dot" : "terminal"
                note: hasUnseen ? qsTr("wants to be looked at") : ""
                onTriggered: others.chosen(session, projectID)
            }
        }
    }
}
