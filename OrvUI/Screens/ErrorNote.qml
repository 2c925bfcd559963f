import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// What went wrong, in the words of the tool, until somebody has read it.
Rectangle {
    id: note

    property string text
    signal dismissed

    implicitHeight: visible ? Math.min(words.implicitHeight, 8 * Theme.space16) + Theme.space16 : 0
    visible: text.length > 0
    radius: Theme.radiusControl
    color: Theme.dangerSoft
    border.width: Theme.softEdge
    border.color: Theme.danger
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Flickable {
        x: Theme.space10
        y: Theme.space8
        width: close.x - x - Theme.space4
        height: parent.height - 2 * y
        contentHeight: words.implicitHeight
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Label {
            id: words

            width: parent.width
            role: Theme.MonoPath
            color: Theme.danger
            wrapMode: Text.WrapAtWordBoundaryOrAnywhere
            elide: Text.ElideNone
            text: note.text
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    Column {
        id: close

        anchors.right: parent.right
        anchors.rightMargin: Theme.space4
        y: Theme.space4

        IconButton {
            edge: Theme.controlMini
            glyphSize: Theme.iconSmall
            glyph: "x"
            text: qsTr("Dismiss")
            onClicked: note.dismissed()
        }

        IconButton {
            visible: note.height > 2 * Theme.controlMini + Theme.space8
            edge: Theme.controlMini
            glyphSize: Theme.iconSmall
            glyph: "copy"
            text: qsTr("Copy")
            onClicked: Clipboard.copy(note.text)
        }
    }
}
