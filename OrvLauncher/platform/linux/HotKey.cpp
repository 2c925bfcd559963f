#include "OrvLauncher/platform/HotKey.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>

#include <array>
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

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

struct HotKey::Grab : QAbstractNativeEventFilter {
    std::function<void()> action;
    State state = State::unsupported;
    xcb_connection_t* connection = nullptr; ///< null: nothing is grabbed
    xcb_window_t root = XCB_NONE;
    xcb_keycode_t key = 0;
    xcb_timestamp_t releasedAt = 0;

    explicit Grab(std::function<void()> pressed) : action(std::move(pressed)) {
        const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        if (x11 == nullptr) {
            return;
        }
        xcb_connection_t* display = x11->connection();
        root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
        key = keycodeOf(display, keyL);
        if (key == 0) {
            state = State::noKey;
            return;
        }
        bool isOurs = true;
        for (const uint16_t lock : locks) {
            const auto cookie =
                xcb_grab_key_checked(display, 1, root, modifiers | lock, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
            const Reply<xcb_generic_error_t> error(xcb_request_check(display, cookie), &std::free);
            isOurs = isOurs && !error;
        }
        if (!isOurs) {
            release(display);
            state = State::taken;
            return;
        }
        state = State::registered;
        connection = display;
        qGuiApp->installNativeEventFilter(this);
    }

    ~Grab() override {
        if (connection != nullptr) {
            qGuiApp->removeNativeEventFilter(this);
            release(connection);
        }
    }

    void release(xcb_connection_t* display) const {
        for (const uint16_t lock : locks) {
            xcb_ungrab_key(display, key, root, modifiers | lock);
        }
        xcb_flush(display);
    }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override {
        Q_UNUSED(result)
        if (type != "xcb_generic_event_t") {
            return false;
        }
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        const int kind = event->response_type & ~0x80;
        const auto* press = reinterpret_cast<const xcb_key_press_event_t*>(event);
        if (kind == XCB_KEY_RELEASE && press->detail == key) {
            releasedAt = press->time;
            return false;
        }
        if (kind != XCB_KEY_PRESS) {
            return false;
        }
        // A key that is held is released and pressed again at one time.
        if (press->detail == key && press->time == releasedAt) {
            return true;
        }
        if (press->detail != key || (press->state & 0xff & ~lockMask) != modifiers) {
            return false;
        }
        action();
        return true;
    }
};

HotKey::HotKey(std::function<void()> action) : m_grab(std::make_unique<Grab>(std::move(action))) {}

HotKey::~HotKey() = default;

HotKey::State HotKey::state() const {
    return m_grab->state;
}

} // namespace orv
