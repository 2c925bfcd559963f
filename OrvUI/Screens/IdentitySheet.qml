import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Asks for the name and e-mail that commits carry, everywhere or in one repository.
Sheet {
    id: sheet

    required property GitModel git
    readonly property string repositoryName: git.repository.slice(git.repository.lastIndexOf("/") + 1)
    readonly property var known: git.identities
    property bool everywhere: true
    // The fields show what is set until somebody types.
    property bool edited: false
    readonly property bool ready: nameField.text.trim().length > 0 && mailField.text.trim().length > 0 && !git.isBusy
    readonly property bool mailDoubtful: mailField.text.trim().length > 0 && !sheet.git.isLikelyEmail(mailField.text)
    // Somebody has typed to the end, or wanted to save. Whoever means it saves once more.
    property bool doubtTold: false
    signal left(bool saved)

    function fill() {
        if (!sheet.edited) {
            nameField.text = (sheet.everywhere ? known.globalName : known.ownName) || git.identityName;
            mailField.text = (sheet.everywhere ? known.globalEmail : known.ownEmail) || git.identityEmail;
        }
    }

    function save() {
        if (sheet.ready && sheet.mailDoubtful && !sheet.doubtTold) {
            sheet.doubtTold = true;
        } else if (sheet.ready) {
            sheet.git.setIdentity(nameField.text, mailField.text, sheet.everywhere);
        } else if (!sheet.git.isBusy) {
            (nameField.text.trim().length > 0 ? mailField : nameField).forceActiveFocus(Qt.TabFocusReason);
        }
    }

    function leave() {
        sheet.close();
        sheet.left(false);
    }

    width: Math.min(Theme.identitySheetWidth, parent.width - Theme.space32)
    closePolicy: T.Popup.NoAutoClose
    onKnownChanged: fill()
    onEverywhereChanged: fill()
    onAboutToShow: {
        edited = false;
        doubtTold = false;
        git.clearError();
        git.readIdentities();
        everywhere = !(known.ownName?.length > 0);
        fill();
    }
    onTappedBeside: sheet.leave()
    onOpened: (nameField.text.length > 0 && mailField.text.length === 0 ? mailField : nameField).forceActiveFocus(Qt.PopupFocusReason)

    Connections {
        target: sheet.git
        enabled: sheet.listens

        function onSucceeded(action) {
            if (action === "identity") {
                sheet.close();
                sheet.left(true);
            }
        }
    }

    contentItem: FocusScope {
        property bool toldModal: sheet.modal

        implicitHeight: column.implicitHeight
        Accessible.role: Accessible.Dialog
        Accessible.name: title.text
        // What has the focus takes it first, where it is a button.
        Keys.onReturnPressed: sheet.save()
        Keys.onEnterPressed: sheet.save()

        Shortcut {
            sequences: [StandardKey.Cancel]
            enabled: sheet.listens
            onActivated: sheet.leave()
        }

        Column {
            id: column

            width: parent.width

            Item {
                width: parent.width
                height: Theme.alertIcon

                Label {
                    id: title

                    x: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter
                    role: Theme.SheetTitle
                    text: qsTr("Tell git who you are")
                }

                IconButton {
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space16
                    anchors.verticalCenter: parent.verticalCenter
                    glyph: "x"
                    text: qsTr("Close")
                    onClicked: sheet.leave()
                }
            }

            Column {
                x: Theme.space24
                width: parent.width - 2 * x
                spacing: Theme.space16
                bottomPadding: Theme.space20

                Label {
                    topPadding: -Theme.space12
                    color: Theme.text2
                    text: qsTr("Your commits carry this name and e-mail.")
                }

                FormField {
                    width: parent.width
                    label: qsTr("Name")

                    Field {
                        id: nameField

                        width: parent.width
                        placeholderText: qsTr("Your name")
                        onTextEdited: sheet.edited = true
                    }
                }

                FormField {
                    width: parent.width
                    label: qsTr("E-mail")
                    error: sheet.git.error
                    caution: sheet.mailDoubtful && sheet.doubtTold ? qsTr("This is no e-mail address: it has no @ between two parts. Save once more to use it all the same.") : ""

                    Field {
                        id: mailField

                        width: parent.width
                        placeholderText: "you@example.com"
                        onTextEdited: {
                            sheet.edited = true;
                            sheet.doubtTold = false;
                        }
                    }
                }

                FormField {
                    width: parent.width
                    visible: sheet.repositoryName.length > 0
                    label: qsTr("Use for")

                    Segmented {
                        width: parent.width
                        stretched: true
                        name: qsTr("Use for")
                        currentIndex: sheet.everywhere ? 0 : 1
                        choices: [
                            {
                                "text": qsTr("All repositories")
                            },
                            {
                                "text": qsTr("Only %1").arg(sheet.repositoryName)
                            }
                        ]
                        onChosen: index => sheet.everywhere = index === 0
                    }
                }
            }

            Rectangle {
                width: parent.width
                height: Theme.hairline
                color: Theme.border
            }

            Item {
                width: parent.width
                height: Theme.sheetFoot

                Row {
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space8

                    Button {
                        text: qsTr("Cancel")
                        onClicked: sheet.leave()
                    }

                    Button {
                        primary: true
                        enabled: sheet.ready
                        text: qsTr("Save")
                        onClicked: sheet.save()
                    }
                }
            }
        }
    }
}
