#pragma once

#include "OrvGit/GitModels.h"

#include <QObject>
#include <QPointer>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// The name and e-mail that commits carry wherever a repository does not say otherwise: git's global ones. Read when
/// the model is set, and written one at a time, each only when it changes. Lives on the main thread; git runs in the
/// pool.
class GitIdentityForm : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY changed FINAL)
    Q_PROPERTY(QString email READ email WRITE setEmail NOTIFY changed FINAL)
    Q_PROPERTY(bool isRead READ isRead NOTIFY changed FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);
    [[nodiscard]] QString name() const { return m_identity.name.value_or(QString()); }
    [[nodiscard]] QString email() const { return m_identity.email.value_or(QString()); }
    [[nodiscard]] bool isRead() const { return m_isRead; }
    /// Blank text changes nothing: git has no name for nobody. What git refuses is reported, and the old one stands
    /// again.
    void setName(const QString& name);
    void setEmail(const QString& email);
    /// git takes any text; one without an "@" between two parts is hardly meant.
    [[nodiscard]] static bool isLikelyEmail(const QString& text);

Q_SIGNALS:
    void modelChanged();
    void changed();

private:
    void read();
    void write(const GitIdentity& identity);

    QPointer<AppModel> m_model;
    GitIdentity m_identity;
    bool m_isRead = false;
};

} // namespace orv
