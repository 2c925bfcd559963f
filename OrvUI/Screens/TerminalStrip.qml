import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The tabs of the terminals, and the button behind them that opens another one.
Item {
    id: strip

    required property TerminalTabList list
    required property string folderName
    signal newRequested

    ListView {
        id: view

        // The tabs share what the button leaves them.
        readonly property int room: strip.width - 2 * Theme.space12 - button.implicitWidth - Theme.space4
        readonly property int share: Math.floor(room / Math.max(1, count)) - spacing

        x: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(contentWidth, room)
        height: Theme.controlRegular
        orientation: ListView.Horizontal
        spacing: Theme.space4
        interactive: contentWidth > width
        boundsBehavior: Flickable.StopAtBounds
        clip: interactive
        model: strip.list.rows
        currentIndex: -1
        Accessible.role: Accessible.PageTabList
        Accessible.name: qsTr("Terminals")

        delegate: TerminalTab {
            id: tab

            required property int index

            limit: Math.max(Theme.terminalTabMin, Math.min(Theme.terminalTabMax, view.share))
            isSelected: session === strip.list.selected
            onClicked: strip.list.select(session)
            onCloseRequested: strip.list.close(session)
            onIsSelectedChanged: {
                if (isSelected) {
                    view.positionViewAtIndex(index, ListView.Contain);
                }
            }

            DragHandler {
                target: null
                yAxis.enabled: false
                onCentroidChanged: {
                    if (!active) {
                        return;
                    }
                    const place = view.indexAt(tab.mapToItem(view.contentItem, centroid.position).x, view.height / 2);
                    if (place >= 0 && place !== tab.index) {
                        strip.list.move(tab.session, place);
                    }
                }
            }
        }

        moveDisplaced: Transition {
            NumberAnimation {
                properties: "x"
                duration: Theme.durationFast
            }
        }
    }

    Button {
        id: button

        anchors.left: view.right
        anchors.leftMargin: Theme.space4
        anchors.verticalCenter: parent.verticalCenter
        ghost: true
        glyph: "plus"
        text: qsTr("New terminal in %1").arg(strip.folderName)
        onClicked: strip.newRequested()
    }
}
