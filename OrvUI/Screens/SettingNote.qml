import OrvLauncher.Screens
import QtQuick

// What is wrong with a setting, under its group; nothing while nothing is.
Rectangle {
    id: note

    required property string text

    width: parent.width
    height: words.height + Theme.space16
    visible: text.length > 0
    radius: Theme.radiusControl
    color: Theme.dangerSoft
    border.width: Theme.softEdge
    border.color: Theme.danger
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Icon {
        x: Theme.space12
        y: Theme.space8
        name: "circle-alert"
        color: Theme.danger
    }

    Label {
        id: words

        x: Theme.space32 + Theme.space2
        y: Theme.space8
        width: parent.width - x - Theme.space12
        role: Theme.Small
        wrapMode: Text.Wrap
        elide: Text.ElideNone
        text: note.text
    }
}
