import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The files of a project: the tree with a search at the left, the file that is looked at to its right.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    required property ProjectDetail detail
    property bool narrow: false
    property int padding: Theme.pagePadding
    readonly property FilesModel files: detail.files
    readonly property bool finding: files.findText.trim().length > 0
    readonly property bool chosen: files.selectedPath.length > 0

    function focusFind() {
        find.forceActiveFocus(Qt.ShortcutFocusReason);
        find.selectAll();
    }

    function edit() {
        if (page.chosen) {
            page.model.openFile(page.files.fileOf(page.files.selectedPath));
        }
    }

    Component.onCompleted: page.files.refresh()

    Connections {
        target: page.files

        // The page stays where it is when another project comes into it.
        function onRootChanged() {
            tree.followed = "";
            page.files.refresh();
        }
    }

    Connections {
        target: page.Window.window

        function onActiveChanged() {
            if (page.Window.active) {
                page.files.refresh();
            }
        }
    }

    Item {
        id: side

        width: Theme.fileColumn
        height: parent.height

        Field {
            id: find

            x: Theme.space12 - Theme.hairline
            y: Theme.space12
            width: parent.width - 2 * Theme.space12
            glyph: "search"
            clearable: true
            placeholderText: qsTr("Find a file")
            shortcut: Keymap.text("findFile")
            text: page.files.findText
            onTextEdited: {
                page.files.findText = text;
                found.currentIndex = 0;
            }
            onCleared: page.files.findText = ""
            onAbandoned: tree.forceActiveFocus(Qt.OtherFocusReason)
            onAccepted: page.files.takeMatch(found.currentIndex)
            Keys.onDownPressed: page.finding ? found.incrementCurrentIndex() : tree.forceActiveFocus(Qt.TabFocusReason)
            Keys.onUpPressed: found.decrementCurrentIndex()
        }

        ListView {
            id: tree

            // The file at which the current row was put, once.
            property string followed

            function row() {
                return tree.currentItem as FileTreeItem;
            }

            // Whoever comes here by the keys sees where.
            function settle() {
                if (activeFocus && currentIndex < 0 && count > 0) {
                    currentIndex = 0;
                }
            }

            function open(item) {
                if (item === null) {
                    return;
                }
                item.isFolder ? page.files.setExpanded(item.path, !item.expanded) : page.files.select(item.path);
            }

            x: Theme.space6 + Theme.hairline
            anchors.top: find.bottom
            anchors.topMargin: Theme.space8
            anchors.bottom: foot.top
            width: parent.width - 2 * x
            visible: !page.finding
            focus: true
            clip: true
            activeFocusOnTab: true
            keyNavigationEnabled: false
            highlightMoveDuration: 0
            boundsBehavior: Flickable.StopAtBounds
            reuseItems: true
            // None ahead of need: Qt goes on asking for those whose rows have gone.
            cacheBuffer: 0
            model: page.files.tree
            onActiveFocusChanged: settle()
            onCountChanged: settle()
            Accessible.role: Accessible.Tree
            Accessible.name: qsTr("Files of %1").arg(page.detail.name)
            Keys.onPressed: event => {
                const big = Math.max(1, Math.floor(height / Theme.outlineRowHeight) - 1);
                const steps = {
                    [Qt.Key_Home]: -tree.count,
                    [Qt.Key_End]: tree.count,
                    [Qt.Key_PageUp]: -big,
                    [Qt.Key_PageDown]: big,
                    [Qt.Key_Up]: -1,
                    [Qt.Key_Down]: 1
                };
                const item = tree.row();
                event.accepted = true;
                if (steps[event.key] !== undefined) {
                    tree.currentIndex = Math.max(0, Math.min(tree.count - 1, tree.currentIndex + steps[event.key]));
                } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter || event.key === Qt.Key_Space) {
                    event.accepted = event.modifiers === Qt.NoModifier;
                    if (event.accepted) {
                        tree.open(item);
                    }
                } else if (event.key === Qt.Key_Right && item !== null && item.isFolder) {
                    item.expanded ? tree.incrementCurrentIndex() : page.files.setExpanded(item.path, true);
                } else if (event.key === Qt.Key_Left && item !== null) {
                    if (item.isFolder && item.expanded) {
                        page.files.setExpanded(item.path, false);
                    } else {
                        tree.currentIndex = page.files.parentRow(tree.currentIndex);
                    }
                } else if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier))) {
                    page.showMenu(item);
                } else if (event.text.trim().length > 0 && !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))) {
                    tree.currentIndex = page.files.rowBeginning(event.text, tree.currentIndex);
                } else {
                    event.accepted = false;
                }
            }

            delegate: FileTreeItem {
                id: row

                width: tree.width
                selected: path === page.files.selectedPath
                focused: tree.activeFocus && ListView.isCurrentItem
                onClicked: {
                    tree.forceActiveFocus(Qt.MouseFocusReason);
                    tree.currentIndex = index;
                    tree.open(row);
                }
                onDoubleClicked: {
                    if (!isFolder) {
                        page.edit();
                    }
                }

                TapHandler {
                    acceptedButtons: Qt.RightButton
                    onTapped: page.showMenu(row)
                }
            }

            T.ScrollBar.vertical: ScrollBar {}

            Connections {
                target: page.files

                function onMatchTaken() {
                    tree.forceActiveFocus(Qt.OtherFocusReason);
                }

                function onTreeChanged() {
                    if (page.files.currentRow >= 0 && tree.followed !== page.files.selectedPath) {
                        tree.followed = page.files.selectedPath;
                        tree.currentIndex = page.files.currentRow;
                    }
                }
            }
        }

        ListView {
            id: found

            anchors.fill: tree
            visible: page.finding
            clip: true
            highlightMoveDuration: 0
            boundsBehavior: Flickable.StopAtBounds
            reuseItems: true
            // None ahead of need: Qt goes on asking for those whose rows have gone.
            cacheBuffer: 0
            model: page.files.matches
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Files found")

            delegate: FileMatchItem {
                width: found.width
                highlighted: ListView.isCurrentItem
                onClicked: page.files.takeMatch(index)
            }

            T.ScrollBar.vertical: ScrollBar {}
        }

        Label {
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.top: find.bottom
            anchors.topMargin: Theme.space24
            visible: page.finding && found.count === 0 && page.files.countText.length > 0
            color: Theme.text3
            text: qsTr("No file is called that.")
        }

        Item {
            id: foot

            anchors.bottom: parent.bottom
            width: parent.width
            height: Theme.buttonDialog

            Rectangle {
                width: parent.width
                height: Theme.hairline
                color: Theme.border
            }

            Label {
                x: Theme.iconLarge + Theme.hairline
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.Small
                color: Theme.text3
                text: page.files.countText
            }
        }
    }

    Rectangle {
        id: rule

        x: side.width
        width: Theme.hairline
        height: parent.height
        color: Theme.border
    }

    Item {
        id: head

        anchors.left: rule.right
        anchors.right: parent.right
        height: Theme.paneHeaderHeight
        visible: page.chosen

        Icon {
            id: glyph

            x: Theme.space16 + Theme.space2
            anchors.verticalCenter: parent.verticalCenter
            name: "file-code"
            color: Theme.text2
        }

        Row {
            id: title

            anchors.left: glyph.right
            anchors.leftMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            width: tools.x - x - Theme.space12

            Label {
                id: folder

                width: Math.min(implicitWidth, Math.max(0, title.width - name.width - counts.width))
                elide: Text.ElideLeft
                text: page.files.selectedFolder
            }

            Label {
                id: name

                width: Math.min(implicitWidth, Math.max(0, title.width - counts.width))
                role: Theme.Section
                elide: Text.ElideMiddle
                text: page.files.selectedName
                Accessible.role: Accessible.Heading
                Accessible.name: page.files.selectedPath

                Tip {
                    text: name.truncated || folder.truncated ? page.files.selectedPath : ""
                }
            }

            Row {
                id: counts

                anchors.verticalCenter: parent.verticalCenter
                leftPadding: Theme.space10
                spacing: Theme.space8

                Pill {
                    readonly property var words: ({
                            "A": [qsTr("Added"), Theme.success, Theme.successSoft],
                            "M": [qsTr("Modified"), Theme.warning, Theme.warningSoft],
                            "?": [qsTr("Untracked"), Theme.info, Theme.infoSoft],
                            "R": [qsTr("Renamed"), Theme.info, Theme.infoSoft],
                            "U": [qsTr("Conflict"), Theme.danger, Theme.dangerSoft]
                        })
                    readonly property var word: words[page.files.selectedLetter] ?? ["", Theme.text2, Theme.control]

                    visible: text.length > 0
                    text: word[0]
                    tint: word[1]
                    fill: word[2]
                }

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Small
                    color: Theme.text3
                    text: page.files.facts
                }
            }
        }

        Row {
            id: tools

            anchors.right: parent.right
            anchors.rightMargin: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space8

            Button {
                anchors.verticalCenter: parent.verticalCenter
                visible: !page.narrow
                controlHeight: Theme.controlSmall
                glyph: "external-link"
                glyphSize: Theme.iconSmall
                glyphColor: Theme.text2
                text: qsTr("Open in editor")
                onClicked: page.edit()
            }

            IconButton {
                visible: page.narrow
                glyph: "external-link"
                text: qsTr("Open in editor")
                shortcut: Keymap.text("edit")
                onClicked: page.edit()
            }

            IconButton {
                glyph: "folder-open"
                text: qsTr("Show in the file manager")
                onClicked: page.model.openLink(page.files.folderUrlOf(page.files.selectedPath))
            }

            IconButton {
                glyph: "copy"
                text: qsTr("Copy the path")
                onClicked: {
                    Clipboard.copy(page.files.fileOf(page.files.selectedPath));
                    page.model.showStatus(qsTr("The path is on the clipboard."), false);
                }
            }
        }

        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: Theme.hairline
            color: Theme.border
        }
    }

    PanelFill {
        anchors.left: rule.right
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.topMargin: head.visible ? head.height : 0
        anchors.bottom: parent.bottom
        color: Theme.terminalBackground

        Rectangle {
            id: note

            width: parent.width
            height: visible ? Theme.controlRegular : 0
            visible: page.files.note.length > 0 && code.count > 0
            color: Theme.infoSoft

            Label {
                x: Theme.space16
                width: parent.width - 2 * x
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.Small
                color: Theme.info
                text: page.files.note
            }
        }

        CodeView {
            id: code

            anchors.fill: parent
            anchors.topMargin: note.height
            visible: count > 0
            files: page.files
        }

        EmptyState {
            anchors.centerIn: parent
            width: Math.min(Theme.emptyWidth, parent.width - Theme.space32)
            visible: code.count === 0
            picture: "no-results"
            heading: page.chosen ? page.files.note : qsTr("Choose a file to read it")
            text: page.chosen ? "" : qsTr("%1 finds one by its name.").arg(Keymap.text("findFile"))
        }
    }

    function showMenu(item) {
        if (item === null) {
            return;
        }
        menu.active = true;
        menu.item.path = item.path;
        menu.item.popup(item, Theme.space32, item.height);
    }

    Loader {
        id: menu

        active: false

        sourceComponent: Menu {
            id: fileMenu

            property string path

            MenuRow {
                glyph: "external-link"
                text: qsTr("Open in editor")
                shortcut: Keymap.text("edit")
                onTriggered: page.model.openFile(page.files.fileOf(fileMenu.path))
            }

            MenuRow {
                glyph: "folder-open"
                text: qsTr("Show in the file manager")
                onTriggered: page.model.openLink(page.files.folderUrlOf(fileMenu.path))
            }

            MenuRow {
                glyph: "copy"
                text: qsTr("Copy the path")
                onTriggered: Clipboard.copy(page.files.fileOf(fileMenu.path))
            }
        }
    }

    Wish {
        nav: page.nav
        name: "findFile"
        onGranted: page.focusFind()
    }

    Shortcut {
        sequences: Keymap.of("edit")
        onActivated: page.edit()
    }
}
