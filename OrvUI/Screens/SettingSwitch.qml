import OrvLauncher.Screens
import QtQuick

// A setting that is on or off. The switch shows what is stored, not what was clicked.
SettingRow {
    id: row

    required property bool on
    property string name: title
    // Of a shortcut that it switches.
    property var keys: []
    signal toggled(bool on)

    Row {
        anchors.verticalCenter: parent.verticalCenter
        visible: row.keys.length > 0
        spacing: Theme.space4

        Repeater {
            model: row.keys

            KeyHint {
                required property string modelData

                text: modelData
            }
        }
    }

    Switch {
        focus: true
        anchors.verticalCenter: parent.verticalCenter
        enabled: row.enabled
        text: row.name
        checked: row.on
        onClicked: {
            const wanted = checked;
            checked = Qt.binding(() => row.on);
            row.toggled(wanted);
        }
    }
}
