#pragma once

#include "OrvCore/ChildRecord.h"
#include "OrvCore/ExitWatch.h"
#include "OrvProcess/ProcessManager.h"

#include <QFuture>
#include <QHash>
#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace orv {

class AppModel;
class ChildRecords;

/// Services and agents that an application which was killed has left running, as far as they were found. One that ends
/// is told of at once. Lives on the main thread.
class OrphanedWork : public QObject {
    Q_OBJECT
    /// What there is to say of them, as a sentence; empty when there are none, or when it was read.
    Q_PROPERTY(QString text READ text NOTIFY changed FINAL)
    Q_PROPERTY(bool stopping READ isStopping NOTIFY changed FINAL) ///< all of them
    /// Of the projects in whose folder an agent works on.
    Q_PROPERTY(QStringList agentProjects READ agentProjects NOTIFY changed FINAL)

public:
    /// What there is, and what becomes readable when one of it has ended.
    struct Found {
        QList<ChildRecord> children;
        std::shared_ptr<ExitWatch> exits;
    };

    explicit OrphanedWork(AppModel& model);

    /// Blocking; any thread.
    [[nodiscard]] static Found find(const ChildRecords& records);
    /// Looks for them, off the main thread.
    QFuture<void> look();
    /// Looks whether those that were found are still there.
    Q_INVOKABLE void lookAgain();
    /// Takes the place of what was found before.
    void takeIn(const Found& found);

    [[nodiscard]] const QList<ChildRecord>& all() const { return m_all; }
    [[nodiscard]] QString text() const;
    [[nodiscard]] bool isStopping() const;
    /// Those that are services, without installs.
    [[nodiscard]] QList<ServiceID> services() const;
    /// Those of a project, its installs too.
    [[nodiscard]] QList<ServiceID> services(const QString& projectID) const;
    /// Whether the service, an install too, is one of them.
    [[nodiscard]] bool holds(const ServiceID& id) const;
    [[nodiscard]] bool isEnding(const ServiceID& id) const;
    [[nodiscard]] QStringList agentProjects() const;
    /// "orphaned", or "stopping" while it is being ended; empty when the service is none of them.
    [[nodiscard]] QString state(const ServiceID& id) const;

    /// Ends all of them.
    Q_INVOKABLE void stop();
    /// Ends those that are services, installs too; the agents work on.
    void stopServices();
    /// Ends what of them is the service, and waits for it.
    QFuture<void> stop(const ServiceID& id);
    /// Looks for the agent of the run, ends it, and waits for it. Whatever else works in its folder works on.
    QFuture<void> stopRun(const QUuid& run);
    /// Ends the agents that work in the project's folder.
    Q_INVOKABLE void stopAgentsOf(const QString& projectID);
    /// Ends the services of a project, its installs too; its agents work on.
    QFuture<void> stopServices(const QString& projectID);
    /// Finishes when those that are being ended are gone.
    QFuture<void> ends();
    /// Nothing more is said of those that are known now.
    Q_INVOKABLE void dismiss();

Q_SIGNALS:
    void changed();

private:
    /// An agent, in the folder of its project and not in a work tree of its own.
    [[nodiscard]] bool holdsFolder(const ChildRecord& child) const;
    QFuture<void> stopThose(const std::function<bool(const ChildRecord&)>& isMeant);
    void ended(const ChildRecord& child);
    void follow(const std::shared_ptr<ExitWatch>& exits);

    AppModel& m_model;
    std::shared_ptr<ExitWatch> m_exits;
    std::unique_ptr<QSocketNotifier> m_exitNotifier; ///< of `m_exits`
    QList<ChildRecord> m_all;
    QHash<int, QFuture<void>> m_ends; ///< under way, by the group
    bool m_isDismissed = false;
};

} // namespace orv
