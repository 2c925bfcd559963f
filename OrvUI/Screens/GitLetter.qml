import OrvLauncher.Screens
import QtQuick

// What happened to a file, as git's letter.
Rectangle {
    id: box

    required property string letter
    property bool plain: false
    readonly property var tints: ({
            "A": Theme.success,
            "D": Theme.danger,
            "U": Theme.danger,
            "M": Theme.warning,
            "T": Theme.warning
        })
    readonly property var fills: ({
            "A": Theme.successSoft,
            "D": Theme.dangerSoft,
            "U": Theme.dangerSoft,
            "M": Theme.warningSoft,
            "T": Theme.warningSoft
        })

    implicitWidth: Theme.space16 + Theme.space2
    implicitHeight: implicitWidth
    radius: Theme.radiusKey + Theme.hairline
    color: box.plain ? "transparent" : box.fills[box.letter] ?? Theme.infoSoft
    border.width: box.plain ? 0 : Theme.softEdge
    border.color: box.tints[box.letter] ?? Theme.info
    Accessible.ignored: true

    Label {
        anchors.centerIn: parent
        font.family: Theme.font(Theme.MonoPath).family
        font.pixelSize: Theme.font(Theme.MonoPath).pixelSize
        font.bold: true
        role: Theme.MonoPath
        color: box.tints[box.letter] ?? Theme.info
        text: box.letter
    }
}
