#include "OrvCore/Async.h"
#include "OrvProcess/PortParser.h"
#include "OrvUI/AppModel_p.h"

#include <algorithm>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// The port of `listening` that was mentioned last in the newest `count` lines.
std::optional<int> lastMentioned(const QList<int>& listening, const LogBuffer& log, qsizetype count) {
    QStringList digits;
    for (const int port : listening) {
        digits.append(QString::number(port));
    }
    for (auto line = log.rbegin(); line != log.rend() && count > 0; ++line, --count) {
        // A look for the digits is much cheaper than the parser, and the log may be long.
        const bool isWorthIt = std::ranges::any_of(digits, [&](const QString& port) { return line->contains(port); });
        if (!isWorthIt) {
            continue;
        }
        if (const std::optional<int> port = PortParser::servicePort(*line); port && listening.contains(*port)) {
            return port;
        }
    }
    return {};
}

bool namesDebugger(const QString& line, int port) {
    return line.contains(QString::number(port)) && PortParser::debuggerPort(line) == port;
}

/// Without those on which something listens for a debugger only.
QList<int> served(QList<int> listening, const LogBuffer& log) {
    listening.removeIf([&log](int port) {
        return PortParser::isDebuggerDefault(port) ||
               std::ranges::any_of(log, [port](const QString& line) { return namesDebugger(line, port); });
    });
    return listening;
}

} // namespace

std::optional<int> AppModel::addressPort(const ServiceID& id) const {
    const ServiceState state = d->processes->state(id);
    if (const auto known = d->addresses.constFind(id); known != d->addresses.cend() && known->state == state) {
        return known->port;
    }
    KnownAddress address{.state = state, .port = state.port, .choice = {}};
    const QList<int> listening = state.isActive() ? d->processes->listeningPorts(id) : QList<int>();
    const bool isAnnouncedGood = state.port && listening.contains(*state.port);
    if (!listening.isEmpty() && !isAnnouncedGood) {
        // A server that finds its port taken announces another one after it, and a tool listens on ports that it never
        // mentions: so the listening port that was mentioned last, else the smallest.
        const LogBuffer& log = d->processes->log(id);
        const QList<int> best = served(listening, log);
        address.port = lastMentioned(listening, log, log.size());
        if (!address.port) {
            address.port = best.isEmpty() ? state.port : best.first();
            address.isGuess = !best.isEmpty();
        }
        if (listening.size() > 1 || !state.port) {
            address.choice = listening;
        }
    }
    d->addresses.insert(id, address);
    return address.port;
}

/// A word about another of the ports makes that one the best. Nearly every service has its port once and for all, and
/// costs a look into a table here.
void AppModel::takeInOutput(const ServiceID& id, qsizetype added) {
    const auto known = d->addresses.find(id);
    if (known == d->addresses.end() || known->choice.isEmpty()) {
        return;
    }
    const LogBuffer& log = d->processes->log(id);
    if (known->port &&
        std::any_of(log.rbegin(), log.rbegin() + std::min(added, log.size()), [known](const QString& line) {
            return namesDebugger(line, *known->port);
        })) {
        d->addresses.erase(known);
        noteAddress(id);
        return;
    }
    const auto port = lastMentioned(known->choice, log, added);
    if (port && (port != known->port || known->isGuess)) {
        known->port = port;
        known->isGuess = false;
        noteAddress(id);
    }
}

void AppModel::noteAddress(const ServiceID& id) {
    Q_EMIT addressChanged(id);
    Q_EMIT serviceChanged(id);
    Q_EMIT servicesChanged();
    publishSnapshot();
    postTransitions();
}

bool AppModel::isAddressListening(const ServiceID& id) const {
    const std::optional<int> port = addressPort(id);
    // A container's ports are not those of the process that started it.
    return !port || id.kind == ServiceKind::docker || !d->processes->areListeningPortsKnown(id) ||
           d->processes->listeningPorts(id).contains(*port);
}

QFuture<void> AppModel::openAddress(const ServiceID& id) {
    ORV_ASSERT_MAIN_THREAD();
    const Completion completion;
    onFinished(d->processes->refreshListeningPorts(id), this, [this, id, completion](const QList<int>&) {
        d->addresses.remove(id);
        if (const std::optional<int> port = addressPort(id); port && openUrl) {
            QUrl url;
            url.setScheme(u"http"_s);
            url.setHost(u"localhost"_s);
            url.setPort(*port);
            if (!openUrl(url)) {
                refuse(tr("Could not open %1: no browser was found.").arg(url.toString()));
            }
        } else if (!port) {
            refuse(tr("%1 has not said yet where it can be opened.").arg(projectName(id)));
        }
        completion.finish();
    });
    return completion.future();
}

} // namespace orv
