import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T
import QtQml

// The folder in which a project is made: that of all projects, or one in it that groups some.
T.AbstractButton {
    id: place

    property int toldRole: Accessible.ButtonMenu
    required property AppModel model
    // The path.
    property string folder: model.scanRootFolder

    function shown(path) {
        return model.scanRootText + path.slice(model.scanRootFolder.length);
    }

    text: shown(folder)
    implicitHeight: Theme.controlRegular
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: qsTr("Where: %1").arg(text)
    Keys.onReturnPressed: place.clicked()
    Keys.onEnterPressed: place.clicked()
    Keys.onDownPressed: place.clicked()
    onClicked: menu.popup(place, 0, place.height + Theme.space4)

    background: Rectangle {
        radius: Theme.radiusControl
        color: place.enabled ? Theme.field : Theme.control
        border.width: Theme.hairline
        border.color: place.hovered && place.enabled ? Theme.text3 : Theme.borderStrong

        FocusRing {
            control: place
        }
    }

    contentItem: Item {
        Icon {
            id: sign

            x: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            name: "folder"
            color: Theme.text3
        }

        Label {
            id: path

            anchors.left: sign.right
            anchors.leftMargin: Theme.space6
            anchors.right: arrows.left
            anchors.rightMargin: Theme.space6
            anchors.verticalCenter: parent.verticalCenter
            color: place.enabled ? Theme.text : Theme.disabled
            elide: Text.ElideMiddle
            text: place.text

            Tip {
                text: path.truncated ? place.text : ""
            }
        }

        Icon {
            id: arrows

            anchors.right: parent.right
            anchors.rightMargin: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            name: "chevrons-up-down"
            size: Theme.iconSmall
            color: Theme.text2
        }
    }

    Menu {
        id: menu

        width: Math.max(implicitWidth, place.width)

        MenuRow {
            glyph: "folder"
            text: place.model.scanRootText
            onTriggered: place.folder = place.model.scanRootFolder
        }
    }

    Instantiator {
        active: place.visible
        model: place.model.outline
        onObjectAdded: (index, object) => {
            if (object.isFolder) {
                menu.addItem(object as MenuRow);
            }
        }
        onObjectRemoved: (index, object) => menu.removeItem(object as MenuRow)

        MenuRow {
            required property string path
            required property bool isFolder

            glyph: "folder"
            text: place.shown(path)
            onTriggered: place.folder = path
        }
    }
}
