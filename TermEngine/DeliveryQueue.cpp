#include "TermEngine/DeliveryQueue.h"

#include "TermEngine/WorkerThread_p.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace term {

struct SerialQueue::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> tasks;
    bool isEnded = false;
    std::thread thread;

    void run() {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return isEnded || !tasks.empty(); });
            if (isEnded) {
                return;
            }
            {
                const Task task = std::move(tasks.front());
                tasks.pop_front();
                lock.unlock();
                task();
            }
            lock.lock();
        }
    }
};

SerialQueue::SerialQueue(const char* name) : m_state(std::make_shared<State>()) {
    m_state->thread = startWorkerThread(name, [state = m_state] { state->run(); });
}

SerialQueue::~SerialQueue() {
    std::deque<Task> dropped;
    {
        const std::scoped_lock lock(m_state->mutex);
        m_state->isEnded = true;
        dropped.swap(m_state->tasks);
    }
    m_state->changed.notify_all();
    if (m_state->thread.get_id() == std::this_thread::get_id()) {
        m_state->thread.detach();
    } else {
        m_state->thread.join();
    }
}

void SerialQueue::post(Task task) {
    {
        const std::scoped_lock lock(m_state->mutex);
        if (m_state->isEnded) {
            return;
        }
        m_state->tasks.push_back(std::move(task));
    }
    m_state->changed.notify_one();
}

const std::shared_ptr<DeliveryQueue>& SerialQueue::shared() {
    // Never destroyed: a process may end while its children still do.
    static const auto& queue = *new std::shared_ptr<DeliveryQueue>(std::make_shared<SerialQueue>());
    return queue;
}

} // namespace term
