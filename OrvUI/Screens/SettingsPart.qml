import OrvLauncher.Screens
import QtQuick

// A section of the settings, whole where it is the one that is shown, or what is looked for in it.
Column {
    id: part

    required property var modelData
    required property int index
    required property AppModel model
    required property Navigator nav
    required property SettingsForm form
    // What is looked for in all of them; empty: nothing is.
    required property string wanted
    readonly property bool searches: wanted.length > 0
    readonly property bool isCurrent: nav.page === Navigator.Settings && nav.section === index
    readonly property bool isNeeded: searches || isCurrent
    // By its own name all of it is found.
    readonly property string search: modelData.text.toLocaleLowerCase().includes(wanted.toLocaleLowerCase()) ? "" : wanted
    readonly property bool hasMatches: ((section.item as Item)?.implicitHeight ?? 0) > 0
    // Where the next one stands.
    readonly property real below: visible && height > 0 ? y + height + Theme.space16 : y
    signal folderRequested

    function show() {
        if (!isNeeded) {
            section.source = "";
        } else if (section.item === null) {
            section.setSource(modelData.source, {
                "model": part.model,
                "form": part.form,
                "search": Qt.binding(() => part.search)
            });
        }
    }

    visible: isNeeded
    spacing: Theme.space16
    Component.onCompleted: show()
    onIsNeededChanged: isNeeded ? show() : leaving.restart()

    Label {
        visible: !part.searches || part.hasMatches
        height: Theme.space40
        verticalAlignment: Text.AlignVCenter
        role: part.searches ? Theme.Title : Theme.Page
        text: part.modelData.text
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    Loader {
        id: section

        width: parent.width
    }

    // A search ends before the page is told its section: what both need stays.
    Timer {
        id: leaving

        interval: 0
        onTriggered: part.show()
    }

    Connections {
        target: section.item
        ignoreUnknownSignals: true

        function onFolderRequested() {
            part.folderRequested();
        }
    }
}
