#pragma once

#include "OrvTerminal/TerminalTabs.h"

#include <QDeadlineTimer>
#include <QHash>

#include <functional>

namespace orv {

class AppModel;

/// Tells the user what programs in terminals have to say (OSC 9, 99 and 777), unless he looks at the terminal. A
/// program that talks without end is heard once in a while. Lives on the main thread.
class TerminalNotices : public QObject {
    Q_OBJECT
public:
    static constexpr std::chrono::seconds pause{2}; ///< between two of one terminal
    static constexpr qsizetype titleLength = 120;
    static constexpr qsizetype bodyLength = 500;

    /// `appIsActive`: whether the user looks at the application; none: never.
    TerminalNotices(AppModel& model, TerminalTabs& terminals, std::function<bool()> appIsActive);

private:
    void follow();
    void take(const TerminalSession& session, const QString& title, const QString& body);

    AppModel& m_model;
    TerminalTabs& m_terminals;
    std::function<bool()> m_appIsActive;
    QHash<QUuid, QDeadlineTimer> m_pauses; ///< of the sessions that are followed
};

} // namespace orv
