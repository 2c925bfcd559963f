import OrvLauncher.Screens
import QtQuick

// The home page: one scrolling grid of cards with the shelves above it.
FocusScope {
    id: page

    required property AppModel model
    property int padding: Theme.pagePadding
    readonly property bool scrolled: cards.scrolled
    readonly property int columns: cards.columns
    readonly property bool narrowed: model.searchText.length > 0 || model.filterIndex !== 0
    signal folderRequested
    signal projectChosen(string projectID)

    function focusCards() {
        cards.focusCards();
    }

    CardGrid {
        id: cards

        anchors.fill: parent
        focus: true
        model: page.model
        cards: page.model.cards
        padding: page.padding
        onProjectChosen: projectID => page.projectChosen(projectID)

        header: HomeHeader {
            width: cards.contentWidth
            model: page.model
            columns: cards.columns
            narrowed: page.narrowed
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
                    width: cards.cellWidth - Theme.gridGap
                    height: Theme.cardHeight
                }
            }
        }
    }

    Loader {
        x: Math.round((page.width - width) / 2)
        y: Math.max(cards.headerItem ? cards.headerItem.height + Theme.space16 : 0, Math.round((page.height - height) / 2) - (page.narrowed ? 0 : Theme.space12))
        active: page.model.hasScanned && page.model.shownCount === 0
        sourceComponent: page.model.projectCount === 0 ? noProjects : noResults
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
                visible: page.model.filterIndex !== 0
                ghost: page.model.searchText.length > 0
                text: qsTr("Show all projects")
                onClicked: page.model.filterIndex = 0
            }
        }
    }
}
