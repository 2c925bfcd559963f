#include "OrvProcess/GroupTermination.h"

#include "OrvCore/Async.h"

#include <QPointer>

#include <csignal>

namespace orv {
namespace {
constexpr std::chrono::milliseconds lookInterval{20};
constexpr std::chrono::milliseconds afterKill{2000};
} // namespace

GroupTermination::GroupTermination(
    pid_t group, std::chrono::milliseconds grace, std::function<bool()> isOver, QObject* parent)
    : QObject(parent), m_group(group), m_grace(grace), m_isOver(std::move(isOver)) {
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(lookInterval);
    connect(&m_timer, &QTimer::timeout, this, &GroupTermination::look);
    m_promise.start();
}

void GroupTermination::begin() {
    ORV_ASSERT_MAIN_THREAD();
    ProcessSpawner::signalGroup(m_group, SIGTERM);
    m_deadline = QDeadlineTimer(m_grace, Qt::PreciseTimer);
}

QFuture<void> GroupTermination::lookAfter(const QFuture<void>& before) {
    ORV_ASSERT_MAIN_THREAD();
    onFinished(before, this, [this] {
        m_timer.start();
        look();
    });
    return m_promise.future();
}

void GroupTermination::look() {
    if (m_isOver()) {
        end(true);
        return;
    }
    if (!m_deadline.hasExpired()) {
        return;
    }
    if (m_killed) {
        end(false);
        return;
    }
    m_killed = true;
    ProcessSpawner::signalGroup(m_group, SIGKILL);
    m_deadline = QDeadlineTimer(afterKill, Qt::PreciseTimer);
}

void GroupTermination::end(bool gone) {
    m_timer.stop();
    deleteLater();
    const QPointer<GroupTermination> self(this);
    Q_EMIT ended(gone);
    if (self) {
        m_promise.finish();
    }
}

QFuture<void> ProcessSpawner::terminateGroup(pid_t group, std::chrono::milliseconds grace) {
    ORV_ASSERT_MAIN_THREAD();
    auto* termination =
        new GroupTermination(group, grace, [group] { return !groupExists(group); }, QCoreApplication::instance());
    termination->begin();
    return termination->lookAfter(finishedFuture());
}

} // namespace orv
