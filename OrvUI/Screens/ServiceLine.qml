import OrvLauncher.Screens
import QtQuick

// One active service of a card: its state, its kind, and where it is.
Row {
    id: line

    required property var service
    property bool alone: true
    property bool reachable: true
    readonly property bool running: service.phase === "running"
    signal opened(string key)

    spacing: Theme.space4
    height: Theme.space20

    StatusDot {
        anchors.verticalCenter: parent.verticalCenter
        cardState: line.service.phase
    }

    Label {
        anchors.verticalCenter: parent.verticalCenter
        width: line.alone ? implicitWidth : Theme.kindWidth
        role: Theme.Small
        color: line.running ? Theme.text2 : Theme.warning
        text: !line.alone ? line.service.label : line.running ? qsTr("Running") : qsTr("Starting…")
        rightPadding: Theme.space4
    }

    AddressLink {
        anchors.verticalCenter: parent.verticalCenter
        visible: text.length > 0
        focusPolicy: line.reachable ? Qt.StrongFocus : Qt.ClickFocus
        text: line.service.address
        listening: line.service.portListening
        onClicked: line.opened(line.service.key)
    }
}
