import OrvLauncher.Screens
import QtQuick
import QtQml

// The services of a project whose output can be looked at, one of which is: side by side, or in a menu where they do not
// have room.
FocusScope {
    id: choice

    required property ServiceLogs logs
    // The ports of those that have one, behind their names.
    property bool ports: true
    // The state of each before its name.
    property bool dots: true
    // How wide it may be.
    property real room: Infinity
    readonly property bool folded: segments.implicitWidth > room
    readonly property int count: list.count
    readonly property var shown: list.choices[list.shown]
    readonly property string shownText: shown?.text ?? ""

    function show(index) {
        choice.logs.show(list.keys[Math.max(0, Math.min(list.keys.length - 1, index))]);
    }

    visible: list.count > 0
    implicitWidth: folded ? Math.max(0, Math.min(button.implicitWidth, room)) : segments.implicitWidth
    implicitHeight: Theme.controlRegular

    Segmented {
        id: segments

        visible: !choice.folded
        focus: visible
        name: qsTr("Service")
        currentIndex: list.shown
        choices: list.choices
        onChosen: index => choice.show(index)
    }

    MenuButton {
        id: button

        visible: choice.folded
        focus: visible
        width: parent.width
        framed: true
        name: qsTr("Service")
        text: choice.shown?.note?.length > 0 ? choice.shownText + " " + choice.shown.note : choice.shownText
        badge: choice.dots ? dot : null
        Keys.onLeftPressed: choice.show(list.shown - 1)
        Keys.onRightPressed: choice.show(list.shown + 1)
        onClicked: {
            menu.active = true;
            const entries = menu.item as Menu;
            entries.popup(button, 0, button.height + Theme.space4);
            // In sight where there are more than fit into the window.
            entries.currentIndex = list.shown;
        }

        Component {
            id: dot

            StatusDot {
                halo: true
                cardState: choice.shown?.state ?? "idle"
            }
        }
    }

    Loader {
        id: menu

        active: false
        visible: false

        sourceComponent: Menu {
            id: entries

            Instantiator {
                model: choice.logs.services
                onObjectAdded: (index, object) => entries.insertItem(index, object as MenuRow)
                onObjectRemoved: (index, object) => entries.removeItem(object as MenuRow)

                MenuRow {
                    required property string key
                    required property string label
                    required property string phase
                    required property string port
                    required property bool isShown

                    cardState: phase === "stopped" ? "idle" : phase
                    chosen: isShown
                    text: port.length > 0 ? label + " " + port : label
                    onTriggered: choice.logs.show(key)
                }
            }
        }
    }

    // What the segments show, out of the list of services.
    Instantiator {
        id: list

        property int shown: 0
        property var keys: []
        property var choices: []

        function collect() {
            const found = [];
            const ids = [];
            for (let i = 0; i < count; ++i) {
                const entry = objectAt(i);
                if (!entry) {
                    continue;
                }
                found.push({
                    "text": entry.label,
                    "note": choice.ports ? entry.port : "",
                    "state": !choice.dots ? undefined : entry.phase === "stopped" ? "idle" : entry.phase
                });
                ids.push(entry.key);
                if (entry.isShown) {
                    shown = i;
                }
            }
            keys = ids;
            choices = found;
        }

        model: choice.logs.services
        onCountChanged: collect()
        onObjectAdded: collect()

        delegate: QtObject {
            required property string key
            required property string label
            required property string phase
            required property string port
            required property bool isShown

            onPhaseChanged: list.collect()
            onPortChanged: list.collect()
            onIsShownChanged: list.collect()
        }
    }
}
