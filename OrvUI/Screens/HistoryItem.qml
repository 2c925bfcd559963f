import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A commit in the history, on its line.
T.AbstractButton {
    id: item

    property int toldRole: Accessible.ListItem
    required property int index
    required property string commit
    required property string shortID
    required property string subject
    required property string author
    required property string email
    required property date date
    required property string when
    required property var refs
    property bool selected: false
    property bool focused: false
    property bool narrow: false

    implicitHeight: Theme.gitRowHeight
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: subject
    Accessible.description: qsTr("%1, %2, %3").arg(author).arg(when).arg(shortID)
    Accessible.selected: selected

    background: Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.space4
        anchors.rightMargin: Theme.space4
        radius: Theme.radiusControl
        color: item.selected ? Theme.selection : item.hovered ? Theme.hover : "transparent"

        FocusRing {
            control: item
            inside: true
            visible: item.focused && InputMode.keyboard
        }
    }

    contentItem: Item {
        Rectangle {
            x: dot.x + (dot.width - width) / 2
            width: Theme.hairline
            height: parent.height
            color: Theme.borderStrong
        }

        Rectangle {
            id: dot

            x: Theme.iconLarge
            anchors.verticalCenter: parent.verticalCenter
            width: Theme.dot
            height: width
            radius: width / 2
            color: item.refs.length > 0 ? Theme.accent : Theme.text3
            border.width: Theme.hairline
            border.color: Theme.window
        }

        Item {
            id: words

            clip: true

            anchors.left: parent.left
            anchors.leftMargin: Theme.space40 - Theme.space2
            anchors.right: facts.left
            anchors.rightMargin: Theme.space12
            height: parent.height

            Label {
                id: title

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, Math.max(words.width * 0.4, words.width - pills.width - Theme.space10))
                text: item.subject
            }

            Row {
                id: pills

                anchors.left: title.right
                anchors.leftMargin: Theme.space10
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space6

                Repeater {
                    model: item.refs.slice(0, item.narrow ? 1 : 2)

                    Pill {
                        required property string modelData

                        // A long name is cut, not the pill.
                        width: Math.min(implicitWidth, words.width * 0.6 / Math.min(2, item.refs.length) - Theme.space10)
                        text: modelData
                        tint: Theme.accentText
                        fill: Theme.selection
                    }
                }
            }
        }

        Row {
            id: facts

            anchors.right: parent.right
            anchors.rightMargin: Theme.space16 - Theme.hairline
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.space8

            Label {
                anchors.verticalCenter: parent.verticalCenter
                visible: !item.narrow
                width: Theme.historyAuthorWidth
                role: Theme.Small
                color: Theme.text2
                text: item.author
            }

            Figures {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.historyAuthorWidth
                role: Theme.Small
                color: Theme.text3
                text: item.when
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.historyHashWidth - Theme.space8
                horizontalAlignment: Text.AlignRight
                role: Theme.MonoPath
                color: Theme.text3
                text: item.shortID
            }
        }
    }

    Tip {
        text: title.truncated ? item.subject : qsTr("%1 <%2>, %3").arg(item.author).arg(item.email).arg(item.date.toLocaleString(Qt.locale(), Locale.ShortFormat))
    }
}
