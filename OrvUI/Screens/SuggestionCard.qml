import OrvLauncher.Screens
import QtQuick

// A suggested step: what and why, its button, a picture on the accent's glow.
Item {
    id: card

    required property string key
    required property string headline
    required property string body
    required property string button
    required property string illustration
    signal performed
    signal dismissed

    implicitHeight: Theme.suggestionHeight
    Accessible.role: Accessible.Grouping
    Accessible.name: headline

    CardFace {
        anchors.fill: parent
    }

    // The glow comes in from the right, within the card's corners.
    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.hairline
        radius: Theme.radiusCard - Theme.hairline

        gradient: Gradient {
            orientation: Gradient.Horizontal

            GradientStop {
                position: 0.62
                color: "transparent"
            }

            GradientStop {
                position: 1
                color: Theme.ctaGlow
            }
        }
    }

    Illustration {
        anchors.right: parent.right
        anchors.rightMargin: Theme.space4
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.space24
        width: Theme.suggestionPicture
        height: width
        name: card.illustration
    }

    Column {
        x: Theme.space16
        y: Theme.space16 - Theme.hairline
        width: parent.width - Theme.suggestionPicture - Theme.space24
        spacing: Theme.space4

        EvenLabel {
            width: parent.width
            role: Theme.CardTitle
            maximumLineCount: 2
            heading: card.headline
        }

        Label {
            width: parent.width
            role: Theme.Small
            color: Theme.text2
            wrapMode: Text.Wrap
            maximumLineCount: 3
            text: card.body
        }
    }

    Button {
        x: Theme.space16
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.space16
        controlHeight: Theme.controlSmall
        text: card.button
        onClicked: card.performed()
    }

    IconButton {
        anchors.right: parent.right
        anchors.rightMargin: Theme.space6
        y: Theme.space6
        edge: Theme.controlMini
        glyph: "x"
        glyphSize: Theme.iconSmall
        text: qsTr("Dismiss: %1").arg(card.headline)
        onClicked: card.dismissed()
    }
}
