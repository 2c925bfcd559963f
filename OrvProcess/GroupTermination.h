#pragma once

#include "OrvProcess/ProcessSpawner.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QPromise>
#include <QTimer>

namespace orv {

/// Ends one process group: SIGTERM, a look every 20 ms for as long as `grace` allows, SIGKILL, and such looks for 2
/// seconds more. Lives on the main thread, and deletes itself when it is over.
class GroupTermination : public QObject {
    Q_OBJECT
public:
    /// `isOver` says whether there is nothing left to end; it is asked at every look.
    GroupTermination(
        pid_t group, std::chrono::milliseconds grace, std::function<bool()> isOver, QObject* parent = nullptr);

    /// Sends SIGTERM, from which `grace` counts.
    void begin();
    /// The looks begin when `before` has finished, however long that takes.
    QFuture<void> lookAfter(const QFuture<void>& before);
    [[nodiscard]] pid_t group() const { return m_group; }
    [[nodiscard]] QFuture<void> future() const { return m_promise.future(); }

Q_SIGNALS:
    /// Just before the future finishes. `gone` is false when the escalation ended without success.
    void ended(bool gone);

private:
    void look();
    void end(bool gone);

    const pid_t m_group;
    const std::chrono::milliseconds m_grace;
    const std::function<bool()> m_isOver;
    QPromise<void> m_promise;
    QDeadlineTimer m_deadline;
    bool m_killed = false;
    QTimer m_timer{this};
};

} // namespace orv
