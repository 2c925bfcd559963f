import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// What a run of an agent has changed, file by file; of one with a work tree of its own, what becomes of that.
Sheet {
    id: sheet

    required property AgentModels agents

    contentItem: Item {
        implicitHeight: column.height

        Column {
            id: column

            width: parent.width
            padding: Theme.space24
            spacing: Theme.space16

            Item {
                width: parent.width - 2 * parent.padding
                height: Theme.controlRegular

                Label {
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.Title
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
                    height: Math.min(contentHeight, 8 * Theme.taskRowHeight)
                    boundsBehavior: Flickable.StopAtBounds
                    clip: true
                    activeFocusOnTab: true
                    Accessible.role: Accessible.List
                    Accessible.name: qsTr("Changed files")
                    model: sheet.agents.reviewFiles

                    delegate: Item {
                        id: file

                        required property string key
                        required property string kind
                        required property int added
                        required property int removed
                        required property bool isBinary

                        width: ListView.view.width
                        height: Theme.controlRegular
                        Accessible.role: Accessible.ListItem
                        Accessible.name: qsTr("%1, %2, %3 added, %4 removed").arg(key).arg(kind).arg(added).arg(removed)

                        Icon {
                            id: sign

                            x: Theme.space12
                            anchors.verticalCenter: parent.verticalCenter
                            name: file.kind === "added" ? "file-plus-2" : file.kind === "deleted" ? "trash-2" : "file-pen-line"
                            color: Theme.text2
                        }

                        Label {
                            id: path

                            anchors.left: sign.right
                            anchors.leftMargin: Theme.space8
                            anchors.right: counts.left
                            anchors.rightMargin: Theme.space8
                            anchors.verticalCenter: parent.verticalCenter
                            role: Theme.MonoPath
                            elide: Text.ElideMiddle
                            text: file.key

                            Tip {
                                text: path.truncated ? path.text : ""
                            }
                        }

                        Row {
                            id: counts

                            anchors.right: parent.right
                            anchors.rightMargin: Theme.space12
                            anchors.verticalCenter: parent.verticalCenter
                            spacing: Theme.space8

                            Label {
                                visible: file.isBinary
                                role: Theme.Small
                                color: Theme.text3
                                text: qsTr("binary")
                            }

                            Label {
                                visible: !file.isBinary
                                role: Theme.MonoPath
                                color: Theme.success
                                text: qsTr("+%1").arg(file.added)
                            }

                            Label {
                                visible: !file.isBinary
                                role: Theme.MonoPath
                                color: Theme.danger
                                text: qsTr("−%1").arg(file.removed)
                            }
                        }
                    }

                    T.ScrollBar.vertical: ScrollBar {}
                }
            }

            Row {
                anchors.right: parent.right
                anchors.rightMargin: parent.padding
                visible: sheet.agents.reviewBranch.length > 0
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
                    onClicked: {
                        sheet.agents.mergeBack(sheet.agents.reviewKey);
                        sheet.close();
                    }
                }
            }
        }
    }
}
