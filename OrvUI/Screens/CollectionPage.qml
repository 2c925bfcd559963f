import OrvLauncher.Screens
import QtQuick

// The projects in one folder; as a page of the folder itself, what lies directly in it.
FocusScope {
    id: page

    required property AppModel model
    required property Navigator nav
    property bool narrow: false
    property int padding: Theme.pagePadding
    property real covered: 0
    property string searchText
    readonly property bool scrolled: cards.scrolled

    function focusCards() {
        cards.focusCards();
    }

    Collection {
        id: folder

        model: page.model
        path: page.nav.page === Navigator.Collection || page.nav.page === Navigator.Folder ? page.nav.pageID : path
        nested: page.nav.page === Navigator.Folder
        searchText: page.searchText
    }

    CardGrid {
        id: cards

        anchors.fill: parent
        focus: true
        model: page.model
        nav: page.nav
        cards: folder.cards
        padding: page.padding
        covered: page.covered
        onProjectChosen: projectID => page.nav.project(projectID)
        onCollectionChosen: path => page.nav.folder(path)

        header: Item {
            width: cards.contentWidth
            height: tile.y + Theme.headerTile + Theme.space20 + Theme.controlRegular + Theme.space4

            Rectangle {
                id: tile

                y: Theme.space4
                width: Theme.headerTile
                height: width
                radius: Theme.tileRadius(width)
                color: Theme.accentSoft

                Icon {
                    anchors.centerIn: parent
                    name: "folder"
                    size: Theme.space24
                    color: Theme.accentText
                }
            }

            Label {
                id: name

                anchors.left: tile.right
                anchors.leftMargin: Theme.space16
                anchors.right: newTerminal.left
                anchors.rightMargin: Theme.space16
                y: tile.y + Theme.space2
                role: Theme.Title
                text: folder.name
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }

            Label {
                anchors.left: name.left
                anchors.right: name.right
                anchors.top: name.bottom
                role: Theme.MonoPath
                color: Theme.text3
                elide: Text.ElideMiddle
                text: folder.pathText
            }

            Button {
                id: newTerminal

                anchors.right: parent.right
                anchors.verticalCenter: tile.verticalCenter
                glyph: "square-terminal"
                width: Math.min(implicitWidth, Math.floor(page.width / 3))
                text: page.narrow ? qsTr("New terminal") : qsTr("New terminal in %1").arg(folder.name)
                Accessible.name: qsTr("New terminal in %1").arg(folder.name)
                onClicked: cards.folders.openTerminal(folder.path)
            }

            SectionHeader {
                anchors.bottom: parent.bottom
                anchors.bottomMargin: Theme.space4
                width: parent.width
                text: folder.nested ? qsTr("Contents") : qsTr("Projects")
                count: folder.count
            }
        }
    }

    Loader {
        anchors.centerIn: parent
        active: folder.count === 0

        sourceComponent: EmptyState {
            picture: "no-results"
            heading: page.searchText.length > 0 ? qsTr("No projects match") : qsTr("Nothing here any more")
            text: page.searchText.length > 0 ? qsTr("Try a different search or filter.") : qsTr("The folder has no projects now.")
        }
    }
}
