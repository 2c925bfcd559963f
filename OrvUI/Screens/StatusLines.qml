import OrvLauncher.Screens
import QtQuick

// What there is to say at the foot of the window: what can be taken back, and how things stand.
Column {
    id: lines

    required property AppModel model
    // The room that a line has.
    required property int room
    // What they cover of the page below them; nothing while none is shown.
    readonly property real covered: height > 0 ? height + Theme.space20 : 0
    signal cloneAsked

    spacing: Theme.space8

    Line {
        shown: lines.model.undoText.length > 0
        text: lines.model.undoText
        isError: false
        isOngoing: false
        action: qsTr("Undo")
        actionKeys: Keymap.text("undo")
        onActed: lines.model.undo()
        onDismissed: lines.model.dismissUndo()
    }

    Line {
        shown: lines.model.orphans.text.length > 0
        text: lines.model.orphans.text
        isError: false
        isOngoing: lines.model.orphans.stopping
        glyph: "circle-alert"
        tint: Theme.warning
        action: lines.model.orphans.stopping ? "" : qsTr("Stop")
        onActed: lines.model.orphans.stop()
        onDismissed: lines.model.orphans.dismiss()
    }

    // What was put aside goes on, and stays until somebody has read how it failed.
    Line {
        readonly property bool failed: lines.model.setupPhase === "failed"
        readonly property bool aside: lines.model.setupAside
        // Dismissed while it ran; to run the project brings it back.
        property bool quiet: false

        shown: aside && (failed || !quiet)
        text: !shown ? "" : failed ? qsTr("Setting up %1 stopped: %2").arg(lines.model.setupTitle).arg(lines.model.setupReason)
            : qsTr("Setting up %1… %2 of %3 done").arg(lines.model.setupTitle).arg(lines.model.setupDoneCount).arg(lines.model.setupStepCount)
        isError: failed
        isOngoing: !failed
        action: qsTr("Show")
        onAsideChanged: quiet = false
        onActed: lines.model.setupAside = false
        onDismissed: failed ? lines.model.cancelSetup() : quiet = true
    }

    Line {
        readonly property NewProject making: lines.model.newProject
        readonly property bool aside: making.aside
        // Dismissed while it ran; to add a project brings it back.
        property bool quiet: false

        shown: aside && (making.isBusy ? !quiet : making.error.length > 0)
        text: !shown ? "" : !making.isBusy ? qsTr("%1 was not cloned: %2").arg(making.name).arg(making.error)
            : making.fraction < 0 ? qsTr("Cloning %1…").arg(making.name) : qsTr("Cloning %1… %2%").arg(making.name).arg(Math.round(making.fraction * 100))
        isError: !making.isBusy
        isOngoing: making.isBusy
        action: qsTr("Show")
        onAsideChanged: quiet = false
        onActed: lines.cloneAsked()
        onDismissed: making.isBusy ? quiet = true : making.clearError()
    }

    Repeater {
        model: errors.rows

        Line {
            required property string errorID

            shown: true
            isError: true
            isOngoing: false
            onDismissed: errors.dismiss(errorID)
        }
    }

    Line {
        shown: lines.model.hasStatus
        text: lines.model.statusText
        isError: lines.model.statusIsError
        isOngoing: lines.model.statusIsOngoing
        onDismissed: lines.model.dismissStatus()
    }

    // What newer messages have taken the place of.
    StatusErrors {
        id: errors

        model: lines.model
    }

    component Line: StatusLine {
        anchors.horizontalCenter: parent?.horizontalCenter
        width: implicitWidth
        height: implicitHeight
        limit: Math.min(Theme.statusLineLimit, lines.room)
    }
}
