import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Whatever can be done, found by a few letters. The focus stays in the field; the keys move through the results.
T.Popup {
    id: popup

    required property PaletteModel commands

    // Enter shows something, instead of doing it.
    readonly property bool opens: (list.currentItem as PaletteItem)?.hint.length > 0

    function move(by) {
        list.currentIndex = Math.max(0, Math.min(list.count - 1, list.currentIndex + by));
    }

    function toTop() {
        list.currentIndex = 0;
        list.positionViewAtBeginning();
    }

    parent: T.Overlay.overlay
    x: Math.round((parent.width - width) / 2)
    y: Math.min(Theme.paletteTop, Math.max(Theme.space16, parent.height - height - Theme.space16))
    width: Math.min(Theme.paletteWidth, parent.width - Theme.space32)
    height: Math.min(Theme.paletteField + Theme.paletteListHeight + Theme.space40, parent.height - Theme.space32)
    visible: commands.isOpen
    modal: true
    dim: true
    focus: true
    closePolicy: T.Popup.NoAutoClose
    onAboutToShow: {
        field.text = "";
        popup.toTop();
    }
    onOpened: field.forceActiveFocus(Qt.PopupFocusReason)

    T.Overlay.modal: Rectangle {
        color: Theme.scrim
    }

    // It comes at once: what is typed behind its key must not be lost.
    background: Rectangle {
        radius: Theme.radiusSheet
        color: Theme.raised
        border.width: Theme.hairline
        border.color: Theme.border

        Shadow {
            anchors.fill: parent
            z: -1
            level: 4
            radius: parent.radius
        }

        BesideTap {
            popup: popup
            onTapped: popup.commands.close()
        }
    }

    contentItem: FocusScope {
        property bool toldModal: popup.modal

        focus: true
        Accessible.role: Accessible.Dialog
        Accessible.name: qsTr("Command palette")

        Connections {
            target: popup.commands

            function onQueryChanged() {
                field.text = popup.commands.query;
                popup.toTop();
            }

            function onScopeChanged() {
                popup.toTop();
            }
        }

        Icon {
            id: glass

            x: Theme.space20
            y: Math.round((Theme.paletteField - height) / 2)
            name: "search"
            size: Theme.iconLarge
            color: Theme.text2
        }

        Pill {
            id: scope

            anchors.left: glass.right
            anchors.leftMargin: visible ? Theme.space12 : 0
            anchors.verticalCenter: glass.verticalCenter
            visible: text.length > 0
            width: visible ? implicitWidth : 0
            text: popup.commands.scopeName
            tint: Theme.accentText
            fill: Theme.selection
        }

        T.TextField {
            id: field

            anchors.left: scope.right
            anchors.leftMargin: Theme.space12
            anchors.right: esc.left
            anchors.rightMargin: Theme.space12
            height: Theme.paletteField
            focus: true
            verticalAlignment: TextInput.AlignVCenter
            font: Theme.font(Theme.Lead)
            color: Theme.text
            selectionColor: Theme.textSelection
            selectedTextColor: Theme.text
            Accessible.role: Accessible.EditableText
            Accessible.name: qsTr("Search projects, actions and pages")
            onTextEdited: popup.commands.query = text
            onAccepted: popup.commands.activate(list.currentIndex)
            Keys.onUpPressed: popup.move(-1)
            Keys.onDownPressed: popup.move(1)
            Keys.onTabPressed: popup.commands.narrow(list.currentIndex)
            Keys.onBacktabPressed: popup.commands.widen()
            Keys.onEscapePressed: {
                if (!popup.commands.widen()) {
                    popup.commands.close();
                }
            }
            Keys.onPressed: event => {
                if (event.key === Qt.Key_PageDown || event.key === Qt.Key_PageUp) {
                    popup.move(event.key === Qt.Key_PageDown ? 8 : -8);
                    event.accepted = true;
                } else if (event.key === Qt.Key_Backspace && field.text.length === 0) {
                    event.accepted = popup.commands.widen();
                } else if (event.modifiers & Qt.ControlModifier && (event.key === Qt.Key_Return || event.key === Qt.Key_Enter)) {
                    popup.commands.runOrStop(list.currentIndex);
                    event.accepted = true;
                } else if (event.modifiers & Qt.ControlModifier && event.key === Qt.Key_K) {
                    popup.commands.close();
                    event.accepted = true;
                }
            }

            cursorDelegate: Rectangle {
                width: Theme.focusWidth
                color: Theme.accent
                visible: field.cursorVisible
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                visible: field.text.length === 0 && field.preeditText.length === 0
                role: Theme.Lead
                color: Theme.text3
                text: popup.commands.scopeName.length > 0 ? qsTr("What to do with it") : qsTr("Search projects, actions and pages")
            }
        }

        KeyHint {
            id: esc

            anchors.right: parent.right
            anchors.rightMargin: Theme.space20
            anchors.verticalCenter: glass.verticalCenter
            text: qsTr("esc")
        }

        Rectangle {
            y: Theme.paletteField
            width: parent.width
            height: Theme.hairline
            color: Theme.border
        }

        ListView {
            id: list

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.topMargin: Theme.paletteField + Theme.hairline
            anchors.bottom: foot.top
            topMargin: Theme.space4
            bottomMargin: Theme.space8
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            highlightMoveDuration: 0
            keyNavigationEnabled: false
            reuseItems: true
            // None beside what is seen: each letter would change those too.
            cacheBuffer: 0
            model: popup.commands.results
            section.property: "group"
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Results")

            section.delegate: Label {
                required property string section

                width: ListView.view.width
                height: Theme.space32
                leftPadding: Theme.space16 + Theme.space2
                topPadding: Theme.space12
                role: Theme.SmallStrong
                color: Theme.text2
                text: section
                Accessible.role: Accessible.Heading
                Accessible.name: section
            }

            delegate: PaletteItem {
                x: Theme.space8
                width: ListView.view.width - 2 * x
                isCurrent: ListView.isCurrentItem
                onClicked: popup.commands.activate(index)
            }

            T.ScrollBar.vertical: ScrollBar {}
        }

        Label {
            anchors.centerIn: list
            visible: list.count === 0
            color: Theme.text2
            text: qsTr("Nothing is called “%1”").arg(popup.commands.query)
        }

        Item {
            id: foot

            anchors.bottom: parent.bottom
            width: parent.width
            height: Theme.space40

            Rectangle {
                width: parent.width
                height: Theme.hairline
                color: Theme.border
            }

            Row {
                anchors.verticalCenter: parent.verticalCenter
                x: Theme.space20
                spacing: Theme.space16

                Repeater {
                    model: [[["↑", "↓"], qsTr("choose")], [["↩"], popup.opens ? qsTr("open") : qsTr("do it")], [[Keymap.text("run")], qsTr("run or stop")], [["⇥"], qsTr("more actions")]]

                    Row {
                        id: hint

                        required property var modelData

                        spacing: Theme.space6

                        Repeater {
                            model: hint.modelData[0]

                            KeyHint {
                                required property string modelData

                                text: modelData
                            }
                        }

                        Label {
                            anchors.verticalCenter: parent.verticalCenter
                            role: Theme.Small
                            color: Theme.text2
                            text: hint.modelData[1]
                        }
                    }
                }
            }

            Figures {
                anchors.right: parent.right
                anchors.rightMargin: Theme.space20
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.Small
                color: Theme.text2
                text: popup.commands.resultCount === 1 ? qsTr("1 result") : qsTr("%1 results").arg(popup.commands.resultCount)
            }
        }
    }
}
