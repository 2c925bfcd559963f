#pragma once

#include "OrvProcess/ChildRecords.h"
#include "OrvUI/AgentPlan.h"
#include "OrvUI/AgentWork.h"

#include <QFileSystemWatcher>
#include <QFuture>
#include <QHash>
#include <QObject>
#include <QThreadPool>

#include <chrono>
#include <memory>

namespace orv {

class Completion;
class StoreWatcher;

/// What runs have used.
struct AgentTotals {
    int runs = 0;
    AgentTokens tokens;
    double costUSD = 0; ///< as far as the agents report it

    bool operator==(const AgentTotals&) const = default;
};

/// The runs of agents: those of this process, those that were stored, and those of other processes on the same folder.
/// Lives on the main thread, and waits neither for the disk nor for git there.
class AgentRuns : public QObject {
    Q_OBJECT
public:
    struct Options {
        AgentRunFiles files;
        QString worktreeFolder; ///< in which runs get work trees of their own
        std::function<AppSettings()> settings;
        ChildRecords children; ///< where it is written down which agents run
        /// Ends what an application that was killed has left of this very run; finished where that is nothing.
        std::function<QFuture<void>(const AgentRun& run)> endLeft = {};
        std::chrono::milliseconds stopGrace = std::chrono::seconds(3);
        /// Silence after which it is looked whether a question stands at the end of the output.
        std::chrono::milliseconds questionTime = std::chrono::seconds(10);
        std::chrono::milliseconds quietTime = std::chrono::minutes(2); ///< silence that is worth a word
        AgentRun::Limits runLimits = {};
        AgentRunFiles::Limits fileLimits = {};
    };

    explicit AgentRuns(Options options, QObject* parent = nullptr);
    /// Ends the runs of this process, with all their processes.
    ~AgentRuns() override;

    /// Newest first. They belong to this object and stay, but for those that went from the disk.
    [[nodiscard]] const QList<AgentRun*>& runs() const { return m_runs; }
    [[nodiscard]] AgentRun* run(const QUuid& id) const;
    [[nodiscard]] int runningCount() const;
    /// Of one project; of all for an empty id.
    [[nodiscard]] AgentTotals totals(const QString& projectID) const;
    [[nodiscard]] const AgentRunFiles& files() const { return m_options.files; }
    /// Takes in what is stored. Done by itself at first and when another process writes.
    QFuture<void> reload();

    struct Start {
        AgentKind agent = AgentKind::claude;
        QString task;
        QString projectID;
        QString projectName;
        QString projectRoot;
        std::optional<QUuid> linkedTask = {};
        std::optional<AgentAutonomy> autonomy = {};
        const AgentRun* replyingTo = nullptr;
        const AgentRun* anew = nullptr; ///< which is gone before this one begins
        /// Absent: as the settings say, where the project can have one.
        std::optional<bool> ownWorktree = {};
        QString words = {}; ///< what the user said, where the task says more; else empty
    };
    /// Or why not, in words for the user. What comes out later (`failed`) takes the run away again.
    std::expected<AgentRun*, QString> start(const Start& wish);
    /// A run that goes on where this one ended; in its work tree, as long as that is there. Without an autonomy that of
    /// the run holds.
    std::expected<AgentRun*, QString> goOn(
        const AgentRun& run, const QString& message, const QString& projectRoot, const QString& projectName,
        const std::optional<AgentAutonomy>& autonomy = {});
    /// The same task once more; one that went on where another run had ended does so again.
    std::expected<AgentRun*, QString> retry(
        const AgentRun& run, const QString& projectRoot, const QString& projectName);
    /// Finishes when the run is over and stored. One of another process is asked to be stopped by that one.
    QFuture<void> stop(AgentRun* run);
    /// Those of this process.
    QFuture<void> stopAll();
    /// Their process groups, with no time given.
    void kill();
    [[nodiscard]] QList<pid_t> groups() const;
    /// Finishes when everything about the run is known and stored; at once when it is.
    [[nodiscard]] QFuture<void> settled(const AgentRun* run) const;

    /// Reads the events of a run that was stored, and goes on reading while another process runs it. A second call does
    /// nothing.
    QFuture<void> loadEvents(AgentRun* run);
    /// Finishes when everything that such a run printed was read, after its end.
    [[nodiscard]] QFuture<void> allEventsLoaded(AgentRun* run);

    using DiffResult = std::expected<AgentWork::Diff, QString>;
    /// What changed during the run.
    [[nodiscard]] QFuture<DiffResult> diff(const AgentRun* run);
    /// Everything in the work tree that the run has to itself.
    [[nodiscard]] QFuture<DiffResult> worktreeDiff(const AgentRun* run);
    /// Why it was refused, in words for the user; otherwise what is worth saying, mostly nothing.
    using Outcome = std::expected<QString, QString>;
    /// Brings what was done in the run's own work tree into the project.
    [[nodiscard]] QFuture<Outcome> mergeBack(const AgentRun* run);
    [[nodiscard]] QFuture<Outcome> discardWorktree(const AgentRun* run, TaskWorktrees::Discard discard);

Q_SIGNALS:
    void runsChanged(); ///< which there are
    void runningCountChanged();
    void runChanged(orv::AgentRun* run);
    /// The run has its last status; what it changed may come later.
    void finished(orv::AgentRun* run);
    /// A run that could not be started after all, in words for the user. It is no longer there.
    void failed(const QUuid& run, const QString& reason, const orv::AgentDraft& task);
    /// What else the user should know, such as a disk that takes nothing more.
    void noted(const QString& text);

private:
    struct Active;
    struct Reading;
    struct Look;

    [[nodiscard]] GitRunner runner() const;
    void add(AgentRun* run);
    void remove(AgentRun* run);
    void updateRunningCount();
    void takeIn(const QList<AgentRunFiles::Stored>& stored);
    void prepared(const QUuid& id, const std::expected<AgentWork::Ready, QString>& ready);
    bool launch(AgentRun* run, Active& active);
    void giveUp(AgentRun* run, const QString& reason);
    void ended(AgentRun* run, int exitCode);
    void settle(AgentRun* run);
    void store(AgentRun* run);
    void watchSilence(AgentRun* run, Active& active);
    void silent(const QUuid& id, bool isLong);
    void heard(AgentRun* run, const QList<AgentLine>& lines);
    [[nodiscard]] bool wasShared(const AgentRun& run) const;
    [[nodiscard]] bool isWorktreeBusy(const AgentWorktree& worktree) const;
    void setWorktreeState(const QString& folder, AgentWorktreeState state, const Completion& done);
    void readMore(AgentRun* run);
    QFuture<Outcome> onWorktree(
        const AgentRun* run, AgentWorktreeState then,
        const std::function<GitOutcome<TaskWorktrees::AfterMerge>(const TaskWorktrees&, const TaskWorktree&)>& work);

    const Options m_options;
    GitCancellation m_cancellation;
    QList<AgentRun*> m_runs;
    QHash<QUuid, std::shared_ptr<Active>> m_active;
    QHash<QUuid, std::shared_ptr<Reading>> m_readings;
    QSet<QUuid> m_stored; ///< that were seen on disk
    QSet<QString> m_busyWorktrees;
    int m_runningCount = 0;
    StoreWatcher* m_watcher = nullptr;
    QFileSystemWatcher m_outputs;
    // Last, so that what runs in them ends before what it uses goes.
    QThreadPool m_storePool; ///< of one thread: what is read and written there is so in order
    QThreadPool m_workPool;
};

} // namespace orv
