import OrvLauncher.Screens
import QtQuick

// A text of one of the theme's roles, its glyphs centred in the role's line.
Text {
    property int role: Theme.Body

    font: Theme.font(role)
    color: Theme.text
    elide: Text.ElideRight
    textFormat: Text.PlainText
    lineHeightMode: Text.FixedHeight
    lineHeight: Theme.lineHeight(role)
    topPadding: Theme.lead(role)
    bottomPadding: -Theme.lead(role)
    // Qt tells of no text by itself.
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text.length === 0
}
