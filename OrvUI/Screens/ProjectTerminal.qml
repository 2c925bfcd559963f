import OrvLauncher.Screens
import QtQuick

// The terminals, with new ones in the project's folder.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    required property ProjectDetail detail
    property bool narrow: false
    property int padding: Theme.pagePadding

    Wish {
        nav: page.nav
        name: "newTerminal"
        onGranted: terminals.newTerminal()
    }

    TerminalPage {
        id: terminals

        anchors.fill: parent
        anchors.leftMargin: page.padding
        anchors.rightMargin: page.padding
        anchors.topMargin: Theme.space16
        anchors.bottomMargin: Theme.space20
        focus: true
        tabs: page.model.terminalTabs
        model: page.model
        projectID: page.detail.projectID
        folder: page.detail.folderUrl
        folderName: page.detail.name
        onProjectAsked: projectID => page.nav.project(projectID, 2)
        onHinted: text => page.model.showStatus(text, false)
        onLinkActivated: link => page.nav.followLink(link)
        onFileActivated: (path, line, column) => page.model.openFile(path, line, column)
    }
}
