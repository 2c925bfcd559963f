import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The commits of a repository, newest first; more are read when one comes to the end. Its upper edge can be moved.
FocusScope {
    id: history

    required property GitModel git
    property bool narrow: false
    property bool open: true
    property int openHeight: Theme.gitHistoryHeight
    property int limit: Theme.gitHistoryLimit
    signal menuAsked(HistoryItem row)

    function go(row) {
        const to = Math.max(0, Math.min(list.count - 1, row));
        list.currentIndex = to;
        history.git.selectCommit((list.currentItem as HistoryItem)?.commit ?? "");
    }

    implicitHeight: open ? Math.min(openHeight, limit) : Theme.gitHeadingHeight

    Rectangle {
        width: parent.width
        height: Theme.hairline
        color: Theme.border
    }

    MouseArea {
        property int before: 0
        property real from: 0

        width: parent.width
        y: -Theme.space4
        height: Theme.space8
        enabled: history.open
        cursorShape: Qt.SplitVCursor
        onPressed: mouse => {
            before = history.height;
            from = mapToItem(null, mouse.x, mouse.y).y;
        }
        onPositionChanged: mouse => history.openHeight = Math.max(3 * Theme.gitHeadingHeight, Math.min(history.limit, before + from - mapToItem(null, mouse.x, mouse.y).y))
    }

    Label {
        x: Theme.space16
        y: Theme.space10
        role: Theme.SmallStrong
        color: Theme.text2
        text: qsTr("History")
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    IconButton {
        anchors.right: parent.right
        anchors.rightMargin: Theme.space16
        y: Theme.space6
        edge: Theme.controlMini
        glyph: history.open ? "chevron-down" : "chevron-up"
        text: history.open ? qsTr("Fold the history") : qsTr("Show the history")
        onClicked: history.open = !history.open
    }

    ListView {
        id: list

        anchors.fill: parent
        anchors.topMargin: Theme.gitHeadingHeight
        visible: history.open
        clip: true
        focus: true
        activeFocusOnTab: count > 0
        keyNavigationEnabled: false
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        // None ahead of need: Qt goes on asking for those whose rows have gone.
        cacheBuffer: 0
        bottomMargin: Theme.space12
        currentIndex: -1
        model: history.git.history
        Accessible.role: Accessible.List
        Accessible.name: qsTr("History")
        onAtYEndChanged: {
            if (atYEnd && count > 0) {
                history.git.loadMoreHistory();
            }
        }
        Keys.onPressed: event => {
            const page = Math.max(1, Math.floor(height / Theme.gitRowHeight) - 1);
            const steps = {
                [Qt.Key_Home]: -list.count,
                [Qt.Key_End]: list.count,
                [Qt.Key_PageUp]: -page,
                [Qt.Key_PageDown]: page,
                [Qt.Key_Up]: -1,
                [Qt.Key_Down]: 1
            };
            event.accepted = true;
            if (steps[event.key] !== undefined) {
                history.go(list.currentIndex + steps[event.key]);
            } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Space) {
                event.accepted = event.modifiers === Qt.NoModifier;
                if (event.accepted) {
                    history.go(list.currentIndex);
                }
            } else if (event.key === Qt.Key_Escape && history.git.selectedCommit.length > 0) {
                history.git.selectCommit("");
            } else if (event.key === Qt.Key_Menu || (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier))) {
                history.menuAsked(list.currentItem as HistoryItem);
            } else {
                event.accepted = false;
            }
        }

        delegate: HistoryItem {
            id: row

            width: list.width
            narrow: history.narrow
            selected: commit === history.git.selectedCommit
            focused: list.activeFocus && ListView.isCurrentItem
            onClicked: {
                list.forceActiveFocus(Qt.MouseFocusReason);
                selected ? history.git.selectCommit("") : history.go(index);
            }

            TapHandler {
                acceptedButtons: Qt.RightButton
                onTapped: history.menuAsked(row)
            }
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    Label {
        anchors.centerIn: parent
        anchors.verticalCenterOffset: Theme.space8
        visible: history.open && list.count === 0
        color: Theme.text3
        text: qsTr("There are no commits yet.")
    }
}
