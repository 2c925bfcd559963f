import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The way from the home page to this one. All but the last lead back.
Row {
    id: trail

    required property var crumbs
    signal chosen(int index)

    spacing: Theme.crumbGap
    // Else the ring of the focus would be cut.
    clip: implicitWidth > width
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Way to this page")

    Repeater {
        model: trail.crumbs

        Row {
            id: part

            required property var modelData
            required property int index
            readonly property bool isLast: index === trail.crumbs.length - 1

            spacing: Theme.crumbGap

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: part.index > 0
                name: "chevron-right"
                size: Theme.iconSmall
                color: Theme.text3
            }

            T.AbstractButton {
                id: crumb

                property int toldRole: part.isLast ? Accessible.Heading : Accessible.Link

                enabled: !part.isLast
                implicitWidth: label.implicitWidth
                implicitHeight: Theme.controlMini
                focusPolicy: part.isLast ? Qt.NoFocus : Qt.StrongFocus
                hoverEnabled: true
                text: part.modelData.title
                Accessible.role: toldRole
                Accessible.name: text
                Keys.onReturnPressed: crumb.clicked()
                Keys.onEnterPressed: crumb.clicked()
                onClicked: trail.chosen(part.index)

                background: Item {
                    FocusRing {
                        control: crumb
                        shapeRadius: Theme.radiusKey
                    }
                }

                contentItem: Item {
                    Label {
                        id: label

                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.BodyStrong
                        color: part.isLast || crumb.hovered ? Theme.text : Theme.text2
                        text: crumb.text
                    }
                }
            }
        }
    }
}
