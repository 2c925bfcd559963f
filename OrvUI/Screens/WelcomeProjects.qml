import OrvLauncher.Screens
import QtQuick

// The folder that is scanned, and what is found in it.
WelcomePage {
    id: page

    readonly property bool found: form.detectedCount > 0
    // What is typed stays as it is typed.
    property bool typing: false
    // What is typed is looked through once the typing rests.
    readonly property bool looking: form.isScanning || rest.running
    signal folderRequested

    function take() {
        rest.stop();
        page.typing = false;
        page.form.folder = field.text;
        page.form.scanFolder();
    }

    spacing: Theme.space16
    title: qsTr("Where are your projects?")
    text: qsTr("OrvLauncher looks through this folder for anything it can run. It changes nothing in it.")
    Component.onCompleted: {
        field.text = form.folderText;
        form.scanFolder();
    }

    Timer {
        id: rest

        interval: 500
        onTriggered: page.form.scanFolder()
    }

    Connections {
        target: page.form

        function onChanged() {
            if (!page.typing) {
                field.text = page.form.folderText;
            }
        }
    }

    FormField {
        width: parent.width
        label: qsTr("Projects folder")
        error: page.form.folderExists ? "" : page.form.canMakeFolder ? qsTr("There is no such folder.") : qsTr("This is no folder.")

        Field {
            id: field

            width: parent.width - choose.width - Theme.space8
            implicitHeight: Theme.fieldLarge
            focus: true
            glyph: "folder"
            code: true
            font: Theme.font(Theme.Console)
            corner: Theme.radiusLarge
            wrong: !page.form.folderExists
            placeholderText: qsTr("Projects folder")
            onTextEdited: {
                page.typing = true;
                page.form.folder = text;
                rest.restart();
            }
            onEditingFinished: page.take()
        }

        Button {
            id: choose

            anchors.right: parent.right
            controlHeight: Theme.fieldLarge
            corner: Theme.radiusLarge
            leftPadding: Theme.space16 + Theme.space2
            rightPadding: leftPadding
            text: qsTr("Choose…")
            Accessible.name: qsTr("Choose the projects folder")
            onClicked: page.folderRequested()
        }
    }

    Button {
        visible: page.form.canMakeFolder && !page.typing
        controlHeight: Theme.fieldLarge
        corner: Theme.radiusLarge
        text: qsTr("Make this folder")
        onClicked: page.form.makeFolder()
    }

    Rectangle {
        width: parent.width
        height: Theme.headerTile
        visible: page.form.folderExists
        radius: Theme.radiusCard
        color: page.found && !page.looking ? Theme.successSoft : Theme.sunken

        Row {
            anchors.verticalCenter: parent.verticalCenter
            x: Theme.space16
            spacing: Theme.space12

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: !page.looking
                name: page.found ? "circle-check" : "folder-search"
                size: Theme.iconLarge
                color: page.found ? Theme.success : Theme.text2
            }

            Spinner {
                anchors.verticalCenter: parent.verticalCenter
                visible: page.looking
                size: Theme.iconLarge
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                visible: page.looking || !page.found
                color: Theme.text2
                text: page.looking ? qsTr("Looking for projects…") : qsTr("Nothing to run here yet. You can add projects later.")
            }

            Row {
                anchors.verticalCenter: parent.verticalCenter
                visible: page.found && !page.looking
                spacing: Theme.space4
                Accessible.role: Accessible.StaticText
                Accessible.name: folders.visible ? qsTr("%1 %2").arg(count.text).arg(folders.text) : count.text

                Label {
                    id: count

                    role: Theme.Section
                    text: page.form.detectedCount === 1 ? qsTr("1 project found") : qsTr("%1 projects found").arg(page.form.detectedCount)
                }

                Label {
                    id: folders

                    visible: page.form.detectedFolders > 0
                    color: Theme.text2
                    text: page.form.detectedFolders === 1 ? qsTr("in 1 folder") : qsTr("in %1 folders").arg(page.form.detectedFolders)
                }
            }
        }
    }
}
