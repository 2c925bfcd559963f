import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A scrolling grid of project cards with what can be done with each, by mouse, menu and key. Or the same projects as
// rows, in the folders in which they lie.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    required property var cards
    property int padding: Theme.pagePadding
    // At the bottom, by what stands over the page: the last cards can be scrolled out from below it.
    property real covered: 0
    property bool listed: false
    property alias folders: folders
    property alias header: grid.header
    property alias headerItem: grid.headerItem
    property alias gridX: grid.x
    property alias cellWidth: grid.cellWidth
    readonly property bool scrolled: grid.contentY > grid.originY + Theme.hairline
    readonly property int contentWidth: Math.min(width - 2 * padding, Theme.contentWidthLimit)
    readonly property int columns: Math.max(1, Math.min(4, Math.floor((contentWidth + Theme.gridGap) / Theme.cardColumnWidth)))
    property alias count: grid.count
    // A card or a row; both have the same properties and signals.
    readonly property var currentCard: (grid.currentItem as PooledItem)?.item ?? null
    // That a menu was last opened for.
    property var menuCard: null
    signal projectChosen(string projectID)
    // The second time as what lies directly in it.
    signal collectionChosen(string path)
    signal folderChosen(string path)

    function focusCards() {
        (page.currentCard ?? grid).forceActiveFocus(Qt.TabFocusReason);
    }

    function enter(card) {
        if (card !== null) {
            card.isCollection ? (page.listed ? page.folderChosen(card.path) : page.collectionChosen(card.path)) : page.projectChosen(card.projectID);
        }
    }

    function unfold(card, open) {
        const unfolds = page.listed && card !== null && card.hasChildren && card.expanded !== open;
        if (unfolds) {
            folders.setOpen(card.path, open);
        }
        return unfolds;
    }

    // What a menu is of, as it was when the menu was opened: the card itself is lent to other rows.
    function menuSubject(card) {
        page.menuCard = card;
        return {
            projectID: card.projectID,
            path: card.path,
            isCollection: card.isCollection,
            isFlutter: card.isFlutter,
            pinned: card.pinned,
            busy: card.busy,
            actions: card.actions,
            services: card.services
        };
    }

    function closeMenus() {
        for (const loader of [menu, folderMenu, choice]) {
            loader.item?.close();
        }
    }

    function openMenu(card, anchor) {
        if (card.isCollection) {
            folderMenu.active = true;
            folderMenu.item.subject = page.menuSubject(card);
            folderMenu.item.popup(anchor, anchor.width / 2, anchor.height / 2);
            return;
        }
        menu.active = true;
        menu.item.subject = page.menuSubject(card);
        menu.item.popup(anchor, anchor === card ? card.width / 2 : anchor.width - menu.item.width, anchor === card ? card.height / 2 : anchor.height + Theme.space4);
    }

    function openChoice(card, anchor) {
        if (card.actions.length === 0) {
            return;
        }
        const subject = page.menuSubject(card);
        choice.active = true;
        choice.item.projectID = subject.projectID;
        choice.item.actions = subject.actions;
        choice.item.choosesDevice = subject.isFlutter;
        choice.item.popup(anchor, anchor.width - choice.item.width, anchor.height + Theme.space4);
    }

    clip: true

    FolderTree {
        id: folders

        model: page.model
    }

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
        cellWidth: page.listed ? width : Math.floor(width / page.columns)
        cellHeight: page.listed ? Theme.folderRowHeight : Theme.cardHeight + Theme.gridGap
        bottomMargin: Theme.shelfGap + page.covered
        onBottomMarginChanged: returnToBounds()
        boundsBehavior: Flickable.StopAtBounds
        focus: true
        // Tab comes to the current card, behind what stands above the cards.
        activeFocusOnTab: false
        keyNavigationWraps: false
        highlightMoveDuration: 0
        cacheBuffer: Theme.cardHeight
        model: cardPool.model
        Window.onActiveFocusItemChanged: abandoned.restart()
        Keys.onReturnPressed: page.enter(page.currentCard)
        Keys.onEnterPressed: page.enter(page.currentCard)
        Keys.onRightPressed: event => event.accepted = page.unfold(page.currentCard, true) || page.listed
        Keys.onLeftPressed: event => event.accepted = page.unfold(page.currentCard, false) || page.listed
        // A list that was empty for a moment has no current row when it fills again.
        onCountChanged: {
            if (currentIndex < 0 && count > 0) {
                currentIndex = 0;
            }
        }
        Accessible.role: Accessible.Table
        Accessible.name: qsTr("Projects")
        // What grows above the cards pushes them down only while the page stands at its top.
        onOriginYChanged: {
            if (contentY <= topBefore || contentY < originY) {
                contentY = originY;
            }
            topBefore = originY;
        }

        delegate: page.listed ? rowPlace : cardPlace

        // Behind the rows, which scroll over it.
        CardFace {
            parent: grid.contentItem
            z: -1
            visible: page.listed && grid.count > 0
            width: page.contentWidth
            height: grid.count * grid.cellHeight
        }

        onMovementStarted: page.closeMenus()

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

    // What had the focus above the cards may go. Cards that are made anew take it themselves.
    Timer {
        id: abandoned

        interval: 0
        onTriggered: {
            if (grid.Window.activeFocusItem === grid) {
                page.focusCards();
            }
        }
    }

    Component {
        id: cardPlace

        PooledItem {
            pool: cardPool
        }
    }

    Component {
        id: rowPlace

        PooledItem {
            pool: rowPool
        }
    }

    ItemPool {
        id: cardPool

        model: page.cards

        ProjectCard {
            id: projectCard

            width: grid.cellWidth - Theme.gridGap
            height: Theme.cardHeight
            isCurrent: page.currentCard === projectCard
            listActive: grid.activeFocus
            onRun: action => page.model.runAction(projectID, action)
            onStop: page.model.stopProject(projectID)
            onOpen: key => page.model.openServiceByKey(key)
            onPin: page.model.togglePinFor(projectID)
            onGit: action => page.model.quickGitFor(projectID, action)
            onLogsAsked: page.nav.project(projectID, 3)
            onAgentAsked: {
                page.nav.project(projectID);
                page.nav.agentPanel = true;
            }
            onChooseAction: anchor => page.openChoice(projectCard, anchor)
            onMore: anchor => page.openMenu(projectCard, anchor)
            onEntered: page.enter(projectCard)

            TapHandler {
                onTapped: {
                    grid.currentIndex = projectCard.index;
                    projectCard.forceActiveFocus(Qt.MouseFocusReason);
                    page.enter(projectCard);
                }
            }
        }
    }

    ItemPool {
        id: rowPool

        model: page.cards

        FolderRow {
            id: folderRow

            width: page.contentWidth
            height: Theme.folderRowHeight
            isCurrent: page.currentCard === folderRow
            listActive: grid.activeFocus
            onRun: action => page.model.runAction(projectID, action)
            onStop: page.model.stopProject(projectID)
            onOpen: key => page.model.openServiceByKey(key)
            onMore: anchor => page.openMenu(folderRow, anchor)
            onEntered: page.enter(folderRow)

            TapHandler {
                onTapped: {
                    grid.currentIndex = folderRow.index;
                    folderRow.forceActiveFocus(Qt.MouseFocusReason);
                    page.unfold(folderRow, !folderRow.expanded) || page.enter(folderRow);
                }
            }
        }
    }

    // It scrolled away, or left the list.
    Connections {
        target: page.menuCard

        function onVisibleChanged() {
            page.closeMenus();
        }

        function onPathChanged() {
            page.closeMenus();
        }
    }

    Loader {
        id: menu

        active: false

        sourceComponent: CardMenu {
            onRun: action => page.model.runAction(subject.projectID, action)
            onStop: page.model.stopProject(subject.projectID)
            onRestart: page.model.restartProject(subject.projectID)
            onOpen: key => page.model.openServiceByKey(key)
            onPin: page.model.togglePinFor(subject.projectID)
            onDeviceAsked: page.model.devices.ask(subject.projectID)
            onLogsAsked: page.nav.project(subject.projectID, 3)
            onTerminalAsked: page.nav.wishFor(subject.projectID, 2, "newTerminal")
            onAgentAsked: {
                page.nav.project(subject.projectID);
                page.nav.agentPanel = true;
            }
            onFolderAsked: folders.show(subject.path)
        }
    }

    Loader {
        id: folderMenu

        active: false

        sourceComponent: FolderMenu {
            onEntered: page.enter(subject)
            onShown: folders.show(subject.path)
            onTerminalAsked: folders.openTerminal(subject.path)
        }
    }

    Loader {
        id: choice

        active: false

        sourceComponent: RunMenu {
            property string projectID

            onChosen: action => page.model.runAction(projectID, action)
            onDeviceAsked: page.model.devices.ask(projectID)
        }
    }

    ProjectKeys {
        enabled: grid.activeFocus && projectID.length > 0
        model: page.model
        nav: page.nav
        projectID: page.currentCard?.projectID ?? ""
        onChoiceAsked: page.openChoice(page.currentCard, page.currentCard)
        onTabAsked: index => page.nav.project(projectID, index)
        onAgentAsked: {
            page.nav.project(projectID);
            page.nav.agentPanel = true;
        }
    }

    CardShortcut {
        sequences: Keymap.of("menu")
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
