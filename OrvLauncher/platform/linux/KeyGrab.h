#pragma once

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <functional>

#include <xcb/xcb.h>

namespace orv {

/// The quick panel's key, taken from the X server for as long as this lives. Main thread.
class KeyGrab : public QAbstractNativeEventFilter {
public:
    explicit KeyGrab(std::function<void()> pressed);
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
    [[nodiscard]] bool grab();
    void release() const;

    std::function<void()> m_pressed;
    xcb_connection_t* m_display = nullptr;
    xcb_window_t m_root = XCB_NONE;
    xcb_keycode_t m_key = 0;
    xcb_timestamp_t m_releasedAt = 0;
    State m_state = State::noKey;
};

} // namespace orv
