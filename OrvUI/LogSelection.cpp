#include "OrvUI/LogSelection.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// Paths, addresses and names with dots are words.
bool isOfWord(QChar letter) {
    return !letter.isSpace() && !QStringView(u"()[]{}<>\"'`,;|=").contains(letter);
}

} // namespace

LogSelection::LogSelection(const LogModel& lines, QObject* parent) : QObject(parent), m_lines(lines) {
    connect(&lines, &QAbstractItemModel::rowsRemoved, this, &LogSelection::followLines);
    connect(&lines, &QAbstractItemModel::rowsInserted, this, &LogSelection::linesChanged);
}

void LogSelection::begin(const Place& place, Unit unit) {
    m_unit = unit;
    m_reached = place;
    m_anchor = around(place);
    set(m_anchor.first, m_anchor.end);
}

void LogSelection::extend(const Place& place) {
    if (m_anchor.first.line < 0) {
        begin(place, m_unit);
        return;
    }
    m_reached = place;
    const Span reached = around(place);
    set(std::min(m_anchor.first, reached.first), std::max(m_anchor.end, reached.end));
}

void LogSelection::extendByLines(int count, int row) {
    const int from = reachedRow();
    const int to = std::clamp(from < 0 ? row : from + count, 0, m_lines.rowCount() - 1);
    if (to < 0) {
        return;
    }
    if (from < 0) {
        begin({m_lines.serialOf(to)}, Unit::line);
        return;
    }
    if (m_unit != Unit::line) {
        m_unit = Unit::line;
        m_anchor = {around(m_anchor.first).first, around(m_anchor.end).end};
    }
    extend({m_lines.serialOf(to)});
}

void LogSelection::selectAll() {
    if (canSelect()) {
        begin({m_lines.serialOf(0)}, Unit::line);
        extend({m_lines.serialOf(m_lines.rowCount() - 1)});
    }
}

void LogSelection::clear() {
    m_anchor = {};
    m_reached = {};
    set({}, {});
}

int LogSelection::reachedRow() const {
    return isEmpty() && m_unit == Unit::character ? -1 : m_reached.line < 0 ? -1 : m_lines.rowFrom(m_reached.line);
}

LogSelection::Range LogSelection::within(LogModel::Serial line, qsizetype length) const {
    if (line < m_first.line || line > m_end.line) {
        return {};
    }
    return {
        line == m_first.line ? std::min(m_first.offset, length) : 0,
        line == m_end.line ? std::min(m_end.offset, length) : length + 1};
}

QString LogSelection::text() const {
    QStringList texts;
    for (int row = m_lines.rowFrom(m_first.line); row < m_lines.rowCount(); ++row) {
        const LogModel::Serial line = m_lines.serialOf(row);
        if (line > m_end.line) {
            break;
        }
        const QString text = m_lines.text(row);
        const Range range = within(line, text.size());
        texts.append(text.sliced(range.start, std::min(range.end, text.size()) - range.start));
    }
    return texts.join(u'\n');
}

/// The unit that a place is in.
LogSelection::Span LogSelection::around(const Place& place) const {
    const int row = m_lines.rowFrom(place.line);
    if (m_unit == Unit::character || row >= m_lines.rowCount() || m_lines.serialOf(row) != place.line) {
        return {place, place};
    }
    const QString text = m_lines.text(row);
    if (m_unit == Unit::line) {
        return {{place.line, 0}, {place.line, text.size()}};
    }
    qsizetype first = std::clamp<qsizetype>(place.offset, 0, text.size());
    qsizetype end = first;
    while (first > 0 && isOfWord(text[first - 1])) {
        --first;
    }
    while (end < text.size() && isOfWord(text[end])) {
        ++end;
    }
    return {{place.line, first}, {place.line, end}};
}

void LogSelection::set(const Place& first, const Place& end) {
    if (first != m_first || end != m_end) {
        m_first = first;
        m_end = end;
        Q_EMIT changed();
    }
}

/// What was selected in lines that are gone is not any more.
void LogSelection::followLines() {
    const LogModel::Serial oldest = m_lines.oldestLine();
    if (m_end.line >= 0 && m_end.line < oldest) {
        clear();
    } else if (m_end.line >= 0 && m_first.line < oldest) {
        m_anchor.first = std::max(m_anchor.first, {oldest});
        m_anchor.end = std::max(m_anchor.end, {oldest});
        set({oldest}, m_end);
    }
    Q_EMIT linesChanged();
}

} // namespace orv
