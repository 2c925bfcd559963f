#include "OrvUI/ModelPart.h"

#include "OrvUI/AppModel.h"

namespace orv {

AppModel* ModelPart::model() const {
    return m_model;
}

void ModelPart::setModel(AppModel* model) {
    if (model == m_model) {
        return;
    }
    m_model = model;
    Q_EMIT modelChanged();
    takeModel();
}

} // namespace orv
