#include "OrvUI/Collection.h"

#include "OrvCore/Paths.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/HomeModels.h"
#include "OrvUI/NameSearch.h"

namespace orv {

namespace {

const ProjectNode* find(const QList<ProjectNode>& nodes, const QString& path) {
    for (const ProjectNode& node : nodes) {
        if (node.path == path) {
            return &node;
        }
        if (const ProjectNode* below = find(node.children, path)) {
            return below;
        }
    }
    return nullptr;
}

} // namespace

void Collection::takeModel() {
    connect(&m_model->home(), &HomeModels::updated, this, &Collection::update);
    update();
}

void Collection::setPath(const QString& path) {
    if (path != m_path) {
        m_path = path;
        update();
    }
}

void Collection::setNested(bool isNested) {
    if (isNested != m_isNested) {
        m_isNested = isNested;
        update();
    }
}

void Collection::setSearchText(const QString& text) {
    if (text != m_searchText) {
        m_searchText = text;
        update();
    }
}

QString Collection::pathText() const {
    return Paths::shortened(m_path);
}

void Collection::update() {
    if (!m_model || m_path.isEmpty()) {
        return;
    }
    const ProjectNode* folder = find(m_model->tree(), m_path);
    QList<CardRow> rows;
    if (folder != nullptr) {
        m_name = folder->name;
        // A search looks through everything below.
        if (m_isNested && m_searchText.isEmpty()) {
            for (const ProjectNode* node : OutlineModel::foldersFirst(folder->children)) {
                rows.append(node->project ? m_model->home().card(*node->project) : m_model->home().collection(*node));
            }
        } else {
            const NameSearch search(m_searchText);
            for (const Project& project : folder->apps()) {
                if (search.matches(project.name)) {
                    rows.append(m_model->home().card(project));
                }
            }
        }
    }
    m_cards.setRows(rows);
    Q_EMIT changed();
}

} // namespace orv
