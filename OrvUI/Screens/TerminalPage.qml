import OrvLauncher.Screens
import QtQuick

// The terminals: a strip of tabs, and the one that is selected.
FocusScope {
    id: page

    required property TerminalTabs tabs
    // Where new ones are opened, and what that is called.
    required property url folder
    required property string folderName
    // Of the project whose terminals these are, as the model knows it; without a model all are.
    property AppModel model: null
    property string projectID
    readonly property TerminalSession session: list.selected
    readonly property TerminalView view: host.view
    onViewChanged: {
        // It has the focus, and is made where nothing can be said of it.
        if (view !== null) {
            const shown = view.session;
            view.Accessible.role = Accessible.Terminal;
            view.Accessible.name = Qt.binding(() => shown.title);
            const selection = view.keyboardSelection;
            view.Accessible.description = Qt.binding(() => selection.spoken);
        }
    }
    // One of its terminals was chosen, which is selected there.
    signal projectAsked(string projectID)
    // What is to be said of a key that did nothing.
    signal hinted(string text)
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

    function openMenu(place) {
        menu.active = true;
        (menu.item as Menu).popup(page.view, place.x, place.y);
    }

    function choose(session, projectID) {
        list.select(session);
        if (projectID.length > 0) {
            page.projectAsked(projectID);
        }
    }

    function leaveFind() {
        view.find.active = false;
        view.forceActiveFocus(Qt.OtherFocusReason);
    }

    TerminalTabList {
        id: list

        tabs: page.tabs
        model: page.model
        projectID: page.projectID
    }

    EmptyState {
        id: empty

        x: Math.round((page.width - width) / 2)
        y: Math.max(Theme.space16, Math.round((page.height - height) / 2) - Theme.space40)
        visible: list.count === 0
        picture: "terminal"
        heading: qsTr("Run things by hand")
        text: qsTr("Open a real terminal in %1").arg(page.folderName)

        Button {
            primary: true
            focus: true
            width: Math.min(implicitWidth, page.width - 2 * Theme.space24)
            glyph: "plus"
            text: qsTr("New terminal in %1").arg(page.folderName)
            onClicked: page.newTerminal()
        }
    }

    KeyHint {
        id: emptyKey

        anchors.horizontalCenter: empty.horizontalCenter
        anchors.top: empty.bottom
        anchors.topMargin: Theme.space12
        visible: empty.visible
        text: Keymap.text("newTerminal")
    }

    OtherTerminals {
        anchors.horizontalCenter: empty.horizontalCenter
        anchors.top: emptyKey.bottom
        anchors.topMargin: Theme.space24
        visible: empty.visible && list.otherCount > 0
        list: list
        onChosen: (session, projectID) => page.choose(session, projectID)
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
            onOtherChosen: (session, projectID) => page.choose(session, projectID)
        }

        TerminalHostView {
            id: host

            anchors.top: strip.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            // What stands below a last screen hides nothing of it; a shell that is yet to start has all the room.
            anchors.bottomMargin: endedNote.hasEnded ? endedNote.height + 2 * Theme.space12 : Theme.radiusCard
            focus: true
            session: list.selected
            style: TerminalLook
            padding: Qt.size(Theme.terminalPaddingX, Theme.terminalPaddingY)
        }

        TerminalLinkHints {
            anchors.fill: host
            view: page.view
        }

        TerminalScrollBar {
            anchors.top: host.top
            anchors.bottom: host.bottom
            anchors.right: parent.right
            view: page.view
        }

        // Where a link leads, whatever its words say.
        Rectangle {
            anchors.left: host.left
            anchors.bottom: host.bottom
            anchors.margins: Theme.space8
            visible: address.text.length > 0
            width: Math.min(address.implicitWidth, host.width - Theme.space32) + Theme.space16
            height: Theme.space24
            radius: Theme.radiusControl
            color: Theme.raised
            border.width: Theme.hairline
            border.color: Theme.borderStrong

            Label {
                id: address

                x: Theme.space8
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - 2 * x
                role: Theme.MonoPath
                color: Theme.text2
                elide: Text.ElideMiddle
                text: page.view?.hoveredLink ?? ""
            }
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
                visible: list.closing !== null && list.closing === page.session
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

            // It does not take the keyboard: what is typed at this moment would be the answer.
            TerminalNote {
                id: copyNote

                readonly property string copied: page.view !== null ? page.view.programsCopy : ""

                visible: copied.length > 0
                text: qsTr("A program wants to copy “%1”.").arg(copied)
                action: qsTr("Allow")
                keys: Keymap.text("allowCopy")
                onAnswered: isWanted => {
                    page.view.answerProgramsCopy(isWanted);
                    page.view.forceActiveFocus(Qt.OtherFocusReason);
                }
            }

            TerminalNote {
                visible: page.view !== null && page.view.keyboardSelection.active
                asks: false
                glyph: "copy"
                text: qsTr("Arrows move, with Shift they select. %1 copies, %2 ends it.").arg(Keymap.text("selectCopy")).arg(Keymap.text("selectLeave"))
            }

            TerminalNote {
                visible: page.view !== null && page.view.choosesLink
                asks: false
                glyph: "external-link"
                text: page.view === null || page.view.linkHints.length === 0 ? qsTr("There is no such link to be seen. %1 ends it.").arg(Keymap.text("selectLeave")) : qsTr("Type the letters of a link to open it, with Shift to copy it. %1 ends it.").arg(Keymap.text("selectLeave"))
            }

            TerminalNote {
                id: endedNote

                readonly property TerminalSession ended: page.session !== null && !page.session.isAlive && !page.session.isWaiting ? page.session : null
                readonly property string fault: ended?.startError ?? ""
                readonly property string endSignal: ended?.endSignal ?? ""
                readonly property bool hasEnded: ended !== null && (fault.length > 0 || ended.hasEnded)
                readonly property string what: fault.length > 0 ? qsTr("The shell could not be started (%1).").arg(fault) : endSignal.length > 0 ? qsTr("The shell was ended by a signal (%1).").arg(endSignal) : ended === null || ended.exitCode === 0 ? qsTr("The shell has ended.") : ended.exitCode > 0 ? qsTr("The shell has ended with code %1.").arg(ended.exitCode) : qsTr("The shell has ended, and nobody knows with which code.")

                visible: hasEnded
                asks: false
                text: qsTr("%1 Press Return to start again.").arg(what)
                isError: fault.length > 0 || (hasEnded && ended.exitCode !== 0)
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
        function onMarksMissed() {
            page.hinted(qsTr("Needs a shell that marks its prompts (OSC 133): see the README."));
        }
        function onRenewRequested() {
            list.renew(page.session);
        }
        function onContextMenuRequested(place) {
            page.openMenu(place);
        }
    }

    Loader {
        id: menu

        active: false

        sourceComponent: Menu {
            MenuRow {
                enabled: page.view !== null && page.view.hasSelection
                text: qsTr("Copy")
                shortcut: Keymap.text("terminalCopy")
                onTriggered: page.view.copy()
            }

            MenuRow {
                text: qsTr("Paste")
                shortcut: Keymap.text("terminalPaste")
                onTriggered: page.view.paste()
            }

            MenuRow {
                text: qsTr("Select all")
                shortcut: Keymap.text("terminalSelectAll")
                onTriggered: page.view.selectAll()
            }

            MenuRow {
                text: qsTr("Select last output")
                shortcut: Keymap.text("terminalOutput")
                onTriggered: page.view.selectOutput()
            }

            MenuRow {
                text: qsTr("Select by keys")
                shortcut: Keymap.text("terminalSelect")
                onTriggered: page.view.keyboardSelection.start()
            }

            MenuRow {
                text: qsTr("Open a link")
                shortcut: Keymap.text("terminalLink")
                onTriggered: page.view.chooseLink()
            }

            MenuLine {}

            MenuRow {
                text: qsTr("Find…")
                shortcut: Keymap.text("terminalSearch")
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
        sequences: Keymap.of("newTerminal")
        onActivated: page.newTerminal()
    }

    PageShortcut {
        sequences: Keymap.of("closeTerminal")
        enabled: page.visible && page.session !== null
        onActivated: list.close(page.session)
    }

    PageShortcut {
        sequences: Keymap.of("nextTerminal")
        onActivated: list.step(1)
    }

    PageShortcut {
        sequences: Keymap.of("previousTerminal")
        onActivated: list.step(-1)
    }

    PageShortcut {
        sequences: Keymap.of("terminalLeft")
        onActivated: list.moveSelected(-1)
    }

    PageShortcut {
        sequences: Keymap.of("terminalRight")
        onActivated: list.moveSelected(1)
    }

    PageShortcut {
        sequences: Keymap.of("terminalSearch")
        onActivated: page.find()
    }

    PageShortcut {
        sequences: Keymap.of("terminalMenu")
        enabled: page.visible && page.view !== null
        onActivated: page.openMenu(Qt.point(Theme.terminalPaddingX, Theme.terminalPaddingY))
    }

    PageShortcut {
        sequences: Keymap.of("allowCopy")
        enabled: page.visible && copyNote.visible
        onActivated: copyNote.answered(true)
    }

    PageShortcut {
        sequences: Keymap.of("nextHit")
        enabled: findBar.visible
        onActivated: page.view.find.next()
    }

    PageShortcut {
        sequences: Keymap.of("previousHit")
        enabled: findBar.visible
        onActivated: page.view.find.previous()
    }

    Instantiator {
        model: 9

        PageShortcut {
            required property int index

            sequence: Keymap.nth("terminal", index)
            onActivated: list.selectAt(index)
        }
    }

    component PageShortcut: Shortcut {
        enabled: page.visible
    }
}
