import OrvLauncher.Screens
import QtQuick

// A field with its label above and, when something is wrong with it or odd, what.
Column {
    id: form

    property string label
    property string error
    // What is to be thought over, and can be left as it is.
    property string caution
    default property alias field: place.data

    spacing: Theme.space6

    Label {
        role: Theme.SmallStrong
        color: Theme.text2
        text: form.label
    }

    Item {
        id: place

        width: parent.width
        height: childrenRect.height
    }

    Label {
        width: parent.width
        visible: text.length > 0
        role: Theme.Small
        color: form.error.length > 0 ? Theme.danger : Theme.warning
        wrapMode: Text.Wrap
        elide: Text.ElideNone
        text: form.error.length > 0 ? form.error : form.caution
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
}
