import OrvLauncher.Screens
import QtQuick

// A heading whose words, where they need two lines, are divided so that both are about as long.
Label {
    id: label

    property string heading

    // One that is divided already stays so.
    function divided(room) {
        if (label.heading.includes("\n") || metrics.advanceWidth(label.heading) <= room) {
            return label.heading;
        }
        const words = label.heading.split(" ");
        let best = "";
        let least = room;
        for (let i = 1; i < words.length; ++i) {
            const first = words.slice(0, i).join(" ");
            const second = words.slice(i).join(" ");
            const widest = Math.max(metrics.advanceWidth(first), metrics.advanceWidth(second));
            if (widest <= least) {
                least = widest;
                best = first + "\n" + second;
            }
        }
        return best.length > 0 ? best : label.heading;
    }

    wrapMode: Text.Wrap
    // Another font, whose height is another, divides anew.
    text: metrics.height > 0 ? divided(Math.floor(width)) : heading
    Accessible.name: heading

    FontMetrics {
        id: metrics

        font: label.font
    }
}
