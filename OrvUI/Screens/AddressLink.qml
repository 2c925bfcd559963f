import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A local address that opens in the browser. One on which nothing listens is marked.
T.AbstractButton {
    id: link

    property int toldRole: Accessible.Link
    property bool listening: true
    readonly property string warning: qsTr("The service named this address, but does not listen on it")

    implicitWidth: Math.ceil(words.implicitWidth) + row.spacing + sign.width
    implicitHeight: Theme.controlMini
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: qsTr("Open %1 in your browser").arg(text)
    Accessible.description: listening ? "" : warning
    Keys.onReturnPressed: link.clicked()
    Keys.onEnterPressed: link.clicked()

    contentItem: Item {
        Row {
            id: row

            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space4

            // Without room for all of it, its port is what has to be read.
            Label {
                id: words

                width: Math.max(0, Math.min(Math.ceil(implicitWidth), link.width - row.spacing - sign.width))
                role: Theme.Mono
                elide: Text.ElideLeft
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
                id: sign

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
        text: !link.listening ? warning : words.truncated ? link.text : ""
    }
}
