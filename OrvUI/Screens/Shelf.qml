import OrvLauncher.Screens
import QtQuick

// A titled row of items that wraps into columns; it takes no room while it is empty.
Column {
    id: shelf

    property alias title: header.text
    property alias count: header.count
    property alias showsCount: header.showsCount
    property int columns: 3
    property int itemHeight: Theme.runningItemHeight
    readonly property int itemWidth: Math.floor((width - (columns - 1) * Theme.gridGap) / columns)
    property alias action: header.actions
    default property alias items: grid.data

    spacing: Theme.space8

    SectionHeader {
        id: header

        width: parent.width
    }

    Grid {
        id: grid

        columns: shelf.columns
        columnSpacing: Theme.gridGap
        rowSpacing: Theme.gridGap
        Accessible.role: Accessible.List
        Accessible.name: header.text
    }
}
