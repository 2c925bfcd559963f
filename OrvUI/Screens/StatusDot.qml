import OrvLauncher.Screens
import QtQuick

// The state of a service or a card as a dot: hollow when nothing runs, a spinner while something starts, on its corner
// when it still runs from last time.
Item {
    id: dot

    required property string cardState
    // A soft ring around the dot of what runs or failed.
    property bool halo: false
    property int size: Theme.dot
    readonly property bool busy: cardState === "starting" || cardState === "installing" || cardState === "stopping"
    readonly property bool leftOver: cardState === "orphaned"
    readonly property color tint: cardState === "running" ? Theme.success : cardState === "failed" ? Theme.danger : leftOver ? Theme.warning : Theme.text3

    implicitWidth: Theme.dotHalo
    implicitHeight: Theme.dotHalo

    Rectangle {
        anchors.centerIn: parent
        width: Theme.dotHalo
        height: Theme.dotHalo
        radius: width / 2
        color: dot.leftOver ? Theme.warningSoft : dot.cardState === "failed" ? Theme.dangerSoft : Theme.successSoft
        visible: dot.halo && (dot.leftOver || dot.cardState === "running" || dot.cardState === "failed")
    }

    Rectangle {
        anchors.centerIn: parent
        width: dot.size
        height: dot.size
        radius: dot.leftOver ? Theme.hairline : width / 2
        rotation: dot.leftOver ? 45 : 0
        antialiasing: true
        visible: !dot.busy
        color: dot.cardState === "idle" ? "transparent" : dot.tint
        border.width: dot.cardState === "idle" ? Theme.focusWidth : 0
        border.color: dot.tint
    }

    Loader {
        anchors.centerIn: parent
        active: dot.busy

        sourceComponent: Spinner {
            size: Theme.iconMini
            color: Theme.warning
        }
    }

    // One ring when a service comes up.
    Rectangle {
        id: ring

        anchors.centerIn: parent
        width: dot.size
        height: dot.size
        radius: width / 2
        color: "transparent"
        border.width: Theme.hairline
        border.color: Theme.success
        opacity: 0

        ParallelAnimation {
            id: ringing

            NumberAnimation {
                target: ring
                property: "scale"
                from: 1
                to: 2.5
                duration: Theme.durationRing
            }

            NumberAnimation {
                target: ring
                property: "opacity"
                from: 1
                to: 0
                duration: Theme.durationRing
            }
        }
    }

    onCardStateChanged: {
        // One that is told what it shows before it can be seen tells of nothing new.
        if (cardState === "running" && visible && !Theme.reducedMotion) {
            ringing.restart();
        }
    }
}
