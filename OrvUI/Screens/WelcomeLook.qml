import OrvLauncher.Screens
import QtQuick

// Theme and mode, seen at once.
WelcomePage {
    id: page

    title: qsTr("Make it yours")
    text: qsTr("You can change both at any time in Settings.")

    Column {
        width: parent.width
        spacing: Theme.space8

        Label {
            role: Theme.SmallStrong
            color: Theme.text2
            text: qsTr("Mode")
        }

        Segmented {
            width: parent.width
            implicitHeight: Theme.buttonDialog
            stretched: true
            focus: true
            name: qsTr("Mode")
            currentIndex: page.form.appearance
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
            onChosen: index => page.form.appearance = index
        }
    }

    Column {
        width: parent.width
        spacing: Theme.space8

        Label {
            role: Theme.SmallStrong
            color: Theme.text2
            text: qsTr("Theme")
        }

        Flow {
            id: swatches

            readonly property int swatchWidth: Math.min(Theme.themeSwatchWidth + Theme.space16, Math.floor((width - 2 * leftPadding - 2 * spacing) / 3))

            width: parent.width
            leftPadding: Theme.space4
            topPadding: Theme.space4
            spacing: Theme.space20
            Accessible.role: Accessible.Grouping
            Accessible.name: qsTr("Theme")

            Repeater {
                model: [qsTr("Ember"), qsTr("Ocean"), qsTr("Forest"), qsTr("Violet"), qsTr("Graphite")]

                SwatchCard {
                    required property int index
                    required property string modelData

                    previewWidth: swatches.swatchWidth
                    previewHeight: Math.round(previewWidth * 3 / 4)
                    theme: index
                    dark: Theme.isDark
                    text: modelData
                    checked: page.form.theme === index
                    onClicked: page.form.theme = index
                }
            }
        }
    }
}
