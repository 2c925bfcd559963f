import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// What a run of an agent has changed, file by file; of one with a work tree of its own, what becomes of that.
Sheet {
    id: sheet

    required property AppModel model
    required property AgentModels agents

    function merge() {
        if (sheet.agents.reviewBranch.length > 0) {
            sheet.agents.mergeBack(sheet.agents.reviewKey);
            sheet.close();
        }
    }

    width: Math.min(Theme.settingsWidth, parent.width - Theme.space32)
    onAboutToShow: {
        review.runKey = agents.reviewKey;
        list.currentIndex = 0;
    }
    onOpened: list.forceActiveFocus(Qt.PopupFocusReason)

    RunReview {
        id: review

        model: sheet.model
        path: (list.currentItem as ReviewFile)?.key ?? ""
    }

    contentItem: FocusScope {
        property bool toldModal: sheet.modal

        implicitHeight: column.height + foot.height
        Accessible.role: Accessible.Dialog
        Accessible.name: title.text
        // What has the focus takes it first, where it is a button.
        Keys.onReturnPressed: sheet.merge()
        Keys.onEnterPressed: sheet.merge()

        // In a low window it scrolls; what is to be decided stays in sight.
        Flickable {
            id: view

            function reveal(item) {
                const top = item.mapToItem(column, 0, 0).y;
                const wanted = Math.max(Math.min(contentY, top - Theme.space24), top + item.height + Theme.space24 - height);
                contentY = Math.max(0, Math.min(wanted, contentHeight - height));
            }

            width: parent.width
            height: parent.height - foot.height
            contentHeight: column.height
            boundsBehavior: Flickable.StopAtBounds
            interactive: contentHeight > height
            clip: true

            Column {
                id: column

                width: parent.width
                padding: Theme.space24
                bottomPadding: foot.visible ? 0 : padding
                spacing: Theme.space16

                Item {
                    width: parent.width - 2 * parent.padding
                    height: Theme.controlRegular

                    Label {
                        id: title

                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.SheetTitle
                        text: qsTr("Changes")
                        Accessible.role: Accessible.Heading
                        Accessible.name: text
                    }

                    IconButton {
                        anchors.right: parent.right
                        anchors.verticalCenter: parent.verticalCenter
                        glyph: "x"
                        text: qsTr("Close")
                        onClicked: sheet.close()
                    }
                }

                Label {
                    width: parent.width - 2 * parent.padding
                    color: Theme.text2
                    wrapMode: Text.Wrap
                    maximumLineCount: 8
                    text: sheet.agents.reviewText
                }

                CardFace {
                    width: parent.width - 2 * parent.padding
                    height: list.height + 2 * Theme.space4
                    visible: list.count > 0

                    ListView {
                        id: list

                        y: Theme.space4
                        width: parent.width
                        height: Math.min(contentHeight, 5 * Theme.controlRegular)
                        focus: true
                        highlightMoveDuration: 0
                        boundsBehavior: Flickable.StopAtBounds
                        clip: true
                        activeFocusOnTab: true
                        onActiveFocusChanged: if (activeFocus) view.reveal(list)
                        Accessible.role: Accessible.List
                        Accessible.name: qsTr("Changed files")
                        model: sheet.agents.reviewFiles

                        delegate: ReviewFile {
                            width: ListView.view.width
                            current: ListView.isCurrentItem
                            focused: ListView.isCurrentItem && list.activeFocus
                            onChosen: {
                                list.currentIndex = index;
                                list.forceActiveFocus(Qt.MouseFocusReason);
                            }
                        }

                        T.ScrollBar.vertical: ScrollBar {}
                    }
                }

                Rectangle {
                    width: parent.width - 2 * parent.padding
                    height: lines.height + 2 * Theme.space6
                    visible: lines.count > 0
                    radius: Theme.radiusCard
                    color: Theme.terminalBackground
                    border.width: Theme.hairline
                    border.color: Theme.border

                    ListView {
                        id: lines

                        property int offset: 0

                        x: Theme.hairline
                        y: Theme.space6
                        width: parent.width - 2 * x
                        height: Math.min(contentHeight, Math.max(6, Math.floor((sheet.parent?.height ?? 0) * 0.4 / Theme.space20)) * Theme.space20)
                        boundsBehavior: Flickable.StopAtBounds
                        clip: true
                        activeFocusOnTab: true
                        onActiveFocusChanged: if (activeFocus) view.reveal(lines)
                        keyNavigationEnabled: true
                        highlightMoveDuration: 0
                        reuseItems: true
                        cacheBuffer: 0
                        model: review.lines
                        Accessible.role: Accessible.List
                        Accessible.name: qsTr("Changes of %1").arg(review.path)
                        Keys.onLeftPressed: offset = Math.max(0, offset - Theme.space40)
                        Keys.onRightPressed: offset += Theme.space40

                        delegate: DiffLine {
                            width: lines.width
                            offset: lines.offset
                            focused: lines.activeFocus && InputMode.keyboard && ListView.isCurrentItem
                        }

                        T.ScrollBar.vertical: ScrollBar {}
                    }

                    Connections {
                        target: review

                        function onChanged() {
                            lines.offset = 0;
                            lines.currentIndex = 0;
                            lines.positionViewAtBeginning();
                        }
                    }
                }

                Label {
                    visible: list.count > 0 && text.length > 0
                    width: parent.width - 2 * parent.padding
                    color: Theme.text3
                    wrapMode: Text.Wrap
                    elide: Text.ElideNone
                    text: review.note
                }
            }

            T.ScrollBar.vertical: ScrollBar {}
        }

        Item {
            id: foot

            anchors.bottom: parent.bottom
            width: parent.width
            height: sheet.agents.reviewBranch.length > 0 ? Theme.space16 + decision.height + Theme.space24 : 0
            visible: height > 0

            Row {
                id: decision

                y: Theme.space16
                anchors.right: parent.right
                anchors.rightMargin: Theme.space24
                spacing: Theme.space8

                Button {
                    danger: true
                    text: qsTr("Throw away")
                    Accessible.name: qsTr("Throw %1 away").arg(sheet.agents.reviewBranch)
                    onClicked: {
                        sheet.agents.discardWorktree(sheet.agents.reviewKey, false);
                        sheet.close();
                    }
                }

                Button {
                    primary: true
                    text: qsTr("Merge %1").arg(sheet.agents.reviewBranch)
                    onClicked: sheet.merge()
                }
            }
        }
    }
}
