#pragma once

#include "OrvCore/UniqueFd.h"

#include <QObject>

class QSocketNotifier;

namespace orv {

/// Hears SIGINT, SIGTERM and SIGHUP in the event loop for as long as it lives; one a process, main thread. A SIGHUP
/// that is ignored from the start (nohup) stays so.
class SignalWatcher : public QObject {
    Q_OBJECT
public:
    explicit SignalWatcher(QObject* parent = nullptr);
    ~SignalWatcher() override;

    /// Whether any of them came so far; any thread.
    [[nodiscard]] static bool wasAskedToStop();

Q_SIGNALS:
    void stopAsked();

private:
    UniqueFd m_readEnd;
    UniqueFd m_writeEnd;
};

} // namespace orv
