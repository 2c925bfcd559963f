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
    // With room for more words, and for the notice on a fill of its own.
    property bool wide: false
    readonly property int inset: wide ? Theme.space16 : Theme.space12 + Theme.space2
    readonly property int line: wide ? Theme.space12 : Theme.space16
    signal setUpAsked

    implicitHeight: notice.visible ? notice.y + notice.height + Theme.space12 : Theme.settingRowHeight
    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.description: status

    Rectangle {
        // Across the card, also beside what stands before the item.
        x: item.wide ? -item.x : 0
        visible: item.index > 0
        width: parent.width - x
        height: Theme.hairline
        color: Theme.border
    }

    AgentBadge {
        id: badge

        x: item.wide ? Theme.space12 : item.inset
        y: item.line
        letters: item.letters
    }

    Column {
        id: words

        anchors.left: badge.right
        anchors.leftMargin: item.wide ? Theme.space12 : Theme.space10
        anchors.right: right.left
        anchors.rightMargin: Theme.space8
        y: Theme.space12

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
    }

    Rectangle {
        id: notice

        x: badge.x
        y: Theme.settingRowHeight - (item.wide ? 0 : Theme.space4)
        width: parent.width - x - item.inset
        height: told.height + (item.wide ? Theme.space16 : 0)
        visible: item.notice.length > 0
        radius: Theme.radiusControl
        color: item.wide ? Theme.warningSoft : "transparent"

        Icon {
            x: item.wide ? Theme.space10 : 0
            y: told.y
            name: "triangle-alert"
            size: Theme.iconSmall
            color: Theme.warning
        }

        Label {
            id: told

            x: item.wide ? Theme.space32 : Theme.space20
            y: item.wide ? Theme.space8 : 0
            width: parent.width - x - (item.wide ? Theme.space12 : 0)
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
        anchors.rightMargin: item.inset
        y: item.line
        spacing: Theme.space8

        Pill {
            anchors.verticalCenter: parent.verticalCenter
            visible: item.isDefault && item.action !== "copyInstall"
            text: qsTr("Default")
            tint: Theme.accentText
            fill: Theme.accentSoft
        }

        Button {
            visible: item.action === "signIn" && (item.wide || !item.isDefault)
            ghost: !item.wide
            controlHeight: Theme.controlSmall
            text: qsTr("Sign in")
            onClicked: item.agents.signIn(item.index)
        }

        Button {
            visible: item.action === "copyInstall"
            controlHeight: Theme.controlSmall
            glyph: "copy"
            text: item.wide ? qsTr("Copy install command") : qsTr("Copy install")
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
