#include "OrvProcess/LineQueue.h"

#include "OrvProcess/OutputBytes.h"
#include "OrvProcess/PortParser.h"
#include "OrvProcess/TerminalLine.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orv {
namespace {

/// std::count adds every answer up in 64 bits, which costs a flood as much as the search for its port.
qsizetype countLines(QByteArrayView bytes) {
    using Vector [[gnu::vector_size(16)]] = unsigned char;
    constexpr qsizetype width = sizeof(Vector);
    constexpr qsizetype longestRun = 255; // what a lane of 8 bits can count
    qsizetype count = 0;
    qsizetype at = 0;
    while (bytes.size() - at >= width) {
        const qsizetype end = at + std::min(longestRun, (bytes.size() - at) / width) * width;
        Vector lanes{};
        for (; at < end; at += width) {
            Vector next;
            std::memcpy(&next, bytes.data() + at, sizeof next);
            lanes += static_cast<Vector>(next == '\n') & 1;
        }
        for (qsizetype lane = 0; lane < width; ++lane) {
            count += lanes[lane];
        }
    }
    return count + std::count(bytes.begin() + at, bytes.end(), '\n');
}

bool mayAnnounce(QByteArrayView line) {
    return PortParser::mayAnnounce(line, searchOutput(line));
}

} // namespace

void LineQueue::append(qsizetype size) {
    QByteArray memory = m_dropped.empty() ? QByteArray() : std::move(m_dropped.back().bytes);
    m_dropped.clear();
    push(m_assembler.append(size, std::move(memory)));
}

void LineQueue::finish() {
    push(m_assembler.finish());
}

void LineQueue::push(QByteArray lines) {
    if (lines.isEmpty()) {
        return;
    }
    Block block{.bytes = std::move(lines)};
    if (isPortWanted()) {
        const OutputBytes found = searchOutput(block.bytes);
        block.lines = found.lineFeeds;
        block.mayAnnounce = PortParser::mayAnnounce(block.bytes, found);
    } else {
        block.lines = countLines(block.bytes);
    }
    bool portWanted = false;
    {
        std::unique_lock lock(m_mutex);
        m_taken.wait(lock, [this] { return m_closed || m_blocks.empty() || m_bytes < m_limits.waitingBytes; });
        m_bytes += block.bytes.size();
        m_lines += block.lines;
        m_blocks.push_back(std::move(block));
        while (m_lines - m_blocks.front().lines >= m_limits.keptLines) {
            m_lines -= m_blocks.front().lines;
            m_bytes -= m_blocks.front().bytes.size();
            m_droppedLines += m_blocks.front().lines;
            m_dropped.push_back(std::move(m_blocks.front()));
            m_blocks.pop_front();
        }
        portWanted = m_portWanted;
    }
    if (portWanted) {
        std::for_each(m_dropped.cbegin(), m_dropped.cend(), [this](const Block& dropped) { lookForPort(dropped); });
    }
}

void LineQueue::lookForPort(const Block& block) {
    if (!block.mayAnnounce) {
        return;
    }
    const QByteArrayView unseen = QByteArrayView(block.bytes).sliced(block.taken);
    qsizetype end = unseen.size();
    while (end > 0) {
        const qsizetype begin = end > 1 ? unseen.lastIndexOf('\n', end - 2) + 1 : 0;
        const QByteArrayView line = unseen.sliced(begin, end - 1 - begin);
        end = begin;
        if (!mayAnnounce(line)) {
            continue;
        }
        if (const std::optional<int> port = PortParser::servicePort(TerminalLine::text(line))) {
            const std::scoped_lock lock(m_mutex);
            if (m_portWanted) {
                m_droppedPort = port;
                m_portWanted = false;
            }
            return;
        }
    }
}

LineQueue::Taken LineQueue::take(const Slice& slice) {
    const auto deadline = std::chrono::steady_clock::now() + slice.time;
    const bool portWanted = isPortWanted();
    Taken result;
    qsizetype bytes = 0;
    for (bool timeIsUp = false; !timeIsUp;) {
        Block block;
        {
            const std::scoped_lock lock(m_mutex);
            if (m_blocks.empty() || result.lines.size() >= slice.lines || bytes >= slice.bytes) {
                break;
            }
            block = std::move(m_blocks.front());
            m_blocks.pop_front();
            m_lines -= block.lines;
            m_bytes -= block.bytes.size();
        }
        qsizetype sinceLook = 0;
        const QByteArrayView view(block.bytes);
        const bool isSearched = portWanted && block.mayAnnounce;
        while (block.lines > 0 && result.lines.size() < slice.lines && bytes < slice.bytes && !timeIsUp) {
            const qsizetype end = view.indexOf('\n', block.taken);
            const QByteArrayView line = view.sliced(block.taken, end - block.taken);
            result.lines.append(TerminalLine::text(line, TerminalLine::Links::keep));
            if (isSearched && mayAnnounce(line)) {
                const std::optional<int> port = PortParser::servicePort(result.lines.constLast());
                result.port = port ? port : result.port;
            }
            block.taken = end + 1;
            --block.lines;
            bytes += line.size() + 1;
            sinceLook += line.size() + 64;
            if (sinceLook > 16 * 1024) {
                timeIsUp = std::chrono::steady_clock::now() >= deadline;
                sinceLook = 0;
            }
        }
        if (block.lines > 0) {
            const std::scoped_lock lock(m_mutex);
            m_lines += block.lines;
            m_bytes += block.bytes.size();
            m_blocks.push_front(std::move(block));
        }
    }
    const std::scoped_lock lock(m_mutex);
    result.port = m_droppedPort ? m_droppedPort : result.port;
    m_droppedPort.reset();
    result.dropped = std::exchange(m_droppedLines, 0);
    result.more = !m_blocks.empty();
    m_taken.notify_one();
    return result;
}

bool LineQueue::isPortWanted() {
    const std::scoped_lock lock(m_mutex);
    return m_portWanted;
}

void LineQueue::setPortWanted(bool wanted) {
    const std::scoped_lock lock(m_mutex);
    m_portWanted = wanted;
    if (!wanted) {
        m_droppedPort.reset();
    }
}

void LineQueue::close() {
    const std::scoped_lock lock(m_mutex);
    m_closed = true;
    m_taken.notify_all();
}

} // namespace orv
