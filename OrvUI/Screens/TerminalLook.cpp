#include "OrvUI/Screens/TerminalLook.h"

#include "OrvUI/Screens/Theme.h"

#include <QCoreApplication>
#include <QJSEngine>
#include <QPointer>

namespace orv {

TerminalLook::TerminalLook(QObject* parent) : TerminalStyle(parent) {
    Theme::loadFonts();
    connect(Theme::instance(), &Theme::colorsChanged, this, &TerminalLook::follow);
    connect(Theme::instance(), &Theme::reducedMotionChanged, this, &TerminalLook::follow);
    follow();
}

TerminalLook* TerminalLook::instance() {
    static QPointer<TerminalLook> look;
    if (look == nullptr) {
        look = new TerminalLook(QCoreApplication::instance());
    }
    return look;
}

TerminalLook* TerminalLook::create(QQmlEngine* engine, QJSEngine* scriptEngine) {
    Q_UNUSED(engine)
    Q_UNUSED(scriptEngine)
    QJSEngine::setObjectOwnership(instance(), QJSEngine::CppOwnership);
    return instance();
}

void TerminalLook::follow() {
    const Theme& theme = *Theme::instance();
    TerminalColors colors;
    for (int index = 0; index < 16; ++index) {
        colors.base.ansi[static_cast<size_t>(index)] = toTerm(theme.ansi(index));
    }
    colors.base.foreground = toTerm(theme.terminalForeground());
    colors.base.background = toTerm(theme.terminalBackground());
    colors.scheme = theme.isDark() ? term::ColorScheme::dark : term::ColorScheme::light;
    colors.cursor = theme.terminalCursor().rgb();
    colors.selection = theme.terminalSelection().rgb();
    colors.match = theme.searchHit().rgba();
    colors.currentMatch = theme.warning().rgb();
    colors.onCurrentMatch = theme.onStatus().rgb();
    colors.failure = theme.danger().rgb();
    colors.mark = theme.borderStrong().rgb();
    setColors(colors);
    setBlinksText(!theme.reducedMotion());
}

} // namespace orv
