import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A project's first install: asks, shows how it goes, and what to do when it failed.
Sheet {
    id: sheet

    required property AppModel model
    readonly property string phase: model.setupPhase
    readonly property string projectID: model.setupProjectID
    readonly property bool confirming: phase === "confirm"
    readonly property bool running: phase === "running"
    readonly property bool failed: phase === "failed"
    property bool otherCommand: false
    // Of the step that failed, unless another one was typed.
    property string failedCommand
    signal outputAsked(string projectID)

    function go() {
        if (!sheet.running) {
            sheet.model.confirmSetup();
        }
    }

    // What was typed or has failed is of one setup, and none of the next.
    function begin() {
        otherCommand = false;
        if (confirming) {
            failedCommand = "";
            view.current = null;
        }
        view.contentY = 0;
        view.reveal();
    }

    // Of the two buttons at the right one is there at a time.
    function takeFocus(button) {
        if (sheet.opened && button.visible) {
            button.forceActiveFocus(Qt.PopupFocusReason);
        }
    }

    // What runs goes on without the sheet.
    function leave() {
        running ? sheet.model.setupAside = true : sheet.model.cancelSetup();
    }

    visible: model.setupActive && !model.setupAside
    // While something runs only the button ends it.
    closePolicy: T.Popup.NoAutoClose
    onAboutToShow: begin()
    // Not as it fades out.
    onProjectIDChanged: {
        if (projectID.length > 0) {
            begin();
        }
    }
    onConfirmingChanged: {
        if (confirming) {
            begin();
        }
    }
    onTappedBeside: sheet.leave()
    onOpened: takeFocus(running ? hide : primary)

    contentItem: FocusScope {
        property bool toldModal: sheet.modal

        implicitHeight: head.height + steps.height + 2 * Theme.hairline + rest.height
        Accessible.role: Accessible.Dialog
        Accessible.name: title.text
        // What has the focus takes it first, where it is a button.
        Keys.onReturnPressed: sheet.go()
        Keys.onEnterPressed: sheet.go()

        // Works at once; the focus comes only when the sheet has come in.
        Shortcut {
            sequences: [StandardKey.Cancel]
            enabled: sheet.listens
            onActivated: sheet.leave()
        }

        Item {
            id: head

            width: parent.width
            height: Math.max(tile.y + tile.height, sentence.y + sentence.height) + Theme.space20 + Theme.space2

            Tile {
                id: tile

                x: Theme.space24
                y: Theme.space24
                size: Theme.tileLarge
                tileIndex: sheet.model.setupTileIndex
                tileLetter: sheet.model.setupTileLetter
            }

            Label {
                id: title

                anchors.left: tile.right
                anchors.leftMargin: Theme.space12 + Theme.space2
                anchors.right: parent.right
                anchors.rightMargin: Theme.space24
                y: tile.y - Theme.hairline
                role: Theme.SheetTitle
                text: qsTr("Set up %1").arg(sheet.model.setupTitle)
            }

            Label {
                id: sentence

                anchors.left: title.left
                anchors.right: title.right
                anchors.top: title.bottom
                anchors.topMargin: Theme.space2
                color: Theme.text2
                wrapMode: Text.Wrap
                elide: Text.ElideNone
                text: sheet.model.setupText
            }
        }

        Rectangle {
            anchors.top: head.bottom
            anchors.bottom: rest.top
            x: Theme.space24
            width: parent.width - 2 * Theme.space24
            radius: Theme.radiusCard
            color: Theme.sunken
            border.width: Theme.hairline
            border.color: Theme.border

            // Many steps scroll; what is to be decided stays in sight.
            Flickable {
                id: view

                // The step that runs, or that failed.
                property SetupStep current: null

                function reveal() {
                    if (current !== null) {
                        contentY = Math.max(0, Math.min(Math.max(Math.min(contentY, current.y), current.y + current.height - height), contentHeight - height));
                    }
                }

                anchors.fill: parent
                anchors.margins: Theme.hairline
                contentHeight: steps.height
                boundsBehavior: Flickable.StopAtBounds
                interactive: contentHeight > height
                clip: true
                onCurrentChanged: reveal()
                onHeightChanged: reveal()

                Column {
                    id: steps

                    width: parent.width

                    Repeater {
                        model: sheet.model.setupSteps

                        SetupStep {
                            id: step

                            width: steps.width
                            onRunningChanged: {
                                if (running) {
                                    view.current = step;
                                }
                            }
                            onFailedChanged: {
                                if (failed) {
                                    view.current = step;
                                }
                                if (failed && sheet.model.installCommandOverrideText.length === 0) {
                                    sheet.failedCommand = command;
                                }
                            }
                        }
                    }
                }

                T.ScrollBar.vertical: ScrollBar {}
            }
        }

        FocusFollower {
            view: view
        }

        Column {
            id: rest

            anchors.bottom: parent.bottom
            width: parent.width

            Disclosure {
                visible: sheet.confirming
                x: Theme.space24 - Theme.space4
                height: Theme.space40
                text: qsTr("Use another install command")
                checked: sheet.otherCommand
                // A command that is not seen is not run.
                onClicked: {
                    sheet.otherCommand = !sheet.otherCommand;
                    sheet.model.installCommandOverrideText = "";
                }
            }

            Item {
                visible: sheet.confirming && !sheet.otherCommand
                width: Theme.hairline
                height: Theme.space8
            }

            // The last line of what runs, and how far it is.
            Column {
                visible: sheet.running
                x: Theme.space24
                width: parent.width - 2 * Theme.space24
                topPadding: Theme.space12 + Theme.hairline
                bottomPadding: Theme.space20
                spacing: Theme.space12 - Theme.hairline

                Label {
                    width: parent.width
                    role: Theme.MonoPath
                    color: Theme.text3
                    text: sheet.model.setupLastLine.length > 0 ? sheet.model.setupLastLine : qsTr("Starting…")
                }

                ProgressBar {
                    width: parent.width
                    done: sheet.model.setupDoneCount
                    total: sheet.model.setupStepCount
                }
            }

            Column {
                visible: sheet.failed
                x: Theme.space24
                width: parent.width - 2 * Theme.space24
                topPadding: Theme.space12
                spacing: Theme.space12

                Rectangle {
                    width: parent.width
                    height: output.implicitHeight + 2 * Theme.space8
                    radius: Theme.radiusControl
                    color: Theme.terminalBackground

                    Column {
                        id: output

                        anchors.verticalCenter: parent.verticalCenter
                        x: Theme.space12 + Theme.space2
                        width: parent.width - 2 * x

                        Repeater {
                            model: sheet.model.setupOutput

                            Label {
                                required property int index
                                required property string modelData

                                // The reason says it again.
                                visible: !sheet.model.setupReason.endsWith(modelData.trim())
                                width: output.width
                                role: Theme.MonoPath
                                height: Theme.iconLarge
                                color: Theme.text3
                                text: modelData
                            }
                        }

                        Label {
                            width: output.width
                            role: Theme.MonoPath
                            color: Theme.danger
                            wrapMode: Text.Wrap
                            maximumLineCount: 3
                            text: sheet.model.setupReason
                        }
                    }
                }
            }

            Column {
                visible: sheet.failed || (sheet.confirming && sheet.otherCommand)
                x: Theme.space24
                width: parent.width - 2 * Theme.space24
                topPadding: sheet.failed ? Theme.space12 : 0
                bottomPadding: Theme.space20
                spacing: Theme.space6

                Label {
                    visible: sheet.failed
                    role: Theme.SmallStrong
                    color: Theme.text2
                    text: qsTr("Install command")
                }

                Field {
                    id: command

                    width: parent.width
                    code: true
                    placeholderText: sheet.failed && sheet.failedCommand.length > 0 ? sheet.failedCommand : qsTr("Install command")
                    Accessible.name: qsTr("Install command")
                    text: sheet.model.installCommandOverrideText
                    onTextEdited: sheet.model.installCommandOverrideText = text
                }

                Label {
                    width: parent.width
                    role: Theme.Small
                    color: Theme.text3
                    wrapMode: Text.Wrap
                    text: sheet.failed ? qsTr("Runs instead of the command of each step that is not done, in that step's folder.") : qsTr("Runs instead of the command of each step, in that step's folder.")
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

                Figures {
                    x: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter
                    visible: !sheet.failed
                    role: Theme.Small
                    color: Theme.text3
                    text: sheet.running ? qsTr("%1 of %2 done").arg(sheet.model.setupDoneCount).arg(sheet.model.setupStepCount)
                        : sheet.model.setupStepCount === 1 ? qsTr("1 step") : qsTr("%1 steps").arg(sheet.model.setupStepCount)
                }

                Button {
                    x: Theme.space24 - leftPadding
                    anchors.verticalCenter: parent.verticalCenter
                    visible: sheet.failed
                    ghost: true
                    glyph: "logs"
                    text: qsTr("Show all output")
                    onClicked: sheet.outputAsked(sheet.model.setupProjectID)
                }

                Row {
                    anchors.right: parent.right
                    anchors.rightMargin: Theme.space24
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space8

                    Button {
                        text: qsTr("Cancel")
                        onClicked: sheet.model.cancelSetup()
                    }

                    Button {
                        id: hide

                        visible: sheet.running
                        text: qsTr("Hide")
                        onVisibleChanged: sheet.takeFocus(hide)
                        onClicked: sheet.leave()
                    }

                    Button {
                        id: primary

                        visible: !sheet.running
                        focus: true
                        primary: true
                        glyph: sheet.failed ? "rotate-cw" : ""
                        text: sheet.failed ? qsTr("Try again") : qsTr("Install and run")
                        onVisibleChanged: sheet.takeFocus(primary)
                        onClicked: sheet.go()
                    }
                }
            }
        }
    }
}
