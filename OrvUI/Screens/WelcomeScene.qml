import OrvLauncher.Screens
import QtQuick

// The picture beside a page of the first start, which shows what the page's answer does.
Item {
    id: scene

    required property AppModel model
    required property OnboardingModel form
    readonly property var pictures: [start, greeting, found, commit, look, agent, notice]

    Glow {
        anchors.centerIn: parent
        width: Math.min(Theme.orbitOuter, scene.width)
        height: width
        color: Theme.accentSoft
    }

    Loader {
        id: picture

        anchors.fill: parent
        sourceComponent: scene.pictures[scene.form.step]
        onLoaded: arrival.restart()

        NumberAnimation on opacity {
            id: arrival

            running: false
            from: 0
            to: 1
            duration: Theme.durationSheet
        }
    }

    component Orbit: Rectangle {
        anchors.centerIn: parent
        height: width
        radius: width / 2
        color: "transparent"
        border.width: Theme.hairline
        border.color: Theme.borderStrong
        opacity: 0.7
    }

    // A card of the scene, as wide as there is room.
    component SceneCard: CardFace {
        anchors.centerIn: parent
        width: Math.min(Theme.sceneWidth, scene.width - 2 * Theme.space40)
    }

    Component {
        id: start

        Item {
            id: sky

            readonly property real scaling: Math.min(1, (Math.min(width, height) - Theme.space40) / Theme.orbitOuter)

            Item {
                anchors.centerIn: parent
                width: Theme.orbitOuter
                height: width
                scale: sky.scaling
                Accessible.ignored: true

                // The outer orbit is of dots.
                Repeater {
                    model: Math.round(Math.PI * Theme.orbitOuter / Theme.space8)

                    Rectangle {
                        required property int index
                        readonly property real angle: 2 * index * Theme.space8 / Theme.orbitOuter

                        x: Theme.orbitOuter / 2 * (1 + Math.cos(angle)) - width / 2
                        y: Theme.orbitOuter / 2 * (1 + Math.sin(angle)) - height / 2
                        width: Theme.space2
                        height: width
                        radius: width / 2
                        color: Theme.borderStrong
                        opacity: 0.7
                    }
                }

                Orbit {
                    width: Theme.orbitMiddle
                }

                Orbit {
                    width: Theme.orbitInner
                }

                Illustration {
                    anchors.centerIn: parent
                    width: Theme.sceneMark + Theme.tileLarge
                    height: width
                    name: "app-icon"
                }

                Repeater {
                    // The colour of a tile, its letter, which way it lies and how far out.
                    model: [[5, "S", 220, Theme.orbitMiddle], [1, "A", 325, Theme.orbitMiddle], [3, "F", 170, Theme.orbitMiddle], [0, "P", 30, Theme.orbitMiddle], [7, "B", 92, Theme.orbitMiddle], [6, "D", 268, Theme.orbitOuter], [0, "H", 130, Theme.orbitOuter]]

                    Rectangle {
                        id: body

                        required property var modelData
                        readonly property real angle: modelData[2] * Math.PI / 180

                        x: Math.round(Theme.orbitOuter / 2 + Math.cos(angle) * modelData[3] / 2 - width / 2)
                        y: Math.round(Theme.orbitOuter / 2 + Math.sin(angle) * modelData[3] / 2 - height / 2)
                        width: tile.width + Theme.space12
                        height: width
                        radius: Theme.radiusSheet
                        color: Theme.sidebar

                        Tile {
                            id: tile

                            anchors.centerIn: parent
                            size: body.modelData[3] === Theme.orbitOuter ? Theme.tile : Theme.tileLarge
                            tileIndex: body.modelData[0]
                            tileLetter: body.modelData[1]
                        }
                    }
                }
            }
        }
    }

    Component {
        id: greeting

        Item {
            SceneCard {
                height: words.height + 2 * Theme.space24

                Rectangle {
                    id: avatar

                    x: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter
                    width: Theme.headerTile
                    height: width
                    radius: width / 2
                    color: Theme.accent

                    Label {
                        anchors.centerIn: parent
                        role: Theme.SheetTitle
                        color: Theme.onAccent
                        text: scene.form.name.trim().charAt(0).toUpperCase()
                    }
                }

                Column {
                    id: words

                    anchors.left: avatar.right
                    anchors.leftMargin: Theme.space16
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter

                    Label {
                        width: parent.width
                        role: Theme.Title
                        text: scene.form.name.trim().length > 0 ? qsTr("Good to see you, %1").arg(scene.form.name.trim()) : qsTr("Good to see you")
                    }

                    Label {
                        color: Theme.text2
                        text: qsTr("3 services running · 5 open tasks")
                    }
                }
            }
        }
    }

    Component {
        id: found

        Item {
            Column {
                anchors.centerIn: parent
                width: Math.min(Theme.sceneWidth, scene.width - 2 * Theme.space40)
                spacing: Theme.space10
                Accessible.role: Accessible.List
                Accessible.name: qsTr("Found projects")

                Repeater {
                    id: list

                    model: scene.form.found

                    CardFace {
                        id: card

                        required property string name
                        required property string stackLine
                        required property int tileIndex
                        required property string tileLetter

                        width: parent?.width ?? 0
                        height: Theme.panelRowHeight
                        Accessible.role: Accessible.ListItem
                        Accessible.name: card.name
                        Accessible.description: card.stackLine

                        Tile {
                            id: tile

                            x: Theme.space12 + Theme.space2
                            anchors.verticalCenter: parent.verticalCenter
                            size: Theme.tileSmall
                            tileIndex: card.tileIndex
                            tileLetter: card.tileLetter
                        }

                        Label {
                            id: words

                            anchors.left: tile.right
                            anchors.leftMargin: Theme.space12
                            anchors.verticalCenter: parent.verticalCenter
                            width: Math.min(implicitWidth, card.width / 2)
                            role: Theme.BodyStrong
                            text: card.name
                        }

                        Label {
                            anchors.left: words.right
                            anchors.leftMargin: Theme.space12
                            anchors.right: check.left
                            anchors.rightMargin: Theme.space8
                            anchors.verticalCenter: parent.verticalCenter
                            role: Theme.Small
                            color: Theme.text3
                            text: card.stackLine
                        }

                        Icon {
                            id: check

                            anchors.right: parent.right
                            anchors.rightMargin: Theme.space12 + Theme.space2
                            anchors.verticalCenter: parent.verticalCenter
                            name: "check"
                            color: Theme.success
                        }
                    }
                }

                Label {
                    width: parent.width
                    horizontalAlignment: Text.AlignHCenter
                    visible: scene.form.detectedCount > list.count
                    role: Theme.Small
                    color: Theme.text3
                    text: qsTr("%1 more").arg(scene.form.detectedCount - list.count)
                }

                Illustration {
                    anchors.horizontalCenter: parent.horizontalCenter
                    visible: list.count === 0
                    name: "no-projects"
                }
            }
        }
    }

    Component {
        id: commit

        Item {
            SceneCard {
                height: lines.height + 2 * Theme.space20

                Column {
                    id: lines

                    x: Theme.space20
                    width: parent.width - 2 * x
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space6

                    Label {
                        width: parent.width
                        role: Theme.CardTitle
                        text: qsTr("Add pagination to the order list")
                    }

                    Label {
                        width: parent.width
                        role: Theme.Mono
                        color: Theme.text3
                        text: "4f1c2ab · main"
                    }

                    Label {
                        width: parent.width
                        color: Theme.text2
                        text: scene.form.gitName.trim().length > 0 ? scene.form.gitName.trim() : qsTr("Your name")
                    }

                    Label {
                        width: parent.width
                        role: Theme.Mono
                        color: Theme.text2
                        text: scene.form.gitEmail.trim().length > 0 ? scene.form.gitEmail.trim() : "you@example.org"
                    }
                }
            }
        }
    }

    Component {
        id: look

        Item {
            SceneWindow {
                anchors.centerIn: parent
                scale: Math.max(0, Math.min(1, (scene.width - 2 * Theme.space40) / width))
                model: scene.model
            }
        }
    }

    Component {
        id: agent

        Item {
            SceneCard {
                height: steps.height + 2 * Theme.space20

                Column {
                    id: steps

                    x: Theme.space20
                    width: parent.width - 2 * x
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space12

                    Label {
                        width: parent.width
                        role: Theme.CardTitle
                        text: qsTr("Fix the flaky pagination test")
                    }

                    Repeater {
                        model: [["eye", qsTr("Reads the tests")], ["file-pen-line", qsTr("Changes 2 files")], ["circle-check", qsTr("Runs the tests, all pass")]].slice(0, scene.form.autonomy + 1)

                        Row {
                            id: step

                            required property var modelData

                            spacing: Theme.space10

                            Icon {
                                anchors.verticalCenter: parent.verticalCenter
                                name: step.modelData[0]
                                color: Theme.accentText
                            }

                            Label {
                                anchors.verticalCenter: parent.verticalCenter
                                color: Theme.text2
                                text: step.modelData[1]
                            }
                        }
                    }
                }
            }
        }
    }

    Component {
        id: notice

        Item {
            SceneCard {
                height: Theme.fieldLarge + Theme.fieldLarge
                opacity: scene.form.notifications ? 1 : 0.5

                Behavior on opacity {
                    NumberAnimation {
                        duration: Theme.durationFast
                    }
                }

                Illustration {
                    id: mark

                    x: Theme.space16
                    anchors.verticalCenter: parent.verticalCenter
                    width: Theme.tileLarge
                    height: width
                    name: "app-icon"
                }

                Column {
                    anchors.left: mark.right
                    anchors.leftMargin: Theme.space16
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space16
                    anchors.verticalCenter: parent.verticalCenter

                    Label {
                        width: parent.width
                        role: Theme.CardTitle
                        text: qsTr("shop is ready")
                    }

                    Label {
                        width: parent.width
                        color: Theme.text2
                        text: "localhost:3000"
                    }
                }
            }
        }
    }
}
