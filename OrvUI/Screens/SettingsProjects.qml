import OrvLauncher.Screens
import QtQuick

// Corrections of what was detected, one service a row that unfolds.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form
    // What is looked for among the settings; empty: everything is shown.
    property string search
    property string openKey

    topPadding: search.length > 0 ? 0 : -Theme.space12
    spacing: Theme.space12

    readonly property OverrideRows rows: OverrideRows {
        model: section.model
        filter: section.search.length > 0 ? section.search : field.text
    }

    Label {
        width: parent.width
        visible: section.search.length === 0
        color: Theme.text2
        bottomPadding: Theme.space8
        wrapMode: Text.Wrap
        text: qsTr("Correct what OrvLauncher detected. A change holds for one service.")
    }

    Field {
        id: field

        width: parent.width
        visible: section.search.length === 0
        glyph: "search"
        clearable: true
        placeholderText: qsTr("Find a service")
        onCleared: text = ""
    }

    CardFace {
        width: parent.width
        height: list.height
        visible: list.height > 0

        Column {
            id: list

            width: parent.width

            Repeater {
                model: section.rows

                OverrideItem {
                    width: list.width
                    open: section.openKey === key
                    onToggled: section.openKey = section.openKey === key ? "" : key
                    onSaved: (command, port, kind) => {
                        error = section.rows.save(key, command, port, kind);
                        if (error.length === 0) {
                            section.openKey = "";
                        }
                    }
                    onResetRequested: {
                        section.openKey = "";
                        section.rows.reset(key);
                    }
                }
            }
        }
    }

    Label {
        visible: list.height === 0 && section.search.length === 0
        color: Theme.text3
        text: field.text.length > 0 ? qsTr("No service matches.") : qsTr("No services were found yet.")
    }
}
