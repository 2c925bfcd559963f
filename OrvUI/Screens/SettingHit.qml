import OrvLauncher.Screens
import QtQuick

// Stands over a setting that was looked for: the keys go from one to the next, and Return leads to where it is at home.
Item {
    id: hit

    required property string name
    // All of the setting.
    property Item home: parent
    // The section that it is in; null elsewhere than on the settings page.
    readonly property SettingsPart part: {
        let above = hit.parent;
        while (above !== null && (above as SettingsPart) === null) {
            above = above.parent;
        }
        return above as SettingsPart;
    }

    anchors.fill: parent
    // Qt lets nothing that has the focus be no stop of Tab any more.
    activeFocusOnTab: activeFocus || (part?.searches ?? false)
    Accessible.ignored: !activeFocusOnTab
    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.focusable: activeFocusOnTab

    FocusRing {
        control: hit
        inside: true
        shapeRadius: Theme.radiusCard
    }
}
