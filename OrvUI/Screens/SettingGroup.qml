import OrvLauncher.Screens
import QtQuick

// Settings that belong together: a heading and rows on one card, a hairline between them.
Column {
    id: group

    property string heading
    default property alias rows: rows.data

    spacing: Theme.space12

    Label {
        visible: text.length > 0
        role: Theme.Section
        text: group.heading
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    CardFace {
        width: group.width
        height: rows.height
        Accessible.role: Accessible.Grouping
        Accessible.name: group.heading

        Column {
            id: rows

            width: parent.width
        }
    }
}
