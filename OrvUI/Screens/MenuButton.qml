import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A choice that opens a menu: what is chosen now, with a picture before it.
T.AbstractButton {
    id: control

    property int toldRole: Accessible.ButtonMenu
    // What the choice is of, for those who do not see it.
    required property string name
    // In the frame of a button, beside other ones.
    property bool framed: false
    property string glyph
    property alias badge: picture.sourceComponent

    // What is not words; a long choice ends in an ellipsis where there is no room for it.
    readonly property int besides: (framed ? 2 * Theme.space10 : Theme.space16) + chevron.width + row.spacing + (picture.status === Loader.Ready ? picture.width + row.spacing : 0) + (glyph.length > 0 ? symbol.width + row.spacing : 0)

    implicitWidth: besides + Math.ceil(label.implicitWidth)
    implicitHeight: framed ? Theme.controlRegular : Theme.controlSmall
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: qsTr("%1: %2").arg(name).arg(text)
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: Rectangle {
        radius: control.framed ? Theme.radiusControl : Theme.radiusRow
        color: control.framed ? "transparent" : control.pressed ? Theme.pressed : control.hovered ? Theme.hover : "transparent"

        ButtonFace {
            anchors.fill: parent
            visible: control.framed
            control: control
        }

        FocusRing {
            control: control
            shapeRadius: control.framed ? Theme.radiusControl : Theme.radiusRow
        }
    }

    contentItem: Item {
        Row {
            id: row

            anchors.centerIn: parent
            spacing: Theme.space6

            Loader {
                id: picture

                anchors.verticalCenter: parent.verticalCenter
                visible: status === Loader.Ready
            }

            Icon {
                id: symbol

                anchors.verticalCenter: parent.verticalCenter
                visible: control.glyph.length > 0
                name: control.glyph
                size: Theme.iconSmall
                color: Theme.text3
            }

            Label {
                id: label

                anchors.verticalCenter: parent.verticalCenter
                width: Math.max(0, Math.min(Math.ceil(implicitWidth), control.width - control.besides))
                role: control.framed ? Theme.BodyStrong : Theme.SmallStrong
                text: control.text
            }

            Icon {
                id: chevron

                anchors.verticalCenter: parent.verticalCenter
                name: "chevron-down"
                size: Theme.iconSmall
                color: Theme.text3
            }
        }
    }

    Tip {
        text: label.truncated ? control.text : ""
    }
}
