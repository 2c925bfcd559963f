import OrvLauncher.Screens
import QtQuick

// The services of a project whose output can be looked at, one of which is.
Segmented {
    id: choice

    required property ServiceLogs logs
    // The ports of those that have one, behind their names.
    property bool ports: true
    // The state of each before its name.
    property bool dots: true
    readonly property int count: list.count
    readonly property string shownText: choices[list.shown]?.text ?? ""

    visible: list.count > 0
    name: qsTr("Service")
    currentIndex: list.shown
    choices: list.choices
    onChosen: index => choice.logs.show(list.keys[index])

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
