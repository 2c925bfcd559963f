import OrvLauncher.Screens
import QtQuick

// What is to be said about a terminal, over it: a question with two answers, or a line.
FocusScope {
    id: note

    required property string text
    property string action
    // What gives the same answer as the button while the keyboard stays with the terminal.
    property string keys
    property bool asks: true
    property string glyph: asks || isError ? "circle-alert" : "circle-minus"
    property bool isError: false
    signal answered(bool isWanted)

    function focusDefault() {
        yes.forceActiveFocus(Qt.OtherFocusReason);
    }

    anchors.horizontalCenter: parent ? parent.horizontalCenter : undefined
    implicitWidth: row.implicitWidth + 2 * Theme.space12
    implicitHeight: Theme.statusLineHeight + Theme.space4
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
    Keys.onEscapePressed: event => {
        event.accepted = note.asks;
        if (note.asks) {
            note.answered(false);
        }
    }

    PopoverFace {
        anchors.fill: parent
    }

    Row {
        id: row

        anchors.centerIn: parent
        spacing: Theme.space10

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            name: note.glyph
            color: note.isError ? Theme.danger : note.asks ? Theme.warning : Theme.text2
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.BodyStrong
            text: note.text
        }

        Button {
            anchors.verticalCenter: parent.verticalCenter
            visible: note.asks
            controlHeight: Theme.controlSmall
            text: qsTr("Cancel")
            onClicked: note.answered(false)
        }

        Button {
            id: yes

            anchors.verticalCenter: parent.verticalCenter
            visible: note.asks
            primary: true
            focus: true
            controlHeight: Theme.controlSmall
            text: note.action
            onClicked: note.answered(true)
        }

        KeyHint {
            anchors.verticalCenter: parent.verticalCenter
            visible: note.keys.length > 0
            text: note.keys
        }
    }
}
