import OrvLauncher.Screens
import QtQuick

// Beside a terminal's picture: a bell that nobody saw, or a question.
Rectangle {
    width: Theme.space6
    height: width
    radius: width / 2
    color: Theme.accent
}
