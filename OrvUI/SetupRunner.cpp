#include "OrvUI/SetupRunner.h"

#include "OrvCore/Async.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/PortParser.h"
#include "OrvUI/Pool_p.h"

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// What the resolvers and sockets of Node, Python, Go, Rust, PHP and Ruby say without a network; the last line of their
/// output often says something else.
constexpr std::array networkWords{
    "EAI_AGAIN"_L1,
    "ENOTFOUND"_L1,
    "ENETUNREACH"_L1,
    "Temporary failure in name resolution"_L1,
    "Could not resolve host"_L1,
    "dns error"_L1,
    "no such host"_L1,
    "Network is unreachable"_L1,
    "nodename nor servname provided"_L1};

/// Why an install failed, where its end doesn't tell.
QString reasonOf(const ServiceState& state, const LogBuffer& log) {
    constexpr int linesLookedAt = 100;
    int left = linesLookedAt;
    for (auto line = log.rbegin(); line != log.rend() && left > 0; ++line, --left) {
        if (std::ranges::any_of(networkWords, [&](QLatin1StringView words) { return line->contains(words); })) {
            return SetupRunner::tr("The network could not be reached: %1")
                .arg(PortParser::stripANSI(*line).simplified());
        }
    }
    return state.message;
}

} // namespace

SetupRunner::SetupRunner(Parts parts, QList<Step> steps, QObject* parent)
    : QObject(parent),
      m_processes(parts.processes),
      m_installs(std::move(parts.installs)),
      m_pool(parts.pool),
      m_steps(std::move(steps)) {
    m_timer.setInterval(50ms);
    connect(&m_timer, &QTimer::timeout, this, &SetupRunner::poll);
}

void SetupRunner::start() {
    ORV_ASSERT_MAIN_THREAD();
    next();
}

void SetupRunner::stop() {
    ORV_ASSERT_MAIN_THREAD();
    m_isStopped = true;
    if (const auto id = currentStep()) {
        m_processes.stop(*id);
    }
}

std::optional<ServiceID> SetupRunner::currentStep() const {
    return m_index < m_steps.size() ? std::optional(m_steps[m_index].id) : std::nullopt;
}

void SetupRunner::next() {
    if (m_index == m_steps.size()) {
        Q_EMIT finished({});
        return;
    }
    if (m_isStopped) {
        fail(tr("Stopped."));
        return;
    }
    Q_EMIT stepChanged(m_index, SetupStep::Status::running);
    // An earlier step may have installed for this one too.
    struct Look {
        QString installBody;
        QList<Begun> begun;
    };
    const auto look = [targets = m_steps[m_index].targets, installs = m_installs] {
        QList<Begun> begun;
        for (const ServiceTarget& target : targets) {
            if (installs->isInstallNeeded(target)) {
                begun.append({target, CommandBuilder::installBody(target), InstallRecord::manifests(target.directory)});
                (void)installs->begin(target.directory, begun.constLast().body);
            }
        }
        return Look{CommandBuilder::installBody(targets.constFirst()), begun};
    };
    onFinished(runIn(m_pool, look), this, [this](const Look& found) {
        m_begun = found.begun;
        m_installBody = found.installBody;
        if (m_isStopped) {
            fail(tr("Stopped."));
        } else if (!found.begun.isEmpty()) {
            launch();
        } else {
            advance();
        }
    });
}

void SetupRunner::launch() {
    const Step& step = m_steps[m_index];
    if (m_isStopped) {
        fail(tr("Stopped."));
        return;
    }
    if (m_processes.state(step.id).isActive()) {
        // What a cancelled session left behind and is still on its way out.
        onFinished(m_processes.stop(step.id), this, [this] {
            QTimer::singleShot(m_timer.interval(), this, &SetupRunner::launch);
        });
        return;
    }
    ServiceTarget install = step.targets.constFirst();
    install.port.reset();
    install.command =
        u"cd "_s + CommandBuilder::quote(install.directory) + u" && "_s + step.override.value_or(m_installBody);
    m_processes.start(install, step.id.projectID);
    m_timer.start();
}

void SetupRunner::poll() {
    const ServiceState state = m_processes.state(m_steps[m_index].id);
    if (!state.isActive()) {
        m_timer.stop();
        end(state);
    }
}

void SetupRunner::end(const ServiceState& state) {
    const Step& step = m_steps[m_index];
    const bool isStopped = m_isStopped || m_processes.wasUserStopped(step.id);
    const bool isDone = !isStopped && state.phase == ServiceState::Phase::stopped;
    if (!isDone) {
        fail(isStopped ? tr("Stopped.") : reasonOf(state, m_processes.log(step.id)));
        return;
    }
    const auto settle = [begun = m_begun, installs = m_installs] {
        for (const auto& [target, body, before] : begun) {
            if (CommandBuilder::needsInstall(target)) {
                (void)installs->remember(target.directory, body, before);
            } else {
                (void)installs->forget(target.directory, body);
            }
        }
    };
    onFinished(runIn(m_pool, settle), this, [this] { advance(); });
}

void SetupRunner::fail(const QString& reason) {
    const auto settle = [begun = m_begun, installs = m_installs] {
        for (const Begun& install : begun) {
            (void)installs->abandon(install.target, install.body);
        }
    };
    onFinished(runIn(m_pool, settle), this, [this, reason] {
        Q_EMIT stepChanged(m_index, SetupStep::Status::failed);
        Q_EMIT finished(reason);
    });
}

void SetupRunner::advance() {
    Q_EMIT stepChanged(m_index, SetupStep::Status::done);
    ++m_index;
    m_begun.clear();
    next();
}

} // namespace orv
