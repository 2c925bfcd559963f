import OrvLauncher.Screens
import QtQuick

// The application's window made small, in the colours that were chosen. Laid out at one size: who shows it scales it.
Rectangle {
    id: small

    required property AppModel model

    width: Theme.sceneWindowWidth
    height: Theme.sceneWindowHeight
    radius: Theme.radiusCard
    color: Theme.sidebar
    border.width: Theme.hairline
    border.color: Theme.borderStrong
    Accessible.ignored: true

    // A word of the small window, drawn so that it stays sharp when the window is scaled.
    component SmallLabel: Label {
        renderType: Text.QtRendering
    }

    Shadow {
        anchors.fill: parent
        z: -1
        level: 4
        radius: parent.radius
    }

    Column {
        id: rows

        x: Theme.space6 + Theme.hairline
        y: Theme.space28
        width: Theme.sceneSidebar - 2 * x

        Repeater {
            model: small.model.sidebarFilters

            // (A row has an `icon` of its own kind.)
            Rectangle {
                id: row

                required property int index
                required property string title
                required property string icon

                width: rows.width
                height: Theme.space20
                radius: Theme.space6
                color: index === 0 ? Theme.selection : "transparent"

                Icon {
                    id: sign

                    x: Theme.space6
                    anchors.verticalCenter: parent.verticalCenter
                    name: row.icon
                    size: Theme.iconTiny
                    color: row.index === 0 ? Theme.accentText : Theme.text2
                }

                SmallLabel {
                    anchors.left: sign.right
                    anchors.leftMargin: Theme.space4 + Theme.hairline
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space4
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.MiniStrong
                    color: row.index === 0 ? Theme.text : Theme.text2
                    text: row.title
                }
            }
        }
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.space6
        anchors.leftMargin: Theme.sceneSidebar
        radius: Theme.radiusControl
        color: Theme.window
        border.width: Theme.hairline
        border.color: Theme.border

        SmallLabel {
            id: hello

            x: Theme.space16 + Theme.space2
            y: Theme.space16
            width: parent.width - 2 * x
            role: Theme.Heading
            text: small.model.greeting
        }

        SmallLabel {
            id: summary

            anchors.left: hello.left
            anchors.right: hello.right
            anchors.top: hello.bottom
            role: Theme.Mini
            color: Theme.text2
            text: qsTr("3 services running")
        }

        Grid {
            id: cards

            x: hello.x
            anchors.top: summary.bottom
            anchors.topMargin: Theme.space16
            width: parent.width - 2 * x
            columns: 2
            spacing: Theme.space10

            Repeater {
                model: [[5, "S", "shop", "Next.js + FastAPI", true, ""], [1, "A", "atlas-api", "FastAPI", false, qsTr("Backend")], [3, "F", "field-notes", "Django", true, ""], [0, "P", "pocket-flutter", "Flutter", false, qsTr("Flutter")]]

                Rectangle {
                    id: mini

                    required property var modelData
                    readonly property bool isRunning: modelData[4]

                    width: Math.floor((cards.width - cards.spacing) / 2)
                    height: Theme.sceneCardHeight
                    radius: Theme.radiusControl
                    color: Theme.surface
                    border.width: Theme.hairline
                    border.color: Theme.border

                    Tile {
                        id: letter

                        x: Theme.space12
                        y: Theme.space12
                        size: Theme.swatchSize + Theme.space2
                        tileIndex: mini.modelData[0]
                        tileLetter: mini.modelData[1]
                    }

                    Column {
                        anchors.left: letter.right
                        anchors.leftMargin: Theme.space8
                        anchors.right: parent.right
                        anchors.verticalCenter: letter.verticalCenter

                        SmallLabel {
                            width: parent.width
                            role: Theme.MiniStrong
                            text: mini.modelData[2]
                        }

                        SmallLabel {
                            width: parent.width
                            role: Theme.Mini
                            color: Theme.text3
                            text: mini.modelData[3]
                        }
                    }

                    StatusDot {
                        id: dot

                        x: Theme.space12
                        anchors.verticalCenter: action.verticalCenter
                        width: size
                        height: size
                        size: Theme.dotSmall
                        cardState: mini.isRunning ? "running" : "idle"
                    }

                    SmallLabel {
                        anchors.left: dot.right
                        anchors.leftMargin: Theme.space4
                        anchors.right: action.left
                        anchors.rightMargin: Theme.space4
                        anchors.verticalCenter: dot.verticalCenter
                        role: Theme.Mini
                        color: Theme.text3
                        text: mini.isRunning ? qsTr("Running") : qsTr("Not running")
                    }

                    Rectangle {
                        id: action

                        anchors.right: parent.right
                        anchors.bottom: parent.bottom
                        anchors.margins: Theme.space12
                        width: Math.ceil(doing.width) + Theme.space12
                        height: Theme.space20
                        radius: Theme.space6
                        color: Theme.control
                        border.width: Theme.hairline
                        border.color: Qt.tint(Theme.control, Theme.buttonEdge)

                        Row {
                            id: doing

                            anchors.centerIn: parent
                            spacing: Theme.space4

                            Icon {
                                anchors.verticalCenter: parent.verticalCenter
                                name: mini.isRunning ? "own-stop-fill" : "own-play-fill"
                                size: Theme.sceneIcon
                                color: mini.isRunning ? Theme.text2 : Theme.accentText
                            }

                            SmallLabel {
                                anchors.verticalCenter: parent.verticalCenter
                                role: Theme.Mini
                                text: mini.isRunning ? qsTr("Stop") : mini.modelData[5]
                            }
                        }
                    }
                }
            }
        }
    }
}
