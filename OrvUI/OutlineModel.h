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
    struct Activity {
        QString state;      ///< the word for what a project does just now
        int gitChanges = 0; ///< files that are not committed
    };
    using ActivityOf = std::function<Activity(const Project& project)>;

    explicit OutlineModel(QObject* parent = nullptr) : RowModel(parent) {}

    void setTree(const QList<ProjectNode>& tree, ActivityOf activityOf);

    [[nodiscard]] static QList<const ProjectNode*> foldersFirst(const QList<ProjectNode>& nodes);

    Q_INVOKABLE void toggleExpanded(int row);
    Q_INVOKABLE void setExpanded(int row, bool isExpanded);
    /// The paths of what is open, whether it can be seen or not.
    [[nodiscard]] const QSet<QString>& expandedPaths() const { return m_expanded; }
    void setExpandedPaths(const QSet<QString>& paths);

Q_SIGNALS:
    void expandedPathsChanged();

private:
    void rebuild();
    void appendRows(const QList<ProjectNode>& nodes, int depth, QList<OutlineRow>& rows) const;

    QList<ProjectNode> m_tree;
    ActivityOf m_activityOf;
    QSet<QString> m_expanded;
};

} // namespace orv
