import OrvLauncher.Screens
import QtQuick

// The bar over a page: where one is at the left, what the page offers at the right.
Item {
    id: bar

    required property Window target
    required property string title
    property alias searchText: search.text
    property bool searchable: true
    property bool narrow: false
    property bool busy: false
    property bool scrolled: false
    property bool ownFrame: true
    property int padding: Theme.pagePadding
    signal searchEdited(string text)
    signal searchLeft
    signal refreshRequested

    function focusSearch() {
        search.forceActiveFocus(Qt.ShortcutFocusReason);
        search.selectAll();
    }

    implicitHeight: Theme.topBarHeight

    WindowDragArea {
        anchors.fill: parent
    }

    Label {
        anchors.left: parent.left
        anchors.leftMargin: bar.padding
        anchors.right: tools.left
        anchors.rightMargin: Theme.space16
        anchors.verticalCenter: parent.verticalCenter
        role: Theme.BodyStrong
        text: bar.title
    }

    Row {
        id: tools

        anchors.right: parent.right
        anchors.rightMargin: bar.ownFrame ? Theme.space10 : Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space8

        Field {
            id: search

            visible: bar.searchable
            width: bar.narrow ? Theme.searchWidthNarrow : Theme.searchWidth
            glyph: "search"
            shortcut: qsTr("Ctrl F")
            placeholderText: qsTr("Search projects")
            clearable: true
            onTextEdited: bar.searchEdited(text)
            onCleared: bar.searchEdited("")
            onAbandoned: bar.searchLeft()
            Keys.onDownPressed: bar.searchLeft()
            Keys.onReturnPressed: bar.searchLeft()
        }

        IconButton {
            edge: Theme.controlRegular
            glyph: "refresh-cw"
            text: qsTr("Refresh projects")
            shortcut: qsTr("Ctrl R")
            enabled: !bar.busy
            onClicked: bar.refreshRequested()

            contentItem: Item {
                Icon {
                    anchors.fill: parent
                    visible: !bar.busy
                    name: "refresh-cw"
                    color: Theme.text2
                }

                Spinner {
                    anchors.centerIn: parent
                    visible: bar.busy
                    size: Theme.icon
                }
            }
        }

        WindowButtons {
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
