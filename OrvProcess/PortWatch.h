#pragma once

#include "OrvProcess/ListeningPorts.h"

#include <QElapsedTimer>
#include <QFuture>
#include <QList>
#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>
#include <variant>

#include <sys/types.h>

namespace orv {

/// Looks up the listening ports of one service while it comes up. Main thread; the looks are made in a pool.
///
/// The phase begins with the object. Looks follow after 100 ms, 200 ms, 400 ms and so on, 2 s at most; the first output
/// and a port that is announced begin it anew. It is over once the service is running and listens where it says
/// (anywhere, when it does not say), after one more look that catches a second port; or 60 s after the last output, or
/// 10 minutes after its begin. From then on no timer runs, until a service that is not running yet prints again.
class PortWatch : public QObject {
    Q_OBJECT
public:
    struct Pace {
        std::chrono::milliseconds firstInterval{100};
        std::chrono::milliseconds longestInterval{2000};
        std::chrono::milliseconds lastLookAfter{1000};
        std::chrono::milliseconds quietLimit{60'000};
        std::chrono::milliseconds phaseLimit{600'000};
    };

    PortWatch(pid_t session, QThreadPool* pool, const Pace& pace, QObject* parent = nullptr);

    [[nodiscard]] const QList<int>& ports() const { return m_found.ports; }
    /// Whether those are all: a look has finished, and could look into every process.
    [[nodiscard]] bool areAllKnown() const { return m_found.areAll; }
    /// The phase is under way.
    [[nodiscard]] bool isActive() const { return m_active; }
    void noteOutput();
    void noteRunning(std::optional<int> announcedPort);
    /// A look now, whatever the phase.
    QFuture<SessionPorts> look();

Q_SIGNALS:
    /// Also when it changed whether they are all known.
    void portsChanged();

private:
    void begin();
    void take(const SessionPorts& found, quint64 look);
    void plan();
    [[nodiscard]] bool hasCome() const;

    const pid_t m_session;
    QThreadPool* m_pool;
    const Pace m_pace;
    const std::shared_ptr<std::monostate> m_life = std::make_shared<std::monostate>(); ///< of those that look
    quint64 m_looks = 0;
    quint64 m_newest = 0; ///< the look that m_found is of
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
