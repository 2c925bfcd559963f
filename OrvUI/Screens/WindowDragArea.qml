import OrvLauncher.Screens
import QtQuick

// Where the window is taken by the pointer: a drag moves it, a double click maximises it.
Item {
    id: area

    DragHandler {
        target: null
        onActiveChanged: {
            if (active) {
                area.Window.window.startSystemMove();
            }
        }
    }

    TapHandler {
        onDoubleTapped: area.Window.visibility === Window.Maximized ? area.Window.window.showNormal() : area.Window.window.showMaximized()
    }
}
