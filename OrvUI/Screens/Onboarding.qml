import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The pages of the first start over the whole window: the questions at the left, a picture of each at the right.
T.Popup {
    id: popup

    required property Window target
    required property AppModel model
    required property bool ownFrame
    readonly property OnboardingModel form: model.onboarding
    readonly property int step: form.step
    readonly property bool pictured: width >= Theme.narrowLimit - Theme.sidebarWidth
    readonly property int inset: width < Theme.narrowLimit ? Theme.space40 : Theme.welcomePadding
    readonly property bool isLast: form.step === form.stepCount - 1
    readonly property var pages: ["WelcomeStart.qml", "WelcomeName.qml", "WelcomeProjects.qml", "WelcomeGit.qml", "WelcomeLook.qml", "WelcomeAi.qml", "WelcomeExtras.qml"]
    signal folderRequested

    function next() {
        if (!popup.form.canAdvance || popup.form.isFinishing) {
            return;
        }
        popup.isLast ? popup.form.finish() : popup.form.next();
    }

    function showPage() {
        page.setSource(popup.pages[popup.form.step], {
            "model": popup.model,
            "form": popup.form
        });
    }

    parent: T.Overlay.overlay
    width: parent.width
    height: parent.height
    visible: true
    modal: true
    dim: false
    focus: true
    closePolicy: T.Popup.NoAutoClose
    onStepChanged: showPage()
    onOpened: page.forceActiveFocus(Qt.PopupFocusReason)

    background: Rectangle {
        color: Theme.window
    }

    contentItem: FocusScope {
        property bool toldModal: popup.modal

        focus: true
        Accessible.role: Accessible.Dialog
        Accessible.name: qsTr("Welcome")
        // What has the focus takes it first, where it is a button.
        Keys.onReturnPressed: popup.next()
        Keys.onEnterPressed: popup.next()
        Component.onCompleted: {
            popup.form.loadExisting();
            popup.showPage();
        }

        WindowDragArea {
            width: parent.width
            height: Theme.titleZoneHeight
        }

        Item {
            id: left

            width: popup.pictured ? Math.min(Theme.welcomeWidth, Math.round(popup.width * 0.52)) : popup.width
            height: parent.height

            Flickable {
                id: view

                y: Theme.welcomeTop
                width: parent.width
                height: foot.y - y - Theme.space16
                contentHeight: page.height
                boundsBehavior: Flickable.StopAtBounds
                clip: contentHeight > height

                Loader {
                    id: page

                    x: popup.inset
                    width: view.width - 2 * x
                    focus: true
                    onLoaded: {
                        item.width = Qt.binding(() => page.width);
                        item.forceActiveFocus(Qt.TabFocusReason);
                        arrival.restart();
                    }

                    NumberAnimation on opacity {
                        id: arrival

                        running: false
                        from: 0
                        to: 1
                        duration: Theme.durationSheet
                    }
                }

                FocusFollower {
                    view: view
                    margin: Theme.space8
                }

                T.ScrollBar.vertical: ScrollBar {}
            }

            Connections {
                target: page.item
                ignoreUnknownSignals: true

                function onFolderRequested() {
                    popup.folderRequested();
                }
            }

            Item {
                id: foot

                anchors.bottom: parent.bottom
                anchors.bottomMargin: popup.width < Theme.narrowLimit ? Theme.space32 : Theme.space40
                x: popup.inset
                width: parent.width - 2 * x
                height: Theme.buttonDialog

                Row {
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space6
                    Accessible.role: Accessible.ProgressBar
                    Accessible.name: qsTr("Page %1 of %2").arg(popup.form.step + 1).arg(popup.form.stepCount)

                    Repeater {
                        model: popup.form.stepCount

                        Rectangle {
                            required property int index
                            readonly property bool isCurrent: index === popup.form.step

                            width: isCurrent ? Theme.progressPill : Theme.space6
                            height: Theme.space6
                            radius: height / 2
                            color: index > popup.form.step ? Theme.borderStrong : Theme.accent
                            opacity: index < popup.form.step ? 0.5 : 1

                            Behavior on width {
                                enabled: !Theme.reducedMotion

                                NumberAnimation {
                                    duration: Theme.durationMove
                                }
                            }
                        }
                    }
                }

                Row {
                    anchors.right: parent.right
                    spacing: Theme.space12

                    Button {
                        controlHeight: Theme.buttonDialog
                        corner: Theme.radiusLarge
                        role: Theme.LargeButton
                        ghost: true
                        visible: popup.form.step === 0
                        text: qsTr("Skip")
                        Accessible.name: qsTr("Skip the welcome tour")
                        onClicked: popup.model.skipOnboarding()
                    }

                    Button {
                        controlHeight: Theme.buttonDialog
                        corner: Theme.radiusLarge
                        role: Theme.LargeButton
                        ghost: true
                        visible: popup.form.step > 0
                        text: qsTr("Back")
                        onClicked: popup.form.back()
                    }

                    Button {
                        controlHeight: Theme.buttonDialog
                        corner: Theme.radiusLarge
                        role: Theme.LargeButton
                        primary: true
                        enabled: popup.form.canAdvance && !popup.form.isFinishing
                        leftPadding: Theme.space16 + Theme.space2
                        rightPadding: leftPadding
                        text: popup.form.step === 0 ? qsTr("Get started") : popup.isLast ? qsTr("Open OrvLauncher") : qsTr("Continue")
                        onClicked: popup.next()
                    }
                }
            }
        }

        Rectangle {
            anchors.left: left.right
            anchors.right: parent.right
            height: parent.height
            visible: popup.pictured
            color: Theme.sidebar
            clip: true

            Rectangle {
                width: Theme.hairline
                height: parent.height
                color: Theme.border
            }

            WelcomeScene {
                anchors.fill: parent
                model: popup.model
                form: popup.form
            }
        }

        WindowButtons {
            anchors.right: parent.right
            anchors.rightMargin: Theme.space10
            y: Theme.space10
            visible: popup.ownFrame
            target: popup.target
        }

        ResizeEdges {
            anchors.fill: parent
            visible: popup.ownFrame && popup.target.visibility === Window.Windowed
            target: popup.target
        }

        Shortcut {
            sequences: [StandardKey.Back]
            onActivated: popup.form.back()
        }
    }
}
