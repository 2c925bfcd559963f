import OrvLauncher.Screens
import QtQuick

// One project: what it is, what runs of it, and its tabs.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    property bool narrow: false
    property int padding: Theme.pagePadding
    readonly property bool scrolled: false
    readonly property bool compact: nav.tab !== 0
    property alias detail: detail

    focus: true

    ProjectDetail {
        id: detail

        model: page.model
        projectID: page.nav.page === Navigator.Project ? page.nav.pageID : projectID
    }

    function openGit() {
        if (detail.found && page.model.git?.projectID !== detail.projectID) {
            page.model.openGit(detail.projectID);
        }
    }

    Component.onCompleted: openGit()

    Connections {
        target: detail

        function onChanged() {
            page.openGit();
        }
    }

    function runOrStop(action) {
        action.state === "idle" ? page.model.runAction(detail.projectID, action.label) : detail.stopAction(action.label);
    }

    Item {
        id: head

        width: parent.width
        height: tile.y + tile.height + Theme.space4

        Tile {
            id: tile

            x: page.padding
            y: Theme.space4
            size: page.compact ? Theme.tileLarge - Theme.space4 : Theme.headerTile
            tileIndex: detail.tileIndex
            tileLetter: detail.tileLetter

            Behavior on size {
                enabled: !Theme.reducedMotion

                NumberAnimation {
                    duration: Theme.durationEnter
                    easing.type: Easing.BezierSpline
                    easing.bezierCurve: Theme.easeStandard
                }
            }
        }

        Row {
            id: title

            anchors.left: tile.right
            anchors.leftMargin: Theme.space16
            y: tile.y + Theme.space2 + Theme.hairline
            height: Theme.space28
            spacing: Theme.space10
            // Where one arrives, and Tab begins; Tab does not come back here.
            focus: page.nav.tab === 0
            activeFocusOnTab: activeFocus

            Label {
                id: name

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, Math.max(Theme.space40, controls.x - title.x - pills.implicitWidth - Theme.space24))
                role: Theme.Title
                text: detail.name
                Accessible.role: Accessible.Heading
                Accessible.name: text

                Tip {
                    text: name.truncated ? name.text : ""
                }
            }

            Row {
                id: pills

                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space10

                Repeater {
                    model: detail.frameworks

                    Pill {
                        required property string modelData
                        required property int index

                        visible: index < (page.narrow ? 3 : 4)
                        text: modelData
                    }
                }
            }
        }

        FocusRing {
            control: title
            anchors.fill: tile
            shapeRadius: tile.radius
        }

        Label {
            id: path

            anchors.left: title.left
            anchors.top: title.bottom
            anchors.topMargin: -Theme.space2
            width: Math.max(0, controls.x - x - Theme.space16)
            role: Theme.MonoPath
            color: Theme.text3
            elide: Text.ElideMiddle
            text: detail.pathText

            Tip {
                text: path.truncated ? path.text : ""
            }
        }

        Row {
            id: controls

            anchors.right: parent.right
            anchors.rightMargin: page.padding
            anchors.verticalCenter: tile.verticalCenter
            spacing: Theme.space16

            RunGroup {
                anchors.verticalCenter: parent.verticalCenter
                visible: !page.narrow
                actions: detail.actions
                projectName: detail.name
                onChosen: action => page.runOrStop(action)
            }

            RunButton {
                anchors.verticalCenter: parent.verticalCenter
                visible: page.narrow && detail.startable.length > 0
                projectName: detail.name
                action: choice.preferred
                actions: detail.actions
                choosesDevice: detail.isFlutter
                busy: false
                onStarted: page.model.runAction(detail.projectID, action)
                onChoose: anchor => choice.open(anchor)
            }

            Row {
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space8

                BoxButton {
                    visible: detail.isFlutter && !page.narrow
                    glyph: "smartphone"
                    text: qsTr("Choose a device for %1").arg(detail.name)
                    onClicked: page.model.devices.ask(detail.projectID)
                }

                BoxButton {
                    enabled: detail.runningCount > 0
                    glyph: "rotate-cw"
                    text: qsTr("Restart %1").arg(detail.name)
                    shortcut: Keymap.text("restart")
                    onClicked: page.model.restartProject(detail.projectID)
                }

                Button {
                    enabled: detail.busy
                    glyph: "own-stop-fill"
                    glyphSize: Theme.iconMini
                    glyphColor: Theme.text2
                    text: qsTr("Stop")
                    Accessible.name: qsTr("Stop %1").arg(detail.name)
                    onClicked: page.model.stopProject(detail.projectID)

                    Tip {
                        text: qsTr("Stop all services of %1").arg(detail.name)
                        shortcut: Keymap.text("stopAll")
                    }
                }
            }
        }
    }

    Tabs {
        id: tabs

        anchors.top: head.bottom
        anchors.topMargin: Theme.space8
        width: parent.width
        inset: page.padding
        name: qsTr("Parts of %1").arg(detail.name)
        currentIndex: page.nav.tab
        choices: page.tabs
        onChosen: index => page.nav.tab = index
    }

    TerminalTabList {
        id: terminals

        tabs: page.model.terminalTabs
        model: page.model
        projectID: detail.projectID
    }

    readonly property var tabs: [
        {
            "text": qsTr("Overview"),
            "source": "ProjectOverview.qml"
        },
        {
            "text": qsTr("Tasks"),
            "count": detail.openTaskCount,
            "source": "ProjectTasks.qml"
        },
        {
            "text": qsTr("Terminal"),
            "count": terminals.count,
            "note": terminals.hasUnseen ? qsTr("wants to be looked at") : "",
            "source": "ProjectTerminal.qml"
        },
        {
            "text": qsTr("Logs"),
            "source": "ProjectLogs.qml"
        },
        {
            "text": qsTr("Git"),
            "count": detail.gitChanges,
            "source": "ProjectGit.qml"
        },
        {
            "text": qsTr("Files"),
            "source": "ProjectFiles.qml"
        }
    ]

    Loader {
        id: body

        // Its file's name.
        property string shown

        anchors.top: tabs.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        focus: page.nav.tab !== 0

        Component.onCompleted: page.show()
    }

    function show() {
        const source = (page.tabs[page.nav.tab] ?? page.tabs[0]).source;
        if (body.shown === source) {
            return;
        }
        const hadFocus = page.activeFocus;
        body.shown = source;
        body.setSource(source, {
            "model": page.model,
            "nav": page.nav,
            "detail": detail,
            "narrow": Qt.binding(() => page.narrow),
            "padding": Qt.binding(() => page.padding)
        });
        (body.item as Item).focus = true;
        if (hadFocus) {
            body.forceActiveFocus(Qt.OtherFocusReason);
        }
    }

    Connections {
        target: page.nav

        function onTabChanged() {
            page.show();
        }
    }

    RunChoice {
        id: choice

        model: page.model
        detail: detail
    }

    ProjectKeys {
        enabled: page.visible
        model: page.model
        nav: page.nav
        projectID: detail.projectID
        inTerminal: page.nav.tab === 2
        onChoiceAsked: choice.open(controls)
        onAgentAsked: page.nav.agentPanel = !page.nav.agentPanel
        onTabAsked: index => {
            page.nav.tab = index;
            page.forceActiveFocus(Qt.ShortcutFocusReason);
        }
    }
}
