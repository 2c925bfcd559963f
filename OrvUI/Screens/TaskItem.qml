import OrvLauncher.Screens
import QtQuick

// A to-do item of a list: a round to tick, its words, and what can be done with it; renamed in place.
FocusScope {
    id: item

    required property int index
    required property string key
    required property string title
    required property string notes
    required property bool isDone
    // Of the one that works on it.
    required property string agentName
    readonly property string working: agentName.length > 0 ? qsTr("%1 is working").arg(agentName) : ""
    required property string when
    property bool first: index === 0
    property bool editing: false
    readonly property bool active: hover.hovered || (activeFocus && InputMode.keyboard)
    signal doneToggled(bool done)
    signal renamed(string title)
    signal removed
    signal handedToAi
    signal moved(int step)

    function edit() {
        editing = true;
        field.text = title;
        field.forceActiveFocus(Qt.OtherFocusReason);
        field.selectAll();
    }

    function leaveEdit(keep) {
        if (keep && field.text.trim().length > 0 && field.text !== item.title) {
            item.renamed(field.text);
        }
        item.editing = false;
        item.forceActiveFocus(Qt.OtherFocusReason);
    }

    implicitHeight: notes.length > 0 ? Theme.serviceItemHeight : Theme.taskRowHeight
    activeFocusOnTab: true
    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: isDone ? qsTr("done") : working.length === 0 ? notes : notes.length === 0 ? working : qsTr("%1, %2").arg(working).arg(notes)
    Keys.onSpacePressed: item.doneToggled(!item.isDone)
    Keys.onReturnPressed: item.edit()
    Keys.onDeletePressed: item.removed()
    Keys.onUpPressed: item.moved(-1)
    Keys.onDownPressed: item.moved(1)
    // On a project's page the same keys open the panel.
    Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_J && event.modifiers === Qt.ControlModifier && !item.isDone
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_J && event.modifiers === Qt.ControlModifier && !item.isDone;
        if (event.accepted) {
            item.handedToAi();
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: Theme.radiusCard
        color: hover.hovered && !item.editing ? Theme.hover : "transparent"

        FocusRing {
            control: item
            inside: true
            shapeRadius: Theme.radiusCard
            visible: item.activeFocus && InputMode.keyboard && !item.editing
        }
    }

    Rectangle {
        visible: !item.first
        width: parent.width
        height: Theme.hairline
        color: Theme.border
    }

    HoverHandler {
        id: hover
    }

    TaskRound {
        id: round

        x: Theme.space16 - inset
        anchors.verticalCenter: parent.verticalCenter
        text: item.title
        checked: item.isDone
        focusPolicy: Qt.NoFocus
        onClicked: {
            checked = Qt.binding(() => item.isDone);
            item.doneToggled(!item.isDone);
        }
    }

    Column {
        anchors.left: round.right
        anchors.leftMargin: Theme.space12 - round.inset
        anchors.right: tools.visible ? tools.left : pill.visible ? pill.left : age.left
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        visible: !item.editing

        Label {
            width: parent.width
            color: item.isDone ? Theme.text3 : Theme.text
            // One part of a font that is set takes the place of all that the role says.
            font.family: Theme.font(role).family
            font.pixelSize: Theme.font(role).pixelSize
            font.weight: Theme.font(role).weight
            font.strikeout: item.isDone
            text: item.title
        }

        Label {
            width: parent.width
            visible: text.length > 0
            role: Theme.Small
            color: Theme.text3
            text: item.notes
        }
    }

    Field {
        id: field

        anchors.left: round.right
        anchors.leftMargin: Theme.hairline
        anchors.right: keys.left
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        visible: item.editing
        placeholderText: qsTr("Task")
        onAccepted: item.leaveEdit(true)
        Keys.onEscapePressed: item.leaveEdit(false)
    }

    Row {
        id: keys

        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        visible: item.editing
        spacing: Theme.space6

        KeyHint {
            anchors.verticalCenter: parent.verticalCenter
            text: "↩"
        }

        Label {
            role: Theme.Small
            color: Theme.text2
            text: qsTr("save")
        }

        KeyHint {
            anchors.verticalCenter: parent.verticalCenter
            text: qsTr("esc")
        }

        Label {
            role: Theme.Small
            color: Theme.text2
            text: qsTr("cancel")
        }
    }

    Row {
        id: tools

        anchors.right: parent.right
        anchors.rightMargin: Theme.space8
        anchors.verticalCenter: parent.verticalCenter
        visible: item.active && !item.editing
        spacing: Theme.space4

        Button {
            anchors.verticalCenter: parent.verticalCenter
            visible: !item.isDone
            controlHeight: Theme.controlSmall
            focusPolicy: Qt.NoFocus
            glyph: "sparkles"
            text: qsTr("Hand to AI")
            onClicked: item.handedToAi()
        }

        IconButton {
            visible: !item.isDone
            focusPolicy: Qt.NoFocus
            glyph: "pencil"
            text: qsTr("Rename")
            onClicked: item.edit()
        }

        IconButton {
            focusPolicy: Qt.NoFocus
            glyph: "trash-2"
            text: qsTr("Delete")
            onClicked: item.removed()
        }
    }

    Pill {
        id: pill

        anchors.right: age.left
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(implicitWidth, item.width / 3)
        visible: age.visible && item.working.length > 0
        busy: true
        tint: Theme.accentText
        fill: Theme.accentSoft
        text: item.working
    }

    Figures {
        id: age

        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        // The pills of all rows end in one line.
        width: Math.max(implicitWidth, Theme.taskAgeWidth)
        horizontalAlignment: Text.AlignRight
        visible: !tools.visible && !item.editing
        role: Theme.Small
        color: Theme.text3
        text: item.when
    }
}
