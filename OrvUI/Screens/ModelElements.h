#pragma once

#include "OrvUI/AppModel.h"
#include "OrvUI/GitModel.h"
#include "OrvUI/NewProject.h"
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

struct OutlineModelElement {
    Q_GADGET
    QML_FOREIGN(orv::OutlineModel)
    QML_NAMED_ELEMENT(OutlineModel)
    QML_UNCREATABLE("The application's model owns it")
};

struct GitModelElement {
    Q_GADGET
    QML_FOREIGN(orv::GitModel)
    QML_NAMED_ELEMENT(GitModel)
    QML_UNCREATABLE("The application's model owns it")
};

struct DiffModelElement {
    Q_GADGET
    QML_FOREIGN(orv::DiffModel)
    QML_NAMED_ELEMENT(DiffModel)
    QML_UNCREATABLE("The model of the git page owns it")
};

struct NewProjectElement {
    Q_GADGET
    QML_FOREIGN(orv::NewProject)
    QML_NAMED_ELEMENT(NewProject)
    QML_UNCREATABLE("The application's model owns it")
};

} // namespace orv
