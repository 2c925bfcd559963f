import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// One result of the palette, the letters that were found in the colour of the accent.
T.AbstractButton {
    id: row

    property int toldRole: Accessible.ListItem
    required property int index
    required property string title
    required property var hits
    required property string detail
    required property string glyph
    required property int tileIndex
    required property string tileLetter
    required property string shortcut
    required property string hint
    property bool isCurrent: false
    readonly property color hitColor: Theme.accentText

    function escaped(text) {
        return text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;");
    }

    function marked() {
        let out = "";
        let at = 0;
        for (const hit of row.hits) {
            out += row.escaped(row.title.slice(at, hit.start)) + "<font color=\"" + row.hitColor + "\"><b>" + row.escaped(row.title.slice(hit.start, hit.start + hit.length)) + "</b></font>";
            at = hit.start + hit.length;
        }
        return out + row.escaped(row.title.slice(at));
    }

    implicitHeight: Theme.paletteRowHeight
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: title
    Accessible.description: detail
    Accessible.selected: isCurrent

    background: Rectangle {
        radius: Theme.radiusRow
        color: row.isCurrent ? Theme.selection : row.hovered ? Theme.hover : "transparent"
    }

    contentItem: Item {
        Tile {
            x: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            visible: row.glyph.length === 0
            size: Theme.tileList
            tileIndex: row.tileIndex
            tileLetter: row.tileLetter
        }

        Icon {
            x: Theme.space10 + Theme.space4
            anchors.verticalCenter: parent.verticalCenter
            visible: row.glyph.length > 0
            name: row.glyph
            color: row.isCurrent ? Theme.accentText : Theme.text2
        }

        Label {
            id: words

            x: Theme.space10 + Theme.tileList + Theme.space12
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, Math.max(0, keys.x - x - Theme.space12))
            role: Theme.BodyStrong
            textFormat: row.hits.length > 0 ? Text.StyledText : Text.PlainText
            text: row.hits.length > 0 ? row.marked() : row.title
        }

        Label {
            anchors.left: words.right
            anchors.leftMargin: Theme.space12
            anchors.right: keys.left
            anchors.rightMargin: Theme.space12
            anchors.verticalCenter: parent.verticalCenter
            visible: width > Theme.space20
            role: Theme.Small
            color: Theme.text2
            text: row.detail
        }

        Row {
            id: keys

            anchors.right: parent.right
            anchors.rightMargin: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space8

            Label {
                anchors.verticalCenter: parent.verticalCenter
                visible: row.isCurrent && text.length > 0
                role: Theme.Small
                color: Theme.text2
                text: row.hint
            }

            KeyHint {
                anchors.verticalCenter: parent.verticalCenter
                visible: text.length > 0
                text: row.shortcut.length > 0 ? row.shortcut : row.isCurrent ? "↩" : ""
            }
        }
    }
}
