import OrvLauncher.Screens
import QtQuick

// What there is to say at the foot of the window: what can be taken back, and how things stand.
Column {
    id: lines

    required property AppModel model
    // The room that a line has.
    required property int room

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
