#include "OrvUI/ProjectChoice.h"

#include "OrvCore/Async.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/NameSearch.h"
#include "OrvUI/Tile.h"

namespace orv {

const std::vector<RowRole<ProjectChoiceRow>>& ProjectChoiceRow::roles() {
    using Row = ProjectChoiceRow;
    static const std::vector<RowRole<Row>> table{
        memberRole<&Row::key, Row>("projectID"),
        memberRole<&Row::name, Row>("name"),
        memberRole<&Row::tileIndex, Row>("tileIndex"),
        memberRole<&Row::tileLetter, Row>("tileLetter"),
    };
    return table;
}

void ProjectChoice::takeModel() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_model != nullptr) {
        connect(m_model, &AppModel::projectsChanged, this, &ProjectChoice::update);
    }
    update();
}

ProjectChoiceRow ProjectChoice::rowOf(const QString& projectID) const {
    const Project* project = m_model != nullptr ? m_model->project(projectID) : nullptr;
    if (project == nullptr) {
        return {projectID, {}, 0, {}};
    }
    return {project->id, project->name, Tile::index(project->name), Tile::letter(project->name)};
}

void ProjectChoice::choose(const QString& projectID) {
    ProjectChoiceRow row = rowOf(projectID);
    if (row != m_chosen) {
        m_chosen = std::move(row);
        Q_EMIT chosenChanged();
    }
}

bool ProjectChoice::chooseAt(int place) {
    const bool isThere = place >= 0 && place < m_rows.rowCount();
    if (isThere) {
        choose(m_rows.rows().at(place).key);
    }
    return isThere;
}

void ProjectChoice::setListing(bool isListing) {
    if (isListing != m_isListing) {
        m_isListing = isListing;
        update();
        Q_EMIT listingChanged();
    }
}

void ProjectChoice::setText(const QString& text) {
    if (text != m_text) {
        m_text = text;
        update();
        Q_EMIT textChanged();
    }
}

void ProjectChoice::update() {
    choose(m_chosen.key);
    QList<ProjectChoiceRow> rows;
    if (m_isListing && m_model != nullptr) {
        const NameSearch search(m_text);
        for (const Project& project : m_model->projects()) {
            if (search.matches(project.name)) {
                rows.append(rowOf(project.id));
            }
        }
    }
    m_rows.setRows(rows);
}

} // namespace orv
