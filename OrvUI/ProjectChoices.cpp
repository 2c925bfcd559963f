#include "OrvUI/ProjectChoices.h"

#include "OrvUI/AppModel.h"
#include "OrvUI/Tile.h"

namespace orv {

const std::vector<RowRole<ProjectChoiceRow>>& ProjectChoiceRow::roles() {
    static const std::vector<RowRole<ProjectChoiceRow>> table{
        memberRole<&ProjectChoiceRow::key, ProjectChoiceRow>("projectID"),
        memberRole<&ProjectChoiceRow::name, ProjectChoiceRow>("name"),
        memberRole<&ProjectChoiceRow::tileIndex, ProjectChoiceRow>("tileIndex"),
        memberRole<&ProjectChoiceRow::tileLetter, ProjectChoiceRow>("tileLetter"),
    };
    return table;
}

void ProjectChoices::takeModel() {
    connect(m_model, &AppModel::projectsChanged, this, &ProjectChoices::update);
    update();
}

void ProjectChoices::update() {
    QList<ProjectChoiceRow> rows;
    for (const Project& project : m_model->projects()) {
        rows.append({project.id, project.name, Tile::index(project.name), Tile::letter(project.name)});
    }
    m_rows.setRows(rows);
}

} // namespace orv
