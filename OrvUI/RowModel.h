#pragma once

#include <QAbstractListModel>
#include <QSet>

#include <algorithm>
#include <concepts>
#include <vector>

namespace orv {

/// A list that is given as a whole and changes by rows: what is new is inserted, what is gone removed, what stands
/// elsewhere moved, and of what differs only the differing roles are announced. So a delegate keeps its hover, its
/// focus and its place.
///
/// `Row` has a `QString key`, unlike that of every other row, and `static const std::vector<RowRole<Row>>& roles()`.
template <typename Row>
struct RowRole {
    const char* name;
    QVariant (*value)(const Row& row);
};

/// The role `name` is the member as it stands.
template <auto member, typename Row>
constexpr RowRole<Row> memberRole(const char* name) {
    return {name, [](const Row& row) { return QVariant::fromValue(row.*member); }};
}

template <typename Row>
class RowModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        const auto place = static_cast<size_t>(role - Qt::UserRole);
        if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role < Qt::UserRole || place >= Row::roles().size()) {
            return {};
        }
        return Row::roles()[place].value(m_rows[index.row()]);
    }

    [[nodiscard]] QHash<int, QByteArray> roleNames() const override {
        QHash<int, QByteArray> names;
        int role = Qt::UserRole;
        for (const RowRole<Row>& entry : Row::roles()) {
            names.insert(role++, entry.name);
        }
        return names;
    }

    [[nodiscard]] const QList<Row>& rows() const { return m_rows; }

    void setRows(const QList<Row>& rows) {
        // Mostly the same ones, with nothing or little else in them.
        if (std::ranges::equal(m_rows, rows, {}, &Row::key, &Row::key)) {
            for (qsizetype place = 0; place < rows.size(); ++place) {
                replace(place, rows[place]);
            }
            return;
        }
        removeOthers(rows);
        QSet<QString> present;
        for (const Row& row : std::as_const(m_rows)) {
            present.insert(row.key);
        }
        for (qsizetype place = 0; place < rows.size(); ++place) {
            if (present.contains(rows[place].key)) {
                bringHere(rows[place].key, place);
                replace(place, rows[place]);
                continue;
            }
            qsizetype end = place + 1;
            while (end < rows.size() && !present.contains(rows[end].key)) {
                ++end;
            }
            beginInsertRows({}, static_cast<int>(place), static_cast<int>(end - 1));
            m_rows = m_rows.first(place) + rows.sliced(place, end - place) + m_rows.sliced(place);
            endInsertRows();
            place = end - 1;
        }
    }

private:
    void removeOthers(const QList<Row>& rows) {
        QSet<QString> wanted;
        for (const Row& row : rows) {
            wanted.insert(row.key);
        }
        for (qsizetype last = m_rows.size() - 1; last >= 0; --last) {
            if (wanted.contains(m_rows[last].key)) {
                continue;
            }
            qsizetype first = last;
            while (first > 0 && !wanted.contains(m_rows[first - 1].key)) {
                --first;
            }
            beginRemoveRows({}, static_cast<int>(first), static_cast<int>(last));
            m_rows.remove(first, last - first + 1);
            endRemoveRows();
            last = first;
        }
    }

    /// Every row before `place` is where it belongs, so the row with this key is here or behind.
    void bringHere(const QString& key, qsizetype place) {
        qsizetype from = place;
        while (m_rows[from].key != key) {
            ++from;
        }
        if (from == place) {
            return;
        }
        beginMoveRows({}, static_cast<int>(from), static_cast<int>(from), {}, static_cast<int>(place));
        m_rows.move(from, place);
        endMoveRows();
    }

    void replace(qsizetype place, const Row& row) {
        if constexpr (std::equality_comparable<Row>) {
            if (std::as_const(m_rows)[place] == row) {
                return;
            }
        }
        const Row before = std::exchange(m_rows[place], row);
        QList<int> changed;
        int role = Qt::UserRole;
        for (const RowRole<Row>& entry : Row::roles()) {
            if (entry.value(before) != entry.value(row)) {
                changed.append(role);
            }
            ++role;
        }
        if (!changed.isEmpty()) {
            const QModelIndex index = this->index(static_cast<int>(place));
            Q_EMIT dataChanged(index, index, changed);
        }
    }

    QList<Row> m_rows;
};

} // namespace orv
