#include "HotKeyNote.h"

namespace orv {

QString HotKeyNote::of(HotKey::State state) {
    switch (state) {
    case HotKey::State::asking:
    case HotKey::State::registered:
        return {};
    case HotKey::State::taken:
        return tr("Another application holds ⌃⌥⌘L. The panel still opens from the menu bar.");
    case HotKey::State::noKey:
        return tr("This keyboard has no key that types an L. The panel still opens from the menu bar.");
    case HotKey::State::declined:
        return tr(
            "The desktop gave OrvLauncher no key for the panel. Turn this off and on to be asked again, or give a "
            "key the command “orvlauncher toggle” in the settings of the desktop.");
    case HotKey::State::unsupported:
        return tr("This desktop gives its keys to no application. Give one the command “orvlauncher toggle” in the "
                  "settings of the desktop.");
    }
    Q_UNREACHABLE();
}

} // namespace orv
