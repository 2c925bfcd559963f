#include "OrvUI/CodeLines.h"

#include "OrvCore/Async.h"

#include <algorithm>

namespace orv {

int CodeLines::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

QHash<int, QByteArray> CodeLines::roleNames() const {
    return {{number, "number"}, {text, "text"}, {spans, "spans"}};
}

QVariant CodeLines::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    switch (role) {
    case number:
        return index.row() + 1;
    case text:
        return m_lines[index.row()];
    case spans:
        return QVariant::fromValue(m_spans[index.row()]);
    default:
        return {};
    }
}

void CodeLines::setContent(const FileContent& content) {
    ORV_ASSERT_MAIN_THREAD();
    const int before = rowCount();
    const int after = static_cast<int>(content.lines.size());
    if (after < before) {
        beginRemoveRows({}, after, before - 1);
        m_lines.resize(after);
        m_spans.resize(after);
        endRemoveRows();
    } else if (after > before) {
        beginInsertRows({}, before, after - 1);
        m_lines += content.lines.sliced(before);
        m_spans += content.spans.sliced(before);
        endInsertRows();
    }
    const int kept = std::min(before, after);
    const auto isSame = [&](int row) {
        return m_lines[row] == content.lines[row] && m_spans[row] == content.spans[row];
    };
    int first = 0;
    while (first < kept && isSame(first)) {
        ++first;
    }
    m_lines = content.lines;
    m_spans = content.spans;
    if (first < kept) {
        Q_EMIT dataChanged(index(first), index(kept - 1), {text, spans});
    }
}

} // namespace orv
