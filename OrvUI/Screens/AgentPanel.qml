import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The agents at work in one project, as a conversation: what was asked, what they did, and the next words below.
FocusScope {
    id: panel

    required property AppModel model
    required property string projectID
    required property string projectName
    readonly property AgentModels agents: model.agentModels
    // Stands over the page, not beside it.
    property bool floating: false
    // At the bottom, by what stands over it.
    property real covered: 0
    signal closeAsked

    function focusComposer() {
        composer.forceActiveFocus(Qt.OtherFocusReason);
    }

    Shortcut {
        sequences: Keymap.of("stopRun")
        onActivated: panel.agents.stopLatest(panel.projectID)
    }

    Keys.onEscapePressed: panel.closeAsked()
    Accessible.role: Accessible.Pane
    Accessible.name: heading.text

    Rectangle {
        anchors.fill: parent
        radius: panel.floating ? Theme.radiusCard : 0
        color: panel.floating ? Theme.raised : "transparent"
        border.width: panel.floating ? Theme.hairline : 0
        border.color: Theme.borderStrong

        Shadow {
            anchors.fill: parent
            z: -1
            visible: panel.floating
            level: 4
            radius: parent.radius
        }
    }

    Rectangle {
        visible: !panel.floating
        width: Theme.hairline
        height: parent.height
        color: Theme.border
    }

    Item {
        id: head

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: Theme.space20
        anchors.rightMargin: Theme.space12
        height: Theme.titleZoneHeight

        Label {
            id: heading

            anchors.left: parent.left
            anchors.right: anew.left
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Section
            text: qsTr("AI in %1").arg(panel.projectName)
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        IconButton {
            id: anew

            anchors.right: close.left
            anchors.rightMargin: Theme.space4
            anchors.verticalCenter: parent.verticalCenter
            edge: Theme.controlRegular
            enabled: panel.agents.replies
            glyph: "square-pen"
            text: qsTr("Start something new")
            onClicked: {
                panel.agents.beginAnew();
                panel.focusComposer();
            }
        }

        IconButton {
            id: close

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            edge: Theme.controlRegular
            glyph: "x"
            text: qsTr("Close")
            shortcut: Keymap.text("ask")
            onClicked: panel.closeAsked()
        }
    }

    Flickable {
        id: view

        // Stays at its end while what is there grows, until one scrolls away from it.
        property bool atEnd: true

        function follow() {
            atEnd = true;
            contentY = Math.max(0, contentHeight - height);
        }


        anchors.top: head.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: composer.top
        anchors.bottomMargin: Theme.space12
        contentHeight: turns.height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        onContentHeightChanged: if (atEnd) contentY = Math.max(0, contentHeight - height)
        onHeightChanged: if (atEnd) contentY = Math.max(0, contentHeight - height)
        onMovementEnded: atEnd = atYEnd
        // However one came there: by the wheel, by the bar, or since an answer became short again.
        onAtYEndChanged: if (atYEnd) atEnd = true

        Column {
            id: turns

            x: Theme.space20
            width: view.width - 2 * x
            spacing: Theme.space20

            Repeater {
                id: runs

                model: panel.agents.projectRuns

                AgentTurn {
                    width: turns.width
                    agents: panel.agents
                    onUnfolding: view.atEnd = false
                }
            }
        }

        T.ScrollBar.vertical: ScrollBar {}
    }

    Label {
        anchors.centerIn: view
        width: view.width - 2 * Theme.space40
        visible: runs.count === 0
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        maximumLineCount: 4
        color: Theme.text3
        text: qsTr("Describe a task, and an agent works on it here while you go on.")
    }

    AgentComposer {
        id: composer

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: Theme.space16
        anchors.bottomMargin: panel.covered > 0 ? panel.covered + Theme.space8 : Theme.space16
        height: implicitHeight
        focus: true
        model: panel.model
        fixedProjectID: panel.projectID
        conversing: true
        onSent: view.follow()
    }
}
