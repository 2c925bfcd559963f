import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Everything that can narrow the projects, and how folders of projects are shown. What is chosen takes effect at once.
Popover {
    id: popover

    required property FilterBar bar

    width: Theme.filterWidth
    height: Math.min(implicitHeight, T.Overlay.overlay.height - Theme.paletteTop)
    padding: 0
    onOpened: clear.nextItemInFocusChain().forceActiveFocus(Qt.PopupFocusReason)

    contentItem: Flickable {
        id: view

        implicitWidth: Theme.filterWidth
        implicitHeight: column.height
        contentHeight: column.height
        boundsBehavior: Flickable.StopAtBounds
        clip: contentHeight > height
        Accessible.role: Accessible.Dialog
        Accessible.name: title.text

        Column {
            id: column

            x: Theme.space16
            width: parent.width - 2 * x
            topPadding: Theme.space12 + Theme.space2
            bottomPadding: Theme.space12 + Theme.space2
            spacing: Theme.space12

            Item {
                width: parent.width
                height: Theme.controlSmall

                Label {
                    id: title

                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Section
                    text: qsTr("Filters")
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }

                Button {
                    id: clear

                    anchors.right: parent.right
                    ghost: true
                    controlHeight: Theme.controlSmall
                    text: qsTr("Clear")
                    Accessible.name: qsTr("Clear filters")
                    onClicked: popover.bar.clear()
                }
            }

            Part {
                heading: qsTr("Kind")

                Repeater {
                    model: popover.bar.kinds

                    Choice {}
                }
            }

            Part {
                visible: frameworks.count > 0
                heading: qsTr("Framework")

                Repeater {
                    id: frameworks

                    model: popover.bar.frameworks

                    Choice {}
                }
            }

            Part {
                heading: qsTr("Git")

                Segmented {
                    width: column.width
                    stretched: true
                    name: qsTr("Git")
                    currentIndex: popover.bar.git
                    choices: Array.from(popover.bar.gitTitles, text => ({
                                "text": text
                            }))
                    onChosen: index => popover.bar.git = index
                }
            }

            Part {
                heading: qsTr("Collections")

                Repeater {
                    model: popover.bar.collectionTitles

                    ChoiceChip {
                        required property int index
                        required property string modelData

                        single: true
                        text: modelData
                        checked: popover.bar.collections === index
                        onClicked: popover.bar.collections = index
                    }
                }
            }

            Column {
                width: parent.width

                OnlyRow {
                    text: qsTr("Only running")
                    on: popover.bar.onlyRunning
                    onToggled: on => popover.bar.onlyRunning = on
                }

                OnlyRow {
                    text: qsTr("Only pinned")
                    on: popover.bar.onlyPinned
                    onToggled: on => popover.bar.onlyPinned = on
                }
            }
        }

        FocusFollower {
            view: view
            margin: Theme.space8
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    component Part: Column {
        id: part

        property string heading
        default property alias parts: flow.data

        width: column.width
        spacing: Theme.space8
        Accessible.role: Accessible.Grouping
        Accessible.name: heading

        Label {
            role: Theme.SmallStrong
            color: Theme.text2
            text: part.heading
        }

        Flow {
            id: flow

            width: parent.width
            spacing: Theme.space6
        }
    }

    component Choice: ChoiceChip {
        required property string key
        required property string title
        required property bool isOn

        text: title
        checked: isOn
        onClicked: popover.bar.toggle(key)
    }

    component OnlyRow: Item {
        id: row

        property string text
        property bool on
        signal toggled(bool on)

        width: column.width
        height: Theme.controlRegular

        Label {
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.BodyStrong
            text: row.text
        }

        Switch {
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: row.text
            checked: row.on
            onClicked: {
                const wanted = checked;
                checked = Qt.binding(() => row.on);
                row.toggled(wanted);
            }
        }
    }
}
