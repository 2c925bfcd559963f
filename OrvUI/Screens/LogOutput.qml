import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The lines of a service's output: to read, to follow, to select and copy, with links.
FocusScope {
    id: output

    required property ServiceLogs logs
    required property LogTools tools
    // Its name.
    property string service
    readonly property int topRow: Math.max(0, view.indexAt(0, view.contentY))
    signal linkActivated(url link)
    signal fileActivated(string path, int line, int column)

    function followEnd() {
        output.tools.follow = true;
        view.positionViewAtEnd();
    }

    Connections {
        target: output.logs.lines

        function onMatchAsked() {
            if (output.logs.lines.currentMatchRow >= 0) {
                output.tools.follow = false;
                view.positionViewAtIndex(output.logs.lines.currentMatchRow, ListView.Center);
                pane.revealMatch();
            }
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: Theme.radiusCard
        color: Theme.terminalBackground
        border.width: Theme.hairline
        border.color: Theme.border

        ListView {
            id: view

            function keepUp() {
                if (output.tools.follow) {
                    positionViewAtEnd();
                }
            }

            function scrollBy(by) {
                const end = Math.max(originY, originY + contentHeight - height);
                contentY = Math.max(originY, Math.min(end, contentY + by));
            }

            anchors.fill: parent
            anchors.margins: Theme.hairline
            anchors.topMargin: Theme.space8
            anchors.bottomMargin: Theme.space8
            clip: true
            focus: true
            activeFocusOnTab: true
            boundsBehavior: Flickable.StopAtBounds
            pixelAligned: true
            reuseItems: true
            // None ahead of need: Qt goes on asking for those whose rows have gone.
            cacheBuffer: 0
            model: output.logs.lines
            Accessible.role: Accessible.List
            Accessible.name: output.service.length > 0 ? qsTr("Output of %1").arg(output.service) : qsTr("Output")
            // The rows may be there before the view has its size.
            onCountChanged: soon.start()
            onHeightChanged: soon.start()
            onContentHeightChanged: soon.start()
            onMovementStarted: output.tools.follow = false
            onMovementEnded: output.tools.follow = atYEnd
            Keys.forwardTo: [pane]
            Keys.onPressed: event => {
                const pageful = height * 0.9;
                const moves = {
                    [Qt.Key_Home]: originY - contentY,
                    [Qt.Key_End]: originY + contentHeight - height - contentY,
                    [Qt.Key_PageUp]: -pageful,
                    [Qt.Key_PageDown]: pageful,
                    [Qt.Key_Up]: -Theme.space20,
                    [Qt.Key_Down]: Theme.space20
                };
                if (moves[event.key] !== undefined) {
                    event.accepted = true;
                    const isDown = [Qt.Key_End, Qt.Key_PageDown, Qt.Key_Down].includes(event.key);
                    output.tools.follow = isDown && contentY + moves[event.key] >= originY + contentHeight - height;
                    scrollBy(moves[event.key]);
                }
            }

            delegate: LogLine {
                required content
                required number
                required time

                width: view.width
                wrap: output.tools.wrap
                timed: output.tools.timed
                offset: pane.offset
                selection: output.logs.selection
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            Timer {
                id: soon

                interval: 0
                onTriggered: view.keepUp()
            }

            T.ScrollBar.vertical: ScrollBar {
                id: bar

                onPressedChanged: output.tools.follow = !pressed && view.atYEnd
            }
        }

        LogPane {
            id: pane

            anchors.fill: view
            anchors.rightMargin: Theme.scrollBar
            view: view
            selection: output.logs.selection
            folders: output.logs.folders
            onHeld: output.tools.follow = false
            onScrollAsked: by => view.scrollBy(by)
            onRowReached: row => view.positionViewAtIndex(row, ListView.Contain)
            onLinkActivated: link => output.linkActivated(link)
            onFileActivated: (path, line, column) => output.fileActivated(path, line, column)
            onMenuAsked: place => {
                menu.active = true;
                (menu.item as Menu).popup(pane, place.x, place.y);
            }
        }

        LogMarks {
            anchors.right: view.right
            anchors.rightMargin: Theme.space2
            anchors.top: view.top
            anchors.bottom: view.bottom
            width: Theme.scrollBar - 2 * Theme.space2
            visible: bar.visible
            lines: output.logs.lines
        }

        // Where a link leads, whatever its words say.
        Rectangle {
            anchors.left: view.left
            anchors.bottom: view.bottom
            anchors.margins: Theme.space8
            visible: address.text.length > 0
            width: Math.min(address.implicitWidth, view.width - Theme.space32) + Theme.space16
            height: Theme.space24
            radius: Theme.radiusControl
            color: Theme.raised
            border.width: Theme.hairline
            border.color: Theme.borderStrong

            Label {
                id: address

                x: Theme.space8
                anchors.verticalCenter: parent.verticalCenter
                width: parent.width - 2 * x
                role: Theme.MonoPath
                color: Theme.text2
                elide: Text.ElideMiddle
                text: pane.hoveredLink.length === 0 || pane.opensLink ? pane.hoveredLink : qsTr("%1 click opens %2").arg(Qt.platform.os === "osx" ? "⌘" : "Ctrl").arg(pane.hoveredLink)
            }
        }

        Button {
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Theme.space16
            visible: !output.tools.follow && !view.atYEnd && view.count > 0
            glyph: "arrow-down-to-line"
            text: qsTr("Jump to latest")
            onClicked: output.followEnd()
        }

        Label {
            anchors.centerIn: parent
            visible: view.count === 0
            color: Theme.text3
            text: output.logs.lines.filterText.length > 0 || output.logs.lines.onlyErrors ? qsTr("No such line so far") : qsTr("Nothing printed so far")
        }
    }

    Loader {
        id: menu

        active: false

        sourceComponent: Menu {
            MenuRow {
                enabled: pane.menuLink.length > 0
                text: qsTr("Open link")
                onTriggered: pane.openMenuLink()
            }

            MenuRow {
                enabled: pane.menuLink.length > 0
                text: qsTr("Copy link")
                onTriggered: Clipboard.copy(pane.menuLink)
            }

            MenuLine {}

            MenuRow {
                enabled: !output.logs.selection.isEmpty
                text: qsTr("Copy")
                shortcut: Keymap.text("copySelected")
                onTriggered: Clipboard.copy(output.logs.selection.text())
            }

            MenuRow {
                text: qsTr("Copy line")
                onTriggered: Clipboard.copy(pane.menuLine)
            }

            MenuRow {
                text: qsTr("Select all")
                shortcut: Keymap.text("selectLogs")
                onTriggered: output.logs.selection.selectAll()
            }

            onClosed: view.forceActiveFocus(Qt.PopupFocusReason)
        }
    }

    Connections {
        target: output.tools

        function onWrapChanged() {
            pane.offset = 0;
        }
    }

    Connections {
        target: output.logs

        function onShownChanged() {
            pane.offset = 0;
        }
    }

    ListShortcut {
        sequences: Keymap.of("copySelected")
        enabled: view.activeFocus && !output.logs.selection.isEmpty
        onActivated: Clipboard.copy(output.logs.selection.text())
    }

    ListShortcut {
        sequences: Keymap.of("selectLogs")
        onActivated: output.logs.selection.selectAll()
    }

    ListShortcut {
        sequences: Keymap.of("menu")
        onActivated: pane.askMenu()
    }

    component ListShortcut: Shortcut {
        enabled: view.activeFocus
    }
}
