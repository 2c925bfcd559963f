import OrvLauncher.Screens
import QtQuick

// The home page: one scrolling grid of cards, or a list of rows in their folders, with the shelves above it.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    // What another look for projects would find.
    property string news
    property int padding: Theme.pagePadding
    property real covered: 0
    readonly property bool scrolled: cards.scrolled
    readonly property int columns: cards.columns
    readonly property FilterBar bar: model.filterBar
    readonly property bool narrowed: model.searchText.length > 0 || model.filterIndex !== 0 || bar.narrows
    signal folderRequested
    signal addRequested(bool clones)
    signal projectChosen(string projectID)
    signal collectionChosen(string path)
    signal folderChosen(string path)

    function focusCards() {
        cards.focusCards();
    }

    function openFilters() {
        (cards.headerItem as HomeHeader)?.openFilters();
    }

    function toggleView() {
        settings.viewMode = settings.viewMode === 0 ? 1 : 0;
        cards.focusCards();
    }

    SettingsForm {
        id: settings

        model: page.model
    }

    FolderTree {
        id: folders

        model: page.model
    }

    CardGrid {
        id: cards

        anchors.fill: parent
        focus: true
        model: page.model
        nav: page.nav
        listed: settings.viewMode === 1
        cards: listed ? folders.rows : page.model.homeCards
        padding: page.padding
        covered: page.covered
        onProjectChosen: projectID => page.projectChosen(projectID)
        onCollectionChosen: path => page.collectionChosen(path)
        onFolderChosen: path => page.folderChosen(path)

        header: HomeHeader {
            width: cards.contentWidth
            model: page.model
            news: page.news
            columns: cards.columns
            narrowed: page.narrowed
            onProjectChosen: projectID => page.projectChosen(projectID)
            onLogsChosen: (projectID, key) => {
                page.model.logs.projectID = projectID;
                page.model.logs.show(key);
                page.nav.project(projectID, 3);
            }
            form: settings
        }
    }

    Loader {
        id: skeletons

        x: cards.gridX
        y: cards.headerItem ? cards.headerItem.height : 0
        width: cards.contentWidth
        active: !page.model.hasScanned

        sourceComponent: Grid {
            columns: cards.columns
            spacing: Theme.gridGap

            Repeater {
                model: cards.columns * 3

                Skeleton {
                    width: Math.floor((skeletons.width + Theme.gridGap) / cards.columns) - Theme.gridGap
                    height: Theme.cardHeight
                }
            }
        }
    }

    Loader {
        x: Math.round((page.width - width) / 2)
        y: Math.max(cards.headerItem ? cards.headerItem.height + Theme.space16 : 0, Math.round((page.height - height) / 2) - (page.narrowed ? 0 : Theme.space12))
        active: page.model.hasScanned && cards.count === 0
        sourceComponent: page.model.projectCount > 0 ? noResults : folders.isRootMissing ? noFolder : noProjects
    }

    Component {
        id: noFolder

        EmptyState {
            large: true
            picture: "no-projects"
            heading: qsTr("The projects folder is missing")
            text: qsTr("There is no folder %1. Point OrvLauncher at another one, or make it and refresh.").arg(page.model.scanRootText)

            Button {
                primary: true
                glyph: "folder-search"
                text: qsTr("Choose folder…")
                onClicked: page.folderRequested()
            }

            Button {
                glyph: "refresh-cw"
                text: qsTr("Refresh")
                onClicked: page.model.refreshNow()
            }
        }
    }

    Component {
        id: noProjects

        EmptyState {
            large: true
            picture: "no-projects"
            heading: qsTr("Nothing here yet")
            text: qsTr("No projects were found in %1. Add one, clone a repository, or point OrvLauncher at another folder.").arg(page.model.scanRootText)

            Button {
                primary: true
                glyph: "plus"
                text: qsTr("Add project")
                onClicked: page.addRequested(false)
            }

            Button {
                glyph: "git-branch"
                text: qsTr("Clone repository")
                onClicked: page.addRequested(true)
            }

            Button {
                ghost: true
                glyph: "folder-search"
                text: qsTr("Choose folder…")
                onClicked: page.folderRequested()
            }
        }
    }

    Component {
        id: noResults

        EmptyState {
            picture: "no-results"
            heading: qsTr("No projects match")
            text: qsTr("Try a different search or filter.")

            Button {
                visible: page.model.searchText.length > 0
                text: qsTr("Clear search")
                onClicked: page.model.searchText = ""
            }

            Button {
                visible: page.bar.activeCount > 0 || page.bar.onlyUncommitted
                ghost: page.model.searchText.length > 0
                text: qsTr("Clear filters")
                onClicked: page.bar.clear()
            }

            Button {
                visible: page.model.filterIndex !== 0
                ghost: page.model.searchText.length > 0 || page.bar.activeCount > 0
                text: qsTr("Show all projects")
                onClicked: page.model.filterIndex = 0
            }
        }
    }

    Shortcut {
        enabled: page.visible
        sequences: Keymap.of("filters")
        onActivated: page.openFilters()
    }

    Shortcut {
        enabled: page.visible
        sequences: Keymap.of("view")
        onActivated: page.toggleView()
    }

    Shortcut {
        enabled: page.visible
        sequences: Keymap.of("unsaved")
        onActivated: page.bar.onlyUncommitted = !page.bar.onlyUncommitted
    }
}
