import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The quick panel: what runs and what is pinned, each with its one action; lists that are cut lead to the window.
FocusScope {
    id: panel

    required property AppModel model
    // Where nothing but the panel can be seen through its window's corners.
    property bool square: false
    readonly property bool empty: running.count === 0 && pinned.count === 0 && tasks.count === 0
    readonly property int shownPins: 3
    readonly property int shownServices: 5
    readonly property int shownTasks: 4
    signal windowAsked
    signal settingsAsked
    signal quitAsked
    signal closeAsked

    function leave(to) {
        panel.closeAsked();
        to();
    }

    implicitWidth: Theme.quickPanelWidth
    implicitHeight: Math.min(Theme.quickPanelLimit, lists.height + foot.height + 2 * Theme.hairline)
    width: implicitWidth
    height: implicitHeight
    focus: true
    Keys.onEscapePressed: panel.closeAsked()
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Quick panel")

    Rectangle {
        anchors.fill: parent
        radius: panel.square ? 0 : Theme.radiusCard
        color: Theme.raised
        border.width: Theme.hairline
        border.color: Theme.borderStrong
    }

    Flickable {
        anchors.fill: parent
        anchors.margins: Theme.hairline
        anchors.bottomMargin: foot.height
        contentHeight: lists.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Column {
            id: lists

            width: parent.width
            topPadding: Theme.space8
            bottomPadding: Theme.space8

            Column {
                width: parent.width
                visible: panel.empty
                topPadding: Theme.space28
                bottomPadding: Theme.space20
                spacing: Theme.space8

                Rectangle {
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: Theme.alertIcon - Theme.space8
                    height: width
                    radius: width / 2
                    color: Theme.hover

                    BrandMark {
                        anchors.centerIn: parent
                    }
                }

                Item {
                    width: Theme.hairline
                    height: Theme.space12
                }

                Label {
                    width: parent.width
                    horizontalAlignment: Text.AlignHCenter
                    role: Theme.Heading
                    text: qsTr("Nothing running, pinned or to do")
                }

                Label {
                    x: Theme.space28
                    width: parent.width - 2 * x
                    horizontalAlignment: Text.AlignHCenter
                    color: Theme.text2
                    wrapMode: Text.Wrap
                    elide: Text.ElideNone
                    text: qsTr("Pin projects or add tasks in OrvLauncher to see them here.")
                }
            }

            PanelHeading {
                visible: running.count > 0
                text: qsTr("Running")
                count: running.count
            }

            Repeater {
                id: running

                model: panel.model.running

                PanelServiceRow {
                    width: lists.width
                    visible: index < panel.shownServices
                    onOpened: panel.leave(() => panel.model.openServiceByKey(key))
                    onStopped: panel.model.stopServiceByKey(key)
                }
            }

            PanelMore {
                count: running.count - panel.shownServices
                onClicked: panel.leave(() => panel.windowAsked())
            }

            PanelHeading {
                visible: pinned.count > 0
                text: qsTr("Pinned")
                count: pinned.count
            }

            Repeater {
                id: pinned

                model: panel.model.pinned

                PanelProjectRow {
                    width: lists.width
                    visible: index < panel.shownPins
                    onToggled: panel.model.toggleProject(projectID)
                }
            }

            PanelMore {
                count: pinned.count - panel.shownPins
                onClicked: panel.leave(() => panel.windowAsked())
            }

            PanelHeading {
                visible: tasks.count > 0
                text: qsTr("To do")
                count: tasks.count
            }

            Repeater {
                id: tasks

                model: panel.model.taskLists.open

                PanelTaskRow {
                    width: lists.width
                    visible: index < panel.shownTasks
                    onFinished: panel.model.taskLists.setDone(key, true)
                }
            }

            PanelMore {
                count: tasks.count - panel.shownTasks
                onClicked: panel.leave(() => panel.windowAsked())
            }
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    Item {
        id: foot

        anchors.bottom: parent.bottom
        width: parent.width
        height: Theme.pinnedItemHeight

        Rectangle {
            x: Theme.hairline
            width: parent.width - 2 * Theme.hairline
            height: Theme.hairline
            color: Theme.border
        }

        T.AbstractButton {
            id: openButton

            x: Theme.space12
            anchors.verticalCenter: parent.verticalCenter
            implicitWidth: openRow.implicitWidth + Theme.space16
            implicitHeight: Theme.controlRegular
            focus: true
            focusPolicy: Qt.StrongFocus
            hoverEnabled: true
            text: qsTr("Open OrvLauncher")
            Accessible.role: Accessible.Button
            Accessible.name: text
            Keys.onReturnPressed: openButton.clicked()
            Keys.onEnterPressed: openButton.clicked()
            onClicked: panel.leave(() => panel.windowAsked())

            background: Rectangle {
                radius: Theme.radiusControl
                color: openButton.pressed ? Theme.pressed : openButton.hovered ? Theme.hover : "transparent"

                FocusRing {
                    control: openButton
                    inside: true
                }
            }

            contentItem: Item {
                Row {
                    id: openRow

                    anchors.centerIn: parent
                    spacing: Theme.space6

                    BrandMark {
                        anchors.verticalCenter: parent.verticalCenter
                        scale: 0.8
                    }

                    Label {
                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.BodyStrong
                        text: openButton.text
                    }
                }
            }
        }

        Row {
            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space4

            IconButton {
                glyph: "settings"
                text: qsTr("Settings")
                onClicked: panel.leave(() => panel.settingsAsked())
            }

            IconButton {
                glyph: "power"
                text: qsTr("Quit")
                onClicked: panel.leave(() => panel.quitAsked())
            }
        }
    }
}
