import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The home page: one scrolling grid of cards with the shelves above it.
FocusScope {
    id: page

    required property AppModel model
    property int padding: Theme.pagePadding
    readonly property bool scrolled: grid.contentY > grid.originY + Theme.hairline
    readonly property int contentWidth: Math.min(width - 2 * padding, Theme.contentWidthLimit)
    readonly property int columns: Math.max(1, Math.min(4, Math.floor((contentWidth + Theme.gridGap) / Theme.cardColumnWidth)))
    readonly property bool narrowed: model.searchText.length > 0 || model.filterIndex !== 0
    readonly property ProjectCard currentCard: grid.currentItem as ProjectCard
    signal folderRequested

    function focusCards() {
        grid.forceActiveFocus(Qt.TabFocusReason);
    }

    function showProject(projectID) {
        const row = Rows.find(page.model.cards, "projectID", projectID);
        if (row >= 0) {
            grid.currentIndex = row;
            grid.positionViewAtIndex(row, GridView.Contain);
            focusCards();
        }
    }

    function openMenu(card, anchor) {
        menu.active = true;
        menu.item.card = card;
        menu.item.popup(anchor, anchor === card ? card.width / 2 : anchor.width - menu.item.width, anchor === card ? card.height / 2 : anchor.height + Theme.space4);
    }

    function openChoice(card, anchor) {
        choice.active = true;
        choice.item.projectID = card.projectID;
        choice.item.actions = card.actions;
        choice.item.popup(anchor, anchor.width - choice.item.width, anchor.height + Theme.space4);
    }

    clip: true

    // Left and right of the grid the wheel scrolls as well.
    WheelHandler {
        onWheel: event => grid.flick(0, event.angleDelta.y * Theme.wheelSpeed)
    }

    GridView {
        id: grid

        property real topBefore: originY

        objectName: "cardGrid"

        anchors.top: parent.top
        anchors.bottom: parent.bottom
        x: Math.round((page.width - page.contentWidth) / 2)
        width: page.contentWidth + Theme.gridGap
        cellWidth: Math.floor(width / page.columns)
        cellHeight: Theme.cardHeight + Theme.gridGap
        bottomMargin: Theme.shelfGap
        boundsBehavior: Flickable.StopAtBounds
        focus: true
        activeFocusOnTab: true
        keyNavigationWraps: false
        highlightMoveDuration: 0
        cacheBuffer: Theme.cardHeight
        model: page.model.cards
        Accessible.role: Accessible.Table
        Accessible.name: qsTr("Projects")
        // What grows above the cards pushes them down only while the page stands at its top.
        onOriginYChanged: {
            if (contentY <= topBefore || contentY < originY) {
                contentY = originY;
            }
            topBefore = originY;
        }

        header: HomeHeader {
            width: page.contentWidth
            model: page.model
            columns: page.columns
            narrowed: page.narrowed
        }

        delegate: ProjectCard {
            id: card

            width: grid.cellWidth - Theme.gridGap
            height: Theme.cardHeight
            isCurrent: GridView.isCurrentItem
            onRun: action => page.model.runAction(projectID, action)
            onStop: page.model.stopProject(projectID)
            onOpen: key => page.model.openServiceByKey(key)
            onPin: page.model.togglePinFor(projectID)
            onGit: action => page.model.quickGitFor(projectID, action)
            onChooseAction: anchor => page.openChoice(card, anchor)
            onMore: anchor => page.openMenu(card, anchor)

            TapHandler {
                onTapped: {
                    grid.currentIndex = card.index;
                    card.forceActiveFocus(Qt.MouseFocusReason);
                }
            }
        }

        displaced: Transition {
            NumberAnimation {
                properties: "x,y"
                duration: Theme.durationMove
                easing.type: Easing.BezierSpline
                easing.bezierCurve: Theme.easeStandard
            }
        }

        move: displaced

        T.ScrollBar.vertical: ScrollBar {
            parent: page
            x: page.width - width
            height: page.height
        }
    }

    Loader {
        id: skeletons

        x: grid.x
        y: grid.headerItem ? grid.headerItem.height : 0
        width: page.contentWidth
        active: !page.model.hasScanned

        sourceComponent: Grid {
            columns: page.columns
            spacing: Theme.gridGap

            Repeater {
                model: page.columns * 3

                Skeleton {
                    width: grid.cellWidth - Theme.gridGap
                    height: Theme.cardHeight
                }
            }
        }
    }

    Loader {
        x: Math.round((page.width - width) / 2)
        y: Math.max(grid.headerItem ? grid.headerItem.height + Theme.space16 : 0, Math.round((page.height - height) / 2) - (page.narrowed ? 0 : Theme.space12))
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

    Loader {
        id: menu

        active: false

        sourceComponent: CardMenu {
            onRun: action => page.model.runAction(card.projectID, action)
            onStop: page.model.stopProject(card.projectID)
            onRestart: page.model.restartProject(card.projectID)
            onOpen: key => page.model.openServiceByKey(key)
            onPin: page.model.togglePinFor(card.projectID)
        }
    }

    Loader {
        id: choice

        active: false

        sourceComponent: RunMenu {
            property string projectID

            onChosen: action => page.model.runAction(projectID, action)
        }
    }

    CardShortcut {
        sequence: "Ctrl+Return"
        onActivated: page.currentCard.busy ? page.model.stopProject(page.currentCard.projectID) : page.model.toggleProject(page.currentCard.projectID)
    }

    CardShortcut {
        sequence: "Ctrl+Alt+Return"
        onActivated: page.openChoice(page.currentCard, page.currentCard)
    }

    CardShortcut {
        sequence: "Ctrl+Shift+R"
        onActivated: page.model.restartProject(page.currentCard.projectID)
    }

    CardShortcut {
        sequence: "Ctrl+Shift+."
        onActivated: page.model.stopProject(page.currentCard.projectID)
    }

    CardShortcut {
        sequence: "Ctrl+O"
        onActivated: page.model.openProject(page.currentCard.projectID)
    }

    CardShortcut {
        sequence: "Ctrl+D"
        onActivated: page.model.togglePinFor(page.currentCard.projectID)
    }

    CardShortcut {
        sequences: ["Menu", "Shift+F10"]
        onActivated: page.openMenu(page.currentCard, page.currentCard)
    }

    CardShortcut {
        sequence: "Home"
        onActivated: grid.currentIndex = 0
    }

    CardShortcut {
        sequence: "End"
        onActivated: grid.currentIndex = grid.count - 1
    }

    component CardShortcut: Shortcut {
        enabled: grid.activeFocus && page.currentCard !== null
    }
}
