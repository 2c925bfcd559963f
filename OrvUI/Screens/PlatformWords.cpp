#include "PlatformWords.h"

#include <array>
#include <string_view>

namespace orv {

namespace {

using namespace std::string_view_literals;

constexpr std::array words{
    std::pair{"Keep Running in Menu Bar"sv, "Keep Running in Tray"},
    std::pair{
        "Quit and stop everything, or keep running from the menu bar."sv,
        "Quit and stop everything, or keep running from the tray."},
    std::pair{"⌃⌥⌘L"sv, "Ctrl+Alt+Super+L"},
    std::pair{"Window and menu bar"sv, "Window and tray"},
    std::pair{"Start with your Mac"sv, "Start at login"},
    std::pair{"Opens in the menu bar when you log in"sv, "Opens in the tray when you log in"},
    std::pair{
        "Another application holds ⌃⌥⌘L. The panel still opens from the menu bar."sv,
        "Another application holds Ctrl+Alt+Super+L. The panel still opens from the tray."},
    std::pair{
        "This keyboard has no key that types an L. The panel still opens from the menu bar."sv,
        "This keyboard has no key that types an L. The panel still opens from the tray."},
};

} // namespace

QString PlatformWords::translate(const char* context, const char* sourceText, const char* disambiguation, int n) const {
    Q_UNUSED(context)
    Q_UNUSED(disambiguation)
    Q_UNUSED(n)
    for (const auto& [source, ours] : words) {
        if (source == sourceText) {
            return QString::fromUtf8(ours);
        }
    }
    return {};
}

} // namespace orv
