#pragma once

#include "TermEngine/UniqueFd.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include <sys/ioctl.h>
#include <sys/types.h>

namespace term {

/// Releases the bytes that a sink was given when the last copy of it goes, on whichever thread.
using DeliveryToken = std::shared_ptr<void>;

/// Gets what the pipeline reads: calls of the gather thread, one at a time, in order.
class TerminalIOSink {
public:
    TerminalIOSink() = default;
    virtual ~TerminalIOSink() = default;
    TerminalIOSink(const TerminalIOSink&) = delete;
    TerminalIOSink& operator=(const TerminalIOSink&) = delete;

    /// The bytes may be used until `token` goes. Who keeps two of them gets no more, and in the end the child waits.
    virtual void received(std::span<const uint8_t> bytes, DeliveryToken token) = 0;
    /// After the last bytes. Not called when the pipeline was shut down.
    virtual void reachedEOF() = 0;
};

/// Reads from a pseudo-terminal on two threads of its own and writes to it: the reader waits for whatever happens, the
/// gatherer hands over what was read. What waits in between is bounded (1 MiB): when the sink is slow, nothing is read,
/// and the child waits in its write. Every function may be called on any thread.
class TerminalIOPipeline {
public:
    /// What the reader watches beside the terminal.
    struct Process {
        /// Ready when the child has ended. -1 where the system can't tell so: then `hasExited` is asked ever again.
        int exitDescriptor = -1;
        std::function<bool()> hasExited;
        /// The child has ended (called once, on the reader thread, as soon as it has, whatever waits to be delivered).
        std::function<void()> exited;
        /// Ends a child that outlives a shutdown by `graceMilliseconds`.
        std::function<void()> kill;
        int graceMilliseconds = 2000;
    };
    enum class SendResult : uint8_t {
        accepted,
        dropped, ///< a reply for which there is no room: the child asks, and does not read
        closed,
    };
    /// What the user or the host sends is always taken. Replies are as many as a child asks for, so that what waits of
    /// them is bounded.
    enum class SendOrigin : uint8_t { host, reply };
    static constexpr size_t maximumWaitingReplyBytes = 1024 * 1024;

    /// Owns `master` from now on and closes it when both threads have left. Without `process`, the end of the terminal
    /// is the end; with it, the end is when the child has ended and all it wrote was read. Throws std::system_error
    /// where there are no threads or descriptors, std::bad_alloc where there is no memory.
    TerminalIOPipeline(UniqueFd master, std::shared_ptr<TerminalIOSink> sink, Process process);
    TerminalIOPipeline(UniqueFd master, std::shared_ptr<TerminalIOSink> sink);
    /// Shuts down.
    ~TerminalIOPipeline();
    TerminalIOPipeline(const TerminalIOPipeline&) = delete;
    TerminalIOPipeline& operator=(const TerminalIOPipeline&) = delete;

    /// Nothing is delivered any more once this has returned, but for a call that goes on right now. The reader stays
    /// until the child has ended; nobody waits for it.
    void requestShutdown();

    /// Writes all of `bytes` in order, later where the child does not read yet; or nothing of them.
    SendResult send(std::span<const uint8_t> bytes, SendOrigin origin = SendOrigin::host);
    /// -1 when the terminal is closed.
    int setWinSize(const winsize& size);
    /// The process group in the foreground of the terminal; below 1 when there is none.
    [[nodiscard]] pid_t foregroundProcessGroup();
    /// -1 when it is closed. Another thread may close it at any time.
    [[nodiscard]] int masterDescriptor() const;

    struct Counters {
        uint64_t bytesRead = 0;
        uint64_t reads = 0;
        uint64_t deliveries = 0;
        uint64_t bytesWritten = 0;
        uint64_t sendsDropped = 0;
    };
    [[nodiscard]] Counters counters() const;

private:
    class Core;
    std::shared_ptr<Core> m_core;
};

} // namespace term
