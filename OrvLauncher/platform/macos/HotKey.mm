#include "OrvLauncher/platform/HotKey.h"

#include <map>

#include <Carbon/Carbon.h>

namespace orv {

namespace {

constexpr UInt32 keyL = 37;
constexpr UInt32 modifiers = controlKey | optionKey | cmdKey; // 0x1900
constexpr OSType signature = 'ZBHK';

std::map<UInt32, std::function<void()>>& actions() {
    static std::map<UInt32, std::function<void()>> table;
    return table;
}

OSStatus pressed(EventHandlerCallRef, EventRef event, void*) {
    EventHotKeyID id{};
    const OSStatus status =
        GetEventParameter(event, kEventParamDirectObject, typeEventHotKeyID, nullptr, sizeof id, nullptr, &id);
    if (status != noErr) {
        return status;
    }
    const auto found = actions().find(id.id);
    if (found == actions().end()) {
        return eventNotHandledErr;
    }
    found->second();
    return noErr;
}

} // namespace

struct HotKey::Grab {
    EventHotKeyRef key = nullptr;
    EventHandlerRef handler = nullptr;
    UInt32 id = 0;

    explicit Grab(std::function<void()> action) {
        static UInt32 last = 0;
        id = ++last;
        actions()[id] = std::move(action);
        const EventTypeSpec type{kEventClassKeyboard, kEventHotKeyPressed};
        InstallEventHandler(GetApplicationEventTarget(), &pressed, 1, &type, nullptr, &handler);
        if (RegisterEventHotKey(keyL, modifiers, {signature, id}, GetApplicationEventTarget(), 0, &key) != noErr) {
            key = nullptr;
        }
    }

    ~Grab() {
        if (key != nullptr) {
            UnregisterEventHotKey(key);
        }
        if (handler != nullptr) {
            RemoveEventHandler(handler);
        }
        actions().erase(id);
    }
};

/// The system answers at once.
HotKey::HotKey(std::function<void()> pressed, std::function<void()> /*stateChanged*/)
    : m_grab(std::make_unique<Grab>(std::move(pressed))) {}

HotKey::~HotKey() = default;

HotKey::State HotKey::state() const {
    return m_grab->key != nullptr ? State::registered : State::taken;
}

QString HotKey::trigger() const {
    return {};
}

} // namespace orv
