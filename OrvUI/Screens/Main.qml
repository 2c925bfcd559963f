import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The main window.
Window {
    id: root

    required property AppModel model
    // The application draws the frame: buttons, edges to resize, and where to take the window.
    required property bool ownFrame
    property bool sidebarHidden: false
    property string pageSearch
    readonly property Navigator navigator: nav
    readonly property int pagePadding: narrow ? Theme.pagePaddingNarrow : Theme.pagePadding
    readonly property bool listsProjects: pages.isHome || pages.inFolder
    readonly property bool searches: listsProjects || pages.inSettings
    readonly property bool narrow: width < Theme.narrowLimit
    readonly property bool wide: width >= Theme.wideLimit
    // Why the quick panel's key is not this application's; empty where it is.
    property string shortcutNote
    // The key that the desktop gives it instead, in its words; empty where it is the usual one.
    property string shortcutTrigger
    signal closeAsked
    signal quitAsked
    // For the folder that is scanned.
    signal folderAsked
    // For the log that is shown.
    signal logsSaveAsked
    // The place of the answer in the question's list.
    signal quitAnswered(int choice)

    function askToQuit(message, inTray) {
        sheets.made().askToQuit(message, inTray);
    }

    function copyDiagnostics() {
        sheets.made().copyDiagnostics();
    }

    function openPalette() {
        sheets.made(); // what is typed behind its key must not be lost
        paletteModel.open();
    }

    // A popup that closes leaves the focus to the window's root, not to the item that had it before.
    function returnFocus() {
        if (activeFocusItem === contentItem && !T.Overlay.overlay.visible) {
            content.forceActiveFocus(Qt.PopupFocusReason);
        }
    }

    // What stands over the page keeps the keyboard; the page has it once that has gone.
    function focusPage() {
        const item = activeFocusItem;
        const covered = item !== null ? item !== contentItem && !content.activeFocus : !content.focus && T.Overlay.overlay.visible;
        if (covered) {
            pages.focus = true;
        } else {
            pages.forceActiveFocus(Qt.OtherFocusReason);
        }
    }

    title: Qt.application.name
    minimumWidth: Theme.minimumWidth
    minimumHeight: Theme.minimumHeight
    flags: ownFrame ? Qt.Window | Qt.FramelessWindowHint : Qt.Window
    color: Theme.sidebar
    onClosing: close => {
        close.accepted = false;
        root.closeAsked();
    }
    onActiveChanged: {
        if (active) {
            model.updateGreeting();
            model.lookAtGit();
            model.orphans.lookAgain();
            folder.lookIfBlind();
        }
    }
    onActiveFocusItemChanged: returnFocus()

    ScanWatch {
        id: folder

        model: root.model
    }

    PaletteModel {
        id: paletteModel

        model: root.model
    }

    Navigator {
        id: nav

        model: root.model
        onMoved: {
            pages.show();
            root.focusPage();
            root.pageSearch = "";
        }
        onLogsSaveAsked: root.logsSaveAsked()
    }

    FocusScope {
        id: content

        anchors.fill: parent
        focus: true

        Sidebar {
            id: sidebar

            width: rail ? Theme.railWidth : root.wide ? Theme.sidebarWidthWide : Theme.sidebarWidth
            height: parent.height
            model: root.model
            rail: root.narrow || root.sidebarHidden
            collapsible: !root.narrow
            onToggleRequested: root.sidebarHidden = !root.sidebarHidden
            onJumpRequested: root.openPalette()
            onPageChosen: root.focusPage()
            nav: nav
        }

        Rectangle {
            id: panel

            anchors.left: sidebar.right
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            anchors.margins: Theme.panelInset
            anchors.leftMargin: 0
            radius: Theme.radiusCard
            color: Theme.window
            border.width: Theme.hairline
            border.color: Theme.border

            TopBar {
                id: bar

                width: parent.width
                target: root
                // What is found there is of any section.
                crumbs: pages.inSettings && root.pageSearch.trim().length > 0 ? Array.from(nav.crumbs).slice(0, -1).concat({
                    "title": qsTr("Search")
                }) : nav.crumbs
                searchable: root.searches
                refreshable: root.listsProjects
                searchText: pages.isHome ? root.model.searchText : root.pageSearch
                searchHint: pages.inSettings ? qsTr("Find a setting") : qsTr("Search projects")
                narrow: root.narrow
                busy: root.model.isScanning
                news: folder.news
                scrolled: pages.scrolled
                ownFrame: root.ownFrame
                padding: root.pagePadding
                onCrumbChosen: index => nav.openCrumb(index)
                onSearchEdited: text => pages.isHome ? root.model.searchText = text : root.pageSearch = text
                onSearchLeft: pages.focusResults()
                onRefreshRequested: root.model.refreshNow()

                tools: [
                    Button {
                        visible: root.listsProjects
                        // Where there is nothing yet, the page itself has the one next step.
                        primary: root.model.projectCount > 0 || !root.model.hasScanned
                        glyph: "plus"
                        text: root.narrow ? qsTr("Add") : qsTr("Add project")
                        Accessible.name: qsTr("Add project")
                        onClicked: nav.addProject(false)
                    },
                    Loader {
                        active: nav.page === Navigator.Ai
                        visible: active

                        sourceComponent: Segmented {
                            name: qsTr("Which runs")
                            currentIndex: root.model.agentModels.filterIndex
                            choices: [
                                {
                                    "text": qsTr("All")
                                },
                                {
                                    "text": qsTr("Running")
                                },
                                {
                                    "text": qsTr("Finished")
                                }
                            ]
                            onChosen: index => root.model.agentModels.filterIndex = index
                        }
                    },
                    Loader {
                        active: pages.tasks !== null
                        visible: active

                        sourceComponent: Segmented {
                            name: qsTr("Which tasks")
                            currentIndex: (pages.tasks as TasksPage)?.showsDone ? 1 : 0
                            choices: [
                                {
                                    "text": qsTr("Open"),
                                    "count": root.model.taskLists.openCount
                                },
                                {
                                    "text": qsTr("Done"),
                                    "count": root.model.taskLists.doneCount
                                }
                            ]
                            onChosen: index => (pages.tasks as TasksPage).showsDone = index === 1
                        }
                    },
                    Loader {
                        active: nav.page === Navigator.Project
                        visible: active
                        Component.onCompleted: setSource("ProjectTools.qml", {
                            "model": root.model,
                            "nav": root.navigator,
                            "detail": Qt.binding(() => pages.detail)
                        })
                    }
                ]
            }

            PageStack {
                id: pages

                anchors.top: bar.bottom
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                anchors.margins: Theme.hairline
                anchors.topMargin: 0
                focus: true
                news: folder.news
                model: root.model
                nav: root.navigator
                narrow: root.narrow
                wide: root.wide
                padding: root.pagePadding - Theme.hairline
                covered: lines.covered
                coveredWidth: lines.width
                searchText: root.pageSearch
                onFolderRequested: root.folderAsked()
                onSearchDropped: root.pageSearch = ""
                onSearchWanted: bar.focusSearch()
            }

            StatusLines {
                id: lines

                anchors.horizontalCenter: parent.horizontalCenter
                anchors.bottom: parent.bottom
                anchors.bottomMargin: Theme.space20
                model: root.model
                room: panel.width - Theme.space32
                onCloneAsked: nav.addProject(true)
            }
        }
    }

    Connections {
        target: root.T.Overlay.overlay
        function onVisibleChanged() {
            root.returnFocus();
        }
    }

    ResizeEdges {
        anchors.fill: parent
        visible: root.ownFrame && root.visibility === Window.Windowed
        target: root
    }

    // What may stand over the pages is made a moment behind the first frame, when the projects are mostly there as well,
    // for its many types take time to read; or at once, when it is asked for.
    Loader {
        id: sheets

        function made() {
            if (status === Loader.Null) {
                setSource("WindowSheets.qml", {
                    "model": root.model,
                    "nav": root.navigator,
                    "palette": paletteModel,
                    "target": root,
                    "ownFrame": root.ownFrame
                });
            }
            return item as WindowSheets;
        }

        Component.onCompleted: {
            if (root.model.needsOnboarding) {
                made();
            }
        }
    }

    Connections {
        target: root
        enabled: sheets.status === Loader.Null
        function onFrameSwapped() {
            sheetsDelay.start();
        }
    }

    Timer {
        id: sheetsDelay

        interval: Theme.durationFast
        onTriggered: sheets.made()
    }

    Connections {
        target: sheets.item
        ignoreUnknownSignals: true

        function onFolderAsked() {
            root.folderAsked();
        }

        function onQuitAnswered(choice) {
            root.quitAnswered(choice);
        }
    }

    TooltipLayer {}

    WindowRegions {
        id: regions

        target: root
        parts: pages.shownPanel !== null ? [sidebar, bar, pages.shownPage, pages.shownPanel] : [sidebar, bar, pages.shownPage]
    }

    WindowKeys {
        model: root.model
        nav: root.navigator
        searches: root.searches
        onSearchAsked: bar.focusSearch()
        onPaletteAsked: root.openPalette()
        onShortcutsAsked: sheets.made().showShortcuts()
        onRegionAsked: step => regions.go(step)
        onSidebarAsked: root.sidebarHidden = !root.sidebarHidden
        onCloseAsked: root.closeAsked()
        onQuitAsked: root.quitAsked()
    }
}
