#pragma once

#include <QObject>
#include <QPointer>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// Runs the project for which a device is asked on the one that was chosen. Lives on the main thread.
class DeviceRun : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);

    /// By the device's key; from now on always there when `remembers`. Ends the asking.
    Q_INVOKABLE void start(const QString& key, bool remembers);

Q_SIGNALS:
    void modelChanged();

private:
    QPointer<AppModel> m_model;
};

} // namespace orv
