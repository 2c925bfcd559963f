#pragma once

#include "OrvProcess/LineAssembler.h"

#include <QStringList>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace orv {

/// The lines between a reader thread, which gets them faster than they can be shown, and the main thread, which takes
/// them when it has the time.
///
/// Only the newest lines are of interest: what has `keptLines` newer ones behind it is dropped without a look but for
/// the port that it may announce, so a process that floods runs at its full speed. Where few lines take up much, the
/// reader waits instead: nothing of the newest `keptLines` is ever lost, and what waits here is bounded either way.
class LineQueue {
public:
    struct Limits {
        qsizetype keptLines = 5000;
        qsizetype waitingBytes = 8 * 1024 * 1024;
    };
    /// What one call of `take` may cost.
    struct Slice {
        qsizetype lines = 5000;
        qsizetype bytes = 1024 * 1024;
        std::chrono::microseconds time{4000};
    };
    struct Taken {
        QStringList lines;
        /// The announced port: of the first dropped line that has one, else of the newest of these. Absent while none
        /// is wanted.
        std::optional<int> port;
        qsizetype dropped = 0; ///< lines that came before these and are not delivered
        bool more = false;     ///< lines are left
    };

    explicit LineQueue(Limits limits) : m_limits(limits) {}

    // The reader's side.
    /// Where the next `size` bytes of output are to be put.
    [[nodiscard]] std::span<char> room(qsizetype size) { return m_assembler.room(size); }
    /// The first `size` bytes of the room are there. May wait for the taker.
    void append(qsizetype size);
    /// The end of the output: what stands behind the last line feed is a line too.
    void finish();

    // The taker's side.
    [[nodiscard]] Taken take(const Slice& slice);
    /// Whether lines are still searched for a port; at first they are.
    void setPortWanted(bool wanted);
    /// The reader waits no more.
    void close();

private:
    struct Block {
        QByteArray bytes; ///< whole lines, each ended by "\n"
        qsizetype lines = 0;
        bool mayAnnounce = true; ///< a port, as far as is known
        qsizetype taken = 0;     ///< bytes of it that `take` had
    };

    void push(QByteArray lines);
    void lookForPort(const Block& block);
    [[nodiscard]] bool isPortWanted();

    const Limits m_limits;
    // The reader's alone.
    LineAssembler m_assembler;
    std::vector<Block> m_dropped; ///< and their memory, to be used again

    std::mutex m_mutex;
    std::condition_variable m_taken;
    std::deque<Block> m_blocks;
    qsizetype m_lines = 0;
    qsizetype m_bytes = 0;
    std::optional<int> m_droppedPort;
    qsizetype m_droppedLines = 0;
    bool m_portWanted = true;
    bool m_closed = false;
};

} // namespace orv
