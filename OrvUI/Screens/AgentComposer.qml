import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A task for an agent: the words, and below them the project, the agent and how much it may do.
FocusScope {
    id: composer

    required property AppModel model
    // Given: the project that it is for.
    property string fixedProjectID
    // In the agent panel: what is said may go on with the newest run there.
    property bool conversing: false
    readonly property string projectID: fixedProjectID.length > 0 ? fixedProjectID : project.name.length > 0 ? project.projectID : ""
    readonly property int agent: conversing ? agents.panelAgent : agents.pageAgent
    readonly property int autonomy: conversing ? agents.panelAutonomy : agents.pageAutonomy
    readonly property AgentModels agents: model.agentModels
    readonly property var agentRow: agentList.count > agent ? agentList.objectAt(agent) : null
    readonly property var autonomyRow: autonomyList.count > autonomy ? autonomyList.objectAt(autonomy) : null
    readonly property bool ready: words.text.trim().length > 0 && projectID.length > 0
    readonly property bool missing: agentRow?.isMissing ?? false
    // An agent from last time still works in the project's folder.
    readonly property bool held: projectID.length > 0 && Array.from(model.orphans.agentProjects).includes(projectID)
    readonly property string taskTitle: conversing ? agents.panelTask : agents.pageTask
    readonly property string explanation: missing ? agents.whyMissing(agent) : agents.autonomyExplanation(agent, autonomy)
    signal sent

    function start() {
        if (composer.projectID.length === 0) {
            projectButton.clicked();
        } else if (composer.conversing ? composer.agents.say(words.text) : composer.agents.start(composer.agent, words.text, composer.projectID, composer.autonomy)) {
            words.clear();
            composer.sent();
        }
    }

    function startInTerminal() {
        if (composer.ready && composer.agents.startInTerminal(composer.agent, words.text.trim(), composer.projectID)) {
            words.clear();
        }
    }

    // Goes on with what is typed elsewhere, where nothing takes it.
    function type(text) {
        words.forceActiveFocus(Qt.OtherFocusReason);
        words.cursorPosition = words.length;
        words.insert(words.length, text);
    }

    // What was typed there before, or came.
    function recall() {
        if (composer.agents && composer.conversing === composer.fixedProjectID.length > 0) {
            if (words.text !== composer.agents.words(composer.fixedProjectID)) {
                words.text = composer.agents.words(composer.fixedProjectID);
            }
            if (!composer.conversing) {
                project.projectID = composer.agents.pageProjectID;
            }
        }
        words.cursorPosition = words.length;
    }

    implicitHeight: frame.y + frame.height + note.height + Theme.space6 + (ways.visible ? ways.height + Theme.space8 : 0)
    onFixedProjectIDChanged: recall()
    Component.onCompleted: {
        recall();
        agents.lookForAgents();
    }

    Connections {
        target: composer.Window.window

        // It may have been installed meanwhile.
        function onActiveChanged() {
            if (composer.Window.active) {
                composer.agents.lookForAgents();
            }
        }
    }

    ProjectChoice {
        id: project

        model: composer.model
        onChosenChanged: {
            if (!composer.conversing && projectID.length > 0) {
                composer.agents.pageProjectID = projectID;
            }
        }
    }

    Connections {
        target: composer.agents

        function onWordsCame(projectID) {
            if (projectID === composer.fixedProjectID) {
                composer.recall();
                words.forceActiveFocus(Qt.OtherFocusReason);
            }
        }
    }

    Loader {
        id: heldNote

        active: composer.held
        visible: active
        width: parent.width

        sourceComponent: Row {
            id: heldRow

            spacing: Theme.space8
            Accessible.role: Accessible.AlertMessage
            Accessible.name: heldText.text

            Icon {
                id: heldIcon

                anchors.verticalCenter: parent.verticalCenter
                name: "circle-alert"
                size: Theme.iconSmall
                color: Theme.warning
            }

            Label {
                id: heldText

                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, heldNote.width - heldIcon.width - stopHeld.width - 2 * heldRow.spacing)
                role: Theme.Small
                color: Theme.warning
                wrapMode: Text.Wrap
                maximumLineCount: 3
                text: qsTr("An AI agent from last time is still working in this folder.")
            }

            Button {
                id: stopHeld

                anchors.verticalCenter: parent.verticalCenter
                controlHeight: Theme.controlMini
                text: qsTr("Stop it")
                onClicked: {
                    composer.model.orphans.stopAgentsOf(composer.projectID);
                    words.forceActiveFocus(Qt.OtherFocusReason);
                }
            }
        }
    }

    Rectangle {
        id: frame

        y: heldNote.visible ? heldNote.height + Theme.space8 : 0
        width: parent.width
        height: Math.max(composer.conversing ? Theme.composerBoxPanel : Theme.composerBox, view.y + view.contentHeight + Theme.composerHeight + Theme.space12)
        radius: Theme.radiusCard
        color: Theme.surface
        border.width: Theme.hairline
        border.color: words.activeFocus ? Theme.focus : Theme.borderStrong

        TapHandler {
            onTapped: words.forceActiveFocus(Qt.MouseFocusReason)
        }

        Rectangle {
            anchors.fill: parent
            anchors.margins: -Theme.haloWidth
            z: -1
            visible: words.activeFocus
            radius: parent.radius + Theme.haloWidth
            color: "transparent"
            border.width: Theme.haloWidth
            border.color: Theme.focusSoft
        }

        LinkedTask {
            id: link

            x: Theme.space12
            y: Theme.space12
            width: Math.min(implicitWidth, parent.width - 2 * x)
            visible: title.length > 0
            title: composer.taskTitle
            onRemoved: {
                composer.agents.unlinkTask(composer.fixedProjectID);
                words.forceActiveFocus(Qt.OtherFocusReason);
            }
        }

        Flickable {
            id: view

            x: Theme.space16
            y: link.visible ? link.y + link.height + Theme.space8 : Theme.space12
            width: parent.width - 2 * x
            height: Math.min(Math.max(contentHeight, Theme.space24), 8 * Theme.space20)
            contentHeight: words.implicitHeight
            clip: true

            T.TextArea.flickable: T.TextArea {
                id: words

                function send(event) {
                    event.accepted = (event.modifiers & Qt.ControlModifier) !== 0;
                    if (event.accepted) {
                        event.modifiers & Qt.ShiftModifier ? composer.startInTerminal() : composer.start();
                    }
                }

                focus: true
                padding: 0
                wrapMode: TextEdit.Wrap
                font: Theme.font(Theme.Body)
                color: Theme.text
                selectionColor: Theme.textSelection
                selectedTextColor: Theme.text
                selectByMouse: true
                Accessible.role: Accessible.EditableText
                Accessible.name: qsTr("Task for the agent")

                cursorDelegate: Rectangle {
                    width: Theme.focusWidth
                    color: Theme.accent
                    visible: words.cursorVisible
                }

                onTextChanged: {
                    if (composer.conversing === composer.fixedProjectID.length > 0) {
                        composer.agents.keepWords(composer.fixedProjectID, text);
                    }
                }
                KeyNavigation.priority: KeyNavigation.BeforeItem
                Keys.onTabPressed: projectButton.visible ? projectButton.forceActiveFocus(Qt.TabFocusReason) : agentButton.forceActiveFocus(Qt.TabFocusReason)
                // The page below runs the project by the same keys.
                Keys.onShortcutOverride: event => {
                    event.accepted = (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) && (event.modifiers & Qt.ControlModifier) !== 0;
                }
                Keys.onReturnPressed: event => send(event)
                Keys.onEnterPressed: event => send(event)

                Label {
                    // Beside the caret, not below it.
                    x: Theme.focusWidth
                    visible: words.text.length === 0 && words.preeditText.length === 0
                    color: Theme.text3
                    text: !composer.conversing ? qsTr("Describe a task for an agent") : composer.agents.replies ? qsTr("Reply to continue") : qsTr("Describe a task…")
                }
            }
        }

        Row {
            id: choices

            // Where they would end.
            readonly property int needed: {
                const first = composer.fixedProjectID.length === 0 ? projectButton.implicitWidth + spacing : 0;
                return x + first + agentButton.implicitWidth + (autonomyButton.visible ? spacing + autonomyButton.implicitWidth : 0);
            }
            // By how much they would reach into the buttons: the first of them gives way.
            readonly property int excess: Math.max(0, needed - starts.x)

            x: Theme.space8
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.space8
            spacing: composer.conversing ? 0 : Theme.space8

            MenuButton {
                id: projectButton

                visible: composer.fixedProjectID.length === 0
                width: Math.max(besides, implicitWidth - choices.excess)
                name: qsTr("Project")
                text: project.name.length > 0 ? project.name : qsTr("Choose a project")
                onClicked: {
                    chooser.active = true;
                    (chooser.item as ProjectChooser).open();
                }
                badge: project.name.length > 0 ? projectTile : null

                Component {
                    id: projectTile

                    Tile {
                        size: Theme.badge
                        tileIndex: project.tileIndex
                        tileLetter: project.tileLetter
                    }
                }

                Loader {
                    id: chooser

                    active: false

                    sourceComponent: ProjectChooser {
                        parent: projectButton
                        y: projectButton.height + Theme.space4
                        choice: project
                        onChosen: words.forceActiveFocus(Qt.OtherFocusReason)
                    }
                }
            }

            MenuButton {
                id: agentButton

                width: composer.fixedProjectID.length === 0 ? implicitWidth : Math.max(besides, implicitWidth - choices.excess)
                name: qsTr("Agent")
                badge: composer.agentRow ? agentBadge : null
                text: composer.agentRow ? composer.agentRow.text : ""
                onClicked: agentMenu.popup(agentButton, 0, height + Theme.space4)
            }

            Component {
                id: agentBadge

                AgentBadge {
                    size: Theme.badge
                    letters: composer.agentRow?.letters ?? ""
                }
            }

            MenuButton {
                id: autonomyButton

                visible: composer.agents.hasAutonomy(composer.agent)
                name: qsTr("Autonomy")
                glyph: composer.autonomyRow ? composer.autonomyRow.glyph : ""
                text: composer.autonomyRow ? composer.autonomyRow.text : ""
                onClicked: autonomyMenu.popup(autonomyButton, 0, height + Theme.space4)
            }
        }

        Row {
            id: starts

            // Beside which the choices have all the room they need: the keys go before words do.
            readonly property bool hasRoomForKeys: choices.needed + terminalButton.implicitWidth + spacing + start.plainWidth + start.keysWidth + Theme.space8 <= frame.width

            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.space8
            spacing: Theme.space8

            Button {
                id: terminalButton

                visible: !composer.conversing
                ghost: true
                controlHeight: Theme.controlSmall
                enabled: composer.ready
                glyph: "square-terminal"
                text: qsTr("Run in terminal")
                onClicked: composer.startInTerminal()
            }

            Row {
                Button {
                    id: start

                    readonly property real plainWidth: Math.ceil(leftPadding + rightPadding + startMetrics.advanceWidth(text))
                    readonly property real keysWidth: Math.ceil(Theme.space6 + keyMetrics.advanceWidth(Keymap.text("start")))

                    primary: true
                    joined: composer.conversing
                    controlHeight: Theme.controlSmall
                    text: qsTr("Start")
                    shortcut: composer.conversing || !words.activeFocus || !starts.hasRoomForKeys ? "" : Keymap.text("start")
                    onClicked: composer.start()
                }

                SplitPart {
                    id: otherWays

                    visible: composer.conversing
                    implicitHeight: Theme.controlSmall
                    primary: true
                    focusPolicy: Qt.StrongFocus
                    text: qsTr("Other ways to start")
                    onClicked: waysMenu.popup(otherWays, width - waysMenu.width, height + Theme.space4)
                }
            }
        }
    }

    FontMetrics {
        id: startMetrics

        font: Theme.font(Theme.SmallStrong)
    }

    FontMetrics {
        id: keyMetrics

        font: Theme.font(Theme.Small)
    }

    Label {
        id: note

        anchors.top: frame.bottom
        anchors.topMargin: Theme.space6
        x: Theme.space4
        width: parent.width - 2 * x
        role: Theme.Small
        color: composer.agents.error.length > 0 ? Theme.danger : composer.missing ? Theme.warning : Theme.text3
        wrapMode: Text.Wrap
        maximumLineCount: 4
        text: composer.agents.error.length > 0 ? composer.agents.error : composer.explanation
    }

    Row {
        id: ways

        anchors.top: note.bottom
        anchors.topMargin: Theme.space8
        x: Theme.space4
        visible: composer.missing
        spacing: Theme.space8

        Button {
            visible: (composer.agentRow?.key ?? "custom") !== "custom"
            controlHeight: Theme.controlSmall
            glyph: "copy"
            text: qsTr("Copy install command")
            onClicked: Clipboard.copy(composer.agentRow.installHint)
        }

        Button {
            controlHeight: Theme.controlSmall
            text: qsTr("Choose another agent")
            onClicked: agentButton.clicked()
        }
    }

    Menu {
        id: waysMenu

        MenuRow {
            enabled: composer.ready
            glyph: "square-terminal"
            text: qsTr("Run in terminal")
            onTriggered: composer.startInTerminal()
        }
    }

    Menu {
        id: agentMenu

        Instantiator {
            id: agentList

            model: composer.agents.agents
            onObjectAdded: (index, object) => agentMenu.insertItem(index, object as MenuRow)
            onObjectRemoved: (index, object) => agentMenu.removeItem(object as MenuRow)

            MenuRow {
                required property int index
                required property string name
                required property string letters
                required property string notice
                required property string status
                required property string key
                required property string installHint
                required property bool isMissing

                text: name
                note: !isMissing ? notice : notice.length === 0 ? status : qsTr("%1. %2").arg(status).arg(notice)
                onTriggered: composer.conversing ? composer.agents.panelAgent = index : composer.agents.pageAgent = index
            }
        }
    }

    Menu {
        id: autonomyMenu

        Instantiator {
            id: autonomyList

            model: composer.agents.autonomies
            onObjectAdded: (index, object) => autonomyMenu.insertItem(index, object as MenuRow)
            onObjectRemoved: (index, object) => autonomyMenu.removeItem(object as MenuRow)

            MenuRow {
                required property int index
                required property string title
                required glyph

                text: title
                note: composer.agents.autonomyExplanation(composer.agent, index)
                onTriggered: composer.conversing ? composer.agents.panelAutonomy = index : composer.agents.pageAutonomy = index
            }
        }
    }
}
