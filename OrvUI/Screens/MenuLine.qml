import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

T.MenuSeparator {
    implicitHeight: Theme.space12 + Theme.hairline
    verticalPadding: Theme.space6

    contentItem: Rectangle {
        implicitHeight: Theme.hairline
        color: Theme.border
    }
}
