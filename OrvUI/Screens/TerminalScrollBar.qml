import OrvLauncher.Screens
import QtQuick

// Where the view stands in the history of a terminal, and where matches of the search are.
Item {
    id: bar

    required property TerminalView view
    readonly property int lines: view !== null ? view.historyLines + view.rows : 1

    implicitWidth: Theme.scrollBar
    visible: view !== null && view.historyLines > 0

    ScrollBar {
        id: thumb

        anchors.fill: parent
        orientation: Qt.Vertical
        active: bar.view !== null && bar.view.topLine < bar.view.historyLines
        size: bar.view !== null ? bar.view.rows / bar.lines : 1
        onPositionChanged: {
            if (pressed) {
                bar.view.scrollTo(Math.round(position * bar.lines));
            }
        }
    }

    Binding {
        target: thumb
        property: "position"
        value: bar.view !== null ? bar.view.topLine / bar.lines : 0
        when: !thumb.pressed
    }

    Repeater {
        model: bar.view !== null && bar.view.find.active ? bar.view.find.marks : []

        Rectangle {
            required property real modelData

            x: Theme.space2
            y: Math.round(modelData * (bar.height - height))
            width: bar.width - 2 * Theme.space2
            height: Theme.space2
            color: Theme.warning
        }
    }
}
