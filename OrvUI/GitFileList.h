#pragma once

#include "OrvUI/GitRows.h"

namespace orv {

/// A row of the one list that the git page shows at its side: what is changed, by section, and the stashes.
struct GitFileRow {
    QString key;
    QString kind;    ///< "heading", "file", "stash", "more" for those that are too many to be listed
    QString section; ///< "conflicts", "staged", "changes", "stashes"
    QString path;    ///< of a file, as git knows it; of a stash its hash
    QString name;    ///< fit to be shown
    QString folder;
    QString letter;
    QString word;
    int count = 0; ///< of a heading and of "more"

    bool operator==(const GitFileRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<GitFileRow>>& roles();
};

/// The rows of the list, each section under its heading; a section without anything is left out.
class GitFileList : public RowModel<GitFileRow> {
    Q_OBJECT
public:
    explicit GitFileList(QObject* parent = nullptr) : RowModel(parent) {}

    void setLists(const ChangeLists& changes, const QList<StashRow>& stashes);

    /// The row of the file in that section; -1 when there is none.
    [[nodiscard]] int rowOf(const QString& path, const QString& section) const;
    [[nodiscard]] const GitFileRow* at(int row) const; ///< null when there is no such row
    /// The nearest row that can be chosen, `step` rows on; `row` itself when there is none.
    Q_INVOKABLE int step(int row, int step) const;
    /// The next row of the same section, or the one before; -1 when it is the only one.
    [[nodiscard]] int neighbour(int row) const;
};

} // namespace orv
