import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A pinned project on the shelf: a click opens its page.
T.AbstractButton {
    id: item

    required property string projectID
    required property string name
    required property int tileIndex
    required property string tileLetter
    required property string cardState
    readonly property bool busy: cardState !== "idle" && cardState !== "failed"
    signal toggled

    implicitHeight: Theme.pinnedItemHeight
    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.description: RunWords.ofState(cardState)

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

            x: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            size: Theme.tileSmall
            tileIndex: item.tileIndex
            tileLetter: item.tileLetter
        }

        Label {
            id: title

            anchors.left: tile.right
            anchors.leftMargin: Theme.space10
            anchors.right: dot.left
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.BodyStrong
            text: item.name

            Tip {
                text: title.truncated ? item.name : ""
            }
        }

        StatusDot {
            id: dot

            anchors.right: toggle.left
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            visible: item.cardState !== "idle"
            cardState: item.cardState
            halo: true
        }

        IconButton {
            id: toggle

            anchors.right: parent.right
            anchors.rightMargin: Theme.space6
            anchors.verticalCenter: parent.verticalCenter
            glyph: item.busy ? "own-stop-fill" : "own-play-fill"
            glyphSize: Theme.iconSmall
            text: item.busy ? qsTr("Stop %1").arg(item.name) : qsTr("Run %1").arg(item.name)
            onClicked: item.toggled()
        }
    }
}
