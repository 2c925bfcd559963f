import QtQuick

// The parts of the window one after another, each where one left it.
QtObject {
    id: regions

    required property Window target
    required property list<Item> parts

    function isIn(item, part) {
        for (let at = item; at; at = at.parent) {
            if (at === part) {
                return true;
            }
        }
        return false;
    }

    function go(step) {
        let from = -1;
        for (let i = 0; i < parts.length; ++i) {
            if (isIn(target.activeFocusItem, parts[i])) {
                from = i;
            }
        }
        const part = parts[(from + step + parts.length) % parts.length];
        const reason = step > 0 ? Qt.TabFocusReason : Qt.BacktabFocusReason;
        part.forceActiveFocus(reason);
        if (!target.activeFocusItem?.activeFocusOnTab && part.nextItemInFocusChain() !== null) {
            part.nextItemInFocusChain().forceActiveFocus(reason);
        }
    }
}
