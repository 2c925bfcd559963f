import OrvLauncher.Screens
import QtQuick

// What git says of a project, on its overview.
OverviewCard {
    id: card

    required property GitModel git
    // Names without their folders, but where two of them are the same.
    property bool narrow: false
    readonly property bool ready: git !== null && git.state === "ready"
    readonly property int changes: ready ? git.ownChangeCount : 0
    readonly property var first: ready ? git.firstChanges : []
    // How many changes there are likely to be, while that is read.
    property int expected: 0
    readonly property bool reading: git === null || git.state === "loading"
    signal opened

    heading: qsTr("Git")

    corner: [
        Row {
            anchors.verticalCenter: parent?.verticalCenter
            visible: card.ready
            rightPadding: Theme.space4
            spacing: Theme.space6

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                name: "git-branch"
                size: Theme.iconSmall
                color: Theme.text2
            }

            Label {
                id: branch

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, card.width / 2)
                role: Theme.SmallStrong
                color: Theme.text2
                text: card.git === null ? "" : card.git.detached ? qsTr("No branch") : card.git.branch

                Tip {
                    text: branch.truncated ? branch.text : ""
                }
            }

            GitCount {
                anchors.verticalCenter: parent.verticalCenter
                glyph: "arrow-up"
                count: card.git?.ahead ?? 0
            }

            GitCount {
                anchors.verticalCenter: parent.verticalCenter
                glyph: "arrow-down"
                count: card.git?.behind ?? 0
            }
        }
    ]

    Item {
        width: Theme.hairline
        height: Theme.space6
    }

    Repeater {
        model: card.first

        Item {
            id: row

            required property var modelData
            readonly property string whole: modelData.folder + modelData.name
            readonly property bool ambiguous: card.first.filter(change => change.name === modelData.name).length > 1

            width: parent?.width ?? 0
            height: letter.height + Theme.space8

            GitLetter {
                id: letter

                letter: row.modelData.letter
            }

            Label {
                id: path

                anchors.left: letter.right
                anchors.leftMargin: Theme.space8
                width: Math.min(implicitWidth, row.width - x)
                anchors.verticalCenter: letter.verticalCenter
                role: Theme.Small
                elide: Text.ElideMiddle
                text: card.narrow ? row.modelData.name : row.whole
                Accessible.name: row.whole

                Tip {
                    text: path.truncated || card.narrow ? row.whole : ""
                }
            }

            Label {
                anchors.left: path.right
                anchors.leftMargin: Theme.space8
                anchors.right: parent.right
                anchors.baseline: path.baseline
                visible: card.narrow && row.ambiguous && width > Theme.space40
                role: Theme.Small
                color: Theme.text3
                elide: Text.ElideLeft
                text: row.modelData.folder
                Accessible.ignored: true
            }
        }
    }

    // As high as what will stand here.
    Repeater {
        model: card.reading ? Math.max(1, Math.min(4, card.expected)) : 0

        Item {
            required property int index

            width: parent?.width ?? 0
            height: Theme.space24 + Theme.space2

            Rectangle {
                y: Theme.space4
                width: parent.width * (index % 2 === 0 ? 0.7 : 0.5)
                height: Theme.space12
                radius: Theme.radiusKey
                color: Theme.skeleton
            }
        }
    }

    Label {
        leftPadding: Theme.space24 + Theme.space2
        height: visible ? Theme.space24 : 0
        visible: card.changes > card.first.length
        role: Theme.Small
        color: Theme.text3
        text: qsTr("%1 more").arg(card.changes - card.first.length)
    }

    Item {
        width: parent?.width ?? 0
        height: visible ? Math.max(state.height, Theme.space28) : 0
        visible: card.changes === 0 && !card.reading

        Label {
            id: state

            width: parent.width
            role: Theme.Small
            color: Theme.text3
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            text: card.ready ? qsTr("Nothing to commit") : card.reading ? "" : card.git.state === "none" ? card.git.note || qsTr("No repository") : card.git.state === "bare" ? qsTr("A bare repository") : qsTr("Git can't read this repository")
        }
    }

    Row {
        id: actions

        width: parent.width
        topPadding: Theme.space4
        visible: card.ready || card.reading
        spacing: Theme.space8

        Button {
            enabled: card.ready
            width: actions.width - pull.width - push.width - 2 * actions.spacing
            primary: card.changes > 0
            controlHeight: Theme.controlSmall
            text: card.changes > 0 ? qsTr("Commit…") : qsTr("Open")
            Accessible.name: card.changes > 0 ? qsTr("Commit…") : qsTr("Open git")
            onClicked: card.opened()
        }

        GitButton {
            id: pull

            enabled: card.ready && !card.git.isBusy
            busy: card.git?.busyWith === "pull"
            glyph: "arrow-down-to-line"
            text: qsTr("Pull")
            onClicked: card.git.pull()
        }

        GitButton {
            id: push

            enabled: card.ready && !card.git.isBusy
            busy: card.git?.busyWith === "push"
            glyph: "arrow-up-from-line"
            text: qsTr("Push")
            onClicked: card.git.push()
        }
    }

    Button {
        visible: card.git !== null && card.git.state === "none"
        controlHeight: Theme.controlSmall
        glyph: "git-branch-plus"
        glyphSize: Theme.iconSmall
        text: qsTr("Start a repository")
        onClicked: card.git.initRepository()
    }
}
