import OrvLauncher.Screens
import QtQuick

// The look: mode and theme as small windows, and how the home page opens.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form
    // What is looked for among the settings; empty: everything is shown.
    property string search

    spacing: Theme.space28

    SettingBlock {
        width: parent.width
        spacing: Theme.space16
        search: section.search
        heading: qsTr("Mode")
        also: modes.names.join(" ")
        visible: finds("")

        Row {
            id: modes

            readonly property var names: [qsTr("System"), qsTr("Light"), qsTr("Dark")]

            spacing: Theme.space24
            Accessible.role: Accessible.Grouping
            Accessible.name: qsTr("Mode")

            Repeater {
                model: modes.names

                SwatchCard {
                    required property int index
                    required property string modelData

                    previewWidth: Math.min(Theme.modeSwatchWidth, Math.floor((section.width - 2 * modes.spacing) / 3))
                    previewHeight: Theme.modeSwatchHeight
                    theme: section.model.themeIndex
                    dark: index === 2
                    halved: index === 0
                    text: modelData
                    checked: section.model.appearance === index
                    onClicked: section.model.appearance = index
                }
            }
        }
    }

    SettingBlock {
        width: parent.width
        spacing: Theme.space16
        search: section.search
        heading: qsTr("Theme")
        also: themes.names.join(" ")
        visible: finds("")

        Flow {
            id: themes

            readonly property var names: [qsTr("Ember"), qsTr("Ocean"), qsTr("Forest"), qsTr("Violet"), qsTr("Graphite")]

            width: parent.width
            spacing: Theme.space16 + Theme.space2
            Accessible.role: Accessible.Grouping
            Accessible.name: qsTr("Theme")

            Repeater {
                model: themes.names

                SwatchCard {
                    required property int index
                    required property string modelData

                    previewWidth: Theme.themeSwatchWidth
                    previewHeight: Theme.themeSwatchHeight
                    theme: index
                    dark: Theme.isDark
                    text: modelData
                    checked: section.model.themeIndex === index
                    onClicked: section.model.themeIndex = index
                }
            }
        }
    }

    SettingGroup {
        search: section.search
        width: parent.width
        heading: qsTr("Projects")

        SettingRow {
            title: qsTr("Show projects as")
            text: qsTr("How the home page opens")

            Segmented {
                anchors.verticalCenter: parent.verticalCenter
                name: qsTr("Show projects as")
                currentIndex: section.form.viewMode
                choices: [
                    {
                        "text": qsTr("Cards"),
                        "glyph": "layout-grid"
                    },
                    {
                        "text": qsTr("Folders"),
                        "glyph": "list-tree"
                    }
                ]
                onChosen: index => section.form.viewMode = index
            }
        }

        SettingRow {
            title: qsTr("Suggestions on the home page")
            text: qsTr("Bring back the cards that you dismissed")

            Button {
                anchors.verticalCenter: parent.verticalCenter
                enabled: section.form.dismissedSuggestions > 0
                text: qsTr("Show again")
                onClicked: section.form.restoreSuggestions()
            }
        }
    }
}
