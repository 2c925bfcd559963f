import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A tab of a terminal.
T.AbstractButton {
    id: tab

    property int toldRole: Accessible.PageTab
    required property TerminalSession session
    required property int index
    // Among those of the same title; empty where there is no other one.
    required property string place
    // In which such a one's shell is, where the title does not say it.
    required property string folder
    // Of no project, and here for the time being.
    required property bool isGuest
    property int limit: Theme.terminalTabMax
    property bool isSelected: false
    readonly property bool isEnded: !session.isAlive && !session.isWaiting
    // Unlike that of any other tab.
    readonly property string name: isGuest ? (folder.length === 0 ? qsTr("%1, of no project").arg(text) : qsTr("%1, in %2, of no project").arg(text).arg(folder)) : place.length === 0 ? text : folder.length === 0 ? qsTr("%1, %2").arg(text).arg(place) : qsTr("%1, %2, in %3").arg(text).arg(place).arg(folder)
    signal closeRequested

    implicitWidth: Math.max(Theme.terminalTabMin, Math.min(limit, label.implicitWidth + (folder.length > 0 ? where.implicitWidth : 0) + leftPadding + rightPadding + Theme.iconSmall + Theme.controlMini + 2 * Theme.space8))
    implicitHeight: Theme.controlRegular
    leftPadding: Theme.space12
    rightPadding: Theme.space4
    text: session.title
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: name
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

        // Apart from those of the project.
        Rectangle {
            x: -Theme.space2 - width
            anchors.verticalCenter: parent.verticalCenter
            visible: tab.isGuest && tab.index > 0
            width: Theme.hairline
            height: Theme.space16
            color: Theme.borderStrong
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

        UnseenMark {
            x: Theme.iconSmall - width / 2
            y: Theme.space6
            visible: tab.session.hasUnseenBell || tab.session.hasUnseenQuestion
        }

        Label {
            id: label

            anchors.left: parent.left
            anchors.leftMargin: Theme.iconSmall + Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(Math.ceil(implicitWidth), close.x - x - where.width)
            role: tab.isSelected ? Theme.SmallStrong : Theme.Small
            color: tab.isSelected ? Theme.text : Theme.text2
            text: tab.text
        }

        Label {
            id: where

            anchors.left: label.right
            anchors.verticalCenter: parent.verticalCenter
            width: visible ? Math.min(Math.ceil(implicitWidth), Math.round((close.x - label.x) / 2)) : 0
            visible: text.length > 0
            leftPadding: Theme.space6
            role: Theme.Small
            color: Theme.text3
            text: tab.folder
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
            text: qsTr("Close %1").arg(tab.name)
            onClicked: tab.closeRequested()
        }
    }

    TapHandler {
        acceptedButtons: Qt.MiddleButton
        onTapped: tab.closeRequested()
    }

    Tip {
        text: label.truncated || where.truncated || tab.place.length > 0 || tab.isGuest ? tab.name : ""
    }
}
