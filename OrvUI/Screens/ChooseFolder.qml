import OrvLauncher.Screens
import QtQuick.Dialogs

// Asks for the folder to scan. Made when it is first needed: the dialogs take longer to load than the window.
FolderDialog {
    title: qsTr("Choose the folder of your projects")
}
