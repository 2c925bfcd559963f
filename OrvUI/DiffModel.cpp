#include "OrvUI/DiffModel.h"

#include "OrvCore/Async.h"
#include "OrvGit/GitPath.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// How far above a line it is looked for what is open there. What begins still higher is not noticed.
constexpr int linesLookedBack = 500;

constexpr std::array kindNames{"context"_L1, "added"_L1, "removed"_L1};

QString heading(const DiffHunk& hunk) {
    const auto range = [](int start, int count) {
        return QString::number(start) + (count == 1 ? QString() : u',' + QString::number(count));
    };
    const QString context = hunk.heading.isEmpty() ? QString() : u' ' + hunk.heading;
    return u"@@ -%1 +%2 @@"_s.arg(range(hunk.oldStart, hunk.oldCount), range(hunk.newStart, hunk.newCount)) + context;
}

/// Control characters made visible, so that a line stays one.
QString shownLine(QByteArrayView bytes) {
    const bool isCut = bytes.size() > DiffModel::longestText;
    if (bytes.endsWith('\r')) {
        bytes.chop(1);
    }
    QString shown = QString::fromUtf8(bytes.first(std::min(bytes.size(), DiffModel::longestText)));
    constexpr char16_t controlPictures = u'\u2400';
    for (QChar& letter : shown) {
        if (letter < u' ' && letter != u'\t') {
            letter = QChar(static_cast<char16_t>(controlPictures + letter.unicode()));
        }
    }
    return isCut ? shown + u'\u2026' : shown;
}

} // namespace

std::vector<DiffModel::Place> DiffModel::placesOf(const FileDiff& diff) {
    std::vector<Place> places;
    for (int hunk = 0; hunk < static_cast<int>(diff.hunks.size()); ++hunk) {
        const int lines = static_cast<int>(diff.hunks[hunk].lines.size());
        for (int line = -1; line < lines; ++line) {
            places.push_back({hunk, line});
        }
    }
    return places;
}

const DiffModel::Place* DiffModel::place(int row) const {
    return row >= 0 && row < rowCount() ? &m_places[static_cast<size_t>(row)] : nullptr;
}

int DiffModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_places.size());
}

QHash<int, QByteArray> DiffModel::roleNames() const {
    return {
        {kind, "kind"},
        {text, "text"},
        {oldNumber, "oldNumber"},
        {newNumber, "newNumber"},
        {hunk, "hunk"},
        {isSelected, "selected"},
        {endsWithoutLineFeed, "endsWithoutLineFeed"},
        {spans, "spans"}};
}

QVariant DiffModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Place at = *place(index.row());
    const DiffHunk& inHunk = m_diff.hunks[at.hunk];
    const DiffLine* line = at.line < 0 ? nullptr : &inHunk.lines[at.line];
    switch (role) {
    case kind:
        return line == nullptr ? u"hunk"_s : QString(kindNames[static_cast<size_t>(line->kind)]);
    case text:
        return line == nullptr ? heading(inHunk) : shownLine(m_diff.text(*line));
    case oldNumber:
        return line == nullptr ? 0 : line->oldNumber;
    case newNumber:
        return line == nullptr ? 0 : line->newNumber;
    case hunk:
        return at.hunk;
    case isSelected: {
        const auto chosen = m_selection.find(at.hunk);
        return chosen != m_selection.end() &&
               (line == nullptr || (line->kind != DiffLineKind::context && chosen->second.contains(at.line)));
    }
    case endsWithoutLineFeed:
        return line != nullptr && line->endsWithoutLineFeed;
    case spans:
        return spansOf(index.row());
    default:
        return {};
    }
}

bool DiffModel::isSame(const FileDiff& a, Place inA, const FileDiff& b, Place inB) {
    const DiffHunk& hunkOfA = a.hunks[inA.hunk];
    const DiffHunk& hunkOfB = b.hunks[inB.hunk];
    if (inA.line < 0 || inB.line < 0) {
        return inA.line == inB.line && heading(hunkOfA) == heading(hunkOfB);
    }
    const DiffLine& lineOfA = hunkOfA.lines[inA.line];
    const DiffLine& lineOfB = hunkOfB.lines[inB.line];
    const auto facts = [](const DiffLine& line) {
        return std::tuple(line.kind, line.oldNumber, line.newNumber, line.endsWithoutLineFeed);
    };
    return facts(lineOfA) == facts(lineOfB) && a.text(lineOfA) == b.text(lineOfB);
}

void DiffModel::setDiff(const FileDiff& diff) {
    ORV_ASSERT_MAIN_THREAD();
    if (diff == m_diff) {
        return;
    }
    clearSelection();
    std::vector<Place> places = placesOf(diff);
    const int before = rowCount();
    const int after = static_cast<int>(places.size());
    const int shorter = std::min(before, after);
    const auto isSameAt = [&](int oldRow, int newRow) {
        return isSame(m_diff, m_places[static_cast<size_t>(oldRow)], diff, places[static_cast<size_t>(newRow)]);
    };
    int first = 0;
    while (first < shorter && isSameAt(first, first)) {
        ++first;
    }
    int rest = 0;
    while (rest < shorter - first && isSameAt(before - 1 - rest, after - 1 - rest)) {
        ++rest;
    }
    if (before - rest > first) {
        beginRemoveRows({}, first, before - rest - 1);
        m_places.erase(m_places.begin() + first, m_places.end() - rest);
        m_states.assign(m_places.size(), {});
        endRemoveRows();
    }
    const bool isLonger = after - rest > first;
    if (isLonger) {
        beginInsertRows({}, first, after - rest - 1);
    }
    // What stays lies elsewhere in the new diff, and shows the same.
    m_diff = diff;
    m_places = std::move(places);
    const CodeLanguage* language = CodeLanguage::ofFile(GitPath::fromBytes(diff.path()));
    const bool isOtherLanguage = std::exchange(m_language, language) != language;
    m_states.assign(m_places.size(), {});
    if (isLonger) {
        endInsertRows();
    }
    if (rest > 0) {
        Q_EMIT dataChanged(index(after - rest), index(after - 1), {hunk, spans});
    }
    if (isOtherLanguage && first > 0) {
        Q_EMIT dataChanged(index(0), index(first - 1), {spans});
    }
    m_added = m_diff.count(DiffLineKind::added);
    m_removed = m_diff.count(DiffLineKind::removed);
    Q_EMIT diffChanged();
}

QList<CodeSpan> DiffModel::highlight(int row, SideStates& states) const {
    const Place at = *place(row);
    if (at.line < 0) {
        states = {};
        return {};
    }
    const DiffLine& line = m_diff.hunks[at.hunk].lines[at.line];
    const QString shown = shownLine(m_diff.text(line));
    switch (line.kind) {
    case DiffLineKind::removed:
        return highlightLine(*m_language, shown, states.before);
    case DiffLineKind::added:
        return highlightLine(*m_language, shown, states.after);
    case DiffLineKind::context:
        break;
    }
    if (states.before != states.after) {
        std::ignore = highlightLine(*m_language, shown, states.before);
        return highlightLine(*m_language, shown, states.after);
    }
    const QList<CodeSpan> found = highlightLine(*m_language, shown, states.after);
    states.before = states.after;
    return found;
}

DiffModel::SideStates DiffModel::statesAt(int row) const {
    int from = row;
    const int last = std::max(0, row - linesLookedBack);
    while (from > last && !m_states[static_cast<size_t>(from - 1)] && place(from)->line >= 0) {
        --from;
    }
    SideStates states;
    if (from > 0 && place(from)->line >= 0) {
        states = m_states[static_cast<size_t>(from - 1)].value_or(SideStates());
    }
    for (; from < row; ++from) {
        std::ignore = highlight(from, states);
        m_states[static_cast<size_t>(from)] = states;
    }
    return states;
}

QVariant DiffModel::spansOf(int row) const {
    QList<int> numbers;
    if (m_language != nullptr) {
        SideStates states = statesAt(row);
        for (const CodeSpan& span : highlight(row, states)) {
            numbers << span.start << span.length << static_cast<int>(span.token);
        }
        m_states[static_cast<size_t>(row)] = states;
    }
    return QVariant::fromValue(numbers);
}

int DiffModel::hunkAt(int row) const {
    const Place* at = place(row);
    return at != nullptr ? at->hunk : -1;
}

DiffSelection DiffModel::hunkLines(int hunkIndex) const {
    DiffSelection chosen;
    if (hunkIndex >= 0 && hunkIndex < hunkCount()) {
        const QList<DiffLine>& lines = m_diff.hunks[hunkIndex].lines;
        for (int line = 0; line < static_cast<int>(lines.size()); ++line) {
            if (lines[line].kind != DiffLineKind::context) {
                chosen[hunkIndex].insert(line);
            }
        }
    }
    return chosen;
}

void DiffModel::setSelected(int row, bool isChosen) {
    ORV_ASSERT_MAIN_THREAD();
    const Place* at = place(row);
    if (at == nullptr) {
        return;
    }
    if (at->line >= 0) {
        selectLine(*at, isChosen);
    } else {
        m_selection.erase(at->hunk);
        if (isChosen) {
            m_selection.merge(hunkLines(at->hunk));
        }
    }
    announceSelection();
}

void DiffModel::selectRange(int first, int last) {
    ORV_ASSERT_MAIN_THREAD();
    const int end = std::min(std::max(first, last) + 1, rowCount());
    for (int row = std::max(std::min(first, last), 0); row < end; ++row) {
        selectLine(*place(row), true);
    }
    announceSelection();
}

void DiffModel::selectLine(Place line, bool isChosen) {
    if (line.line < 0 || m_diff.hunks[line.hunk].lines[line.line].kind == DiffLineKind::context) {
        return;
    }
    if (isChosen) {
        m_selection[line.hunk].insert(line.line);
    } else if (const auto chosen = m_selection.find(line.hunk); chosen != m_selection.end()) {
        chosen->second.erase(line.line);
        if (chosen->second.empty()) {
            m_selection.erase(chosen);
        }
    }
}

void DiffModel::clearSelection() {
    ORV_ASSERT_MAIN_THREAD();
    if (!m_selection.empty()) {
        m_selection.clear();
        announceSelection();
    }
}

void DiffModel::announceSelection() {
    if (m_places.empty()) {
        return;
    }
    Q_EMIT dataChanged(index(0), index(rowCount() - 1), {isSelected});
    Q_EMIT selectionChanged();
}

} // namespace orv
