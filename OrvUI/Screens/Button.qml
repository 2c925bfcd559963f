import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A push button: secondary unless `primary` or `ghost` says otherwise. The icon may have a colour of its own.
T.AbstractButton {
    id: control

    property bool primary: false
    property bool ghost: false
    // What it opens is open.
    property bool lit: false
    // Its words in the colour of danger.
    property bool danger: false
    property string glyph
    property int glyphSize: Theme.iconSmall
    // Behind the words instead of before them.
    property bool glyphLast: false
    // Quieter than words in the colour of the text or of the accent.
    property color glyphColor: primary || danger || (lit && text.length === 0) ? labelColor : Theme.text2
    property int controlHeight: Theme.controlRegular
    // Set where another part joins at the right side.
    property bool joined: false
    // Keys that do the same, shown behind the words.
    property string shortcut
    property int corner: Theme.radiusControl
    property int role: controlHeight > Theme.controlSmall ? Theme.BodyStrong : Theme.SmallStrong
    // Its words where there was no room for all of them.
    property string tip: truncated ? text : ""
    readonly property bool truncated: words.truncated
    // What is not its words; those end in an ellipsis where the button is narrower than they need.
    readonly property real besides: leftPadding + rightPadding + (glyph.length > 0 ? glyphSize : 0) + (glyph.length > 0 && text.length > 0 ? row.spacing : 0) + (shortcut.length > 0 ? keys.implicitWidth + row.spacing : 0)
    readonly property color labelColor: !enabled ? Theme.disabled : danger ? Theme.danger : primary ? Theme.onAccent : lit ? Theme.accentText : ghost ? Theme.text2 : Theme.text

    implicitHeight: controlHeight
    implicitWidth: Math.ceil(besides + (text.length > 0 ? words.implicitWidth : 0))
    leftPadding: controlHeight > Theme.controlSmall ? Theme.space12 : Theme.space10
    rightPadding: leftPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: ButtonFace {
        control: control
        primary: control.primary
        ghost: control.ghost
        lit: control.lit
        joinedRight: control.joined
        corner: control.corner

        FocusRing {
            control: control
            shapeRadius: control.corner
        }
    }

    contentItem: Item {
        Row {
            id: row

            anchors.centerIn: parent
            spacing: Theme.space6
            layoutDirection: control.glyphLast ? Qt.RightToLeft : Qt.LeftToRight

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: control.glyph.length > 0
                name: control.glyph
                size: control.glyphSize
                color: control.enabled ? control.glyphColor : Theme.disabled
            }

            Label {
                id: words

                anchors.verticalCenter: parent.verticalCenter
                width: Math.max(0, Math.min(Math.ceil(implicitWidth), control.width - control.besides))
                visible: text.length > 0
                role: control.role
                color: control.labelColor
                text: control.text
            }

            Label {
                id: keys

                anchors.verticalCenter: parent.verticalCenter
                visible: text.length > 0
                role: Theme.Small
                color: control.labelColor
                opacity: 0.8
                text: control.shortcut
            }
        }
    }

    Tip {
        enabled: control.tip.length > 0
        text: control.tip
    }
}
