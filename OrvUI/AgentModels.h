#pragma once

#include "OrvUI/AgentRows.h"

#include <QHash>
#include <QObject>
#include <QPointer>

namespace orv {

class AppModel;

/// What the screens about agents show and call: the composer, the runs, the agents. Kept like the model; whatever
/// changes there is taken over once, in the next turn of the event loop. Lives on the main thread.
///
/// A run goes by its key (its id), an agent and an autonomy by their place in the order of every picker.
class AgentModels : public QObject {
    Q_OBJECT
    Q_PROPERTY(QAbstractListModel* runs READ runs CONSTANT)
    Q_PROPERTY(QAbstractListModel* projectRuns READ projectRuns CONSTANT)
    Q_PROPERTY(QAbstractListModel* agents READ agents CONSTANT)
    Q_PROPERTY(QAbstractListModel* autonomies READ autonomies CONSTANT)
    Q_PROPERTY(QAbstractListModel* reviewFiles READ reviewFiles CONSTANT)
    Q_PROPERTY(int filterIndex READ filterIndex WRITE setFilterIndex NOTIFY filterChanged)
    Q_PROPERTY(int workingCount READ workingCount NOTIFY updated)
    Q_PROPERTY(QString workingText READ workingText NOTIFY updated)
    Q_PROPERTY(QString totalsText READ totalsText NOTIFY updated)
    Q_PROPERTY(QString projectTotalsText READ projectTotalsText NOTIFY updated)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)
    Q_PROPERTY(QString draftText READ draftText NOTIFY draftChanged)
    Q_PROPERTY(QString draftProjectID READ draftProjectID NOTIFY draftChanged)
    Q_PROPERTY(int defaultAgent READ defaultAgent WRITE setDefaultAgent NOTIFY preferencesChanged)
    Q_PROPERTY(int autonomy READ autonomy WRITE setAutonomy NOTIFY preferencesChanged)
    Q_PROPERTY(QString customCommand READ customCommand WRITE setCustomCommand NOTIFY preferencesChanged)
    Q_PROPERTY(bool usesWorktrees READ usesWorktrees WRITE setUsesWorktrees NOTIFY preferencesChanged)
    Q_PROPERTY(QString reviewText READ reviewText NOTIFY reviewChanged)
public:
    enum Filter { all, running, finished };
    Q_ENUM(Filter)

    explicit AgentModels(AppModel& model);

    [[nodiscard]] QAbstractListModel* runs() { return &m_runs; } ///< newest first, by the filter
    /// Of the project whose agent panel is open, oldest first, as a conversation reads.
    [[nodiscard]] QAbstractListModel* projectRuns() { return &m_projectRuns; }
    [[nodiscard]] QAbstractListModel* agents() { return &m_agents; }
    [[nodiscard]] QAbstractListModel* autonomies() { return &m_autonomies; }
    [[nodiscard]] QAbstractListModel* reviewFiles() { return &m_reviewFiles; } ///< of the run that is reviewed

    [[nodiscard]] int filterIndex() const { return m_filter; }
    void setFilterIndex(int index);
    [[nodiscard]] int workingCount() const;
    [[nodiscard]] QString workingText() const;       ///< "1 working"; empty when none is
    [[nodiscard]] QString totalsText() const;        ///< "$1.22 · 15k in · 204 out"; empty when nothing was reported
    [[nodiscard]] QString projectTotalsText() const; ///< of the project whose agent panel is open
    [[nodiscard]] bool isLoading() const;
    [[nodiscard]] QString error() const;
    [[nodiscard]] QString draftText() const;
    [[nodiscard]] QString draftProjectID() const;
    [[nodiscard]] int defaultAgent() const;
    void setDefaultAgent(int index);
    [[nodiscard]] int autonomy() const;
    void setAutonomy(int index);
    [[nodiscard]] QString customCommand() const;
    void setCustomCommand(const QString& command);
    [[nodiscard]] bool usesWorktrees() const;
    void setUsesWorktrees(bool isOn);
    [[nodiscard]] QString reviewText() const { return m_reviewText; } ///< "3 files changed, +12 −4", and what to know

    /// False when it could not be started: `error` says why. The draft's to-do item is linked when the draft is of
    /// that project.
    Q_INVOKABLE bool start(int agent, const QString& task, const QString& projectID, int autonomy);
    Q_INVOKABLE void startInTerminal(int agent, const QString& task, const QString& projectID);
    Q_INVOKABLE bool continueRun(const QString& key, const QString& message);
    /// The same task once more.
    Q_INVOKABLE bool retry(const QString& key);
    Q_INVOKABLE void stop(const QString& key);
    /// The events of a run; null when there is no such run.
    Q_INVOKABLE QAbstractListModel* events(const QString& key);
    /// How long it has taken so far.
    Q_INVOKABLE QString duration(const QString& key) const;
    Q_INVOKABLE void review(const QString& key);
    Q_INVOKABLE void mergeBack(const QString& key);
    /// `force`: also when work would be lost.
    Q_INVOKABLE void discardWorktree(const QString& key, bool force);
    Q_INVOKABLE void signIn(int agent);
    Q_INVOKABLE void refreshAgents();

Q_SIGNALS:
    void filterChanged();
    void updated();
    void isLoadingChanged();
    void errorChanged();
    void draftChanged();
    void preferencesChanged();
    void reviewChanged();

private:
    void updateSoon();
    void update();
    [[nodiscard]] bool isShown(const AgentRun& run) const;
    [[nodiscard]] AgentRun* run(const QString& key) const;
    [[nodiscard]] QString totals(const QString& projectID) const;

    AppModel& m_model;
    RowModel<AgentRunRow> m_runs;
    RowModel<AgentRunRow> m_projectRuns;
    RowModel<AgentRow> m_agents;
    RowModel<AutonomyRow> m_autonomies;
    RowModel<AgentFileRow> m_reviewFiles;
    QHash<QString, QPointer<AgentEventsModel>> m_events;
    QString m_reviewText;
    int m_filter = all;
    bool m_isUpdateDue = false;
};

} // namespace orv
