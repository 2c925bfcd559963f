#pragma once

#include "Console.h"
#include "OrvCore/ScratchFolder.h"
#include "OrvUI/AppModel.h"
#include "SignalWatcher.h"

#include <QFuture>
#include <QObject>
#include <QPromise>

#include <memory>

namespace orv {

/// A model for one command about agents; gone when the command has ended. Main thread.
class AgentDesk : public QObject {
public:
    explicit AgentDesk(QObject* parent);

    [[nodiscard]] AppModel& model() { return *m_model; }
    [[nodiscard]] AgentRuns& runs() { return m_model->agentRunner(); }

private:
    ScratchFolder m_snapshots; ///< of the model, whose projects are not scanned
    std::unique_ptr<AppModel> m_model;
};

/// A run of an agent, or one that another process runs, followed in the terminal to its end. Main thread.
///
/// What the agent says goes to stdout, what is said about it to stderr; with `json` both are events on stdout, one a
/// line: "started", "text", "tool", "result", "attention", "end".
class AgentSession : public QObject {
    Q_OBJECT
public:
    enum class Ownership { own, other };
    AgentSession(AgentRuns& runs, Console& console, bool json, QObject* parent);

    /// Ends with the exit code of the process, once the run is over and what it changed is known. An interruption stops
    /// a run of our own, and only ends the following of another one.
    QFuture<int> follow(AgentRun* run, Ownership ownership);

private:
    void print(const AgentEvent& event);
    void printNewest(qsizetype added);
    void updateAttention();
    void stopAsked();
    void endWhenOver();
    void end(int exitCode);
    void say(const QString& text);
    void event(const QString& name, QJsonObject fields);

    AgentRuns& m_runs;
    Console& m_console;
    const bool m_json;
    SignalWatcher m_signals;
    AgentRun* m_run = nullptr;
    QUuid m_id;
    Ownership m_ownership = Ownership::own;
    AgentRun::Attention m_attention = AgentRun::Attention::none;
    bool m_isStopping = false;
    bool m_isOver = false;
    bool m_hasEnded = false;
    QPromise<int> m_exit;
};

/// What is to be said of a run that is over: how it ended, what it took, what it changed.
[[nodiscard]] QStringList outcomeLines(const AgentRun& run, bool hasColor);
/// One event as a line of text, made safe for the terminal; a tool in one colour, prose as it is.
[[nodiscard]] QString eventText(const AgentEvent& event, bool hasColor);
[[nodiscard]] QJsonObject eventJson(const AgentEvent& event);
[[nodiscard]] QString shortID(const AgentRun& run);

} // namespace orv
