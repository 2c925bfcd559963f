import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The one tooltip of a window.
T.Popup {
    id: layer

    readonly property Item target: Tooltips.target

    parent: target
    visible: target !== null
    closePolicy: T.Popup.NoAutoClose
    margins: Theme.space4
    x: target ? Math.round((target.width - width) / 2) : 0
    y: target ? target.height + Theme.space6 : 0
    implicitWidth: Math.min(contentItem.implicitWidth + Theme.space16, Theme.tooltipLimit)
    implicitHeight: Math.max(Theme.tooltipHeight, contentItem.implicitHeight + Theme.space8)
    leftPadding: Theme.space8
    rightPadding: Theme.space8

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: Theme.durationEnter
        }
    }

    background: Rectangle {
        color: Theme.tipBg
        radius: Theme.radiusRow

        Shadow {
            anchors.fill: parent
            z: -1
            level: 2
            radius: parent.radius
        }
    }

    contentItem: Row {
        spacing: Theme.space8

        Label {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, Theme.tooltipLimit - Theme.space16)
            role: Theme.Small
            color: Theme.tipFg
            wrapMode: Text.WrapAnywhere
            text: Tooltips.text
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            visible: text.length > 0
            role: Theme.Caption
            color: Theme.tipFg
            opacity: 0.7
            text: Tooltips.shortcut
        }
    }
}
