import OrvLauncher.Screens
import QtQuick

// The state of a service as a word with a dot, a spinner or a sign.
Rectangle {
    id: pill

    required property string serviceState
    required property string text
    required property color tint
    required property color fill
    readonly property bool busy: serviceState === "starting" || serviceState === "stopping"

    implicitWidth: row.implicitWidth + Theme.space16
    implicitHeight: Theme.space20
    radius: height / 2
    color: fill
    border.width: Qt.colorEqual(fill, Theme.control) ? 0 : Theme.softEdge
    border.color: tint

    Row {
        id: row

        anchors.centerIn: parent
        spacing: Theme.space4 + Theme.hairline

        Rectangle {
            readonly property bool leftOver: pill.serviceState === "orphaned"

            anchors.verticalCenter: parent.verticalCenter
            visible: leftOver || pill.serviceState === "running"
            width: Theme.space6
            height: width
            radius: leftOver ? Theme.hairline : width / 2
            rotation: leftOver ? 45 : 0
            antialiasing: true
            color: pill.tint
        }

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            visible: pill.serviceState === "failed"
            name: "circle-alert"
            size: Theme.iconMini
            color: pill.tint
        }

        Loader {
            anchors.verticalCenter: parent.verticalCenter
            active: pill.busy
            visible: active

            sourceComponent: Spinner {
                size: Theme.iconMini
                color: pill.tint
            }
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Caption
            color: pill.tint
            text: pill.text
        }
    }
}
