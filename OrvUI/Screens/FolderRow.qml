import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A project as one row, or the folder in which projects lie, indented by how deep it is.
T.Control {
    id: row

    property int toldRole: Accessible.TreeItem
    required property int index
    required property string projectID
    required property string name
    required property string path
    required property string stackLine
    required property int tileIndex
    required property string tileLetter
    required property bool pinned
    required property string cardState
    required property string message
    required property var actions
    required property string defaultAction
    required property bool isFlutter
    required property var services
    required property var failedServices
    required property int gitChanges
    required property bool isCollection
    required property var members
    required property int runningMembers
    required property int depth
    required property bool expanded
    required property bool hasChildren
    // The row that Tab enters.
    property bool isCurrent: false
    // The list that it stands in has the keyboard's focus.
    property bool listActive: false
    readonly property bool busy: services.length > 0 || cardState === "installing"
    readonly property bool active: hovered || (InputMode.keyboard && isCurrent && listActive)
    // The first that can be opened.
    readonly property var address: services.find(service => service.address.length > 0) ?? null
    readonly property int inset: Theme.space16 + depth * Theme.folderIndent
    signal run(string action)
    signal stop
    signal open(string key)
    signal more(Item anchor)
    signal entered

    hoverEnabled: true
    // Qt lets nothing that has the focus be no stop of Tab any more.
    activeFocusOnTab: row.isCurrent || row.activeFocus
    Accessible.role: toldRole
    Accessible.name: name
    Accessible.description: isCollection ? qsTr("%1 projects, %2 running").arg(members.length).arg(runningMembers) : qsTr("%1, %2").arg(stackLine).arg(state.text)
    Accessible.focusable: true
    Accessible.checkable: hasChildren
    Accessible.checked: expanded

    background: Item {
        Rectangle {
            visible: row.index > 0
            width: parent.width
            height: Theme.hairline
            color: Theme.border
        }

        Rectangle {
            anchors.fill: parent
            anchors.margins: Theme.space4
            radius: Theme.radiusControl
            color: row.active ? Theme.hover : "transparent"

            FocusRing {
                control: row
                inside: true
            }
        }
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: row.more(row)
    }

    contentItem: Item {
        Icon {
            x: row.inset
            anchors.verticalCenter: parent.verticalCenter
            visible: row.hasChildren
            name: row.expanded ? "chevron-down" : "chevron-right"
            size: Theme.iconSmall
            color: Theme.text2
        }

        Icon {
            x: row.inset + Theme.folderIndent
            anchors.verticalCenter: parent.verticalCenter
            visible: row.isCollection
            name: row.expanded ? "folder-open" : "folder"
            color: Theme.accentText
        }

        Tile {
            id: tile

            x: row.inset + Theme.folderIndent
            anchors.verticalCenter: parent.verticalCenter
            visible: !row.isCollection
            size: Theme.tileList
            tileIndex: row.tileIndex
            tileLetter: row.tileLetter
        }

        Label {
            id: title

            x: tile.x + (row.isCollection ? Theme.space24 + Theme.space2 : Theme.space32 + Theme.space2)
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, Math.max(0, facts.x - x - Theme.space16))
            role: Theme.BodyStrong
            text: row.name

            Tip {
                text: title.truncated ? row.path : ""
            }
        }

        Label {
            anchors.left: title.right
            anchors.leftMargin: Theme.space10
            anchors.right: facts.left
            anchors.rightMargin: Theme.space16
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Small
            color: Theme.text3
            text: !row.isCollection ? row.stackLine : row.members.length === 1 ? qsTr("1 project") : qsTr("%1 projects").arg(row.members.length)
        }

        Row {
            id: facts

            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space12

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: row.pinned
                name: "own-pin-fill"
                size: Theme.iconMini
                color: Theme.accentText
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                visible: row.gitChanges > 0
                role: Theme.Small
                color: Theme.warning
                text: row.gitChanges === 1 ? qsTr("1 change") : qsTr("%1 changes").arg(row.gitChanges)
            }

            Row {
                anchors.verticalCenter: parent.verticalCenter
                visible: row.cardState !== "idle" || row.runningMembers > 0
                spacing: Theme.space6

                StatusDot {
                    anchors.verticalCenter: parent.verticalCenter
                    cardState: row.cardState
                }

                Label {
                    id: state

                    anchors.verticalCenter: parent.verticalCenter
                    visible: row.address === null
                    width: Math.min(implicitWidth, Math.max(0, row.width / 3))
                    role: Theme.Small
                    color: row.cardState === "failed" ? Theme.danger : row.cardState === "running" ? Theme.text2 : Theme.warning
                    text: row.isCollection ? qsTr("%1 running").arg(row.runningMembers) : row.cardState === "failed" ? row.message : RunWords.ofState(row.cardState) || qsTr("Not running")

                    Tip {
                        text: state.truncated ? state.text : ""
                    }
                }

                AddressLink {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: row.address !== null
                    focusPolicy: row.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                    text: row.address?.address ?? ""
                    listening: row.address?.portListening ?? true
                    onClicked: row.open(row.address.key)
                }
            }

            Row {
                anchors.verticalCenter: parent.verticalCenter

                IconButton {
                    id: more

                    // Keeps its place, so that nothing moves under the pointer.
                    opacity: row.active ? 1 : 0
                    focusPolicy: row.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                    glyph: "ellipsis"
                    text: qsTr("More for %1").arg(row.name)
                    onClicked: row.more(more)
                }

                IconButton {
                    visible: row.isCollection
                    focusPolicy: row.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                    glyph: "arrow-right"
                    text: qsTr("Open %1").arg(row.name)
                    onClicked: row.entered()
                }

                IconButton {
                    visible: !row.isCollection && (row.busy || row.defaultAction.length > 0)
                    focusPolicy: row.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                    glyph: row.busy ? "own-stop-fill" : "own-play-fill"
                    glyphSize: Theme.iconSmall
                    tint: row.busy ? Theme.text2 : Theme.accentText
                    text: row.busy ? qsTr("Stop %1").arg(row.name) : qsTr("Run %1 in %2").arg(row.defaultAction).arg(row.name)
                    onClicked: row.busy ? row.stop() : row.run(row.defaultAction)
                }
            }
        }
    }
}
