#pragma once

#include "TermEngine/Buffer.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace term {

/// One OSC string that a terminal has got.
struct TerminalOscEvent {
    int code = 0;
    std::vector<std::uint8_t> payload{}; ///< behind the number and its semicolon, as the program wrote it
    Position cursor{};                   ///< on the screen, before the string was acted upon
    bool operator==(const TerminalOscEvent&) const = default;
};

/// A subscription, which ends with it. May outlive its dispatcher; belongs to one thread at a time.
class TerminalOscObservation {
public:
    TerminalOscObservation() = default;
    ~TerminalOscObservation() { cancel(); }
    TerminalOscObservation(TerminalOscObservation&&) noexcept = default;
    TerminalOscObservation& operator=(TerminalOscObservation&& other) noexcept;

    /// No further event is delivered once this has returned; a call that begins right now goes on.
    void cancel();

private:
    friend class TerminalOscEventDispatcher;
    explicit TerminalOscObservation(std::function<void()> cancel) : m_cancel(std::move(cancel)) {}

    std::function<void()> m_cancel;
};

/// Hands OSC strings to whoever wants to see them: in their order, on a queue of its own, so that nobody holds up the
/// thread that feeds the terminal. Every function may be called on any thread.
class TerminalOscEventDispatcher {
public:
    using Observer = std::function<void(const TerminalOscEvent&)>;
    /// No more waits for slow observers: what does not fit any more is dropped whole.
    static constexpr std::size_t maximumWaitingBytes = 1024 * 1024;

    TerminalOscEventDispatcher();
    /// Waits for a call that goes on, unless it comes from within it; what waits is dropped.
    ~TerminalOscEventDispatcher();
    TerminalOscEventDispatcher(const TerminalOscEventDispatcher&) = delete;
    TerminalOscEventDispatcher& operator=(const TerminalOscEventDispatcher&) = delete;

    /// Throws std::system_error where there is no thread for the first one.
    [[nodiscard]] TerminalOscObservation observe(Observer observer);
    /// Whether events are worth the making.
    [[nodiscard]] bool hasObservers() const;
    void publish(TerminalOscEvent event);
    [[nodiscard]] std::size_t droppedCount() const;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace term
