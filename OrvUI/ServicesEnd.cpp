#include "OrvUI/ServicesEnd.h"

#include "OrvCore/Async.h"

#include <QTimer>

#include <algorithm>

namespace orv {

using namespace std::chrono_literals;

void whenEnded(
    ProcessManager& processes, const QList<ServiceID>& ids, QObject* context, std::function<void(bool)> handler) {
    ORV_ASSERT_MAIN_THREAD();
    const auto haveEnded = [&processes, ids] {
        return std::ranges::none_of(ids, [&](const ServiceID& id) { return processes.state(id).isActive(); });
    };
    if (haveEnded()) {
        handler(true);
        return;
    }
    // The deadline is the waiting itself: with it the connection goes.
    auto* deadline = new QTimer(context);
    deadline->setSingleShot(true);
    const auto end = [deadline, handler = std::move(handler)](bool ended) {
        deadline->disconnect();
        deadline->deleteLater();
        handler(ended);
    };
    QObject::connect(deadline, &QTimer::timeout, deadline, [end] { end(false); });
    QObject::connect(&processes, &ProcessManager::stateChanged, deadline, [deadline, haveEnded, end] {
        if (deadline->isActive() && haveEnded()) {
            deadline->stop();
            end(true);
        }
    });
    // SIGTERM and SIGKILL take 5 s between them, and a stack of containers gets 60 s.
    deadline->start(70s);
}

} // namespace orv
