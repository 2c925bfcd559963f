import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A sheet over the window: scrim, frame, movement. It stands slightly above the middle.
T.Popup {
    id: sheet

    // Fades out: from then on keys and clicks are for what lies below it.
    property bool leaving: false
    readonly property bool listens: visible && !leaving
    // Had the focus before, and gets it back.
    property Item before
    signal tappedBeside

    function giveFocusBack() {
        const window = parent?.Window.window ?? null;
        if (before !== null && before.visible && window?.activeFocusItem === window?.contentItem) {
            before.forceActiveFocus(Qt.PopupFocusReason);
        }
        before = null;
    }

    parent: T.Overlay.overlay
    x: Math.round((parent.width - width) / 2)
    y: Math.max(Theme.space16, Math.round((parent.height - height) * 0.4))
    width: Math.min(Theme.sheetWidth, parent.width - Theme.space32)
    height: Math.min(implicitHeight, parent.height - Theme.space32)
    implicitHeight: contentItem.implicitHeight
    modal: !leaving
    dim: true
    focus: true
    enabled: !leaving
    // Whatever Escape or a press elsewhere could close stands in the way of shortcuts.
    closePolicy: leaving ? T.Popup.NoAutoClose : T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside

    onAboutToShow: {
        sheet.before = sheet.parent.Window.window?.activeFocusItem ?? null;
        sheet.leaving = false;
    }
    onAboutToHide: {
        sheet.leaving = true;
        sheet.giveFocusBack();
    }
    // Not only when it is shown again: by then the scrim is the one that fades out.
    onClosed: sheet.leaving = false

    T.Overlay.modal: Rectangle {
        color: Theme.scrim

        Behavior on opacity {
            NumberAnimation {
                duration: Theme.durationSheet
            }
        }
    }

    // While the sheet leaves.
    T.Overlay.modeless: Rectangle {
        color: Theme.scrim

        NumberAnimation on opacity {
            from: 1
            to: 0
            duration: Theme.durationEnter
        }
    }

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: Theme.durationSheet
        }

        NumberAnimation {
            target: rise
            property: "y"
            from: Theme.reducedMotion ? 0 : Theme.space8
            to: 0
            duration: Theme.durationSheet
            easing.type: Easing.BezierSpline
            easing.bezierCurve: Theme.easeEnter
        }
    }

    exit: Transition {
        NumberAnimation {
            property: "opacity"
            to: 0
            duration: Theme.durationEnter
        }
    }

    background: Rectangle {
        radius: Theme.radiusSheet
        color: Theme.raised
        border.width: Theme.hairline
        border.color: Theme.border

        transform: Translate {
            id: rise
        }

        Shadow {
            anchors.fill: parent
            z: -1
            level: 4
            radius: parent.radius
        }

        BesideTap {
            popup: sheet
            onTapped: sheet.tappedBeside()
        }
    }
}
