import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Who uses the application; opens the settings.
T.AbstractButton {
    id: row

    required property string name
    property bool rail: false
    property bool selected: false
    // Of the avatar; empty: the accent.
    property string color

    implicitHeight: Theme.pinnedItemHeight
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    text: qsTr("Profile and settings")
    Accessible.role: Accessible.Button
    Accessible.name: text
    Keys.onReturnPressed: row.clicked()
    Keys.onEnterPressed: row.clicked()

    background: Rectangle {
        radius: Theme.radiusControl
        color: row.selected ? Theme.selection : row.pressed ? Theme.pressed : row.hovered ? Theme.hover : "transparent"

        FocusRing {
            control: row
            inside: true
        }
    }

    contentItem: Item {
        Rectangle {
            id: avatar

            x: row.rail ? Math.round((row.width - width) / 2) : Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            width: row.rail ? Theme.controlRegular : Theme.avatar
            height: width
            radius: width / 2
            color: row.color.length > 0 ? row.color : Theme.accent

            Label {
                anchors.centerIn: parent
                role: Theme.SmallStrong
                color: row.color.length > 0 ? Theme.onFill(row.color) : Theme.onAccent
                text: row.name.charAt(0).toUpperCase()
            }
        }

        Column {
            anchors.left: avatar.right
            anchors.leftMargin: Theme.space10
            anchors.right: gear.left
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            visible: !row.rail

            Label {
                width: parent.width
                role: Theme.SmallStrong
                text: row.name
            }

            Label {
                width: parent.width
                role: Theme.CaptionPlain
                color: Theme.text3
                text: row.text
            }
        }

        Icon {
            id: gear

            anchors.right: parent.right
            anchors.rightMargin: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            visible: !row.rail
            name: "settings"
            color: row.hovered ? Theme.text : Theme.text2
        }
    }

    Tip {
        text: row.rail ? row.text : ""
    }
}
