#pragma once

#include "OrvUI/AgentModels.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/OutlineModel.h"

#include <QtQml/qqml.h>

// The model knows nothing of QML; here its types get their names there.

namespace orv {

struct AppModelElement {
    Q_GADGET
    QML_FOREIGN(orv::AppModel)
    QML_NAMED_ELEMENT(AppModel)
    QML_UNCREATABLE("There is one, made by the application")
};

struct AgentModelsElement {
    Q_GADGET
    QML_FOREIGN(orv::AgentModels)
    QML_NAMED_ELEMENT(AgentModels)
    QML_UNCREATABLE("The application's model owns it")
};

struct OutlineModelElement {
    Q_GADGET
    QML_FOREIGN(orv::OutlineModel)
    QML_NAMED_ELEMENT(OutlineModel)
    QML_UNCREATABLE("The application's model owns it")
};

} // namespace orv
