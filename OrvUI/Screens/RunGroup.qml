import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// What can be run of a project, side by side in one frame: a play sign for what would start, a dot for what runs.
Row {
    id: group

    required property var actions
    required property string projectName
    signal chosen(var action)

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Run in %1").arg(projectName)

    Repeater {
        model: group.actions

        T.AbstractButton {
            id: part

            required property var modelData
            required property int index
            readonly property bool idle: modelData.state === "idle"

            // Whole pixels, or the lines between the parts get lost.
            implicitWidth: Math.ceil(row.implicitWidth) + 2 * Theme.space12
            implicitHeight: Theme.controlRegular
            // The ring stands over the neighbours.
            z: activeFocus ? 1 : 0
            focusPolicy: Qt.StrongFocus
            hoverEnabled: true
            text: idle ? qsTr("Run %1 in %2").arg(RunWords.of(modelData.label)).arg(group.projectName) : modelData.label === "Both" ? qsTr("Stop frontend and backend of %1").arg(group.projectName) : qsTr("Stop %1 of %2").arg(RunWords.of(modelData.label)).arg(group.projectName)
            Accessible.role: Accessible.Button
            Accessible.name: text
            Keys.onReturnPressed: part.clicked()
            Keys.onEnterPressed: part.clicked()
            onClicked: group.chosen(modelData)

            background: ButtonFace {
                control: part
                joinedLeft: part.index > 0
                joinedRight: part.index < group.actions.length - 1

                Rectangle {
                    visible: part.index > 0
                    y: Theme.hairline
                    width: Theme.hairline
                    height: parent.height - 2 * Theme.hairline
                    color: Qt.tint(Theme.control, Theme.buttonEdge)
                }

                FocusRing {
                    control: part
                }
            }

            contentItem: Item {
                Row {
                    id: row

                    anchors.centerIn: parent
                    spacing: Theme.space6

                    StatusDot {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: !part.idle
                        width: Theme.dot
                        height: Theme.dot
                        halo: true
                        cardState: part.modelData.state
                    }

                    Icon {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: part.idle
                        name: "own-play-fill"
                        size: Theme.iconMini
                        color: Theme.accentText
                    }

                    Label {
                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.BodyStrong
                        text: RunWords.of(part.modelData.label)
                    }
                }
            }

            Tip {
                text: part.idle ? "" : part.text
            }
        }
    }
}
