#include "TermEngine/TerminalIOPipeline.h"

#include "TermEngine/ChunkRing_p.h"
#include "TermEngine/Pty.h"
#include "TermEngine/WorkerThread_p.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>

namespace term {
namespace {

/// The slave side is open nowhere, yet the child lives and may open it again, of which nothing tells.
constexpr int hungUpRecheckMilliseconds = 250;
/// Where the system does not tell of a child's end.
constexpr int exitRecheckMilliseconds = 20;
/// What is still read of a terminal whose child has ended while others write on.
constexpr size_t lastBytesLimit = 8 * 1024 * 1024;
/// Two deliveries at once: one is worked on while the next one is ready.
constexpr size_t maximumDeliveries = 2;

Pipe makeWakePipe() {
    auto made = Pipe::make(Pipe::Mode::nonBlocking);
    if (!made) {
        throw std::system_error(made.error(), std::generic_category());
    }
    return std::move(*made);
}

void writeByte(const UniqueFd& fd) {
    // A full pipe wakes the reader as well.
    [[maybe_unused]] const ssize_t written = ::write(fd.get(), "", 1);
}

} // namespace

class TerminalIOPipeline::Core : public std::enable_shared_from_this<Core> {
public:
    Core(UniqueFd master, std::shared_ptr<TerminalIOSink> sink, std::optional<Process> process)
        : m_sink(std::move(sink)),
          m_process(std::move(process)),
          m_control(makeWakePipe()),
          m_idle(makeWakePipe()),
          m_master(std::move(master)) {
        ::fcntl(m_master.get(), F_SETFL, ::fcntl(m_master.get(), F_GETFL) | O_NONBLOCK);
    }

    void start();
    void requestShutdown();
    SendResult send(std::span<const uint8_t> bytes, SendOrigin origin);
    int setWinSize(const winsize& size);
    pid_t foregroundProcessGroup();
    int masterDescriptor() const;
    Counters counters() const;

private:
    enum class ReadResult : uint8_t { more, nothing, ended };

    void runReader();
    void readUntilEnd();
    void waitForChild();
    void waitForEvent(bool isHungUp);
    [[nodiscard]] bool checkExit(const pollfd& event);
    ReadResult read();
    void writeWaiting();

    void runGatherer();
    void release(size_t index);
    void closeDescriptorsIfNeeded();

    const std::shared_ptr<TerminalIOSink> m_sink;
    const std::optional<Process> m_process;
    Pipe m_control;           ///< asks the reader to shut down
    Pipe m_idle;              ///< wakes the reader: there is room again, or something to write
    bool m_hasExited = false; ///< the reader's own

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    ChunkRing m_ring;
    size_t m_deliveries = 0;
    bool m_isReaderWaiting = false; ///< for room
    bool m_isFinished = false;      ///< nothing comes into the ring any more
    bool m_isShutDown = false;
    int m_remainingThreads = 0;
    bool m_descriptorsClosed = false;
    Counters m_counters;

    /// Taken before m_mutex where both are.
    mutable std::mutex m_masterMutex;
    UniqueFd m_master;
    struct Message {
        std::vector<uint8_t> bytes;
        SendOrigin origin;
    };
    std::deque<Message> m_waiting;  ///< what the child has not read yet
    size_t m_waitingOffset = 0;     ///< bytes of the first of them that were written
    size_t m_waitingReplyBytes = 0; ///< of all replies that are not written to their end
};

void TerminalIOPipeline::Core::start() {
    const auto enter = [this](const char* name, void (Core::*body)()) {
        {
            const std::scoped_lock lock(m_mutex);
            ++m_remainingThreads;
        }
        try {
            startWorkerThread(name, [self = shared_from_this(), body] {
                (self.get()->*body)();
                self->closeDescriptorsIfNeeded();
            }).detach();
        } catch (...) { // no thread, or no memory for one
            requestShutdown();
            closeDescriptorsIfNeeded();
            throw;
        }
    };
    enter("term-io-gather", &Core::runGatherer);
    enter("term-io-reader", &Core::runReader);
}

void TerminalIOPipeline::Core::requestShutdown() {
    {
        const std::scoped_lock lock(m_mutex);
        m_isShutDown = true;
        if (!m_descriptorsClosed) {
            writeByte(m_control.writeEnd);
        }
    }
    m_changed.notify_all();
}

void TerminalIOPipeline::Core::closeDescriptorsIfNeeded() {
    const std::scoped_lock masterLock(m_masterMutex);
    const std::scoped_lock lock(m_mutex);
    if (--m_remainingThreads == 0 && !m_descriptorsClosed) {
        m_descriptorsClosed = true;
        m_master.reset();
        m_control = {};
        m_idle = {};
        m_waiting.clear();
    }
}

// The reader thread.

void TerminalIOPipeline::Core::runReader() {
    readUntilEnd();
    {
        const std::scoped_lock lock(m_mutex);
        m_isFinished = true;
    }
    m_changed.notify_all();
    if (m_process && !m_hasExited) {
        waitForChild();
    }
}

bool TerminalIOPipeline::Core::checkExit(const pollfd& event) {
    const bool mustAsk = m_process->exitDescriptor < 0;
    if (!m_hasExited && (event.revents != 0 || (mustAsk && m_process->hasExited()))) {
        m_hasExited = true;
        m_process->exited();
    }
    return m_hasExited;
}

void TerminalIOPipeline::Core::readUntilEnd() {
    bool isHungUp = false;
    size_t lastBytes = 0;
    for (;;) {
        bool hasRoom = false;
        {
            const std::scoped_lock lock(m_mutex);
            hasRoom = !m_ring.room().empty();
            m_isReaderWaiting = !hasRoom;
        }
        bool hasWaiting = false;
        {
            const std::scoped_lock lock(m_masterMutex);
            hasWaiting = !m_waiting.empty();
        }
        const bool watchesMaster = !isHungUp && !m_hasExited;
        const auto masterEvents = static_cast<short>((hasRoom ? POLLIN : 0) | (hasWaiting ? POLLOUT : 0));
        const int exitDescriptor = m_process && !m_hasExited ? m_process->exitDescriptor : -1;
        const bool mustAsk = m_process && !m_hasExited && exitDescriptor < 0;
        // Without room or something to write, a hang-up would be told of for ever.
        std::array<pollfd, 4> events{
            pollfd{m_control.readEnd.get(), POLLIN, 0}, pollfd{m_idle.readEnd.get(), POLLIN, 0},
            pollfd{watchesMaster && masterEvents != 0 ? m_master.get() : -1, masterEvents, 0},
            pollfd{exitDescriptor, POLLIN, 0}};
        const int limit = m_hasExited && hasRoom ? 0
                          : mustAsk              ? exitRecheckMilliseconds
                          : isHungUp             ? hungUpRecheckMilliseconds
                                                 : -1;
        const int count = ::poll(events.data(), events.size(), limit);
        if (count < 0) {
            continue; // EINTR: there is no other reason that goes away or not by itself
        }
        if (events[0].revents != 0) {
            return;
        }
        if (events[1].revents != 0) {
            std::array<char, 64> bytes{};
            while (::read(m_idle.readEnd.get(), bytes.data(), bytes.size()) > 0) {
            }
        }
        const bool hasExited = m_process && checkExit(events[3]);
        if ((events[2].revents & POLLOUT) != 0) {
            writeWaiting();
        }
        const bool isReadable = (events[2].revents & ~POLLOUT) != 0 || hasExited || (isHungUp && count == 0);
        if (!hasRoom || !isReadable) {
            continue;
        }
        const auto before = m_counters.bytesRead; // the reader's alone to write
        const ReadResult result = read();
        lastBytes += hasExited ? m_counters.bytesRead - before : 0;
        const bool isLast = hasExited || !m_process;
        if ((result == ReadResult::ended && isLast) || (result == ReadResult::nothing && hasExited) ||
            lastBytes > lastBytesLimit) {
            return;
        }
        isHungUp = result == ReadResult::ended;
    }
}

/// Reads while there is something to read and room for it. The gatherer is woken once all of it is there, or enough of
/// it: a pseudo-terminal gives 4 KiB at most at a time.
TerminalIOPipeline::Core::ReadResult TerminalIOPipeline::Core::read() {
    size_t unannounced = 0;
    const auto announce = [this, &unannounced] {
        if (std::exchange(unannounced, 0) > 0) {
            m_changed.notify_one();
        }
    };
    for (;;) {
        std::span<uint8_t> room;
        {
            const std::scoped_lock lock(m_mutex);
            room = m_ring.room();
            if (room.empty() || m_isShutDown) {
                announce();
                return ReadResult::more;
            }
        }
        const ssize_t size = ::read(m_master.get(), room.data(), room.size());
        if (size > 0) {
            unannounced += static_cast<size_t>(size);
            {
                const std::scoped_lock lock(m_mutex);
                m_ring.add(room.first(static_cast<size_t>(size)));
                m_counters.bytesRead += static_cast<uint64_t>(size);
                ++m_counters.reads;
            }
            if (unannounced >= ChunkRing::chunkBytes) {
                announce();
            }
        } else if (size == 0 || errno != EINTR) {
            const bool isOver = size == 0 || errno != EAGAIN; // EIO: the slave side is open nowhere
            announce();
            return isOver ? ReadResult::ended : ReadResult::nothing;
        }
    }
}

/// After a shutdown: what the child still writes is read and dropped, or it could not end.
void TerminalIOPipeline::Core::waitForChild() {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(m_process->graceMilliseconds);
    bool isKilled = false;
    bool isHungUp = false;
    std::vector<uint8_t> dropped(ChunkRing::chunkBytes);
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (!isKilled && left <= 0) {
            isKilled = true;
            m_process->kill();
        }
        std::array<pollfd, 2> events{
            pollfd{isHungUp ? -1 : m_master.get(), POLLIN, 0}, pollfd{m_process->exitDescriptor, POLLIN, 0}};
        const int limit = isKilled ? -1 : static_cast<int>(left);
        const bool mustAsk = m_process->exitDescriptor < 0;
        ::poll(events.data(), events.size(), mustAsk ? exitRecheckMilliseconds : limit);
        if (checkExit(events[1])) {
            return;
        }
        if (events[0].revents != 0) {
            const ssize_t size = ::read(m_master.get(), dropped.data(), dropped.size());
            isHungUp = size == 0 || (size < 0 && errno != EINTR && errno != EAGAIN);
        }
    }
}

// The gather thread.

void TerminalIOPipeline::Core::runGatherer() {
    for (;;) {
        std::optional<ChunkRing::Slice> slice;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [this, &slice] {
                if (m_isShutDown) {
                    return true;
                }
                if (m_deliveries < maximumDeliveries) {
                    slice = m_ring.take();
                }
                return slice || (m_isFinished && m_deliveries == 0);
            });
            if (m_isShutDown) {
                return;
            }
            if (slice) {
                ++m_deliveries;
                ++m_counters.deliveries;
            }
        }
        if (!slice) {
            m_sink->reachedEOF();
            return;
        }
        m_sink->received(slice->bytes, DeliveryToken(nullptr, [self = shared_from_this(), index = slice->index](void*) {
                             self->release(index);
                         }));
    }
}

void TerminalIOPipeline::Core::release(size_t index) {
    {
        const std::scoped_lock lock(m_mutex);
        m_ring.release(index);
        --m_deliveries;
        if (std::exchange(m_isReaderWaiting, false) && !m_descriptorsClosed) {
            writeByte(m_idle.writeEnd);
        }
    }
    m_changed.notify_all();
}

// Writing.

TerminalIOPipeline::SendResult TerminalIOPipeline::Core::send(std::span<const uint8_t> bytes, SendOrigin origin) {
    bool isTooMuch = false;
    {
        const std::scoped_lock lock(m_masterMutex);
        if (!m_master.isValid()) {
            return SendResult::closed;
        }
        const bool isReply = origin == SendOrigin::reply;
        isTooMuch = isReply && bytes.size() > maximumWaitingReplyBytes - m_waitingReplyBytes;
        if (!isTooMuch && !bytes.empty()) {
            m_waiting.push_back({{bytes.begin(), bytes.end()}, origin});
            m_waitingReplyBytes += isReply ? bytes.size() : 0;
        }
    }
    if (isTooMuch) {
        const std::scoped_lock lock(m_mutex);
        ++m_counters.sendsDropped;
        return SendResult::dropped;
    }
    writeWaiting();
    return SendResult::accepted;
}

void TerminalIOPipeline::Core::writeWaiting() {
    size_t written = 0;
    {
        const std::scoped_lock lock(m_masterMutex);
        while (!m_waiting.empty() && m_master.isValid()) {
            const std::span<const uint8_t> rest = std::span(m_waiting.front().bytes).subspan(m_waitingOffset);
            const ssize_t size = ::write(m_master.get(), rest.data(), rest.size());
            if (size < 0 && errno == EINTR) {
                continue;
            }
            if (size < 0 && errno == EAGAIN) {
                writeByte(m_idle.writeEnd); // the reader waits for when it can be written
                break;
            }
            const size_t step = size < 0 ? rest.size() : static_cast<size_t>(size); // nobody will ever read it
            written += size < 0 ? 0 : step;
            m_waitingOffset += step;
            if (const Message& first = m_waiting.front(); m_waitingOffset == first.bytes.size()) {
                m_waitingReplyBytes -= first.origin == SendOrigin::reply ? first.bytes.size() : 0;
                m_waiting.pop_front();
                m_waitingOffset = 0;
            }
        }
    }
    const std::scoped_lock lock(m_mutex);
    m_counters.bytesWritten += written;
}

// What else is asked of the terminal.

int TerminalIOPipeline::Core::setWinSize(const winsize& size) {
    const std::scoped_lock lock(m_masterMutex);
    return m_master.isValid() ? PseudoTerminalHelpers::setWinSize(m_master.get(), size) : -1;
}

pid_t TerminalIOPipeline::Core::foregroundProcessGroup() {
    const std::scoped_lock lock(m_masterMutex);
    return m_master.isValid() ? ::tcgetpgrp(m_master.get()) : -1;
}

int TerminalIOPipeline::Core::masterDescriptor() const {
    const std::scoped_lock lock(m_masterMutex);
    return m_master.get();
}

TerminalIOPipeline::Counters TerminalIOPipeline::Core::counters() const {
    const std::scoped_lock lock(m_mutex);
    return m_counters;
}

TerminalIOPipeline::TerminalIOPipeline(UniqueFd master, std::shared_ptr<TerminalIOSink> sink, Process process)
    : m_core(std::make_shared<Core>(std::move(master), std::move(sink), std::move(process))) {
    m_core->start();
}

TerminalIOPipeline::TerminalIOPipeline(UniqueFd master, std::shared_ptr<TerminalIOSink> sink)
    : m_core(std::make_shared<Core>(std::move(master), std::move(sink), std::nullopt)) {
    m_core->start();
}

TerminalIOPipeline::~TerminalIOPipeline() {
    requestShutdown();
}

void TerminalIOPipeline::requestShutdown() {
    m_core->requestShutdown();
}
TerminalIOPipeline::SendResult TerminalIOPipeline::send(std::span<const uint8_t> bytes, SendOrigin origin) {
    return m_core->send(bytes, origin);
}
int TerminalIOPipeline::setWinSize(const winsize& size) {
    return m_core->setWinSize(size);
}
pid_t TerminalIOPipeline::foregroundProcessGroup() {
    return m_core->foregroundProcessGroup();
}
int TerminalIOPipeline::masterDescriptor() const {
    return m_core->masterDescriptor();
}
TerminalIOPipeline::Counters TerminalIOPipeline::counters() const {
    return m_core->counters();
}

} // namespace term
