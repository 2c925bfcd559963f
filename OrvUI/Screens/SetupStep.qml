import OrvLauncher.Screens
import QtQuick

// One step of a setup: what is installed, by which command, and how it stands.
Item {
    id: step

    required property int index
    required property string title
    required property string command
    required property string status
    readonly property bool running: status === "running"
    readonly property bool failed: status === "failed"

    implicitHeight: Math.max(Theme.setupStepHeight, line.y + line.implicitHeight + Theme.space12 + Theme.hairline)
    Accessible.role: Accessible.ListItem
    Accessible.name: qsTr("%1, %2").arg(title).arg(state.text)
    Accessible.description: command

    Rectangle {
        width: parent.width
        height: Theme.hairline
        visible: step.index > 0
        color: Theme.border
    }

    Item {
        id: mark

        x: Theme.space12 + Theme.space2
        y: Theme.space12
        width: Theme.iconLarge
        height: Theme.iconLarge

        Icon {
            anchors.fill: parent
            visible: !step.running
            size: Theme.iconLarge
            name: step.failed ? "circle-x" : step.status === "done" ? "circle-check" : "circle-dashed"
            color: step.failed ? Theme.danger : step.status === "done" ? Theme.success : Theme.text3
        }

        Loader {
            active: step.running

            sourceComponent: Spinner {
                size: Theme.iconLarge
            }
        }
    }

    Label {
        id: heading

        anchors.left: mark.right
        anchors.leftMargin: Theme.space12
        anchors.right: state.left
        anchors.rightMargin: Theme.space8
        anchors.top: mark.top
        anchors.topMargin: -Theme.hairline
        role: Theme.BodyStrong
        text: step.title
    }

    Label {
        id: state

        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        anchors.top: mark.top
        role: Theme.Small
        color: step.failed ? Theme.danger : Theme.text3
        text: step.failed ? qsTr("Failed") : step.running ? qsTr("Installing") : step.status === "done" ? qsTr("Done") : qsTr("Waiting")
    }

    Label {
        id: line

        anchors.left: mark.right
        anchors.leftMargin: Theme.space12
        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        anchors.top: heading.bottom
        anchors.topMargin: Theme.hairline
        role: Theme.MonoPath
        color: Theme.text3
        // Whoever is asked reads all of it.
        wrapMode: Text.WrapAnywhere
        elide: Text.ElideNone
        text: step.command
    }
}
