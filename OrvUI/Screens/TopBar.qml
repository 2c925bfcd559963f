import OrvLauncher.Screens
import QtQuick

// The bar over a page: the way to it at the left, what the page offers at the right.
FocusScope {
    id: bar

    required property Window target
    // From the home page to this one, of records with a title.
    required property var crumbs
    property alias searchText: search.text
    property alias searchHint: search.placeholderText
    property bool searchable: true
    property bool refreshable: true
    property bool narrow: false
    property bool busy: false
    // What another look for projects would find.
    property string news
    property bool scrolled: false
    property bool ownFrame: true
    property int padding: Theme.pagePadding
    // What only this page offers; stands behind what every page has.
    property alias tools: tools.data
    signal crumbChosen(int index)
    signal searchEdited(string text)
    signal searchLeft
    signal refreshRequested

    function focusSearch() {
        if (bar.searchable) {
            search.forceActiveFocus(Qt.ShortcutFocusReason);
            search.selectAll();
        }
    }

    implicitHeight: Theme.topBarHeight

    WindowDragArea {
        anchors.fill: parent
    }

    Breadcrumbs {
        anchors.left: parent.left
        anchors.leftMargin: bar.padding
        anchors.right: right.left
        anchors.rightMargin: Theme.space16
        anchors.verticalCenter: parent.verticalCenter
        crumbs: bar.crumbs
        onChosen: index => bar.crumbChosen(index)
    }

    Row {
        id: right

        anchors.right: parent.right
        anchors.rightMargin: bar.ownFrame ? Theme.space10 : Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space8

        Field {
            id: search

            anchors.verticalCenter: parent.verticalCenter
            visible: bar.searchable
            width: bar.narrow ? Theme.searchWidthNarrow : Theme.searchWidth
            glyph: "search"
            shortcut: Keymap.text("search")
            clearable: true
            onTextEdited: bar.searchEdited(text)
            onCleared: bar.searchEdited("")
            onAbandoned: bar.searchLeft()
            Keys.onDownPressed: bar.searchLeft()
            Keys.onReturnPressed: bar.searchLeft()
            Keys.onEnterPressed: bar.searchLeft()
            // Where nothing else stands in the bar, what was found comes next.
            Keys.onTabPressed: event => {
                event.accepted = text.length > 0 && !bar.refreshable;
                if (event.accepted) {
                    bar.searchLeft();
                }
            }
        }

        IconButton {
            anchors.verticalCenter: parent.verticalCenter
            visible: bar.refreshable
            edge: Theme.controlRegular
            glyph: "refresh-cw"
            text: bar.news.length > 0 ? qsTr("Refresh projects: %1").arg(bar.news) : qsTr("Refresh projects")
            shortcut: Keymap.text("refresh")
            enabled: !bar.busy
            onClicked: bar.refreshRequested()

            contentItem: Item {
                Icon {
                    anchors.fill: parent
                    visible: !bar.busy
                    name: "refresh-cw"
                    color: bar.news.length > 0 ? Theme.accentText : Theme.text2
                }

                Spinner {
                    anchors.centerIn: parent
                    visible: bar.busy
                    size: Theme.icon
                }
            }
        }

        Row {
            id: tools

            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space8
        }

        WindowButtons {
            anchors.verticalCenter: parent.verticalCenter
            visible: bar.ownFrame
            target: bar.target
        }
    }

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: Theme.hairline
        color: Theme.border
        opacity: bar.scrolled ? 1 : 0
    }
}
