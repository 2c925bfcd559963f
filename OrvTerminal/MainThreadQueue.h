#pragma once

#include "TermEngine/DeliveryQueue.h"

#include <chrono>
#include <memory>

namespace orv {

/// Brings what the terminals' threads deliver to the main thread, in turns: none is longer than `turn` (but for the
/// task that runs when it is over), and between two of them input and painting come first. All sessions share one
/// queue, so that together they take no more than a turn either.
class MainThreadQueue final : public term::DeliveryQueue {
public:
    static constexpr std::chrono::microseconds turn{6000};

    /// Main thread.
    MainThreadQueue();
    /// Any thread. What was not run is dropped.
    ~MainThreadQueue() override;

    void post(Task task) override;

private:
    class Receiver;
    std::shared_ptr<Receiver> m_receiver;
};

} // namespace orv
