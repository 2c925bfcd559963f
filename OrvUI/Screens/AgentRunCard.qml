import OrvLauncher.Screens
import QtQuick

// A run of an agent: its task, what it does or did, and how to go on. A finished one folds to its summary.
Item {
    id: card

    required property AgentModels agents
    required property string key
    required property string title
    required property string agentName
    required property string agentLetters
    required property string projectName
    required property string autonomyTitle
    required property string runState
    required property string reason
    required property string answer
    required property string duration
    required property string cost
    required property string tokens
    required property string changes
    required property string attention
    required property bool canContinue
    required property bool canReview
    readonly property bool running: runState === "running"
    property bool open: running
    // The last that was asked for was to go on by a reply, and not to try again.
    property bool replied: false
    // How long it has run by now; what ended says so itself.
    property string elapsed
    readonly property string facts: joined([projectName, autonomyTitle, running ? elapsed : duration, changes])

    function joined(parts) {
        return parts.filter(part => part.length > 0).map(part => "·  " + part).join("  ");
    }

    implicitHeight: column.height
    Accessible.role: Accessible.Grouping
    Accessible.name: title
    Accessible.description: running ? qsTr("%1, working").arg(agentName) : qsTr("%1, %2").arg(agentName).arg(runState)
    onRunningChanged: open = running

    Timer {
        interval: 5000
        repeat: true
        triggeredOnStart: true
        running: card.running && card.visible && (card.Window.window?.visible ?? false)
        onTriggered: card.elapsed = card.agents.duration(card.key)
    }

    CardFace {
        anchors.fill: parent
    }

    Column {
        id: column

        x: Theme.space16
        width: parent.width - 2 * x
        topPadding: Theme.space16
        bottomPadding: Theme.space16
        spacing: Theme.space10

        Item {
            width: parent.width
            height: Theme.space20 + Theme.space20

            Loader {
                id: sign

                y: Theme.space2
                width: Theme.iconLarge
                height: Theme.iconLarge
                sourceComponent: card.running ? working : ended

                Component {
                    id: working

                    Spinner {
                        size: Theme.iconLarge
                    }
                }

                Component {
                    id: ended

                    Icon {
                        size: Theme.iconLarge
                        name: card.runState === "succeeded" ? "circle-check" : card.runState === "stopped" ? "circle-stop" : "circle-alert"
                        color: card.runState === "succeeded" ? Theme.success : card.runState === "stopped" ? Theme.text2 : Theme.danger
                    }
                }
            }

            Label {
                id: heading

                x: Theme.space28 + Theme.space2
                width: Math.max(0, right.x - x - Theme.space12)
                role: Theme.CardTitle
                text: card.title
            }

            Row {
                anchors.left: heading.left
                anchors.top: heading.bottom
                anchors.topMargin: Theme.space2
                spacing: Theme.space6

                AgentBadge {
                    anchors.verticalCenter: parent.verticalCenter
                    size: Theme.tileMini + Theme.space2
                    letters: card.agentLetters
                }

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Small
                    color: Theme.text2
                    text: card.agentName
                }

                Figures {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Small
                    color: Theme.text3
                    text: card.facts
                }
            }

            Row {
                id: right

                anchors.right: parent.right
                spacing: Theme.space12

                Pill {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: card.cost.length > 0
                    text: card.cost
                }

                Button {
                    visible: card.running
                    controlHeight: Theme.controlSmall
                    glyph: "own-stop-fill"
                    glyphSize: Theme.iconSmall
                    glyphColor: Theme.text2
                    text: qsTr("Stop")
                    onClicked: card.agents.stop(card.key)
                }

                Button {
                    visible: card.runState === "failed"
                    controlHeight: Theme.controlSmall
                    glyph: "rotate-cw"
                    text: qsTr("Try again")
                    onClicked: {
                        card.replied = false;
                        card.agents.retry(card.key);
                    }
                }

                IconButton {
                    visible: !card.running
                    glyph: card.open ? "chevron-up" : "chevron-down"
                    text: card.open ? qsTr("Show less") : qsTr("Show what it did")
                    onClicked: card.open = !card.open
                }
            }
        }

        RunRefusal {
            x: heading.x
            width: parent.width - x
            visible: reason.length > 0 && !card.replied
            agents: card.agents
            key: card.key
        }

        Label {
            x: heading.x
            width: parent.width - x
            visible: card.attention.length > 0
            role: Theme.Small
            color: Theme.warning
            text: card.attention
        }

        Loader {
            id: history

            x: heading.x
            width: parent.width - x
            active: card.open
            visible: active

            sourceComponent: Column {
                spacing: Theme.space6

                Repeater {
                    model: card.agents.events(card.key)

                    AgentEventLine {
                        width: history.width
                        // Its last words are the answer, which stands below.
                        visible: kind !== "result" && (card.running || kind === "tool" || text !== card.answer)
                    }
                }
            }
        }

        AgentAnswer {
            x: heading.x
            width: parent.width - x
            visible: !card.running && text.length > 0
            lines: 4
            whole: card.open
            unfolds: false
            showsTools: card.open
            text: card.answer
        }

        AgentAnswer {
            x: heading.x
            width: parent.width - x
            visible: card.runState === "failed" && text.length > 0
            failure: true
            lines: 4
            whole: card.open
            unfolds: false
            showsTools: card.open
            text: card.reason
        }

        // Above the field, which is in sight: what comes below it may not be.
        RunRefusal {
            id: refusal

            x: heading.x
            width: parent.width - x
            visible: reason.length > 0 && card.replied
            agents: card.agents
            key: card.key
        }

        Row {
            x: heading.x
            width: parent.width - x
            visible: card.canContinue
            spacing: Theme.space8

            Field {
                id: reply

                width: parent.width - go.width - parent.spacing - (review.visible ? review.width + parent.spacing : 0)
                glyph: "corner-down-right"
                placeholderText: qsTr("Reply to continue")
                text: card.agents.words(card.key)
                onTextEdited: {
                    refusal.reason = "";
                    card.agents.keepWords(card.key, text);
                }
                onAccepted: go.clicked()
            }

            Button {
                id: go

                enabled: reply.text.trim().length > 0
                text: qsTr("Continue")
                onClicked: {
                    card.replied = true;
                    if (card.agents.continueRun(card.key, reply.text)) {
                        reply.clear();
                    }
                }
            }

            Button {
                id: review

                visible: card.canReview
                glyph: "file-diff"
                text: qsTr("Review changes")
                onClicked: card.agents.review(card.key)
            }
        }
    }
}
