#include "OrvGit/GitPath.h"
#include "OrvUI/GitModel.h"

#include <QFile>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

// The page's files by their rows, and what is said of the one that is selected.

namespace orv {

QString GitModel::selectedName() const {
    return shownPath(m_selectedPath.section(u'/', -1, -1, QString::SectionSkipEmpty));
}

QString GitModel::selectedFolder() const {
    const QString name = m_selectedPath.section(u'/', -1, -1, QString::SectionSkipEmpty);
    const qsizetype end = m_selectedPath.lastIndexOf(name);
    return end > 0 ? shownPath(m_selectedPath.first(end)) : QString();
}

QString GitModel::fileOf(const QString& path) const {
    return QFile::decodeName(QFile::encodeName(m_repository) + '/' + GitPath::toBytes(path));
}

QVariantMap GitModel::shownCommit() const {
    const auto& rows = m_history.rows();
    const auto row = std::ranges::find(rows, m_selectedCommit, &CommitRow::key);
    if (row == rows.end()) {
        return {};
    }
    return {
        {u"subject"_s, row->subject}, {u"author"_s, row->author}, {u"when"_s, row->when}, {u"shortID"_s, row->shortID}};
}

QVariantList GitModel::firstChanges() const {
    constexpr qsizetype most = 4;
    QVariantList first;
    QSet<QString> seen;
    for (const GitFileRow& row : m_files.rows()) {
        const bool isOwn = row.kind == "file"_L1 && row.path.startsWith(m_ownFolder);
        if (isOwn && first.size() < most && !seen.contains(row.path)) {
            seen.insert(row.path);
            const QString path = row.path.sliced(m_ownFolder.size());
            const QString folder = shownPath(path.first(path.lastIndexOf(u'/', -2) + 1));
            first.append(QVariantMap{{u"letter"_s, row.letter}, {u"folder"_s, folder}, {u"name"_s, row.name}});
        }
    }
    return first;
}

void GitModel::updateCurrentRow() {
    int row = -1;
    if (m_selectedCommit.isEmpty() && !m_selectedPath.isEmpty()) {
        row =
            m_isStagedSelected
                ? m_files.rowOf(m_selectedPath, u"staged"_s)
                : std::max(m_files.rowOf(m_selectedPath, u"changes"_s), m_files.rowOf(m_selectedPath, u"conflicts"_s));
    }
    if (row != m_currentRow) {
        m_currentRow = row;
        Q_EMIT currentRowChanged();
    }
}

void GitModel::selectRow(int row) {
    const GitFileRow* file = m_files.at(row);
    if (file != nullptr && file->kind == "file"_L1) {
        selectFile(QString(file->path), file->section == "staged"_L1);
    }
}

void GitModel::toggleRow(int row) {
    const GitFileRow* found = m_files.at(row);
    if (found == nullptr || found->kind != "file"_L1) {
        return;
    }
    const GitFileRow file = *found;
    if (row == m_currentRow) {
        selectRow(m_files.neighbour(row));
    }
    if (file.section == "staged"_L1) {
        unstage({file.path});
    } else {
        stage({file.path});
    }
}

} // namespace orv
