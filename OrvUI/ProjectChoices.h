#pragma once

#include "OrvUI/ModelPart.h"
#include "OrvUI/RowModel.h"

namespace orv {

struct ProjectChoiceRow {
    QString key; ///< the project's id
    QString name;
    int tileIndex = 0;
    QString tileLetter;

    bool operator==(const ProjectChoiceRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<ProjectChoiceRow>>& roles();
};

/// Every project, for a menu in which one is chosen, whatever the home page looks for. Lives on the main thread.
class ProjectChoices : public orv::ModelPart {
    Q_OBJECT
    Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT FINAL)

public:
    using ModelPart::ModelPart;

    [[nodiscard]] QAbstractListModel* rows() { return &m_rows; }

private:
    void takeModel() override;
    void update();

    RowModel<ProjectChoiceRow> m_rows;
};

} // namespace orv
