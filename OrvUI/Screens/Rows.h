#pragma once

#include <QAbstractItemModel>
#include <QtQmlIntegration>

namespace orv {

/// Finds rows of list models. A QML singleton.
class Rows : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// The first row whose `role` has that value; -1 when there is none.
    Q_INVOKABLE static int find(const QAbstractItemModel* model, const QString& role, const QVariant& value);
};

} // namespace orv
