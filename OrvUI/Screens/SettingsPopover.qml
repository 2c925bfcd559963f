import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The look of the application and the folder that it scans.
Popover {
    id: popover

    required property AppModel model
    signal folderRequested

    padding: Theme.space16

    contentItem: Column {
        spacing: Theme.space12

        Label {
            role: Theme.Section
            text: qsTr("Appearance")
        }

        Segmented {
            id: modes

            focus: true
            name: qsTr("Appearance")
            currentIndex: popover.model.appearance
            choices: [
                {
                    "text": qsTr("System"),
                    "glyph": "monitor"
                },
                {
                    "text": qsTr("Light"),
                    "glyph": "sun"
                },
                {
                    "text": qsTr("Dark"),
                    "glyph": "moon"
                }
            ]
            onChosen: index => popover.model.appearance = index
        }

        Row {
            spacing: Theme.space12
            Accessible.role: Accessible.Grouping
            Accessible.name: qsTr("Theme")

            Repeater {
                model: [qsTr("Ember"), qsTr("Ocean"), qsTr("Forest"), qsTr("Violet"), qsTr("Graphite")]

                ThemeSwatch {
                    required property int index
                    required property string modelData

                    theme: index
                    text: modelData
                    checked: popover.model.themeIndex === index
                    onClicked: popover.model.themeIndex = index
                }
            }
        }

        Rectangle {
            width: modes.width
            height: Theme.hairline
            color: Theme.border
        }

        Label {
            role: Theme.Section
            text: qsTr("Projects folder")
        }

        Label {
            id: root

            width: modes.width
            role: Theme.MonoPath
            color: Theme.text2
            elide: Text.ElideMiddle
            text: popover.model.scanRootText

            Tip {
                text: root.truncated ? root.text : ""
            }
        }

        Button {
            glyph: "folder-search"
            text: qsTr("Choose folder…")
            onClicked: {
                popover.close();
                popover.folderRequested();
            }
        }
    }
}
