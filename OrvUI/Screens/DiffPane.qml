import OrvLauncher.Screens
import QtQuick

// What changed in one file: its name, what can be done with it, and the lines.
FocusScope {
    id: pane

    required property GitModel git
    required property AppModel model
    property bool narrow: false
    readonly property bool staged: git.selectedIsStaged
    readonly property bool ofCommit: git.selectedCommit.length > 0
    readonly property bool chosen: git.canDivide && git.diff.hasSelection
    readonly property bool changeable: !ofCommit && git.selectedPath.length > 0 && !git.isBusy
    signal discardAsked
    signal discardLinesAsked(int hunk)

    Item {
        id: head

        width: parent.width
        height: Theme.paneHeaderHeight
        visible: pane.git.selectedPath.length > 0

        Icon {
            id: glyph

            x: Theme.space16 + Theme.space2
            anchors.verticalCenter: parent.verticalCenter
            name: "file-code"
            color: Theme.text2
        }

        Row {
            id: title

            anchors.left: glyph.right
            anchors.leftMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            width: tools.x - x - Theme.space12

            Label {
                id: folder

                width: Math.min(implicitWidth, Math.max(0, title.width - name.width - counts.width - Theme.space10))
                elide: Text.ElideLeft
                text: pane.git.selectedFolder
            }

            Label {
                id: name

                width: Math.min(implicitWidth, Math.max(0, title.width - counts.width - Theme.space10))
                role: Theme.Section
                elide: Text.ElideMiddle
                text: pane.git.selectedName
                Accessible.role: Accessible.Heading
                Accessible.name: pane.git.selectedPath

                Tip {
                    text: name.truncated || folder.truncated ? pane.git.selectedFolder + pane.git.selectedName : ""
                }
            }

            Row {
                id: counts

                anchors.verticalCenter: parent.verticalCenter
                leftPadding: Theme.space10
                spacing: Theme.space8

                Pill {
                    visible: pane.git.diff.added > 0
                    text: "+" + pane.git.diff.added
                    tint: Theme.success
                    fill: Theme.successSoft
                }

                Pill {
                    visible: pane.git.diff.removed > 0
                    text: "−" + pane.git.diff.removed
                    tint: Theme.danger
                    fill: Theme.dangerSoft
                }
            }
        }

        Row {
            id: tools

            anchors.right: parent.right
            anchors.rightMargin: Theme.space12
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space4

            Button {
                visible: !pane.ofCommit
                enabled: pane.changeable
                controlHeight: Theme.controlSmall
                glyph: pane.staged ? "minus" : "plus"
                glyphSize: Theme.iconSmall
                glyphColor: Theme.text2
                text: pane.chosen ? (pane.staged ? qsTr("Unstage lines") : qsTr("Stage lines")) : pane.git.currentRow >= 0 && pane.git.conflictCount > 0 && pane.git.diffNote.length > 0 && !pane.staged && !pane.git.canDivide ? qsTr("Mark resolved") : pane.staged ? qsTr("Unstage") : qsTr("Stage")
                onClicked: pane.chosen ? view.moveLines() : pane.staged ? pane.git.unstage([pane.git.selectedPath]) : pane.git.stage([pane.git.selectedPath])
            }

            Button {
                visible: !pane.ofCommit && !(pane.chosen && pane.staged)
                enabled: pane.changeable
                controlHeight: Theme.controlSmall
                ghost: true
                danger: true
                glyph: "undo-2"
                glyphSize: Theme.iconSmall
                text: pane.narrow ? qsTr("Discard…") : pane.chosen ? qsTr("Discard lines…") : qsTr("Discard…")
                onClicked: pane.chosen ? pane.discardLinesAsked(-1) : pane.discardAsked()
            }

            IconButton {
                visible: pane.ofCommit
                glyph: "external-link"
                text: qsTr("Open in editor")
                onClicked: pane.model.openFile(pane.git.fileOf(pane.git.selectedPath))
            }
        }

        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: Theme.hairline
            color: Theme.border
        }
    }

    Rectangle {
        anchors.fill: parent
        anchors.topMargin: head.visible ? head.height : 0
        color: Theme.terminalBackground

        Rectangle {
            id: note

            width: parent.width
            height: visible ? Theme.controlRegular : 0
            visible: pane.git.diffNote.length > 0 && view.shown > 0
            color: Theme.warningSoft
            border.width: Theme.softEdge
            border.color: Theme.warning

            Label {
                x: Theme.space16
                width: parent.width - 2 * x
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.Small
                color: Theme.warning
                text: pane.git.diffNote
            }
        }

        DiffView {
            id: view

            anchors.fill: parent
            anchors.topMargin: note.height
            visible: shown > 0
            focus: true
            git: pane.git
            onDiscardHunkAsked: hunk => pane.discardLinesAsked(hunk)
        }

        EmptyState {
            anchors.centerIn: parent
            width: Math.min(Theme.emptyWidth, parent.width - Theme.space32)
            // What was said stays while the same is read again.
            visible: view.shown === 0 && (!pane.git.isLoadingDiff || pane.git.diffNote.length > 0)
            picture: "uncommitted"
            heading: pane.git.state === "failed" ? qsTr("Git can't read this repository") : pane.git.selectedPath.length > 0 || pane.ofCommit ? pane.git.diffNote : pane.git.changeCount > 0 ? qsTr("Choose a file to see what changed in it") : pane.git.hasCommits ? qsTr("Nothing to commit") : qsTr("Nothing here yet")
            text: pane.git.state === "failed" ? pane.git.problem : pane.git.selectedPath.length > 0 || pane.ofCommit ? "" : pane.git.changeCount > 0 ? qsTr("Space stages it, and a drag over lines chooses some of them.") : pane.git.hasCommits ? qsTr("Everything is in the last commit.") : qsTr("Files that you add to the folder show up here.")
        }
    }
}
