import OrvLauncher.Screens
import QtQuick

// The keys of a project, which are the same on its page and on its card.
Item {
    id: keys

    required property AppModel model
    required property Navigator nav
    required property string projectID
    // A terminal that is shown has its own meaning for some of them.
    property bool inTerminal: false
    signal choiceAsked
    signal agentAsked
    signal tabAsked(int index)

    Instantiator {
        model: 6

        Shortcut {
            required property int index

            enabled: keys.enabled
            sequence: Keymap.nth("tab", index)
            onActivated: keys.tabAsked(index)
        }
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("run")
        onActivated: keys.model.toggleProject(keys.projectID)
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("chooseRun")
        onActivated: keys.choiceAsked()
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("restart")
        onActivated: keys.model.restartProject(keys.projectID)
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("stopAll")
        onActivated: keys.model.stopProject(keys.projectID)
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("browse")
        onActivated: keys.model.openProject(keys.projectID)
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("pin")
        onActivated: keys.model.togglePinFor(keys.projectID)
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("ask")
        onActivated: keys.agentAsked()
    }

    Shortcut {
        enabled: keys.enabled && !keys.inTerminal
        sequences: Keymap.of("fetch")
        onActivated: keys.model.quickGitFor(keys.projectID, "fetch")
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("pull")
        onActivated: keys.model.quickGitFor(keys.projectID, "pull")
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("push")
        onActivated: keys.model.quickGitFor(keys.projectID, "push")
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("branches")
        onActivated: keys.nav.wishFor(keys.projectID, 4, "branches")
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("newBranch")
        onActivated: keys.nav.wishFor(keys.projectID, 4, "newBranch")
    }

    Shortcut {
        enabled: keys.enabled && !keys.inTerminal
        sequences: Keymap.of("newTerminal")
        onActivated: keys.nav.wishFor(keys.projectID, 2, "newTerminal")
    }

    Shortcut {
        enabled: keys.enabled
        sequences: Keymap.of("findFile")
        onActivated: keys.nav.wishFor(keys.projectID, 5, "findFile")
    }
}
