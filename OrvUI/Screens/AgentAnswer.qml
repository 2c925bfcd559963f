import OrvLauncher.Screens
import QtQuick

// What an agent said in the end, or why it failed: the first lines, or all of it.
Column {
    id: answer

    required property string text
    // Why it failed, which is shown as it came.
    property bool failure: false
    property int lines: 40
    property bool whole: false
    // Below the text: a way to the rest of it, and to the clipboard.
    property bool showsTools: true
    property bool unfolds: true
    // All of it is about to be shown.
    signal unfolding

    spacing: Theme.space4

    Label {
        id: words

        width: parent.width
        color: answer.failure ? Theme.danger : Theme.text2
        wrapMode: Text.Wrap
        maximumLineCount: answer.whole ? answer.text.length + 1 : answer.lines
        textFormat: answer.failure ? Text.PlainText : Text.StyledText
        text: answer.failure ? answer.text : CodeText.prose(answer.text, Theme.isDark, Theme.theme)
        Accessible.role: Accessible.StaticText
        Accessible.name: answer.text
    }

    Row {
        visible: answer.showsTools
        spacing: Theme.space4

        IconButton {
            glyph: "copy"
            text: answer.failure ? qsTr("Copy the error") : qsTr("Copy the answer")
            onClicked: Clipboard.copy(answer.text)
        }

        Button {
            visible: answer.unfolds && (answer.whole || words.truncated)
            ghost: true
            controlHeight: Theme.controlSmall
            text: answer.whole ? qsTr("Show less") : qsTr("Show all")
            onClicked: {
                if (!answer.whole) {
                    answer.unfolding();
                }
                answer.whole = !answer.whole;
            }
        }
    }
}
