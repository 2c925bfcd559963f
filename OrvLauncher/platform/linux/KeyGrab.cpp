#include "OrvLauncher/platform/linux/KeyGrab.h"

#include <QGuiApplication>

#include <array>
#include <cstdlib>
#include <memory>

namespace orv {

namespace {

constexpr xcb_keysym_t keyL = 0x6c;
constexpr uint16_t modifiers = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
/// Caps Lock and Num Lock are modifiers too: a grab holds for one exact state, so each of theirs needs its own.
constexpr std::array<uint16_t, 4> locks{0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};
constexpr uint16_t lockMask = XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2;

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

/// The key that types this symbol; 0 when the keyboard has none.
xcb_keycode_t keycodeOf(xcb_connection_t* connection, xcb_keysym_t symbol) {
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto cookie = xcb_get_keyboard_mapping(connection, setup->min_keycode, count);
    const Reply<xcb_get_keyboard_mapping_reply_t> reply(
        xcb_get_keyboard_mapping_reply(connection, cookie, nullptr), &std::free);
    if (!reply || reply->keysyms_per_keycode == 0) {
        return 0;
    }
    const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    const int columns = reply->keysyms_per_keycode;
    // Those of the first layout come first; one without Latin letters mostly has another one beside it that has them.
    for (int column = 0; column < columns; ++column) {
        for (int key = 0; key < count; ++key) {
            if (symbols[key * columns + column] == symbol) {
                return static_cast<xcb_keycode_t>(setup->min_keycode + key);
            }
        }
    }
    return 0;
}

} // namespace

bool KeyGrab::isPossible() {
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>() != nullptr &&
           qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

KeyGrab::KeyGrab(std::function<void()> pressed) : m_pressed(std::move(pressed)) {
    m_display = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_display)).data->root;
    m_key = keycodeOf(m_display, keyL);
    if (m_key == 0) {
        return;
    }
    m_state = grab() ? State::grabbed : State::taken;
    if (m_state == State::grabbed) {
        qGuiApp->installNativeEventFilter(this);
    } else {
        release();
    }
}

KeyGrab::~KeyGrab() {
    if (m_state == State::grabbed) {
        qGuiApp->removeNativeEventFilter(this);
        release();
    }
}

bool KeyGrab::grab() {
    bool isOurs = true;
    for (const uint16_t lock : locks) {
        const auto cookie = xcb_grab_key_checked(
            m_display, 1, m_root, modifiers | lock, m_key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const Reply<xcb_generic_error_t> error(xcb_request_check(m_display, cookie), &std::free);
        isOurs = isOurs && !error;
    }
    return isOurs;
}

void KeyGrab::release() const {
    for (const uint16_t lock : locks) {
        xcb_ungrab_key(m_display, m_key, m_root, modifiers | lock);
    }
    xcb_flush(m_display);
}

bool KeyGrab::nativeEventFilter(const QByteArray& type, void* message, qintptr* result) {
    Q_UNUSED(result)
    if (type != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const int kind = event->response_type & ~0x80;
    const auto* press = reinterpret_cast<const xcb_key_press_event_t*>(event);
    if (kind == XCB_KEY_RELEASE && press->detail == m_key) {
        m_releasedAt = press->time;
        return false;
    }
    if (kind != XCB_KEY_PRESS) {
        return false;
    }
    // A key that is held is released and pressed again at one time.
    if (press->detail == m_key && press->time == m_releasedAt) {
        return true;
    }
    if (press->detail != m_key || (press->state & 0xff & ~lockMask) != modifiers) {
        return false;
    }
    m_pressed();
    return true;
}

} // namespace orv
