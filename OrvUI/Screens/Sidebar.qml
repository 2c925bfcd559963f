import OrvLauncher.Screens
import QtQuick

// The frame's left side: mark, filters, folders and the profile. Below the narrow limit it is a rail of icons.
FocusScope {
    id: sidebar

    required property AppModel model
    required property Navigator nav
    required property bool rail
    // The application draws the frame of the window, so its mark stands here.
    property bool showsMark: true

    // The rail is left by the button at its top only where there is room for the sidebar.
    property bool collapsible: true
    signal toggleRequested
    signal jumpRequested
    // A page, be it the one that is shown.
    signal pageChosen

    SettingsForm {
        id: form

        model: sidebar.model
    }

    Item {
        id: titleZone

        width: parent.width
        height: Theme.titleZoneHeight

        WindowDragArea {
            anchors.fill: parent
        }

        Row {
            x: sidebar.rail ? Math.round((titleZone.width - mark.width) / 2) : Theme.space10 + Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space8
            visible: sidebar.showsMark

            BrandMark {
                id: mark
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                visible: !sidebar.rail
                role: Theme.Section
                text: Qt.application.name
            }
        }

        IconButton {
            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            visible: !sidebar.rail && sidebar.collapsible
            glyph: "panel-left"
            text: qsTr("Hide the sidebar")
            shortcut: Keymap.text("sidebar")
            onClicked: sidebar.toggleRequested()
        }
    }

    JumpField {
        id: jump

        anchors.top: titleZone.bottom
        x: filters.x
        width: filters.width
        rail: sidebar.rail
        onClicked: sidebar.jumpRequested()
    }

    Column {
        id: filters

        anchors.top: jump.bottom
        anchors.topMargin: sidebar.rail ? Theme.space16 : Theme.space12
        x: sidebar.rail ? Math.round((sidebar.width - Theme.railButtonWidth) / 2) : Theme.space8
        width: sidebar.rail ? Theme.railButtonWidth : sidebar.width - Theme.space16
        spacing: sidebar.rail ? Theme.space4 : 0
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Filters")

        IconButton {
            visible: sidebar.rail && sidebar.collapsible
            width: Theme.railButtonWidth
            height: Theme.railButtonHeight
            glyph: "panel-left"
            glyphSize: Theme.iconLarge
            text: qsTr("Show the sidebar")
            shortcut: Keymap.text("sidebar")
            onClicked: sidebar.toggleRequested()
        }

        Repeater {
            model: sidebar.model.sidebarFilters

            // (A row has an `icon` of its own kind.)
            Item {
                id: filter

                required property int index
                required property string title
                required property string icon
                required property int count

                width: filters.width
                height: row.implicitHeight

                SidebarRow {
                    id: row

                    anchors.fill: parent
                    text: filter.title
                    glyph: filter.icon
                    count: filter.count
                    rail: sidebar.rail
                    badge: filter.index === 2
                    showsCount: sidebar.model.hasScanned && sidebar.model.projectCount > 0
                    selected: sidebar.nav.page === Navigator.Home && filter.index === sidebar.model.filterIndex
                    shortcut: Keymap.nthText("filter", filter.index)
                    onClicked: {
                        sidebar.model.filterIndex = filter.index;
                        sidebar.nav.home();
                    }
                    Keys.onDownPressed: row.nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
                    Keys.onUpPressed: row.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
                }
            }
        }
    }

    Label {
        id: heading

        anchors.top: filters.bottom
        anchors.topMargin: Theme.space12
        x: Theme.space10 + Theme.space8
        height: Theme.outlineRowHeight
        verticalAlignment: Text.AlignVCenter
        visible: !sidebar.rail
        role: Theme.SmallStrong
        color: Theme.text3
        text: qsTr("Folders")
    }

    Label {
        anchors.left: heading.left
        anchors.top: heading.bottom
        anchors.topMargin: Theme.space4
        visible: !sidebar.rail && (outline.item as Outline)?.count === 0
        role: Theme.Small
        color: Theme.text3
        text: qsTr("No folders yet")
    }

    Loader {
        id: outline

        anchors.top: heading.bottom
        anchors.bottom: pages.top
        anchors.bottomMargin: Theme.space8
        x: Theme.space8
        width: sidebar.width - Theme.space16
        active: !sidebar.rail

        sourceComponent: Outline {
            model: sidebar.model.outline
            onToggled: row => sidebar.model.outline.toggleExpanded(row)
            onExpandedSet: (row, expanded) => sidebar.model.outline.setExpanded(row, expanded)
            current: sidebar.nav.pageID
            onProjectChosen: projectID => sidebar.nav.project(projectID)
            onFolderChosen: path => sidebar.nav.collection(path)
        }
    }

    Loader {
        anchors.top: filters.bottom
        anchors.topMargin: Theme.space12
        anchors.horizontalCenter: parent.horizontalCenter
        active: sidebar.rail

        sourceComponent: Column {
            spacing: Theme.space12

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: Theme.sidebarRowHeight
                height: Theme.hairline
                color: Theme.border
            }

            IconButton {
                id: foldersButton

                width: Theme.railButtonWidth
                height: Theme.railButtonHeight
                glyph: "folder-tree"
                glyphSize: Theme.iconLarge
                text: qsTr("Folders")
                onClicked: folders.open()

                Popover {
                    id: folders

                    x: foldersButton.width + Theme.space12
                    width: Theme.popoverWidth
                    height: Theme.popoverHeight

                    contentItem: Outline {
                        focus: true
                        model: sidebar.model.outline
                        onToggled: row => sidebar.model.outline.toggleExpanded(row)
                        onExpandedSet: (row, expanded) => sidebar.model.outline.setExpanded(row, expanded)
                        current: sidebar.nav.pageID
                        onProjectChosen: projectID => {
                            folders.close();
                            sidebar.nav.project(projectID);
                        }
                        onFolderChosen: path => {
                            folders.close();
                            sidebar.nav.collection(path);
                        }
                    }
                }
            }
        }
    }

    Column {
        id: pages

        anchors.bottom: profile.top
        anchors.bottomMargin: Theme.space6
        x: filters.x
        width: filters.width
        spacing: filters.spacing

        SidebarRow {
            width: parent.width
            rail: sidebar.rail
            glyph: "list-todo"
            text: qsTr("Tasks")
            count: sidebar.model.openTaskCount
            showsCount: count > 0
            counts: count === 1 ? qsTr("%1, 1 open").arg(text) : qsTr("%1, %2 open").arg(text).arg(count)
            selected: sidebar.nav.page === Navigator.Tasks
            shortcut: Keymap.text("tasks")
            onClicked: {
                sidebar.nav.tasks();
                sidebar.pageChosen();
            }
        }

        SidebarRow {
            width: parent.width
            rail: sidebar.rail
            glyph: "sparkles"
            text: qsTr("AI")
            count: sidebar.model.runningAgentCount
            showsCount: count > 0
            counts: qsTr("%1, %2 working").arg(text).arg(count)
            busy: count > 0
            selected: sidebar.nav.page === Navigator.Ai
            shortcut: Keymap.text("ai")
            onClicked: {
                sidebar.nav.ai();
                sidebar.pageChosen();
            }
        }
    }

    ProfileRow {
        id: profile

        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.space10
        x: Theme.space8
        width: sidebar.width - Theme.space16
        rail: sidebar.rail
        name: sidebar.model.displayName
        color: form.avatarColor
        selected: sidebar.nav.page === Navigator.Settings
        onClicked: {
            sidebar.nav.settings();
            sidebar.pageChosen();
        }
    }
}
