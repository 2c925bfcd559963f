#include "OrvProcess/PortWatch.h"

#include "OrvCore/Async.h"

#include <algorithm>

namespace orv {

PortWatch::PortWatch(pid_t session, QThreadPool* pool, const Pace& pace, QObject* parent)
    : QObject(parent), m_session(session), m_pool(pool), m_pace(pace) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] { look(); });
    begin();
}

void PortWatch::noteOutput() {
    const bool isFirst = !m_sinceOutput.isValid();
    m_sinceOutput.start();
    if (isFirst || (!m_active && !m_running)) {
        begin();
    }
}

void PortWatch::noteRunning(std::optional<int> announcedPort) {
    m_running = true;
    m_announced = announcedPort;
    begin();
}

QFuture<SessionPorts> PortWatch::look() {
    ORV_ASSERT_MAIN_THREAD();
    QPromise<SessionPorts> promise;
    QFuture<SessionPorts> future = promise.future();
    // The pool may have much to do: nobody waits there for a process that has been reaped, whose id may be another's.
    m_pool->start([promise = std::make_shared<QPromise<SessionPorts>>(std::move(promise)), session = m_session,
                   life = std::weak_ptr(m_life)] {
        promise->start();
        promise->addResult(life.expired() ? SessionPorts{.ports = {}, .areAll = false} : listeningPorts(session));
        promise->finish();
    });
    onFinished(future, this, [this, look = ++m_looks](const SessionPorts& found) { take(found, look); });
    return future;
}

void PortWatch::begin() {
    m_active = true;
    m_lastLook = false;
    m_interval = m_pace.firstInterval;
    m_sinceBegin.start();
    m_timer.start(m_interval);
}

void PortWatch::take(const SessionPorts& found, quint64 look) {
    // Two threads look: what is older may come later.
    if (look < m_newest) {
        return;
    }
    m_newest = look;
    const bool areOthers = m_found != found;
    m_found = found;
    plan();
    if (areOthers) {
        Q_EMIT portsChanged();
    }
}

/// Plans the next look of the phase, if there is one.
void PortWatch::plan() {
    if (!m_active || m_timer.isActive()) {
        return;
    }
    if (m_lastLook || m_sinceBegin.hasExpired(m_pace.phaseLimit.count()) ||
        (m_sinceOutput.isValid() && m_sinceOutput.hasExpired(m_pace.quietLimit.count()))) {
        m_active = false;
        return;
    }
    m_lastLook = hasCome();
    m_interval = std::min(2 * m_interval, m_pace.longestInterval);
    m_timer.start(m_lastLook ? m_pace.lastLookAfter : m_interval);
}

/// The service runs, and listens where it was said to.
bool PortWatch::hasCome() const {
    return m_running && (m_announced ? ports().contains(*m_announced) : !ports().isEmpty());
}

} // namespace orv
