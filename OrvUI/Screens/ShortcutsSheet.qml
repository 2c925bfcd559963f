import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// All shortcuts, with a search among them.
Sheet {
    id: sheet

    readonly property Shortcuts shortcuts: Shortcuts {}

    width: Math.min(Theme.paletteWidth, parent.width - Theme.space32)
    height: Math.min(Theme.paletteWidth, parent.height - Theme.space32)
    closePolicy: T.Popup.NoAutoClose
    onAboutToShow: {
        search.clear();
        sheet.shortcuts.searchText = "";
    }
    onTappedBeside: sheet.close()
    onOpened: search.forceActiveFocus(Qt.PopupFocusReason)

    contentItem: FocusScope {
        property bool toldModal: sheet.modal

        Accessible.role: Accessible.Dialog
        Accessible.name: title.text

        Shortcut {
            sequences: [StandardKey.Cancel]
            enabled: sheet.listens && !search.activeFocus
            onActivated: sheet.close()
        }

        Item {
            id: head

            width: parent.width
            height: Theme.alertIcon

            Label {
                id: title

                x: Theme.space24
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.SheetTitle
                text: qsTr("Keyboard shortcuts")
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }

            IconButton {
                anchors.right: parent.right
                anchors.rightMargin: Theme.space16
                anchors.verticalCenter: parent.verticalCenter
                glyph: "x"
                text: qsTr("Close")
                onClicked: sheet.close()
            }
        }

        Field {
            id: search

            anchors.top: head.bottom
            x: Theme.space24
            width: parent.width - 2 * x
            focus: true
            glyph: "search"
            clearable: true
            placeholderText: qsTr("Find a shortcut")
            onTextEdited: sheet.shortcuts.searchText = text
            onCleared: {
                search.clear();
                sheet.shortcuts.searchText = "";
            }
            onAbandoned: sheet.close()
            Keys.onPressed: event => list.scroll(event)
        }

        Label {
            id: note

            readonly property bool isNeeded: Qt.platform.os !== "osx"

            anchors.top: search.bottom
            anchors.topMargin: Theme.space12
            x: Theme.space24
            width: parent.width - 2 * x
            visible: isNeeded
            role: Theme.Small
            color: Theme.text3
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            text: qsTr("A terminal keeps every key for its program, but for those with Ctrl and Shift, Ctrl Tab and Shift F6. Ctrl Shift K reaches everything from there.")
        }

        ListView {
            id: list

            function scroll(event) {
                const steps = {
                    [Qt.Key_Down]: Theme.sidebarRowHeight,
                    [Qt.Key_Up]: -Theme.sidebarRowHeight,
                    [Qt.Key_PageDown]: height - Theme.sidebarRowHeight,
                    [Qt.Key_PageUp]: Theme.sidebarRowHeight - height
                };
                const step = steps[event.key] ?? 0;
                if (step !== 0) {
                    event.accepted = true;
                    contentY = Math.max(originY, Math.min(contentY + step, originY + contentHeight + bottomMargin - height));
                }
            }

            anchors.top: note.isNeeded ? note.bottom : search.bottom
            anchors.topMargin: Theme.space8
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.hairline
            width: parent.width
            bottomMargin: Theme.space16
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            activeFocusOnTab: true
            keyNavigationEnabled: false
            Keys.onPressed: event => list.scroll(event)
            model: sheet.shortcuts
            section.property: "group"
            Accessible.role: Accessible.List
            Accessible.name: title.text

            section.delegate: Label {
                required property string section

                width: ListView.view.width
                height: Theme.space40
                leftPadding: Theme.space24
                topPadding: Theme.space16
                role: Theme.Section
                text: section
                Accessible.role: Accessible.Heading
                Accessible.name: section
            }

            delegate: Item {
                id: row

                required property string action
                required property var keys
                required property var terminalKeys
                // An empty key stands for the word.
                readonly property var caps: terminalKeys.length > 0 ? keys.concat([""], terminalKeys) : keys

                function wordAt(index) {
                    return index === row.keys.length ? qsTr("in a terminal") : qsTr("or");
                }

                width: ListView.view.width
                height: Theme.sidebarRowHeight
                Accessible.role: Accessible.ListItem
                Accessible.name: action
                Accessible.description: caps.map((key, index) => key.length === 0 ? wordAt(index) : key).join(" ")

                Label {
                    x: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter
                    color: Theme.text2
                    text: row.action
                }

                Row {
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space4

                    Repeater {
                        model: row.caps

                        Item {
                            id: key

                            required property string modelData
                            required property int index

                            implicitWidth: cap.visible ? cap.implicitWidth : between.implicitWidth
                            implicitHeight: cap.implicitHeight

                            KeyHint {
                                id: cap

                                visible: key.modelData.length > 0
                                text: key.modelData
                            }

                            Label {
                                id: between

                                anchors.centerIn: parent
                                visible: !cap.visible
                                role: Theme.Small
                                color: Theme.text3
                                text: row.wordAt(key.index)
                            }
                        }
                    }
                }
            }

            T.ScrollBar.vertical: ScrollBar {}
        }

        Label {
            anchors.centerIn: list
            visible: list.count === 0
            color: Theme.text2
            text: qsTr("No shortcut is called that")
        }
    }
}
