import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A project's services at a glance, with what else there is to know of it at the side.
Item {
    id: overview

    required property AppModel model
    required property Navigator nav
    required property ProjectDetail detail
    property bool narrow: false
    property int padding: Theme.pagePadding
    readonly property int upCount: detail.runningCount + detail.leftCount
    readonly property string runningText: qsTr("%1 of %2 running").arg(upCount).arg(list.count)

    Flickable {
        id: view

        anchors.fill: parent
        contentHeight: content.height + 2 * Theme.space20
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Item {
            id: content

            readonly property bool wide: !overview.narrow
            readonly property int sideWidth: overview.width > Theme.wideLimit - Theme.sidebarWidthWide ? Theme.sideWidthWide : Theme.sideWidth

            x: overview.padding
            y: Theme.space20
            width: Math.min(view.width - 2 * x, Theme.contentWidthLimit)
            height: Math.max(output.visible ? output.y + output.height : services.height, agents.visible ? agents.y + agents.height : cards.y + cards.height)

            Column {
                id: services

                width: content.wide ? parent.width - content.sideWidth - Theme.space20 : parent.width
                spacing: Theme.space8

                Row {
                    height: Theme.space24
                    spacing: Theme.space10

                    Label {
                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.Section
                        text: qsTr("Services")
                        Accessible.role: Accessible.Heading
                        Accessible.name: text
                    }

                    Figures {
                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.Small
                        color: Theme.text3
                        text: overview.upCount === 0 ? qsTr("%1, none running").arg(list.count) : overview.runningText + (overview.detail.leftCount > 0 ? qsTr(", %1 from last time").arg(overview.detail.leftCount) : "")
                    }
                }

                CardFace {
                    width: parent.width
                    height: rows.height
                    Accessible.role: Accessible.List
                    Accessible.name: qsTr("Services")

                    Column {
                        id: rows

                        width: parent.width

                        Repeater {
                            id: list

                            model: overview.detail.services

                            ServiceRow {
                                width: rows.width
                                onStarted: overview.detail.startService(key)
                                onStopped: overview.detail.stopService(key)
                                onRestarted: overview.detail.restartService(key)
                                onOpened: overview.model.openServiceByKey(key)
                                onCorrected: overview.nav.settings(6)
                                onLogsAsked: {
                                    overview.nav.tab = 3;
                                    overview.model.logs.show(key);
                                }
                            }
                        }
                    }
                }
            }

            // Beside the services, or below them.
            Grid {
                id: cards

                readonly property int fullWidth: content.wide ? content.sideWidth : content.width
                readonly property int cardWidth: (fullWidth - (columns - 1) * spacing) / columns
                readonly property int tallest: columns > 1 ? Math.max(git.implicitHeight, tasks.implicitHeight) : 0

                x: content.width - fullWidth
                y: content.wide ? 0 : services.height + Theme.space20
                columns: content.wide ? 1 : 2
                spacing: Theme.space16

                OverviewGit {
                    id: git

                    width: cards.cardWidth
                    height: Math.max(implicitHeight, cards.tallest)
                    git: overview.model.git?.projectID === overview.detail.projectID ? overview.model.git : null
                    narrow: overview.narrow
                    expected: overview.detail.gitChanges
                    onOpened: overview.nav.tab = 4
                }

                OverviewTasks {
                    id: tasks

                    width: cards.cardWidth
                    height: Math.max(implicitHeight, cards.tallest)
                    model: overview.model
                    projectID: overview.detail.projectID
                    onTasksAsked: overview.nav.tab = 1
                }
            }

            OverviewOutput {
                id: output

                y: (content.wide ? services.height : cards.y + cards.height) + Theme.space20
                width: services.width
                boxHeight: Math.max(Theme.overviewOutput, view.height - content.y - y - Theme.space28 - Theme.space8 - Theme.space20)
                model: overview.model
                projectID: overview.detail.projectID
                onLogsAsked: overview.nav.tab = 3
            }

            // Below the cards; in a narrow window the output comes first.
            OverviewAgents {
                id: agents

                x: cards.x
                y: content.wide || !output.visible ? cards.y + cards.height + Theme.space16 : output.y + output.height + Theme.space20
                width: cards.fullWidth
                detail: overview.detail
                onRunsAsked: overview.nav.ai()
            }
        }

        FocusFollower {
            view: view
            margin: Theme.space8
        }

        T.ScrollBar.vertical: ScrollBar {}
    }
}
