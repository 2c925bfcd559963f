import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A row of tabs over a hairline; the arrows move the choice.
T.Control {
    id: tabs

    property int toldRole: Accessible.PageTabList
    // One record each: text, count (nothing: no bubble), note (in a word, why it has a sign; nothing: it has none).
    required property var choices
    property int currentIndex: 0
    property string name
    property int inset: Theme.pagePadding
    signal chosen(int index)

    implicitHeight: Theme.tabHeight
    implicitWidth: row.implicitWidth
    focusPolicy: Qt.StrongFocus
    Accessible.role: toldRole
    Accessible.name: name
    Keys.onLeftPressed: tabs.chosen(Math.max(0, currentIndex - 1))
    Keys.onRightPressed: tabs.chosen(Math.min(choices.length - 1, currentIndex + 1))

    background: Item {
        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: Theme.hairline
            color: Theme.border
        }
    }

    contentItem: Item {
        Row {
            id: row

            x: tabs.inset
            height: parent.height
            spacing: Theme.space24

            Repeater {
                model: tabs.choices

                T.AbstractButton {
                    id: tab

                    property int toldRole: Accessible.PageTab
                    required property var modelData
                    required property int index
                    readonly property bool isCurrent: index === tabs.currentIndex
                    readonly property string countText: modelData.count > 0 ? modelData.count > 99 ? "99+" : String(modelData.count) : ""

                    height: row.height
                    implicitWidth: content.implicitWidth
                    focusPolicy: Qt.NoFocus
                    hoverEnabled: true
                    Accessible.role: toldRole
                    Accessible.name: modelData.text
                    Accessible.description: modelData.note ?? ""
                    Accessible.selected: isCurrent
                    onClicked: tabs.chosen(index)

                    background: Item {
                        Rectangle {
                            anchors.bottom: parent.bottom
                            width: parent.width
                            height: Theme.focusWidth
                            radius: height / 2
                            visible: tab.isCurrent
                            color: Theme.accent
                        }

                        FocusRing {
                            control: tabs
                            visible: tab.isCurrent && tabs.activeFocus && InputMode.keyboard
                            shapeRadius: Theme.radiusKey
                            anchors.topMargin: Theme.space6
                            anchors.bottomMargin: Theme.space6
                        }
                    }

                    contentItem: Item {
                        implicitWidth: content.implicitWidth

                        Row {
                            id: content

                            anchors.verticalCenter: parent.verticalCenter
                            spacing: Theme.space6

                            Label {
                                anchors.verticalCenter: parent.verticalCenter
                                role: Theme.BodyStrong
                                color: tab.isCurrent || tab.hovered ? Theme.text : Theme.text2
                                text: tab.modelData.text
                            }

                            Rectangle {
                                anchors.verticalCenter: parent.verticalCenter
                                visible: tab.countText.length > 0
                                implicitHeight: Theme.space16
                                implicitWidth: Math.max(implicitHeight, bubble.implicitWidth + Theme.space12)
                                radius: height / 2
                                color: Theme.control

                                Rectangle {
                                    anchors.right: parent.right
                                    visible: tab.Accessible.description.length > 0
                                    width: Theme.space6
                                    height: width
                                    radius: width / 2
                                    color: Theme.accent
                                }

                                Figures {
                                    id: bubble

                                    anchors.centerIn: parent
                                    role: Theme.Caption
                                    color: Theme.text2
                                    text: tab.countText
                                }
                            }
                        }
                    }
                }
            }
        }
    }
}
