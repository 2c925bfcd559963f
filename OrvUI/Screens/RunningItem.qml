import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A running service on the shelf: a click opens its project's page.
T.AbstractButton {
    id: item

    required property string key
    required property string projectID
    required property string name
    required property string kindLabel
    required property string address
    required property string serviceState
    required property bool portListening
    required property int tileIndex
    required property string tileLetter
    signal opened
    signal stopped
    signal logsAsked

    implicitHeight: Theme.runningItemHeight
    Accessible.role: Accessible.Button
    Accessible.name: qsTr("%1, %2").arg(name).arg(kindLabel)
    Accessible.description: address.length > 0 ? qsTr("Running on %1").arg(address) : RunWords.ofState(serviceState)

    hoverEnabled: true
    text: name

    background: CardFace {
        color: item.hovered ? Theme.surfaceHover : Theme.surface
        border.color: item.hovered ? Theme.borderStrong : Theme.border

        FocusRing {
            control: item
            shapeRadius: Theme.radiusCard
        }
    }

    contentItem: Item {
        Tile {
            id: tile

            anchors.verticalCenter: parent.verticalCenter
            x: Theme.space12 + Theme.space2
            tileIndex: item.tileIndex
            tileLetter: item.tileLetter

            Rectangle {
                readonly property int edge: Theme.space2

                x: parent.width - width / 2 - edge - Theme.hairline
                y: parent.height - height / 2 - edge - Theme.hairline
                width: Theme.dot + 2 * edge
                height: width
                radius: width / 2
                color: Theme.surface

                StatusDot {
                    anchors.centerIn: parent
                    cardState: item.serviceState
                }
            }
        }

        Label {
            id: title

            anchors.left: tile.right
            anchors.leftMargin: Theme.space12
            anchors.bottom: parent.verticalCenter
            anchors.bottomMargin: -Theme.space2
            width: Math.min(implicitWidth, item.width / 2 - tile.width)
            role: Theme.Section
            text: item.name

            Tip {
                text: title.truncated ? title.text : ""
            }
        }

        Label {
            id: kind

            anchors.left: title.right
            anchors.leftMargin: Theme.space6
            anchors.right: logs.left
            anchors.rightMargin: Theme.space8
            anchors.baseline: title.baseline
            role: Theme.Small
            color: Theme.text3
            elide: Text.ElideMiddle
            text: item.kindLabel

            Tip {
                text: kind.truncated ? kind.text : ""
            }
        }

        AddressLink {
            anchors.left: title.left
            anchors.top: parent.verticalCenter
            anchors.topMargin: -Theme.space2
            width: Math.min(implicitWidth, logs.x - title.x)
            visible: item.address.length > 0
            text: item.address
            listening: item.portListening
            onClicked: item.opened()
        }

        Label {
            anchors.left: title.left
            anchors.top: parent.verticalCenter
            anchors.topMargin: Theme.space2
            visible: item.address.length === 0
            role: Theme.Small
            color: item.serviceState === "running" ? Theme.text2 : Theme.warning
            text: item.serviceState === "running" ? qsTr("No address") : RunWords.ofState(item.serviceState)
        }

        IconButton {
            id: logs

            anchors.right: stop.left
            anchors.verticalCenter: parent.verticalCenter
            visible: item.serviceState === "running"
            glyph: "logs"
            text: qsTr("Logs of %1").arg(item.kindLabel)
            Accessible.name: qsTr("Logs of %1 of %2").arg(item.kindLabel).arg(item.name)
            onClicked: item.logsAsked()
        }

        IconButton {
            id: stop

            anchors.right: parent.right
            anchors.rightMargin: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            enabled: item.serviceState !== "stopping"
            glyph: "own-stop-fill"
            glyphSize: Theme.iconSmall
            text: qsTr("Stop %1").arg(item.kindLabel)
            Accessible.name: qsTr("Stop %1 of %2").arg(item.kindLabel).arg(item.name)
            onClicked: item.stopped()
        }
    }
}
