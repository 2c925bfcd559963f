#include "OrvGit/GitPath.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/Pool_p.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QString noteOfText(const FileDiff& file) {
    if (!file.hunks.isEmpty()) {
        return {};
    }
    switch (file.change) {
    case DiffChange::renamed:
        return GitModel::tr("Renamed without changes.");
    case DiffChange::copied:
        return GitModel::tr("Copied without changes.");
    case DiffChange::added:
        return GitModel::tr("This file is empty.");
    case DiffChange::deleted:
        return GitModel::tr("An empty file was deleted.");
    case DiffChange::modified:
        break;
    }
    const bool isOtherMode = !file.oldMode.isEmpty() && !file.newMode.isEmpty() && file.oldMode != file.newMode;
    return isOtherMode ? GitModel::tr("Only its mode changed, from %1 to %2.")
                             .arg(QString::fromLatin1(file.oldMode), QString::fromLatin1(file.newMode))
                       : GitModel::tr("There are no changes to show.");
}

QString noteOf(const FileDiff& file) {
    switch (file.content) {
    case DiffContent::text:
        return noteOfText(file);
    case DiffContent::binary:
        return GitModel::tr("This is a binary file.");
    case DiffContent::tooLarge:
        return file.hunks.isEmpty() ? GitModel::tr("This file is too large to be shown.")
                                    : GitModel::tr("Only the beginning of this diff is shown.");
    case DiffContent::submodule:
        return file.oldMode.isEmpty() && file.newMode.isEmpty()
                   ? GitModel::tr("This is a submodule with changes of its own. Commit or discard them there.")
                   : GitModel::tr("This is a submodule: a commit of another repository.");
    case DiffContent::symlink:
        return GitModel::tr("This is a symbolic link.");
    case DiffContent::conflict:
        return GitModel::tr("Both sides changed this file. Resolve it, then stage it.");
    case DiffContent::folder:
        return GitModel::tr("This folder is a repository of its own.");
    case DiffContent::otherKind:
        return GitModel::tr("A file became a link, or the other way round. It is taken as a whole.");
    }
    Q_UNREACHABLE();
}

ChangeRow rowOf(const FileDiff& file) {
    constexpr std::array letters{'M', 'A', 'D', 'R', 'C'};
    FileChange change;
    change.path = GitPath::fromBytes(file.path());
    change.index = letters[static_cast<size_t>(file.change)];
    if (file.change == DiffChange::renamed || file.change == DiffChange::copied) {
        change.originalPath = GitPath::fromBytes(file.oldPath);
    }
    return ChangeLists::of({change}).staged.value(0);
}

} // namespace

template <typename Reading, typename Handler>
void GitModel::readFor(const int& generation, Reading work, Handler handler) {
    onFinished(
        runIn(m_overview.pool(), std::move(work)), this,
        [at = generation, &generation, handler = std::move(handler)](const auto& result) {
            if (at == generation) {
                handler(result);
            }
        });
}

const ChangeRow* GitModel::selectedRow(bool isStaged) const {
    const auto in = [this](const RowModel<ChangeRow>& list) -> const ChangeRow* {
        const auto& rows = list.rows();
        const auto row = std::ranges::find(rows, m_selectedPath, &ChangeRow::key);
        return row == rows.end() ? nullptr : &*row;
    };
    if (isStaged) {
        return in(m_staged);
    }
    const ChangeRow* row = in(m_unstaged);
    return row != nullptr ? row : in(m_conflicted);
}

DiffRequest GitModel::requestOf(const ChangeRow& row, bool isStaged) {
    const char letter = isStaged ? row.change.index : row.change.worktree;
    return {
        .path = row.change.path,
        .originalPath = letter == 'R' || letter == 'C' ? row.change.originalPath : QString(),
        .side = isStaged                   ? DiffSide::staged
                : row.change.isUntracked() ? DiffSide::untracked
                                           : DiffSide::unstaged,
    };
}

void GitModel::selectFile(const QString& path, bool isStaged) {
    ORV_ASSERT_MAIN_THREAD();
    if (path == m_selectedPath && isStaged == m_isStagedSelected && m_selectedCommit.isEmpty()) {
        return;
    }
    const QString wanted = path; // which may be what is cleared
    clearFile();
    m_selectedPath = wanted;
    m_isStagedSelected = isStaged;
    followSelection();
    Q_EMIT selectionChanged();
}

/// The file that is selected goes to the other side when it was staged or unstaged as a whole.
void GitModel::followSelection() {
    if (m_selectedPath.isEmpty() || !m_selectedCommit.isEmpty()) {
        return;
    }
    if (const ChangeRow* row = selectedRow(m_isStagedSelected)) {
        loadDiff(*row);
    } else if (const ChangeRow* other = selectedRow(!m_isStagedSelected)) {
        m_isStagedSelected = !m_isStagedSelected;
        Q_EMIT selectionChanged();
        loadDiff(*other);
    } else {
        clearFile();
        Q_EMIT selectionChanged();
    }
}

void GitModel::clearFile() {
    ++m_fileGeneration;
    m_selectedPath.clear();
    m_selectedCommit.clear();
    m_commitDiffs.clear();
    m_commitFiles.setRows({});
    m_shownRequest = {};
    showDiff({}, {});
}

void GitModel::loadDiff(const ChangeRow& row) {
    ++m_fileGeneration;
    m_isLoadingDiff = true;
    Q_EMIT fileChanged();
    const DiffRequest request = requestOf(row, m_isStagedSelected);
    const auto work = [reader = m_reader, repository = m_repository, request] {
        return reader.fileDiff(repository, request);
    };
    readFor(m_fileGeneration, work, [this, request](const GitOutcome<FileDiff>& file) {
        m_shownRequest = request;
        showDiff(file.value_or(FileDiff()), file ? noteOf(*file) : file.error().text());
    });
}

void GitModel::showDiff(const FileDiff& diff, const QString& note) {
    m_isLoadingDiff = false;
    m_isDiffOld = false;
    m_diffNote = note;
    m_diff.setDiff(diff);
    Q_EMIT fileChanged();
    if (const auto wished = std::exchange(m_wishedLines, {})) {
        wished();
    }
}

bool GitModel::canDivide() const {
    return m_selectedCommit.isEmpty() && m_diff.diff().canBeDivided();
}

void GitModel::selectCommit(const QString& commit) {
    ORV_ASSERT_MAIN_THREAD();
    if (commit == m_selectedCommit) {
        return;
    }
    clearFile();
    m_selectedCommit = commit;
    Q_EMIT selectionChanged();
    if (commit.isEmpty()) {
        return;
    }
    m_isLoadingDiff = true;
    Q_EMIT fileChanged();
    // It was asked for: a partial clone may fetch what it lacks of it.
    GitService asked = m_reader;
    asked.runner.purpose = GitPurpose::userAction;
    const auto work = [asked, repository = m_repository, commit] { return asked.commitDiff(repository, commit); };
    readFor(m_fileGeneration, work, [this](const GitOutcome<QList<FileDiff>>& files) {
        if (!files) {
            showDiff({}, files.error().text());
            return;
        }
        m_commitDiffs = *files;
        QList<ChangeRow> rows;
        for (const FileDiff& file : *files) {
            rows.append(rowOf(file));
        }
        m_commitFiles.setRows(rows);
        if (rows.isEmpty()) {
            showDiff({}, tr("This commit changes no files."));
        } else {
            selectCommitFile(rows.first().key);
        }
    });
}

void GitModel::selectCommitFile(const QString& path) {
    ORV_ASSERT_MAIN_THREAD();
    const QByteArray bytes = GitPath::toBytes(path);
    const auto file = std::ranges::find(m_commitDiffs, bytes, &FileDiff::path);
    if (file != m_commitDiffs.end()) {
        m_selectedPath = path;
        showDiff(*file, noteOf(*file));
        Q_EMIT selectionChanged();
    }
}

} // namespace orv
