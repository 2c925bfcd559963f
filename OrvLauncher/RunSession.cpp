#include "RunSession.h"

#include "CliSupport.h"
#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/PortParser.h"
#include "OrvUI/OrphanedWork.h"
#include "OrvUI/ServicePhase.h"
#include "OrvUI/ServiceTitle.h"

#include <QLocale>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr std::array labelStyles{Style::cyan, Style::magenta, Style::yellow, Style::green, Style::blue};
/// How long a service that listens where it never said so may go on without saying, or one of which it can't be known.
constexpr std::chrono::milliseconds patience{2000};
/// How long one that does not listen yet may take.
constexpr std::chrono::milliseconds longPatience{10'000};
/// Among so many of the newest lines a server's last word about its port is looked for.
constexpr qsizetype linesLookedAt = 50;

QJsonObject toJson(const ServiceID& id) {
    return {{u"projectID"_s, id.projectID}, {u"kind"_s, rawValue(id.kind)}, {u"directory"_s, id.directory}};
}

bool saysPort(const LogBuffer& log, int port) {
    const qsizetype first = std::max<qsizetype>(0, log.size() - linesLookedAt);
    return std::any_of(
        log.begin() + first, log.end(), [port](const QString& line) { return PortParser::servicePort(line) == port; });
}

} // namespace

RunSession::RunSession(
    AppModel& model, Console& console, const Project& project, const Options& options, QObject* parent)
    : QObject(parent), m_model(model), m_console(console), m_project(project), m_options(options) {
    addLabels();
    const ProcessManager& processes = m_model.processes();
    connect(&processes, &ProcessManager::stateChanged, this, &RunSession::stateChanged);
    connect(&processes, &ProcessManager::linesSkipped, this, &RunSession::linesSkipped);
    connect(&processes, &ProcessManager::logAppended, this, [this](const ServiceID& id, qsizetype added, qsizetype) {
        logAppended(id, added);
    });
    connect(&m_model, &AppModel::addressChanged, this, [this](const ServiceID& id) { sayAddress(id, false); });
    connect(m_model.orphans(), &OrphanedWork::changed, this, [this] {
        const QList<ServiceID> ids = m_shown.keys();
        if (!m_saidOrphans &&
            std::ranges::any_of(ids, [this](const auto& id) { return m_model.orphans()->isEnding(id); })) {
            m_saidOrphans = true;
            say(u"Stopping what an earlier run has left…"_s);
        }
    });
    connect(&m_signals, &SignalWatcher::stopAsked, this, &RunSession::stopAsked);
}

QFuture<int> RunSession::start() {
    m_exit.start();
    onFinished(m_model.run(m_project, m_options.kinds, m_options.device), this, [this] {
        if (m_model.setup()) {
            deferredToInstall();
        } else {
            m_wasLaunched = true;
            sayWhatIsLeft();
            endIfOver();
        }
    });
    return m_exit.future();
}

/// Of the project's other services, which are let be.
void RunSession::sayWhatIsLeft() {
    QStringList left;
    for (const ServiceID& id : m_model.orphans()->services(m_project.id)) {
        if (!m_model.processes().state(id).isActive()) {
            left.append(serviceTitle(id, &m_project));
        }
    }
    if (!left.isEmpty()) {
        say(u"Still running from an earlier run: %1."_s.arg(left.join(u", "_s)), Style::yellow);
    }
}

bool RunSession::isAnyActive() const {
    const auto& states = m_model.processes().states();
    return std::any_of(states.begin(), states.end(), [](const ServiceState& state) { return state.isActive(); });
}

/// A label for each service: its kind, and its folder where the kind stands twice.
void RunSession::addLabels() {
    QHash<ServiceKind, int> counts;
    for (const ServiceTarget& target : std::as_const(m_project.targets)) {
        counts[target.kind] += m_options.kinds.contains(target.kind) ? 1 : 0;
    }
    for (const ServiceTarget& target : std::as_const(m_project.targets)) {
        if (!m_options.kinds.contains(target.kind)) {
            continue;
        }
        QString label = rawValue(target.kind);
        if (counts[target.kind] > 1) {
            label += u' ' + printable(pathWithin(m_project.root, target.directory));
        }
        m_labelWidth = std::max(m_labelWidth, displayWidth(label));
        const Style style = labelStyles[static_cast<size_t>(m_shown.size()) % labelStyles.size()];
        m_shown.insert(ProcessManager::id(target, m_project.id), {label, style, {}, nullptr});
    }
}

RunSession::Shown& RunSession::shown(const ServiceID& id) {
    // An install goes under the label of its service.
    const ServiceID service{m_project.id, id.kind, id.directory};
    const auto found = m_shown.find(service);
    return found != m_shown.end() ? *found : *m_shown.insert(service, {rawValue(id.kind), Style::plain, {}, nullptr});
}

void RunSession::deferredToInstall() {
    const QList<SetupStep> steps = m_model.setup()->steps;
    if (m_options.installs) {
        for (const SetupStep& step : steps) {
            say(u"Installing %1: %2"_s.arg(shown(step.id).label, step.command));
            event(u"install"_s, &step.id, {{u"command"_s, step.command}});
        }
        install();
        return;
    }
    refuseInstall(u"%1 needs its dependencies before it can run:"_s);
    end(exitFailed);
}

/// Drops the install that the model asks about, and says what it was.
void RunSession::refuseInstall(const QString& heading) {
    QString message = heading.arg(printable(m_project.name));
    for (const SetupStep& step : m_model.setup()->steps) {
        message += u"\n  "_s + printable(step.command);
        event(u"installNeeded"_s, &step.id, {{u"command"_s, step.command}});
    }
    say(message + u"\nRun it again with --install to have that done first."_s, Style::yellow);
    m_model.cancelInstall();
}

void RunSession::install() {
    onFinished(m_model.confirmInstall(), this, [this] {
        if (!m_isStopping) {
            installEnded();
        }
        m_wasLaunched = true;
        endIfOver();
    });
}

void RunSession::installEnded() {
    const QList<ServiceID> services = m_model.services(m_project);
    const std::optional<SetupSession>& setup = m_model.setup();
    if (setup && setup->phase.kind == SetupSession::Phase::Kind::failed) {
        say(u"The install failed: "_s + setup->phase.reason, Style::red);
    } else if (setup) {
        refuseInstall(u"After the install %1 needs another one:"_s);
    } else if (std::ranges::all_of(services, &AppModel::isInstall)) {
        const std::optional<StatusMessage>& message = m_model.statusMessage();
        say(message ? message->text : u"Nothing of %1 was started."_s.arg(printable(m_project.name)), Style::red);
    } else {
        return;
    }
    m_hasFailed = true;
}

void RunSession::stateChanged(const ServiceID& id) {
    const ServiceState state = m_model.processes().state(id);
    QJsonObject fields{{u"state"_s, rawValue(state.phase)}};
    if (state.port) {
        fields[u"port"_s] = *state.port;
    }
    if (!state.message.isEmpty()) {
        fields[u"message"_s] = state.message;
    }
    event(u"state"_s, &id, fields);
    if (AppModel::isInstall(id)) {
        endIfOver(); // the setup tells how it ended
        return;
    }
    Shown& service = shown(id);
    switch (state.phase) {
    case ServiceState::Phase::starting:
        service.said.reset();
        break;
    case ServiceState::Phase::running:
        sayAddress(id, false);
        break;
    case ServiceState::Phase::failed:
        m_hasFailed = true;
        say(u"%1 failed: %2"_s.arg(service.label, state.message), Style::red);
        break;
    case ServiceState::Phase::stopped:
        say(u"%1 stopped."_s.arg(service.label));
        break;
    }
    endIfOver();
}

void RunSession::linesSkipped(const ServiceID& id, qsizetype count) {
    event(u"skipped"_s, &id, {{u"count"_s, count}});
    if (!m_options.json) {
        const QString number = QLocale(QLocale::English).toString(count);
        const QString text = count == 1 ? u"… 1 line skipped"_s : u"… %1 lines skipped"_s.arg(number);
        m_console.out.writeLine(label(id) + painted(text, Style::dim, m_console.out.hasColor()));
    }
}

void RunSession::logAppended(const ServiceID& id, qsizetype added) {
    const LogBuffer& log = m_model.processes().log(id);
    const QString start = label(id);
    QByteArray block;
    for (qsizetype i = std::max<qsizetype>(0, log.size() - added); i < log.size(); ++i) {
        if (m_options.json) {
            block +=
                compactJson(QJsonObject{{u"event"_s, u"log"_s}, {u"service"_s, toJson(id)}, {u"line"_s, log.at(i)}});
        } else {
            block += (start + safeOutputLine(log.at(i), m_console.out.hasColor())).toUtf8();
        }
        block += '\n';
    }
    m_console.out.write(block);
    if (m_console.out.isClosed()) {
        stop(); // whoever read the output is gone
    }
}

QString RunSession::label(const ServiceID& id) {
    const Shown& service = shown(id);
    return painted(padded(service.label, m_labelWidth) + u" │"_s, service.style, m_console.out.hasColor()) + u' ';
}

/// Says where the service is up, once that is sure: it listens there, and said so itself. A port that it never spoke of
/// (a debugger's, say), or where it does not listen yet, is given only when nothing better came for a while.
void RunSession::sayAddress(const ServiceID& id, bool hasWaited) {
    if (AppModel::isInstall(id) || m_isStopping) {
        return;
    }
    const ServiceState state = m_model.processes().state(id);
    const std::optional<int> port = m_model.addressPort(id);
    if (!state.isActive() || !port) {
        return;
    }
    const bool listens = m_model.processes().listeningPorts(id).contains(*port);
    const bool isUp = m_model.isAddressListening(id);
    Shown& service = shown(id);
    if (service.said == Said{*port, isUp}) {
        return;
    }
    const bool isSure = listens && (state.port == port || saysPort(m_model.processes().log(id), *port));
    if (!isSure && !hasWaited) {
        waitForAddress(id, isUp ? patience : longPatience);
        return;
    }
    service.said = Said{*port, isUp};
    const QString url = u"http://localhost:%1"_s.arg(*port);
    QJsonObject fields{{u"port"_s, *port}, {u"url"_s, url}, {u"listening"_s, listens}};
    QString message = service.label + (isUp ? u" is up at "_s : u" does not listen yet at "_s) + url;
    if (state.port && state.port != port) {
        message += u" (not at port %1)"_s.arg(*state.port);
        fields[u"announcedPort"_s] = *state.port;
    }
    say(message, isUp ? Style::green : Style::yellow);
    event(u"address"_s, &id, fields);
}

void RunSession::waitForAddress(const ServiceID& id, std::chrono::milliseconds limit) {
    Shown& service = shown(id);
    if (service.patience == nullptr) {
        service.patience = new QTimer(this);
        service.patience->setSingleShot(true);
        connect(service.patience, &QTimer::timeout, this, [this, id] { sayAddress(id, true); });
    }
    if (!service.patience->isActive() || service.patience->remainingTimeAsDuration() > limit) {
        service.patience->start(limit);
    }
}

void RunSession::stopAsked() {
    if (m_isStopping || !isAnyActive()) {
        if (m_isStopping) {
            say(u"Killing everything."_s, Style::red);
        }
        m_model.killServices();
        end(m_isStopping ? exitFailed : m_wasLaunched ? exitOk : exitInterrupted);
        return;
    }
    m_wasGivenUp = !m_wasLaunched;
    say(u"Stopping… (once more kills at once)"_s);
    stop();
}

void RunSession::stop() {
    if (std::exchange(m_isStopping, true)) {
        return;
    }
    m_model.cancelInstall();
    onFinished(m_model.stopAllServices(), this, [this] {
        m_wasLaunched = true;
        endIfOver();
    });
}

void RunSession::endIfOver() {
    if (m_wasLaunched && !isAnyActive()) {
        end(m_hasFailed ? exitFailed : m_wasGivenUp ? exitInterrupted : exitOk);
    }
}

void RunSession::end(int exitCode) {
    if (std::exchange(m_hasEnded, true)) {
        return;
    }
    event(u"end"_s, nullptr, {{u"exitCode"_s, exitCode}});
    m_exit.addResult(exitCode);
    m_exit.finish();
}

void RunSession::say(const QString& message, Style style) {
    if (!m_options.json) {
        m_console.err.writeLine(painted(message, style, m_console.err.hasColor()));
    }
}

void RunSession::event(const QString& name, const ServiceID* id, QJsonObject fields) {
    if (!m_options.json) {
        return;
    }
    fields[u"event"_s] = name;
    if (id != nullptr) {
        fields[u"service"_s] = toJson(*id);
    }
    m_console.out.write(compactJson(fields) + '\n');
}

} // namespace orv
