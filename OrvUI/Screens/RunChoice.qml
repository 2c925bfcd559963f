import OrvLauncher.Screens
import QtQuick

// The menu of what there is to run and to stop in a project; made when it is first asked for.
Loader {
    id: choice

    required property AppModel model
    required property ProjectDetail detail

    // What a button without a menu starts.
    readonly property string preferred: choice.offered(detail.startable, detail.defaultAction)

    function offered(actions, wanted) {
        return actions.includes(wanted) ? wanted : actions[0] ?? "";
    }

    function open(anchor) {
        choice.active = true;
        const menu = choice.item as RunMenu;
        const actions = Array.from(choice.detail.actions);
        menu.running = actions.filter(action => action.state !== "idle").map(action => action.label);
        menu.actions = actions.map(action => action.label);
        menu.choosesDevice = choice.detail.isFlutter;
        menu.popup(anchor, anchor.width - menu.width, anchor.height + Theme.space4);
    }

    active: false
    visible: false

    sourceComponent: RunMenu {
        onChosen: action => choice.model.runAction(choice.detail.projectID, action)
        onStopped: action => choice.detail.stopAction(action)
        onDeviceAsked: choice.model.devices.ask(choice.detail.projectID)
    }
}
