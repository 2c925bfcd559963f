import OrvLauncher.Screens
import QtQuick

// The letters beside the links of a terminal that open them.
Item {
    id: hints

    required property TerminalView view

    Repeater {
        model: hints.view !== null ? hints.view.linkHints : []

        Rectangle {
            required property var modelData

            x: Math.max(0, modelData.place.x - width)
            y: modelData.place.y
            width: letters.implicitWidth + Theme.space6
            height: Math.max(letters.implicitHeight, Theme.space16)
            radius: Theme.radiusKey
            color: Theme.warning
            Accessible.role: Accessible.Link
            Accessible.name: modelData.letters
            Accessible.description: modelData.target

            Label {
                id: letters

                anchors.centerIn: parent
                role: Theme.Mono
                color: Theme.window
                text: parent.modelData.letters
            }
        }
    }
}
