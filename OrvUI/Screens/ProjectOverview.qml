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

    Flickable {
        id: view

        anchors.fill: parent
        contentHeight: main.height + 2 * Theme.space20
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Column {
            id: main

            x: overview.padding
            y: Theme.space20
            width: Math.min(view.width - 2 * x, Theme.contentWidthLimit)
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

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Small
                    color: Theme.text3
                    text: overview.detail.runningCount > 0 ? qsTr("%1 of %2 running").arg(overview.detail.runningCount).arg(list.count) : qsTr("%1, none running").arg(list.count)
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

        T.ScrollBar.vertical: ScrollBar {}
    }
}
