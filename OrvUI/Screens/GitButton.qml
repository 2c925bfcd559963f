import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Fetches, pulls or pushes: what it does, and how many commits that is about.
T.AbstractButton {
    id: control

    required property string glyph
    property int count: 0
    property bool busy: false
    property string shortcut

    implicitHeight: Theme.controlSmall
    implicitWidth: row.implicitWidth + Theme.space20
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: count > 0 ? (count === 1 ? qsTr("%1, %2 commit") : qsTr("%1, %2 commits")).arg(text).arg(count) : text
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: ButtonFace {
        control: control

        FocusRing {
            control: control
        }
    }

    contentItem: Item {
        Row {
            id: row

            anchors.centerIn: parent
            spacing: Theme.space6

            Item {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.iconSmall
                height: width

                Icon {
                    anchors.centerIn: parent
                    visible: !control.busy
                    name: control.glyph
                    size: Theme.iconSmall
                    color: control.enabled ? Theme.text2 : Theme.disabled
                }

                Loader {
                    anchors.centerIn: parent
                    active: control.busy

                    sourceComponent: Spinner {
                        size: Theme.iconSmall
                    }
                }
            }

            Label {
                role: Theme.SmallStrong
                color: control.enabled ? Theme.text : Theme.disabled
                text: control.text
            }

            Figures {
                visible: control.count > 0
                role: Theme.Small
                color: control.enabled ? Theme.text3 : Theme.disabled
                text: control.count
            }
        }
    }

    Tip {
        text: control.text
        shortcut: control.shortcut
    }
}
