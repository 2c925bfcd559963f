import OrvLauncher.Screens
import QtQuick

// Settings that belong together: a heading and rows on one card, a hairline between them.
SettingBlock {
    id: group

    default property alias rows: rows.data

    // What is hidden has no height any more by which it could be found again.
    hasHeading: rows.implicitHeight > 0
    single: false

    CardFace {
        width: group.width
        height: rows.height
        opacity: group.hasHeading ? 1 : 0
        Accessible.role: Accessible.Grouping
        Accessible.name: group.heading

        Column {
            id: rows

            width: parent.width
        }
    }
}
