import OrvLauncher.Screens
import QtQuick

// A line of a diff: its numbers on both sides, its sign, its text; or the heading of a hunk with what is done with it.
Item {
    id: line

    required property int index
    required property string kind
    required property string text
    required property int oldNumber
    required property int newNumber
    required property int hunk
    required property bool selected
    required property bool endsWithoutLineFeed
    required property var spans
    property bool focused: false
    property bool divisible: false
    property bool staged: false
    property int offset: 0
    readonly property bool isHunk: kind === "hunk"
    readonly property bool isAdded: kind === "added"
    readonly property bool isRemoved: kind === "removed"
    readonly property string words: isHunk ? text : (isAdded ? qsTr("added, line %1: %2") : isRemoved ? qsTr("removed, line %1: %2") : qsTr("line %1: %2")).arg(isRemoved ? oldNumber : newNumber).arg(text)
    signal moved(int hunk)
    signal discarded(int hunk)

    implicitHeight: Theme.space20
    Accessible.role: Accessible.StaticText
    Accessible.name: words
    Accessible.selected: selected

    Rectangle {
        anchors.fill: parent
        color: line.isHunk ? Theme.infoSoft : line.isAdded ? Theme.successSoft : line.isRemoved ? Theme.dangerSoft : "transparent"
    }

    Rectangle {
        anchors.fill: parent
        visible: line.selected && !line.isHunk
        color: Theme.textSelection
    }

    Rectangle {
        width: Theme.space2
        height: parent.height
        visible: line.selected || line.focused
        color: line.focused ? Theme.focus : Theme.accent
    }

    Label {
        width: Theme.diffGutter
        visible: line.oldNumber > 0
        horizontalAlignment: Text.AlignRight
        role: Theme.MonoPath
        color: Theme.text3
        height: line.height
        verticalAlignment: Text.AlignVCenter
        text: line.oldNumber
    }

    Label {
        x: Theme.diffGutter
        width: Theme.diffGutter
        visible: line.newNumber > 0
        horizontalAlignment: Text.AlignRight
        role: Theme.MonoPath
        color: Theme.text3
        height: line.height
        verticalAlignment: Text.AlignVCenter
        text: line.newNumber
    }

    Label {
        x: 2 * Theme.diffGutter
        width: Theme.diffInset - x
        visible: line.isAdded || line.isRemoved
        horizontalAlignment: Text.AlignHCenter
        role: Theme.Console
        font.family: Theme.font(Theme.Console).family
        font.pixelSize: Theme.font(Theme.Console).pixelSize
        font.bold: true
        color: line.isAdded ? Theme.success : Theme.danger
        text: line.isAdded ? "+" : "−"
    }

    Item {
        x: Theme.diffInset
        width: parent.width - x
        height: parent.height
        clip: line.offset > 0

        Text {
            x: line.isHunk ? 0 : -line.offset
            textFormat: line.isHunk ? Text.PlainText : Text.StyledText
            font: Theme.font(Theme.Console)
            color: line.isHunk ? Theme.info : Theme.terminalForeground
            lineHeightMode: Text.FixedHeight
            lineHeight: Theme.space20
            topPadding: Theme.lead(Theme.Console)
            bottomPadding: -Theme.lead(Theme.Console)
            text: line.isHunk ? line.text : CodeText.styled(line.text, line.spans, Theme.isDark, Theme.theme)

            Icon {
                anchors.left: parent.right
                anchors.leftMargin: Theme.space6
                anchors.verticalCenter: parent.verticalCenter
                visible: line.endsWithoutLineFeed
                name: "circle-minus"
                size: Theme.iconMini
                color: Theme.text3

                Tip {
                    text: qsTr("No line feed at the end of the file")
                }
            }
        }
    }

    HoverHandler {
        id: hover
    }

    Rectangle {
        anchors.right: parent.right
        anchors.rightMargin: Theme.space8
        height: parent.height
        width: tools.width
        visible: line.isHunk && line.divisible && (hover.hovered || line.focused)
        color: Theme.terminalBackground

        Rectangle {
            anchors.fill: parent
            color: Theme.infoSoft
        }

        Row {
            id: tools

            height: parent.height
            leftPadding: Theme.space8
            spacing: Theme.space12

            TextLink {
                height: parent.height
                focusPolicy: Qt.NoFocus
                text: line.staged ? qsTr("Unstage hunk") : qsTr("Stage hunk")
                onClicked: line.moved(line.hunk)
            }

            TextLink {
                height: parent.height
                visible: !line.staged
                focusPolicy: Qt.NoFocus
                text: qsTr("Discard hunk…")
                onClicked: line.discarded(line.hunk)
            }
        }
    }
}
