#pragma once

#include "OrvProcess/DeliveryTurns.h"
#include "OrvProcess/LineQueue.h"
#include "OrvProcess/ProcessSpawner.h"

#include <QObject>

#include <atomic>
#include <thread>

namespace orv {

/// Follows one started command line to its end: a thread of its own reads, the main thread, on which the object lives,
/// gets the lines in slices, when it is the reader's turn.
///
/// The object may be deleted by whoever its signals reach.
class ProcessReader : public QObject, private ProcessSpawner::OutputSink {
    Q_OBJECT
public:
    /// `turns` is not needed any more once the reading has ended.
    ProcessReader(SpawnedProcess process, DeliveryTurns& turns, QObject* parent = nullptr);
    /// Ends the reading, and waits for the thread: the process should have been killed before.
    ~ProcessReader() override;

    /// Begins to read. On failure the process is killed and reaped.
    [[nodiscard]] std::expected<void, SpawnError> begin();
    [[nodiscard]] pid_t pid() const { return m_process.pid; }
    [[nodiscard]] bool hasEnded() const { return m_ended; }
    /// Emits what was read, for about as long as `time`; false when nothing of it is left.
    bool deliver(std::chrono::microseconds time);
    /// Ends the output with what was read so far.
    void abandon();
    /// To be called before the group is told to end: from then on the exit waits for its last process, so that none
    /// which has no output is taken for gone, and the group's id stays its own.
    void setStopping();
    /// Whether lines are still searched for a port, those that are never delivered among them; at first they are.
    void setPortWanted(bool wanted);

Q_SIGNALS:
    /// At least one line, or none but those that were dropped.
    void linesRead(const orv::LineQueue::Taken& taken);
    /// After the last line. The process is reaped, and the thread has ended.
    void exited(int code);

private:
    void run();
    [[nodiscard]] std::span<char> room(size_t size) override;
    void filled(size_t size) override;
    void requestTurn();

    SpawnedProcess m_process;
    DeliveryTurns& m_turns;
    UniqueFd m_abandonRead;
    UniqueFd m_abandonWrite;
    LineQueue m_queue;
    std::atomic<bool> m_announced = false; ///< a request for a turn is on its way
    std::atomic<bool> m_ended = false;
    std::atomic<bool> m_stopping = false;
    int m_exitCode = 0; ///< set before m_ended is
    std::thread m_thread;
};

} // namespace orv
