#include "TermEngine/TerminalOscEvents.h"

#include "TermEngine/DeliveryQueue.h"

#include <atomic>
#include <map>
#include <mutex>
#include <utility>

namespace term {

struct TerminalOscEventDispatcher::State {
    /// An event costs this beside its payload.
    static constexpr std::size_t overheadBytes = 64;

    std::mutex mutex;
    std::map<std::uint64_t, std::shared_ptr<const Observer>> observers;
    std::uint64_t nextID = 0;
    std::size_t waitingBytes = 0;
    std::size_t dropped = 0;
    std::shared_ptr<DeliveryQueue> queue; ///< from the first observer on
    std::atomic<bool> hasObservers = false;

    void cancel(std::uint64_t id) {
        const std::scoped_lock lock(mutex);
        observers.erase(id);
        hasObservers = !observers.empty();
    }

    void deliver(const TerminalOscEvent& event) {
        for (std::uint64_t next = 0;;) {
            std::shared_ptr<const Observer> observer;
            {
                const std::scoped_lock lock(mutex);
                const auto found = observers.lower_bound(next);
                if (found == observers.end()) {
                    waitingBytes -= event.payload.size() + overheadBytes;
                    return;
                }
                next = found->first + 1;
                observer = found->second;
            }
            (*observer)(event);
        }
    }
};

TerminalOscObservation& TerminalOscObservation::operator=(TerminalOscObservation&& other) noexcept {
    if (this != &other) {
        cancel();
        m_cancel = std::exchange(other.m_cancel, nullptr);
    }
    return *this;
}

void TerminalOscObservation::cancel() {
    if (const auto cancelIt = std::exchange(m_cancel, nullptr)) {
        cancelIt();
    }
}

TerminalOscEventDispatcher::TerminalOscEventDispatcher() : m_state(std::make_shared<State>()) {}

TerminalOscEventDispatcher::~TerminalOscEventDispatcher() {
    std::shared_ptr<DeliveryQueue> queue;
    {
        const std::scoped_lock lock(m_state->mutex);
        m_state->observers.clear();
        m_state->hasObservers = false;
        queue = std::move(m_state->queue);
    }
    // Its end waits for the call that goes on, which may need the mutex.
}

TerminalOscObservation TerminalOscEventDispatcher::observe(Observer observer) {
    const std::scoped_lock lock(m_state->mutex);
    if (!m_state->queue) {
        m_state->queue = std::make_shared<SerialQueue>("term-osc-events");
    }
    const std::uint64_t id = m_state->nextID++;
    m_state->observers.emplace(id, std::make_shared<const Observer>(std::move(observer)));
    m_state->hasObservers = true;
    return TerminalOscObservation([id, weak = std::weak_ptr(m_state)] {
        if (const auto state = weak.lock()) {
            state->cancel(id);
        }
    });
}

bool TerminalOscEventDispatcher::hasObservers() const {
    return m_state->hasObservers;
}

std::size_t TerminalOscEventDispatcher::droppedCount() const {
    const std::scoped_lock lock(m_state->mutex);
    return m_state->dropped;
}

void TerminalOscEventDispatcher::publish(TerminalOscEvent event) {
    const std::scoped_lock lock(m_state->mutex);
    if (m_state->observers.empty()) {
        return;
    }
    const std::size_t bytes = event.payload.size() + State::overheadBytes;
    if (bytes > maximumWaitingBytes - m_state->waitingBytes) {
        ++m_state->dropped;
        return;
    }
    m_state->waitingBytes += bytes;
    m_state->queue->post([state = m_state, event = std::move(event)] { state->deliver(event); });
}

} // namespace term
