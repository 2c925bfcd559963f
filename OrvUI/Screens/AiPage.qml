import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Hands tasks to agents, follows them, and shows which agents there are.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    property bool narrow: false
    property int padding: Theme.pagePadding
    readonly property AgentModels agents: model.agentModels
    readonly property bool scrolled: view.contentY > Theme.hairline

    function joined(parts) {
        return parts.filter(part => part.length > 0).join(" · ");
    }

    focus: true
    Component.onCompleted: page.agents.refreshAgents()
    Keys.onPressed: event => {
        event.accepted = InputMode.writes(event.text, event.modifiers);
        if (event.accepted) {
            composer.type(event.text);
        }
    }

    Shortcut {
        sequences: Keymap.of("stopRun")
        onActivated: page.agents.stopLatest("")
    }

    Flickable {
        id: view

        anchors.fill: parent
        contentHeight: Math.max(main.height, side.height) + Theme.space40
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Column {
            id: main

            x: page.padding
            width: Math.min(view.width, Theme.contentWidthLimit + 2 * page.padding) - 2 * x - (side.visible ? side.width + Theme.space24 : 0)
            spacing: Theme.space12

            Item {
                width: parent.width
                height: Theme.space40

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Page
                    text: qsTr("AI")
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }

                // Where there is no room for them at the right.
                Button {
                    id: agentsButton

                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    visible: page.narrow
                    lit: (agentsPopover.item as Popover)?.opened ?? false
                    glyph: "sparkles"
                    text: qsTr("Agents")
                    onClicked: {
                        agentsPopover.active = true;
                        (agentsPopover.item as Popover).open();
                    }

                    // Its list is made when it is first opened: in a wide window the page has it at its side.
                    Loader {
                        id: agentsPopover

                        active: false

                        sourceComponent: Popover {
                            x: agentsButton.width - width
                            y: agentsButton.height + Theme.space4
                            width: Theme.agentListWidth + 2 * padding
                            height: Math.min(implicitHeight, page.height - Theme.space40 - Theme.space16)
                            contentItem: Flickable {
                                id: poppedView

                                implicitHeight: popped.height
                                contentHeight: popped.height
                                boundsBehavior: Flickable.StopAtBounds
                                clip: contentHeight > height

                                AgentList {
                                    id: popped

                                    width: Theme.agentListWidth
                                }

                                FocusFollower {
                                    view: poppedView
                                    margin: Theme.space8
                                }

                                T.ScrollBar.vertical: ScrollBar {}
                            }
                        }
                    }
                }
            }

            AgentComposer {
                id: composer

                width: parent.width
                focus: true
                model: page.model
            }

            Row {
                height: Theme.space28
                spacing: Theme.space10

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Section
                    text: qsTr("Runs")
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }

                Figures {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Small
                    color: Theme.text3
                    text: page.joined([page.agents.workingText, page.agents.totalsText])
                }
            }

            Column {
                width: parent.width
                visible: runs.count > 0
                spacing: Theme.space16

                Repeater {
                    id: runs

                    model: page.agents.runs

                    AgentRunCard {
                        width: main.width
                        agents: page.agents
                    }
                }
            }

            Label {
                visible: runs.count === 0
                color: Theme.text3
                text: qsTr("What agents do for you shows up here.")
            }
        }

        Column {
            id: side

            anchors.left: main.right
            anchors.leftMargin: Theme.space24
            y: Theme.space40 + Theme.space4
            width: Theme.agentListWidth
            visible: !page.narrow
            spacing: Theme.space8

            Item {
                width: parent.width
                height: Theme.controlRegular

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Section
                    text: qsTr("Agents")
                }

                IconButton {
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    enabled: !page.agents.isLoading
                    glyph: "refresh-cw"
                    text: qsTr("Look for agents again")
                    onClicked: page.agents.refreshAgents()
                }
            }

            CardFace {
                width: parent.width
                height: list.height

                AgentList {
                    id: list

                    width: parent.width
                }
            }
        }

        FocusFollower {
            view: view
            margin: Theme.space8
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    component AgentList: Column {
        id: agentList

        Repeater {
            model: page.agents.agents

            AgentListItem {
                width: agentList.width
                agents: page.agents
                onSetUpAsked: page.nav.settings(2)
            }
        }
    }
}
