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
    // What is looked for in all sections; empty: nothing is.
    property string searchText
    readonly property string search: searchText.trim().replace(/\s+/g, " ")
    readonly property bool searches: search.length > 0
    // Those with something of what is looked for.
    readonly property var found: sections.map((_, index) => parts.count > index && (parts.itemAt(index) as SettingsPart).hasMatches)
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
    // What was found and is to be shown once all of its section is in its place.
    property SettingHit wanted
    signal folderRequested
    signal searchDropped
    signal searchWanted

    // At the first thing that was found.
    function focusResults() {
        // What can't be changed now takes no focus.
        if (!page.goFrom(view, true) && page.found.includes(true)) {
            entries.itemAt(page.found.indexOf(true)).forceActiveFocus(Qt.TabFocusReason);
        }
    }

    function isInside(item, place) {
        while (item !== null && item !== place) {
            item = item.parent;
        }
        return item !== null;
    }

    // To the next of what was found, or the one before; false where there is none.
    function goFrom(item, forward) {
        let next = item.nextItemInFocusChain(forward);
        while (next !== null && page.isInside(next, view)) {
            if ((next as SettingHit) !== null || (next.parent as OverrideItem) !== null) {
                next.forceActiveFocus(forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
                return true;
            }
            next = next.nextItemInFocusChain(forward);
        }
        return false;
    }

    // Where a setting that was found is at home: what changes it gets the focus.
    function show(hit) {
        page.wanted = hit;
        page.nav.settings(hit.part.index);
        page.searchDropped();
    }

    function take(event) {
        const hit = Window.activeFocusItem as SettingHit;
        event.accepted = hit !== null;
        if (hit !== null) {
            page.show(hit);
        }
    }

    focus: true
    Keys.enabled: page.searches
    Keys.onDownPressed: page.goFrom(Window.activeFocusItem, true)
    Keys.onUpPressed: {
        if (!page.goFrom(Window.activeFocusItem, false)) {
            page.searchWanted();
        }
    }
    Keys.onReturnPressed: event => page.take(event)
    Keys.onEnterPressed: event => page.take(event)
    Keys.onEscapePressed: page.searchWanted()

    SettingsForm {
        id: preferences

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
            id: entries

            model: page.sections

            SidebarRow {
                id: entry

                required property var modelData
                required property int index

                width: page.narrow ? naturalWidth : Theme.settingsNavWidth
                glyph: page.narrow && !strip.hasGlyphs ? "" : modelData.glyph
                text: modelData.text
                showsCount: false
                visible: !page.searches || page.found[index]
                selected: !page.searches && page.nav.section === index
                focus: selected
                onClicked: {
                    page.nav.settings(index);
                    page.searchDropped();
                }
                Keys.onDownPressed: entry.nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
                Keys.onUpPressed: entry.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            }
        }
    }

    Flickable {
        id: view

        objectName: "view"
        anchors.fill: parent
        anchors.topMargin: page.narrow ? strip.y + Theme.sidebarRowHeight + Theme.space8 : 0
        anchors.leftMargin: page.narrow ? 0 : strip.x + Theme.settingsNavWidth
        contentHeight: column.height + Theme.space40
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Item {
            id: column

            readonly property SettingsPart last: parts.count === page.sections.length ? parts.itemAt(parts.count - 1) as SettingsPart : null

            x: page.narrow ? page.padding : Theme.space40
            width: Math.min(Theme.settingsWidth, view.width - x - page.padding)
            height: nothing.visible ? nothing.height : last?.below ?? 0

            // In their places at once: a column would put them there a frame later.
            Repeater {
                id: parts

                model: page.sections

                SettingsPart {
                    readonly property SettingsPart above: index > 0 ? parts.itemAt(index - 1) as SettingsPart : null

                    y: above?.below ?? 0
                    width: column.width
                    model: page.model
                    nav: page.nav
                    form: preferences
                    wanted: page.search
                    onFolderRequested: page.folderRequested()
                }
            }

            Label {
                id: nothing

                visible: page.searches && !page.found.includes(true)
                topPadding: Theme.space8
                color: Theme.text3
                text: qsTr("No setting is called that")
            }
        }

        FocusFollower {
            view: view
            margin: Theme.space8
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    Connections {
        target: page.nav

        function onMoved() {
            view.contentY = 0;
        }
    }

    Connections {
        target: page.Window.window
        enabled: page.wanted !== null

        function onAfterAnimating() {
            const control = page.wanted.nextItemInFocusChain(true);
            if (page.isInside(control, page.wanted.home)) {
                control.forceActiveFocus(Qt.TabFocusReason);
            }
            page.wanted = null;
        }
    }

    onSearchChanged: view.contentY = 0
}
