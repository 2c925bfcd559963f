#include "OrvCore/Async.h"
#include "OrvProcess/PortParser.h"
#include "OrvUI/AppModel_p.h"

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// A server that finds its port taken announces another one after it, and a tool listens on ports that it never
/// mentions: so the listening port that was mentioned last, else the smallest.
std::optional<int> bestListening(const QList<int>& listening, const LogBuffer& log) {
    QStringList digits;
    for (const int port : listening) {
        digits.append(QString::number(port));
    }
    for (auto line = log.rbegin(); line != log.rend(); ++line) {
        // A look for the digits is much cheaper than the parser, and the log may be long.
        const bool isWorthIt = std::ranges::any_of(digits, [&](const QString& port) { return line->contains(port); });
        if (!isWorthIt) {
            continue;
        }
        if (const std::optional<int> port = PortParser::port(*line); port && listening.contains(*port)) {
            return port;
        }
    }
    return listening.first();
}

} // namespace

std::optional<int> AppModel::addressPort(const ServiceID& id) const {
    const ServiceState state = d->processes->state(id);
    if (const auto known = d->addresses.constFind(id); known != d->addresses.cend() && known->state == state) {
        return known->port;
    }
    std::optional<int> port;
    if (state.isRunning()) {
        const QList<int> listening = d->processes->listeningPorts(id);
        const bool isAnnouncedGood = listening.isEmpty() || (state.port && listening.contains(*state.port));
        port = isAnnouncedGood ? state.port : bestListening(listening, d->processes->log(id));
    }
    d->addresses.insert(id, {state, port});
    return port;
}

bool AppModel::isAnnouncedPortListening(const ServiceID& id) const {
    const ServiceState state = d->processes->state(id);
    const QList<int> listening = d->processes->listeningPorts(id);
    return listening.isEmpty() || !state.port || listening.contains(*state.port);
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
            openUrl(url);
        } else if (!port) {
            report(projectName(id) + u" has not said yet where it can be opened."_s, true);
        }
        completion.finish();
    });
    return completion.future();
}

} // namespace orv
