#include "OrvUI/AgentPrograms.h"

#include "OrvCore/Async.h"
#include "OrvCore/LoginShell.h"
#include "OrvUI/AgentRows.h"
#include "OrvUI/Pool_p.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr auto lookLimit = 10s;
constexpr auto youngTime = 5s;
/// After the names: without it the shell did not come that far, and nothing is known.
constexpr auto lastLine = "looked"_L1;

/// Prints the names of those that are there.
QString question() {
    QStringList names;
    for (const AgentKind kind : allAgentKinds) {
        if (const QStringView name = agentInfo(kind).binary; !name.isEmpty()) {
            names.append(name.toString());
        }
    }
    return u"export %1; for name in %2; do command -v $name >/dev/null && echo $name; done; echo %3"_s.arg(
        agentLocalBinPath, names.join(u' '), lastLine);
}

} // namespace

AgentPrograms::AgentPrograms(Options options, QObject* parent) : QObject(parent), m_options(std::move(options)) {
    m_pool.setMaxThreadCount(1);
    if (!m_options.shell) {
        m_options.shell = [this](const QStringList& words) {
            return ShellRunner::runLine(words, {.time = lookLimit}, m_isEnding);
        };
    }
}

AgentPrograms::~AgentPrograms() {
    m_isEnding = true;
    m_pool.waitForDone();
}

QFuture<void> AgentPrograms::look() {
    ORV_ASSERT_MAIN_THREAD();
    if (m_looking.isRunning()) {
        return m_looking;
    }
    const Completion completion;
    m_looking = completion.future();
    const auto ask = [shell = m_options.shell] { return shell(ShellRunner::shellWords(question())); };
    onFinished(runIn(m_pool, ask), this, [this, completion](const ShellRunner::Result& found) {
        take(found);
        completion.finish();
    });
    return m_looking;
}

void AgentPrograms::lookIfOld() {
    if (m_young.hasExpired()) {
        look();
    }
}

void AgentPrograms::take(const ShellRunner::Result& found) {
    m_young.setRemainingTime(youngTime);
    const QList<QByteArray> lines = found ? found->text.trimmed().split('\n') : QList<QByteArray>();
    std::set<AgentKind> missing;
    if (!lines.isEmpty() && lines.last().trimmed() == QByteArrayView(lastLine.data(), lastLine.size())) {
        for (const AgentKind kind : allAgentKinds) {
            const QStringView name = agentInfo(kind).binary;
            if (!name.isEmpty() && !lines.contains(name.toUtf8())) {
                missing.insert(kind);
            }
        }
    }
    if (missing != std::exchange(m_missing, missing)) {
        Q_EMIT changed();
    }
}

bool AgentPrograms::isMissing(AgentKind kind) const {
    if (kind == AgentKind::custom) {
        return m_options.customCommand && m_options.customCommand().trimmed().isEmpty();
    }
    return m_missing.contains(kind) && (kind != AgentKind::antigravity || !QFileInfo::exists(m_options.antigravityApp));
}

QString AgentPrograms::missingText(AgentKind kind) {
    const AgentInfo& info = agentInfo(kind);
    const QString shell = loginShell();
    const QString profile = shell.endsWith(u"/zsh") ? u"~/.zprofile"_s : u"~/.profile"_s;
    return kind == AgentKind::custom
               ? tr("Set the custom agent's command in Settings \u2192 AI first.")
               : tr("%1 was not found by the login shell (%2, whose PATH %3 sets). Install it with “%4”, or choose "
                    "another agent.")
                     .arg(agentText(info.displayName), shell, profile, agentText(info.installHint));
}

} // namespace orv
