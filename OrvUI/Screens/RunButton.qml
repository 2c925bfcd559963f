import OrvLauncher.Screens
import QtQuick

// Runs or stops a project; where there is a choice, a second part opens it.
Row {
    id: run

    required property string projectName
    required property string action
    required property var actions
    required property bool busy
    // A device can be chosen for it, so that there is a choice even with one action.
    property bool choosesDevice: false
    property bool prominent: false
    property bool reachable: true
    readonly property bool split: !busy && (actions.length > 1 || (choosesDevice && actions.length > 0))
    signal started
    signal stopped
    signal choose(Item anchor)

    visible: busy || action.length > 0
    onActiveFocusChanged: {
        if (activeFocus) {
            button.forceActiveFocus(Qt.TabFocusReason);
        }
    }

    Button {
        id: button

        text: run.busy ? qsTr("Stop") : RunWords.of(run.action)
        glyph: run.busy ? "own-stop-fill" : "own-play-fill"
        glyphSize: Theme.iconMini
        glyphColor: run.busy ? Theme.text2 : run.prominent ? Theme.onAccent : Theme.accentText
        primary: run.prominent && !run.busy
        joined: run.split
        focusPolicy: run.reachable ? Qt.StrongFocus : Qt.ClickFocus
        Accessible.name: run.busy ? qsTr("Stop %1").arg(run.projectName) : qsTr("Run %1 in %2").arg(RunWords.of(run.action)).arg(run.projectName)
        onClicked: run.busy ? run.stopped() : run.started()
    }

    Loader {
        active: run.split || item !== null
        visible: run.split

        sourceComponent: SplitPart {
            id: part

            primary: run.prominent
            focusPolicy: run.reachable ? Qt.StrongFocus : Qt.ClickFocus
            text: qsTr("Choose what to run in %1").arg(run.projectName)
            onClicked: run.choose(part)
        }
    }
}
