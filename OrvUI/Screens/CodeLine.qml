import OrvLauncher.Screens
import QtQuick

// A line of a file with its number.
Item {
    id: line

    required property int index
    required property int number
    required property string text
    required property var spans
    property bool chosen: false
    property int offset: 0

    implicitHeight: Theme.space20
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Rectangle {
        anchors.fill: parent
        visible: line.chosen
        color: Theme.textSelection
    }

    Label {
        width: Theme.gutter - Theme.iconLarge
        height: parent.height
        horizontalAlignment: Text.AlignRight
        verticalAlignment: Text.AlignVCenter
        role: Theme.MonoPath
        color: Theme.text3
        text: line.number
    }

    Item {
        x: Theme.gutter
        width: parent.width - x
        height: parent.height
        clip: line.offset > 0

        Text {
            x: -line.offset
            textFormat: Text.StyledText
            font: Theme.font(Theme.Console)
            color: Theme.terminalForeground
            lineHeightMode: Text.FixedHeight
            lineHeight: Theme.space20
            topPadding: Theme.lead(Theme.Console)
            bottomPadding: -Theme.lead(Theme.Console)
            text: CodeText.styled(line.text, line.spans, Theme.isDark, Theme.theme)
        }
    }
}
