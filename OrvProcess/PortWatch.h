#pragma once

#include "OrvProcess/ListeningPorts.h"

#include <QElapsedTimer>
#include <QFuture>
#include <QList>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <optional>

#include <sys/types.h>

namespace orv {

/// Looks up the listening ports of one service while it comes up. Main thread; the looks are made in a pool.
///
/// The first output begins the phase. Looks follow it after 100 ms, 200 ms, 400 ms and so on, 2 s at most; a port that
/// is announced begins them anew. The phase is over once the service is running and listens where it says (anywhere,
/// when it does not say), after one more look that catches a second port; or 60 s after the last output, or 10 minutes
/// after its begin. From then on no timer runs.
class PortWatch : public QObject {
    Q_OBJECT
public:
    PortWatch(pid_t session, QThreadPool* pool, QObject* parent = nullptr);

    [[nodiscard]] const QList<int>& ports() const { return m_found.ports; }
    /// Whether those are all: a look has finished, and could look into every process.
    [[nodiscard]] bool areAllKnown() const { return m_found.areAll; }
    void noteOutput();
    void noteRunning(std::optional<int> announcedPort);
    /// A look now, whatever the phase.
    QFuture<SessionPorts> look();

Q_SIGNALS:
    /// Also when it changed whether they are all known.
    void portsChanged();

private:
    void begin();
    void take(const SessionPorts& found);
    void plan();
    [[nodiscard]] bool hasCome() const;

    const pid_t m_session;
    QThreadPool* m_pool;
    SessionPorts m_found{.ports = {}, .areAll = false};
    bool m_running = false;
    std::optional<int> m_announced;
    bool m_active = false;
    bool m_lastLook = false; ///< the phase has reached its end but for one look
    std::chrono::milliseconds m_interval{};
    QElapsedTimer m_sinceBegin;
    QElapsedTimer m_sinceOutput;
    QTimer m_timer{this};
};

} // namespace orv
