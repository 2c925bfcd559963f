import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A row of the git page's list: a section's heading, a changed file, or a stash.
T.AbstractButton {
    id: item

    property int toldRole: isFile ? Accessible.CheckBox : isHeading ? Accessible.Heading : Accessible.ListItem
    required property int index
    required property string kind
    required property string section
    required property string path
    required property string name
    required property string folder
    required property string letter
    required property string word
    required property int count
    property bool selected: false
    // The list has the keyboard's focus at this row.
    property bool focused: false
    property bool locked: false
    readonly property bool isHeading: kind === "heading"
    readonly property bool isFile: kind === "file"
    readonly property bool staged: section === "staged"
    readonly property var titles: ({
            "conflicts": qsTr("Conflicts"),
            "staged": qsTr("Staged"),
            "changes": qsTr("Changes"),
            "stashes": qsTr("Stashes")
        })
    signal switched
    signal discarded
    signal allToggled
    signal stashAsked(Item anchor)
    signal popped
    signal menuAsked

    implicitHeight: isHeading ? Theme.gitHeadingHeight : Theme.gitRowHeight
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: isHeading ? titles[section] : isFile ? path : name
    Accessible.description: word
    Accessible.checkable: isFile
    Accessible.checked: isFile && staged
    Accessible.selected: selected
    // The list's current row has the focus within it, and a button would take the key for a click.
    Keys.onSpacePressed: {
        if (isFile) {
            switched();
        }
    }

    background: Rectangle {
        radius: Theme.radiusControl
        visible: !item.isHeading && item.kind !== "more"
        color: item.selected ? Theme.selection : item.hovered ? Theme.hover : "transparent"

        FocusRing {
            control: item
            inside: true
            visible: item.focused && InputMode.keyboard
        }
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: item.menuAsked()
    }

    contentItem: Item {
        Row {
            visible: item.isHeading
            x: Theme.space10
            y: Theme.space12
            spacing: Theme.space6

            Label {
                role: Theme.SmallStrong
                color: item.section === "conflicts" ? Theme.danger : Theme.text2
                text: item.titles[item.section] ?? ""
            }

            Figures {
                role: Theme.Small
                color: Theme.text3
                text: item.count
            }
        }

        Row {
            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            y: Theme.space8
            visible: item.isHeading && (item.section === "staged" || item.section === "changes")
            spacing: Theme.space12

            TextLink {
                id: stash

                visible: item.section === "changes"
                enabled: !item.locked
                focusPolicy: Qt.NoFocus
                text: qsTr("Stash…")
                onClicked: item.stashAsked(stash)
            }

            TextLink {
                enabled: !item.locked
                focusPolicy: Qt.NoFocus
                text: item.staged ? qsTr("Unstage all") : qsTr("Stage all")
                onClicked: item.allToggled()
            }
        }

        Rectangle {
            id: box

            x: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            visible: item.isFile
            width: Theme.checkbox
            height: width
            radius: Theme.radiusKey + Theme.hairline
            color: item.staged ? Theme.accent : "transparent"
            border.width: item.staged ? 0 : Theme.hairline
            border.color: boxHover.hovered ? Theme.accent : Theme.text3

            Icon {
                anchors.centerIn: parent
                visible: item.staged || item.section === "conflicts"
                name: item.staged ? "check" : "minus"
                size: Theme.iconMini
                color: item.staged ? Theme.onAccent : Theme.danger
            }

            HoverHandler {
                id: boxHover

                margin: Theme.space6
            }

            TapHandler {
                margin: Theme.space6
                onTapped: item.switched()
            }
        }

        Icon {
            x: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            visible: item.kind === "stash"
            name: "layers-2"
            color: Theme.text3
        }

        Item {
            id: words

            visible: !item.isHeading
            anchors.left: parent.left
            anchors.leftMargin: Theme.space32 + Theme.space2
            anchors.right: tools.left
            anchors.rightMargin: Theme.space8
            height: parent.height

            Label {
                id: title

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, words.width)
                elide: Text.ElideMiddle
                color: item.kind === "more" ? Theme.text3 : Theme.text
                text: item.kind === "more" ? qsTr("%1 more").arg(item.count) : item.name
            }

            Label {
                id: place

                anchors.left: title.right
                anchors.leftMargin: Theme.space4
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                visible: width > Theme.space20
                role: Theme.Small
                color: Theme.text3
                text: item.folder
            }
        }

        Row {
            id: tools

            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space6

            IconButton {
                anchors.verticalCenter: parent.verticalCenter
                visible: (item.isFile || item.kind === "stash") && item.hovered && !item.locked
                focusPolicy: Qt.NoFocus
                edge: Theme.controlMini
                glyphSize: Theme.iconSmall
                glyph: item.section === "conflicts" ? "check" : item.isFile ? "undo-2" : "corner-down-right"
                text: item.section === "conflicts" ? qsTr("Mark as resolved") : item.isFile ? qsTr("Discard…") : qsTr("Take it back and drop it")
                onClicked: item.section === "conflicts" ? item.switched() : item.isFile ? item.discarded() : item.popped()
            }

            GitLetter {
                anchors.verticalCenter: parent.verticalCenter
                visible: item.isFile
                letter: item.letter
            }
        }

        Tip {
            text: (title.truncated || place.truncated) && item.isFile ? item.path : title.truncated ? item.name : ""
        }
    }
}
