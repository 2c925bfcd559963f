#include "OrvUI/Shortcuts.h"

#include "OrvUI/Keymap.h"

namespace orv {

using namespace Qt::StringLiterals;

const std::vector<RowRole<ShortcutRow>>& ShortcutRow::roles() {
    static const std::vector<RowRole<ShortcutRow>> table{
        memberRole<&ShortcutRow::group, ShortcutRow>("group"),
        memberRole<&ShortcutRow::action, ShortcutRow>("action"),
        memberRole<&ShortcutRow::keys, ShortcutRow>("keys"),
        memberRole<&ShortcutRow::terminalKeys, ShortcutRow>("terminalKeys"),
    };
    return table;
}

Shortcuts::Shortcuts(QObject* parent) : RowModel(parent) {
    setSearchText({});
}

void Shortcuts::setSearchText(const QString& wanted) {
    QList<ShortcutRow> rows;
    for (const Keymap::Entry& entry : Keymap::entries()) {
        ShortcutRow row{
            QString::fromLatin1(entry.id),
            QCoreApplication::translate("Shortcuts", entry.group),
            QCoreApplication::translate("Shortcuts", entry.action),
            {},
            Keymap::keys(Keymap::inTerminal(entry))};
        QStringList texts{Keymap::textOf(Keymap::inTerminal(entry))};
        for (const QString& sequence : Keymap::shown(entry)) {
            row.keys += row.keys.isEmpty() ? Keymap::keys(sequence) : QStringList(QString()) + Keymap::keys(sequence);
            texts.append(Keymap::textOf(sequence));
        }
        const QString all = row.group + u'\n' + row.action + u'\n' + texts.join(u'\n');
        if (all.contains(wanted.trimmed(), Qt::CaseInsensitive)) {
            rows.append(row);
        }
    }
    setRows(rows);
    if (wanted != m_searchText) {
        m_searchText = wanted;
        Q_EMIT searchTextChanged();
    }
}

} // namespace orv
