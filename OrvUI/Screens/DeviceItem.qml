import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A device to run on.
T.AbstractButton {
    id: row

    property int toldRole: Accessible.RadioButton
    required property int index
    required property string key
    required property string title
    required property string detail
    required property string glyph
    required property bool isBooted
    property bool isCurrent: false

    implicitHeight: Theme.deviceRowHeight
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    text: row.title
    Accessible.role: toldRole
    Accessible.name: row.title
    Accessible.description: isBooted ? qsTr("%1, booted").arg(detail) : detail
    Accessible.checkable: true
    Accessible.checked: isCurrent

    background: Rectangle {
        radius: Theme.radiusControl
        color: row.isCurrent ? Theme.selection : row.hovered ? Theme.hover : "transparent"
    }

    contentItem: Item {
        Rectangle {
            id: box

            x: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            width: Theme.space32
            height: width
            radius: Theme.radiusControl
            color: row.isCurrent ? "transparent" : Theme.control

            Icon {
                anchors.centerIn: parent
                name: row.glyph
                color: row.isCurrent ? Theme.accentText : Theme.text2
            }
        }

        Label {
            id: words

            anchors.left: box.right
            anchors.leftMargin: Theme.space10
            anchors.right: marks.left
            anchors.rightMargin: Theme.space8
            y: Theme.space4
            role: Theme.BodyStrong
            elide: Text.ElideMiddle
            text: row.title

            Tip {
                text: words.truncated ? words.text : ""
            }
        }

        Label {
            anchors.left: words.left
            anchors.top: words.bottom
            role: Theme.CaptionPlain
            color: Theme.text3
            text: row.detail
        }

        Row {
            id: marks

            anchors.right: parent.right
            anchors.rightMargin: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space10

            StatePill {
                anchors.verticalCenter: parent.verticalCenter
                visible: row.isBooted
                serviceState: "running"
                tint: Theme.success
                fill: Theme.successSoft
                text: qsTr("Booted")
            }

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: row.isCurrent
                name: "check"
                color: Theme.accentText
            }
        }
    }
}
