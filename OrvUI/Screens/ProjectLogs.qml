import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The output of a project's services, one at a time, with search.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    required property ProjectDetail detail
    property bool narrow: false
    property int padding: Theme.pagePadding
    property alias follow: tools.follow
    // Of which there can be output.
    readonly property bool hasServices: services.count > 0
    readonly property ServiceLogs logs: model.logs
    readonly property LogModel lines: logs.lines

    function showMatch() {
        if (lines.currentMatchRow >= 0) {
            page.follow = false;
            view.positionViewAtIndex(lines.currentMatchRow, ListView.Center);
        }
    }

    Binding {
        target: page.logs
        property: "projectID"
        value: page.detail.projectID
    }

    Connections {
        target: page.lines

        function onMatchesChanged() {
            page.showMatch();
        }
    }

    Item {
        id: bar

        visible: page.hasServices
        x: page.padding
        y: Theme.space12
        width: page.width - 2 * x
        height: Theme.controlRegular

        ServiceChoice {
            id: services

            visible: page.hasServices && !tools.covers
            logs: page.logs
        }

        LogTools {
            id: tools

            anchors.right: parent.right
            lines: page.lines
            nav: page.nav
            room: bar.width - services.width - Theme.space12
            fullRoom: bar.width
            wrap: page.logs.wrap
            timed: page.logs.timed
            onWrapChanged: page.logs.wrap = wrap
            onTimedChanged: page.logs.timed = timed
            onSearchLeft: view.forceActiveFocus(Qt.OtherFocusReason)
        }
    }

    Rectangle {
        visible: page.hasServices
        anchors.fill: parent
        anchors.topMargin: bar.y + bar.height + Theme.space12
        anchors.leftMargin: page.padding
        anchors.rightMargin: page.padding
        anchors.bottomMargin: Theme.space20
        radius: Theme.radiusCard
        color: Theme.terminalBackground
        border.width: Theme.hairline
        border.color: Theme.border

        ListView {
            id: view

            function keepUp() {
                if (page.follow) {
                    positionViewAtEnd();
                }
            }

            anchors.fill: parent
            anchors.margins: Theme.hairline
            anchors.topMargin: Theme.space8
            anchors.bottomMargin: Theme.space8
            clip: true
            focus: true
            activeFocusOnTab: true
            boundsBehavior: Flickable.StopAtBounds
            reuseItems: true
            // None ahead of need: Qt goes on asking for those whose rows have gone.
            cacheBuffer: 0
            model: page.lines
            Accessible.role: Accessible.List
            Accessible.name: services.count > 0 ? qsTr("Output of %1").arg(services.shownText) : qsTr("Output")
            // The rows may be there before the view has its size.
            onCountChanged: soon.start()
            onHeightChanged: soon.start()
            onContentHeightChanged: soon.start()
            onMovementStarted: page.follow = false
            onMovementEnded: page.follow = atYEnd
            Keys.onPressed: event => {
                const pageful = height * 0.9;
                const moves = {
                    [Qt.Key_Home]: originY - contentY,
                    [Qt.Key_End]: originY + contentHeight - height - contentY,
                    [Qt.Key_PageUp]: -pageful,
                    [Qt.Key_PageDown]: pageful,
                    [Qt.Key_Up]: -Theme.space20,
                    [Qt.Key_Down]: Theme.space20
                };
                if (moves[event.key] !== undefined) {
                    event.accepted = true;
                    const end = originY + contentHeight - height;
                    const wanted = contentY + moves[event.key];
                    contentY = Math.max(originY, Math.min(end, wanted));
                    page.follow = wanted >= end && [Qt.Key_End, Qt.Key_PageDown, Qt.Key_Down].includes(event.key);
                }
            }

            delegate: LogLine {
                width: view.width
                wrap: tools.wrap
                timed: tools.timed
            }

            Timer {
                id: soon

                interval: 0
                onTriggered: view.keepUp()
            }

            T.ScrollBar.vertical: ScrollBar {
                onPressedChanged: page.follow = !pressed && view.atYEnd
            }
        }

        Button {
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.space16
            visible: !page.follow && !view.atYEnd && view.count > 0
            glyph: "arrow-down-to-line"
            text: qsTr("Jump to latest")
            onClicked: {
                page.follow = true;
                view.positionViewAtEnd();
            }
        }

        Label {
            anchors.centerIn: parent
            visible: view.count === 0
            color: Theme.text3
            text: qsTr("Nothing printed so far")
        }
    }

    EmptyState {
        x: Math.round((page.width - width) / 2)
        y: Math.max(Theme.space16, Math.round((page.height - height) / 2) - Theme.space28)
        visible: !page.hasServices
        picture: "no-output"
        heading: qsTr("No output yet")
        text: qsTr("Start a service to see its logs here.")

        RunButton {
            id: run

            focus: !page.hasServices
            projectName: page.detail.name
            action: choice.preferred
            actions: page.detail.startable
            choosesDevice: page.detail.isFlutter
            busy: false
            onStarted: page.model.runAction(page.detail.projectID, action)
            onChoose: anchor => choice.open(anchor)
        }
    }

    RunChoice {
        id: choice

        model: page.model
        detail: page.detail
    }

    Shortcut {
        sequences: Keymap.of("search")
        onActivated: tools.focusSearch()
    }

    Shortcut {
        sequences: Keymap.of("nextHit")
        onActivated: page.lines.nextMatch()
    }

    Shortcut {
        sequences: Keymap.of("previousHit")
        onActivated: page.lines.previousMatch()
    }

    Shortcut {
        sequences: Keymap.of("follow")
        onActivated: {
            page.follow = true;
            view.positionViewAtEnd();
        }
    }

    Shortcut {
        sequences: Keymap.of("copyLogs")
        onActivated: Clipboard.copy(page.lines.allText())
    }

    Shortcut {
        sequences: Keymap.of("clearLogs")
        onActivated: page.lines.clear()
    }
}
