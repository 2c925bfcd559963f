#include "WidgetPalette.h"

#include "OrvUI/Screens/Theme.h"

namespace orv {

QPalette WidgetPalette::ofTheme() {
    QPalette palette;
    const Theme& theme = *Theme::instance();
    for (const auto& [role, color] : {
             std::pair{QPalette::Window, theme.window()},
             {QPalette::Base, theme.surface()},
             {QPalette::AlternateBase, theme.window()},
             {QPalette::Button, theme.control()},
             {QPalette::WindowText, theme.text()},
             {QPalette::Text, theme.text()},
             {QPalette::ButtonText, theme.text()},
             {QPalette::PlaceholderText, theme.text3()},
             {QPalette::Highlight, theme.accent()},
             {QPalette::HighlightedText, theme.onAccent()},
         }) {
        palette.setColor(role, color);
    }
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, theme.disabled());
    }
    return palette;
}

} // namespace orv
