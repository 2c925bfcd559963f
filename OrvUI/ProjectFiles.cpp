#include "OrvUI/ProjectFiles.h"

#include "OrvGit/ProjectRepositories.h"
#include "OrvUI/GitRows.h"
#include "OrvUI/Pool_p.h"

#include <QDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr qsizetype mostMatches = 200;

QHash<QString, QString> lettersOf(const GitService& service, const QString& root, const QString& scanRoot) {
    QHash<QString, QString> letters;
    const QStringList repositories = ProjectRepositories::of(service.runner, root, scanRoot).own;
    for (const QString& repository : repositories) {
        const auto status = service.status(repository);
        const ChangeLists lists = ChangeLists::of(status ? status->changes : QList<FileChange>());
        // What is not staged is newer.
        for (const QList<ChangeRow>& rows : {lists.staged, lists.unstaged, lists.conflicted}) {
            for (const ChangeRow& row : rows) {
                const QString path = wayBelow(root, repository + u'/' + row.key);
                if (path.isEmpty()) {
                    continue; // elsewhere in the repository that the project is a part of
                }
                const bool isNew = row.letter == u'M' && letters.value(path) == u'A';
                letters.insert(path, isNew ? u"A"_s : row.letter);
            }
        }
    }
    const QStringList files = letters.keys();
    for (const QString& file : files) {
        for (qsizetype slash = file.indexOf(u'/'); slash > 0; slash = file.indexOf(u'/', slash + 1)) {
            letters.insert(file.first(slash), u"·"_s);
        }
    }
    return letters;
}

} // namespace

const std::vector<RowRole<FileTreeRow>>& FileTreeRow::roles() {
    static const std::vector<RowRole<FileTreeRow>> table{
        memberRole<&FileTreeRow::key, FileTreeRow>("path"),
        memberRole<&FileTreeRow::name, FileTreeRow>("name"),
        memberRole<&FileTreeRow::depth, FileTreeRow>("depth"),
        memberRole<&FileTreeRow::isFolder, FileTreeRow>("isFolder"),
        memberRole<&FileTreeRow::isExpanded, FileTreeRow>("expanded"),
        memberRole<&FileTreeRow::letter, FileTreeRow>("letter"),
    };
    return table;
}

const std::vector<RowRole<FileMatchRow>>& FileMatchRow::roles() {
    static const std::vector<RowRole<FileMatchRow>> table{
        memberRole<&FileMatchRow::key, FileMatchRow>("path"),
        memberRole<&FileMatchRow::letters, FileMatchRow>("letters"),
        memberRole<&FileMatchRow::letter, FileMatchRow>("letter"),
    };
    return table;
}

ProjectFiles::ProjectFiles(QObject* parent)
    : QObject(parent), m_isCancelled(std::make_shared<std::atomic<bool>>(false)) {
    m_pool.setMaxThreadCount(2);
    m_git.runner.purpose = GitPurpose::background;
    m_git.runner.cancellation.emplace();
}

ProjectFiles::~ProjectFiles() {
    *m_isCancelled = true;
    m_git.runner.cancellation->cancel();
    m_pool.clear();
}

template <typename Work, typename Handler>
void ProjectFiles::read(Work work, Handler handler) {
    onFinished(
        runIn(m_pool, std::move(work)), this,
        [this, at = m_generation, handler = std::move(handler)](const auto& result) {
            if (at == m_generation) {
                handler(result);
            }
        });
}

void ProjectFiles::setRoot(const QString& folder, const QString& scanRoot) {
    ORV_ASSERT_MAIN_THREAD();
    m_scanRoot = scanRoot;
    if (folder == m_root) {
        return;
    }
    m_root = folder;
    ++m_generation;
    *m_isCancelled = true;
    m_isCancelled = std::make_shared<std::atomic<bool>>(false);
    m_folders.clear();
    m_expanded.clear();
    m_letters.clear();
    m_all = {};
    m_isListed = false;
    m_isListing = false;
    setFindText({});
    select({});
    rebuild();
    Q_EMIT countChanged();
    Q_EMIT rootChanged();
}

void ProjectFiles::refresh() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_root.isEmpty()) {
        return;
    }
    readFolder({});
    for (const QString& folder : std::as_const(m_expanded)) {
        readFolder(folder + u'/');
    }
    readLetters();
    listFiles();
    readFile();
}

void ProjectFiles::readFolder(const QString& folder) {
    read(
        [path = m_root + u'/' + folder] { return FileFinder::entries(path); },
        [this, folder](const QList<FileFinder::Entry>& found) {
            m_folders.insert(folder, found);
            rebuild();
        });
}

void ProjectFiles::readLetters() {
    read(
        [service = m_git, root = m_root, scanRoot = m_scanRoot] { return lettersOf(service, root, scanRoot); },
        [this](const QHash<QString, QString>& found) {
            m_letters = found;
            rebuild();
            Q_EMIT contentChanged();
        });
}

void ProjectFiles::listFiles() {
    if (std::exchange(m_isListing, true)) {
        return;
    }
    read(
        [root = m_root, cancelled = m_isCancelled] { return FileFinder::list(root, FileFinder::mostFiles, cancelled); },
        [this](const FileFinder::Listing& found) {
            m_isListing = false;
            const bool isOther = !m_isListed || found.files != m_all.files;
            m_all = found;
            m_isListed = true;
            if (isOther) {
                Q_EMIT countChanged();
                search();
            }
        });
}

QString ProjectFiles::countText() const {
    if (!m_isListed) {
        return {};
    }
    const auto count = m_all.files.size();
    return !m_all.isWhole ? tr("more than %1 files").arg(count) : count == 1 ? tr("1 file") : tr("%1 files").arg(count);
}

void ProjectFiles::setFindText(const QString& text) {
    if (text != m_findText) {
        m_findText = text;
        m_wishedMatch.reset();
        Q_EMIT findTextChanged();
        search();
    }
}

void ProjectFiles::search() {
    const int at = ++m_searchGeneration;
    m_isSearching = !m_findText.trimmed().isEmpty();
    if (!m_isSearching) {
        m_matches.setRows({});
        return;
    }
    read(
        [files = m_all.files, text = m_findText] {
            QList<FileMatchRow> rows;
            for (const FileFinder::Match& match : FileFinder::find(files, text, mostMatches)) {
                rows.append({files[match.file], match.letters, {}});
            }
            return rows;
        },
        [this, at](QList<FileMatchRow> rows) {
            if (at == m_searchGeneration) {
                for (FileMatchRow& row : rows) {
                    row.letter = m_letters.value(row.key);
                }
                m_matches.setRows(rows);
                // Before the files are listed there is nothing to be found in, and the search runs once more.
                m_isSearching = !m_isListed;
                if (m_wishedMatch && !m_isSearching) {
                    takeMatch(*std::exchange(m_wishedMatch, std::nullopt));
                }
            }
        });
}

void ProjectFiles::takeMatch(int row) {
    ORV_ASSERT_MAIN_THREAD();
    if (m_isSearching) {
        m_wishedMatch = row;
        return;
    }
    const auto& rows = m_matches.rows();
    if (rows.isEmpty()) {
        return;
    }
    select(rows[row >= 0 && row < rows.size() ? row : 0].key);
    setFindText({});
    Q_EMIT matchTaken();
}

void ProjectFiles::setExpanded(const QString& path, bool isExpanded) {
    ORV_ASSERT_MAIN_THREAD();
    if (isExpanded == m_expanded.contains(path)) {
        return;
    }
    if (isExpanded) {
        m_expanded.insert(path);
        readFolder(path + u'/');
    } else {
        m_expanded.remove(path);
    }
    rebuild();
}

void ProjectFiles::append(const QString& folder, int depth, QList<FileTreeRow>& rows) const {
    for (const FileFinder::Entry& entry : m_folders.value(folder)) {
        const QString path = folder + entry.name;
        const bool isExpanded = entry.isFolder && m_expanded.contains(path);
        // An open folder shows its files' own letters.
        const QString letter = isExpanded ? QString() : m_letters.value(path);
        rows.append({path, shownPath(entry.name), depth, entry.isFolder, isExpanded, letter});
        if (isExpanded) {
            append(path + u'/', depth + 1, rows);
        }
    }
}

void ProjectFiles::rebuild() {
    QList<FileTreeRow> rows;
    append({}, 0, rows);
    m_tree.setRows(rows);
    Q_EMIT treeChanged();
}

int ProjectFiles::currentRow() const {
    const auto& rows = m_tree.rows();
    const auto row = std::ranges::find(rows, m_selected, &FileTreeRow::key);
    return row == rows.end() ? -1 : static_cast<int>(row - rows.begin());
}

int ProjectFiles::parentRow(int row) const {
    const auto& rows = m_tree.rows();
    for (int above = row - 1; above >= 0 && row < rows.size(); --above) {
        if (rows[above].depth < rows[row].depth) {
            return above;
        }
    }
    return row;
}

int ProjectFiles::rowBeginning(const QString& letters, int row) const {
    const auto& rows = m_tree.rows();
    const int count = static_cast<int>(rows.size());
    for (int i = 1; i <= count; ++i) {
        const int at = (std::max(row, -1) + i) % count;
        if (rows[at].name.startsWith(letters, Qt::CaseInsensitive)) {
            return at;
        }
    }
    return row;
}

void ProjectFiles::select(const QString& path) {
    ORV_ASSERT_MAIN_THREAD();
    if (path == m_selected) {
        return;
    }
    m_selected = path;
    for (qsizetype slash = path.indexOf(u'/'); slash > 0; slash = path.indexOf(u'/', slash + 1)) {
        setExpanded(path.first(slash), true);
    }
    Q_EMIT selectionChanged();
    Q_EMIT treeChanged();
    readFile();
}

void ProjectFiles::readFile() {
    const int at = ++m_fileGeneration;
    const auto take = [this, at](const FileContent& content) {
        if (at == m_fileGeneration) {
            m_note = content.note;
            m_facts = content.facts;
            m_lines.setContent(content);
            Q_EMIT contentChanged();
        }
    };
    if (m_selected.isEmpty()) {
        take({});
    } else {
        read([path = fileOf(m_selected)] { return FileContent::read(path); }, take);
    }
}

QString ProjectFiles::selectedName() const {
    return shownPath(m_selected.section(u'/', -1));
}

QString ProjectFiles::selectedFolder() const {
    return shownPath(m_selected.first(m_selected.lastIndexOf(u'/') + 1));
}

QString ProjectFiles::fileOf(const QString& path) const {
    return m_root + u'/' + path;
}

QUrl ProjectFiles::urlOf(const QString& path) const {
    return QUrl::fromLocalFile(fileOf(path));
}

QUrl ProjectFiles::folderUrlOf(const QString& path) const {
    return QUrl::fromLocalFile(QFileInfo(fileOf(path)).path());
}

QString ProjectFiles::textOf(int first, int last) const {
    const int from = std::max(0, std::min(first, last));
    const int to = std::min(std::max(first, last), m_lines.rowCount() - 1);
    return to < from ? QString() : m_lines.lines().sliced(from, to - from + 1).join(u'\n') + u'\n';
}

} // namespace orv
