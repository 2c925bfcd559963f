#pragma once

#include <functional>
#include <memory>

namespace orv {

/// The one key that opens the quick panel from anywhere: Control, Alt (Option) and Super (Command) with L. Taken from
/// the desktop for as long as this lives. Main thread.
class HotKey {
public:
    explicit HotKey(std::function<void()> action);
    ~HotKey();
    HotKey(const HotKey&) = delete;
    HotKey& operator=(const HotKey&) = delete;

    enum class State {
        registered,
        taken,       ///< another application has it
        noKey,       ///< no layout of the keyboard types the letter
        unsupported, ///< the desktop gives keys to no application
    };
    [[nodiscard]] State state() const;

private:
    struct Grab;
    std::unique_ptr<Grab> m_grab;
};

} // namespace orv
