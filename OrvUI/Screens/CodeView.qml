import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A file's lines to read. A drag or Shift and the arrows choose lines, which can be copied.
ListView {
    id: view

    required property FilesModel files
    property int offset: 0
    property int anchor: -1
    readonly property int from: anchor < 0 ? -1 : Math.min(anchor, currentIndex)
    readonly property int to: anchor < 0 ? -2 : Math.max(anchor, currentIndex)

    function go(row, extend) {
        if (!extend) {
            view.anchor = -1;
        } else if (view.anchor < 0) {
            view.anchor = view.currentIndex;
        }
        view.currentIndex = Math.max(0, Math.min(view.count - 1, row));
    }

    clip: true
    activeFocusOnTab: count > 0
    keyNavigationEnabled: false
    highlightMoveDuration: 0
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: true
    // None ahead of need: Qt goes on asking for those whose rows have gone.
    cacheBuffer: 0
    topMargin: Theme.space10
    bottomMargin: Theme.space12
    model: files.lines
    Accessible.role: Accessible.List
    Accessible.name: files.selectedName
    Keys.onPressed: event => {
        const page = Math.max(1, Math.floor(height / Theme.space20) - 1);
        const steps = {
            [Qt.Key_Home]: -view.count,
            [Qt.Key_End]: view.count,
            [Qt.Key_PageUp]: -page,
            [Qt.Key_PageDown]: page,
            [Qt.Key_Up]: -1,
            [Qt.Key_Down]: 1
        };
        event.accepted = true;
        if (steps[event.key] !== undefined) {
            view.go(view.currentIndex + steps[event.key], (event.modifiers & Qt.ShiftModifier) !== 0);
        } else if (event.key === Qt.Key_Left || event.key === Qt.Key_Right) {
            view.offset = Math.max(0, view.offset + (event.key === Qt.Key_Left ? -Theme.space40 : Theme.space40));
        } else if (event.matches(StandardKey.Copy)) {
            Clipboard.copy(view.files.textOf(view.anchor < 0 ? view.currentIndex : view.from, view.anchor < 0 ? view.currentIndex : view.to));
        } else if (event.matches(StandardKey.SelectAll)) {
            view.anchor = 0;
            view.currentIndex = view.count - 1;
        } else if (event.key === Qt.Key_Escape && view.anchor >= 0) {
            view.anchor = -1;
        } else {
            event.accepted = false;
        }
    }

    delegate: CodeLine {
        width: view.width
        offset: view.offset
        chosen: (index >= view.from && index <= view.to) || (view.activeFocus && InputMode.keyboard && index === view.currentIndex)
    }

    T.ScrollBar.vertical: ScrollBar {}

    Connections {
        target: view.files

        function onSelectionChanged() {
            view.offset = 0;
            view.anchor = -1;
            view.currentIndex = 0;
            view.positionViewAtBeginning();
        }
    }

    MouseArea {
        parent: view
        anchors.fill: parent
        anchors.rightMargin: Theme.scrollBar
        preventStealing: true
        onPressed: mouse => {
            view.forceActiveFocus(Qt.MouseFocusReason);
            const row = view.indexAt(1, mouse.y + view.contentY);
            view.go(row < 0 ? view.currentIndex : row, (mouse.modifiers & Qt.ShiftModifier) !== 0);
        }
        onPositionChanged: mouse => {
            const row = view.indexAt(1, Math.max(0, Math.min(view.height - 1, mouse.y)) + view.contentY);
            if (pressed && row >= 0 && row !== view.currentIndex) {
                view.go(row, true);
            }
        }
        onWheel: wheel => {
            wheel.accepted = wheel.angleDelta.x !== 0;
            if (wheel.accepted) {
                view.offset = Math.max(0, view.offset - wheel.angleDelta.x);
            }
        }
    }
}
