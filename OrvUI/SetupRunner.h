#pragma once

#include "OrvUI/InstallRecord.h"
#include "OrvUI/ModelTypes.h"

#include <QObject>
#include <QThreadPool>
#include <QTimer>

namespace orv {

/// Runs the installs of a setup session one after the other as one-shot services. The first one that fails or is
/// stopped ends it. Lives on the main thread; good for one run.
class SetupRunner : public QObject {
    Q_OBJECT
public:
    struct Step {
        ServiceID id;                 ///< under which the install runs
        QList<ServiceTarget> targets; ///< what is installed for: by the command of the first, which is that of all
        std::optional<QString> override = {}; ///< in place of that, in the folder of the first
    };
    struct Parts {
        ProcessManager& processes;
        std::shared_ptr<InstallRecord> installs;
        QThreadPool& pool; ///< for looks at the disk
    };

    SetupRunner(Parts parts, QList<Step> steps, QObject* parent);

    void start();
    /// Stops the install that runs, and begins no other; `finished` follows when it is gone and that is noted.
    void stop();
    [[nodiscard]] bool isStopped() const { return m_isStopped; }
    /// The service of the step that runs, or failed.
    [[nodiscard]] std::optional<ServiceID> currentStep() const;

Q_SIGNALS:
    void stepChanged(qsizetype index, orv::SetupStep::Status status);
    /// `reason` says what went wrong; it is empty when every step is done.
    void finished(const QString& reason);

private:
    /// An install of one target, as it begins.
    struct Begun {
        ServiceTarget target;
        QString body;
        Manifests manifests;
    };

    void next();
    void launch();
    void poll();
    void end(const ServiceState& state);
    void advance();
    void fail(const QString& reason);

    ProcessManager& m_processes;
    const std::shared_ptr<InstallRecord> m_installs;
    QThreadPool& m_pool;
    const QList<Step> m_steps;
    qsizetype m_index = 0;
    QList<Begun> m_begun;  ///< by the step that runs
    QString m_installBody; ///< of its first target, without an override
    bool m_isStopped = false;
    QTimer m_timer;
};

} // namespace orv
