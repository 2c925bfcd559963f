import OrvLauncher.Screens
import QtQuick

// A repository at work: its changes and the next commit at the left, the diff over the history at the right.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    required property GitModel git
    property bool narrow: false
    readonly property int column: narrow ? Theme.gitColumnNarrow : width >= Theme.gitWideLimit ? Theme.gitColumnWide : Theme.gitColumn
    readonly property bool ofCommit: git.selectedCommit.length > 0

    function showBranches(creating) {
        branches.active = true;
        branches.item.width = bar.width + Theme.space12;
        branches.item.parent = bar;
        branches.item.x = 0;
        branches.item.y = bar.height - Theme.controlSmall;
        branches.item.show(creating);
    }

    function showIdentity() {
        identity.active = true;
        (identity.item as IdentitySheet).open();
    }

    function ask(message, text, action, then) {
        question.active = true;
        question.item.message = message;
        question.item.text = text;
        question.item.actions = action;
        question.item.then = then;
        question.item.open();
    }

    function askToDiscard(path, name, letter) {
        const isNew = letter === "?" || letter === "A";
        page.ask(isNew ? qsTr("Delete %1?").arg(name) : qsTr("Discard the changes of %1?").arg(name), isNew ? qsTr("It is in no commit yet. It can be brought back for a few seconds.") : qsTr("The file goes back to the last commit, staged or not. That can be taken back for a few seconds."), [isNew ? qsTr("Delete") : qsTr("Discard")], () => page.git.discard([path]));
    }

    Connections {
        target: page.git

        function onNotKept(why, paths) {
            page.ask(qsTr("It could not be brought back"), why, [qsTr("Discard for good")], () => page.git.discardForGood(paths));
        }
    }

    function askToDiscardLines(hunk) {
        page.ask(hunk < 0 ? qsTr("Discard the chosen lines?") : qsTr("Discard this hunk?"), qsTr("It goes out of the file, and can be brought back for a few seconds."), [qsTr("Discard")], () => hunk < 0 ? page.git.discardLines() : page.git.discardHunk(hunk));
    }

    Item {
        id: side

        width: page.column
        height: parent.height

        GitBranchBar {
            id: bar

            x: Theme.space12 - Theme.hairline
            y: Theme.space12
            width: parent.width - 2 * Theme.space12
            git: page.git
            open: branches.item?.opened ?? false
            onChosen: page.showBranches(false)
            onRepositoryAsked: anchor => {
                repositories.active = true;
                repositories.item.popup(anchor, 0, anchor.height + Theme.space4);
            }
        }

        Rectangle {
            id: rule

            y: bar.y + bar.height + Theme.space10
            width: parent.width
            height: Theme.hairline
            color: Theme.border
        }

        Column {
            id: notes

            x: bar.x
            y: rule.y
            width: bar.width
            topPadding: children.length > 0 && (operation.visible || note.visible) ? Theme.space12 : 0
            spacing: Theme.space8

            Rectangle {
                id: operation

                width: parent.width
                height: words.height + Theme.space20
                visible: page.git.operation.length > 0
                radius: Theme.radiusControl
                color: Theme.warningSoft
                border.width: Theme.softEdge
                border.color: Theme.warning

                Column {
                    id: words

                    x: Theme.space10
                    y: Theme.space10
                    width: parent.width - 2 * x
                    spacing: Theme.space8

                    Label {
                        width: parent.width
                        wrapMode: Text.Wrap
                        elide: Text.ElideNone
                        role: Theme.SmallStrong
                        color: Theme.warning
                        text: page.git.operationText
                        Accessible.role: Accessible.AlertMessage
                        Accessible.name: text
                    }

                    Row {
                        spacing: Theme.space8

                        Button {
                            controlHeight: Theme.controlSmall
                            visible: page.git.operation !== "bisect"
                            enabled: page.git.canContinue && !page.git.isBusy
                            text: qsTr("Continue")
                            onClicked: page.git.continueOperation()
                        }

                        Button {
                            controlHeight: Theme.controlSmall
                            visible: page.git.canSkip
                            enabled: !page.git.isBusy
                            text: qsTr("Skip…")
                            onClicked: page.ask(qsTr("Skip this commit?"), qsTr("The %1 goes on without it. What you resolved of it is lost.").arg(page.git.operation), [qsTr("Skip")], () => page.git.skipOperation())
                        }

                        Button {
                            controlHeight: Theme.controlSmall
                            enabled: page.git.canAbort && !page.git.isBusy
                            danger: true
                            text: qsTr("Abort…")
                            onClicked: page.ask(qsTr("Abort the %1?").arg(page.git.operation), qsTr("The repository goes back to where it was before. What you resolved so far is lost."), [qsTr("Abort")], () => page.git.abortOperation())
                        }
                    }
                }
            }

            Label {
                id: note

                width: parent.width
                visible: text.length > 0
                role: Theme.Small
                color: Theme.text3
                wrapMode: Text.Wrap
                elide: Text.ElideNone
                text: page.git.state === "bare" ? qsTr("A bare repository: it has no files to work on.") : page.git.note
            }
        }

        GitChanges {
            id: changes

            anchors.top: notes.bottom
            anchors.bottom: busy.top
            width: parent.width
            visible: !page.ofCommit
            focus: true
            git: page.git
            onDiscardAsked: (path, name, letter) => page.askToDiscard(path, name, letter)
            onStashDropAsked: (stash, message) => page.ask(qsTr("Drop this stash?"), message, [qsTr("Drop")], () => page.git.stashDrop(stash))
            onStashAsked: anchor => {
                stash.active = true;
                stash.item.parent = anchor;
                stash.item.x = anchor.width - stash.item.width;
                stash.item.y = anchor.height;
                stash.item.open();
            }
            onMenuAsked: row => {
                if (row !== null && (row.isFile || row.kind === "stash")) {
                    fileMenu.active = true;
                    fileMenu.item.row = row;
                    fileMenu.item.popup(row, Theme.space32, row.height);
                }
            }
            onOpened: pane.forceActiveFocus(Qt.TabFocusReason)
        }

        Loader {
            anchors.top: notes.bottom
            anchors.bottom: busy.top
            width: parent.width
            active: page.ofCommit

            sourceComponent: CommitDetails {
                git: page.git
            }
        }

        // What takes longer than a moment says so.
        Item {
            id: busy

            anchors.bottom: failure.top
            width: parent.width
            height: slow.shown ? Theme.controlRegular : 0
            visible: slow.shown

            Row {
                x: Theme.space16
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space8

                Spinner {
                    anchors.verticalCenter: parent.verticalCenter
                    size: Theme.iconSmall
                }

                Label {
                    role: Theme.Small
                    color: Theme.text2
                    text: page.git.busyText
                }
            }

            TextLink {
                anchors.right: parent.right
                anchors.rightMargin: Theme.space16
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("Cancel")
                onClicked: page.git.cancelAction()
            }

            Timer {
                id: slow

                property bool shown: false
                readonly property bool wanted: page.git.busyText.length > 0

                interval: Theme.tooltipDelay
                running: wanted
                onTriggered: shown = true
                onWantedChanged: {
                    if (!wanted) {
                        shown = false;
                    }
                }
            }
        }

        Item {
            id: failure

            anchors.bottom: commit.top
            width: parent.width
            height: report.visible ? report.height + Theme.space12 : 0

            ErrorNote {
                id: report

                x: bar.x
                width: bar.width
                height: implicitHeight
                text: page.git.error
                onDismissed: page.git.clearError()
            }
        }

        CommitBox {
            id: commit

            anchors.bottom: parent.bottom
            width: parent.width - Theme.hairline
            height: visible ? implicitHeight : 0
            visible: page.git.state === "ready"
            git: page.git
            onIdentityAsked: page.showIdentity()
        }
    }

    Rectangle {
        x: side.width
        width: Theme.hairline
        height: parent.height
        color: Theme.border
    }

    DiffPane {
        id: pane

        anchors.left: side.right
        anchors.leftMargin: Theme.hairline
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: history.top
        git: page.git
        model: page.model
        narrow: page.narrow
        onDiscardAsked: {
            const row = changes.current();
            page.askToDiscard(page.git.selectedPath, page.git.selectedName, row?.path === page.git.selectedPath ? row.letter : "");
        }
        onDiscardLinesAsked: hunk => page.askToDiscardLines(hunk)
    }

    GitHistory {
        id: history

        anchors.left: side.right
        anchors.leftMargin: Theme.hairline
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: implicitHeight
        limit: Math.max(Theme.gitHistoryHeight, page.height * 0.7)
        git: page.git
        narrow: page.narrow
        onMenuAsked: row => {
            if (row !== null) {
                commitMenu.active = true;
                commitMenu.item.commit = row.commit;
                commitMenu.item.subject = row.subject;
                commitMenu.item.popup(row, Theme.space40, row.height);
            }
        }
    }

    Loader {
        id: branches

        active: false

        sourceComponent: BranchPopover {
            git: page.git
            onRemovalAsked: name => page.ask(qsTr("Delete the branch %1?").arg(name), qsTr("Commits that are on no other branch go with it, if you delete it in any case."), [qsTr("Delete if it is merged"), qsTr("Delete in any case")], choice => page.git.deleteBranch(name, choice === 1))
        }
    }

    Loader {
        id: stash

        active: false

        sourceComponent: StashPopover {
            git: page.git
        }
    }

    Loader {
        id: identity

        active: false

        sourceComponent: IdentitySheet {
            git: page.git
            onLeft: saved => {
                if (!saved) {
                    page.git.commitForm.withdraw();
                }
            }
        }
    }

    Loader {
        id: question

        active: false

        sourceComponent: Alert {
            // Texts of the buttons that do it.
            property var actions: []
            property var then

            message: ""
            text: ""
            choices: actions.map(words => ({
                        "text": words,
                        "danger": true
                    })).concat([
                {
                    "text": qsTr("Cancel"),
                    "primary": false
                }
            ])
            onChosen: index => {
                if (index < actions.length) {
                    then(index);
                }
            }
        }
    }

    Loader {
        id: repositories

        active: false

        sourceComponent: Menu {
            id: repositoryMenu

            Instantiator {
                model: page.git.repositories
                onObjectAdded: (index, object) => repositoryMenu.insertItem(index, object as MenuRow)
                onObjectRemoved: (index, object) => repositoryMenu.removeItem(object as MenuRow)

                delegate: MenuRow {
                    required property string path
                    required property string label
                    required property string branch
                    required property int changes
                    required property bool current
                    required property string problem

                    glyph: current ? "check" : problem.length > 0 ? "triangle-alert" : "folder"
                    text: problem.length > 0 ? qsTr("%1, can't be read").arg(label) : changes > 0 ? qsTr("%1, %2 changes").arg(label).arg(changes) : label
                    shortcut: branch
                    onTriggered: page.git.repository = path
                }
            }
        }
    }

    Loader {
        id: fileMenu

        active: false

        sourceComponent: Menu {
            id: menu

            property GitFileItem row
            readonly property bool ofFile: row?.isFile ?? false

            MenuRow {
                glyph: menu.ofFile && menu.row.staged ? "minus" : menu.ofFile ? "plus" : "corner-down-right"
                text: !menu.ofFile ? qsTr("Take it back and drop it") : menu.row.section === "conflicts" ? qsTr("Mark as resolved") : menu.row.staged ? qsTr("Unstage") : qsTr("Stage")
                shortcut: menu.ofFile ? qsTr("Space") : ""
                onTriggered: menu.ofFile ? page.git.toggleRow(menu.row.index) : page.git.stashPop(menu.row.path)
            }

            MenuRow {
                glyph: menu.ofFile ? "external-link" : "copy"
                text: menu.ofFile ? qsTr("Open in editor") : qsTr("Take it back and keep it")
                onTriggered: menu.ofFile ? page.model.openFile(page.git.fileOf(menu.row.path)) : page.git.stashApply(menu.row.path)
            }

            MenuRow {
                enabled: menu.ofFile
                glyph: "copy"
                text: qsTr("Copy the path")
                onTriggered: Clipboard.copy(page.git.fileOf(menu.row.path))
            }

            MenuLine {}

            MenuRow {
                glyph: menu.ofFile ? "undo-2" : "trash-2"
                text: menu.ofFile ? qsTr("Discard…") : qsTr("Drop…")
                shortcut: Keymap.text("discard")
                onTriggered: changes.discard(menu.row)
            }
        }
    }

    Loader {
        id: commitMenu

        active: false

        sourceComponent: Menu {
            property string commit
            property string subject

            MenuRow {
                glyph: "copy"
                text: qsTr("Copy the hash")
                onTriggered: Clipboard.copy(commitMenu.item.commit)
            }

            MenuRow {
                glyph: "copy"
                text: qsTr("Copy the summary")
                onTriggered: Clipboard.copy(commitMenu.item.subject)
            }
        }
    }

    Wish {
        nav: page.nav
        name: "branches"
        onGranted: page.showBranches(false)
    }

    Wish {
        nav: page.nav
        name: "newBranch"
        onGranted: page.showBranches(true)
    }

    Wish {
        nav: page.nav
        name: "identity"
        onGranted: page.showIdentity()
    }

    Shortcut {
        sequences: Keymap.of("stageAll")
        onActivated: changes.toggleAll()
    }
}
