import OrvLauncher.Screens
import QtQuick

// Settings below a heading, as far as they are looked for.
Column {
    id: block

    property string heading
    property bool hasHeading: true
    // It is one setting, not several.
    property bool single: true
    // What is looked for; empty: everything is shown.
    property string search
    // By what they are found besides their own names.
    property string also

    // Whether a setting with these words is among what is looked for: each of the words begins or is within one.
    function finds(words) {
        const all = (block.heading + "\n" + block.also + "\n" + words).toLocaleLowerCase();
        return block.search.toLocaleLowerCase().split(" ").every(word => all.includes(word));
    }

    spacing: Theme.space12

    Label {
        visible: block.hasHeading && text.length > 0
        role: Theme.Section
        text: block.heading
        Accessible.role: Accessible.Heading
        Accessible.name: text

        SettingHit {
            anchors.margins: -Theme.space6
            visible: block.single
            home: block
            name: block.heading
        }
    }
}
