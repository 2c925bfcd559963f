import OrvLauncher.Screens
import QtQuick

// Where a window without a frame of the system is taken to change its size.
Item {
    id: edges

    required property Window target

    component Edge: MouseArea {
        required property int sides

        onPressed: edges.target.startSystemResize(sides)
    }

    Edge {
        sides: Qt.LeftEdge
        width: Theme.resizeEdge
        height: parent.height
        cursorShape: Qt.SizeHorCursor
    }

    Edge {
        sides: Qt.RightEdge
        anchors.right: parent.right
        width: Theme.resizeEdge
        height: parent.height
        cursorShape: Qt.SizeHorCursor
    }

    Edge {
        sides: Qt.TopEdge
        width: parent.width
        height: Theme.resizeEdge
        cursorShape: Qt.SizeVerCursor
    }

    Edge {
        sides: Qt.BottomEdge
        anchors.bottom: parent.bottom
        width: parent.width
        height: Theme.resizeEdge
        cursorShape: Qt.SizeVerCursor
    }

    Edge {
        sides: Qt.TopEdge | Qt.LeftEdge
        width: Theme.space12
        height: Theme.resizeEdge
        cursorShape: Qt.SizeFDiagCursor
    }

    Edge {
        sides: Qt.TopEdge | Qt.RightEdge
        anchors.right: parent.right
        width: Theme.space12
        height: Theme.resizeEdge
        cursorShape: Qt.SizeBDiagCursor
    }

    Edge {
        sides: Qt.BottomEdge | Qt.LeftEdge
        anchors.bottom: parent.bottom
        width: Theme.space12
        height: Theme.resizeEdge
        cursorShape: Qt.SizeBDiagCursor
    }

    Edge {
        sides: Qt.BottomEdge | Qt.RightEdge
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        width: Theme.space12
        height: Theme.resizeEdge
        cursorShape: Qt.SizeFDiagCursor
    }
}
