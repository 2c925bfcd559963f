import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A scrolling grid of project cards with what can be done with each, by mouse, menu and key.
FocusScope {
    id: page

    required property AppModel model
    required property var cards
    property int padding: Theme.pagePadding
    property alias header: grid.header
    property alias headerItem: grid.headerItem
    property alias gridX: grid.x
    property alias cellWidth: grid.cellWidth
    readonly property bool scrolled: grid.contentY > grid.originY + Theme.hairline
    readonly property int contentWidth: Math.min(width - 2 * padding, Theme.contentWidthLimit)
    readonly property int columns: Math.max(1, Math.min(4, Math.floor((contentWidth + Theme.gridGap) / Theme.cardColumnWidth)))
    readonly property ProjectCard currentCard: grid.currentItem as ProjectCard
    signal projectChosen(string projectID)

    function focusCards() {
        grid.forceActiveFocus(Qt.TabFocusReason);
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
        model: page.cards
        Keys.onReturnPressed: page.currentCard !== null ? page.projectChosen(page.currentCard.projectID) : undefined
        Keys.onEnterPressed: page.currentCard !== null ? page.projectChosen(page.currentCard.projectID) : undefined
        Accessible.role: Accessible.Table
        Accessible.name: qsTr("Projects")
        // What grows above the cards pushes them down only while the page stands at its top.
        onOriginYChanged: {
            if (contentY <= topBefore || contentY < originY) {
                contentY = originY;
            }
            topBefore = originY;
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
                    page.projectChosen(card.projectID);
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
