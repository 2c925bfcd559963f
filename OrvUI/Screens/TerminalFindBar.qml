import OrvLauncher.Screens
import QtQuick

// Searches the terminal and its history.
FocusScope {
    id: bar

    required property TerminalFind find
    readonly property bool isAsked: find !== null && find.text.length > 0
    readonly property string known: !isAsked ? "" : find.count > 0 ? qsTr("%1+").arg(find.count) : qsTr("searching…")
    readonly property string all: !isAsked ? "" : find.count > 0 ? qsTr("%1 of %2").arg(find.current).arg(find.count) : qsTr("no match")
    signal abandoned

    function focusField() {
        field.forceActiveFocus(Qt.ShortcutFocusReason);
        field.selectAll();
    }

    implicitWidth: row.implicitWidth + 2 * Theme.space6
    implicitHeight: Theme.controlRegular + 2 * Theme.space6
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Find in terminal")
    Keys.onEscapePressed: bar.abandoned()

    PopoverFace {
        anchors.fill: parent
    }

    Row {
        id: row

        x: Theme.space6
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space4

        Field {
            id: field

            width: Theme.searchWidthNarrow
            glyph: "search"
            placeholderText: qsTr("Find")
            text: bar.find !== null ? bar.find.text : ""
            onTextEdited: bar.find.text = text
            Keys.onReturnPressed: event => event.modifiers & Qt.ShiftModifier ? bar.find.next() : bar.find.previous()
            Keys.onEnterPressed: bar.find.previous()
            Keys.onUpPressed: bar.find.previous()
            Keys.onDownPressed: bar.find.next()
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.max(Theme.kindWidth + Theme.space16, implicitWidth)
            horizontalAlignment: Text.AlignHCenter
            role: Theme.Small
            color: bar.find !== null && bar.find.isValid ? Theme.text2 : Theme.danger
            text: !bar.isAsked || bar.find.isComplete && bar.find.isValid ? bar.all : bar.find.isValid ? bar.known : qsTr("no expression")
        }

        Choice {
            text: qsTr("Match case")
            letters: "Aa"
            checked: bar.find !== null && bar.find.matchesCase
            onClicked: bar.find.matchesCase = !bar.find.matchesCase
        }

        Choice {
            text: qsTr("Regular expression")
            letters: ".*"
            checked: bar.find !== null && bar.find.isExpression
            onClicked: bar.find.isExpression = !bar.find.isExpression
        }

        IconButton {
            anchors.verticalCenter: parent.verticalCenter
            glyph: "chevron-up"
            text: qsTr("Previous match")
            shortcut: Keymap.text("previousHit")
            enabled: bar.find !== null && bar.find.count > 0
            onClicked: bar.find.previous()
        }

        IconButton {
            anchors.verticalCenter: parent.verticalCenter
            glyph: "chevron-down"
            text: qsTr("Next match")
            shortcut: Keymap.text("nextHit")
            enabled: bar.find !== null && bar.find.count > 0
            onClicked: bar.find.next()
        }

        IconButton {
            anchors.verticalCenter: parent.verticalCenter
            glyph: "x"
            text: qsTr("Close")
            onClicked: bar.abandoned()
        }
    }

    component Choice: IconButton {
        id: choice

        required property string letters

        anchors.verticalCenter: parent ? parent.verticalCenter : undefined
        glyph: ""

        Label {
            anchors.centerIn: parent
            role: Theme.Mono
            color: choice.checked ? Theme.accentText : Theme.text2
            text: choice.letters
        }
    }
}
