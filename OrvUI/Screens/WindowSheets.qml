import OrvLauncher.Screens
import QtQuick

// What may stand over the window's pages. Each is made when it is first wanted, and kept.
Item {
    id: sheets

    required property AppModel model
    required property Navigator nav
    required property PaletteModel palette
    required property Window target
    required property bool ownFrame
    signal folderAsked
    // The place of the answer in the question's list.
    signal quitAnswered(int choice)

    function showShortcuts() {
        shortcutSheet.active = true;
        (shortcutSheet.item as ShortcutsSheet).open();
    }

    function askToQuit(message, inTray) {
        quitAlert.active = true;
        quitAlert.item.message = message;
        quitAlert.item.inTray = inTray;
        quitAlert.item.open();
    }

    function copyDiagnostics() {
        Clipboard.copy(Diagnostics.text(sheets.model));
        sheets.model.showStatus(qsTr("Copied what there is to say of this machine"), false);
    }

    Loader {
        active: sheets.model.setupActive || item !== null

        sourceComponent: SetupSheet {
            model: sheets.model
            onOutputAsked: projectID => {
                sheets.model.cancelSetup();
                sheets.nav.project(projectID);
                sheets.nav.tab = 3;
            }
        }
    }

    Loader {
        id: review

        active: false

        sourceComponent: ReviewSheet {
            model: sheets.model
            agents: sheets.model.agentModels
        }
    }

    Connections {
        target: sheets.model.agentModels

        function onReviewChanged() {
            if (sheets.model.agentModels.reviewKey.length > 0) {
                review.active = true;
                (review.item as ReviewSheet).open();
            }
        }
    }

    Loader {
        active: sheets.nav.sheet === "addProject" || sheets.nav.sheet === "clone" || item !== null

        sourceComponent: AddProjectSheet {
            model: sheets.model
            nav: sheets.nav
        }
    }

    Loader {
        active: sheets.model.devices.isAsking || item !== null

        sourceComponent: DeviceSheet {
            model: sheets.model
        }
    }

    Loader {
        active: sheets.nav.sheet === "widgetsHowTo" || item !== null

        sourceComponent: WidgetsSheet {
            model: sheets.model
            nav: sheets.nav
        }
    }

    Loader {
        active: sheets.palette.isOpen || item !== null

        sourceComponent: CommandPalette {
            commands: sheets.palette
        }
    }

    Loader {
        id: shortcutSheet

        active: false

        sourceComponent: ShortcutsSheet {}
    }

    Connections {
        target: sheets.palette

        function onShortcutsAsked() {
            sheets.showShortcuts();
        }

        function onDiagnosticsAsked() {
            sheets.copyDiagnostics();
        }
    }

    Loader {
        active: sheets.model.needsOnboarding

        sourceComponent: Onboarding {
            target: sheets.target
            model: sheets.model
            ownFrame: sheets.ownFrame
            onFolderRequested: sheets.folderAsked()
        }
    }

    // What the model wants to be read before anything else.
    Loader {
        active: sheets.model.hasModal || item !== null

        sourceComponent: Alert {
            id: modal

            // The words stay while it fades out.
            function take() {
                if (!sheets.model.hasModal) {
                    modal.close();
                    return;
                }
                modal.message = sheets.model.modalTitle;
                modal.text = sheets.model.modalBody;
                modal.open();
            }

            message: ""
            text: ""
            choices: [
                {
                    "text": qsTr("OK"),
                    "primary": true
                }
            ]
            Component.onCompleted: take()
            onAboutToHide: sheets.model.dismissModal()

            Connections {
                target: sheets.model

                function onModalChanged() {
                    modal.take();
                }
            }
        }
    }

    Loader {
        id: quitAlert

        active: false

        sourceComponent: Alert {
            property bool inTray: true

            message: ""
            text: inTray ? qsTr("Quit and stop everything, or keep running from the menu bar.") : qsTr("Quitting stops everything.")
            readonly property var stop: ({
                    "text": qsTr("Stop and Quit"),
                    "danger": true,
                    "answer": 0
                })
            readonly property var stay: ({
                    "text": qsTr("Keep Running in Menu Bar"),
                    "primary": true,
                    "answer": 1
                })
            readonly property var cancel: ({
                    "text": qsTr("Cancel"),
                    "answer": 2
                })

            choices: inTray ? [stop, stay, cancel] : [stop, cancel]
            onChosen: index => sheets.quitAnswered(choices[index].answer)
        }
    }
}
