import OrvLauncher.Screens
import QtQuick

// The to-do items of one project.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    required property ProjectDetail detail
    property bool narrow: false
    property int padding: Theme.pagePadding

    Binding {
        target: page.model.projectTasks
        property: "projectID"
        value: page.detail.projectID
    }

    Wish {
        nav: page.nav
        name: "newTask"
        onGranted: list.focusField()
    }

    TaskListView {
        id: list

        anchors.fill: parent
        anchors.topMargin: Theme.space20
        focus: true
        model: page.model
        lists: page.model.projectTasks
        grouped: false
        startsAtHeader: true
        onHandedToAi: key => {
            page.model.draftAgentTaskFor(key);
            page.nav.agentPanel = true;
        }
        contentWidth: Math.min(Theme.listWidthLimit, page.width - 2 * page.padding)

        header: Column {
            function focusField() {
                composer.focusField();
            }

            bottomPadding: Theme.space12

            TaskComposer {
                id: composer

                width: parent.width
                focus: true
                model: page.model
                lists: page.model.projectTasks
                fixedProjectID: page.detail.projectID
            }

            Label {
                // With nothing done either, the picture says it.
                visible: page.model.projectTasks.openCount === 0 && !list.isEmpty
                topPadding: Theme.space20
                color: Theme.text3
                text: qsTr("Nothing to do here. What you add is kept with %1.").arg(page.detail.name)
            }
        }
    }

    EmptyState {
        x: Math.round((page.width - width) / 2)
        y: Math.max(list.y + Theme.composerHeight + Theme.space40, Math.round((page.height - height) / 2) - Theme.space28)
        visible: list.isEmpty
        picture: "no-tasks"
        heading: qsTr("Nothing to do")
        text: qsTr("What you write down here stays with %1 and can be handed to an agent.").arg(page.detail.name)
    }
}
