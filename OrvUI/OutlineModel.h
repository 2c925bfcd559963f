#pragma once

#include "OrvCore/Models.h"
#include "OrvUI/HomeRows.h"

#include <functional>

namespace orv {

/// The scanned tree as a list of the rows that can be seen. On each level folders come first. Collapsed at first; what
/// was opened stays open as long as the folder is there. Lives on the main thread.
class OutlineModel : public RowModel<OutlineRow> {
    Q_OBJECT
public:
    using StateOf = std::function<QString(const Project& project)>;

    explicit OutlineModel(QObject* parent = nullptr) : RowModel(parent) {}

    /// `stateOf` gives the word for what a project does just now.
    void setTree(const QList<ProjectNode>& tree, StateOf stateOf);

    Q_INVOKABLE void toggleExpanded(int row);
    Q_INVOKABLE void setExpanded(int row, bool isExpanded);

private:
    void rebuild();
    void appendRows(const QList<ProjectNode>& nodes, int depth, QList<OutlineRow>& rows) const;

    QList<ProjectNode> m_tree;
    StateOf m_stateOf;
    QSet<QString> m_expanded;
};

} // namespace orv
