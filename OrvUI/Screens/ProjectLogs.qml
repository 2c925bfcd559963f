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
    property bool follow: true
    property bool wrap: false
    readonly property ServiceLogs logs: model.logs
    readonly property LogModel lines: logs.lines

    function showMatch() {
        if (lines.currentMatchRow >= 0) {
            page.follow = false;
            view.positionViewAtIndex(lines.currentMatchRow, ListView.Center);
        }
    }

    function focusSearch() {
        search.forceActiveFocus(Qt.ShortcutFocusReason);
        search.selectAll();
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

        x: page.padding
        y: Theme.space12
        width: page.width - 2 * x
        height: Theme.controlRegular

        Segmented {
            id: services

            visible: list.count > 0
            name: qsTr("Service")
            currentIndex: list.shown
            choices: list.choices
            onChosen: index => page.logs.show(list.keys[index])
        }

        // What the segments show, out of the list of services.
        Instantiator {
            id: list

            property int shown: 0
            property var keys: []
            property var choices: []

            function collect() {
                const found = [];
                const ids = [];
                for (let i = 0; i < count; ++i) {
                    const entry = objectAt(i);
                    if (!entry) {
                        continue;
                    }
                    found.push({
                        "text": entry.port.length > 0 ? entry.label + " " + entry.port : entry.label,
                        "state": entry.phase === "stopped" ? "idle" : entry.phase
                    });
                    ids.push(entry.key);
                    if (entry.isShown) {
                        shown = i;
                    }
                }
                keys = ids;
                choices = found;
            }

            model: page.logs.services
            onCountChanged: collect()
            onObjectAdded: collect()

            delegate: QtObject {
                required property string key
                required property string label
                required property string phase
                required property string port
                required property bool isShown

                onPhaseChanged: list.collect()
                onPortChanged: list.collect()
                onIsShownChanged: list.collect()
            }
        }

        Row {
            anchors.right: parent.right
            spacing: Theme.space8

            Field {
                id: search

                width: page.narrow ? Theme.searchWidthNarrow : Theme.searchWidth + Theme.space24
                glyph: "search"
                clearable: true
                rightPadding: found.visible ? found.width + Theme.space40 : Theme.space32
                placeholderText: qsTr("Search the output")
                shortcut: qsTr("Ctrl F")
                text: page.lines.searchText
                onTextEdited: page.lines.searchText = text
                onCleared: page.lines.searchText = ""
                onAbandoned: view.forceActiveFocus(Qt.OtherFocusReason)
                Keys.onReturnPressed: event => event.modifiers & Qt.ShiftModifier ? page.lines.previousMatch() : page.lines.nextMatch()
                Keys.onDownPressed: page.lines.nextMatch()
                Keys.onUpPressed: page.lines.previousMatch()

                Label {
                    id: found

                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space32
                    anchors.verticalCenter: parent.verticalCenter
                    visible: page.lines.searchText.length > 0
                    role: Theme.Small
                    color: Theme.text3
                    text: page.lines.matchCount === 0 ? qsTr("no match") : qsTr("%1 of %2").arg(page.lines.currentMatch).arg(page.lines.matchCount)
                }
            }

            Button {
                glyph: "arrow-down-to-line"
                glyphColor: page.follow ? Theme.accentText : Theme.text2
                text: qsTr("Follow")
                Accessible.checkable: true
                Accessible.checked: page.follow
                onClicked: page.follow = !page.follow
            }

            IconButton {
                edge: Theme.controlRegular
                glyph: "corner-down-right"
                checkable: true
                checked: page.wrap
                tint: page.wrap ? Theme.accentText : Theme.text2
                text: qsTr("Wrap long lines")
                onClicked: {
                    checked = Qt.binding(() => page.wrap);
                    page.wrap = !page.wrap;
                }
            }

            IconButton {
                edge: Theme.controlRegular
                glyph: "copy"
                text: qsTr("Copy all")
                shortcut: qsTr("Ctrl Shift C")
                enabled: view.count > 0
                onClicked: Clipboard.copy(page.lines.allText())
            }

            IconButton {
                edge: Theme.controlRegular
                glyph: "eraser"
                text: qsTr("Clear")
                shortcut: qsTr("Ctrl Alt K")
                enabled: view.count > 0
                onClicked: page.lines.clear()
            }
        }
    }

    Rectangle {
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

            anchors.fill: parent
            anchors.margins: Theme.hairline
            anchors.topMargin: Theme.space8
            anchors.bottomMargin: Theme.space8
            clip: true
            focus: true
            activeFocusOnTab: true
            boundsBehavior: Flickable.StopAtBounds
            reuseItems: true
            model: page.lines
            Accessible.role: Accessible.List
            Accessible.name: services.choices.length > 0 ? qsTr("Output of %1").arg(services.choices[list.shown]?.text ?? "") : qsTr("Output")
            onCountChanged: {
                if (page.follow) {
                    positionViewAtEnd();
                }
            }
            onMovementStarted: page.follow = false
            onMovementEnded: page.follow = atYEnd
            Keys.onPressed: event => {
                const page = height * 0.9;
                const moves = {
                    [Qt.Key_Home]: originY - contentY,
                    [Qt.Key_End]: originY + contentHeight - height - contentY,
                    [Qt.Key_PageUp]: -page,
                    [Qt.Key_PageDown]: page,
                    [Qt.Key_Up]: -Theme.space20,
                    [Qt.Key_Down]: Theme.space20
                };
                if (moves[event.key] !== undefined) {
                    event.accepted = true;
                    contentY = Math.max(originY, Math.min(originY + contentHeight - height, contentY + moves[event.key]));
                }
            }

            delegate: LogLine {
                width: view.width
                wrap: page.wrap
            }

            T.ScrollBar.vertical: ScrollBar {}
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

        EmptyState {
            anchors.centerIn: parent
            visible: view.count === 0
            picture: "no-results"
            heading: list.count === 0 ? qsTr("No output yet") : qsTr("Nothing printed so far")
            text: list.count === 0 ? qsTr("Start a service to see its logs here.") : qsTr("What the service prints shows up here.")
        }
    }

    Shortcut {
        sequence: "Ctrl+F"
        onActivated: page.focusSearch()
    }

    Shortcut {
        sequence: "F3"
        onActivated: page.lines.nextMatch()
    }

    Shortcut {
        sequence: "Shift+F3"
        onActivated: page.lines.previousMatch()
    }

    Shortcut {
        sequence: "Ctrl+End"
        onActivated: {
            page.follow = true;
            view.positionViewAtEnd();
        }
    }

    Shortcut {
        sequence: "Ctrl+Shift+C"
        onActivated: Clipboard.copy(page.lines.allText())
    }

    Shortcut {
        sequence: "Ctrl+Alt+K"
        onActivated: page.lines.clear()
    }
}
