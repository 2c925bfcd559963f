import OrvLauncher.Screens
import QtQuick

// An agent by two letters, never by a brand's mark; a custom one by a terminal.
Rectangle {
    id: badge

    required property string letters
    property int size: Theme.tileSmall

    implicitWidth: size
    implicitHeight: size
    radius: Theme.tileRadius(size)
    color: Theme.control

    Label {
        anchors.centerIn: parent
        visible: badge.letters.length > 0
        role: badge.size > Theme.swatchSize ? Theme.SmallStrong : Theme.BadgeLetter
        color: Theme.text2
        text: badge.letters
    }

    Icon {
        anchors.centerIn: parent
        visible: badge.letters.length === 0
        name: "square-terminal"
        size: badge.size > Theme.swatchSize ? Theme.icon : Theme.iconMini
        color: Theme.text2
    }
}
