import OrvLauncher.Screens
import QtQuick

// The tabs of the terminals, the button behind them that opens another one, and what is open elsewhere.
Item {
    id: strip

    required property TerminalTabList list
    required property string folderName
    readonly property string newText: qsTr("New terminal in %1").arg(folderName)
    // What the button may take when each tab has as much as it needs.
    readonly property real spare: width - 2 * Theme.space12 - Theme.space4 - others.room - list.count * (Theme.terminalTabMin + Theme.space4)
    // Of the strip, for a folder with a long name.
    readonly property int buttonLimit: Math.floor(width / 3)
    signal newRequested
    signal otherChosen(var session, string projectID)

    function buttonWidth(text) {
        return button.leftPadding + button.glyphSize + Theme.space6 + Math.ceil(metrics.advanceWidth(text)) + button.rightPadding;
    }

    // No room stays empty beside tabs that have become narrower, be they still on their way.
    function settle() {
        tabs.contentX = Math.max(0, Math.min(tabs.contentX, tabs.contentWidth - tabs.width));
    }

    // Brings a tab into view.
    function show(tab) {
        if (tab.x < tabs.contentX) {
            tabs.contentX = tab.x;
        } else if (tab.x + tab.width > tabs.contentX + tabs.width) {
            tabs.contentX = tab.x + tab.width - tabs.width;
        }
        strip.settle();
    }

    FontMetrics {
        id: metrics

        font: Theme.font(button.role)
    }

    Flickable {
        id: tabs

        // The tabs share what the button leaves them.
        readonly property int room: strip.width - 2 * Theme.space12 - button.width - Theme.space4 - others.room
        readonly property int share: Math.floor(room / Math.max(1, strip.list.count)) - Theme.space4

        x: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(row.width, room)
        height: Theme.controlRegular
        contentWidth: row.width
        interactive: contentWidth > width
        boundsBehavior: Flickable.StopAtBounds
        clip: interactive
        onContentWidthChanged: strip.settle()
        onWidthChanged: {
            strip.settle();
            for (let index = 0; index < shown.count; ++index) {
                const tab = shown.itemAt(index) as TerminalTab;
                if (tab?.isSelected) {
                    strip.show(tab);
                }
            }
        }
        Accessible.role: Accessible.PageTabList
        Accessible.name: qsTr("Terminals")

        Row {
            id: row

            spacing: Theme.space4

            move: Transition {
                NumberAnimation {
                    properties: "x"
                    duration: Theme.durationFast
                }
            }

            Repeater {
                id: shown

                model: strip.list.rows

                TerminalTab {
                    id: tab

                    limit: Math.max(Theme.terminalTabMin, Math.min(Theme.terminalTabMax, tabs.share))
                    isSelected: session === strip.list.selected
                    onClicked: strip.list.select(session)
                    onCloseRequested: strip.list.close(session)
                    onXChanged: {
                        if (isSelected) {
                            strip.show(tab);
                        }
                    }
                    onIsSelectedChanged: {
                        if (isSelected) {
                            strip.show(tab);
                        }
                    }

                    DragHandler {
                        property real reached: 0

                        target: null
                        yAxis.enabled: false
                        onCentroidChanged: {
                            const way = centroid.scenePosition.x - reached;
                            reached += way;
                            const below = active ? row.childAt(tab.x + centroid.position.x, tab.height / 2) as TerminalTab : null;
                            // One that still slides out of the way has been passed already.
                            if (below !== null && (below.index - tab.index) * way > 0) {
                                strip.list.moveTo(tab.session, below.session);
                            }
                        }
                    }
                }
            }
        }
    }

    Button {
        id: button

        anchors.left: tabs.right
        anchors.leftMargin: Theme.space4
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(implicitWidth, strip.buttonLimit)
        ghost: true
        controlHeight: Theme.controlSmall
        glyph: "plus"
        text: strip.spare >= Math.min(strip.buttonWidth(strip.newText), strip.buttonLimit) ? strip.newText : strip.spare >= strip.buttonWidth(qsTr("New terminal")) ? qsTr("New terminal") : ""
        tip: truncated || text !== strip.newText ? strip.newText : ""
        Accessible.name: strip.newText
        onClicked: strip.newRequested()
    }

    OtherTerminals {
        id: others

        readonly property real room: visible ? width + Theme.space4 : 0

        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        visible: strip.list.otherCount > 0
        list: strip.list
        onChosen: (session, projectID) => strip.otherChosen(session, projectID)
    }
}
