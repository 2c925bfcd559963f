import OrvLauncher.Screens
import QtQuick

// The terminals: a strip of tabs, and the one that is selected.
FocusScope {
    id: page

    required property TerminalTabs tabs
    // Where new ones are opened, and what that is called.
    required property url folder
    required property string folderName
    readonly property TerminalSession session: list.selected
    readonly property TerminalView view: host.view
    signal linkActivated(url link)
    signal fileActivated(string path, int line, int column)

    function newTerminal() {
        list.open(page.folder);
    }

    function find() {
        if (view === null) {
            return;
        }
        view.find.active = true;
        findBar.focusField();
    }

    function leaveFind() {
        view.find.active = false;
        view.forceActiveFocus(Qt.OtherFocusReason);
    }

    TerminalTabList {
        id: list

        tabs: page.tabs
    }

    EmptyState {
        id: empty

        x: Math.round((page.width - width) / 2)
        y: Math.max(Theme.space16, Math.round((page.height - height) / 2) - Theme.space24)
        visible: list.count === 0
        picture: "terminal"
        heading: qsTr("Run things by hand")
        text: qsTr("Open a real terminal in %1").arg(page.folderName)

        Button {
            primary: true
            focus: true
            glyph: "plus"
            text: qsTr("New terminal in %1").arg(page.folderName)
            onClicked: page.newTerminal()
        }
    }

    KeyHint {
        anchors.horizontalCenter: empty.horizontalCenter
        anchors.top: empty.bottom
        anchors.topMargin: Theme.space12
        visible: empty.visible
        text: qsTr("Ctrl+Shift+T")
    }

    Rectangle {
        id: frame

        anchors.fill: parent
        visible: list.count > 0
        radius: Theme.radiusCard
        color: page.view !== null ? page.view.background : Theme.terminalBackground

        // The strip has round corners at its top only.
        Item {
            width: parent.width
            height: Theme.terminalStrip
            clip: true

            Rectangle {
                width: parent.width
                height: parent.height + radius
                radius: Theme.radiusCard
                color: Theme.sunken
            }

            Rectangle {
                anchors.bottom: parent.bottom
                width: parent.width
                height: Theme.hairline
                color: Theme.border
            }
        }

        TerminalStrip {
            id: strip

            width: parent.width
            height: Theme.terminalStrip
            list: list
            folderName: page.folderName
            onNewRequested: page.newTerminal()
        }

        TerminalHost {
            id: host

            anchors.top: strip.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.radiusCard
            focus: true
            session: list.selected
            style: TerminalLook
            padding: Qt.size(Theme.terminalPaddingX, Theme.terminalPaddingY)
            Accessible.role: Accessible.Terminal
            Accessible.name: list.selected !== null ? list.selected.title : ""
        }

        TerminalScrollBar {
            anchors.top: host.top
            anchors.bottom: host.bottom
            anchors.right: parent.right
            view: page.view
        }

        TerminalFindBar {
            id: findBar

            anchors.top: host.top
            anchors.right: host.right
            anchors.topMargin: Theme.space8
            anchors.rightMargin: Theme.space16
            visible: page.view !== null && page.view.find.active
            find: page.view !== null ? page.view.find : null
            onAbandoned: page.leaveFind()
        }

        Column {
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.space12
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: Theme.space8

            TerminalNote {
                visible: list.closing !== null
                text: qsTr("A program still runs in this terminal.")
                action: qsTr("Close anyway")
                onAnswered: isWanted => list.answerClosing(isWanted)
                onVisibleChanged: visible ? focusDefault() : page.view?.forceActiveFocus(Qt.OtherFocusReason)
            }

            TerminalNote {
                readonly property int lines: page.view !== null ? page.view.pasteLines : 0

                visible: lines > 0
                text: qsTr("Paste %n lines? The shell runs each one as it comes.", "", lines)
                action: qsTr("Paste")
                onAnswered: isWanted => page.view.answerPaste(isWanted)
                onVisibleChanged: visible ? focusDefault() : page.view?.forceActiveFocus(Qt.OtherFocusReason)
            }

            TerminalNote {
                readonly property TerminalSession ended: page.session !== null && !page.session.isAlive ? page.session : null

                visible: ended !== null
                asks: false
                text: ended === null ? "" : ended.exitCode > 0 ? qsTr("The shell has ended with code %1. Press Return to start again.").arg(ended.exitCode) : qsTr("The shell has ended. Press Return to start again.")
                isError: ended !== null && ended.exitCode > 0
            }
        }
    }

    Connections {
        target: page.view
        function onLinkActivated(link) {
            page.linkActivated(link);
        }
        function onFileActivated(path, line, column) {
            page.fileActivated(path, line, column);
        }
        function onRenewRequested() {
            list.renew(page.session);
        }
        function onContextMenuRequested(place) {
            menu.active = true;
            (menu.item as Menu).popup(page.view, place.x, place.y);
        }
    }

    Loader {
        id: menu

        active: false

        sourceComponent: Menu {
            MenuRow {
                enabled: page.view !== null && page.view.hasSelection
                text: qsTr("Copy")
                shortcut: qsTr("Ctrl+Shift+C")
                onTriggered: page.view.copy()
            }

            MenuRow {
                text: qsTr("Paste")
                shortcut: qsTr("Ctrl+Shift+V")
                onTriggered: page.view.paste()
            }

            MenuRow {
                text: qsTr("Select all")
                shortcut: qsTr("Ctrl+Shift+A")
                onTriggered: page.view.selectAll()
            }

            MenuRow {
                text: qsTr("Select last output")
                shortcut: qsTr("Ctrl+Shift+O")
                onTriggered: page.view.selectOutput()
            }

            MenuLine {}

            MenuRow {
                text: qsTr("Find…")
                shortcut: qsTr("Ctrl+Shift+F")
                onTriggered: page.find()
            }

            MenuRow {
                text: qsTr("Clear")
                onTriggered: page.view.clear()
            }

            onClosed: page.view?.forceActiveFocus(Qt.PopupFocusReason)
        }
    }

    PageShortcut {
        sequence: "Ctrl+Shift+T"
        onActivated: page.newTerminal()
    }

    PageShortcut {
        sequence: "Ctrl+Shift+W"
        enabled: page.visible && page.session !== null
        onActivated: list.close(page.session)
    }

    PageShortcut {
        sequence: "Ctrl+Tab"
        onActivated: list.step(1)
    }

    PageShortcut {
        sequences: ["Ctrl+Shift+Tab", "Ctrl+Shift+Backtab"]
        onActivated: list.step(-1)
    }

    PageShortcut {
        sequence: "Ctrl+Shift+F"
        onActivated: page.find()
    }

    PageShortcut {
        sequence: "F3"
        enabled: findBar.visible
        onActivated: page.view.find.next()
    }

    PageShortcut {
        sequence: "Shift+F3"
        enabled: findBar.visible
        onActivated: page.view.find.previous()
    }

    component PageShortcut: Shortcut {
        enabled: page.visible
    }
}
