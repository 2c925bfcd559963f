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
    readonly property bool narrow: width < Theme.narrowLimit
    readonly property bool wide: width >= Theme.wideLimit

    // A popup that closes leaves the focus to the window's root, not to the item that had it before.
    function returnFocus() {
        if (activeFocusItem === contentItem && !T.Overlay.overlay.visible) {
            content.forceActiveFocus(Qt.PopupFocusReason);
        }
    }

    function chooseFolder() {
        folderDialog.active = true;
        const dialog = folderDialog.item as ChooseFolder;
        dialog.currentFolder = model.scanRootUrl;
        dialog.open();
    }

    title: Qt.application.name
    minimumWidth: Theme.minimumWidth
    minimumHeight: Theme.minimumHeight
    flags: ownFrame ? Qt.Window | Qt.FramelessWindowHint : Qt.Window
    color: Theme.sidebar
    onActiveChanged: {
        if (active) {
            model.updateGreeting();
            model.lookAtGit();
        }
    }
    onActiveFocusItemChanged: returnFocus()

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
            onSettingsRequested: anchor => {
                settings.active = true;
                const popover = settings.item as SettingsPopover;
                popover.parent = anchor;
                popover.y = -popover.height - Theme.space8;
                popover.open();
            }
            onProjectChosen: projectID => {
                root.model.searchText = "";
                root.model.filterIndex = 0;
                page.showProject(projectID);
            }
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
                title: qsTr("Home")
                searchText: root.model.searchText
                narrow: root.narrow
                busy: root.model.isScanning
                scrolled: page.scrolled
                ownFrame: root.ownFrame
                padding: root.narrow ? Theme.pagePaddingNarrow : Theme.pagePadding
                onSearchEdited: text => root.model.searchText = text
                onSearchLeft: page.focusCards()
                onRefreshRequested: root.model.refreshNow()
            }

            HomePage {
                id: page

                anchors.top: bar.bottom
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                anchors.margins: Theme.hairline
                anchors.topMargin: 0
                focus: true
                model: root.model
                padding: (root.narrow ? Theme.pagePaddingNarrow : Theme.pagePadding) - Theme.hairline
                onFolderRequested: root.chooseFolder()
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

    Loader {
        id: settings

        active: false

        sourceComponent: SettingsPopover {
            model: root.model
            onFolderRequested: root.chooseFolder()
        }
    }

    Loader {
        id: folderDialog

        active: false
        source: "ChooseFolder.qml"

        Connections {
            target: folderDialog.item
            function onAccepted() {
                root.model.chooseScanRoot((folderDialog.item as ChooseFolder).selectedFolder);
            }
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
            onActivated: root.model.filterIndex = index
        }
    }

    Shortcut {
        sequence: "Ctrl+Alt+S"
        onActivated: root.sidebarHidden = !root.sidebarHidden
    }

    // Of the application: a sheet that is open, or on its way out, does not keep it from ending.
    Shortcut {
        sequences: ["Ctrl+W", "Ctrl+Q"]
        context: Qt.ApplicationShortcut
        onActivated: root.close()
    }
}
