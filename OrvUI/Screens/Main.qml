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
    readonly property bool searches: nav.page === Navigator.Home || nav.page === Navigator.Collection
    readonly property var pageSources: ({
            [Navigator.Settings]: "SettingsPage.qml",
            [Navigator.Collection]: "CollectionPage.qml",
            [Navigator.Project]: "ProjectPage.qml",
            [Navigator.Tasks]: "TasksPage.qml",
            [Navigator.Ai]: "AiPage.qml"
        })
    readonly property bool narrow: width < Theme.narrowLimit
    readonly property bool wide: width >= Theme.wideLimit

    // A popup that closes leaves the focus to the window's root, not to the item that had it before.
    function returnFocus() {
        if (activeFocusItem === contentItem && !T.Overlay.overlay.visible) {
            content.forceActiveFocus(Qt.PopupFocusReason);
        }
    }

    signal closeAsked
    signal quitAsked
    // For the folder that is scanned.
    signal folderAsked
    // The place of the answer in the question's list.
    signal quitAnswered(int choice)
    // Another application holds the quick panel's key.
    property bool shortcutTaken: false

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
                "narrow": Qt.binding(() => root.narrow),
                "padding": Qt.binding(() => root.pagePadding - Theme.hairline)
            });
            if (nav.page === Navigator.Collection) {
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

    Navigator {
        id: nav

        model: root.model
        onMoved: root.showPage()
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
                        primary: true
                        glyph: "plus"
                        text: root.narrow ? qsTr("Add") : qsTr("Add project")
                        Accessible.name: qsTr("Add project")
                        onClicked: nav.addProject(false)
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
                        shortcut: qsTr("Ctrl D")
                        onClicked: {
                            checked = Qt.binding(() => detail?.pinned ?? false);
                            root.model.togglePinFor(detail.projectID);
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
                    padding: root.pagePadding - Theme.hairline
                    onFolderRequested: root.folderAsked()
                    onProjectChosen: projectID => nav.project(projectID)
                }

                Loader {
                    id: page

                    anchors.fill: parent
                    // Its file's name.
                    property string shown

                    focus: !home.visible
                    visible: !home.visible
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

            StatusLine {
                anchors.horizontalCenter: parent.horizontalCenter
                anchors.bottom: parent.bottom
                anchors.bottomMargin: Theme.space20
                width: implicitWidth
                height: implicitHeight
                limit: Math.min(Theme.statusLineLimit, panel.width - Theme.space32)
                shown: root.model.hasStatus
                text: root.model.statusText
                isError: root.model.statusIsError
                isOngoing: root.model.statusIsOngoing
                onDismissed: root.model.dismissStatus()
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

    TooltipLayer {}

    Shortcut {
        sequences: ["Ctrl+F"]
        onActivated: bar.focusSearch()
    }

    Shortcut {
        sequences: ["Ctrl+R", "F5"]
        onActivated: root.model.refreshNow()
    }

    Instantiator {
        model: 5

        Shortcut {
            required property int index

            sequence: "Ctrl+" + (index + 1)
            onActivated: {
                root.model.filterIndex = index;
                nav.home();
            }
        }
    }

    Shortcut {
        sequence: "Ctrl+N"
        onActivated: nav.addProject(false)
    }

    Shortcut {
        sequence: "Ctrl+Shift+N"
        onActivated: nav.addProject(true)
    }

    Shortcut {
        sequence: "Ctrl+6"
        onActivated: nav.tasks()
    }

    Shortcut {
        sequence: "Ctrl+7"
        onActivated: nav.ai()
    }

    Shortcut {
        sequence: "Alt+Home"
        onActivated: nav.home()
    }

    Shortcut {
        sequence: "Ctrl+,"
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
        sequence: "Ctrl+Alt+S"
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
        sequence: "Ctrl+W"
        context: Qt.ApplicationShortcut
        onActivated: root.closeAsked()
    }

    Shortcut {
        sequence: "Ctrl+Q"
        context: Qt.ApplicationShortcut
        onActivated: root.quitAsked()
    }
}
