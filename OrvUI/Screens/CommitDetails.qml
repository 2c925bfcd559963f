import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A commit that was chosen in the history: what it says of itself, and the files that it changed.
FocusScope {
    id: details

    required property GitModel git
    readonly property var commit: git.shownCommit
    readonly property int count: list.count

    Column {
        id: head

        x: Theme.space16 - Theme.hairline
        y: Theme.space12
        width: parent.width - x - Theme.space8
        spacing: Theme.space4

        Item {
            width: parent.width
            height: title.height

            Label {
                id: title

                width: close.x - Theme.space8
                role: Theme.Section
                wrapMode: Text.Wrap
                maximumLineCount: 3
                text: details.commit.subject ?? ""
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }

            IconButton {
                id: close

                anchors.right: parent.right
                y: -Theme.space2
                edge: Theme.controlMini
                glyphSize: Theme.iconSmall
                glyph: "x"
                text: qsTr("Back to the changes")
                shortcut: qsTr("Esc")
                onClicked: details.git.selectCommit("")
            }
        }

        Label {
            width: parent.width
            role: Theme.Small
            color: Theme.text3
            text: qsTr("%1, %2").arg(details.commit.author ?? "").arg(details.commit.when ?? "")
        }

        TextLink {
            text: details.commit.shortID ?? ""
            Accessible.name: qsTr("Copy the hash %1").arg(text)
            onClicked: Clipboard.copy(details.git.selectedCommit)

            Tip {
                text: qsTr("Copy the whole hash")
            }
        }
    }

    ListView {
        id: list

        function go(row) {
            list.currentIndex = Math.max(0, Math.min(count - 1, row));
            const item = list.currentItem as CommitFileItem;
            if (item !== null) {
                details.git.selectCommitFile(item.path);
            }
        }

        anchors.fill: parent
        anchors.topMargin: head.y + head.height + Theme.space8
        clip: true
        focus: true
        activeFocusOnTab: count > 0
        keyNavigationEnabled: false
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        reuseItems: true
        // None ahead of need: Qt goes on asking for those whose rows have gone.
        cacheBuffer: 0
        model: details.git.commitFiles
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Files of the commit")
        Keys.onDownPressed: go(currentIndex + 1)
        Keys.onUpPressed: go(currentIndex - 1)
        Keys.onEscapePressed: details.git.selectCommit("")

        delegate: CommitFileItem {
            x: Theme.space4 + Theme.hairline
            width: list.width - 2 * x
            selected: path === details.git.selectedPath
            focused: list.activeFocus && ListView.isCurrentItem
            onClicked: {
                list.forceActiveFocus(Qt.MouseFocusReason);
                list.go(index);
            }
        }

        T.ScrollBar.vertical: ScrollBar {}
    }
}
