#pragma once

#include "OrvTerminal/View/TerminalStyle.h"
#include "OrvUI/ModelTypes.h"

#include <QRect>
#include <QString>

namespace orv {

/// How the main window stood when it was last closed: "window.ini" in the support folder.
struct WindowState {
    QRect geometry; ///< of the window when it is not maximised; empty at the first start
    bool isMaximized = false;
    bool isSidebarHidden = false;
    bool isSystemDark = true;
    AppPage page;
    DetailTab tab = DetailTab::overview; ///< of a project's page
    double terminalFontSize = TerminalStyle::usualSize;

    bool operator==(const WindowState&) const = default;
    [[nodiscard]] static WindowState load(const QString& file);
    void save(const QString& file) const;
    /// The geometry moved and cut so that it is reachable on one of the screens (the first is the preferred one).
    [[nodiscard]] static QRect fitted(QRect geometry, const QList<QRect>& screens, QSize minimum);
};

} // namespace orv
