#include "OrvProcess/PortWatch.h"

#include "OrvCore/Async.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace orv {
namespace {

constexpr std::chrono::milliseconds firstInterval = 100ms;
constexpr std::chrono::milliseconds longestInterval = 2s;
constexpr std::chrono::milliseconds lastLookAfter = 1s;
constexpr std::chrono::milliseconds quietLimit = 60s;
constexpr std::chrono::milliseconds phaseLimit = 10min;

} // namespace

PortWatch::PortWatch(pid_t session, QThreadPool* pool, QObject* parent)
    : QObject(parent), m_session(session), m_pool(pool) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] { look(); });
}

void PortWatch::noteOutput() {
    const bool isFirst = !m_sinceOutput.isValid();
    m_sinceOutput.start();
    if (isFirst) {
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
    m_pool->start([promise = std::make_shared<QPromise<SessionPorts>>(std::move(promise)), session = m_session] {
        promise->start();
        promise->addResult(listeningPorts(session));
        promise->finish();
    });
    onFinished(future, this, [this](const SessionPorts& found) { take(found); });
    return future;
}

void PortWatch::begin() {
    m_active = true;
    m_lastLook = false;
    m_interval = firstInterval;
    m_sinceBegin.start();
    m_timer.start(m_interval);
}

void PortWatch::take(const SessionPorts& found) {
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
    if (m_lastLook || m_sinceBegin.hasExpired(phaseLimit.count()) ||
        (m_sinceOutput.isValid() && m_sinceOutput.hasExpired(quietLimit.count()))) {
        m_active = false;
        return;
    }
    m_lastLook = hasCome();
    m_interval = std::min(2 * m_interval, longestInterval);
    m_timer.start(m_lastLook ? lastLookAfter : m_interval);
}

/// The service runs, and listens where it was said to.
bool PortWatch::hasCome() const {
    return m_running && (m_announced ? ports().contains(*m_announced) : !ports().isEmpty());
}

} // namespace orv
