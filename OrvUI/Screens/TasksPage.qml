import OrvLauncher.Screens
import QtQuick

// The to-do items of all projects.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    property bool narrow: false
    property int padding: Theme.pagePadding
    property bool showsDone: false
    readonly property bool scrolled: list.scrolled

    focus: true

    Wish {
        nav: page.nav
        name: "newTask"
        onGranted: list.focusField()
    }

    TaskListView {
        id: list

        anchors.fill: parent
        focus: true
        startsAtHeader: true
        model: page.model
        lists: page.model.taskLists
        showsDone: page.showsDone
        onHandedToAi: key => {
            page.model.draftAgentTaskFor(key);
            page.nav.ai();
        }
        contentWidth: Math.min(Theme.listWidthLimit, page.width - 2 * page.padding)

        header: Column {
            function focusField() {
                composer.focusField();
            }

            spacing: Theme.space12
            Keys.onPressed: event => {
                event.accepted = InputMode.writes(event.text, event.modifiers);
                if (event.accepted) {
                    composer.type(event.text);
                }
            }

            Label {
                focus: true
                height: Theme.space40
                verticalAlignment: Text.AlignVCenter
                role: Theme.Page
                text: qsTr("Tasks")
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }

            TaskComposer {
                id: composer

                width: parent.width
                model: page.model
                lists: page.model.taskLists
            }

            Label {
                visible: page.model.taskLists.openCount === 0 && !page.showsDone
                topPadding: Theme.space20
                color: Theme.text3
                text: qsTr("Nothing to do. What you add here is kept with its project.")
            }
        }
    }
}
