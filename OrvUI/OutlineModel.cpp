#include "OrvUI/OutlineModel.h"

#include "OrvUI/Tile.h"

#include <algorithm>

namespace orv {

void OutlineModel::setTree(const QList<ProjectNode>& tree, ActivityOf activityOf) {
    m_tree = tree;
    m_activityOf = std::move(activityOf);
    rebuild();
}

void OutlineModel::toggleExpanded(int row) {
    if (row >= 0 && row < rowCount()) {
        setExpanded(row, !rows()[row].isExpanded);
    }
}

void OutlineModel::setExpanded(int row, bool isExpanded) {
    if (row < 0 || row >= rowCount() || !rows()[row].hasChildren) {
        return;
    }
    const QString path = rows()[row].key;
    if (isExpanded) {
        m_expanded.insert(path);
    } else {
        m_expanded.remove(path);
    }
    rebuild();
    Q_EMIT expandedPathsChanged();
}

void OutlineModel::setExpandedPaths(const QSet<QString>& paths) {
    if (paths != m_expanded) {
        m_expanded = paths;
        rebuild();
        Q_EMIT expandedPathsChanged();
    }
}

void OutlineModel::rebuild() {
    QList<OutlineRow> rows;
    appendRows(m_tree, 0, rows);
    setRows(rows);
}

QList<const ProjectNode*> OutlineModel::foldersFirst(const QList<ProjectNode>& nodes) {
    QList<const ProjectNode*> ordered;
    for (const ProjectNode& node : nodes) {
        ordered.append(&node);
    }
    std::ranges::stable_partition(ordered, [](const ProjectNode* node) { return !node->project; });
    return ordered;
}

void OutlineModel::appendRows(const QList<ProjectNode>& nodes, int depth, QList<OutlineRow>& rows) const {
    for (const ProjectNode* node : foldersFirst(nodes)) {
        const bool isExpanded = m_expanded.contains(node->path);
        const Activity now = node->project ? m_activityOf(*node->project) : Activity();
        rows.append({
            .key = node->path,
            .name = node->name,
            .depth = depth,
            .isExpanded = isExpanded,
            .isFolder = !node->project,
            .hasChildren = !node->children.isEmpty(),
            .projectID = node->project ? node->project->id : QString(),
            .tileIndex = Tile::index(node->name),
            .tileLetter = Tile::letter(node->name),
            .cardState = now.state,
            .gitChanges = now.gitChanges,
        });
        if (isExpanded) {
            appendRows(node->children, depth + 1, rows);
        }
    }
}

} // namespace orv
