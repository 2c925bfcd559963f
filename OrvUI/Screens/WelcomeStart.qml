import OrvLauncher.Screens
import QtQuick

// What the application is for.
FocusScope {
    id: page

    required property AppModel model
    required property OnboardingModel form

    implicitHeight: column.height

    Column {
        id: column

        width: parent.width

        Illustration {
            // The plate has a margin of its own.
            x: -Theme.space8
            width: Theme.welcomeMark + Theme.space16
            height: width
            name: "app-icon"
        }

        Label {
            width: parent.width
            topPadding: Theme.space20
            role: Theme.Hero
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            text: qsTr("Welcome to OrvLauncher")
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        Label {
            width: parent.width
            topPadding: Theme.space10
            bottomPadding: Theme.space32 + Theme.space2
            role: Theme.Lead
            color: Theme.text2
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            text: qsTr("Your local projects in one place, one click from running.")
        }

        Repeater {
            model: [
                {
                    "glyph": "own-play-fill",
                    "title": qsTr("Run anything"),
                    "text": qsTr("Web, back end, Flutter and Docker, started the right way.")
                },
                {
                    "glyph": "git-branch",
                    "title": qsTr("Keep git in view"),
                    "text": qsTr("See what changed, commit, pull and push without leaving.")
                },
                {
                    "glyph": "sparkles",
                    "title": qsTr("Hand tasks to an agent"),
                    "text": qsTr("Follow what it does, then review the changes.")
                }
            ]

            Item {
                id: point

                required property var modelData

                width: column.width
                height: Math.max(Theme.space40 + Theme.space20, words.y + words.height + Theme.space20)

                Rectangle {
                    id: tile

                    width: Theme.tile
                    height: width
                    radius: Theme.tileRadius(width)
                    color: Theme.selection

                    Icon {
                        anchors.centerIn: parent
                        name: point.modelData.glyph
                        size: Theme.iconLarge
                        color: Theme.accentText
                    }
                }

                Label {
                    id: heading

                    anchors.left: tile.right
                    anchors.leftMargin: Theme.space16
                    anchors.right: parent.right
                    y: -Theme.hairline
                    role: Theme.CardTitle
                    text: point.modelData.title
                }

                Label {
                    id: words

                    anchors.left: heading.left
                    anchors.right: parent.right
                    anchors.top: heading.bottom
                    color: Theme.text2
                    wrapMode: Text.Wrap
                    maximumLineCount: 2
                    text: point.modelData.text
                }
            }
        }
    }
}
