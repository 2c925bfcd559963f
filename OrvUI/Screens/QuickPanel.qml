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
    readonly property int shownTasks: 3
    readonly property bool finding: search.text.length > 0
    readonly property bool quitting: model.isQuitting
    readonly property bool listing: !finding && !quitting
    readonly property bool isActive: Window.active
    // Of what was found; -1: nothing was.
    property int current: -1
    signal windowAsked
    signal settingsAsked
    signal quitAsked
    signal closeAsked

    function leave(to) {
        panel.closeAsked();
        to();
    }

    function find(text) {
        search.text = text;
        if (text.length === 0) {
            finder.close();
        } else if (!finder.isOpen) {
            finder.open();
        }
        finder.query = text;
    }

    // To the next row that is shown; where there is none it stays.
    function step(from, by) {
        let row = from + by;
        while (found.itemAt(row) !== null && !found.itemAt(row).visible) {
            row += by;
        }
        if (found.itemAt(row) !== null) {
            panel.current = row;
        }
    }

    // The line of the panel in which an item is.
    function lineOf(item) {
        let line = item;
        while (line !== null && line.parent !== lists && line !== foot) {
            line = line.parent;
        }
        return line;
    }

    // To the first control of the next line, or of the one before; from the last line to the first.
    function go(forward) {
        const start = Window.activeFocusItem;
        if (panel.quitting || start === null) {
            return;
        }
        const from = panel.lineOf(start);
        let item = start.nextItemInFocusChain(forward);
        while (item !== start && panel.lineOf(item) === from) {
            item = item.nextItemInFocusChain(forward);
        }
        for (let ahead = item; !forward && panel.lineOf(ahead) === panel.lineOf(item) && ahead !== start; ahead = ahead.nextItemInFocusChain(false)) {
            item = ahead;
        }
        item.forceActiveFocus(forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
    }

    function open(row) {
        if (found.itemAt(row)?.visible) {
            panel.leave(() => {
                finder.activate(row);
                panel.windowAsked();
            });
        }
    }

    onIsActiveChanged: {
        if (isActive) {
            panel.find("");
            if (panel.quitting) {
                panel.forceActiveFocus(Qt.OtherFocusReason);
            } else if (panel.empty) {
                openButton.forceActiveFocus(Qt.OtherFocusReason);
            } else {
                search.forceActiveFocus(Qt.OtherFocusReason);
            }
        }
    }

    implicitWidth: Theme.quickPanelWidth
    implicitHeight: Math.min(Theme.quickPanelLimit, lists.height + (foot.visible ? foot.height : 0) + 2 * Theme.hairline)
    width: implicitWidth
    height: implicitHeight
    focus: true
    Keys.onEscapePressed: panel.closeAsked()
    Keys.onDownPressed: panel.go(true)
    Keys.onUpPressed: panel.go(false)
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Quick panel")

    PaletteModel {
        id: finder

        model: panel.model
        onResultsChanged: {
            panel.current = -1;
            panel.step(-1, 1);
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: panel.square ? 0 : Theme.radiusCard
        color: Theme.raised
        border.width: Theme.hairline
        border.color: Theme.borderStrong
    }

    Flickable {
        id: view

        anchors.fill: parent
        anchors.margins: Theme.hairline
        anchors.bottomMargin: foot.visible ? foot.height : Theme.hairline
        contentHeight: lists.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Column {
            id: lists

            width: parent.width
            topPadding: Theme.space8
            bottomPadding: Theme.space8

            Field {
                id: search

                x: Theme.space8
                width: parent.width - 2 * x
                visible: !panel.empty && !panel.quitting
                glyph: "search"
                clearable: true
                quiet: true
                placeholderText: qsTr("Find a project or task")
                shortcut: Keymap.text("quickPanel")
                onTextEdited: panel.find(text)
                onCleared: panel.find("")
                onAbandoned: panel.closeAsked()
                onAccepted: panel.finding ? panel.open(panel.current) : panel.leave(() => panel.windowAsked())
                Keys.onDownPressed: panel.finding ? panel.step(panel.current, 1) : panel.go(true)
                Keys.onUpPressed: panel.finding ? panel.step(panel.current, -1) : panel.go(false)
            }

            Item {
                width: parent.width
                height: Theme.space4
                visible: panel.finding
            }

            Repeater {
                id: found

                model: panel.finding && !panel.quitting ? finder.results : null

                PaletteItem {
                    x: Theme.space8
                    width: lists.width - 2 * x
                    // Only what leads to a page: everything else is done in the window.
                    visible: hint.length > 0
                    isCurrent: index === panel.current
                    onClicked: panel.open(index)
                }
            }

            Label {
                visible: panel.finding && !panel.quitting && panel.current < 0
                width: parent.width
                topPadding: Theme.space16
                bottomPadding: Theme.space16
                horizontalAlignment: Text.AlignHCenter
                color: Theme.text2
                text: qsTr("Nothing is called “%1”").arg(search.text)
            }

            Column {
                width: parent.width
                visible: panel.empty || panel.quitting
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
                    text: panel.quitting ? qsTr("OrvLauncher is quitting") : qsTr("Nothing running, pinned or to do")
                }

                Label {
                    x: Theme.space28
                    width: parent.width - 2 * x
                    horizontalAlignment: Text.AlignHCenter
                    color: Theme.text2
                    wrapMode: Text.Wrap
                    elide: Text.ElideNone
                    text: panel.quitting ? qsTr("It ends as soon as what still runs has stopped.") : qsTr("Pin projects or add tasks in OrvLauncher to see them here.")
                }
            }

            PanelHeading {
                visible: running.count > 0 && panel.listing
                text: qsTr("Running")
                count: running.count
            }

            Repeater {
                id: running

                model: panel.model.running

                PanelServiceRow {
                    width: lists.width
                    visible: index < panel.shownServices && panel.listing
                    onOpened: panel.leave(() => panel.model.openServiceByKey(key))
                    onStopped: panel.model.stopServiceByKey(key)
                }
            }

            PanelMore {
                count: running.count - panel.shownServices
                visible: count > 0 && panel.listing
                onClicked: panel.leave(() => panel.windowAsked())
            }

            PanelHeading {
                visible: pinned.count > 0 && panel.listing
                text: qsTr("Pinned")
                count: pinned.count
            }

            Repeater {
                id: pinned

                model: panel.model.pinned

                PanelProjectRow {
                    width: lists.width
                    visible: index < panel.shownPins && panel.listing
                    onToggled: panel.model.toggleProject(projectID)
                }
            }

            PanelMore {
                count: pinned.count - panel.shownPins
                visible: count > 0 && panel.listing
                onClicked: panel.leave(() => panel.windowAsked())
            }

            PanelHeading {
                visible: tasks.count > 0 && panel.listing
                text: qsTr("Tasks")
                count: tasks.count
            }

            Repeater {
                id: tasks

                model: panel.model.taskLists.open

                PanelTaskRow {
                    width: lists.width
                    visible: index < panel.shownTasks && panel.listing
                    onFinished: panel.model.taskLists.setDone(key, true)
                }
            }

            PanelMore {
                count: tasks.count - panel.shownTasks
                visible: count > 0 && panel.listing
                onClicked: panel.leave(() => panel.windowAsked())
            }
        }

        FocusFollower {
            view: view
            margin: Theme.space8
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    Item {
        id: foot

        visible: !panel.quitting
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
