import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// How the widget comes to the desktop. Only suggested where desktops have widgets.
Sheet {
    id: sheet

    required property AppModel model
    required property Navigator nav

    width: Math.min(Theme.howToWidth, parent.width - Theme.space32)
    visible: nav.sheet === "widgetsHowTo"
    closePolicy: T.Popup.NoAutoClose
    onTappedBeside: sheet.nav.closeSheet()
    onOpened: added.forceActiveFocus(Qt.PopupFocusReason)

    contentItem: FocusScope {
        property bool toldModal: sheet.modal

        implicitHeight: column.implicitHeight
        Accessible.role: Accessible.Dialog
        Accessible.name: title.text
        // What has the focus takes it first, where it is a button.
        Keys.onReturnPressed: added.clicked()
        Keys.onEnterPressed: added.clicked()

        Shortcut {
            sequences: [StandardKey.Cancel]
            enabled: sheet.listens
            onActivated: sheet.nav.closeSheet()
        }

        IconButton {
            anchors.right: parent.right
            anchors.rightMargin: Theme.space16 + Theme.space2
            y: Theme.space20
            glyph: "x"
            text: qsTr("Close")
            onClicked: sheet.nav.closeSheet()
        }

        Column {
            id: column

            width: parent.width
            topPadding: Theme.space24

            Label {
                id: title

                x: Theme.space24
                role: Theme.SheetTitle
                text: qsTr("Keep an eye on your servers")
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }

            Label {
                x: Theme.space24
                topPadding: Theme.space6
                color: Theme.text2
                text: qsTr("Add the Running Services widget to your desktop.")
            }

            Item {
                width: Theme.hairline
                height: Theme.space16
            }

            Rectangle {
                x: Theme.space24
                width: parent.width - 2 * x
                height: Theme.howToPicture
                radius: Theme.radiusCard
                color: Theme.sunken
                clip: true

                // As wide again as the picture is high; it ends before the corners.
                Glow {
                    anchors.centerIn: parent
                    width: 2 * parent.height
                    height: width
                    color: Theme.accentSoft
                }

                Illustration {
                    anchors.centerIn: parent
                    width: parent.height - Theme.space16
                    height: width
                    name: "widgets"
                }
            }

            Item {
                width: Theme.hairline
                height: Theme.space20
            }

            Repeater {
                model: [[qsTr("Open the widget gallery"), qsTr("Right-click the desktop and choose Edit Widgets.")], [qsTr("Find OrvLauncher"), qsTr("Type “Orv” in the search field of the gallery.")], [qsTr("Drag Running Services to the desktop"), qsTr("It lists what runs, with pins and open tasks.")]]

                Item {
                    id: step

                    required property int index
                    required property var modelData

                    width: column.width
                    height: Theme.space40 + Theme.space12 + Theme.space2
                    Accessible.role: Accessible.ListItem
                    Accessible.name: qsTr("%1. %2. %3").arg(index + 1).arg(modelData[0]).arg(modelData[1])

                    Rectangle {
                        x: Theme.space24
                        width: Theme.space24
                        height: width
                        radius: width / 2
                        color: Theme.selection

                        Label {
                            anchors.centerIn: parent
                            role: Theme.CaptionStrong
                            color: Theme.accentText
                            text: step.index + 1
                        }
                    }

                    Label {
                        x: Theme.space24 + Theme.space40 - Theme.space2
                        role: Theme.BodyStrong
                        text: step.modelData[0]
                    }

                    Label {
                        x: Theme.space24 + Theme.space40 - Theme.space2
                        y: Theme.space20
                        color: Theme.text2
                        text: step.modelData[1]
                    }
                }
            }

            Item {
                width: Theme.hairline
                height: Theme.space8
            }

            Rectangle {
                width: parent.width
                height: Theme.hairline
                color: Theme.border
            }

            Item {
                width: parent.width
                height: Theme.sheetFoot

                Row {
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space8

                    Button {
                        text: qsTr("Not now")
                        onClicked: sheet.nav.closeSheet()
                    }

                    Button {
                        id: added

                        primary: true
                        text: qsTr("I added it")
                        onClicked: {
                            sheet.model.suggestions.confirmWidgets();
                            sheet.nav.closeSheet();
                        }
                    }
                }
            }
        }
    }
}
