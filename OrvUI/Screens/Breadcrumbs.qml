import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The way from the home page to this one. All but the last lead back.
Row {
    id: trail

    required property var crumbs
    // How wide the longest parts may be, so that all of them have room.
    readonly property real share: {
        const wants = Array.from({
            "length": parts.count
        }, (unused, index) => parts.itemAt(index)?.wanted ?? 0).sort((a, b) => a - b);
        let rest = trail.width - (wants.length - 1) * (Theme.iconSmall + 2 * Theme.crumbGap);
        for (let i = 0; i < wants.length; ++i) {
            const even = rest / (wants.length - i);
            if (wants[i] > even) {
                return Math.max(0, Math.floor(even));
            }
            rest -= wants[i];
        }
        return Infinity;
    }
    signal chosen(int index)

    spacing: Theme.crumbGap
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Way to this page")

    Repeater {
        id: parts

        model: trail.crumbs

        Row {
            id: part

            required property var modelData
            required property int index
            readonly property real wanted: Math.ceil(label.implicitWidth)
            readonly property bool isLast: index === trail.crumbs.length - 1

            spacing: Theme.crumbGap

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: part.index > 0
                name: "chevron-right"
                size: Theme.iconSmall
                color: Theme.text3
            }

            // The last one takes no pointer itself.
            Tip {
                text: label.truncated ? crumb.text : ""
            }

            T.AbstractButton {
                id: crumb

                property int toldRole: part.isLast ? Accessible.Heading : Accessible.Link

                enabled: !part.isLast
                implicitWidth: Math.min(part.wanted, trail.share)
                implicitHeight: Theme.controlMini
                focusPolicy: part.isLast ? Qt.NoFocus : Qt.StrongFocus
                hoverEnabled: true
                text: part.modelData.title
                Accessible.role: toldRole
                Accessible.name: text
                Keys.onReturnPressed: crumb.clicked()
                Keys.onEnterPressed: crumb.clicked()
                onClicked: trail.chosen(part.index)

                background: Item {
                    FocusRing {
                        control: crumb
                        shapeRadius: Theme.radiusKey
                    }
                }

                contentItem: Item {
                    Label {
                        id: label

                        anchors.verticalCenter: parent.verticalCenter
                        width: crumb.width
                        role: Theme.BodyStrong
                        elide: Text.ElideMiddle
                        color: part.isLast || crumb.hovered ? Theme.text : Theme.text2
                        text: crumb.text
                    }
                }
            }
        }
    }
}
