import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// On which device a Flutter app is to run. The keys move through the list while the focus is in the field.
Sheet {
    id: sheet

    required property AppModel model
    readonly property DevicesModel devices: model.devices
    // All but the list.
    readonly property real around: list.y + list.bottomMargin + hints.height + foot.height
    // The height of the whole list. What is looked for in it does not move the sheet under the hand.
    property real listed: Theme.emptyListHeight
    readonly property DeviceItem current: list.currentItem as DeviceItem

    function go() {
        if (sheet.current !== null) {
            runner.start(sheet.current.key, remember.checked);
        }
    }

    function showChosen() {
        list.currentIndex = Math.max(0, Rows.find(sheet.devices.devices, "key", sheet.devices.chosenKey));
    }

    width: Math.min(Theme.deviceSheetWidth, parent.width - Theme.space32)
    height: Math.min(Theme.deviceSheetLimit, around + listed, parent.height - Theme.space32)
    visible: devices.isAsking
    closePolicy: T.Popup.NoAutoClose
    onAboutToShow: {
        remember.checked = true;
        sheet.showChosen();
    }
    onTappedBeside: sheet.devices.endAsking()
    onOpened: search.forceActiveFocus(Qt.PopupFocusReason)

    DeviceRun {
        id: runner

        model: sheet.model
    }

    ProjectDetail {
        id: project

        model: sheet.model
        projectID: sheet.devices.projectID
    }

    contentItem: FocusScope {
        property bool toldModal: sheet.modal

        Accessible.role: Accessible.Dialog
        Accessible.name: title.text
        // What has the focus takes it first, where it is a button.
        Keys.onReturnPressed: sheet.go()
        Keys.onEnterPressed: sheet.go()

        Shortcut {
            sequences: [StandardKey.Cancel]
            enabled: sheet.listens
            onActivated: sheet.devices.endAsking()
        }

        // Not while the list is being laid out, which the new height would begin anew.
        Binding {
            target: sheet
            property: "listed"
            value: Math.max(Theme.emptyListHeight, list.contentHeight)
            when: search.text.length === 0
            delayed: true
            restoreMode: Binding.RestoreNone
        }

        // What is listed later must not take the choice away from what was chosen before.
        Connections {
            target: sheet.devices

            function onLoadingChanged() {
                if (!sheet.devices.isLoading) {
                    sheet.showChosen();
                }
            }
        }

        Tile {
            id: tile

            x: Theme.space20
            y: Theme.space20 + Theme.space2
            size: Theme.space40
            tileIndex: project.tileIndex
            tileLetter: project.tileLetter
        }

        Label {
            id: title

            anchors.left: tile.right
            anchors.leftMargin: Theme.space12
            anchors.right: refresh.left
            y: tile.y - Theme.space2
            role: Theme.SheetTitle
            text: qsTr("Run %1").arg(project.name)
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        Label {
            anchors.left: title.left
            anchors.top: title.bottom
            color: Theme.text2
            text: qsTr("Choose a device")
        }

        IconButton {
            id: refresh

            anchors.right: parent.right
            anchors.rightMargin: Theme.space20
            anchors.verticalCenter: title.verticalCenter
            anchors.verticalCenterOffset: Theme.space2
            enabled: !sheet.devices.isLoading
            glyph: "refresh-cw"
            text: qsTr("Look for devices")
            onClicked: sheet.devices.refresh()

            contentItem: Item {
                Icon {
                    anchors.fill: parent
                    visible: !sheet.devices.isLoading
                    name: "refresh-cw"
                    color: Theme.text3
                }

                Spinner {
                    anchors.centerIn: parent
                    visible: sheet.devices.isLoading
                    size: Theme.icon
                }
            }
        }

        Field {
            id: search

            anchors.top: tile.bottom
            anchors.topMargin: Theme.space16
            x: Theme.space20
            width: parent.width - 2 * x
            focus: true
            glyph: "search"
            placeholderText: qsTr("Find a device")
            text: sheet.devices.searchText
            onTextEdited: {
                sheet.devices.searchText = text;
                list.currentIndex = 0;
            }
            Keys.onDownPressed: list.incrementCurrentIndex()
            Keys.onUpPressed: list.decrementCurrentIndex()
        }

        ListView {
            id: list

            anchors.top: search.bottom
            anchors.topMargin: Theme.space8
            anchors.bottom: hints.top
            width: parent.width
            bottomMargin: Theme.space12
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            highlightMoveDuration: 0
            activeFocusOnTab: true
            model: sheet.devices.devices
            section.property: "section"
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Devices")

            section.delegate: Label {
                required property string section

                width: ListView.view.width
                height: Theme.space32
                leftPadding: Theme.space20
                topPadding: Theme.space12
                role: Theme.SmallStrong
                color: Theme.text2
                text: section
            }

            delegate: DeviceItem {
                x: Theme.space10
                width: ListView.view.width - 2 * x
                isCurrent: ListView.isCurrentItem
                onClicked: list.currentIndex = index
                onDoubleClicked: sheet.go()
            }

            T.ScrollBar.vertical: ScrollBar {}
        }

        Label {
            anchors.centerIn: list
            visible: list.count === 0
            color: Theme.text2
            text: sheet.devices.isLoading ? qsTr("Looking for devices…") : search.text.length > 0 ? qsTr("No device is called that") : qsTr("No device was found")
        }

        Column {
            id: hints

            anchors.bottom: foot.top
            x: Theme.space20
            width: parent.width - 2 * x
            bottomPadding: sheet.devices.hints.length > 0 ? Theme.space12 : 0
            spacing: Theme.space4

            Repeater {
                model: sheet.devices.hints

                Label {
                    required property string modelData

                    width: hints.width
                    role: Theme.Small
                    color: Theme.text3
                    wrapMode: Text.Wrap
                    elide: Text.ElideNone
                    text: modelData
                }
            }
        }

        Item {
            id: foot

            anchors.bottom: parent.bottom
            width: parent.width
            height: Theme.sheetFoot

            Rectangle {
                width: parent.width
                height: Theme.hairline
                color: Theme.border
            }

            CheckBox {
                id: remember

                x: Theme.space24
                anchors.verticalCenter: parent.verticalCenter
                checked: true
                wordsRole: Theme.Small
                wordsColor: Theme.text2
                text: qsTr("Remember")
            }

            Row {
                anchors.right: parent.right
                anchors.rightMargin: Theme.space24
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space8

                Button {
                    text: qsTr("Cancel")
                    onClicked: sheet.devices.endAsking()
                }

                Button {
                    width: Math.min(implicitWidth, sheet.width / 2)
                    primary: true
                    enabled: sheet.current !== null
                    glyph: "own-play-fill"
                    glyphSize: Theme.iconSmall
                    text: sheet.current !== null ? qsTr("Run on %1").arg(sheet.current.title) : qsTr("Run")
                    onClicked: sheet.go()
                }
            }
        }
    }
}
