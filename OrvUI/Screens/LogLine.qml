import OrvLauncher.Screens
import QtQuick

// A line of output: its number, its text in its colours, what a search found in it, and whether it reports an error.
Item {
    id: line

    required property int index
    required property int number
    required property string time
    required property string text
    required property var runs
    required property var hits
    required property string error
    property bool wrap: false
    property bool numbered: true
    property bool timed: false
    property int inset: (numbered ? Theme.gutter : Theme.space24) + (timed ? stamp.width + Theme.space12 : 0)
    readonly property bool dark: Theme.isDark
    readonly property int theme: Theme.theme

    // Of the palette when it is one; the plain colour is the item's own.
    function tag(run, body) {
        const inverse = (run.attributes & 16) !== 0;
        const color = inverse ? run.background : run.foreground;
        let out = body;
        if (run.attributes & 1) {
            out = "<b>" + out + "</b>";
        }
        if (run.attributes & 4) {
            out = "<i>" + out + "</i>";
        }
        if (run.attributes & 8) {
            out = "<u>" + out + "</u>";
        }
        if (run.attributes & 64) {
            out = "<s>" + out + "</s>";
        }
        if (run.attributes & 2 && color < 0) {
            return "<font color=\"" + Theme.text3 + "\">" + out + "</font>";
        }
        return color < 0 ? out : "<font color=\"" + Theme.terminalColor(color, line.dark, line.theme) + "\">" + out + "</font>";
    }

    function escaped(text) {
        return text.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/>/g, "&gt;").replace(/ /g, "&nbsp;");
    }

    function styled() {
        let out = "";
        let at = 0;
        for (const run of line.runs) {
            out += line.escaped(line.text.slice(at, run.start)) + line.tag(run, line.escaped(line.text.slice(run.start, run.start + run.length)));
            at = run.start + run.length;
        }
        return out + line.escaped(line.text.slice(at));
    }

    implicitHeight: Math.max(Theme.space20, words.implicitHeight)
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Rectangle {
        visible: line.error.length > 0
        anchors.fill: parent
        color: Theme.dangerSoft

        Rectangle {
            width: Theme.space2
            height: parent.height
            color: Theme.danger
        }
    }

    Label {
        visible: line.numbered
        y: words.baselineOffset - baselineOffset
        width: Theme.gutter - Theme.space16
        horizontalAlignment: Text.AlignRight
        role: Theme.MonoPath
        color: Theme.text3
        text: line.number
    }

    Label {
        id: stamp

        x: line.numbered ? Theme.gutter : Theme.space24
        visible: line.timed
        y: words.baselineOffset - baselineOffset
        width: timeMetrics.advanceWidth("00:00:00.000")
        role: Theme.MonoPath
        color: Theme.text3
        text: line.timed ? line.time : ""
    }

    FontMetrics {
        id: timeMetrics

        font: stamp.font
    }

    FontMetrics {
        id: metrics

        font: words.font
    }

    Repeater {
        model: line.hits

        Rectangle {
            required property var modelData

            x: words.x + modelData.start * metrics.averageCharacterWidth
            width: modelData.length * metrics.averageCharacterWidth
            height: Theme.space20
            radius: Theme.space2
            color: modelData.current ? Theme.warning : Theme.searchHit
        }
    }

    Text {
        id: words

        x: line.inset
        width: line.wrap ? line.width - x - Theme.space12 : implicitWidth
        wrapMode: line.wrap ? Text.WrapAnywhere : Text.NoWrap
        textFormat: line.runs.length > 0 ? Text.StyledText : Text.PlainText
        font: Theme.font(Theme.Console)
        color: line.error === "first" ? Theme.danger : Theme.terminalForeground
        lineHeightMode: Text.FixedHeight
        lineHeight: Theme.space20
        topPadding: Theme.lead(Theme.Console)
        bottomPadding: -Theme.lead(Theme.Console)
        text: line.runs.length > 0 ? line.styled() : line.text
    }
}
