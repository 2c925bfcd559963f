import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A local address that opens in the browser. One on which nothing listens is marked.
T.AbstractButton {
    id: link

    property int toldRole: Accessible.Link
    property bool listening: true

    implicitWidth: row.implicitWidth
    implicitHeight: Theme.controlMini
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: qsTr("Open %1 in your browser").arg(text)
    Accessible.description: tip.text
    Keys.onReturnPressed: link.clicked()
    Keys.onEnterPressed: link.clicked()

    contentItem: Item {
        Row {
            id: row

            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space4

            Label {
                role: Theme.Mono
                color: link.listening ? Theme.text : Theme.warning
                text: link.text

                Rectangle {
                    anchors.bottom: parent.bottom
                    width: parent.width
                    height: Theme.hairline
                    visible: link.hovered
                    color: parent.color
                }
            }

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                name: link.listening ? "arrow-up-right" : "circle-alert"
                size: Theme.iconMini
                color: link.listening ? Theme.text3 : Theme.warning
            }
        }
    }

    background: Item {
        FocusRing {
            control: link
            shapeRadius: Theme.radiusKey
        }
    }

    Tip {
        id: tip

        text: link.listening ? "" : qsTr("The service named this address, but does not listen on it")
    }
}
