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
    property string collectionSearch
    readonly property Navigator navigator: nav
    readonly property int pagePadding: narrow ? Theme.pagePaddingNarrow : Theme.pagePadding
    readonly property bool searches: nav.page === Navigator.Home || inFolder
    readonly property bool inFolder: nav.page === Navigator.Collection || nav.page === Navigator.Folder
    readonly property var pageSources: ({
            [Navigator.Settings]: "SettingsPage.qml",
            [Navigator.Collection]: "CollectionPage.qml",
            [Navigator.Folder]: "CollectionPage.qml",
            [Navigator.Project]: "ProjectPage.qml",
            [Navigator.Tasks]: "TasksPage.qml",
            [Navigator.Ai]: "AiPage.qml"
        })
    readonly property bool narrow: width < Theme.narrowLimit
    readonly property bool wide: width >= Theme.wideLimit
    // The agent panel stands beside the page, which is narrower for it.
    readonly property bool panelDocked: nav.agentPanel && !narrow

    // A popup that closes leaves the focus to the window's root, not to the item that had it before.
    function returnFocus() {
        if (activeFocusItem === contentItem && !T.Overlay.overlay.visible) {
            content.forceActiveFocus(Qt.PopupFocusReason);
        }
    }

    function isIn(item, part) {
        for (let at = item; at; at = at.parent) {
            if (at === part) {
                return true;
            }
        }
        return false;
    }

    // The parts of the window one after another, each where one left it.
    function goToRegion(step) {
        const shown = nav.page === Navigator.Home ? home : page;
        const parts = agentPanel.active ? [sidebar, bar, shown, agentPanel] : [sidebar, bar, shown];
        let from = -1;
        for (let i = 0; i < parts.length; ++i) {
            if (root.isIn(root.activeFocusItem, parts[i])) {
                from = i;
            }
        }
        const part = parts[(from + step + parts.length) % parts.length];
        const reason = step > 0 ? Qt.TabFocusReason : Qt.BacktabFocusReason;
        part.forceActiveFocus(reason);
        if (!root.activeFocusItem?.activeFocusOnTab && part.nextItemInFocusChain() !== null) {
            part.nextItemInFocusChain().forceActiveFocus(reason);
        }
    }

    signal closeAsked
    signal quitAsked
    // For the folder that is scanned.
    signal folderAsked
    // For the log that is shown.
    signal logsSaveAsked
    // The place of the answer in the question's list.
    signal quitAnswered(int choice)
    // Why the quick panel's key is not this application's; empty where it is.
    property string shortcutNote

    function askToQuit(message, inTray) {
        quitAlert.active = true;
        quitAlert.item.message = message;
        quitAlert.item.inTray = inTray;
        quitAlert.item.open();
    }

    function showPage() {
        const source = pageSources[nav.page] ?? "";
        if (source.length > 0 && page.shown !== source) {
            page.shown = source;
            page.setSource(source, {
                "model": root.model,
                "nav": nav,
                "narrow": Qt.binding(() => root.narrow || (root.panelDocked && !root.wide)),
                "padding": Qt.binding(() => root.pagePadding - Theme.hairline)
            });
            if (root.inFolder) {
                page.item.searchText = Qt.binding(() => root.collectionSearch);
            }
        } else if (source.length === 0) {
            page.shown = "";
            page.source = "";
        }
        root.collectionSearch = "";
        if (root.visible) {
            arrival.target = pages;
            arrival.restart();
        }
        pages.forceActiveFocus(Qt.OtherFocusReason);
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
        }
    }
    onActiveFocusItemChanged: returnFocus()

    PaletteModel {
        id: paletteModel

        model: root.model
    }

    Navigator {
        id: nav

        model: root.model
        onMoved: root.showPage()
        onLogsSaveAsked: root.logsSaveAsked()
    }

    Connections {
        target: page.item
        ignoreUnknownSignals: true

        function onFolderRequested() {
            root.folderAsked();
        }
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
            onJumpRequested: paletteModel.open()
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
                crumbs: nav.crumbs
                searchable: root.searches
                refreshable: root.searches
                searchText: nav.page === Navigator.Home ? root.model.searchText : root.collectionSearch
                searchHint: qsTr("Search projects")
                narrow: root.narrow
                busy: root.model.isScanning
                scrolled: nav.page === Navigator.Home ? home.scrolled : (page.item as Item)?.scrolled ?? false
                ownFrame: root.ownFrame
                padding: root.pagePadding
                onCrumbChosen: index => nav.openCrumb(index)
                onSearchEdited: text => nav.page === Navigator.Home ? root.model.searchText = text : root.collectionSearch = text
                onSearchLeft: nav.page === Navigator.Home ? home.focusCards() : (page.item as CollectionPage)?.focusCards()
                onRefreshRequested: root.model.refreshNow()

                tools: [
                    Button {
                        visible: root.searches
                        // Where there is nothing yet, the page itself has the one next step.
                        primary: root.model.projectCount > 0 || !root.model.hasScanned
                        glyph: "plus"
                        text: root.narrow ? qsTr("Add") : qsTr("Add project")
                        Accessible.name: qsTr("Add project")
                        onClicked: nav.addProject(false)
                    },
                    Button {
                        visible: nav.page === Navigator.Project
                        lit: nav.agentPanel
                        glyph: "sparkles"
                        text: qsTr("Ask AI")
                        Accessible.checkable: true
                        Accessible.checked: nav.agentPanel
                        onClicked: nav.agentPanel = !nav.agentPanel

                        Tip {
                            text: qsTr("Hand a task to an agent here")
                            shortcut: Keymap.text("ask")
                        }
                    },
                    IconButton {
                        readonly property ProjectDetail detail: (page.item as ProjectPage)?.detail ?? null

                        visible: nav.page === Navigator.Project && detail !== null
                        edge: Theme.controlRegular
                        checkable: true
                        checked: detail?.pinned ?? false
                        glyph: checked ? "own-pin-fill" : "pin"
                        tint: checked ? Theme.accentText : Theme.text2
                        text: checked ? qsTr("Remove pin") : qsTr("Pin %1").arg(detail?.name ?? "")
                        shortcut: Keymap.text("pin")
                        onClicked: {
                            checked = Qt.binding(() => detail?.pinned ?? false);
                            root.model.togglePinFor(detail.projectID);
                        }
                    },
                    IconButton {
                        id: moreTools

                        readonly property ProjectDetail detail: (page.item as ProjectPage)?.detail ?? null

                        visible: nav.page === Navigator.Project && detail !== null
                        edge: Theme.controlRegular
                        glyph: "ellipsis"
                        text: qsTr("More for %1").arg(detail?.name ?? "")
                        onClicked: {
                            projectMenu.active = true;
                            (projectMenu.item as Menu).popup(moreTools, width - Theme.menuWidth, height + Theme.space4);
                        }
                    }
                ]
            }

            FocusScope {
                id: pages

                anchors.top: bar.bottom
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                anchors.margins: Theme.hairline
                anchors.topMargin: 0
                focus: true

                // Stays while others are shown, so that one comes back to where one was.
                HomePage {
                    id: home

                    anchors.fill: parent
                    visible: nav.page === Navigator.Home
                    enabled: visible
                    focus: visible
                    model: root.model
                    nav: root.navigator
                    padding: root.pagePadding - Theme.hairline
                    onFolderRequested: root.folderAsked()
                    onAddRequested: clones => nav.addProject(clones)
                    onProjectChosen: projectID => nav.project(projectID)
                    onCollectionChosen: path => nav.collection(path)
                    onFolderChosen: path => nav.folder(path)
                }

                Loader {
                    id: page

                    anchors.fill: parent
                    anchors.rightMargin: root.panelDocked ? agentPanel.width : 0
                    // Its file's name.
                    property string shown

                    focus: !home.visible
                    visible: !home.visible
                }

                Loader {
                    id: agentPanel

                    readonly property ProjectDetail detail: (page.item as ProjectPage)?.detail ?? null

                    anchors.right: parent.right
                    anchors.top: parent.top
                    anchors.bottom: parent.bottom
                    anchors.margins: root.narrow ? Theme.space8 : 0
                    width: root.wide ? Theme.agentPanelWidthWide : Theme.agentPanelWidth
                    active: nav.agentPanel && detail !== null
                    onLoaded: (item as AgentPanel).focusComposer()

                    sourceComponent: AgentPanel {
                        model: root.model
                        projectID: agentPanel.detail?.projectID ?? ""
                        projectName: agentPanel.detail?.name ?? ""
                        floating: root.narrow
                        onCloseAsked: {
                            nav.agentPanel = false;
                            page.forceActiveFocus(Qt.OtherFocusReason);
                        }
                    }
                }

                // A page that comes rises a little and fades in.
                ParallelAnimation {
                    id: arrival

                    property Item target

                    NumberAnimation {
                        target: arrival.target
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

            Column {
                anchors.horizontalCenter: parent.horizontalCenter
                anchors.bottom: parent.bottom
                anchors.bottomMargin: Theme.space20
                spacing: Theme.space8

                Line {
                    shown: root.model.undoText.length > 0
                    text: root.model.undoText
                    isError: false
                    isOngoing: false
                    action: qsTr("Undo")
                    actionKeys: Keymap.text("undo")
                    onActed: root.model.undo()
                    onDismissed: root.model.dismissUndo()
                }

                Repeater {
                    model: errors.rows

                    Line {
                        required property string errorID

                        shown: true
                        isError: true
                        isOngoing: false
                        onDismissed: errors.dismiss(errorID)
                    }
                }

                Line {
                    shown: root.model.hasStatus
                    text: root.model.statusText
                    isError: root.model.statusIsError
                    isOngoing: root.model.statusIsOngoing
                    onDismissed: root.model.dismissStatus()
                }
            }

            // What newer messages have taken the place of.
            StatusErrors {
                id: errors

                model: root.model
            }

            component Line: StatusLine {
                anchors.horizontalCenter: parent?.horizontalCenter
                width: implicitWidth
                height: implicitHeight
                limit: Math.min(Theme.statusLineLimit, panel.width - Theme.space32)
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

    Loader {
        active: root.model.setupActive || item !== null

        sourceComponent: SetupSheet {
            model: root.model
        }
    }

    Loader {
        id: review

        active: false

        sourceComponent: ReviewSheet {
            agents: root.model.agentModels
        }
    }

    Connections {
        target: root.model.agentModels

        function onReviewChanged() {
            if (root.model.agentModels.reviewKey.length > 0) {
                review.active = true;
                (review.item as ReviewSheet).open();
            }
        }
    }

    TooltipLayer {}

    Shortcut {
        enabled: root.searches
        sequences: Keymap.of("search")
        onActivated: bar.focusSearch()
    }

    Shortcut {
        sequences: Keymap.of("refresh")
        onActivated: root.model.refreshNow()
    }

    Instantiator {
        model: 5

        Shortcut {
            required property int index

            sequence: Keymap.nth("filter", index)
            onActivated: {
                root.model.filterIndex = index;
                nav.home();
            }
        }
    }

    Shortcut {
        sequences: Keymap.of("newFolder")
        onActivated: nav.addProject(false)
    }

    Shortcut {
        sequences: Keymap.of("clone")
        onActivated: nav.addProject(true)
    }

    Shortcut {
        sequences: Keymap.of("tasks")
        onActivated: nav.tasks()
    }

    Shortcut {
        sequences: Keymap.of("newTask")
        onActivated: nav.page === Navigator.Project ? nav.wishFor(nav.pageID, 1, "newTask") : nav.newTask()
    }

    Shortcut {
        sequences: Keymap.of("ai")
        onActivated: nav.ai()
    }

    Shortcut {
        sequences: Keymap.of("home")
        onActivated: nav.home()
    }

    Shortcut {
        sequences: Keymap.of("settings")
        onActivated: nav.settings()
    }

    Shortcut {
        sequences: [StandardKey.Back]
        onActivated: nav.back()
    }

    Shortcut {
        sequences: [StandardKey.Forward]
        onActivated: nav.forward()
    }

    Shortcut {
        enabled: root.model.undoText.length > 0
        sequences: Keymap.of("undo")
        onActivated: root.model.undo()
    }

    Shortcut {
        sequences: Keymap.of("nextRegion")
        onActivated: root.goToRegion(1)
    }

    Shortcut {
        sequences: Keymap.of("previousRegion")
        onActivated: root.goToRegion(-1)
    }

    Shortcut {
        sequences: Keymap.of("sidebar")
        onActivated: root.sidebarHidden = !root.sidebarHidden
    }

    Loader {
        active: nav.sheet === "addProject" || nav.sheet === "clone" || item !== null

        sourceComponent: AddProjectSheet {
            model: root.model
            nav: root.navigator
        }
    }

    Loader {
        active: root.model.devices.isAsking || item !== null

        sourceComponent: DeviceSheet {
            model: root.model
        }
    }

    Loader {
        active: nav.sheet === "widgetsHowTo" || item !== null

        sourceComponent: WidgetsSheet {
            model: root.model
            nav: root.navigator
        }
    }

    Loader {
        active: paletteModel.isOpen || item !== null

        sourceComponent: CommandPalette {
            commands: paletteModel
        }
    }

    Loader {
        id: projectMenu

        active: false

        sourceComponent: Menu {
            MenuRow {
                glyph: "folder-open"
                text: qsTr("Show in the file manager")
                onTriggered: root.model.openLink(moreTools.detail.folderUrl)
            }

            MenuRow {
                glyph: "copy"
                text: qsTr("Copy the path")
                onTriggered: Clipboard.copy(moreTools.detail.projectID)
            }

            MenuRow {
                glyph: "folder-cog"
                text: qsTr("Correct its services…")
                onTriggered: nav.settings(6)
            }
        }
    }

    Loader {
        id: shortcutSheet

        active: false

        sourceComponent: ShortcutsSheet {}
    }

    Loader {
        active: root.model.needsOnboarding

        sourceComponent: Onboarding {
            target: root
            model: root.model
            ownFrame: root.ownFrame
            onFolderRequested: root.folderAsked()
        }
    }

    function copyDiagnostics() {
        Clipboard.copy(Diagnostics.text(root.model));
        root.model.showStatus(qsTr("Copied what there is to say of this machine"), false);
    }

    function showShortcuts() {
        shortcutSheet.active = true;
        (shortcutSheet.item as ShortcutsSheet).open();
    }

    Connections {
        target: paletteModel

        function onShortcutsAsked() {
            root.showShortcuts();
        }

        function onDiagnosticsAsked() {
            root.copyDiagnostics();
        }
    }

    Shortcut {
        sequences: Keymap.of("palette")
        onActivated: paletteModel.open()
    }

    Shortcut {
        sequences: Keymap.of("shortcuts")
        onActivated: root.showShortcuts()
    }

    Loader {
        id: quitAlert

        active: false

        sourceComponent: Alert {
            property bool inTray: true

            message: ""
            text: inTray ? qsTr("Quit and stop everything, or keep running from the menu bar.") : qsTr("Quitting stops everything.")
            readonly property var stop: ({
                    "text": qsTr("Stop and Quit"),
                    "danger": true,
                    "answer": 0
                })
            readonly property var stay: ({
                    "text": qsTr("Keep Running in Menu Bar"),
                    "primary": true,
                    "answer": 1
                })
            readonly property var cancel: ({
                    "text": qsTr("Cancel"),
                    "answer": 2
                })

            choices: inTray ? [stop, stay, cancel] : [stop, cancel]
            onChosen: index => root.quitAnswered(choices[index].answer)
        }
    }

    // Of the application: a sheet that is open, or on its way out, does not keep it from ending.
    Shortcut {
        sequences: Keymap.of("closeWindow")
        context: Qt.ApplicationShortcut
        onActivated: root.closeAsked()
    }

    Shortcut {
        sequences: Keymap.of("quit")
        context: Qt.ApplicationShortcut
        onActivated: root.quitAsked()
    }
}
