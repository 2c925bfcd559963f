#pragma once

#include "OrvGit/Patch.h"
#include "OrvUI/CodeHighlighter.h"

#include <QAbstractListModel>

#include <optional>
#include <vector>

namespace orv {

/// The lines of one file's diff, each hunk under a row with its heading. What a row shows is made when it is asked for,
/// so that a diff of 100,000 lines costs little more than itself. What differs is replaced, and there is no reset.
/// Lives on the main thread.
///
/// Lines are chosen here, for what stages, unstages or discards a part of the file.
class DiffModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ rowCount NOTIFY diffChanged)
    Q_PROPERTY(int hunkCount READ hunkCount NOTIFY diffChanged)
    Q_PROPERTY(int added READ added NOTIFY diffChanged)
    Q_PROPERTY(int removed READ removed NOTIFY diffChanged)
    Q_PROPERTY(bool hasSelection READ hasSelection NOTIFY selectionChanged)
public:
    enum Role {
        kind = Qt::UserRole, ///< "hunk", "context", "added", "removed"
        text,                ///< fit to be shown in one line
        oldNumber,           ///< 0 where that side has no such line
        newNumber,
        hunk, ///< its index
        isSelected,
        endsWithoutLineFeed,
        spans, ///< what is coloured in the text: start, length and CodeToken of each piece, as a flat list of numbers
    };
    /// A longer line is cut: nobody reads it, and laying it out would take seconds.
    static constexpr qsizetype longestText = 2000;

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    /// What is chosen stays only where the diff is the same.
    void setDiff(const FileDiff& diff);
    [[nodiscard]] const FileDiff& diff() const { return m_diff; }
    [[nodiscard]] int hunkCount() const { return static_cast<int>(m_diff.hunks.size()); }
    [[nodiscard]] int added() const { return m_added; }
    [[nodiscard]] int removed() const { return m_removed; }

    /// Every changed line of the hunk; empty when there is no such hunk.
    [[nodiscard]] DiffSelection hunkLines(int hunkIndex) const;
    [[nodiscard]] const DiffSelection& selection() const { return m_selection; }
    [[nodiscard]] bool hasSelection() const { return !m_selection.empty(); }
    /// A line that did not change can't be chosen; the row of a hunk stands for all its lines.
    Q_INVOKABLE void setSelected(int row, bool isChosen);
    /// The lines from one row to the other, in any order.
    Q_INVOKABLE void selectRange(int first, int last);
    Q_INVOKABLE void clearSelection();
    /// The hunk that the row is part of; -1 when there is no such row.
    Q_INVOKABLE int hunkAt(int row) const;

Q_SIGNALS:
    void diffChanged();
    void selectionChanged();

private:
    /// Where a row lies: a line of -1 is the hunk's heading.
    struct Place {
        int hunk = 0;
        int line = -1;
    };
    [[nodiscard]] static std::vector<Place> placesOf(const FileDiff& diff);
    [[nodiscard]] static bool isSame(const FileDiff& a, Place inA, const FileDiff& b, Place inB);
    [[nodiscard]] const Place* place(int row) const; ///< null when there is no such row
    void selectLine(Place line, bool isChosen);
    void announceSelection();
    /// What is open on each side of the diff behind a line.
    struct SideStates {
        CodeState before = 0;
        CodeState after = 0;
    };
    [[nodiscard]] SideStates statesAt(int row) const;
    [[nodiscard]] QList<CodeSpan> highlight(int row, SideStates& states) const;
    [[nodiscard]] QVariant spansOf(int row) const;

    FileDiff m_diff;
    std::vector<Place> m_places; ///< by row
    int m_added = 0;
    int m_removed = 0;
    DiffSelection m_selection;
    const CodeLanguage* m_language = nullptr;                ///< null: there are no colours
    mutable std::vector<std::optional<SideStates>> m_states; ///< by row, at the line's end; what was asked for
};

} // namespace orv
