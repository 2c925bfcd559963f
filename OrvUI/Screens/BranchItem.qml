import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A branch to switch to.
T.AbstractButton {
    id: item

    property int toldRole: Accessible.ListItem
    required property int index
    required property string name
    required property string upstream
    required property bool upstreamGone
    required property int ahead
    required property int behind
    required property bool remote
    required property bool current
    required property string worktree
    property bool highlighted: false
    // One that another branch may follow, instead of one to switch to.
    property bool following: false
    signal removed
    signal upstreamAsked
    readonly property string facts: worktree.length > 0 ? qsTr("in another folder") : upstreamGone ? qsTr("remote branch is gone") : ahead > 0 && behind > 0 ? qsTr("%1 ahead, %2 behind").arg(ahead).arg(behind) : ahead > 0 ? qsTr("%1 ahead").arg(ahead) : behind > 0 ? qsTr("%1 behind").arg(behind) : ""
    readonly property bool followable: !remote && !following
    readonly property bool removable: !remote && !current && worktree.length === 0

    implicitHeight: Theme.menuRowHeight
    enabled: worktree.length === 0 || following
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: name
    Accessible.description: current ? (following ? qsTr("is followed") : qsTr("the current branch")) : facts
    Accessible.selected: highlighted

    background: Rectangle {
        radius: Theme.radiusRow
        color: item.highlighted ? Theme.selection : item.hovered ? Theme.hover : "transparent"
    }

    contentItem: Item {
        Icon {
            x: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            visible: item.current || item.remote
            name: item.current ? "check" : "globe"
            size: Theme.iconSmall
            color: item.current ? Theme.text2 : Theme.text3
        }

        Label {
            id: title

            anchors.left: parent.left
            anchors.leftMargin: Theme.space32 + Theme.space2
            anchors.right: detail.left
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            color: item.enabled ? Theme.text : Theme.disabled
            text: item.name

            Tip {
                text: title.truncated ? title.text : ""
            }
        }

        Label {
            id: detail

            anchors.right: tools.left
            anchors.rightMargin: Theme.space6
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Small
            color: Theme.text3
            text: item.facts
        }

        Row {
            id: tools

            readonly property bool shown: item.hovered || item.highlighted

            anchors.right: parent.right
            anchors.rightMargin: Theme.space4
            anchors.verticalCenter: parent.verticalCenter

            IconButton {
                visible: item.followable && tools.shown
                focusPolicy: Qt.NoFocus
                edge: Theme.controlMini
                glyph: "globe"
                glyphSize: Theme.iconSmall
                text: item.upstream.length > 0 ? qsTr("%1 follows %2").arg(item.name).arg(item.upstream) : qsTr("Choose what %1 follows").arg(item.name)
                shortcut: item.highlighted ? qsTr("Right") : ""
                onClicked: item.upstreamAsked()
            }

            IconButton {
                visible: item.removable && tools.shown
                focusPolicy: Qt.NoFocus
                edge: Theme.controlMini
                glyph: "trash-2"
                glyphSize: Theme.iconSmall
                text: qsTr("Delete %1").arg(item.name)
                shortcut: item.highlighted ? qsTr("Del") : ""
                onClicked: item.removed()
            }
        }
    }
}
