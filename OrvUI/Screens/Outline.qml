import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The folders and projects of the scanned tree. Up and down move, right opens, left closes, Enter chooses.
ListView {
    id: outline

    signal toggled(int row)
    signal expandedSet(int row, bool expanded)
    signal projectChosen(string projectID)

    clip: true
    activeFocusOnTab: count > 0
    boundsBehavior: Flickable.StopAtBounds
    highlightFollowsCurrentItem: true
    highlightMoveDuration: 0
    reuseItems: true
    Accessible.role: Accessible.Tree
    Accessible.name: qsTr("Folders")

    delegate: OutlineRow {
        width: ListView.view.width
        onChosen: {
            outline.currentIndex = index;
            hasChildren && isFolder ? outline.toggled(index) : outline.projectChosen(projectID);
        }
        onToggled: outline.toggled(index)
        onExpandedSet: value => outline.expandedSet(index, value)
    }

    T.ScrollBar.vertical: ScrollBar {}
}
