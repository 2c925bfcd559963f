import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// How much an agent may do, to choose.
T.AbstractButton {
    id: card

    property int toldRole: Accessible.RadioButton
    required property int index
    required property string title
    required property string explanation
    required property string glyph
    required property bool isDefault

    implicitHeight: Theme.autonomyCardHeight
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    text: title
    checked: isDefault
    Accessible.role: toldRole
    Accessible.name: title
    Accessible.description: explanation
    Accessible.checked: isDefault
    Keys.onReturnPressed: card.clicked()
    Keys.onEnterPressed: card.clicked()

    background: Rectangle {
        radius: Theme.radiusCard
        color: card.hovered ? Theme.surfaceHover : Theme.surface
        border.width: card.isDefault ? Theme.focusWidth : Theme.hairline
        border.color: card.isDefault ? Theme.accent : Theme.border

        FocusRing {
            control: card
            shapeRadius: Theme.radiusCard
        }
    }

    contentItem: Item {
        Icon {
            id: sign

            x: Theme.space16
            y: Theme.space16
            name: card.glyph
            color: card.isDefault ? Theme.accentText : card.glyph === "zap" ? Theme.warning : Theme.text2
        }

        RadioMark {
            anchors.right: parent.right
            anchors.rightMargin: Theme.space16
            anchors.verticalCenter: sign.verticalCenter
            checked: card.isDefault
            hovered: card.hovered
        }

        Label {
            anchors.left: sign.right
            anchors.leftMargin: Theme.space8
            anchors.verticalCenter: sign.verticalCenter
            role: Theme.CardTitle
            text: card.title
        }

        Label {
            x: Theme.space16
            y: Theme.space40
            width: parent.width - 2 * x
            role: Theme.Small
            color: Theme.text2
            wrapMode: Text.Wrap
            maximumLineCount: 3
            text: card.explanation
        }
    }
}
