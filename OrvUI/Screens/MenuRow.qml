import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

T.MenuItem {
    id: row

    property int toldRole: Accessible.MenuItem
    property string glyph
    // Of a service; stands where the glyph would.
    property string cardState
    // It is the one that is shown.
    property bool chosen: false
    readonly property bool marked: glyph.length > 0 || cardState.length > 0
    property string shortcut
    // What is to be known before it is chosen, below the text.
    property string note
    readonly property color ink: !enabled ? Theme.disabled : highlighted ? Theme.accentText : Theme.text2

    implicitWidth: note.length > 0 ? Theme.popoverWidth : leftPadding + rightPadding + title.anchors.leftMargin + title.implicitWidth + title.anchors.rightMargin + (chosen ? tick.width + Theme.space8 : 0) + (hint.visible ? hint.implicitWidth + Theme.space8 : 0)
    implicitHeight: Theme.menuRowHeight + (caution.visible ? caution.implicitHeight + Theme.space6 : 0)
    leftPadding: Theme.space8
    rightPadding: Theme.space8
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.description: note
    Accessible.checked: chosen

    background: Rectangle {
        radius: Theme.radiusRow
        color: row.highlighted ? Theme.selection : "transparent"
    }

    contentItem: Item {
        Item {
            id: line

            width: parent.width
            height: Theme.menuRowHeight

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: row.glyph.length > 0
                name: row.glyph
                color: row.ink
            }

            Loader {
                anchors.verticalCenter: parent.verticalCenter
                active: row.cardState.length > 0

                sourceComponent: StatusDot {
                    halo: true
                    cardState: row.cardState
                }
            }

            Icon {
                id: tick

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                visible: row.chosen
                name: "check"
                color: row.ink
            }

            Label {
                id: title

                anchors.left: parent.left
                anchors.leftMargin: row.marked ? Theme.space24 : 0
                anchors.right: row.chosen ? tick.left : hint.left
                anchors.rightMargin: Theme.space8
                anchors.verticalCenter: parent.verticalCenter
                color: row.enabled ? Theme.text : Theme.disabled
                text: row.text
            }

            KeyHint {
                id: hint

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                width: visible ? implicitWidth : 0
                visible: text.length > 0
                text: row.shortcut
            }
        }

        Label {
            id: caution

            anchors.left: parent.left
            anchors.leftMargin: title.anchors.leftMargin
            anchors.right: parent.right
            anchors.top: line.bottom
            anchors.topMargin: -Theme.space4
            visible: text.length > 0
            role: Theme.Small
            color: Theme.text2
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            text: row.note
        }
    }
}
