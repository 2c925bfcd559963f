import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A project: what it is, what it does now, and the one next step. Or a folder of projects.
T.Control {
    id: card

    property int toldRole: Accessible.Cell
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
    required property var services
    required property var failedServices
    // -1 until it is known.
    required property int gitRepositories
    required property string gitBranch
    required property int gitChanges
    required property int gitUnread
    required property int gitAhead
    required property int gitBehind
    required property bool gitBusy
    required property bool isFlutter
    required property bool isCollection
    required property var members
    required property int runningMembers
    // The card that Tab enters.
    property bool isCurrent: false
    // The list that it stands in has the keyboard's focus.
    property bool listActive: false
    readonly property bool busy: services.length > 0 || cardState === "installing"
    // The pointer or the keyboard is at it.
    readonly property bool active: hovered || (InputMode.keyboard && isCurrent && listActive)
    // What runs, and what failed beside it.
    readonly property var lines: services.length > 0 ? services.concat(failedServices) : []
    readonly property int lineCount: lines.length > 2 ? 1 : lines.length
    signal run(string action)
    signal stop
    signal open(string key)
    signal pin
    signal git(string action)
    signal logsAsked
    signal agentAsked
    signal chooseAction(Item anchor)
    signal more(Item anchor)
    // Of a folder of projects.
    signal entered

    hoverEnabled: true
    // Qt lets nothing that has the focus be no stop of Tab any more.
    activeFocusOnTab: card.isCurrent || card.activeFocus
    Accessible.role: toldRole
    Accessible.name: name
    Accessible.description: isCollection ? qsTr("%1 projects, %2 running").arg(members.length).arg(runningMembers) : (pinned ? qsTr("%1, %2, pinned") : qsTr("%1, %2")).arg(stackLine).arg(stateText)
    Accessible.focusable: true

    readonly property string stateText: services.length > 0
        ? services.map(service => service.address.length > 0 ? qsTr("running on %1").arg(service.address) : RunWords.ofState(service.phase)).join(", ")
        : cardState === "failed" ? message : cardState === "installing" ? qsTr("installing") : qsTr("not running")

    // The edge of the next one peeks out behind a folder.
    Rectangle {
        z: -2
        visible: card.isCollection
        x: Theme.space12
        y: -Theme.space6
        width: parent.width - 2 * x
        height: Theme.space24
        radius: Theme.radiusCard
        color: Theme.surface
        border.width: Theme.hairline
        border.color: Theme.border
    }

    background: Rectangle {
        radius: Theme.radiusCard
        color: card.active ? Theme.surfaceHover : Theme.surface
        border.width: Theme.hairline
        border.color: card.active ? Theme.borderStrong : Theme.border

        Shadow {
            anchors.fill: parent
            z: -1
            level: card.active ? 2 : 1
            radius: parent.radius
        }

        FocusRing {
            control: card
            shapeRadius: Theme.radiusCard
        }
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: card.more(card)
    }

    contentItem: Loader {
        sourceComponent: card.isCollection ? collection : project
    }

    // Made when it is first shown: most cards never show theirs.
    component Tool: Loader {
        required property bool shown

        active: shown || item !== null
        visible: shown
    }

    Component {
        id: collection

        CollectionFace {
            name: card.name
            members: card.members
            runningMembers: card.runningMembers
            reachable: card.isCurrent
            onOpened: card.entered()
        }
    }

    Component {
        id: project

        Item {
            Tile {
                id: tile

                x: Theme.space16
                y: Theme.space16
                tileIndex: card.tileIndex
                tileLetter: card.tileLetter
            }

            Label {
                id: title

                anchors.left: tile.right
                anchors.leftMargin: Theme.space12
                anchors.right: tools.left
                anchors.rightMargin: Theme.space8
                anchors.top: tile.top
                anchors.topMargin: -Theme.hairline
                role: Theme.CardTitle
                text: card.name

                Tip {
                    text: title.truncated ? card.path : ""
                }
            }

            Label {
                id: stack

                anchors.left: title.left
                anchors.right: title.right
                anchors.top: title.bottom
                role: Theme.Small
                color: Theme.text2
                text: card.stackLine

                Tip {
                    text: stack.truncated ? card.stackLine : ""
                }
            }

            Row {
                id: tools

                anchors.right: parent.right
                anchors.rightMargin: Theme.space10
                y: Theme.space12
                spacing: Theme.space2

                Tool {
                    shown: card.cardState === "failed" || card.failedServices.length > 0

                    sourceComponent: IconButton {
                        glyph: "logs"
                        text: qsTr("Logs of %1").arg(card.name)
                        focusPolicy: card.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                        onClicked: card.logsAsked()
                    }
                }

                Tool {
                    shown: card.active

                    sourceComponent: IconButton {
                        glyph: "sparkles"
                        text: qsTr("Ask AI in %1").arg(card.name)
                        shortcut: Keymap.text("ask")
                        focusPolicy: card.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                        onClicked: card.agentAsked()
                    }
                }

                Tool {
                    shown: card.pinned || card.active

                    sourceComponent: IconButton {
                        checkable: true
                        checked: card.pinned
                        glyph: card.pinned ? "own-pin-fill" : "pin"
                        tint: card.pinned ? Theme.accentText : hovered ? Theme.text : Theme.text3
                        text: card.pinned ? qsTr("Remove pin") : qsTr("Pin %1").arg(card.name)
                        shortcut: Keymap.text("pin")
                        focusPolicy: card.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                        Accessible.name: qsTr("Pin %1").arg(card.name)
                        onClicked: {
                            checked = Qt.binding(() => card.pinned);
                            card.pin();
                        }
                    }
                }

                Tool {
                    shown: card.active

                    sourceComponent: IconButton {
                        id: moreButton

                        glyph: "ellipsis"
                        text: qsTr("More for %1").arg(card.name)
                        focusPolicy: card.isCurrent ? Qt.StrongFocus : Qt.ClickFocus
                        onClicked: card.more(moreButton)
                    }
                }
            }

            GitLine {
                id: git

                anchors.left: parent.left
                anchors.leftMargin: Theme.space16
                anchors.right: parent.right
                anchors.rightMargin: Theme.space12
                anchors.top: tile.bottom
                anchors.topMargin: Theme.space10
                projectName: card.name
                repositories: card.gitRepositories
                branch: card.gitBranch
                changes: card.gitChanges
                unread: card.gitUnread
                ahead: card.gitAhead
                behind: card.gitBehind
                busy: card.gitBusy
                active: card.active
                reachable: card.isCurrent
                onChosen: action => card.git(action)
            }

            // Nothing runs: what is the case, in words.
            Row {
                anchors.left: parent.left
                anchors.leftMargin: Theme.space12
                anchors.verticalCenter: action.verticalCenter
                visible: card.services.length === 0 && card.cardState !== "failed"
                spacing: Theme.space6

                StatusDot {
                    anchors.verticalCenter: parent.verticalCenter
                    cardState: card.cardState
                }

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Small
                    color: card.cardState === "idle" ? Theme.text3 : Theme.warning
                    text: card.cardState === "installing" ? qsTr("Installing…") : card.cardState === "starting" ? qsTr("Starting…") : qsTr("Not running")
                }
            }

            Item {
                anchors.left: parent.left
                anchors.leftMargin: Theme.space16
                anchors.right: action.left
                anchors.rightMargin: Theme.space12
                anchors.verticalCenter: action.verticalCenter
                height: failure.implicitHeight
                visible: card.services.length === 0 && card.cardState === "failed"

                Icon {
                    id: alert

                    y: Theme.hairline
                    name: "circle-alert"
                    size: Theme.iconSmall
                    color: Theme.danger
                }

                Label {
                    id: failure

                    anchors.left: alert.right
                    anchors.leftMargin: Theme.space8
                    anchors.right: parent.right
                    role: Theme.Small
                    color: Theme.danger
                    wrapMode: Text.Wrap
                    maximumLineCount: 2
                    text: card.message

                    Tip {
                        text: failure.truncated ? card.message : ""
                    }
                }
            }

            Column {
                anchors.left: parent.left
                anchors.leftMargin: Theme.space12
                anchors.verticalCenter: action.verticalCenter
                visible: card.services.length > 0

                Repeater {
                    model: card.lineCount

                    ServiceLine {
                        required property int index

                        service: card.lines[index] ?? {}
                        alone: card.lines.length === 1
                        limit: action.x - Theme.space24 + Theme.space4
                        reachable: card.isCurrent
                        onOpened: key => card.open(key)
                    }
                }

                Label {
                    visible: card.lines.length > 2
                    leftPadding: Theme.space20
                    role: Theme.Small
                    color: Theme.text3
                    text: qsTr("%1 more").arg(card.lines.length - card.lineCount)
                }
            }

            RunButton {
                id: action

                anchors.right: parent.right
                anchors.rightMargin: Theme.space16
                anchors.bottom: parent.bottom
                anchors.bottomMargin: Theme.space16
                projectName: card.name
                action: card.defaultAction
                actions: card.actions
                busy: card.busy
                choosesDevice: card.isFlutter
                prominent: card.active
                reachable: card.isCurrent
                onStarted: card.run(card.defaultAction)
                onStopped: card.stop()
                onChoose: anchor => card.chooseAction(anchor)
            }
        }
    }
}
