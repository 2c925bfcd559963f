import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The settings: sections at the left, or as a strip above where the window is narrow.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    property bool narrow: false
    property int padding: Theme.pagePadding
    readonly property bool scrolled: view.contentY > Theme.hairline
    readonly property var sections: [
        {
            "text": qsTr("Profile"),
            "glyph": "circle-user",
            "source": "SettingsProfile.qml"
        },
        {
            "text": qsTr("Git"),
            "glyph": "git-branch",
            "source": "SettingsGit.qml"
        },
        {
            "text": qsTr("AI"),
            "glyph": "sparkles",
            "source": "SettingsAi.qml"
        },
        {
            "text": qsTr("Appearance"),
            "glyph": "palette",
            "source": "SettingsAppearance.qml"
        },
        {
            "text": qsTr("Notifications"),
            "glyph": "bell",
            "source": "SettingsNotifications.qml"
        },
        {
            "text": qsTr("General"),
            "glyph": "sliders-horizontal",
            "source": "SettingsGeneral.qml"
        },
        {
            "text": qsTr("Projects"),
            "glyph": "folder-cog",
            "source": "SettingsProjects.qml"
        }
    ]
    signal folderRequested

    SettingsForm {
        id: form

        model: page.model
    }

    Grid {
        id: strip

        // Where all stand side by side.
        readonly property int room: page.width - 2 * page.padding
        readonly property bool hasGlyphs: room >= Theme.settingsWidth

        x: page.narrow ? page.padding : page.padding - Theme.space12
        y: Theme.space4
        columns: page.narrow ? page.sections.length : 1
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Sections")

        Repeater {
            model: page.sections

            SidebarRow {
                id: entry

                required property var modelData
                required property int index

                width: page.narrow ? naturalWidth : Theme.settingsNavWidth
                glyph: page.narrow && !strip.hasGlyphs ? "" : modelData.glyph
                text: modelData.text
                showsCount: false
                selected: page.nav.section === index
                onClicked: page.nav.settings(index)
                Keys.onDownPressed: entry.nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
                Keys.onUpPressed: entry.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            }
        }
    }

    Flickable {
        id: view

        objectName: "view"
        anchors.fill: parent
        anchors.topMargin: page.narrow ? strip.y + strip.height + Theme.space8 : 0
        anchors.leftMargin: page.narrow ? 0 : strip.x + strip.width
        contentHeight: column.height + Theme.space40
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Column {
            id: column

            x: page.narrow ? page.padding : Theme.space40
            width: Math.min(Theme.settingsWidth, view.width - x - page.padding)
            spacing: Theme.space16

            Label {
                id: heading

                height: Theme.space40
                verticalAlignment: Text.AlignVCenter
                role: Theme.Page
                text: page.sections[page.nav.section].text
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }

            Loader {
                id: section

                width: column.width

                Component.onCompleted: page.show()
            }
        }

        FocusFollower {
            view: view
            margin: Theme.space8
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    function show() {
        view.contentY = 0;
        section.setSource(page.sections[page.nav.section].source, {
            "model": page.model,
            "form": form
        });
    }

    Connections {
        target: page.nav

        function onMoved() {
            if (page.nav.page === Navigator.Settings) {
                page.show();
            }
        }
    }

    Connections {
        target: section.item
        ignoreUnknownSignals: true

        function onFolderRequested() {
            page.folderRequested();
        }
    }
}
