#include "OrvLauncher/platform/Compositing.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

namespace orv {

/// On X11 a compositor holds a selection of each screen (Extended Window Manager Hints, _NET_WM_CM_Sn); Qt has one
/// screen there.
bool hasCompositor() {
    constexpr std::string_view name = "_NET_WM_CM_S0";
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr) {
        return true;
    }
    xcb_connection_t* display = x11->connection();
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(display, xcb_intern_atom(display, 0, uint16_t(name.size()), name.data()), nullptr),
        &std::free);
    if (!atom) {
        return false;
    }
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
        xcb_get_selection_owner_reply(display, xcb_get_selection_owner(display, atom->atom), nullptr), &std::free);
    return owner && owner->owner != XCB_NONE;
}

} // namespace orv
