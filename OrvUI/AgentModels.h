#pragma once

#include "OrvUI/AgentPlan.h"
#include "OrvUI/AgentPrograms.h"
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
    Q_PROPERTY(int panelAgent READ panelAgent WRITE setPanelAgent NOTIFY updated)
    Q_PROPERTY(int panelAutonomy READ panelAutonomy WRITE setPanelAutonomy NOTIFY updated)
    Q_PROPERTY(int pageAgent READ pageAgent WRITE setPageAgent NOTIFY updated)
    Q_PROPERTY(int pageAutonomy READ pageAutonomy WRITE setPageAutonomy NOTIFY updated)
    Q_PROPERTY(QString pageProjectID READ pageProjectID WRITE setPageProjectID NOTIFY updated)
    Q_PROPERTY(int defaultAgent READ defaultAgent WRITE setDefaultAgent NOTIFY preferencesChanged)
    Q_PROPERTY(int autonomy READ autonomy WRITE setAutonomy NOTIFY preferencesChanged)
    Q_PROPERTY(QString customCommand READ customCommand WRITE setCustomCommand NOTIFY preferencesChanged)
    Q_PROPERTY(bool usesWorktrees READ usesWorktrees WRITE setUsesWorktrees NOTIFY preferencesChanged)
    Q_PROPERTY(QString reviewKey READ reviewKey NOTIFY reviewChanged)
    Q_PROPERTY(QString reviewText READ reviewText NOTIFY reviewChanged)
    Q_PROPERTY(QString reviewBranch READ reviewBranch NOTIFY reviewChanged)
    Q_PROPERTY(bool replies READ replies NOTIFY updated)
    Q_PROPERTY(QString panelTask READ panelTask NOTIFY updated)
    Q_PROPERTY(QString pageTask READ pageTask NOTIFY updated)
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
    /// Of what is said next in the agent panel: as chosen there, else that of the newest run of the conversation.
    [[nodiscard]] int panelAgent() const;
    void setPanelAgent(int index);
    /// As chosen there, else that of the run which it goes on with.
    [[nodiscard]] int panelAutonomy() const;
    void setPanelAutonomy(int index);
    /// In the composer of the page of all runs: as chosen there, else that with which its task was sent and came back,
    /// else as the settings have it.
    [[nodiscard]] int pageAgent() const;
    void setPageAgent(int index);
    [[nodiscard]] int pageAutonomy() const;
    void setPageAutonomy(int index);
    [[nodiscard]] QString pageProjectID() const; ///< that the task there is for; empty: none is chosen
    void setPageProjectID(const QString& projectID);
    [[nodiscard]] int defaultAgent() const;
    void setDefaultAgent(int index);
    [[nodiscard]] int autonomy() const;
    void setAutonomy(int index);
    [[nodiscard]] QString customCommand() const;
    void setCustomCommand(const QString& command);
    [[nodiscard]] bool usesWorktrees() const;
    void setUsesWorktrees(bool isOn);
    [[nodiscard]] const QString& reviewKey() const { return m_reviewKey; } ///< of the run that is reviewed
    [[nodiscard]] QString reviewText() const { return m_reviewText; } ///< "3 files changed, +12 −4", and what to know
    /// Of the work tree that the run had to itself, while that is open; else empty.
    [[nodiscard]] const QString& reviewBranch() const { return m_reviewBranch; }
    /// What is said in the agent panel now goes on with its newest run.
    [[nodiscard]] bool replies() const { return repliedTo() != nullptr; }
    /// The to-do item that is done with what is started next in the agent panel; empty: none is.
    [[nodiscard]] QString panelTask() const;
    [[nodiscard]] QString pageTask() const; ///< in the composer of the page of all runs

    /// In the composer of the page of all runs. False when it could not be started: `error` says why.
    Q_INVOKABLE bool start(int agent, const QString& task, const QString& projectID, int autonomy);
    /// In the agent panel, with what is chosen there: goes on with the project's newest run where that is over and of
    /// the same agent, else starts one. False when that could not be done.
    Q_INVOKABLE bool say(const QString& text);
    /// The words in the agent panel of a project, in the reply to the run of a key, or with an empty place in the
    /// composer of the page of all runs, that were not sent yet. They stay while it is closed.
    [[nodiscard]] Q_INVOKABLE QString words(const QString& place) const;
    Q_INVOKABLE void keepWords(const QString& place, const QString& words);
    /// What is said next in the agent panel goes on with nothing.
    Q_INVOKABLE void beginAnew();
    /// What the words at a place came from, as long as they have something of it.
    [[nodiscard]] std::optional<AgentDraft> draftAt(const QString& place) const;
    /// Of the words that are kept there already.
    void keepDraft(const QString& place, const AgentDraft& draft);
    /// Its words are gone from a place: what is started next is not that to-do item.
    void forgetDraft(const QString& place);
    /// The words at a place stay, but are no to-do item any more.
    Q_INVOKABLE void unlinkTask(const QString& place);
    /// Whether it was; if not, `error` says why.
    Q_INVOKABLE bool startInTerminal(int agent, const QString& task, const QString& projectID);
    /// When it is false, `refused` says why.
    Q_INVOKABLE bool continueRun(const QString& key, const QString& message);
    /// The same task once more. As above.
    Q_INVOKABLE bool retry(const QString& key);
    Q_INVOKABLE void stop(const QString& key);
    /// The run that was started last of those that work; an empty id: of all projects.
    Q_INVOKABLE void stopLatest(const QString& projectID);
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
    /// Whether they are there still, for whoever is about to start one: cheap.
    Q_INVOKABLE void lookForAgents() { m_programs.lookIfOld(); }
    /// What to say of an agent that is not there, in words for the user; empty: it is, as far as is known.
    [[nodiscard]] Q_INVOKABLE QString whyMissing(int agent) const;
    /// Whether the levels of autonomy mean anything to it.
    [[nodiscard]] Q_INVOKABLE bool hasAutonomy(int agent) const;
    /// What it may do at that level, and what holds it to that.
    [[nodiscard]] Q_INVOKABLE QString autonomyExplanation(int agent, int autonomy) const;

Q_SIGNALS:
    void filterChanged();
    void updated();
    void isLoadingChanged();
    void errorChanged();
    void wordsCame(const QString& place);    ///< others than those that were kept
    void wordsChanged(const QString& place); ///< by whatever way; or, on the page of all runs, the project
    void preferencesChanged();
    void reviewChanged();
    /// Nothing goes on with the run of a key, and why; empty: what was said so is over.
    void refused(const QString& key, const QString& reason);

private:
    /// What stands in a composer and was not sent yet.
    struct Composed {
        QString words;
        std::optional<AgentDraft> draft; ///< what came there last; the words may have nothing of it any more
        QString projectID;               ///< on the page of all runs: that it is for
        std::optional<AgentKind> agent;  ///< as chosen there
        std::optional<AgentAutonomy> autonomy;
    };

    void updateSoon();
    void update();
    [[nodiscard]] bool isShown(const AgentRun& run) const;
    [[nodiscard]] AgentRun* run(const QString& key) const;
    [[nodiscard]] QString panelProjectID() const;
    [[nodiscard]] const AgentRun* newestOfPanel() const;
    [[nodiscard]] const AgentRun* repliedTo() const;
    [[nodiscard]] const AgentRun* parentOf(const AgentDraft& draft) const;
    [[nodiscard]] QString linkedTitle(const QString& place) const;
    [[nodiscard]] bool startAt(
        const QString& place, int agent, const QString& task, const QString& projectID, int autonomy);
    void settle(const AgentDraft& draft);
    void takeDraft();
    void takeDraftAt(const QString& place, const AgentDraft& draft);
    [[nodiscard]] bool makesRoomOnPage(const AgentDraft& draft);
    void moveToPanel(const Composed& page);
    void setWords(const QString& place, const QString& words);
    void takePrograms();
    [[nodiscard]] bool refusesMissing(AgentKind kind);
    [[nodiscard]] bool refuses(const AgentRun& run);
    bool tell(const QString& key, bool isDone);
    [[nodiscard]] QString totals(const QString& projectID) const;

    AppModel& m_model;
    AgentPrograms m_programs;
    RowModel<AgentRunRow> m_runs;
    RowModel<AgentRunRow> m_projectRuns;
    RowModel<AgentRow> m_agents;
    RowModel<AutonomyRow> m_autonomies;
    RowModel<AgentFileRow> m_reviewFiles;
    QHash<QString, QPointer<AgentEventsModel>> m_events;
    QString m_reviewKey;
    QString m_reviewText;
    QString m_reviewBranch;
    QHash<QString, Composed> m_composed; ///< by their place, as in `words`
    QUuid m_leftAlone;                   ///< a run of the agent panel with which nobody goes on
    int m_filter = all;
    bool m_isUpdateDue = false;
};

} // namespace orv
