#pragma once

#include <functional>
#include <memory>

namespace term {

/// Where a host gets its calls: an event loop, a dispatch queue, or a thread (SerialQueue).
class DeliveryQueue {
public:
    using Task = std::function<void()>;

    DeliveryQueue() = default;
    virtual ~DeliveryQueue() = default;
    DeliveryQueue(const DeliveryQueue&) = delete;
    DeliveryQueue& operator=(const DeliveryQueue&) = delete;

    /// Runs `task` later: one task at a time, in the order in which they were posted, never inside this call. May be
    /// called on any thread. A task that will not run any more, because the queue ends, is destroyed.
    virtual void post(Task task) = 0;
};

/// A queue with a thread of its own.
class SerialQueue final : public DeliveryQueue {
public:
    /// The name of its thread has at most 15 characters.
    explicit SerialQueue(const char* name = "term-delivery");
    /// Waits for the task that runs now, unless it is the one that ends the queue; the others are dropped.
    ~SerialQueue() override;

    void post(Task task) override;

    /// The queue of hosts that give none: one for all, never ended.
    [[nodiscard]] static const std::shared_ptr<DeliveryQueue>& shared();

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace term
