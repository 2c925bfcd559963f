#include "OrvTerminal/MainThreadQueue.h"

#include "OrvCore/Async.h"

#include <QCoreApplication>
#include <QEvent>

#include <deque>
#include <mutex>
#include <utility>

namespace orv {

/// The end of the queue that belongs to the main thread.
class MainThreadQueue::Receiver : public QObject {
public:
    void post(Task task) {
        const std::scoped_lock lock(m_mutex);
        if (m_hasEnded) {
            return;
        }
        m_tasks.push_back(std::move(task));
        plan();
    }

    void end() {
        std::deque<Task> dropped;
        const std::scoped_lock lock(m_mutex);
        m_hasEnded = true;
        dropped.swap(m_tasks);
    }

protected:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User) {
            return QObject::event(event);
        }
        const auto deadline = std::chrono::steady_clock::now() + turn;
        while (const Task task = next()) {
            task();
            if (std::chrono::steady_clock::now() >= deadline) {
                break;
            }
        }
        const std::scoped_lock lock(m_mutex);
        m_isPlanned = false;
        plan();
        return true;
    }

private:
    [[nodiscard]] Task next() {
        const std::scoped_lock lock(m_mutex);
        if (m_tasks.empty()) {
            return {};
        }
        Task task = std::move(m_tasks.front());
        m_tasks.pop_front();
        return task;
    }

    /// With the lock held.
    void plan() {
        if (!m_isPlanned && !m_tasks.empty()) {
            m_isPlanned = true;
            QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::LowEventPriority);
        }
    }

    std::mutex m_mutex;
    std::deque<Task> m_tasks;
    bool m_isPlanned = false;
    bool m_hasEnded = false;
};

MainThreadQueue::MainThreadQueue() : m_receiver(new Receiver, [](Receiver* receiver) { receiver->deleteLater(); }) {
    ORV_ASSERT_MAIN_THREAD();
}

MainThreadQueue::~MainThreadQueue() {
    m_receiver->end();
}

void MainThreadQueue::post(Task task) {
    m_receiver->post(std::move(task));
}

} // namespace orv
