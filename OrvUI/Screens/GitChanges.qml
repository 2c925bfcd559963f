import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// What is changed in a repository, staged or not, and its stashes, as one list. Space stages, Ctrl+Delete discards.
ListView {
    id: list

    required property GitModel git
    readonly property bool locked: git.isBusy
    signal discardAsked(string path, string name, string letter)
    signal stashAsked(Item anchor)
    signal stashDropAsked(string stash, string message)
    signal menuAsked(GitFileItem row)
    signal opened

    function go(row) {
        list.currentIndex = row;
        list.git.selectRow(row);
    }

    function current() {
        return list.currentItem as GitFileItem;
    }

    function discard(row) {
        if (row !== null && row.isFile) {
            list.discardAsked(row.path, row.name, row.letter);
        } else if (row !== null && row.kind === "stash") {
            list.stashDropAsked(row.path, row.name);
        }
    }

    function toggleAll() {
        list.git.unstagedCount > 0 ? list.git.stageAll() : list.git.unstageAll();
    }

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: true
    keyNavigationEnabled: false
    highlightMoveDuration: 0
    reuseItems: true
    // None ahead of need: Qt goes on asking for those whose rows have gone.
    cacheBuffer: 0
    bottomMargin: Theme.space12
    model: git.files
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Changes")
    Keys.onDownPressed: go(git.files.step(currentIndex, 1))
    Keys.onUpPressed: go(git.files.step(currentIndex, -1))
    Keys.onPressed: event => {
        const far = list.count;
        const steps = {
            [Qt.Key_Home]: -far,
            [Qt.Key_End]: far,
            [Qt.Key_PageUp]: -10,
            [Qt.Key_PageDown]: 10
        };
        event.accepted = true;
        if (steps[event.key] !== undefined) {
            list.go(list.git.files.step(list.currentIndex, steps[event.key]));
        } else if (event.key === Qt.Key_Space) {
            list.git.toggleRow(list.currentIndex);
        } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
            event.accepted = event.modifiers === Qt.NoModifier;
            if (event.accepted) {
                list.opened();
            }
        } else if (event.key === Qt.Key_Delete && (event.modifiers & Qt.ControlModifier)) {
            list.discard(list.current());
        } else if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier))) {
            list.menuAsked(list.current());
        } else {
            event.accepted = false;
        }
    }
    onActiveFocusChanged: {
        if (activeFocus && git.currentRow < 0) {
            go(git.files.step(-1, 1));
        }
    }

    Connections {
        target: list.git

        function onCurrentRowChanged() {
            if (list.git.currentRow >= 0) {
                list.currentIndex = list.git.currentRow;
            }
        }
    }

    delegate: GitFileItem {
        id: row

        x: Theme.space4 + Theme.hairline
        width: list.width - 2 * x
        selected: index === list.git.currentRow
        focused: list.activeFocus && ListView.isCurrentItem
        locked: list.locked
        onClicked: {
            if (!isHeading) {
                list.forceActiveFocus(Qt.MouseFocusReason);
                list.go(index);
            }
        }
        onDoubleClicked: {
            if (isFile) {
                list.git.toggleRow(index);
            }
        }
        onSwitched: list.git.toggleRow(index)
        onDiscarded: list.discard(row)
        onAllToggled: staged ? list.git.unstageAll() : list.git.stageAll()
        onStashAsked: anchor => list.stashAsked(anchor)
        onPopped: list.git.stashPop(path)
        onMenuAsked: list.menuAsked(row)
    }

    T.ScrollBar.vertical: ScrollBar {}
}
