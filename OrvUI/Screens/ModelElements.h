#pragma once

#include "OrvUI/AppModel.h"
#include "OrvUI/Collection.h"
#include "OrvUI/Navigator.h"
#include "OrvUI/OutlineModel.h"
#include "OrvUI/OverrideRows.h"
#include "OrvUI/ProjectDetail.h"
#include "OrvUI/SettingsForm.h"

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

struct CollectionElement {
    Q_GADGET
    QML_FOREIGN(orv::Collection)
    QML_NAMED_ELEMENT(Collection)
};

struct NavigatorElement {
    Q_GADGET
    QML_FOREIGN(orv::Navigator)
    QML_NAMED_ELEMENT(Navigator)
};

struct OverrideRowsElement {
    Q_GADGET
    QML_FOREIGN(orv::OverrideRows)
    QML_NAMED_ELEMENT(OverrideRows)
};

struct ProjectDetailElement {
    Q_GADGET
    QML_FOREIGN(orv::ProjectDetail)
    QML_NAMED_ELEMENT(ProjectDetail)
};

struct SettingsFormElement {
    Q_GADGET
    QML_FOREIGN(orv::SettingsForm)
    QML_NAMED_ELEMENT(SettingsForm)
};

} // namespace orv
