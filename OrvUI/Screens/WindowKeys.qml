import OrvLauncher.Screens
import QtQuick

// The keys that mean the same wherever one is in the window.
Item {
    id: keys

    required property AppModel model
    required property Navigator nav
    // Whether there is a search in the page.
    property bool searches: false
    signal searchAsked
    signal paletteAsked
    signal shortcutsAsked
    // One part of the window further (1), or back (-1).
    signal regionAsked(int step)
    signal sidebarAsked
    signal closeAsked
    signal quitAsked

    Shortcut {
        enabled: keys.searches
        sequences: Keymap.of("search")
        onActivated: keys.searchAsked()
    }

    Shortcut {
        sequences: Keymap.of("palette")
        onActivated: keys.paletteAsked()
    }

    Shortcut {
        sequences: Keymap.of("shortcuts")
        onActivated: keys.shortcutsAsked()
    }

    Shortcut {
        sequences: Keymap.of("refresh")
        onActivated: keys.model.refreshNow()
    }

    Instantiator {
        model: 5

        Shortcut {
            required property int index

            sequence: Keymap.nth("filter", index)
            onActivated: {
                keys.model.filterIndex = index;
                keys.nav.home();
            }
        }
    }

    // A field would take them for a figure.
    Instantiator {
        model: 6

        Shortcut {
            required property int index

            enabled: [Navigator.Tasks, Navigator.Ai, Navigator.Settings].includes(keys.nav.page)
            sequence: Keymap.nth("tab", index)
            onActivated: keys.model.showStatus(qsTr("%1 shows a part of a project: open one first.").arg(Keymap.nthText("tab", index)), false)
        }
    }

    Shortcut {
        sequences: Keymap.of("newFolder")
        onActivated: keys.nav.addProject(false)
    }

    Shortcut {
        sequences: Keymap.of("clone")
        onActivated: keys.nav.addProject(true)
    }

    Shortcut {
        sequences: Keymap.of("tasks")
        onActivated: keys.nav.tasks()
    }

    Shortcut {
        sequences: Keymap.of("newTask")
        onActivated: keys.nav.page === Navigator.Project ? keys.nav.wishFor(keys.nav.pageID, 1, "newTask") : keys.nav.newTask()
    }

    Shortcut {
        sequences: Keymap.of("ai")
        onActivated: keys.nav.ai()
    }

    Shortcut {
        sequences: Keymap.of("home")
        onActivated: keys.nav.home()
    }

    Shortcut {
        sequences: Keymap.of("settings")
        onActivated: keys.nav.settings()
    }

    Shortcut {
        sequences: [StandardKey.Back]
        onActivated: keys.nav.back()
    }

    Shortcut {
        sequences: [StandardKey.Forward]
        onActivated: keys.nav.forward()
    }

    Shortcut {
        enabled: keys.model.undoText.length > 0
        sequences: Keymap.of("undo")
        onActivated: keys.model.undo()
    }

    UndoKey {}

    Shortcut {
        sequences: Keymap.of("nextRegion")
        onActivated: keys.regionAsked(1)
    }

    Shortcut {
        sequences: Keymap.of("previousRegion")
        onActivated: keys.regionAsked(-1)
    }

    Shortcut {
        sequences: Keymap.of("sidebar")
        onActivated: keys.sidebarAsked()
    }

    // Of the application: a sheet that is open does not keep it from ending.
    Shortcut {
        sequences: Keymap.of("closeWindow")
        context: Qt.ApplicationShortcut
        onActivated: keys.closeAsked()
    }

    Shortcut {
        sequences: Keymap.of("quit")
        context: Qt.ApplicationShortcut
        onActivated: keys.quitAsked()
    }
}
