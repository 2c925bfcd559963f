import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A tab of a terminal.
T.AbstractButton {
    id: tab

    property int toldRole: Accessible.PageTab
    required property TerminalSession session
    required property int index
    property int limit: Theme.terminalTabMax
    property bool isSelected: false
    readonly property bool isEnded: !session.isAlive && !session.isWaiting
    signal closeRequested

    implicitWidth: Math.max(Theme.terminalTabMin, Math.min(limit, label.implicitWidth + leftPadding + rightPadding + Theme.iconSmall + Theme.controlMini + 2 * Theme.space8))
    implicitHeight: Theme.controlRegular
    leftPadding: Theme.space12
    rightPadding: Theme.space4
    text: session.title
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.selected: isSelected
    Accessible.description: isEnded ? qsTr("ended") : session.hasUnseenQuestion ? qsTr("asks whether it may copy") : session.isBusy ? qsTr("a program runs") : session.hasUnseenBell ? qsTr("rang") : ""
    Keys.onReturnPressed: tab.clicked()
    Keys.onEnterPressed: tab.clicked()
    Keys.onDeletePressed: tab.closeRequested()

    background: Rectangle {
        radius: Theme.radiusControl
        color: tab.isSelected ? Theme.control : tab.hovered ? Theme.hover : "transparent"
        border.width: tab.isSelected ? Theme.hairline : 0
        border.color: Qt.tint(Theme.control, Theme.buttonEdge)

        FocusRing {
            control: tab
        }

        // How far the program says that it is.
        Rectangle {
            anchors.bottom: parent.bottom
            x: Theme.radiusControl
            visible: tab.session.progressState === 1 || tab.session.progressState === 2 || tab.session.progressState === 4
            width: (parent.width - 2 * Theme.radiusControl) * Math.max(0, tab.session.progressPercent) / 100
            height: Theme.space2
            radius: Theme.hairline
            color: tab.session.progressState === 2 ? Theme.danger : tab.session.progressState === 4 ? Theme.warning : Theme.accent
        }
    }

    contentItem: Item {
        Spinner {
            id: spinner

            anchors.verticalCenter: parent.verticalCenter
            visible: tab.session.isBusy && !tab.isSelected || tab.session.progressState === 3
            color: Theme.text2
            // A program that runs may run for days; each turn would be a frame of the window.
            still: tab.session.progressState !== 3
        }

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            visible: !spinner.visible
            name: tab.isEnded ? "circle-minus" : "terminal"
            size: Theme.iconSmall
            color: Theme.text2
        }

        StatusMark {
            visible: tab.session.hasUnseenBell || tab.session.hasUnseenQuestion
        }

        Label {
            id: label

            anchors.left: parent.left
            anchors.leftMargin: Theme.iconSmall + Theme.space8
            anchors.right: close.left
            anchors.verticalCenter: parent.verticalCenter
            role: tab.isSelected ? Theme.SmallStrong : Theme.Small
            color: tab.isSelected ? Theme.text : Theme.text2
            text: tab.text
        }

        IconButton {
            id: close

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            visible: tab.isSelected || tab.hovered || activeFocus
            edge: Theme.controlMini
            glyph: "x"
            glyphSize: Theme.iconSmall
            focusPolicy: Qt.NoFocus
            text: qsTr("Close %1").arg(tab.text)
            onClicked: tab.closeRequested()
        }
    }

    TapHandler {
        acceptedButtons: Qt.MiddleButton
        onTapped: tab.closeRequested()
    }

    Tip {
        text: label.truncated ? tab.text : ""
    }

    // A bell that nobody saw, or a question.
    component StatusMark: Rectangle {
        x: Theme.iconSmall - width / 2
        y: Theme.space6
        width: Theme.space6
        height: width
        radius: width / 2
        color: Theme.accent
    }
}
