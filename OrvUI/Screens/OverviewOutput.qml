import OrvLauncher.Screens
import QtQuick

// The last lines that a project's services printed.
Column {
    id: output

    required property AppModel model
    required property string projectID
    property int boxHeight: Theme.overviewOutput
    signal logsAsked

    visible: services.count > 0
    spacing: Theme.space8

    Binding {
        target: output.model.logs
        property: "projectID"
        value: output.projectID
    }

    Item {
        width: parent.width
        height: Theme.space28

        Label {
            id: heading

            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Section
            text: qsTr("Latest output")
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        ServiceChoice {
            id: services

            anchors.right: more.left
            anchors.rightMargin: Theme.space12
            anchors.verticalCenter: parent.verticalCenter
            visible: count > 1
            ports: false
            dots: false
            logs: output.model.logs
            room: more.x - Theme.space12 - heading.width - Theme.space16
        }

        Button {
            id: more

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            ghost: true
            controlHeight: Theme.controlSmall
            glyph: "arrow-right"
            glyphSize: Theme.iconSmall
            glyphLast: true
            text: qsTr("Open logs")
            onClicked: output.logsAsked()
        }
    }

    Rectangle {
        width: parent.width
        height: output.boxHeight
        radius: Theme.radiusCard
        color: Theme.terminalBackground
        border.width: Theme.hairline
        border.color: Theme.border

        ListView {
            id: view

            anchors.fill: parent
            anchors.margins: Theme.hairline
            anchors.topMargin: Theme.space12
            anchors.bottomMargin: Theme.space8
            clip: true
            interactive: false
            reuseItems: true
            // None ahead of need: Qt goes on asking for those whose rows have gone.
            cacheBuffer: 0
            model: output.model.logs.lines
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Latest output of %1").arg(services.shownText)
            onCountChanged: positionViewAtEnd()
            onHeightChanged: positionViewAtEnd()
            Component.onCompleted: positionViewAtEnd()

            delegate: LogLine {
                required content

                width: view.width
                numbered: false
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }

        Label {
            anchors.centerIn: parent
            visible: view.count === 0
            color: Theme.text3
            text: qsTr("Nothing printed so far")
        }
    }
}
