import QtQuick
import QtQuick.Templates as T

// In the background of a modal popup: hears of taps beside it. Its scrim hears of none, for the overlay keeps them.
Item {
    id: beside

    required property T.Popup popup
    signal tapped

    x: -popup.x
    y: -popup.y
    width: popup.parent?.width ?? 0
    height: popup.parent?.height ?? 0

    TapHandler {
        onTapped: point => {
            if (!beside.parent.contains(beside.mapToItem(beside.parent, point.position))) {
                beside.tapped();
            }
        }
    }
}
