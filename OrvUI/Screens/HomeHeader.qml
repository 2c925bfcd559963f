import OrvLauncher.Screens
import QtQuick

// What stands above the grid of the home page: greeting, shelves, and the grid's own title.
Column {
    id: header

    required property AppModel model
    required property int columns
    // A search or a filter shows its result alone.
    required property bool narrowed
    property string news
    signal projectChosen(string projectID)
    signal logsChosen(string projectID, string key)
    required property SettingsForm form
    readonly property FilterBar bar: model.filterBar

    function openFilters() {
        tools.openFilters();
    }

    // As many as stand in one row.
    readonly property int suggestionColumns: Math.max(2, Math.min(4, columns))

    bottomPadding: Theme.gridGap

    Binding {
        target: header.model.suggestions
        property: "limit"
        value: header.suggestionColumns
    }

    Column {
        width: parent.width
        visible: !header.narrowed
        topPadding: Theme.space12
        bottomPadding: Theme.space24

        Label {
            width: parent.width
            role: Theme.Display
            text: header.model.greeting
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        Item {
            width: Theme.hairline
            height: Theme.space2
        }

        Row {
            height: summary.height
            spacing: Theme.space8

            Loader {
                anchors.verticalCenter: parent.verticalCenter
                active: !header.model.hasScanned
                visible: active

                sourceComponent: Spinner {
                    size: Theme.iconSmall
                }
            }

            Label {
                id: summary

                width: Math.min(implicitWidth, header.width - (changed.visible ? changed.width + Theme.space8 : 0))
                color: Theme.text2
                text: !header.model.hasScanned ? qsTr("Looking for projects…")
                    : header.model.projectCount === 0 ? qsTr("No projects in %1 yet").arg(header.model.scanRootText) : header.model.summaryLine
            }

            // The list stays as it is until somebody wants the new one.
            Button {
                id: changed

                anchors.verticalCenter: parent.verticalCenter
                visible: header.news.length > 0 && !header.model.isScanning
                ghost: true
                controlHeight: Theme.controlMini
                glyph: "refresh-cw"
                glyphSize: Theme.iconMini
                text: qsTr("Refresh: %1").arg(header.news)
                onClicked: header.model.refreshNow()
            }
        }
    }

    Grid {
        width: parent.width
        visible: !header.narrowed && suggestions.count > 0 && (!header.model.hasScanned || header.model.projectCount > 0)
        bottomPadding: Theme.shelfGap
        columns: header.suggestionColumns
        columnSpacing: Theme.gridGap
        rowSpacing: Theme.gridGap
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Suggestions")

        Repeater {
            id: suggestions

            model: header.model.suggestions.cards

            SuggestionCard {
                width: Math.floor((header.width - (header.suggestionColumns - 1) * Theme.gridGap) / header.suggestionColumns)
                onPerformed: header.model.suggestions.perform(key)
                onDismissed: header.model.suggestions.dismiss(key)
            }
        }
    }

    Shelf {
        width: parent.width
        visible: !header.narrowed && running.count > 0
        bottomPadding: Theme.shelfGap
        title: qsTr("Running")
        count: running.count
        columns: header.columns

        action: Button {
            ghost: true
            controlHeight: Theme.controlSmall
            glyph: "own-stop-fill"
            glyphSize: Theme.iconMini
            text: running.count === 1 ? qsTr("Stop all") : qsTr("Stop all %1").arg(running.count)
            Accessible.name: running.count === 1 ? qsTr("Stop the only service that runs") : qsTr("Stop all %1 services of all projects").arg(running.count)
            onClicked: header.model.stopAll()
        }

        Repeater {
            id: running

            model: header.model.running

            RunningItem {
                width: (parent?.parent as Shelf)?.itemWidth ?? 0
                onOpened: header.model.openServiceByKey(key)
                onStopped: header.model.stopServiceByKey(key)
                onLogsAsked: header.logsChosen(projectID, key)
                onClicked: header.projectChosen(projectID)
            }
        }
    }

    Shelf {
        width: parent.width
        visible: !header.narrowed && header.model.hasScanned && pinned.count > 0
        bottomPadding: Theme.shelfGap
        title: qsTr("Pinned")
        count: pinned.count
        columns: header.columns < 3 ? 2 : 4

        Repeater {
            id: pinned

            model: header.model.pinned

            PinnedItem {
                width: (parent?.parent as Shelf)?.itemWidth ?? 0
                onToggled: header.model.toggleProject(projectID)
                onClicked: header.projectChosen(projectID)
            }
        }
    }

    // In their place until it is known which of them are there.
    Shelf {
        width: parent.width
        visible: !header.narrowed && !header.model.hasScanned && header.form.pinnedCount > 0
        bottomPadding: Theme.shelfGap
        title: qsTr("Pinned")
        showsCount: false
        columns: header.columns < 3 ? 2 : 4

        Repeater {
            model: Math.min(header.form.pinnedCount, 4)

            Skeleton {
                card: false
                width: (parent?.parent as Shelf)?.itemWidth ?? 0
                height: Theme.pinnedItemHeight
            }
        }
    }

    Item {
        width: Theme.hairline
        height: Theme.space8
        visible: header.narrowed
    }

    SectionHeader {
        width: parent.width
        visible: header.narrowed || !header.model.hasScanned || header.model.projectCount > 0
        large: true
        showsCount: header.model.hasScanned
        count: header.model.shownCount
        text: header.model.searchText.length > 0 ? qsTr("Results for “%1”").arg(header.model.searchText) : header.model.filterTitle

        Label {
            visible: !header.model.hasScanned
            width: Math.min(implicitWidth, header.width / 2)
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Small
            color: Theme.text3
            elide: Text.ElideMiddle
            text: header.model.scanRootText
        }

        FilterTools {
            id: tools

            anchors.verticalCenter: parent.verticalCenter
            visible: header.model.hasScanned && header.model.projectCount > 0
            bar: header.bar
            viewMode: header.form.viewMode
            onViewModeChosen: mode => header.form.viewMode = mode
        }
    }

    Flow {
        width: parent.width
        visible: chips.count > 0
        topPadding: Theme.space8
        spacing: Theme.space8
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Filters that are set")

        Repeater {
            id: chips

            model: header.bar.chips

            FilterChip {
                onClicked: header.bar.toggle(key)
            }
        }

        Button {
            ghost: true
            controlHeight: Theme.controlMini
            text: qsTr("Clear filters")
            onClicked: header.bar.clear()
        }
    }
}
