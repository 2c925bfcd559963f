#include "OrvLauncher/platform/HotKey.h"

#include "OrvLauncher/platform/ActivationToken.h"
#include "OrvLauncher/platform/linux/KeyGrab.h"
#include "OrvLauncher/platform/linux/PortalShortcut.h"

#include <QCoreApplication>

#include <optional>

namespace orv {

using namespace Qt::StringLiterals;

struct HotKey::Grab {
    std::optional<KeyGrab> key;
    std::optional<PortalShortcut> portal;
};

HotKey::HotKey(std::function<void()> pressed, std::function<void()> stateChanged) : m_grab(std::make_unique<Grab>()) {
    if (KeyGrab::isPossible()) {
        m_grab->key.emplace(std::move(pressed), std::move(stateChanged));
        return;
    }
    const PortalShortcut::Shortcut shortcut{
        .id = u"quick-panel"_s,
        .description = QCoreApplication::translate("HotKey", "Open the quick panel"),
        .trigger = u"CTRL+ALT+LOGO+l"_s};
    const auto act = [pressed = std::move(pressed)](const QString& activation) {
        const ActivationToken token(activation);
        pressed();
    };
    m_grab->portal.emplace(shortcut, PortalShortcut::Handlers{.pressed = act, .stateChanged = std::move(stateChanged)});
}

HotKey::~HotKey() = default;

HotKey::State HotKey::state() const {
    if (m_grab->key) {
        switch (m_grab->key->state()) {
        case KeyGrab::State::grabbed:
            return State::registered;
        case KeyGrab::State::taken:
            return State::taken;
        case KeyGrab::State::noKey:
            return State::noKey;
        }
    }
    switch (m_grab->portal->state()) {
    case PortalShortcut::State::asking:
        return State::asking;
    case PortalShortcut::State::bound:
        return State::registered;
    case PortalShortcut::State::declined:
        return State::declined;
    case PortalShortcut::State::unsupported:
        return State::unsupported;
    }
    Q_UNREACHABLE();
}

QString HotKey::trigger() const {
    return m_grab->portal ? m_grab->portal->trigger() : QString();
}

} // namespace orv
