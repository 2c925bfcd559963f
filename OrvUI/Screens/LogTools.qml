import OrvLauncher.Screens
import QtQuick

// What can be done with the output that is shown: search in it, follow it, keep it. Where there is little room the
// search opens when it is asked for, and what is needed less often stands in a menu.
Row {
    id: tools

    required property LogModel lines
    required property Navigator nav
    // What there is beside the services, and what there is in all.
    required property int room
    required property int fullRoom
    // Where a search begins.
    property int topRow: 0
    property bool follow: true
    property bool wrap: false
    property bool timed: false
    // Beside which nothing of it is missing: five buttons.
    readonly property int leastWidth: 5 * Theme.controlRegular + 4 * spacing
    readonly property bool tight: room < Theme.logToolsWidth
    // Nothing else has room beside the search.
    readonly property bool covers: tight && opened
    property bool opened: false
    // Whatever has no hit is left out.
    property bool onlyHits: false
    signal searchLeft

    function focusSearch() {
        tools.opened = true;
        search.forceActiveFocus(Qt.ShortcutFocusReason);
        search.selectAll();
    }

    function step(by) {
        by > 0 ? tools.lines.nextMatch() : tools.lines.previousMatch();
    }

    spacing: Theme.space8
    // The overview has the same lines.
    Component.onDestruction: {
        tools.onlyHits = false;
        tools.lines.onlyErrors = false;
    }

    Binding {
        target: tools.lines
        property: "filterText"
        value: tools.onlyHits ? tools.lines.searchText : ""
    }

    IconButton {
        visible: tools.tight && !tools.opened
        edge: Theme.controlRegular
        glyph: "search"
        text: qsTr("Search the output")
        shortcut: Keymap.text("search")
        onClicked: tools.focusSearch()
    }

    Field {
        id: search

        visible: !tools.tight || tools.opened
        width: Math.min(Theme.searchWidth + Theme.space40, (tools.tight ? tools.fullRoom : tools.room) - buttons.width - tools.spacing)
        glyph: "search"
        clearable: true
        rightPadding: found.visible ? found.width + Theme.space40 : Theme.space32
        placeholderText: qsTr("Search the output")
        shortcut: Keymap.text("search")
        text: tools.lines.searchText
        onTextEdited: tools.lines.searchFrom(text, tools.topRow)
        onCleared: tools.lines.searchText = ""
        Keys.onEscapePressed: event => {
            event.accepted = true;
            tools.searchLeft();
        }
        onActiveFocusChanged: tools.opened = activeFocus || text.length > 0
        Keys.onReturnPressed: event => tools.step(event.modifiers & Qt.ShiftModifier ? -1 : 1)
        Keys.onDownPressed: tools.step(1)
        Keys.onUpPressed: tools.step(-1)

        Row {
            id: found

            anchors.right: parent.right
            anchors.rightMargin: Theme.space28
            anchors.verticalCenter: parent.verticalCenter
            visible: tools.lines.searchText.length > 0

            Figures {
                anchors.verticalCenter: parent.verticalCenter
                rightPadding: Theme.space4
                role: Theme.Small
                color: Theme.text3
                text: tools.lines.matchCount === 0 ? qsTr("no match") : qsTr("%1 of %2").arg(tools.lines.currentMatch).arg(tools.lines.matchCount)
            }

            IconButton {
                visible: tools.lines.matchCount > 1
                edge: Theme.controlMini
                glyph: "chevron-up"
                glyphSize: Theme.iconSmall
                text: qsTr("Previous hit")
                shortcut: Keymap.text("previousHit")
                onClicked: tools.step(-1)
            }

            IconButton {
                visible: tools.lines.matchCount > 1
                edge: Theme.controlMini
                glyph: "chevron-down"
                glyphSize: Theme.iconSmall
                text: qsTr("Next hit")
                shortcut: Keymap.text("nextHit")
                onClicked: tools.step(1)
            }
        }
    }

    Row {
        id: buttons

        spacing: Theme.space8

        Button {
            lit: tools.follow
            glyph: "arrow-down-to-line"
            leftPadding: tools.tight ? (Theme.controlRegular - Theme.iconSmall) / 2 : Theme.space12
            text: tools.tight ? "" : qsTr("Follow")
            Accessible.name: qsTr("Follow")
            Accessible.checkable: true
            Accessible.checked: tools.follow
            onClicked: tools.follow = !tools.follow

            Tip {
                text: qsTr("Stay at the newest line")
                shortcut: Keymap.text("follow")
            }
        }

        IconButton {
            visible: !tools.tight
            edge: Theme.controlRegular
            glyph: "list-filter"
            checkable: true
            checked: tools.onlyHits
            tint: tools.onlyHits ? Theme.accentText : hovered ? Theme.text : Theme.text3
            text: qsTr("Show only lines with a hit")
            onClicked: {
                checked = Qt.binding(() => tools.onlyHits);
                tools.onlyHits = !tools.onlyHits;
            }
        }

        IconButton {
            visible: !tools.tight
            edge: Theme.controlRegular
            glyph: "triangle-alert"
            checkable: true
            checked: tools.lines.onlyErrors
            tint: tools.lines.onlyErrors ? Theme.accentText : hovered ? Theme.text : Theme.text3
            text: qsTr("Show only errors")
            onClicked: {
                checked = Qt.binding(() => tools.lines.onlyErrors);
                tools.lines.onlyErrors = !tools.lines.onlyErrors;
            }
        }

        IconButton {
            visible: !tools.tight
            edge: Theme.controlRegular
            glyph: "corner-down-right"
            checkable: true
            checked: tools.wrap
            tint: tools.wrap ? Theme.accentText : hovered ? Theme.text : Theme.text3
            text: qsTr("Wrap long lines")
            onClicked: {
                checked = Qt.binding(() => tools.wrap);
                tools.wrap = !tools.wrap;
            }
        }

        IconButton {
            visible: !tools.tight
            edge: Theme.controlRegular
            glyph: "own-clock"
            checkable: true
            checked: tools.timed
            tint: tools.timed ? Theme.accentText : hovered ? Theme.text : Theme.text3
            text: qsTr("Show when each line came")
            onClicked: {
                checked = Qt.binding(() => tools.timed);
                tools.timed = !tools.timed;
            }
        }

        IconButton {
            visible: !tools.tight
            edge: Theme.controlRegular
            glyph: "own-save"
            text: qsTr("Save as a file…")
            enabled: tools.lines.lineCount > 0
            onClicked: tools.nav.saveLogs()
        }

        IconButton {
            edge: Theme.controlRegular
            glyph: "copy"
            text: qsTr("Copy all")
            shortcut: Keymap.text("copyLogs")
            enabled: tools.lines.lineCount > 0
            onClicked: Clipboard.copy(tools.lines.allText())
        }

        IconButton {
            edge: Theme.controlRegular
            glyph: "eraser"
            text: qsTr("Clear")
            shortcut: Keymap.text("clearLogs")
            enabled: tools.lines.lineCount > 0
            onClicked: tools.lines.clear()
        }

        IconButton {
            id: more

            visible: tools.tight
            edge: Theme.controlRegular
            glyph: "ellipsis"
            text: qsTr("More for the output")
            onClicked: {
                menu.active = true;
                const entries = menu.item as Menu;
                entries.popup(more, more.width - entries.width, more.height + Theme.space4);
            }
        }
    }

    Loader {
        id: menu

        active: false
        visible: false

        sourceComponent: Menu {
            MenuRow {
                glyph: tools.onlyHits ? "check" : "list-filter"
                text: qsTr("Show only lines with a hit")
                onTriggered: tools.onlyHits = !tools.onlyHits
            }

            MenuRow {
                glyph: tools.lines.onlyErrors ? "check" : "triangle-alert"
                text: qsTr("Show only errors")
                onTriggered: tools.lines.onlyErrors = !tools.lines.onlyErrors
            }

            MenuLine {}

            MenuRow {
                glyph: tools.wrap ? "check" : "corner-down-right"
                text: qsTr("Wrap long lines")
                onTriggered: tools.wrap = !tools.wrap
            }

            MenuRow {
                glyph: tools.timed ? "check" : "own-clock"
                text: qsTr("Show when each line came")
                onTriggered: tools.timed = !tools.timed
            }

            MenuLine {}

            MenuRow {
                enabled: tools.lines.lineCount > 0
                glyph: "own-save"
                text: qsTr("Save as a file…")
                onTriggered: tools.nav.saveLogs()
            }
        }
    }
}
