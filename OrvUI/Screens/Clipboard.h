#pragma once

#include <QObject>
#include <QtQmlIntegration>

namespace orv {

/// The desktop's clipboard. A QML singleton.
class Clipboard : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static void copy(const QString& text);
};

} // namespace orv
