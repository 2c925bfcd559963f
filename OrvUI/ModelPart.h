#pragma once

#include <QObject>
#include <QPointer>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// What a page makes for itself and hands the application's model, once. Lives on the main thread.
class ModelPart : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);

Q_SIGNALS:
    void modelChanged();

protected:
    /// `m_model` is there now: the part connects to it, and says that what it shows is another.
    virtual void takeModel() = 0;

    QPointer<AppModel> m_model;
};

} // namespace orv
