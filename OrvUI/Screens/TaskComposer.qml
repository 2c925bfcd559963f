import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// One line for a new to-do item; where no project is given, with the project that it is for.
FocusScope {
    id: composer

    required property AppModel model
    required property TaskLists lists
    // Given: the project whose list this is.
    property string fixedProjectID
    readonly property string projectID: fixedProjectID.length > 0 ? fixedProjectID : project.name.length > 0 ? project.projectID : ""
    readonly property bool ready: field.text.trim().length > 0 && projectID.length > 0

    function focusField() {
        field.forceActiveFocus(Qt.ShortcutFocusReason);
    }

    // Goes on with what is typed elsewhere, where nothing takes it.
    function type(text) {
        composer.focusField();
        field.insert(field.length, text);
    }

    function add() {
        if (ready) {
            if (composer.lists.add(field.text, "", composer.projectID)) {
                field.clear();
            }
        } else if (projectID.length === 0) {
            button.clicked();
        }
    }

    // What was typed there before.
    function recall() {
        project.projectID = composer.lists.wordsProjectID(composer.fixedProjectID);
        field.text = composer.lists.words(composer.fixedProjectID);
    }

    function keep() {
        composer.lists.keepWords(composer.fixedProjectID, field.text, project.projectID);
    }

    implicitHeight: Theme.composerHeight
    onFixedProjectIDChanged: recall()
    Component.onCompleted: recall()

    Rectangle {
        anchors.fill: parent
        radius: Theme.radiusControl
        color: Theme.field
        border.width: Theme.hairline
        border.color: field.activeFocus ? Theme.focus : Theme.borderStrong
    }

    Icon {
        id: plus

        x: Theme.space12 + Theme.space2
        anchors.verticalCenter: parent.verticalCenter
        name: "plus"
        color: Theme.text2
    }

    T.TextField {
        id: field

        anchors.left: plus.right
        anchors.leftMargin: Theme.space8
        anchors.right: right.left
        anchors.rightMargin: Theme.space8
        height: parent.height
        focus: true
        verticalAlignment: TextInput.AlignVCenter
        font: Theme.font(Theme.Body)
        color: Theme.text
        selectionColor: Theme.textSelection
        selectedTextColor: Theme.text
        selectByMouse: true
        Accessible.role: Accessible.EditableText
        Accessible.name: qsTr("New task")
        onTextChanged: composer.keep()
        onAccepted: composer.add()
        Keys.onEscapePressed: event => {
            event.accepted = text.length > 0;
            // What is removed as a selection can be taken back by itself.
            selectAll();
            clear();
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            visible: field.text.length === 0 && field.preeditText.length === 0
            color: Theme.text3
            text: qsTr("New task")
        }
    }

    Row {
        id: right

        anchors.right: parent.right
        anchors.rightMargin: Theme.space8
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space12

        T.AbstractButton {
            id: button

            property int toldRole: Accessible.ButtonMenu

            anchors.verticalCenter: parent.verticalCenter
            visible: composer.fixedProjectID.length === 0
            implicitWidth: chosen.implicitWidth + Theme.space16
            implicitHeight: Theme.controlSmall
            focusPolicy: Qt.StrongFocus
            hoverEnabled: true
            text: project.name.length > 0 ? project.name : qsTr("Choose a project")
            Accessible.role: toldRole
            Accessible.name: qsTr("Project: %1").arg(text)
            Keys.onReturnPressed: button.clicked()
            onClicked: {
                chooser.active = true;
                (chooser.item as ProjectChooser).open();
            }

            background: Rectangle {
                radius: Theme.radiusRow
                color: button.hovered ? Theme.hover : "transparent"

                FocusRing {
                    control: button
                    shapeRadius: Theme.radiusRow
                }
            }

            contentItem: Item {
                Row {
                    id: chosen

                    anchors.centerIn: parent
                    spacing: Theme.space6

                    Tile {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: composer.projectID.length > 0
                        size: Theme.tileMini
                        tileIndex: project.tileIndex
                        tileLetter: project.tileLetter
                    }

                    Label {
                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.BodyStrong
                        text: button.text
                    }

                    Icon {
                        anchors.verticalCenter: parent.verticalCenter
                        name: "chevron-down"
                        size: Theme.iconSmall
                        color: Theme.text2
                    }
                }
            }
        }

        Button {
            anchors.verticalCenter: parent.verticalCenter
            controlHeight: Theme.controlSmall
            primary: composer.ready
            enabled: composer.ready
            text: qsTr("Add")
            onClicked: composer.add()
        }
    }

    ProjectChoice {
        id: project

        model: composer.model
    }

    Loader {
        id: chooser

        active: false

        sourceComponent: ProjectChooser {
            parent: button
            x: button.width - width
            y: button.height + Theme.space4
            choice: project
            onChosen: {
                composer.keep();
                field.forceActiveFocus(Qt.OtherFocusReason);
            }
        }
    }
}
