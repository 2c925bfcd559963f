import OrvLauncher.Screens
import QtQuick

// A card beside the services: its heading, what stands at the heading's right, and its rows.
Item {
    id: card

    required property string heading
    property string note: ""
    property alias corner: corner.data
    default property alias rows: column.data

    implicitHeight: column.y + column.height + Theme.space16
    Accessible.role: Accessible.Grouping
    Accessible.name: heading

    CardFace {
        anchors.fill: parent
    }

    Row {
        x: Theme.space16
        y: Theme.space12
        height: Theme.space28
        spacing: Theme.space10

        Label {
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Section
            text: card.heading
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Small
            color: Theme.text3
            text: card.note
        }
    }

    Row {
        id: corner

        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        y: Theme.space12
        height: Theme.space28
    }

    Column {
        id: column

        x: Theme.space16
        y: Theme.space12 + Theme.space28 + Theme.space4
        width: parent.width - 2 * x
    }
}
