#include "OrvUI/Screens/WindowState.h"

#include <QSettings>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Of an enumeration that ends with `last`; the default where the file holds anything else.
template <typename Enum>
Enum read(const QSettings& ini, const QString& key, Enum last, Enum byDefault) {
    bool isNumber = false;
    const int value = ini.value(key).toInt(&isNumber);
    return isNumber && value >= 0 && value <= static_cast<int>(last) ? static_cast<Enum>(value) : byDefault;
}

double readFontSize(const QSettings& ini) {
    const double size = ini.value(u"terminalFontSize"_s).toDouble();
    const bool isOne = size >= TerminalStyle::smallestSize && size <= TerminalStyle::largestSize;
    return isOne ? size : TerminalStyle::usualSize;
}

} // namespace

WindowState WindowState::load(const QString& file) {
    const WindowState defaults;
    const QSettings ini(file, QSettings::IniFormat);
    return {
        .geometry = ini.value(u"geometry"_s).toRect(),
        .isMaximized = ini.value(u"maximized"_s, defaults.isMaximized).toBool(),
        .isSidebarHidden = ini.value(u"sidebarHidden"_s, defaults.isSidebarHidden).toBool(),
        .isSystemDark = ini.value(u"systemDark"_s, defaults.isSystemDark).toBool(),
        .page =
            {read(ini, u"page"_s, AppPage::Kind::ai, defaults.page.kind), ini.value(u"pageID"_s).toString(),
             read(ini, u"section"_s, SettingsSection::projects, defaults.page.section)},
        .tab = read(ini, u"tab"_s, DetailTab::files, defaults.tab),
        .terminalFontSize = readFontSize(ini),
    };
}

void WindowState::save(const QString& file) const {
    QSettings ini(file, QSettings::IniFormat);
    ini.setValue(u"geometry"_s, geometry);
    ini.setValue(u"maximized"_s, isMaximized);
    ini.setValue(u"sidebarHidden"_s, isSidebarHidden);
    ini.setValue(u"systemDark"_s, isSystemDark);
    ini.setValue(u"page"_s, static_cast<int>(page.kind));
    ini.setValue(u"pageID"_s, page.id);
    ini.setValue(u"section"_s, static_cast<int>(page.section));
    ini.setValue(u"tab"_s, static_cast<int>(tab));
    ini.setValue(u"terminalFontSize"_s, terminalFontSize);
}

QRect WindowState::fitted(QRect geometry, const QList<QRect>& screens, QSize minimum) {
    QRect home;
    qsizetype most = -1;
    for (const QRect& screen : screens) {
        const QRect shown = screen.intersected(geometry);
        const qsizetype area = shown.isValid() ? qsizetype(shown.width()) * shown.height() : 0;
        if (area > most) {
            most = area;
            home = screen;
        }
    }
    if (home.isEmpty()) {
        return geometry;
    }
    const QSize size = geometry.size().boundedTo(home.size()).expandedTo(minimum);
    const int x = qBound(home.left(), geometry.x(), qMax(home.left(), home.right() + 1 - size.width()));
    const int y = qBound(home.top(), geometry.y(), qMax(home.top(), home.bottom() + 1 - size.height()));
    return {QPoint(x, y), size};
}

} // namespace orv
