#include "OrvUI/LogModel.h"

#include "OrvCore/Async.h"

#include <QDateTime>
#include <QSaveFile>

#include <algorithm>
#include <limits>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostErrorRows = 200;

} // namespace

LogModel::LogModel(QObject* parent) : QAbstractListModel(parent) {}

QHash<int, QByteArray> LogModel::roleNames() const {
    return {{NumberRole, "number"}, {TimeRole, "time"}, {TextRole, "text"}, {ContentRole, "content"}};
}

int LogModel::rowCount(const QModelIndex& parent) const {
    if (parent.isValid()) {
        return 0;
    }
    return static_cast<int>(m_usesShown ? static_cast<Serial>(m_shown.size()) : m_shownTo - m_shownFrom);
}

QVariant LogModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Serial serial = serialOf(index.row());
    switch (role) {
    case NumberRole:
        return m_before + serial - m_logFirst + 1;
    case Qt::DisplayRole:
    case TextRole:
        return StyledText::plain(raw(serial));
    case TimeRole:
        return time(serial);
    case ContentRole:
        return QVariant::fromValue(content(serial));
    default:
        return {};
    }
}

const QString& LogModel::raw(Serial serial) const {
    static const QString none;
    const Serial place = serial - m_logFirst;
    return m_log != nullptr && place >= 0 && place < m_log->size() ? m_log->at(place) : none;
}

QString LogModel::time(Serial serial) const {
    const Serial place = serial - m_logFirst;
    const bool isKnown = m_log != nullptr && place >= 0 && place < m_log->size() && m_log->timeAt(place) > 0;
    return isKnown ? QDateTime::fromMSecsSinceEpoch(m_log->timeAt(place)).toString(u"HH:mm:ss.zzz"_s) : QString();
}

LogModel::Serial LogModel::serialOf(int row) const {
    return m_usesShown ? m_shown[static_cast<size_t>(row)] : m_shownFrom + row;
}

int LogModel::rowFrom(Serial serial) const {
    if (!m_usesShown) {
        return static_cast<int>(std::clamp(serial, m_shownFrom, m_shownTo) - m_shownFrom);
    }
    return static_cast<int>(std::ranges::lower_bound(m_shown, serial) - m_shown.begin());
}

int LogModel::rowOf(Serial serial) const {
    const int row = rowFrom(serial);
    return row < rowCount() && serialOf(row) == serial ? row : -1;
}

QString LogModel::text(int row) const {
    return StyledText::plain(raw(serialOf(row)));
}

bool LogModel::passes(Serial serial) const {
    return (!m_onlyErrors || lineOf(serial).error != ErrorLines::Place::none) &&
           (m_filterText.isEmpty() || StyledText::plain(raw(serial)).contains(m_filterText, Qt::CaseInsensitive));
}

void LogModel::setLog(const LogBuffer* log, qint64 before, qint64 cleared) {
    ORV_ASSERT_MAIN_THREAD();
    m_log = nullptr;
    const Serial from = nextSerial();
    m_before = before;
    m_logFirst = from;
    m_clearedBefore = from;
    removeRowsBefore(from);
    forgetBefore(from);
    m_pen = {};
    m_errors = {};
    m_log = log;
    if (log != nullptr) {
        m_clearedBefore += std::clamp<qint64>(cleared - before, 0, log->size());
        m_shownFrom = m_clearedBefore;
        m_shownTo = m_clearedBefore;
        learn(log->size());
        insertFrom(m_clearedBefore);
    }
    Q_EMIT lineCountChanged();
}

void LogModel::noteAppended(qsizetype dropped) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_log == nullptr) {
        return;
    }
    m_before += dropped;
    m_logFirst += dropped;
    removeRowsBefore(m_logFirst);
    forgetBefore(m_logFirst);
    const Serial from = nextSerial();
    learn(m_logFirst + m_log->size() - from);
    insertFrom(from);
    Q_EMIT lineCountChanged();
}

void LogModel::noteSkipped(qsizetype count) {
    ORV_ASSERT_MAIN_THREAD();
    m_before += count;
    m_pen = {};
    m_errors = {};
    if (const int rows = rowCount(); rows > 0 && count > 0) {
        Q_EMIT dataChanged(index(0), index(rows - 1), {NumberRole});
    }
}

/// What is to be known of the next `count` lines of the log.
void LogModel::learn(qsizetype count) {
    for (; count > 0; --count) {
        const TextPen pen = m_pen;
        const QString text = StyledText::plain(raw(nextSerial()), m_pen);
        m_lines.push_back({pen, m_errors.take(text)});
    }
}

void LogModel::forgetBefore(Serial first) {
    const Serial gone = std::clamp<Serial>(first - m_first, 0, static_cast<Serial>(m_lines.size()));
    m_lines.erase(m_lines.begin(), m_lines.begin() + gone);
    m_first = std::max(first, m_first);
}

void LogModel::removeRowsBefore(Serial first) {
    const Serial rows = m_usesShown ? std::ranges::lower_bound(m_shown, first) - m_shown.begin()
                                    : std::min(first, m_shownTo) - m_shownFrom;
    if (rows > 0) {
        beginRemoveRows({}, 0, static_cast<int>(rows) - 1);
        if (m_usesShown) {
            m_shown.erase(m_shown.begin(), m_shown.begin() + rows);
        } else {
            m_shownFrom += rows;
        }
        endRemoveRows();
    }
    m_shownFrom = std::max(first, m_shownFrom);
    m_shownTo = std::max(m_shownFrom, m_shownTo);
    const auto left = std::ranges::lower_bound(m_matches, first, {}, &Match::line);
    if (const auto lost = static_cast<int>(left - m_matches.begin()); lost > 0) {
        m_matches.erase(m_matches.begin(), left);
        m_current = m_matches.empty() ? -1 : std::max(m_current - lost, 0);
        touchRow(currentMatchRow());
        Q_EMIT matchesChanged();
    }
}

/// Every line before `first` has its row already, where it is to have one.
void LogModel::insertFrom(Serial first) {
    const Serial end = nextSerial();
    const size_t matchesBefore = m_matches.size();
    std::deque<Serial> passing;
    const bool looksAtLines = m_usesShown || !m_searchText.isEmpty();
    for (Serial serial = first; serial < end && looksAtLines; ++serial) {
        if (m_usesShown && !passes(serial)) {
            continue;
        }
        if (m_usesShown) {
            passing.push_back(serial);
        }
        addMatches(serial);
    }
    const Serial rows = m_usesShown ? static_cast<Serial>(passing.size()) : end - first;
    if (rows > 0) {
        const int before = rowCount();
        beginInsertRows({}, before, before + static_cast<int>(rows) - 1);
        m_shown.insert(m_shown.end(), passing.begin(), passing.end());
        m_shownTo = end;
        endInsertRows();
    }
    m_shownTo = end;
    if (m_matches.size() != matchesBefore) {
        m_current = std::max(m_current, 0);
        Q_EMIT matchesChanged();
    }
}

void LogModel::setFilterText(const QString& text) {
    ORV_ASSERT_MAIN_THREAD();
    if (text != m_filterText) {
        m_filterText = text;
        refilter();
    }
}

void LogModel::setOnlyErrors(bool isOn) {
    ORV_ASSERT_MAIN_THREAD();
    if (isOn != m_onlyErrors) {
        m_onlyErrors = isOn;
        refilter();
    }
}

void LogModel::refilter() {
    std::deque<Serial> wanted;
    for (Serial serial = std::max(m_first, m_clearedBefore); serial < nextSerial(); ++serial) {
        if (passes(serial)) {
            wanted.push_back(serial);
        }
    }
    if (!std::exchange(m_usesShown, true)) {
        for (Serial serial = m_shownFrom; serial < m_shownTo; ++serial) {
            m_shown.push_back(serial);
        }
    }
    showRows(wanted);
    if (!m_onlyErrors && m_filterText.isEmpty()) {
        m_usesShown = false;
        m_shown.clear();
    }
    search();
    Q_EMIT filterChanged();
}

/// Both lists are ascending.
void LogModel::showRows(const std::deque<Serial>& wanted) {
    const auto isWanted = [&](int row) {
        return std::ranges::binary_search(wanted, m_shown[static_cast<size_t>(row)]);
    };
    for (int last = rowCount() - 1; last >= 0; --last) {
        if (isWanted(last)) {
            continue;
        }
        int first = last;
        while (first > 0 && !isWanted(first - 1)) {
            --first;
        }
        beginRemoveRows({}, first, last);
        m_shown.erase(m_shown.begin() + first, m_shown.begin() + last + 1);
        endRemoveRows();
        last = first;
    }
    for (size_t row = 0; row < wanted.size(); ++row) {
        const Serial present = row < m_shown.size() ? m_shown[row] : std::numeric_limits<Serial>::max();
        if (wanted[row] == present) {
            continue;
        }
        const auto from = static_cast<std::ptrdiff_t>(row);
        const auto end = std::ranges::lower_bound(wanted.begin() + from, wanted.end(), present);
        const auto count = end - (wanted.begin() + from);
        beginInsertRows({}, static_cast<int>(from), static_cast<int>(from + count) - 1);
        m_shown.insert(m_shown.begin() + from, wanted.begin() + from, end);
        endInsertRows();
        row += static_cast<size_t>(count) - 1;
    }
}

void LogModel::setSearchText(const QString& text) {
    ORV_ASSERT_MAIN_THREAD();
    if (text != m_searchText) {
        m_searchText = text;
        search();
        Q_EMIT searchTextChanged();
        Q_EMIT matchAsked();
    }
}

void LogModel::searchFrom(const QString& text, int row) {
    const bool isFirst = m_current < 0;
    setSearchText(text);
    if (isFirst) {
        matchFrom(row);
    }
}

/// Anew, in all rows. What was current stays so, or what follows it becomes it.
void LogModel::search() {
    const bool hadMatches = !m_matches.empty();
    const Serial anchor = m_current < 0 ? 0 : m_matches[static_cast<size_t>(m_current)].line;
    m_matches.clear();
    for (int row = 0; row < rowCount() && !m_searchText.isEmpty(); ++row) {
        addMatches(serialOf(row));
    }
    const auto next = std::ranges::lower_bound(m_matches, anchor, {}, &Match::line);
    m_current = m_matches.empty()         ? -1
                : next == m_matches.end() ? static_cast<int>(m_matches.size()) - 1
                                          : static_cast<int>(next - m_matches.begin());
    if (const int rows = rowCount(); rows > 0 && (hadMatches || !m_matches.empty())) {
        Q_EMIT dataChanged(index(0), index(rows - 1), {ContentRole});
    }
    Q_EMIT matchesChanged();
}

void LogModel::addMatches(Serial serial) {
    if (m_searchText.isEmpty()) {
        return;
    }
    const QString text = StyledText::plain(raw(serial));
    qsizetype at = text.indexOf(m_searchText, 0, Qt::CaseInsensitive);
    for (qsizetype count = 0; at >= 0 && count < matchLimitOfLine; ++count) {
        if (static_cast<qsizetype>(m_matches.size()) >= matchLimit) {
            return;
        }
        m_matches.push_back({serial, static_cast<int>(at)});
        at = text.indexOf(m_searchText, at + m_searchText.size(), Qt::CaseInsensitive);
    }
}

int LogModel::currentMatchRow() const {
    return m_current < 0 ? -1 : rowOf(m_matches[static_cast<size_t>(m_current)].line);
}

/// Its hits look otherwise.
void LogModel::touchRow(int row) {
    if (row >= 0) {
        Q_EMIT dataChanged(index(row), index(row), {ContentRole});
    }
}

void LogModel::setCurrent(int match) {
    const int count = matchCount();
    if (count == 0) {
        return;
    }
    const int rowBefore = currentMatchRow();
    m_current = (match + count) % count;
    touchRow(rowBefore);
    touchRow(currentMatchRow());
    Q_EMIT matchesChanged();
    Q_EMIT matchAsked();
}

void LogModel::nextMatch() {
    setCurrent(m_current + 1);
}

void LogModel::previousMatch() {
    setCurrent(m_current - 1);
}

/// The first one at this row or below it.
void LogModel::matchFrom(int row) {
    if (row < 0 || row >= rowCount() || m_matches.empty()) {
        return;
    }
    const auto found = std::ranges::lower_bound(m_matches, serialOf(row), {}, &Match::line);
    setCurrent(found == m_matches.end() ? 0 : static_cast<int>(found - m_matches.begin()));
}

void LogModel::clear() {
    ORV_ASSERT_MAIN_THREAD();
    m_clearedBefore = nextSerial();
    removeRowsBefore(m_clearedBefore);
}

QString LogModel::allText() const {
    QString text;
    for (int row = 0; row < rowCount(); ++row) {
        text += this->text(row) + u'\n';
    }
    return text;
}

QString LogModel::save(const QString& path) const {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    for (int row = 0; row < rowCount(); ++row) {
        const Serial serial = serialOf(row);
        const QString at = time(serial);
        file.write((at.isEmpty() ? QString() : at + u' ').toUtf8() + StyledText::plain(raw(serial)).toUtf8() + '\n');
    }
    return file.commit() ? QString() : file.errorString();
}

QList<int> LogModel::errorRows() const {
    QList<int> rows;
    for (int row = rowCount() - 1; row >= 0 && rows.size() < mostErrorRows; --row) {
        if (lineOf(serialOf(row)).error == ErrorLines::Place::first) {
            rows.prepend(row);
        }
    }
    return rows;
}

LogText LogModel::content(Serial serial) const {
    const Line known = lineOf(serial);
    StyledText::Line styled = StyledText::parse(raw(serial), known.pen);
    LogText content{serial, std::move(styled.text), std::move(styled.runs), std::move(styled.links), {}, known.error};
    const auto matches = std::ranges::equal_range(m_matches, serial, {}, &Match::line);
    for (auto match = matches.begin(); match != matches.end(); ++match) {
        content.hits.append({match->start, m_searchText.size(), match - m_matches.begin() == m_current});
    }
    return content;
}

} // namespace orv
