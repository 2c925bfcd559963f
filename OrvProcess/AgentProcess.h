#pragma once

#include "OrvProcess/AgentStream.h"
#include "OrvProcess/ProcessSpawner.h"

#include <QFile>
#include <QObject>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

namespace orv {

/// One agent at work: its output is read and parsed on a thread of its own and handed to the main thread, on which the
/// object lives, in slices. Nothing of it is lost: an agent that prints faster than that waits, so what stands between
/// the two threads is bounded.
///
/// The object may be deleted by whoever its signals reach.
class AgentProcess : public QObject, private ProcessSpawner::OutputSink {
    Q_OBJECT
public:
    struct Request {
        AgentKind kind = AgentKind::custom;
        QString command; ///< of AgentCommandBuilder
        QString directory;
        QString task;
        QString mark = {};  ///< of ChildRecords
        QString outputFile; ///< gets what the agent prints, as it is, as far as the disk takes it; empty: nowhere
        /// More is not written: a last line in its place says so.
        qsizetype outputFileLimitBytes = qsizetype{64} * 1024 * 1024;
    };

    [[nodiscard]] static std::expected<std::unique_ptr<AgentProcess>, SpawnError> start(const Request& request);
    /// Kills the group of an agent that has not ended, and waits for the thread.
    ~AgentProcess() override;

    [[nodiscard]] pid_t pid() const { return m_process.pid; } ///< also its group's id
    /// SIGTERM to the group, SIGKILL to what is left of it after `grace`. `exited` follows.
    void stop(std::chrono::milliseconds grace);
    /// SIGKILL to the group, at once. `exited` follows.
    void kill();

Q_SIGNALS:
    /// Without any line when what was printed has no end yet.
    void linesRead(const QList<orv::AgentLine>& lines);
    /// After the last line; the process is reaped. 128 + the signal when one ended it. A server that the agent has
    /// started in the background lives on.
    void exited(int code);

private:
    AgentProcess(SpawnedProcess process, const Request& request);

    void run();
    [[nodiscard]] std::span<char> room(size_t size) override;
    void filled(size_t size) override;
    void keep(QByteArrayView bytes);
    /// The last one comes with the exit code.
    void push(QList<AgentLine> lines, std::optional<int> exitCode = {});
    void deliver();

    SpawnedProcess m_process;
    UniqueFd m_abandonRead;
    UniqueFd m_abandonWrite;
    // The reader's alone.
    AgentStream m_stream;
    std::unique_ptr<QFile> m_file;
    const qsizetype m_fileLimitBytes;
    qsizetype m_fileBytes = 0;
    std::vector<char> m_room;

    std::mutex m_mutex;
    std::condition_variable m_taken;
    std::deque<AgentLine> m_lines;
    qsizetype m_waitingBytes = 0;
    bool m_closed = false;
    bool m_isReaped = false;  ///< its id may be another's by now
    bool m_announced = false; ///< a delivery is on its way
    std::optional<int> m_exitCode;

    std::atomic<bool> m_stopping = false;
    std::thread m_thread;
};

} // namespace orv
