import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A choice of a few; the arrows move it.
T.Control {
    id: segmented

    property int toldRole: Accessible.PageTabList
    // One record each: text, count, glyph, the state of a service, a note behind the text (any may be missing); without a
    // text a name.
    required property var choices
    property int currentIndex: 0
    property string name
    // Parts that fill the width it is given: equal, but for those whose words need more.
    property bool stretched: false
    signal chosen(int index)

    // How wide each part is when all of them fill that width; what rounding leaves goes to the last.
    function spread(needs, whole) {
        const equal = Math.floor(whole / Math.max(1, needs.length));
        const taken = share => needs.reduce((sum, need) => sum + Math.max(need, share), 0);
        let share = equal;
        while (share > 0 && taken(share) > whole) {
            share -= 1;
        }
        // Equal too where not even their words have room.
        const widths = needs.map(need => share > 0 ? Math.max(need, share) : equal);
        const rest = whole - widths.reduce((sum, width) => sum + width, 0);
        return widths.map((width, index) => index === widths.length - 1 ? width + rest : width);
    }

    implicitHeight: Theme.controlRegular
    implicitWidth: row.implicitWidth + 2 * Theme.space2
    focusPolicy: Qt.StrongFocus
    Accessible.role: toldRole
    Accessible.name: name
    Keys.onLeftPressed: segmented.chosen(Math.max(0, currentIndex - 1))
    Keys.onRightPressed: segmented.chosen(Math.min(choices.length - 1, currentIndex + 1))

    background: Rectangle {
        radius: Theme.radiusControl
        color: Theme.sunken
        border.width: Theme.hairline
        border.color: Theme.border

        FocusRing {
            control: segmented
        }
    }

    contentItem: Item {
        Row {
            id: row

            readonly property var widths: segmented.stretched ? segmented.spread(Array.from({
                "length": parts.count
            }, (unused, index) => parts.itemAt(index)?.implicitWidth ?? 0), Math.floor(segmented.width) - 2 * Theme.space2) : []

            x: Theme.space2
            height: parent.height

            Repeater {
                id: parts

                model: segmented.choices

                T.AbstractButton {
                    id: segment

                    property int toldRole: Accessible.RadioButton
                    required property var modelData
                    required property int index
                    readonly property bool isCurrent: index === segmented.currentIndex

                    // Beside its words; those end in an ellipsis where it is narrower than they need.
                    readonly property real besides: (modelData.state !== undefined ? dot.width + content.spacing : 0) + (modelData.glyph !== undefined ? sign.width + content.spacing : 0) + (number.text.length > 0 ? number.implicitWidth + content.spacing : 0) + (hint.text.length > 0 ? hint.implicitWidth + content.spacing : 0)
                    readonly property real wanted: words.text.length > 0 ? besides + words.implicitWidth : besides - content.spacing

                    height: row.height
                    implicitWidth: Math.ceil(wanted) + (segmented.stretched ? Theme.space16 + Theme.space20 : modelData.text === undefined ? Theme.space16 : Theme.space24)
                    width: row.widths[index] ?? implicitWidth
                    focusPolicy: Qt.NoFocus
                    hoverEnabled: true
                    Accessible.role: toldRole
                    Accessible.name: modelData.count === undefined ? modelData.text ?? modelData.name : qsTr("%1, %2").arg(modelData.text).arg(modelData.count)
                    Accessible.checked: isCurrent
                    onClicked: segmented.chosen(index)

                    background: Rectangle {
                        anchors.fill: parent
                        anchors.topMargin: Theme.space2
                        anchors.bottomMargin: Theme.space2
                        radius: Theme.radiusControl - Theme.space2
                        color: segment.isCurrent ? Theme.segOn : segment.hovered ? Theme.hover : "transparent"
                        border.width: segment.isCurrent ? Theme.hairline : 0
                        border.color: Qt.tint(Theme.segOn, Theme.buttonEdge)
                    }

                    Tip {
                        text: words.truncated ? words.text : segment.modelData.name ?? ""
                        shortcut: segment.modelData.shortcut ?? ""
                    }

                    contentItem: Item {
                        implicitWidth: segment.wanted

                        Row {
                            id: content

                            anchors.centerIn: parent
                            spacing: Theme.space6

                            StatusDot {
                                id: dot

                                anchors.verticalCenter: parent.verticalCenter
                                width: Theme.dot
                                visible: segment.modelData.state !== undefined
                                halo: true
                                cardState: segment.modelData.state ?? "idle"
                            }

                            Icon {
                                id: sign

                                anchors.verticalCenter: parent.verticalCenter
                                visible: segment.modelData.glyph !== undefined
                                name: segment.modelData.glyph ?? ""
                                color: segment.isCurrent ? Theme.text : Theme.text2
                            }

                            Label {
                                id: words

                                anchors.verticalCenter: parent.verticalCenter
                                width: Math.max(0, Math.min(Math.ceil(implicitWidth), segment.width - segment.besides - Theme.space16))
                                visible: text.length > 0
                                role: Theme.BodyStrong
                                color: segment.isCurrent ? Theme.text : Theme.text2
                                text: segment.modelData.text ?? ""
                            }

                            Figures {
                                id: number

                                anchors.verticalCenter: parent.verticalCenter
                                visible: text.length > 0
                                color: Theme.text3
                                text: segment.modelData.count ?? ""
                            }

                            Label {
                                id: hint

                                anchors.verticalCenter: parent.verticalCenter
                                visible: text.length > 0
                                role: Theme.MonoPath
                                color: Theme.text3
                                text: segment.modelData.note ?? ""
                            }
                        }
                    }
                }
            }
        }
    }
}
