import OrvLauncher.Screens
import QtQuick

// A question that stands before everything else: icon, message, text, and the buttons in their order, one below the
// other. Escape is the last one.
Sheet {
    id: alert

    required property string message
    required property string text
    // One record each: text, and primary or danger where it is.
    required property var choices
    signal chosen(int index)

    function choose(index) {
        alert.close();
        alert.chosen(index);
    }

    width: Math.min(Theme.alertWidth, parent.width - Theme.space32)
    onOpened: {
        const first = alert.choices.findIndex(choice => choice.primary ?? false);
        buttons.itemAt(first < 0 ? buttons.count - 1 : first).forceActiveFocus(Qt.TabFocusReason);
    }

    contentItem: FocusScope {
        property bool toldModal: alert.modal

        implicitHeight: column.implicitHeight
        Accessible.role: Accessible.AlertMessage
        Accessible.name: alert.message

        Shortcut {
            sequences: [StandardKey.Cancel]
            enabled: alert.listens
            onActivated: alert.choose(alert.choices.length - 1)
        }

        Column {
            id: column

            x: Theme.space28
            width: parent.width - 2 * x
            topPadding: Theme.space28
            bottomPadding: Theme.space28

            Illustration {
                anchors.horizontalCenter: parent.horizontalCenter
                width: Theme.alertIcon
                height: width
                name: "app-icon"
            }

            Item {
                width: Theme.hairline
                height: Theme.space12
            }

            EvenLabel {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                role: Theme.Heading
                elide: Text.ElideNone
                heading: alert.message
            }

            Label {
                width: parent.width
                topPadding: Theme.space4
                horizontalAlignment: Text.AlignHCenter
                color: Theme.text2
                wrapMode: Text.Wrap
                elide: Text.ElideNone
                text: alert.text
            }

            Item {
                width: Theme.hairline
                height: Theme.space20
            }

            Column {
                width: parent.width
                spacing: Theme.space8

                Repeater {
                    id: buttons

                    model: alert.choices

                    Button {
                        required property var modelData
                        required property int index

                        width: parent.width
                        controlHeight: Theme.buttonDialog
                        primary: modelData.primary ?? false
                        ghost: index === alert.choices.length - 1
                        danger: modelData.danger ?? false
                        text: modelData.text
                        onClicked: alert.choose(index)
                    }
                }
            }
        }
    }
}
