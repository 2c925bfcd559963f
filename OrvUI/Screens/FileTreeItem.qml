import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A folder or a file of a project's tree.
T.AbstractButton {
    id: item

    property int toldRole: Accessible.TreeItem
    required property int index
    required property string path
    required property string name
    required property int depth
    required property bool isFolder
    required property bool expanded
    required property string letter
    property bool selected: false
    property bool focused: false
    readonly property string ending: name.slice(name.lastIndexOf(".") + 1).toLowerCase()
    readonly property var glyphs: ({
            "md": "file-text",
            "txt": "file-text",
            "rst": "file-text",
            "log": "file-text",
            "license": "file-text",
            "json": "file-cog",
            "yml": "file-cog",
            "yaml": "file-cog",
            "toml": "file-cog",
            "ini": "file-cog",
            "cfg": "file-cog",
            "env": "file-cog",
            "lock": "file-cog",
            "xml": "file-cog"
        })
    readonly property string glyph: isFolder ? (expanded ? "folder-open" : "folder") : glyphs[ending] ?? "file-code"

    implicitHeight: Theme.outlineRowHeight
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: name
    Accessible.description: letter.length === 1 && !isFolder ? letter : ""
    Accessible.checkable: isFolder
    Accessible.checked: expanded
    Accessible.selected: selected

    background: Rectangle {
        radius: Theme.radiusControl
        color: item.selected ? Theme.selection : item.hovered ? Theme.hover : "transparent"

        FocusRing {
            control: item
            inside: true
            visible: item.focused && InputMode.keyboard
        }
    }

    contentItem: Item {
        Icon {
            id: chevron

            x: Theme.space8 + item.depth * Theme.fileIndent
            anchors.verticalCenter: parent.verticalCenter
            visible: item.isFolder
            name: item.expanded ? "chevron-down" : "chevron-right"
            size: Theme.iconMini
            color: Theme.text3
        }

        Icon {
            id: glyph

            x: chevron.x + Theme.fileIndent + Theme.hairline
            anchors.verticalCenter: parent.verticalCenter
            name: item.glyph
            size: Theme.iconSmall
            color: Theme.text2
        }

        Label {
            id: title

            anchors.left: glyph.right
            anchors.leftMargin: Theme.space6
            anchors.right: mark.left
            anchors.rightMargin: Theme.space4
            anchors.verticalCenter: parent.verticalCenter
            color: item.selected || item.hovered ? Theme.text : Theme.text2
            text: item.name
        }

        Item {
            id: mark

            anchors.right: parent.right
            anchors.rightMargin: Theme.hairline
            anchors.verticalCenter: parent.verticalCenter
            width: visible ? sign.width : 0
            height: sign.height
            visible: item.letter.length > 0

            GitLetter {
                id: sign

                visible: !item.isFolder
                plain: true
                letter: item.letter
            }

            Rectangle {
                anchors.centerIn: parent
                visible: item.isFolder
                width: Theme.space6
                height: width
                radius: width / 2
                color: Theme.warning
            }
        }
    }

    Tip {
        text: title.truncated ? item.name : ""
    }
}
