#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>

namespace orv {

class ProcessReader;

/// Shares out among some readers what the main thread spends on output: a turn of `budget` in each `pace`, whatever the
/// number of those that flood. In a turn one reader after the other delivers, and the next turn begins with the reader
/// that this one did not come to. What the handlers of its signals take counts as well. Main thread.
class DeliveryTurns : public QObject {
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds pace{16};
    static constexpr std::chrono::microseconds budget{4000};

    explicit DeliveryTurns(QObject* parent = nullptr);

    /// The reader has something to deliver. One that has ended, whose output is bounded, need not wait for the pace.
    void request(ProcessReader* reader);

private:
    void turn();
    void plan();

    QList<QPointer<ProcessReader>> m_waiting;
    QElapsedTimer m_sinceTurn;
    QTimer m_timer{this};
};

} // namespace orv
