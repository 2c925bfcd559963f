import OrvLauncher.Screens
import QtQuick

// Why nothing goes on with a run, beside what was pressed for it.
Label {
    id: refusal

    required property AgentModels agents
    required property string key
    property string reason

    visible: reason.length > 0
    role: Theme.Small
    color: Theme.danger
    wrapMode: Text.Wrap
    elide: Text.ElideNone
    text: reason
    Accessible.role: Accessible.AlertMessage
    Accessible.name: reason

    Connections {
        target: refusal.agents

        // One is said at a time.
        function onRefused(key, reason) {
            refusal.reason = key === refusal.key ? reason : "";
        }
    }
}
