import OrvLauncher.Screens
import QtQuick

// What agents do or last did in a project.
OverviewCard {
    id: card

    required property ProjectDetail detail
    signal runsAsked

    visible: list.count > 0
    heading: qsTr("AI")

    corner: Button {
        anchors.verticalCenter: parent?.verticalCenter
        ghost: true
        controlHeight: Theme.controlSmall
        text: qsTr("All runs")
        onClicked: card.runsAsked()
    }

    Repeater {
        id: list

        model: card.detail.latestRuns

        Item {
            id: run

            required property string title
            required property string agentName
            required property string autonomyTitle
            required property string runState
            required property string reason
            required property string changes
            required property string attention
            required property string duration
            readonly property bool working: runState === "running"

            function joined(parts) {
                return parts.filter(part => part.length > 0).join(" · ");
            }

            width: parent?.width ?? 0
            height: words.height + Theme.space10
            Accessible.role: Accessible.ListItem
            Accessible.name: title
            Accessible.description: joined([agentName, working ? qsTr("working") : runState])

            Loader {
                y: Theme.space2
                width: Theme.icon
                height: Theme.icon
                sourceComponent: run.working ? spinner : sign

                Component {
                    id: spinner

                    Spinner {
                        size: Theme.icon
                    }
                }

                Component {
                    id: sign

                    Icon {
                        size: Theme.icon
                        name: run.runState === "succeeded" ? "circle-check" : run.runState === "stopped" ? "circle-stop" : "circle-alert"
                        color: run.runState === "succeeded" ? Theme.success : run.runState === "stopped" ? Theme.text2 : Theme.danger
                    }
                }
            }

            Column {
                id: words

                x: Theme.space24 + Theme.space2
                width: parent.width - x
                spacing: Theme.space2

                Label {
                    width: parent.width
                    role: Theme.BodyStrong
                    text: run.title
                }

                Figures {
                    width: parent.width
                    role: Theme.Small
                    color: Theme.text2
                    text: run.joined([run.agentName, run.autonomyTitle, run.duration])
                }

                Label {
                    width: parent.width
                    visible: text.length > 0
                    role: Theme.Small
                    color: run.attention.length > 0 ? Theme.warning : Theme.text3
                    text: run.attention.length > 0 ? run.attention : run.runState === "failed" ? run.reason : run.changes
                }
            }
        }
    }
}
