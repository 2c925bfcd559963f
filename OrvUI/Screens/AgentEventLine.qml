import OrvLauncher.Screens
import QtQuick

// One thing that an agent said or did.
Row {
    id: event

    required property string kind
    required property string icon
    required property string name
    required property string text
    required property bool isCurrent

    spacing: Theme.space10
    Accessible.role: Accessible.StaticText
    Accessible.name: name.length > 0 ? qsTr("%1 %2").arg(name).arg(text) : text

    Loader {
        y: Theme.space2
        width: Theme.icon
        height: Theme.icon
        sourceComponent: event.isCurrent ? busy : glyph

        Component {
            id: busy

            Item {
                Spinner {
                    anchors.centerIn: parent
                    size: Theme.iconMini
                }
            }
        }

        Component {
            id: glyph

            Item {
                Icon {
                    anchors.centerIn: parent
                    size: Theme.iconSmall
                    name: event.icon
                    color: Theme.text2
                }
            }
        }
    }

    Label {
        id: tool

        visible: event.name.length > 0
        role: Theme.BodyStrong
        color: event.isCurrent ? Theme.accentText : Theme.text
        text: event.name
    }

    Label {
        y: tool.visible ? tool.baselineOffset - baselineOffset : 0
        width: event.width - x
        role: event.kind === "tool" ? Theme.MonoPath : Theme.Body
        color: Theme.text2
        wrapMode: event.kind === "tool" ? Text.NoWrap : Text.Wrap
        maximumLineCount: event.kind === "tool" ? 1 : event.text.length + 1
        text: event.text
    }
}
