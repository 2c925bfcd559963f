import OrvLauncher.Screens
import QtQuick

// An agent: whether this machine has it, and what the user can do about that.
Item {
    id: item

    required property AgentModels agents
    required property int index
    required property string name
    required property string letters
    required property string status
    required property string notice
    required property string installHint
    required property string action
    required property bool isInstalled
    required property bool isDefault
    signal setUpAsked

    implicitHeight: Math.max(Theme.settingRowHeight, words.implicitHeight + Theme.space20)
    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.description: status

    Rectangle {
        visible: item.index > 0
        width: parent.width
        height: Theme.hairline
        color: Theme.border
    }

    AgentBadge {
        id: badge

        x: Theme.space12
        y: Theme.space16
        letters: item.letters
    }

    Column {
        id: words

        anchors.left: badge.right
        anchors.leftMargin: Theme.space10
        anchors.right: right.left
        anchors.rightMargin: Theme.space8
        y: Theme.space10

        Label {
            width: parent.width
            role: Theme.BodyStrong
            text: item.name
        }

        Row {
            width: parent.width
            spacing: Theme.space4

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: item.isInstalled
                name: "check"
                size: Theme.iconSmall
                color: Theme.success
            }

            Label {
                width: Math.min(implicitWidth, words.width - (item.isInstalled ? Theme.iconSmall + Theme.space4 : 0))
                role: Theme.Small
                color: Theme.text3
                text: item.status
            }
        }

        Label {
            // Below the button there is room.
            width: item.width - words.x - Theme.space12
            visible: text.length > 0
            topPadding: Theme.space4
            role: Theme.Small
            color: Theme.text2
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            text: item.notice
        }
    }

    Row {
        id: right

        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        y: Theme.space16
        spacing: Theme.space8

        Pill {
            anchors.verticalCenter: parent.verticalCenter
            visible: item.isDefault && item.action !== "copyInstall"
            text: qsTr("Default")
            tint: Theme.accentText
            fill: Theme.accentSoft
        }

        Button {
            visible: item.action === "signIn"
            ghost: true
            controlHeight: Theme.controlSmall
            text: qsTr("Sign in")
            onClicked: item.agents.signIn(item.index)
        }

        Button {
            visible: item.action === "copyInstall"
            controlHeight: Theme.controlSmall
            glyph: "copy"
            text: qsTr("Copy install")
            onClicked: Clipboard.copy(item.installHint)
        }

        Button {
            visible: item.action === "setUp"
            ghost: true
            controlHeight: Theme.controlSmall
            text: qsTr("Set up")
            onClicked: item.setUpAsked()
        }
    }
}
