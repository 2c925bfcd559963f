#include "OrvLauncher/platform/linux/KeyGrab.h"

#include <QGuiApplication>

#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace orv {

namespace {

constexpr xcb_keysym_t keyL = 0x6c;
constexpr uint16_t modifiers = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
constexpr xcb_keysym_t numLockSymbol = 0xff7f;

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

/// What the keys of the keyboard type.
class Keyboard {
public:
    explicit Keyboard(xcb_connection_t* connection) {
        const xcb_setup_t* setup = xcb_get_setup(connection);
        m_first = setup->min_keycode;
        m_count = setup->max_keycode - setup->min_keycode + 1;
        const auto cookie = xcb_get_keyboard_mapping(connection, setup->min_keycode, static_cast<uint8_t>(m_count));
        m_mapping.reset(xcb_get_keyboard_mapping_reply(connection, cookie, nullptr));
    }

    [[nodiscard]] bool types(xcb_keycode_t key, xcb_keysym_t symbol) const {
        bool does = false;
        for (int column = 0; column < columns() && !does; ++column) {
            does = key >= m_first && at(key - m_first, column) == symbol;
        }
        return does;
    }

    /// The key that types this symbol; 0 when the keyboard has none.
    [[nodiscard]] xcb_keycode_t keyOf(xcb_keysym_t symbol) const {
        // Those of the first layout come first; one without Latin letters mostly has another one beside it that has
        // them.
        for (int column = 0; column < columns(); ++column) {
            for (int key = 0; key < m_count; ++key) {
                if (at(key, column) == symbol) {
                    return static_cast<xcb_keycode_t>(m_first + key);
                }
            }
        }
        return 0;
    }

private:
    [[nodiscard]] int columns() const { return m_mapping ? m_mapping->keysyms_per_keycode : 0; }
    [[nodiscard]] xcb_keysym_t at(int key, int column) const {
        return xcb_get_keyboard_mapping_keysyms(m_mapping.get())[key * columns() + column];
    }

    int m_first = 0;
    int m_count = 0;
    Reply<xcb_get_keyboard_mapping_reply_t> m_mapping{nullptr, &std::free};
};

/// The modifier that Num Lock is; 0 where it is none.
uint16_t numLockOf(xcb_connection_t* connection, const Keyboard& keyboard) {
    const Reply<xcb_get_modifier_mapping_reply_t> reply(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr), &std::free);
    const int each = reply ? reply->keycodes_per_modifier : 0;
    for (int i = 0; i < 8 * each; ++i) {
        const xcb_keycode_t key = xcb_get_modifier_mapping_keycodes(reply.get())[i];
        if (key != 0 && keyboard.types(key, numLockSymbol)) {
            return static_cast<uint16_t>(1 << (i / each));
        }
    }
    return 0;
}

/// Caps Lock and Num Lock are modifiers too: a grab holds for one exact state, so each of theirs needs its own.
std::array<uint16_t, 4> statesWith(uint16_t numLock) {
    constexpr uint16_t capsLock = XCB_MOD_MASK_LOCK;
    return {
        modifiers, modifiers | capsLock, static_cast<uint16_t>(modifiers | numLock),
        static_cast<uint16_t>(modifiers | capsLock | numLock)};
}

/// The number of the extension's events, which is the server's choice; 0 where it has none.
uint8_t keyboardEventOf(xcb_connection_t* connection) {
    constexpr std::string_view name = "XKEYBOARD";
    const auto cookie = xcb_query_extension(connection, name.size(), name.data());
    const Reply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(connection, cookie, nullptr), &std::free);
    return reply && reply->present != 0 ? reply->first_event : uint8_t{0};
}

} // namespace

bool KeyGrab::isPossible() {
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>() != nullptr &&
           qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

KeyGrab::KeyGrab(std::function<void()> pressed, std::function<void()> stateChanged)
    : m_pressed(std::move(pressed)), m_stateChanged(std::move(stateChanged)) {
    m_display = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_display)).data->root;
    m_keyboardEvent = keyboardEventOf(m_display);
    follow();
    qGuiApp->installNativeEventFilter(this);
}

KeyGrab::~KeyGrab() {
    qGuiApp->removeNativeEventFilter(this);
    release();
}

KeyGrab::Place KeyGrab::find() const {
    const Keyboard keyboard(m_display);
    return {.key = keyboard.keyOf(keyL), .numLock = numLockOf(m_display, keyboard)};
}

/// Takes the key where it is now.
void KeyGrab::follow() {
    const Place place = find();
    if (place == m_place) {
        return;
    }
    release();
    m_place = place;
    if (place.key == 0) {
        m_state = State::noKey;
    } else if (grab()) {
        m_state = State::grabbed;
    } else {
        release();
        m_state = State::taken;
    }
}

bool KeyGrab::grab() const {
    bool isOurs = true;
    for (const uint16_t state : statesWith(m_place.numLock)) {
        const auto cookie =
            xcb_grab_key_checked(m_display, 1, m_root, state, m_place.key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        const Reply<xcb_generic_error_t> error(xcb_request_check(m_display, cookie), &std::free);
        isOurs = isOurs && !error;
    }
    return isOurs;
}

void KeyGrab::release() const {
    if (m_place.key == 0) {
        return; // which stands for any key
    }
    for (const uint16_t state : statesWith(m_place.numLock)) {
        xcb_ungrab_key(m_display, m_place.key, m_root, state);
    }
    xcb_flush(m_display);
}

/// Whoever has asked for the extension's events, as Qt has, gets them in place of the core's.
bool KeyGrab::isMappingChange(const xcb_generic_event_t& event) const {
    enum { newKeyboard, newMap };
    const int kind = event.response_type & ~0x80;
    const bool isOfKeyboard = m_keyboardEvent != 0 && kind == m_keyboardEvent;
    return kind == XCB_MAPPING_NOTIFY || (isOfKeyboard && (event.pad0 == newKeyboard || event.pad0 == newMap));
}

bool KeyGrab::nativeEventFilter(const QByteArray& type, void* message, qintptr* result) {
    Q_UNUSED(result)
    if (type != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if (isMappingChange(*event)) {
        const State before = m_state;
        follow();
        if (m_state != before) {
            m_stateChanged();
        }
        return false;
    }
    const int kind = event->response_type & ~0x80;
    const auto* press = reinterpret_cast<const xcb_key_press_event_t*>(event);
    if (kind == XCB_KEY_RELEASE && press->detail == m_place.key) {
        m_releasedAt = press->time;
        return false;
    }
    if (kind != XCB_KEY_PRESS || press->detail != m_place.key) {
        return false;
    }
    // A key that is held is released and pressed again at one time.
    if (m_isHeld && press->time == m_releasedAt) {
        return true;
    }
    const int locks = XCB_MOD_MASK_LOCK | m_place.numLock;
    m_isHeld = (press->state & 0xff & ~locks) == modifiers;
    if (m_isHeld) {
        m_pressed();
    }
    return m_isHeld;
}

} // namespace orv
