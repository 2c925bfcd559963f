import OrvLauncher.Screens
import QtQuick

// The page that is shown, and the agent panel beside it, or over it in a narrow window.
FocusScope {
    id: pages

    required property AppModel model
    property string news
    required property Navigator nav
    required property bool narrow
    required property bool wide
    required property int padding
    // At the bottom, by what stands over the pages.
    property real covered: 0
    // In its middle.
    property real coveredWidth: 0
    // In a collection, in a folder or among the settings.
    property string searchText
    readonly property bool isHome: nav.page === Navigator.Home
    readonly property bool inSettings: nav.page === Navigator.Settings
    readonly property bool inFolder: nav.page === Navigator.Collection || nav.page === Navigator.Folder
    // The agent panel stands beside the page, which is narrower for it.
    readonly property bool panelDocked: nav.agentPanel && !narrow
    readonly property ProjectDetail detail: (page.item as ProjectPage)?.detail ?? null
    readonly property bool scrolled: isHome ? home.scrolled : (page.item as Item)?.scrolled ?? false
    readonly property Item shownPage: isHome ? home : page
    // A TasksPage; null while another page is shown. (As the property's type its file would be read at the start.)
    readonly property Item tasks: page.item as TasksPage
    // Null while it is closed.
    readonly property Item shownPanel: agentPanel.active ? agentPanel : null
    readonly property var sources: ({
            [Navigator.Settings]: "SettingsPage.qml",
            [Navigator.Collection]: "CollectionPage.qml",
            [Navigator.Folder]: "CollectionPage.qml",
            [Navigator.Project]: "ProjectPage.qml",
            [Navigator.Tasks]: "TasksPage.qml",
            [Navigator.Ai]: "AiPage.qml"
        })
    signal folderRequested
    signal searchDropped
    signal searchWanted

    function show() {
        const source = sources[nav.page] ?? "";
        if (source.length > 0 && page.shown !== source) {
            page.shown = source;
            page.setSource(source, {
                "model": pages.model,
                "nav": pages.nav,
                "narrow": Qt.binding(() => pages.narrow || (pages.panelDocked && !pages.wide)),
                "padding": Qt.binding(() => pages.padding)
            });
            if (source === "CollectionPage.qml") {
                page.item.covered = Qt.binding(() => pages.covered);
            }
            if (source === "CollectionPage.qml" || source === "SettingsPage.qml") {
                page.item.searchText = Qt.binding(() => pages.searchText);
            }
        } else if (source.length === 0) {
            page.shown = "";
            page.source = "";
        }
        if (pages.Window.window?.visible ?? false) {
            arrival.restart();
        }
    }

    // Where the search in the page leads.
    function focusResults() {
        if (isHome) {
            home.focusCards();
        } else {
            (page.item as CollectionPage)?.focusCards();
            (page.item as SettingsPage)?.focusResults();
        }
    }

    // Comes here when what has the focus is no stop of Tab, which would begin anew in the sidebar.
    function step(forward) {
        const next = Window.activeFocusItem?.nextItemInFocusChain(forward) ?? null;
        if (next !== null) {
            next.forceActiveFocus(forward ? Qt.TabFocusReason : Qt.BacktabFocusReason);
        }
    }

    Keys.onTabPressed: pages.step(true)
    Keys.onBacktabPressed: pages.step(false)

    // Stays while others are shown, so that one comes back to where one was.
    HomePage {
        id: home

        anchors.fill: parent
        visible: pages.isHome
        enabled: visible
        focus: visible
        model: pages.model
        nav: pages.nav
        news: pages.news
        padding: pages.padding
        covered: pages.covered
        onFolderRequested: pages.folderRequested()
        onAddRequested: clones => pages.nav.addProject(clones)
        onProjectChosen: projectID => pages.nav.project(projectID)
        onCollectionChosen: path => pages.nav.collection(path)
        onFolderChosen: path => pages.nav.folder(path)
    }

    Loader {
        id: page

        anchors.fill: parent
        anchors.rightMargin: pages.panelDocked ? agentPanel.width : 0
        // Its file's name.
        property string shown

        focus: !home.visible
        visible: !home.visible
    }

    Connections {
        target: page.item
        ignoreUnknownSignals: true

        function onFolderRequested() {
            pages.folderRequested();
        }
        function onSearchDropped() {
            pages.searchDropped();
        }
        function onSearchWanted() {
            pages.searchWanted();
        }
    }

    Loader {
        id: agentPanel

        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.margins: pages.narrow ? Theme.space8 : 0
        width: pages.wide ? Theme.agentPanelWidthWide : Theme.agentPanelWidth
        active: pages.nav.agentPanel && pages.detail !== null
        // By its file's name, which is not read before the panel is wanted.
        Component.onCompleted: setSource("AgentPanel.qml", {
            "model": pages.model,
            "projectID": Qt.binding(() => pages.detail?.projectID ?? ""),
            "projectName": Qt.binding(() => pages.detail?.name ?? ""),
            "floating": Qt.binding(() => pages.narrow),
            "covered": Qt.binding(() => (pages.width + pages.coveredWidth) / 2 > agentPanel.x ? pages.covered : 0)
        })
        onLoaded: (item as AgentPanel).focusComposer()
        // What was in it has nowhere to go.
        onActiveChanged: {
            if (!active && focus && pages.activeFocus) {
                pages.shownPage.forceActiveFocus(Qt.OtherFocusReason);
            }
        }
    }

    Connections {
        target: agentPanel.item
        ignoreUnknownSignals: true

        function onCloseAsked() {
            pages.nav.agentPanel = false;
            page.forceActiveFocus(Qt.OtherFocusReason);
        }
    }

    // A page that comes rises a little and fades in.
    ParallelAnimation {
        id: arrival

        NumberAnimation {
            target: pages
            property: "opacity"
            from: 0
            to: 1
            duration: Theme.durationSheet
            easing.type: Easing.BezierSpline
            easing.bezierCurve: Theme.easeEnter
        }

        NumberAnimation {
            target: rise
            property: "y"
            from: Theme.reducedMotion ? 0 : Theme.space4
            to: 0
            duration: Theme.durationSheet
            easing.type: Easing.BezierSpline
            easing.bezierCurve: Theme.easeEnter
        }
    }

    transform: Translate {
        id: rise
    }
}
