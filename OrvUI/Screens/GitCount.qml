import OrvLauncher.Screens
import QtQuick

// An arrow with how many commits; nothing for none.
Row {
    required property string glyph
    required property int count

    visible: count > 0
    spacing: Theme.space2

    Icon {
        anchors.verticalCenter: parent.verticalCenter
        name: parent.glyph
        size: Theme.iconMini
        color: Theme.text3
    }

    Figures {
        role: Theme.Small
        color: Theme.text3
        text: parent.count
    }
}
