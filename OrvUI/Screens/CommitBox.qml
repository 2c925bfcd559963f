import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The message of the next commit, who makes it, and the button that does.
PanelFill {
    id: box

    required property GitModel git
    readonly property CommitForm form: git.commitForm
    readonly property bool named: git.identityName.length > 0
    signal identityAsked

    function start() {
        summary.forceActiveFocus(Qt.ShortcutFocusReason);
    }

    implicitHeight: column.height
    color: Theme.sunken
    leftCorner: true

    Connections {
        target: box.form

        function onSummaryNeeded() {
            summary.missing = true;
            box.start();
        }

        function onIdentityNeeded() {
            box.identityAsked();
        }
    }

    Rectangle {
        width: parent.width
        height: Theme.hairline
        color: Theme.border
    }

    Column {
        id: column

        x: Theme.space12
        width: parent.width - 2 * x
        topPadding: Theme.space12
        bottomPadding: Theme.space12
        spacing: Theme.space8

        Field {
            id: summary

            objectName: "summary"

            // It was asked for, and is empty.
            property bool missing: false

            width: parent.width
            rightPadding: Theme.space40
            wrong: missing && text.trim().length === 0
            placeholderText: wrong ? qsTr("Enter a commit summary first.") : qsTr("Summary")
            text: box.form.summary
            onTextEdited: {
                missing = false;
                box.form.summary = text;
            }
            onAccepted: description.forceActiveFocus(Qt.TabFocusReason)
            Keys.onShortcutOverride: event => event.accepted = (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) && (event.modifiers & Qt.ControlModifier) !== 0
            Keys.onPressed: event => {
                if ((event.key === Qt.Key_Return || event.key === Qt.Key_Enter) && (event.modifiers & Qt.ControlModifier)) {
                    event.accepted = true;
                    box.form.submit();
                }
            }

            Figures {
                anchors.right: parent.right
                anchors.rightMargin: Theme.space8
                anchors.verticalCenter: parent.verticalCenter
                visible: summary.length > 0
                role: Theme.CaptionPlain
                // Longer ones are cut in most places where they are shown.
                color: summary.length > 72 ? Theme.warning : Theme.text3
                text: summary.length
            }
        }

        TextBox {
            id: description

            width: parent.width
            placeholderText: qsTr("Description")
            text: box.form.description
            onTextEdited: box.form.description = text
            onSubmitted: box.form.submit()
        }

        Item {
            width: parent.width
            height: Theme.controlRegular

            T.AbstractButton {
                id: identity

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, tools.x - Theme.space8)
                implicitWidth: Theme.swatchSize + Theme.space6 + person.implicitWidth + Theme.space4
                implicitHeight: Theme.controlMini
                focusPolicy: Qt.StrongFocus
                hoverEnabled: true
                Accessible.role: Accessible.Button
                Accessible.name: box.named ? qsTr("Commits as %1").arg(box.git.identityName) : qsTr("Tell git who you are")
                Keys.onReturnPressed: identity.clicked()
                onClicked: box.identityAsked()

                background: Item {
                    FocusRing {
                        control: identity
                        shapeRadius: Theme.radiusKey
                    }
                }

                contentItem: Item {
                    Rectangle {
                        id: avatar

                        anchors.verticalCenter: parent.verticalCenter
                        width: Theme.iconLarge
                        height: width
                        radius: width / 2
                        color: box.named ? Theme.accent : Theme.control

                        Label {
                            anchors.centerIn: parent
                            visible: box.named
                            role: Theme.TileLetter
                            color: Theme.onAccent
                            text: box.git.identityName.slice(0, 1).toUpperCase()
                        }

                        Icon {
                            anchors.centerIn: parent
                            visible: !box.named
                            name: "circle-user"
                            size: Theme.iconMini
                            color: Theme.text3
                        }
                    }

                    Label {
                        id: person

                        anchors.left: avatar.right
                        anchors.leftMargin: Theme.space6
                        anchors.right: parent.right
                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.Small
                        color: identity.hovered ? Theme.text : box.named ? Theme.text3 : Theme.warning
                        text: box.named ? box.git.identityName : qsTr("Who are you?")
                    }
                }

                Tip {
                    text: box.named ? box.git.identityName + " <" + box.git.identityEmail + ">" : qsTr("Tell git who you are")
                }
            }

            Row {
                id: tools

                anchors.right: parent.right
                spacing: Theme.space4

                IconButton {
                    edge: Theme.controlRegular
                    visible: box.form.canAmend
                    checkable: true
                    checked: box.form.amending
                    glyph: "square-pen"
                    tint: box.form.amending ? Theme.accentText : hovered ? Theme.text : Theme.text3
                    text: qsTr("Change the last commit instead")
                    onClicked: {
                        checked = Qt.binding(() => box.form.amending);
                        box.form.amending = !box.form.amending;
                    }
                }

                Button {
                    primary: true
                    enabled: box.form.ready
                    text: box.form.actionText
                    onClicked: box.form.submit()

                    Tip {
                        text: qsTr("Commit")
                        shortcut: Keymap.text("commit")
                    }
                }
            }
        }
    }
}
