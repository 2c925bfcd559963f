#pragma once

#include "OrvCore/Models.h"
#include "OrvProcess/ProcessManager.h"
#include "OrvUI/AgentRows.h"
#include "OrvUI/ModelPart.h"
#include "OrvUI/RowModel.h"

#include <QUrl>
#include <QVariantList>

#include <memory>

Q_MOC_INCLUDE("OrvUI/ProjectFiles.h")

namespace orv {

class ProjectFiles;

/// A service on its project's page, whether it was ever started or not.
struct DetailServiceRow {
    QString key; ///< HomeModels::key
    QString icon;
    QString label;
    QString framework;
    QString folder; ///< within the project; "." for its root
    QString command;
    QString state; ///< "idle", "starting", "running", "stopping", "failed", "orphaned" (it is left from last time)
    QString message;
    QString address;
    bool isPortListening = true;

    bool operator==(const DetailServiceRow&) const = default;
    [[nodiscard]] static const std::vector<RowRole<DetailServiceRow>>& roles();
};

/// What a project's page shows of it, kept like the model. Changes come once, in the next turn of the event loop. Lives
/// on the main thread.
class ProjectDetail : public orv::ModelPart {
    Q_OBJECT
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
    Q_PROPERTY(bool isFlutter READ isFlutter NOTIFY changed FINAL)
    Q_PROPERTY(bool busy READ busy NOTIFY changed FINAL) ///< something runs, starts or is installed
    Q_PROPERTY(int runningCount READ runningCount NOTIFY changed FINAL)
    Q_PROPERTY(int leftCount READ leftCount NOTIFY changed FINAL) ///< services that still run from last time
    Q_PROPERTY(int openTaskCount READ openTaskCount NOTIFY changed FINAL)
    Q_PROPERTY(int gitChanges READ gitChanges NOTIFY changed FINAL) ///< files that are not committed
    /// What can be run, of maps: label, state (as of a service; of several the least).
    Q_PROPERTY(QVariantList actions READ actions NOTIFY changed FINAL)
    Q_PROPERTY(QStringList startable READ startable NOTIFY changed FINAL)
    Q_PROPERTY(QString defaultAction READ defaultAction NOTIFY changed FINAL)
    Q_PROPERTY(QAbstractListModel* services READ services CONSTANT FINAL)
    Q_PROPERTY(QAbstractListModel* latestRuns READ latestRuns CONSTANT FINAL)
    Q_PROPERTY(orv::ProjectFiles* files READ files CONSTANT FINAL)

public:
    static constexpr qsizetype latestRunLimit = 2;

    explicit ProjectDetail(QObject* parent = nullptr);
    ~ProjectDetail() override;

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
    [[nodiscard]] bool isFlutter() const { return m_isFlutter; }
    [[nodiscard]] bool busy() const { return m_busy; }
    [[nodiscard]] int runningCount() const { return m_runningCount; }
    [[nodiscard]] int leftCount() const { return m_leftCount; }
    [[nodiscard]] int openTaskCount() const { return m_openTaskCount; }
    [[nodiscard]] int gitChanges() const { return m_gitChanges; }
    [[nodiscard]] const QVariantList& actions() const { return m_actions; }
    [[nodiscard]] const QStringList& startable() const { return m_startable; }
    [[nodiscard]] const QString& defaultAction() const { return m_defaultAction; }
    [[nodiscard]] QAbstractListModel* services() { return &m_services; }
    [[nodiscard]] QAbstractListModel* latestRuns() { return &m_latestRuns; } ///< of agents, newest first
    [[nodiscard]] ProjectFiles* files() const { return m_files.get(); }      ///< read when they are first looked at

    /// Starts the one service, without the others of its kind.
    Q_INVOKABLE void startService(const QString& key);
    Q_INVOKABLE void stopService(const QString& key);
    Q_INVOKABLE void restartService(const QString& key);
    /// Those of an action that run, start or are left.
    Q_INVOKABLE void stopAction(const QString& label);

Q_SIGNALS:
    void changed();

private:
    void takeModel() override;
    void updateSoon();
    void update();
    [[nodiscard]] DetailServiceRow row(const ServiceTarget& target, const ServiceID& id) const;
    [[nodiscard]] QString state(const ServiceID& id) const;
    [[nodiscard]] std::optional<ServiceID> service(const QString& key) const;

    QString m_id;
    bool m_isUpdateDue = false;
    bool m_found = false;
    QString m_name;
    QStringList m_frameworks;
    bool m_pinned = false;
    bool m_isFlutter = false;
    bool m_busy = false;
    int m_runningCount = 0;
    int m_leftCount = 0;
    int m_openTaskCount = 0;
    int m_gitChanges = 0;
    QVariantList m_actions;
    QStringList m_startable;
    QString m_defaultAction;
    RowModel<DetailServiceRow> m_services;
    RowModel<AgentRunRow> m_latestRuns;
    std::unique_ptr<ProjectFiles> m_files;
};

} // namespace orv
