import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// Makes a project: a new folder, or a clone of a repository with its progress.
Sheet {
    id: sheet

    required property AppModel model
    required property Navigator nav
    readonly property NewProject making: model.newProject
    readonly property bool cloning: nav.sheet === "clone"
    readonly property bool busy: making.isBusy
    readonly property string folder: place.folder
    // The name follows the address until somebody types one.
    property bool namedByHand: false
    readonly property string problem: nameField.text.length === 0 ? "" : making.nameProblem(nameField.text, folder)
    readonly property bool ready: !busy && nameField.text.trim().length > 0 && problem.length === 0 && (!cloning || address.text.trim().length > 0)

    function go() {
        if (!sheet.ready) {
            return;
        }
        if (sheet.cloning) {
            sheet.making.clone(address.text.trim(), nameField.text.trim(), sheet.folder);
        } else {
            sheet.making.createFolder(nameField.text.trim(), sheet.folder, repository.checked ? sheet.model.defaultBranch : "");
        }
    }

    function focusFirst() {
        (cloning ? address : nameField).forceActiveFocus(Qt.PopupFocusReason);
    }

    // A clone goes on without the sheet.
    function leave() {
        if (sheet.busy && !sheet.cloning) {
            return;
        }
        sheet.making.aside = sheet.busy;
        sheet.nav.closeSheet();
    }

    width: Math.min(Theme.addSheetWidth, parent.width - Theme.space32)
    visible: nav.sheet === "addProject" || nav.sheet === "clone"
    closePolicy: T.Popup.NoAutoClose
    onAboutToShow: {
        if (making.aside) {
            making.aside = false;
            return;
        }
        making.clearError();
        address.text = "";
        nameField.text = "";
        place.folder = model.scanRootFolder;
        namedByHand = false;
    }
    onTappedBeside: sheet.leave()
    onOpened: {
        if (busy) {
            hide.forceActiveFocus(Qt.PopupFocusReason);
        } else {
            focusFirst();
        }
    }

    contentItem: FocusScope {
        property bool toldModal: sheet.modal

        implicitHeight: column.implicitHeight
        Accessible.role: Accessible.Dialog
        Accessible.name: title.text
        // What has the focus takes it first, where it is a button.
        Keys.onReturnPressed: sheet.go()
        Keys.onEnterPressed: sheet.go()

        Shortcut {
            sequences: [StandardKey.Cancel]
            enabled: sheet.listens
            onActivated: sheet.leave()
        }

        Connections {
            target: sheet.making
            enabled: sheet.visible

            function onAdded() {
                sheet.nav.closeSheet();
            }
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
                    text: qsTr("Add project")
                }

                IconButton {
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space16
                    anchors.verticalCenter: parent.verticalCenter
                    visible: !sheet.busy
                    glyph: "x"
                    text: qsTr("Close")
                    onClicked: sheet.nav.closeSheet()
                }
            }

            Column {
                x: Theme.space24
                width: parent.width - 2 * x
                spacing: Theme.space16
                bottomPadding: Theme.space20

                Segmented {
                    id: ways

                    width: parent.width
                    stretched: true
                    enabled: !sheet.busy
                    name: qsTr("How")
                    currentIndex: sheet.cloning ? 1 : 0
                    choices: [
                        {
                            "text": qsTr("New folder"),
                            "glyph": "folder-plus"
                        },
                        {
                            "text": qsTr("Clone repository"),
                            "glyph": "git-branch"
                        }
                    ]
                    onChosen: index => {
                        sheet.making.clearError();
                        sheet.nav.addProject(index === 1);
                        // The arrows stay where they are.
                        if (!ways.activeFocus) {
                            sheet.focusFirst();
                        }
                    }
                }

                FormField {
                    width: parent.width
                    visible: sheet.cloning
                    label: qsTr("Repository address")
                    error: sheet.busy ? "" : sheet.making.error

                    Field {
                        id: address

                        width: parent.width
                        enabled: !sheet.busy
                        code: true
                        placeholderText: "https://git.example.com/team/project.git"
                        onTextEdited: {
                            sheet.making.clearError();
                            if (!sheet.namedByHand) {
                                nameField.text = sheet.making.nameOf(text.trim());
                            }
                        }
                    }
                }

                // Side by side below an address.
                Grid {
                    id: target

                    readonly property int cellWidth: (width - (columns - 1) * columnSpacing) / columns

                    width: parent.width
                    columns: sheet.cloning ? 2 : 1
                    rowSpacing: Theme.space16
                    columnSpacing: Theme.space12

                    FormField {
                        width: target.cellWidth
                        label: qsTr("Name")
                        error: sheet.busy ? "" : sheet.problem.length > 0 ? sheet.problem : sheet.cloning ? "" : sheet.making.error

                        Field {
                            id: nameField

                            width: parent.width
                            enabled: !sheet.busy
                            wrong: sheet.problem.length > 0
                            placeholderText: qsTr("Name of the folder")
                            onTextEdited: {
                                sheet.namedByHand = text.length > 0;
                                sheet.making.clearError();
                            }
                        }
                    }

                    FormField {
                        width: target.cellWidth
                        label: qsTr("Where")

                        PlaceField {
                            id: place

                            width: parent.width
                            enabled: !sheet.busy
                            model: sheet.model
                        }
                    }
                }

                CheckBox {
                    id: repository

                    visible: !sheet.cloning
                    enabled: !sheet.busy
                    checked: true
                    text: qsTr("Start a git repository on")
                    code: sheet.model.defaultBranch
                }

                Rectangle {
                    width: parent.width
                    height: progress.height
                    visible: sheet.busy && sheet.cloning
                    radius: Theme.radiusControl
                    color: Theme.sunken

                    Column {
                        id: progress

                        x: Theme.space16
                        width: parent.width - 2 * x
                        topPadding: Theme.space12
                        bottomPadding: Theme.space16
                        spacing: Theme.space10

                        Item {
                            width: parent.width
                            height: Theme.space20

                            Spinner {
                                id: turning

                                anchors.verticalCenter: parent.verticalCenter
                                size: Theme.icon
                            }

                            Label {
                                anchors.left: turning.right
                                anchors.leftMargin: Theme.space10
                                anchors.right: share.left
                                anchors.rightMargin: Theme.space10
                                anchors.verticalCenter: parent.verticalCenter
                                role: Theme.BodyStrong
                                text: qsTr("Cloning %1…").arg(nameField.text)
                            }

                            Label {
                                id: share

                                anchors.right: parent.right
                                anchors.verticalCenter: parent.verticalCenter
                                visible: sheet.making.fraction >= 0
                                role: Theme.Small
                                color: Theme.text2
                                text: qsTr("%1%").arg(Math.round(sheet.making.fraction * 100))
                            }
                        }

                        Rectangle {
                            width: parent.width
                            height: Theme.progressHeight
                            radius: height / 2
                            color: Theme.control

                            Rectangle {
                                width: parent.width * Math.max(0, sheet.making.fraction)
                                height: parent.height
                                radius: height / 2
                                color: Theme.accent
                            }
                        }

                        Label {
                            width: parent.width
                            role: Theme.MonoPath
                            color: Theme.text2
                            text: sheet.making.progressLine
                        }
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
                        onClicked: sheet.busy ? sheet.making.cancel() : sheet.leave()
                    }

                    Button {
                        id: hide

                        visible: sheet.busy && sheet.cloning
                        text: qsTr("Hide")
                        onClicked: sheet.leave()
                    }

                    Button {
                        primary: true
                        enabled: sheet.ready
                        text: sheet.busy ? (sheet.cloning ? qsTr("Cloning…") : qsTr("Creating…")) : sheet.cloning ? qsTr("Clone") : qsTr("Create folder")
                        onClicked: sheet.go()
                    }
                }
            }
        }
    }
}
