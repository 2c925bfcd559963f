import OrvLauncher.Screens
import QtQuick

// The keys of a shortcut, as small as a caption.
Rectangle {
    property alias text: label.text

    implicitWidth: label.implicitWidth + Theme.space12
    implicitHeight: Theme.lineHeight(Theme.Caption) + Theme.space2
    radius: Theme.radiusKey
    color: Theme.kbd

    Label {
        id: label

        anchors.centerIn: parent
        role: Theme.Caption
        color: Theme.text3
    }
}
