#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace orv {

/// The one key that opens the quick panel from anywhere: Control, Alt (Option) and Super (Command) with L. Taken from
/// the desktop for as long as this lives. Main thread.
class HotKey {
public:
    /// `stateChanged`: where the desktop takes its time to give the key, or asks the user; or the keyboard has another
    /// layout now.
    HotKey(std::function<void()> pressed, std::function<void()> stateChanged);
    ~HotKey();
    HotKey(const HotKey&) = delete;
    HotKey& operator=(const HotKey&) = delete;

    enum class State : std::uint8_t {
        asking, ///< the desktop has not answered yet
        registered,
        taken,       ///< another application has it
        noKey,       ///< no layout of the keyboard types the letter
        declined,    ///< the desktop, or the user whom it asked, gives none
        unsupported, ///< the desktop gives keys to no application
    };
    [[nodiscard]] State state() const;
    [[nodiscard]] bool isRegistered() const { return state() == State::registered; }
    /// The key in the desktop's own words, where it may be another one: the user chooses it there. Empty elsewhere.
    [[nodiscard]] QString trigger() const;

private:
    struct Grab;
    std::unique_ptr<Grab> m_grab;
};

} // namespace orv
