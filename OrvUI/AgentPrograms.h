#pragma once

#include "OrvCore/Agents.h"
#include "OrvProcess/ShellRunner.h"

#include <QDeadlineTimer>
#include <QFuture>
#include <QObject>
#include <QThreadPool>

#include <functional>
#include <set>

namespace orv {

/// Which agents a run would not find, asked of the shell that would run them: cheaper than the catalog, since no agent
/// is started for it. Lives on the main thread; the shell runs in a pool of its own.
class AgentPrograms : public QObject {
    Q_OBJECT
public:
    /// What a test puts in the place of the real thing.
    struct Options {
        std::function<ShellRunner::Result(const QStringList& words)> shell; ///< called in the pool; empty: the real one
        QString antigravityApp;                                             ///< with which that agent is there, too
        std::function<QString()> customCommand;                             ///< the settings' command of a custom agent
    };

    explicit AgentPrograms(Options options, QObject* parent = nullptr);
    /// Ends the shell that is asked.
    ~AgentPrograms() override;

    /// While a look goes on, this is the end of it.
    QFuture<void> look();
    /// As `look`, unless that was done a moment ago.
    void lookIfOld();
    /// False until a shell has answered.
    [[nodiscard]] bool isMissing(AgentKind kind) const;

    /// What to say of an agent that is missing: that it is, and what helps.
    [[nodiscard]] static QString missingText(AgentKind kind);
    /// Whether that is what the text says, wherever the program was then.
    [[nodiscard]] static bool isMissingText(AgentKind kind, const QString& text);

Q_SIGNALS:
    void changed();

private:
    enum class Place { nowhere, localBin }; ///< the latter not in the shell's PATH

    [[nodiscard]] static QString missingText(AgentKind kind, Place place);
    void take(const ShellRunner::Result& found);

    Options m_options;
    std::set<AgentKind> m_missing;
    QFuture<void> m_looking;
    QDeadlineTimer m_young; ///< until the last look counts as old
    std::atomic<bool> m_isEnding = false;
    QThreadPool m_pool; ///< last, so that what runs in it ends before what it uses goes
};

} // namespace orv
