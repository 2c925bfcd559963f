import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// All projects, to choose one: by arrows, or by a part of its name.
Popover {
    id: chooser

    required property ProjectChoice choice
    property bool taken: false
    signal chosen

    function take() {
        chooser.taken = chooser.choice.chooseAt(list.currentIndex);
        if (chooser.taken) {
            chooser.close();
        }
    }

    implicitWidth: Theme.popoverWidth
    onAboutToShow: {
        chooser.taken = false;
        chooser.choice.text = "";
        chooser.choice.listing = true;
        list.currentIndex = Math.max(0, Rows.find(chooser.choice.rows, "projectID", chooser.choice.projectID));
        list.positionViewAtIndex(list.currentIndex, ListView.Contain);
    }
    onOpened: field.forceActiveFocus(Qt.PopupFocusReason)
    onClosed: {
        chooser.choice.listing = false;
        if (chooser.taken) {
            chooser.chosen();
        }
    }

    contentItem: FocusScope {
        implicitHeight: column.implicitHeight
        Accessible.role: Accessible.Dialog
        Accessible.name: qsTr("Choose a project")

        Column {
            id: column

            width: parent.width

            Item {
                width: parent.width
                height: field.height + Theme.space10

                Field {
                    id: field

                    x: Theme.haloWidth
                    y: Theme.haloWidth
                    width: parent.width - 2 * x
                    focus: true
                    glyph: "search"
                    placeholderText: qsTr("Find a project")
                    text: chooser.choice.text
                    onTextEdited: {
                        chooser.choice.text = text;
                        list.currentIndex = 0;
                    }
                    onAccepted: chooser.take()
                    Keys.onDownPressed: list.incrementCurrentIndex()
                    Keys.onUpPressed: list.decrementCurrentIndex()
                    Keys.onEscapePressed: chooser.close()
                }
            }

            ListView {
                id: list

                width: parent.width
                height: Math.min(contentHeight, 8 * Theme.menuRowHeight)
                visible: count > 0
                clip: true
                boundsBehavior: Flickable.StopAtBounds
                highlightMoveDuration: 0
                model: chooser.choice.rows
                Accessible.role: Accessible.List
                Accessible.name: qsTr("Projects")

                delegate: T.AbstractButton {
                    id: row

                    required property int index
                    required property string name
                    required property int tileIndex
                    required property string tileLetter
                    property int toldRole: Accessible.ListItem

                    width: list.width
                    implicitHeight: Theme.menuRowHeight
                    focusPolicy: Qt.NoFocus
                    hoverEnabled: true
                    text: name
                    Accessible.role: toldRole
                    Accessible.name: name
                    Accessible.selected: ListView.isCurrentItem
                    onClicked: {
                        list.currentIndex = index;
                        chooser.take();
                    }

                    background: Rectangle {
                        radius: Theme.radiusRow
                        color: row.ListView.isCurrentItem ? Theme.selection : row.hovered ? Theme.hover : "transparent"
                    }

                    contentItem: Item {
                        Tile {
                            id: tile

                            x: Theme.space8
                            anchors.verticalCenter: parent.verticalCenter
                            size: Theme.tileMini
                            tileIndex: row.tileIndex
                            tileLetter: row.tileLetter
                        }

                        Label {
                            id: title

                            anchors.left: tile.right
                            anchors.leftMargin: Theme.space8
                            anchors.right: parent.right
                            anchors.rightMargin: Theme.space8
                            anchors.verticalCenter: parent.verticalCenter
                            text: row.name

                            Tip {
                                text: title.truncated ? title.text : ""
                            }
                        }
                    }
                }

                T.ScrollBar.vertical: ScrollBar {}
            }

            Label {
                x: Theme.space10
                width: parent.width - 2 * x
                height: visible ? Theme.menuRowHeight : 0
                verticalAlignment: Text.AlignVCenter
                visible: list.count === 0
                role: Theme.Small
                color: Theme.text3
                text: qsTr("No projects match")
            }
        }
    }
}
