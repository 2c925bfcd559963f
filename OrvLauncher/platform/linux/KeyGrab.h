#pragma once

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <functional>

#include <xcb/xcb.h>

namespace orv {

/// The quick panel's key, taken from the X server for as long as this lives, wherever the keyboard's layout has it at
/// the time. Main thread.
class KeyGrab : public QAbstractNativeEventFilter {
public:
    /// `stateChanged`: by another layout.
    KeyGrab(std::function<void()> pressed, std::function<void()> stateChanged);
    ~KeyGrab() override;
    KeyGrab(const KeyGrab&) = delete;
    KeyGrab& operator=(const KeyGrab&) = delete;

    enum class State : std::uint8_t {
        grabbed,
        taken, ///< another application has it
        noKey, ///< no layout of the keyboard types the letter
    };
    [[nodiscard]] State state() const { return m_state; }
    /// Whether the desktop is one of X11, where a key can be had. A program on Wayland's X server gets keys only while
    /// such a program has the focus.
    [[nodiscard]] static bool isPossible();

private:
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
    /// Where the letter and Num Lock are on the keyboard.
    struct Place {
        xcb_keycode_t key = 0; ///< 0: nowhere
        uint16_t numLock = 0;  ///< the modifier; 0: it is none

        bool operator==(const Place&) const = default;
    };
    [[nodiscard]] Place find() const;
    void follow();
    [[nodiscard]] bool grab() const;
    void release() const;
    [[nodiscard]] bool isMappingChange(const xcb_generic_event_t& event) const;

    std::function<void()> m_pressed;
    std::function<void()> m_stateChanged;
    xcb_connection_t* m_display = nullptr;
    xcb_window_t m_root = XCB_NONE;
    uint8_t m_keyboardEvent = 0; ///< of the X keyboard extension; 0 where the server has none
    Place m_place;
    xcb_timestamp_t m_releasedAt = 0;
    bool m_isHeld = false; ///< the letter's last press was ours; its repetitions are, whatever became of the modifiers
    State m_state = State::noKey;
};

} // namespace orv
