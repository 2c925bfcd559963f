#pragma once

#include "OrvCore/Models.h"
#include "OrvProcess/ProcessManager.h"
#include "OrvUI/RowModel.h"

#include <QPointer>
#include <QUrl>
#include <QVariantList>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// A service on its project's page, whether it was ever started or not.
struct DetailServiceRow {
    QString key; ///< HomeModels::key
    QString icon;
    QString label;
    QString framework;
    QString folder; ///< within the project; "." for its root
    QString command;
    QString state; ///< "idle", "starting", "running", "stopping", "failed"
    QString message;
    QString address;
    bool isPortListening = true;

    bool operator==(const DetailServiceRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<DetailServiceRow>>& roles();
};

/// What a project's page shows of it, kept like the model. Changes come once, in the next turn of the event loop. Lives
/// on the main thread.
class ProjectDetail : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)
    Q_PROPERTY(QString projectID READ projectID WRITE setProjectID NOTIFY changed FINAL)
    Q_PROPERTY(bool found READ found NOTIFY changed FINAL)
    Q_PROPERTY(QString name READ name NOTIFY changed FINAL)
    /// With "~" for the home folder.
    Q_PROPERTY(QString pathText READ pathText NOTIFY changed FINAL)
    Q_PROPERTY(QUrl folderUrl READ folderUrl NOTIFY changed FINAL)
    Q_PROPERTY(int tileIndex READ tileIndex NOTIFY changed FINAL)
    Q_PROPERTY(QString tileLetter READ tileLetter NOTIFY changed FINAL)
    Q_PROPERTY(QStringList frameworks READ frameworks NOTIFY changed FINAL)
    Q_PROPERTY(bool pinned READ pinned NOTIFY changed FINAL)
    Q_PROPERTY(bool busy READ busy NOTIFY changed FINAL) ///< something runs, starts or is installed
    Q_PROPERTY(int runningCount READ runningCount NOTIFY changed FINAL)
    Q_PROPERTY(int openTaskCount READ openTaskCount NOTIFY changed FINAL)
    /// What can be run, of maps: label, state (as of a service; of several the least).
    Q_PROPERTY(QVariantList actions READ actions NOTIFY changed FINAL)
    Q_PROPERTY(QStringList startable READ startable NOTIFY changed FINAL)
    Q_PROPERTY(QString defaultAction READ defaultAction NOTIFY changed FINAL)
    Q_PROPERTY(QAbstractListModel* services READ services CONSTANT FINAL)

public:
    explicit ProjectDetail(QObject* parent = nullptr) : QObject(parent) {}

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);
    [[nodiscard]] const QString& projectID() const { return m_id; }
    void setProjectID(const QString& id);
    [[nodiscard]] bool found() const { return m_found; }
    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] QString pathText() const;
    [[nodiscard]] QUrl folderUrl() const;
    [[nodiscard]] int tileIndex() const;
    [[nodiscard]] QString tileLetter() const;
    [[nodiscard]] const QStringList& frameworks() const { return m_frameworks; }
    [[nodiscard]] bool pinned() const { return m_pinned; }
    [[nodiscard]] bool busy() const { return m_busy; }
    [[nodiscard]] int runningCount() const { return m_runningCount; }
    [[nodiscard]] int openTaskCount() const { return m_openTaskCount; }
    [[nodiscard]] const QVariantList& actions() const { return m_actions; }
    [[nodiscard]] const QStringList& startable() const { return m_startable; }
    [[nodiscard]] const QString& defaultAction() const { return m_defaultAction; }
    [[nodiscard]] QAbstractListModel* services() { return &m_services; }

    /// Starts the one service, without the others of its kind.
    Q_INVOKABLE void startService(const QString& key);
    Q_INVOKABLE void stopService(const QString& key);
    Q_INVOKABLE void restartService(const QString& key);
    /// Those of an action that run or start.
    Q_INVOKABLE void stopAction(const QString& label);

Q_SIGNALS:
    void modelChanged();
    void changed();

private:
    void updateSoon();
    void update();
    [[nodiscard]] DetailServiceRow row(const ServiceTarget& target, const ServiceID& id) const;
    [[nodiscard]] QString state(const ServiceID& id) const;
    [[nodiscard]] std::optional<ServiceID> service(const QString& key) const;

    QPointer<AppModel> m_model;
    QString m_id;
    bool m_isUpdateDue = false;
    bool m_found = false;
    QString m_name;
    QStringList m_frameworks;
    bool m_pinned = false;
    bool m_busy = false;
    int m_runningCount = 0;
    int m_openTaskCount = 0;
    QVariantList m_actions;
    QStringList m_startable;
    QString m_defaultAction;
    RowModel<DetailServiceRow> m_services;
};

} // namespace orv
