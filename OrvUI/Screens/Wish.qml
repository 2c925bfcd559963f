import OrvLauncher.Screens
import QtQuick

// Does what was asked of its page from elsewhere, as soon as the page is there.
Item {
    id: wish

    required property Navigator nav
    required property string name
    signal granted

    Timer {
        id: look

        interval: 0
        running: true
        onTriggered: {
            if (wish.nav.take(wish.name)) {
                wish.granted();
            }
        }
    }

    Connections {
        target: wish.nav

        function onWishChanged() {
            look.restart();
        }
    }
}
