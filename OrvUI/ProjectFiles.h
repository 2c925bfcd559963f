#pragma once

#include "OrvCore/Async.h"
#include "OrvGit/GitService.h"
#include "OrvUI/CodeLines.h"
#include "OrvUI/FileFinder.h"
#include "OrvUI/RowModel.h"

#include <QHash>
#include <QPointer>
#include <QSet>
#include <QThreadPool>
#include <QUrl>

namespace orv {

/// A folder or file of the tree that can be seen.
struct FileTreeRow {
    QString key; ///< its path, relative to the project's folder
    QString name;
    int depth = 0;
    bool isFolder = false;
    bool isExpanded = false;
    QString letter; ///< what git says of it; empty: nothing

    bool operator==(const FileTreeRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<FileTreeRow>>& roles();
};

/// A file that was found by what somebody typed.
struct FileMatchRow {
    QString key; ///< its path, relative to the project's folder
    QList<int> letters;
    QString letter;

    bool operator==(const FileMatchRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<FileMatchRow>>& roles();
};

/// The files of a project: the tree, whose folders are read when they are opened, a search over all of them, and the
/// one that is looked at. Reads nothing before `refresh`. Lives on the main thread; the disk and git are read in a pool
/// of its own, and what comes too late is dropped.
class ProjectFiles : public QObject {
    Q_OBJECT
    Q_PROPERTY(QAbstractListModel* tree READ tree CONSTANT FINAL)
    Q_PROPERTY(QAbstractListModel* matches READ matches CONSTANT FINAL)
    Q_PROPERTY(QAbstractListModel* lines READ lines CONSTANT FINAL)
    Q_PROPERTY(QString findText READ findText WRITE setFindText NOTIFY findTextChanged FINAL)
    Q_PROPERTY(QString countText READ countText NOTIFY countChanged FINAL)
    Q_PROPERTY(int currentRow READ currentRow NOTIFY treeChanged FINAL)
    Q_PROPERTY(QString selectedPath READ selectedPath NOTIFY selectionChanged FINAL)
    Q_PROPERTY(QString selectedName READ selectedName NOTIFY selectionChanged FINAL)
    Q_PROPERTY(QString selectedFolder READ selectedFolder NOTIFY selectionChanged FINAL)
    Q_PROPERTY(QString selectedLetter READ selectedLetter NOTIFY contentChanged FINAL)
    Q_PROPERTY(QString note READ note NOTIFY contentChanged FINAL)
    Q_PROPERTY(QString facts READ facts NOTIFY contentChanged FINAL)

public:
    explicit ProjectFiles(QObject* parent = nullptr);
    ~ProjectFiles() override;

    /// Whose files these are; closes everything. The scanned folder tells which repository the project is a part of.
    void setRoot(const QString& folder, const QString& scanRoot);
    [[nodiscard]] bool wasRead() const { return !m_folders.isEmpty(); }
    /// Reads the open folders, the file that is looked at, and git's letters again.
    Q_INVOKABLE void refresh();

    [[nodiscard]] RowModel<FileTreeRow>* tree() { return &m_tree; }
    [[nodiscard]] RowModel<FileMatchRow>* matches() { return &m_matches; }
    [[nodiscard]] CodeLines* lines() { return &m_lines; }
    [[nodiscard]] const QString& findText() const { return m_findText; }
    void setFindText(const QString& text);
    [[nodiscard]] QString countText() const; ///< "142 files"; empty until they are counted
    [[nodiscard]] int currentRow() const;    ///< of the file that is looked at; -1 where it is not seen
    [[nodiscard]] const QString& selectedPath() const { return m_selected; }
    [[nodiscard]] QString selectedName() const;
    [[nodiscard]] QString selectedFolder() const; ///< what comes before the name, with the slash at its end
    [[nodiscard]] QString selectedLetter() const { return m_letters.value(m_selected); }
    [[nodiscard]] const QString& note() const { return m_note; }
    [[nodiscard]] const QString& facts() const { return m_facts; }

    /// Looks at a file, and opens the folders that it lies in.
    Q_INVOKABLE void select(const QString& path);
    /// Looks at the match of that row (the first where it is none), and ends the search. While matches of what was
    /// typed are still looked for, that is done when they are there.
    Q_INVOKABLE void takeMatch(int row);
    Q_INVOKABLE void setExpanded(const QString& path, bool isExpanded);
    /// The row of the folder that the row lies in; the row itself at the top.
    Q_INVOKABLE int parentRow(int row) const;
    /// The next row from `row` on, but for itself, whose name begins so.
    Q_INVOKABLE int rowBeginning(const QString& letters, int row) const;
    [[nodiscard]] Q_INVOKABLE QString fileOf(const QString& path) const; ///< absolute
    [[nodiscard]] Q_INVOKABLE QUrl urlOf(const QString& path) const;
    [[nodiscard]] Q_INVOKABLE QUrl folderUrlOf(const QString& path) const;
    /// Lines from one row to another, in any order, as they stand in the file.
    [[nodiscard]] Q_INVOKABLE QString textOf(int first, int last) const;

Q_SIGNALS:
    void rootChanged();
    void findTextChanged();
    void countChanged();
    void treeChanged();
    void selectionChanged();
    void contentChanged();
    void matchTaken();

private:
    template <typename Work, typename Handler>
    void read(Work work, Handler handler);
    void readFolder(const QString& folder);
    void readLetters();
    void readFile();
    void listFiles();
    void search();
    void rebuild();
    void append(const QString& folder, int depth, QList<FileTreeRow>& rows) const;

    QString m_root;
    QString m_scanRoot;
    int m_generation = 0;                               ///< of the root
    QHash<QString, QList<FileFinder::Entry>> m_folders; ///< that were read, by their relative path with a slash
    QSet<QString> m_expanded;
    QHash<QString, QString> m_letters; ///< git's, by relative path; of a folder "·" where there is one below it
    RowModel<FileTreeRow> m_tree;

    FileFinder::Listing m_all;
    bool m_isListed = false;
    bool m_isListing = false;
    QString m_findText;
    int m_searchGeneration = 0;
    bool m_isSearching = false;
    std::optional<int> m_wishedMatch; ///< asked for before there were any
    RowModel<FileMatchRow> m_matches;

    QString m_selected;
    int m_fileGeneration = 0;
    CodeLines m_lines;
    QString m_note;
    QString m_facts;

    std::shared_ptr<std::atomic<bool>> m_isCancelled;
    GitService m_git;
    QThreadPool m_pool; ///< last, so that what runs in it ends first
};

} // namespace orv
