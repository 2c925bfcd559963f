import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// To-do items under their projects' headings, and the ones that were done lately.
FocusScope {
    id: page

    required property AppModel model
    required property TaskLists lists
    // All that is done, instead of what is open.
    property bool showsDone: false
    property bool grouped: true
    property int contentWidth: width
    property alias header: top.sourceComponent
    // What has the focus in the header gets it when the list does.
    property alias startsAtHeader: top.focus
    property bool recentOpen: true
    readonly property var head: top.item
    readonly property bool isEmpty: rows.count === 0 && (showsDone || recent.count === 0)
    signal handedToAi(string key)
    readonly property bool scrolled: view.contentY > Theme.hairline

    function focusField() {
        page.head.focusField();
    }

    function go(row) {
        rows.itemAt(row)?.take();
    }

    // Where the row was that had the focus when it went; -1: in neither list.
    property int wentFromRows: -1
    property int wentFromRecent: -1

    function hasFocus(item) {
        let at = Window.activeFocusItem;
        while (at !== null && at !== item) {
            at = at.parent;
        }
        return at !== null;
    }

    // The row that comes to the place of the one that went takes the focus, else the field above.
    Timer {
        id: successor

        interval: 0
        onTriggered: {
            const next = page.wentFromRows >= 0 ? rows.itemAt(Math.min(page.wentFromRows, rows.count - 1))?.row : recent.itemAt(Math.min(page.wentFromRecent, recent.count - 1));
            if (page.Window.activeFocusItem === page) {
                next ? next.forceActiveFocus(Qt.TabFocusReason) : page.focusField();
            }
            page.wentFromRows = -1;
            page.wentFromRecent = -1;
        }
    }

    Component.onCompleted: page.lists.refresh()

    Flickable {
        id: view

        objectName: "view"
        anchors.fill: parent
        contentHeight: column.height + Theme.space40
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        Column {
            id: column

            x: Math.round((view.width - width) / 2)
            width: page.contentWidth

            Loader {
                id: top

                width: parent.width
            }

            Repeater {
                id: rows

                model: page.showsDone ? page.lists.done : page.lists.open
                onItemRemoved: (index, item) => {
                    if (page.hasFocus(item)) {
                        page.wentFromRows = index;
                        successor.restart();
                    }
                }

                Column {
                    id: entry

                    required property int index
                    required property string key
                    required property string title
                    required property string notes
                    required property string projectID
                    required property string projectName
                    required property int tileIndex
                    required property string tileLetter
                    required property bool isDone
                    required property string agentName
                    required property string when
                    required property int groupCount
                    readonly property bool starts: index === 0 || (!page.showsDone && rows.itemAt(index - 1)?.projectID !== projectID)
                    readonly property bool heads: page.grouped && !page.showsDone && starts

                    readonly property TaskItem row: item

                    function take() {
                        item.forceActiveFocus(Qt.TabFocusReason);
                    }

                    width: column.width

                    Item {
                        width: parent.width
                        height: visible ? Theme.space24 + Theme.controlRegular : 0
                        visible: entry.heads

                        Row {
                            anchors.bottom: parent.bottom
                            anchors.bottomMargin: Theme.space10
                            spacing: Theme.space10

                            Tile {
                                anchors.verticalCenter: parent.verticalCenter
                                size: Theme.swatchSize
                                tileIndex: entry.tileIndex
                                tileLetter: entry.tileLetter
                            }

                            Label {
                                anchors.verticalCenter: parent.verticalCenter
                                role: Theme.Section
                                text: entry.projectName
                                Accessible.role: Accessible.Heading
                                Accessible.name: text
                            }

                            Figures {
                                anchors.verticalCenter: parent.verticalCenter
                                role: Theme.Small
                                color: Theme.text3
                                text: entry.groupCount
                            }
                        }
                    }

                    Item {
                        width: parent.width
                        height: item.height

                        // One card under all rows of the group, which come after it.
                        CardFace {
                            width: parent.width
                            visible: entry.starts
                            height: {
                                const last = column.height > 0 ? rows.itemAt(entry.index + entry.groupCount - 1) : null;
                                return last ? last.y + last.height - entry.y - parent.y : item.height;
                            }
                        }

                        TaskItem {
                            id: item

                            width: parent.width
                            index: entry.index
                            first: entry.starts
                            key: entry.key
                            title: entry.title
                            notes: entry.notes
                            isDone: entry.isDone
                            agentName: entry.agentName
                            when: entry.when
                            onDoneToggled: done => page.lists.setDone(key, done)
                            onRenamed: title => page.lists.rename(key, title, notes)
                            onRemoved: page.lists.remove(key)
                            onHandedToAi: page.handedToAi(key)
                            onMoved: step => page.go(entry.index + step)
                        }
                    }
                }
            }

            Item {
                width: parent.width
                height: visible ? Theme.space12 : 0
                visible: done.visible
            }

            Disclosure {
                id: done

                visible: !page.showsDone && recent.count > 0
                height: Theme.space40
                heading: true
                count: recent.count
                text: qsTr("Done recently")
                checked: page.recentOpen
                onClicked: page.recentOpen = !page.recentOpen
            }

            CardFace {
                width: parent.width
                height: lately.height
                visible: !page.showsDone && page.recentOpen && recent.count > 0

                Column {
                    id: lately

                    width: parent.width

                    Repeater {
                        id: recent

                        model: page.lists.recentlyDone
                        onItemRemoved: (index, item) => {
                            if (page.hasFocus(item)) {
                                page.wentFromRecent = index;
                                successor.restart();
                            }
                        }

                        TaskItem {
                            width: column.width
                            onDoneToggled: done => page.lists.setDone(key, done)
                            onRemoved: page.lists.remove(key)
                        }
                    }
                }
            }
        }

        FocusFollower {
            view: view
            margin: Theme.space8
        }

        T.ScrollBar.vertical: ScrollBar {}
    }
}
