import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A field for several lines of text.
FocusScope {
    id: box

    property alias text: area.text
    property string placeholderText
    signal textEdited
    // Ctrl+Enter.
    signal submitted

    implicitHeight: Theme.commitTextHeight

    Rectangle {
        anchors.fill: parent
        radius: Theme.radiusControl
        color: Theme.field
        border.width: Theme.hairline
        border.color: area.activeFocus ? Theme.focus : Theme.borderStrong

        Rectangle {
            anchors.fill: parent
            anchors.margins: -Theme.haloWidth
            z: -1
            visible: area.activeFocus
            radius: parent.radius + Theme.haloWidth
            color: "transparent"
            border.width: Theme.haloWidth
            border.color: Theme.focusSoft
        }
    }

    Flickable {
        id: view

        anchors.fill: parent
        anchors.margins: Theme.hairline
        contentHeight: area.implicitHeight
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        T.TextArea.flickable: T.TextArea {
            id: area

            function submit(event) {
                event.accepted = (event.modifiers & Qt.ControlModifier) !== 0;
                if (event.accepted) {
                    box.submitted();
                }
            }

            focus: true
            padding: Theme.space8
            leftPadding: Theme.space10
            wrapMode: TextEdit.Wrap
            font: Theme.font(Theme.Body)
            color: Theme.text
            selectionColor: Theme.textSelection
            selectedTextColor: Theme.text
            selectByMouse: true
            Accessible.role: Accessible.EditableText
            Accessible.name: box.placeholderText
            KeyNavigation.priority: KeyNavigation.BeforeItem
            Keys.onTabPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
            Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            Keys.onShortcutOverride: event => event.accepted = (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) && (event.modifiers & Qt.ControlModifier) !== 0
            Keys.onReturnPressed: event => submit(event)
            Keys.onEnterPressed: event => submit(event)
            onTextChanged: {
                if (activeFocus) {
                    box.textEdited();
                }
            }

            Label {
                x: area.leftPadding
                y: area.topPadding
                visible: area.text.length === 0 && area.preeditText.length === 0
                color: Theme.text3
                text: box.placeholderText
            }
        }
    }
}
