#pragma once

#include <QObject>
#include <QQmlEngine>

namespace orv {

/// What the actions that run a project are called on the screens; the model knows them by other words.
class RunWords : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static QString of(const QString& action);
};

} // namespace orv
