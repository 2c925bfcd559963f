import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The branch of a repository, which opens the choice of branches, and what is done with its remote.
Column {
    id: bar

    required property GitModel git
    property bool open: false
    signal chosen
    signal repositoryAsked(Item anchor)
    readonly property bool online: git.state === "ready" || git.state === "bare"
    readonly property string repositoryName: git.repository.slice(git.repository.lastIndexOf("/") + 1)

    spacing: Theme.space8

    MenuButton {
        id: choice

        visible: repositories.count > 1
        name: qsTr("Repository")
        glyph: "folder"
        text: bar.repositoryName
        onClicked: bar.repositoryAsked(choice)

        Instantiator {
            id: repositories

            model: bar.git.repositories
            delegate: QtObject {}
        }
    }

    T.AbstractButton {
        id: control

        property int toldRole: Accessible.ButtonMenu
        readonly property string place: bar.git.detached ? qsTr("No branch") : bar.git.branch

        width: parent.width
        implicitHeight: Theme.controlRegular
        enabled: bar.online
        focusPolicy: Qt.StrongFocus
        hoverEnabled: true
        Accessible.role: toldRole
        Accessible.name: qsTr("Branch %1").arg(place)
        Accessible.description: bar.git.upstream.length > 0 ? qsTr("follows %1, %2 ahead, %3 behind").arg(bar.git.upstream).arg(bar.git.ahead).arg(bar.git.behind) : qsTr("not published")
        Keys.onReturnPressed: bar.chosen()
        Keys.onEnterPressed: bar.chosen()
        Keys.onDownPressed: bar.chosen()
        onClicked: bar.chosen()

        background: ButtonFace {
            control: control

            FocusRing {
                control: control
                visible: bar.open || (control.activeFocus && InputMode.keyboard)
            }
        }

        contentItem: Item {
            Icon {
                id: glyph

                x: Theme.space10
                anchors.verticalCenter: parent.verticalCenter
                name: "git-branch"
                size: Theme.iconSmall
                color: Theme.text2
            }

            Label {
                id: name

                anchors.left: glyph.right
                anchors.leftMargin: Theme.space6
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, parent.width - x - counts.width - Theme.space40)
                role: Theme.Section
                text: control.place

                Tip {
                    text: name.truncated ? name.text : ""
                }
            }

            Row {
                id: counts

                anchors.left: name.right
                anchors.leftMargin: Theme.space10
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space6

                GitCount {
                    glyph: "arrow-up"
                    count: bar.git.ahead
                }

                GitCount {
                    glyph: "arrow-down"
                    count: bar.git.behind
                }
            }

            Label {
                anchors.left: counts.right
                anchors.leftMargin: Theme.space10
                anchors.right: chevrons.left
                anchors.rightMargin: Theme.space8
                anchors.verticalCenter: parent.verticalCenter
                visible: width > Theme.space40
                horizontalAlignment: Text.AlignRight
                elide: Text.ElideMiddle
                role: Theme.Small
                color: Theme.text3
                text: bar.git.detached || !bar.online ? "" : bar.git.upstream.length > 0 ? bar.git.upstream : qsTr("not published")
            }

            Icon {
                id: chevrons

                anchors.right: parent.right
                anchors.rightMargin: Theme.space8
                anchors.verticalCenter: parent.verticalCenter
                name: "chevrons-up-down"
                size: Theme.iconSmall
                color: Theme.text2
            }
        }
    }

    Row {
        id: remote

        readonly property real part: (width - 2 * spacing) / 3

        width: parent.width
        spacing: Theme.space6

        GitButton {
            width: remote.part
            enabled: bar.online && !bar.git.isBusy
            busy: bar.git.busyWith === "fetch"
            glyph: "refresh-cw"
            text: qsTr("Fetch")
            shortcut: Keymap.text("fetch")
            onClicked: bar.git.fetch()
        }

        GitButton {
            width: remote.part
            enabled: bar.git.state === "ready" && !bar.git.isBusy
            busy: bar.git.busyWith === "pull"
            glyph: "arrow-down-to-line"
            text: qsTr("Pull")
            count: bar.git.behind
            shortcut: Keymap.text("pull")
            onClicked: bar.git.pull()
        }

        GitButton {
            width: remote.part
            enabled: bar.git.state === "ready" && bar.git.hasCommits && !bar.git.isBusy
            busy: bar.git.busyWith === "push"
            glyph: "arrow-up-from-line"
            text: bar.git.upstream.length > 0 || bar.git.detached ? qsTr("Push") : qsTr("Publish")
            count: bar.git.ahead
            shortcut: Keymap.text("push")
            onClicked: bar.git.push()
        }
    }
}
