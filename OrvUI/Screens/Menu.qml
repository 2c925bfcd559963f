import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

T.Menu {
    id: menu

    // No entry is cut.
    readonly property real widest: {
        let width = 0;
        for (let i = 0; i < count; ++i) {
            width = Math.max(width, itemAt(i)?.implicitWidth ?? 0);
        }
        return width;
    }

    implicitWidth: Math.max(Theme.menuWidth, widest + leftPadding + rightPadding)
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    margins: Theme.space4
    padding: Theme.space6
    overlap: 1

    delegate: MenuRow {}

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: Theme.durationEnter
        }

        NumberAnimation {
            property: "scale"
            from: Theme.reducedMotion ? 1 : 0.98
            to: 1
            duration: Theme.durationEnter
            easing.type: Easing.BezierSpline
            easing.bezierCurve: Theme.easeEnter
        }
    }

    exit: Transition {
        NumberAnimation {
            property: "opacity"
            to: 0
            duration: Theme.durationExit
        }
    }

    contentItem: ListView {
        implicitHeight: contentHeight
        model: menu.contentModel
        currentIndex: menu.currentIndex
        interactive: contentHeight > height
        clip: interactive

        T.ScrollBar.vertical: ScrollBar {}
    }

    background: PopoverFace {}
}
