import OrvLauncher.Screens
import QtQuick

// What narrows and arranges the projects of the home page, at the right of their heading.
Row {
    id: tools

    required property FilterBar bar
    // Index of the way in which projects are shown.
    required property int viewMode
    signal viewModeChosen(int mode)

    function openFilters() {
        filters.clicked();
    }

    spacing: Theme.space8

    ToolToggle {
        glyph: "file-diff"
        text: qsTr("Unsaved changes")
        shortcut: Keymap.text("unsaved")
        on: tools.bar.onlyUncommitted
        onClicked: tools.bar.onlyUncommitted = !tools.bar.onlyUncommitted
    }

    ToolToggle {
        id: filters

        glyph: "list-filter"
        text: qsTr("Filters")
        shortcut: Keymap.text("filters")
        on: count > 0 || (popover.item as FilterPopover)?.opened === true
        count: tools.bar.activeCount
        property int toldRole: Accessible.ButtonMenu
        Accessible.role: toldRole
        onClicked: {
            popover.active = true;
            const sheet = popover.item as FilterPopover;
            sheet.opened ? sheet.close() : sheet.open();
        }
    }

    Segmented {
        name: qsTr("Show projects as")
        currentIndex: tools.viewMode
        choices: [
            {
                "glyph": "layout-grid",
                "name": qsTr("Cards"),
                "shortcut": Keymap.text("view")
            },
            {
                "glyph": "list-tree",
                "name": qsTr("Folders"),
                "shortcut": Keymap.text("view")
            }
        ]
        onChosen: index => tools.viewModeChosen(index)
    }

    Loader {
        id: popover

        active: false

        sourceComponent: FilterPopover {
            parent: tools
            x: tools.width - width
            y: tools.height + Theme.space12
            bar: tools.bar
        }
    }
}
