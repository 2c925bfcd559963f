import OrvLauncher.Screens
import QtQuick

// What the application has to say, for a while.
Item {
    id: line

    required property bool shown
    required property string text
    required property bool isError
    required property bool isOngoing
    property string glyph: isError ? "circle-alert" : "circle-check"
    property color tint: isError ? Theme.danger : Theme.success
    property int limit: Theme.statusLineLimit
    // What can be done about it, in a word; empty: nothing.
    property string action
    property string actionKeys
    signal acted
    signal dismissed

    // Still there while the line fades; what a tool says in several lines as one.
    property string kept
    onTextChanged: {
        if (text.length > 0) {
            kept = text.replace(/\s+/g, " ");
        }
    }

    implicitWidth: Math.min(limit, row.implicitWidth + Theme.space24)
    implicitHeight: Math.max(Theme.statusLineHeight, label.height + Theme.space20)
    visible: opacity > 0
    opacity: shown ? 1 : 0
    Accessible.role: isError ? Accessible.AlertMessage : Accessible.Notification
    Accessible.name: text

    transform: Translate {
        y: line.shown || Theme.reducedMotion ? 0 : Theme.space8

        Behavior on y {
            NumberAnimation {
                duration: Theme.durationEnter
                easing.type: Easing.BezierSpline
                easing.bezierCurve: Theme.easeEnter
            }
        }
    }

    Behavior on opacity {
        NumberAnimation {
            duration: line.shown ? Theme.durationEnter : Theme.durationExit
        }
    }

    PopoverFace {
        anchors.fill: parent
    }

    Row {
        id: row

        anchors.verticalCenter: parent.verticalCenter
        x: Theme.space12
        spacing: Theme.space10

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            visible: line.isOngoing
            size: Theme.icon
        }

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            visible: !line.isOngoing
            name: line.glyph
            color: line.tint
        }

        Label {
            id: label

            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, line.limit - 2 * Theme.space12 - 2 * Theme.space10 - Theme.icon - Theme.controlMini - (act.visible ? act.width + Theme.space10 : 0))
            role: Theme.BodyStrong
            // Two: what to do about it often stands in the second sentence.
            maximumLineCount: 2
            wrapMode: Text.Wrap
            text: line.kept

            Tip {
                text: label.truncated ? line.text : ""
            }
        }

        Button {
            id: act

            anchors.verticalCenter: parent.verticalCenter
            visible: line.action.length > 0
            controlHeight: Theme.controlMini
            ghost: true
            text: line.action
            onClicked: line.acted()

            Tip {
                text: line.actionKeys.length > 0 ? line.action : ""
                shortcut: line.actionKeys
            }
        }

        IconButton {
            anchors.verticalCenter: parent.verticalCenter
            edge: Theme.controlMini
            glyph: "x"
            glyphSize: Theme.iconSmall
            text: qsTr("Dismiss")
            onClicked: line.dismissed()
        }
    }
}
