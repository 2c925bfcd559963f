import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The folders and projects of the scanned tree. Up and down move, right opens, left closes, Enter chooses.
ListView {
    id: outline

    signal toggled(int row)
    signal expandedSet(int row, bool expanded)
    signal projectChosen(string projectID)
    signal folderChosen(string path)
    // The path of what the window shows.
    property string current

    clip: true
    activeFocusOnTab: count > 0 || activeFocus
    boundsBehavior: Flickable.StopAtBounds
    highlightFollowsCurrentItem: true
    highlightMoveDuration: 0
    reuseItems: true
    // None ahead of need: Qt goes on asking for those whose rows have gone.
    cacheBuffer: 0
    Accessible.role: Accessible.Tree
    Accessible.name: qsTr("Folders")

    delegate: OutlineRow {
        width: ListView.view.width
        selected: path === outline.current
        onChosen: {
            outline.currentIndex = index;
            if (isFolder) {
                outline.expandedSet(index, true);
                outline.folderChosen(path);
            } else {
                outline.projectChosen(projectID);
            }
        }
        onToggled: outline.toggled(index)
        onExpandedSet: value => outline.expandedSet(index, value)
    }

    T.ScrollBar.vertical: ScrollBar {}
}
