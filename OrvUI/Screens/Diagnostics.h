#pragma once

#include "OrvUI/AppModel.h"

#include <QObject>
#include <QQmlEngine>

namespace orv {

/// What somebody who is asked for help wants to know of this machine and of what the application does here: no names of
/// projects, no paths, nothing that was printed.
class Diagnostics : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static QString text(orv::AppModel* model);
};

} // namespace orv
