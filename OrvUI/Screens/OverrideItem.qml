import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A service of the settings' list, and below it, when open, what can be corrected.
Item {
    id: entry

    required property int index
    required property string key
    required property string project
    required property string kindLabel
    required property string framework
    required property string folder
    required property int tileIndex
    required property string tileLetter
    required property bool isChanged
    required property string command
    required property string detectedCommand
    required property string port
    required property int kind
    property bool open: false
    property string error
    signal toggled
    signal saved(string command, string port, int kind)
    signal resetRequested

    implicitHeight: head.height + (open ? editor.height : 0)
    clip: true
    onOpenChanged: error = ""

    Rectangle {
        visible: entry.index > 0
        width: parent.width
        height: Theme.hairline
        color: Theme.border
    }

    T.AbstractButton {
        id: head

        width: parent.width
        height: Theme.serviceItemHeight
        focusPolicy: Qt.StrongFocus
        hoverEnabled: true
        text: entry.framework.length > 0 ? qsTr("%1, %2, %3").arg(entry.project).arg(entry.kindLabel).arg(entry.framework) : qsTr("%1, %2").arg(entry.project).arg(entry.kindLabel)
        Accessible.role: Accessible.Button
        Accessible.name: text
        Accessible.description: entry.isChanged ? qsTr("changed") : ""
        Accessible.checkable: true
        Accessible.checked: entry.open
        Keys.onReturnPressed: head.clicked()
        Keys.onEnterPressed: head.clicked()
        onClicked: entry.toggled()

        background: Rectangle {
            radius: Theme.radiusCard
            color: head.hovered && !entry.open ? Theme.hover : "transparent"

            FocusRing {
                control: head
                inside: true
                shapeRadius: Theme.radiusCard
            }
        }

        contentItem: Item {
            Tile {
                id: tile

                x: Theme.space16
                anchors.verticalCenter: parent.verticalCenter
                size: Theme.tileSmall
                tileIndex: entry.tileIndex
                tileLetter: entry.tileLetter
            }

            Row {
                id: names

                anchors.left: tile.right
                anchors.leftMargin: Theme.space12
                anchors.right: marks.left
                anchors.rightMargin: Theme.space12
                y: Theme.space8 + Theme.hairline
                spacing: Theme.space4

                Label {
                    id: project

                    width: Math.min(implicitWidth, names.width / 2)
                    role: Theme.BodyStrong
                    elide: Text.ElideMiddle
                    text: entry.project

                    Tip {
                        text: project.truncated ? project.text : ""
                    }
                }

                Label {
                    id: title

                    width: Math.max(0, Math.min(implicitWidth, names.width - x))
                    color: Theme.text2
                    elide: Text.ElideMiddle
                    text: entry.kindLabel

                    Tip {
                        text: title.truncated ? title.text : ""
                    }
                }
            }

            Label {
                id: place

                anchors.left: names.left
                anchors.right: names.right
                anchors.top: names.bottom
                role: Theme.Small
                color: Theme.text3
                elide: Text.ElideMiddle
                text: (entry.framework.length > 0 ? entry.framework : entry.kindLabel) + (entry.folder.length > 0 ? " · " + entry.folder : "")

                Tip {
                    text: place.truncated ? place.text : ""
                }
            }

            Row {
                id: marks

                anchors.right: parent.right
                anchors.rightMargin: Theme.space16
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space16

                Pill {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: entry.isChanged
                    text: qsTr("Changed")
                    tint: Theme.accentText
                    fill: Theme.accentSoft
                }

                Icon {
                    anchors.verticalCenter: parent.verticalCenter
                    name: entry.open ? "chevron-up" : "chevron-down"
                    color: Theme.text2
                }
            }
        }
    }

    Loader {
        id: editor

        x: Theme.space16 + Theme.tileSmall + Theme.space12
        width: entry.width - x - Theme.space16
        anchors.top: head.bottom
        active: entry.open

        sourceComponent: Column {
            id: fields

            property int kind: entry.kind

            spacing: Theme.space12
            bottomPadding: Theme.space16

            Row {
                width: parent.width
                spacing: Theme.space12

                Column {
                    width: parent.width - ports.width - parent.spacing
                    spacing: Theme.space6

                    Label {
                        role: Theme.SmallStrong
                        color: Theme.text2
                        text: qsTr("Command")
                    }

                    Field {
                        id: command

                        width: parent.width
                        code: true
                        focus: true
                        placeholderText: entry.detectedCommand.length > 0 ? entry.detectedCommand : qsTr("The detected command")
                        text: entry.command
                        onAccepted: entry.saved(text, port.text, fields.kind)
                    }

                    Label {
                        role: Theme.Small
                        color: Theme.text3
                        text: qsTr("The detected command runs when this is empty.")
                    }
                }

                Column {
                    id: ports

                    width: Theme.portFieldWidth
                    spacing: Theme.space6

                    Label {
                        role: Theme.SmallStrong
                        color: Theme.text2
                        text: qsTr("Port")
                    }

                    Field {
                        id: port

                        width: parent.width
                        placeholderText: qsTr("None")
                        text: entry.port
                        inputMethodHints: Qt.ImhDigitsOnly
                        onAccepted: entry.saved(command.text, text, fields.kind)
                    }
                }
            }

            Label {
                visible: entry.error.length > 0
                role: Theme.Small
                color: Theme.danger
                text: entry.error
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }

            Column {
                width: parent.width
                spacing: Theme.space6

                Label {
                    role: Theme.SmallStrong
                    color: Theme.text2
                    text: qsTr("Kind")
                }

                Item {
                    width: parent.width
                    height: kinds.height

                    Segmented {
                        id: kinds

                        name: qsTr("Kind")
                        currentIndex: fields.kind
                        choices: [
                            {
                                "text": qsTr("Frontend")
                            },
                            {
                                "text": qsTr("Backend")
                            },
                            {
                                "text": qsTr("Flutter")
                            },
                            {
                                "text": qsTr("Docker")
                            },
                            {
                                "text": qsTr("App")
                            }
                        ]
                        onChosen: index => fields.kind = index
                    }

                    Row {
                        anchors.right: parent.right
                        spacing: Theme.space8

                        Button {
                            ghost: true
                            enabled: entry.isChanged
                            text: qsTr("Reset")
                            onClicked: entry.resetRequested()
                        }

                        Button {
                            primary: true
                            text: qsTr("Save")
                            onClicked: entry.saved(command.text, port.text, fields.kind)
                        }
                    }
                }
            }
        }
    }
}
