import OrvLauncher.Screens
import QtQuick

// A setting that is on or off. The switch shows what is stored, not what was clicked.
SettingRow {
    id: row

    required property bool on
    property string name: title
    signal toggled(bool on)

    Switch {
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
