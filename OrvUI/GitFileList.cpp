#include "OrvUI/GitFileList.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

GitFileRow heading(const QString& section, qsizetype count) {
    GitFileRow row;
    row.key = u"heading/"_s + section;
    row.kind = u"heading"_s;
    row.section = section;
    row.count = static_cast<int>(count);
    return row;
}

void append(QList<GitFileRow>& rows, const QString& section, const QList<ChangeRow>& changes, qsizetype count) {
    if (count == 0) {
        return;
    }
    rows.append(heading(section, count));
    for (const ChangeRow& change : changes) {
        rows.append({
            .key = section + u'/' + change.key,
            .kind = u"file"_s,
            .section = section,
            .path = change.key,
            .name = change.name,
            .folder = change.originalName.isEmpty() ? change.folder : u"\u2190 "_s + change.originalName,
            .letter = change.letter,
            .word = change.word,
            .count = 0,
        });
    }
    if (count > changes.size()) {
        GitFileRow more = heading(section, count - changes.size());
        more.key = u"more/"_s + section;
        more.kind = u"more"_s;
        rows.append(more);
    }
}

bool canBeChosen(const GitFileRow& row) {
    return row.kind == "file"_L1 || row.kind == "stash"_L1;
}

} // namespace

const std::vector<RowRole<GitFileRow>>& GitFileRow::roles() {
    static const std::vector<RowRole<GitFileRow>> table{
        memberRole<&GitFileRow::kind, GitFileRow>("kind"),     memberRole<&GitFileRow::section, GitFileRow>("section"),
        memberRole<&GitFileRow::path, GitFileRow>("path"),     memberRole<&GitFileRow::name, GitFileRow>("name"),
        memberRole<&GitFileRow::folder, GitFileRow>("folder"), memberRole<&GitFileRow::letter, GitFileRow>("letter"),
        memberRole<&GitFileRow::word, GitFileRow>("word"),     memberRole<&GitFileRow::count, GitFileRow>("count"),
    };
    return table;
}

void GitFileList::setLists(const ChangeLists& changes, const QList<StashRow>& stashes) {
    QList<GitFileRow> rows;
    append(rows, u"conflicts"_s, changes.conflicted, changes.conflicted.size());
    append(rows, u"staged"_s, changes.staged, changes.stagedCount);
    append(rows, u"changes"_s, changes.unstaged, changes.unstagedCount);
    if (!stashes.isEmpty()) {
        rows.append(heading(u"stashes"_s, stashes.size()));
    }
    for (const StashRow& stash : stashes) {
        GitFileRow row;
        row.key = u"stash/"_s + stash.key;
        row.kind = u"stash"_s;
        row.section = u"stashes"_s;
        row.path = stash.key;
        row.name = shownPath(stash.message);
        rows.append(row);
    }
    setRows(rows);
}

const GitFileRow* GitFileList::at(int row) const {
    return row >= 0 && row < rowCount() ? &rows()[row] : nullptr;
}

int GitFileList::rowOf(const QString& path, const QString& section) const {
    const auto found = std::ranges::find(rows(), section + u'/' + path, &GitFileRow::key);
    return found == rows().end() ? -1 : static_cast<int>(found - rows().begin());
}

int GitFileList::step(int row, int step) const {
    const int direction = step < 0 ? -1 : 1;
    const int target = std::clamp(row + step, 0, std::max(0, rowCount() - 1));
    for (const int way : {direction, -direction}) {
        for (int at = target; at >= 0 && at < rowCount(); at += way) {
            if (canBeChosen(rows()[at])) {
                // Back at what was left, or beyond it, is no step.
                return way == direction || (at - row) * direction > 0 ? at : row;
            }
        }
    }
    return row;
}

int GitFileList::neighbour(int row) const {
    const GitFileRow* from = at(row);
    for (const int other : {row + 1, row - 1}) {
        const GitFileRow* candidate = at(other);
        if (from != nullptr && candidate != nullptr && canBeChosen(*candidate) && candidate->section == from->section) {
            return other;
        }
    }
    return -1;
}

} // namespace orv
