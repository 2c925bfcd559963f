import OrvLauncher.Screens
import QtQuick

// One service of a card: its state, its kind, and where it is, or why it failed.
Row {
    id: line

    required property var service
    property bool alone: true
    property bool reachable: true
    property real limit: Infinity
    readonly property bool failed: (service.message ?? "").length > 0
    readonly property bool running: service.phase === "running"
    readonly property bool leftOver: service.phase === "orphaned"
    signal opened(string key)

    spacing: Theme.space6
    height: Theme.space20

    StatusDot {
        anchors.verticalCenter: parent.verticalCenter
        halo: true
        cardState: line.failed ? "failed" : line.service.phase ?? "idle"
    }

    Label {
        id: kind

        // What the address leaves it; of a failure, whose reason is shortened, what it needs.
        readonly property real room: line.limit - x - line.spacing - (address.visible ? address.implicitWidth : 0)

        anchors.verticalCenter: parent.verticalCenter
        width: line.alone ? implicitWidth : Math.max(Theme.kindWidth, Math.min(implicitWidth, 2 * Theme.kindWidth, room))
        role: Theme.Small
        elide: Text.ElideMiddle
        color: line.failed ? Theme.danger : line.running ? Theme.text2 : Theme.warning
        text: !line.alone ? line.service.label ?? "" : RunWords.ofState(line.service.phase ?? "")
        rightPadding: Theme.space2

        Tip {
            text: !line.alone && line.leftOver ? qsTr("%1: %2").arg(line.service.title).arg(RunWords.ofState("orphaned")) : kind.truncated ? line.service.title ?? kind.text : ""
        }
    }

    AddressLink {
        id: address

        width: Math.max(0, Math.min(implicitWidth, line.limit - x))
        anchors.verticalCenter: parent.verticalCenter
        visible: text.length > 0
        focusPolicy: line.reachable ? Qt.StrongFocus : Qt.ClickFocus
        text: line.service.address ?? ""
        listening: line.service.portListening ?? true
        onClicked: line.opened(line.service.key)
    }

    Label {
        anchors.verticalCenter: parent.verticalCenter
        visible: line.leftOver && !line.alone
        width: Math.max(0, Math.min(implicitWidth, line.limit - x))
        role: Theme.Small
        color: Theme.warning
        text: qsTr("from last time")
    }

    Label {
        id: reason

        anchors.verticalCenter: parent.verticalCenter
        visible: line.failed
        width: Math.max(0, Math.min(implicitWidth, line.limit - x))
        role: Theme.Small
        color: Theme.danger
        text: line.service.message ?? ""

        Tip {
            text: reason.truncated ? reason.text : ""
        }
    }
}
