#pragma once

#include "OrvTerminal/TerminalTabs.h"
#include "OrvTerminal/View/TerminalStyle.h"
#include "OrvUI/ModelTypes.h"

#include <QHash>
#include <QRect>
#include <QSet>
#include <QString>
#include <QThreadPool>

#include <optional>

namespace orv {

/// How the main window stood when it was last closed, and what was open in it: "window.ini" in the support folder.
struct WindowState {
    QRect geometry; ///< of the window when it is not maximised; empty at the first start
    bool isMaximized = false;
    bool isSidebarHidden = false;
    bool isSystemDark = true;
    AppPage page;
    DetailTab tab = DetailTab::overview; ///< of a project's page
    double terminalFontSize = TerminalStyle::usualSize;
    QString agentPanelID;             ///< the project whose agent panel is open; empty: none
    QString logKey;                   ///< the service whose output was chosen last, as ServiceLogs has it
    QSet<QString> outline;            ///< the folders that are open in the sidebar
    QHash<QString, bool> homeFolders; ///< those that were opened or closed on the home page
    QList<TerminalPlace> terminals;

    bool operator==(const WindowState&) const = default;
    /// What a file says that nobody could have written is left out.
    [[nodiscard]] static WindowState load(const QString& file);
    /// A writer that is killed leaves the old file or the new one, whole. One writes at a time.
    void save(const QString& file) const;
    /// The geometry moved and cut so that it is reachable on one of the screens (the first is the preferred one).
    [[nodiscard]] static QRect fitted(QRect geometry, const QList<QRect>& screens, QSize minimum);
};

/// Writes the state while the window stands, by a thread of its own: a disk may take its time. Of several that wait
/// only the last is written, and before it dies. Lives on the main thread.
class WindowStateWriter {
public:
    explicit WindowStateWriter(QString file);

    [[nodiscard]] const QString& file() const { return m_file; }
    /// Does nothing with a state that is the same as the last.
    void write(const WindowState& state);
    /// Blocks until the last is on disk.
    void flush();

private:
    const QString m_file;
    std::optional<WindowState> m_last;
    QThreadPool m_pool; ///< last, so that what runs in it ends before what it uses goes
};

} // namespace orv
