#include "OrvUI/AgentPrograms.h"

#include "OrvCore/Async.h"
#include "OrvCore/LoginShell.h"
#include "OrvUI/AgentRows.h"
#include "OrvUI/Pool_p.h"

#include <QDir>
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

/// Prints the names of those that are there, each looked for as its run does: only that of Antigravity looks in the
/// user's own executables, too.
QString question() {
    QStringList names;
    for (const AgentKind kind : allAgentKinds) {
        if (const QStringView name = agentInfo(kind).binary; !name.isEmpty() && kind != AgentKind::antigravity) {
            names.append(name.toString());
        }
    }
    const QString check = u"command -v $name >/dev/null && echo $name"_s;
    return u"for name in %1; do %2; done; export %3; name=%4; %2; echo %5"_s.arg(
        names.join(u' '), check, agentLocalBinPath, agentInfo(AgentKind::antigravity).binary, lastLine);
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
    const QString local = u"%1/.local/bin/%2"_s.arg(QDir::homePath(), agentInfo(kind).binary);
    return missingText(kind, QFileInfo(local).isExecutable() ? Place::localBin : Place::nowhere);
}

bool AgentPrograms::isMissingText(AgentKind kind, const QString& text) {
    return text == missingText(kind, Place::nowhere) || text == missingText(kind, Place::localBin);
}

QString AgentPrograms::missingText(AgentKind kind, Place place) {
    const AgentInfo& info = agentInfo(kind);
    const QString shell = loginShell();
    const QString profile = shell.endsWith(u"/zsh") ? u"~/.zprofile"_s : u"~/.profile"_s;
    if (kind == AgentKind::custom) {
        return tr("Set the custom agent's command in Settings \u2192 AI first.");
    }
    return place == Place::localBin
               ? tr("%1 is in ~/.local/bin, which is not in the PATH of the login shell (%2). Add that folder to PATH "
                    "in %3, or choose another agent.")
                     .arg(agentText(info.displayName), shell, profile)
               : tr("%1 was not found by the login shell (%2, whose PATH %3 sets). Install it with “%4”, or choose "
                    "another agent.")
                     .arg(agentText(info.displayName), shell, profile, agentText(info.installHint));
}

} // namespace orv
