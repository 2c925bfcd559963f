import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// One line for a new to-do item; where no project is given, with the project that it is for.
FocusScope {
    id: composer

    required property AppModel model
    // Given: the project whose list this is.
    property string fixedProjectID
    property string projectID: fixedProjectID
    property string projectName
    property int tileIndex: 0
    property string tileLetter
    readonly property bool ready: field.text.trim().length > 0 && projectID.length > 0
    signal added(string title, string projectID)

    function focusField() {
        field.forceActiveFocus(Qt.ShortcutFocusReason);
    }

    function add() {
        if (ready) {
            composer.added(field.text.trim(), composer.projectID);
            field.clear();
        } else if (projectID.length === 0) {
            choose.clicked();
        }
    }

    implicitHeight: Theme.composerHeight

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
        onAccepted: composer.add()
        Keys.onEscapePressed: event => {
            event.accepted = text.length > 0;
            text = "";
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
            id: choose

            anchors.verticalCenter: parent.verticalCenter
            visible: composer.fixedProjectID.length === 0
            implicitWidth: chosen.implicitWidth + Theme.space16
            implicitHeight: Theme.controlSmall
            focusPolicy: Qt.StrongFocus
            hoverEnabled: true
            text: composer.projectName.length > 0 ? composer.projectName : qsTr("Choose a project")
            Accessible.role: Accessible.ButtonMenu
            Accessible.name: qsTr("Project: %1").arg(text)
            Keys.onReturnPressed: choose.clicked()
            onClicked: {
                projects.active = true;
                const entries = projects.item as Menu;
                entries.popup(choose, choose.width - entries.width, choose.height + Theme.space4);
            }

            background: Rectangle {
                radius: Theme.radiusRow
                color: choose.hovered ? Theme.hover : "transparent"

                FocusRing {
                    control: choose
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
                        tileIndex: composer.tileIndex
                        tileLetter: composer.tileLetter
                    }

                    Label {
                        anchors.verticalCenter: parent.verticalCenter
                        role: Theme.BodyStrong
                        text: choose.text
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

    Loader {
        id: projects

        active: false

        sourceComponent: Menu {
            id: menu

            ProjectChoices {
                id: choices

                model: composer.model
            }

            Instantiator {
                model: choices.rows
                onObjectAdded: (index, object) => menu.insertItem(index, object as MenuRow)
                onObjectRemoved: (index, object) => menu.removeItem(object as MenuRow)

                MenuRow {
                    required property string name
                    required property string projectID
                    required property int tileIndex
                    required property string tileLetter

                    text: name
                    onTriggered: {
                        composer.projectID = projectID;
                        composer.projectName = name;
                        composer.tileIndex = tileIndex;
                        composer.tileLetter = tileLetter;
                        field.forceActiveFocus(Qt.OtherFocusReason);
                    }
                }
            }
        }
    }
}
