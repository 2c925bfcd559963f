#pragma once

#include <QObject>
#include <QQmlEngine>

namespace orv {

/// What the actions that run a project, and the states of what runs, are called on the screens; the model knows them by
/// other words.
class RunWords : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static QString of(const QString& action);
    /// Of a service, a card or a project; empty for one that is idle.
    Q_INVOKABLE static QString ofState(const QString& state);
};

} // namespace orv
