import OrvLauncher.Screens
import QtQuick

// What git says of a project, and, while its card is active, what can be done at once.
Item {
    id: line

    required property string projectName
    // -1 until it is known.
    required property int repositories
    required property string branch
    required property int changes
    // Of the repositories: those that git could not read.
    required property int unread
    required property int ahead
    required property int behind
    required property bool busy
    // The pointer or the keyboard is at the card.
    required property bool active
    // Tab goes to the buttons.
    required property bool reachable
    readonly property string unreadText: repositories === 1 ? qsTr("Repository can't be read") : qsTr("%1 of %2 repositories can't be read").arg(unread).arg(repositories)
    signal chosen(string action)

    implicitHeight: Theme.controlMini
    visible: repositories >= 0

    Row {
        anchors.left: parent.left
        anchors.right: tools.left
        anchors.rightMargin: Theme.space8
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space10

        Row {
            id: place

            spacing: Theme.space6

            Icon {
                id: glyph

                anchors.verticalCenter: parent.verticalCenter
                name: "git-branch"
                size: Theme.iconSmall
                color: Theme.text3
            }

            Label {
                id: branchLabel

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, Math.max(0, line.width - tools.width - facts.width - glyph.width - Theme.space28))
                role: Theme.Small
                color: line.repositories === 0 ? Theme.text3 : line.unread > 0 ? Theme.warning : Theme.text2
                text: line.repositories === 0 ? qsTr("No repository") : line.unread > 0 ? line.unreadText : line.repositories > 1 ? qsTr("%1 repositories").arg(line.repositories) : line.branch.length > 0 ? line.branch : qsTr("No branch")

                Tip {
                    text: branchLabel.truncated ? branchLabel.text : ""
                }
            }
        }

        Row {
            id: facts

            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space10

            Row {
                anchors.verticalCenter: parent.verticalCenter
                visible: line.changes > 0
                spacing: Theme.space6

                Rectangle {
                    anchors.verticalCenter: parent.verticalCenter
                    width: Theme.space6
                    height: width
                    radius: width / 2
                    color: Theme.warning
                }

                Label {
                    role: Theme.Small
                    color: Theme.warning
                    text: line.changes === 1 ? qsTr("1 change") : qsTr("%1 changes").arg(line.changes)
                }
            }

            GitCount {
                anchors.verticalCenter: parent.verticalCenter
                glyph: "arrow-up"
                count: line.ahead
            }

            GitCount {
                anchors.verticalCenter: parent.verticalCenter
                glyph: "arrow-down"
                count: line.behind
            }
        }
    }

    Row {
        id: tools

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            visible: line.busy
            size: Theme.iconSmall
        }

        Repeater {
            model: line.active && !line.busy && line.repositories > 0 ? ["fetch", "pull", "push"] : []

            IconButton {
                required property string modelData

                edge: Theme.controlMini
                glyphSize: Theme.iconSmall
                glyph: modelData === "fetch" ? "refresh-cw" : modelData === "pull" ? "arrow-down-to-line" : "arrow-up-from-line"
                text: (modelData === "fetch" ? qsTr("Fetch %1") : modelData === "pull" ? qsTr("Pull %1") : qsTr("Push %1")).arg(line.projectName)
                focusPolicy: line.reachable ? Qt.StrongFocus : Qt.ClickFocus
                onClicked: line.chosen(modelData)
            }
        }
    }
}
