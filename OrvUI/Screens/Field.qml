import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A field for one line of text.
T.TextField {
    id: field

    property string glyph
    property string shortcut
    property bool code: false
    property bool clearable: false
    // What it holds can't be taken.
    property bool wrong: false
    // A tint instead of a frame.
    property bool quiet: false
    property int corner: Theme.radiusControl
    // A click on the cross, or Escape in a field with text.
    signal cleared
    // Escape in a field without text.
    signal abandoned
    // Was typed in, and nobody was told that it is settled.
    property bool unsettled: false
    // What was typed is to be taken over: Return, the focus goes, or the field itself with its page.
    signal settled

    function settle() {
        if (field.unsettled) {
            field.unsettled = false;
            field.settled();
        }
    }

    implicitHeight: Theme.controlRegular
    leftPadding: glyph.length > 0 ? Theme.space28 + Theme.space2 : Theme.space10
    rightPadding: clearable ? Theme.space32 : Theme.space10
    verticalAlignment: TextInput.AlignVCenter
    font: Theme.font(code ? Theme.Mono : Theme.Body)
    color: enabled ? Theme.text : Theme.disabled
    selectionColor: Theme.textSelection
    selectedTextColor: Theme.text
    placeholderTextColor: Theme.text3
    selectByMouse: true
    hoverEnabled: true
    Accessible.role: Accessible.EditableText
    Accessible.name: placeholderText
    onTextEdited: field.unsettled = true
    onEditingFinished: field.settle()
    Component.onDestruction: field.settle()
    Keys.onEscapePressed: event => {
        event.accepted = field.clearable;
        if (field.clearable) {
            field.text.length > 0 ? field.cleared() : field.abandoned();
        }
    }

    cursorDelegate: Rectangle {
        width: Theme.focusWidth
        color: Theme.accent
        visible: field.cursorVisible
    }

    background: Rectangle {
        radius: field.corner
        color: field.quiet ? Theme.hover : field.enabled ? Theme.field : Theme.control
        border.width: field.quiet ? 0 : Theme.hairline
        border.color: field.wrong ? Theme.danger : field.activeFocus ? Theme.focus : Theme.borderStrong

        Rectangle {
            anchors.fill: parent
            anchors.margins: -Theme.haloWidth
            z: -1
            visible: field.activeFocus && !field.quiet
            radius: parent.radius + Theme.haloWidth
            color: "transparent"
            border.width: Theme.haloWidth
            border.color: Theme.focusSoft
        }

        Icon {
            x: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            visible: field.glyph.length > 0
            name: field.glyph
            size: Theme.iconSmall
            color: Theme.text3
        }

        Label {
            id: prompt

            anchors.left: parent.left
            // Beside the caret, not below it.
            anchors.leftMargin: field.leftPadding + Theme.focusWidth
            anchors.right: parent.right
            anchors.rightMargin: Theme.space8 + (hint.visible ? hint.width + Theme.space8 : 0)
            anchors.verticalCenter: parent.verticalCenter
            visible: field.text.length === 0 && field.preeditText.length === 0
            role: field.code ? Theme.Mono : Theme.Body
            color: Theme.text3
            text: field.placeholderText
        }

        KeyHint {
            id: hint

            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            // The words go before the keys where there is no room for both.
            visible: text.length > 0 && !field.activeFocus && field.text.length === 0 && prompt.x + prompt.implicitWidth + width + 2 * Theme.space8 <= field.width
            text: field.shortcut
        }
    }

    IconButton {
        anchors.right: parent.right
        anchors.rightMargin: Theme.space4
        anchors.verticalCenter: parent.verticalCenter
        visible: field.clearable && field.text.length > 0
        edge: Theme.controlMini
        glyph: "x"
        glyphSize: Theme.iconSmall
        text: qsTr("Clear search")
        onClicked: field.cleared()
    }
}
