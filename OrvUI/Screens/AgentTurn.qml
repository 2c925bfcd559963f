import OrvLauncher.Screens
import QtQuick

// A run in the conversation of the agent panel: what was asked, what the agent does or did, and how it came out.
Column {
    id: turn

    required property AgentModels agents
    required property string key
    required property string asked
    required property string agentName
    required property string agentLetters
    required property string autonomyTitle
    required property string runState
    required property string reason
    required property string answer
    required property string cost
    required property string changes
    required property string attention
    required property bool canReview
    readonly property bool running: runState === "running"
    readonly property bool failed: runState === "failed"
    // More of it is about to be read.
    signal unfolding

    spacing: Theme.space10
    Accessible.role: Accessible.Grouping
    Accessible.name: asked
    Accessible.description: running ? qsTr("%1, working").arg(agentName) : qsTr("%1, %2").arg(agentName).arg(runState)

    Rectangle {
        anchors.right: parent.right
        width: words.width + 2 * Theme.space12
        height: words.height + 2 * Theme.space10
        radius: Theme.radiusCard
        color: Theme.control

        // The corner towards the one who spoke.
        Rectangle {
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            width: Theme.radiusCard
            height: width
            radius: Theme.radiusKey
            color: parent.color
        }

        Label {
            id: words

            anchors.centerIn: parent
            width: Math.min(implicitWidth, turn.width - Theme.space40 - 2 * Theme.space12)
            wrapMode: Text.Wrap
            maximumLineCount: 12
            text: turn.asked
        }
    }

    Item {
        width: parent.width
        height: Theme.controlSmall

        Row {
            anchors.left: parent.left
            anchors.right: turn.running ? stop.left : cost.left
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space6

            AgentBadge {
                anchors.verticalCenter: parent.verticalCenter
                size: Theme.tileMini + Theme.space4
                letters: turn.agentLetters
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.BodyStrong
                color: Theme.text2
                text: turn.agentName
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, parent.width - x)
                color: Theme.text3
                visible: turn.autonomyTitle.length > 0
                text: qsTr("· %1").arg(turn.autonomyTitle)
            }
        }

        Figures {
            id: cost

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            visible: !turn.running
            color: Theme.text3
            text: turn.cost
        }

        Button {
            id: stop

            anchors.right: parent.right
            visible: turn.running
            controlHeight: Theme.controlSmall
            glyph: "own-stop-fill"
            glyphSize: Theme.iconSmall
            glyphColor: Theme.text2
            text: qsTr("Stop")
            Accessible.name: qsTr("Stop %1").arg(turn.agentName)
            onClicked: turn.agents.stop(turn.key)
        }
    }

    Column {
        width: parent.width
        spacing: Theme.space6

        Repeater {
            model: turn.agents.events(turn.key)

            AgentEventLine {
                width: turn.width
                // Its last words are the answer, which stands below.
                visible: kind !== "result" && (turn.running || kind === "tool" || text !== turn.answer)
            }
        }
    }

    Label {
        width: parent.width
        visible: turn.attention.length > 0
        color: Theme.warning
        wrapMode: Text.Wrap
        text: turn.attention
    }

    AgentAnswer {
        width: parent.width
        visible: !turn.running && !turn.failed && text.length > 0
        text: turn.answer
        onUnfolding: turn.unfolding()
    }

    AgentAnswer {
        width: parent.width
        visible: turn.failed && text.length > 0
        failure: true
        lines: 8
        text: turn.reason
        onUnfolding: turn.unfolding()
    }

    RunRefusal {
        width: parent.width
        agents: turn.agents
        key: turn.key
    }

    Item {
        width: parent.width
        height: Theme.controlSmall
        visible: !turn.running

        Row {
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space6

            Pill {
                glyph: turn.failed ? "circle-alert" : turn.runState === "stopped" ? "circle-stop" : "check"
                tint: turn.failed ? Theme.danger : turn.runState === "stopped" ? Theme.text2 : Theme.success
                fill: turn.failed ? Theme.dangerSoft : turn.runState === "stopped" ? Theme.control : Theme.successSoft
                text: turn.failed ? qsTr("Failed") : turn.runState === "stopped" ? qsTr("Stopped") : qsTr("Done")
            }

            Pill {
                visible: turn.changes.length > 0
                text: turn.changes
            }
        }

        Button {
            anchors.right: parent.right
            visible: turn.failed && !turn.canReview
            controlHeight: Theme.controlSmall
            glyph: "rotate-cw"
            text: qsTr("Try again")
            onClicked: turn.agents.retry(turn.key)
        }

        Button {
            anchors.right: parent.right
            visible: turn.canReview
            controlHeight: Theme.controlSmall
            glyph: "file-diff"
            text: qsTr("Review")
            Accessible.name: qsTr("Review what %1 changed").arg(turn.agentName)
            onClicked: turn.agents.review(turn.key)
        }
    }
}
