#include "OrvUI/AgentCatalog.h"

#include "OrvCore/Async.h"
#include "OrvUI/Pool_p.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

namespace {

/// Some of the programs take seconds to print their version.
constexpr auto probeLimit = 20s;

constexpr std::array commandLineAgents{AgentKind::claude, AgentKind::codex, AgentKind::gemini, AgentKind::antigravity};

std::optional<QString> firstLine(const QByteArray& text) {
    const QString line = QString::fromUtf8(text).section(u'\n', 0, 0).trimmed();
    return line.isEmpty() ? std::nullopt : std::optional(line);
}

QStringList afterLocalPath(const QString& line) {
    return ShellRunner::shellWords("export "_L1 + agentLocalBinPath + "; "_L1 + line);
}

AgentStatus probe(AgentKind kind, const AgentCatalog::Shell& shell) {
    const auto succeeds = [](const ShellRunner::Result& result) { return result && result->exitCode == 0; };
    const ShellRunner::Result version = shell(AgentCatalog::detectCommand(agentInfo(kind).binary));
    if (!succeeds(version)) {
        return {};
    }
    AgentStatus status{.installed = true, .version = firstLine(version->text)};
    if (const QStringList words = AgentCatalog::signInProbe(kind); !words.isEmpty() && succeeds(shell(words))) {
        status.signIn = AgentStatus::SignIn::found;
    }
    return status;
}

} // namespace

AgentCatalog::AgentCatalog(Options options, QObject* parent) : QObject(parent), m_options(std::move(options)) {
    m_pool.setMaxThreadCount(static_cast<int>(commandLineAgents.size()));
    if (!m_options.shell) {
        m_options.shell = [this](const QStringList& words) {
            return ShellRunner::runLine(words, {.time = probeLimit}, m_isEnding);
        };
    }
}

AgentCatalog::~AgentCatalog() {
    m_isEnding = true;
    m_pool.waitForDone();
}

QStringList AgentCatalog::detectCommand(QStringView binary) {
    return afterLocalPath(u"command -v %1 >/dev/null && %1 --version"_s.arg(binary));
}

QStringList AgentCatalog::signInProbe(AgentKind kind) {
    switch (kind) {
    case AgentKind::claude:
        return afterLocalPath(u"[ -n \"$ANTHROPIC_API_KEY$ANTHROPIC_AUTH_TOKEN$CLAUDE_CODE_OAUTH_TOKEN\" ] || "
                              "[ -s \"${CLAUDE_CONFIG_DIR:-$HOME/.claude}/.credentials.json\" ]"_s);
    case AgentKind::codex:
        return afterLocalPath(u"[ -n \"$CODEX_API_KEY\" ] || codex login status"_s);
    case AgentKind::gemini:
        return afterLocalPath(
            u"[ -n \"$GEMINI_API_KEY$GOOGLE_API_KEY\" ] || [ -s \"$HOME/.gemini/oauth_creds.json\" ]"_s);
    case AgentKind::antigravity:
    case AgentKind::custom:
        break;
    }
    return {};
}

QFuture<void> AgentCatalog::refresh() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_isLoading) {
        return m_loading;
    }
    m_isLoading = true;
    struct Probes {
        QMap<AgentKind, AgentStatus> found;
        Completion completion;
    };
    const auto probes = std::make_shared<Probes>();
    m_loading = probes->completion.future();
    for (const AgentKind kind : commandLineAgents) {
        const auto status = runIn(m_pool, [kind, shell = m_options.shell] { return probe(kind, shell); });
        onFinished(status, this, [this, kind, probes](const AgentStatus& found) {
            probes->found.insert(kind, found);
            if (probes->found.size() == static_cast<qsizetype>(commandLineAgents.size())) {
                publish(probes->found);
                probes->completion.finish();
            }
        });
    }
    Q_EMIT isLoadingChanged();
    return m_loading;
}

bool AgentCatalog::hasCustomCommand() const {
    return m_options.customCommand && !m_options.customCommand().trimmed().isEmpty();
}

void AgentCatalog::updateCustom() {
    ORV_ASSERT_MAIN_THREAD();
    // Before the programs were asked, nothing is known of any agent.
    if (!m_statuses.isEmpty() && m_statuses[AgentKind::custom].installed != hasCustomCommand()) {
        m_statuses[AgentKind::custom].installed = hasCustomCommand();
        Q_EMIT statusesChanged();
    }
}

void AgentCatalog::publish(QMap<AgentKind, AgentStatus> found) {
    std::set<AgentKind> kinds;
    for (auto status = found.cbegin(); status != found.cend(); ++status) {
        if (status->installed) {
            kinds.insert(status.key());
        }
    }
    if (QFileInfo::exists(m_options.antigravityApp)) {
        found[AgentKind::antigravity].installed = true;
    }
    found[AgentKind::custom].installed = hasCustomCommand();
    if (found != m_statuses || kinds != m_commandLineKinds) {
        m_statuses = std::move(found);
        m_commandLineKinds = std::move(kinds);
        Q_EMIT statusesChanged();
    }
    m_isLoading = false;
    Q_EMIT isLoadingChanged();
}

} // namespace orv
