#pragma once

#include "OrvCore/Agents.h"
#include "OrvProcess/ShellRunner.h"

#include <QFuture>
#include <QMap>
#include <QObject>
#include <QThreadPool>

#include <functional>
#include <set>

namespace orv {

/// What is known of an agent on this machine.
struct AgentStatus {
    /// `unknown`: nothing of a sign-in was seen, but it may be somewhere that is not looked at (a keyring).
    enum class SignIn { unknown, found };

    bool installed = false;
    std::optional<QString> version;
    SignIn signIn = SignIn::unknown;

    bool operator==(const AgentStatus&) const = default;
};

/// Which agents can be used on this machine. Lives on the main thread; the programs are asked in a pool of its own.
class AgentCatalog : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
public:
    using Shell = std::function<ShellRunner::Result(const QStringList& words)>;

    /// What a test puts in the place of the real thing.
    struct Options {
        Shell shell; ///< called in the pool; empty for the real one
        QString antigravityApp = QStringLiteral("/Applications/Antigravity.app");
        std::function<QString()> customCommand; ///< the settings' command of a custom agent
    };

    explicit AgentCatalog(Options options, QObject* parent = nullptr);
    /// Ends the programs that are being asked.
    ~AgentCatalog() override;

    /// Asks every agent's program for its version. While that goes on, this is the end of it.
    QFuture<void> refresh();

    /// Looks at the custom agent's command again, for which nothing has to be asked.
    void updateCustom();

    [[nodiscard]] const QString& antigravityApp() const { return m_options.antigravityApp; }
    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    [[nodiscard]] const QMap<AgentKind, AgentStatus>& statuses() const { return m_statuses; } ///< empty at first
    [[nodiscard]] AgentStatus status(AgentKind kind) const { return m_statuses.value(kind); }
    [[nodiscard]] const std::set<AgentKind>& commandLineKinds() const { return m_commandLineKinds; }
    [[nodiscard]] bool hasCommandLine(AgentKind kind) const { return m_commandLineKinds.contains(kind); }

    /// The words that ask whether a program is there, and for its version.
    [[nodiscard]] static QStringList detectCommand(QStringView binary);
    /// The words that end with 0 where someone is signed in. They ask the agent, or whether what it leaves after a
    /// sign-in is there; no key is read. Empty where there is nothing to ask.
    [[nodiscard]] static QStringList signInProbe(AgentKind kind);

Q_SIGNALS:
    void statusesChanged();
    void isLoadingChanged();

private:
    [[nodiscard]] bool hasCustomCommand() const;
    void publish(QMap<AgentKind, AgentStatus> found);

    Options m_options;
    QMap<AgentKind, AgentStatus> m_statuses;
    std::set<AgentKind> m_commandLineKinds;
    bool m_isLoading = false;
    QFuture<void> m_loading;
    std::atomic<bool> m_isEnding = false;
    QThreadPool m_pool; ///< last, so that what runs in it ends before what it uses goes
};

} // namespace orv
