import OrvLauncher.Screens
import QtQuick

// One setting: what it is, what it means, and at the right what changes it.
FocusScope {
    id: row

    property string title
    property string text
    property bool code: false
    property int rowHeight: Theme.settingRowHeight
    // Whether there is such a setting here.
    property bool offered: true
    readonly property SettingGroup group: (parent?.parent?.parent as SettingGroup) ?? null
    // The row above has the hairline between them.
    readonly property bool isFirst: y < 1
    default property alias controls: controls.data

    width: parent.width
    visible: offered && (group === null || group.finds(row.title + "\n" + row.text))
    implicitHeight: Math.max(row.rowHeight, words.implicitHeight + Theme.space20)

    Rectangle {
        visible: !row.isFirst
        width: parent.width
        height: Theme.hairline
        color: Theme.border
    }

    SettingHit {
        name: row.title
    }

    Column {
        id: words

        x: Theme.space16
        width: parent.width - 2 * Theme.space16 - (controls.width > 0 ? controls.width + Theme.space16 : 0)
        anchors.verticalCenter: parent.verticalCenter

        Label {
            id: title

            width: parent.width
            role: row.code ? Theme.Mono : Theme.BodyStrong
            color: row.enabled ? Theme.text : Theme.disabled
            elide: row.code ? Text.ElideMiddle : Text.ElideRight
            text: row.title

            Tip {
                text: title.truncated ? row.title : ""
            }
        }

        Label {
            width: parent.width
            visible: text.length > 0
            role: Theme.Small
            color: row.enabled ? Theme.text3 : Theme.disabled
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            text: row.text
        }
    }

    Row {
        id: controls

        anchors.right: parent.right
        anchors.rightMargin: Theme.space16
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space12
    }
}
