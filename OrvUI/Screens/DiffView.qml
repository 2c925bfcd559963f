import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The lines of a diff. Lines are chosen by a drag, by Shift and the arrows; Space stages or unstages them, or the hunk.
FocusScope {
    id: view

    required property GitModel git
    readonly property DiffModel lines: git.diff
    readonly property bool divisible: git.canDivide && !git.isBusy
    readonly property int shown: list.count
    property int anchor: 0
    signal discardHunkAsked(int hunk)

    function moveHunk(hunk) {
        view.git.selectedIsStaged ? view.git.unstageHunk(hunk) : view.git.stageHunk(hunk);
    }

    function moveLines() {
        view.git.selectedIsStaged ? view.git.unstageLines() : view.git.stageLines();
    }

    function go(row, extend) {
        const to = Math.max(0, Math.min(list.count - 1, row));
        list.currentIndex = to;
        if (!view.divisible) {
            return;
        }
        if (extend) {
            view.lines.clearSelection();
            view.lines.selectRange(view.anchor, to);
        } else {
            view.anchor = to;
            view.lines.clearSelection();
        }
    }

    ListView {
        id: list

        property int offset: 0

        anchors.fill: parent
        anchors.topMargin: Theme.space6
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
        model: view.lines
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Changes of %1").arg(view.git.selectedName)
        Keys.onPressed: event => {
            const page = Math.max(1, Math.floor(height / Theme.space20) - 1);
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
                view.go(list.currentIndex + steps[event.key], (event.modifiers & Qt.ShiftModifier) !== 0);
            } else if (event.key === Qt.Key_Left || event.key === Qt.Key_Right) {
                list.offset = Math.max(0, list.offset + (event.key === Qt.Key_Left ? -Theme.space40 : Theme.space40));
            } else if (event.key === Qt.Key_Space && view.divisible) {
                view.lines.hasSelection ? view.moveLines() : view.moveHunk(view.lines.hunkAt(list.currentIndex));
            } else if (event.key === Qt.Key_Delete && (event.modifiers & Qt.ControlModifier) && view.divisible && !view.git.selectedIsStaged) {
                view.discardHunkAsked(view.lines.hasSelection ? -1 : view.lines.hunkAt(list.currentIndex));
            } else if (event.key === Qt.Key_Escape && view.lines.hasSelection) {
                view.lines.clearSelection();
            } else {
                event.accepted = false;
            }
        }

        delegate: DiffLine {
            width: list.width
            divisible: view.divisible
            staged: view.git.selectedIsStaged
            offset: list.offset
            focused: list.activeFocus && InputMode.keyboard && ListView.isCurrentItem
            onMoved: hunk => view.moveHunk(hunk)
            onDiscarded: hunk => view.discardHunkAsked(hunk)
        }

        T.ScrollBar.vertical: ScrollBar {}

        WheelHandler {
            orientation: Qt.Horizontal
            onWheel: event => list.offset = Math.max(0, list.offset - event.angleDelta.x)
        }

        Connections {
            target: view.git

            function onSelectionChanged() {
                list.offset = 0;
                list.currentIndex = 0;
                list.positionViewAtBeginning();
            }
        }
    }

    // Over the numbers and signs, and over the text too: a press chooses the line, a drag those it goes over.
    MouseArea {
        anchors.fill: list
        anchors.rightMargin: Theme.scrollBar
        propagateComposedEvents: true
        preventStealing: true
        onPressed: mouse => {
            const row = list.indexAt(mouse.x, mouse.y + list.contentY);
            list.forceActiveFocus(Qt.MouseFocusReason);
            if (row < 0 || list.itemAtIndex(row)?.isHunk) {
                mouse.accepted = row < 0;
                view.go(row < 0 ? list.currentIndex : row, false);
                return;
            }
            if ((mouse.modifiers & Qt.ControlModifier) && view.divisible) {
                view.anchor = row;
                list.currentIndex = row;
                view.lines.setSelected(row, !list.itemAtIndex(row).selected);
            } else if (mouse.modifiers & Qt.ShiftModifier) {
                view.go(row, true);
            } else {
                view.go(row, false);
                if (view.divisible) {
                    view.lines.setSelected(row, true);
                }
            }
        }
        onPositionChanged: mouse => {
            const row = list.indexAt(Theme.diffInset, Math.max(0, Math.min(list.height - 1, mouse.y)) + list.contentY);
            if (pressed && row >= 0 && row !== list.currentIndex && !(mouse.modifiers & Qt.ControlModifier)) {
                view.go(row, true);
            }
        }
        onWheel: wheel => wheel.accepted = false
    }
}
