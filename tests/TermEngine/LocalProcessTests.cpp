#include "TermEngine/LocalProcess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <new>
#include <numeric>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace {

/// So many more allocations of this thread succeed, then one fails. -1: none does.
thread_local int allocationsLeft = -1;

} // namespace

// Inlined, their parts would look mismatched to the compiler.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = allocationsLeft >= 0 && allocationsLeft-- == 0 ? nullptr : std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace term {
namespace {

using namespace std::chrono_literals;

/// Keeps what comes and lets a test wait for it.
class Host : public LocalProcessDelegate, public std::enable_shared_from_this<Host> {
public:
    winsize size{25, 80, 800, 500};
    std::function<void(std::span<const uint8_t>)> onData;
    std::function<void()> onFailure;

    std::shared_ptr<LocalProcess> prepare(LocalProcess::Configuration configuration = {}) {
        configuration.onLaunchFailure = [weak = weak_from_this()](const LocalProcessError& error) {
            // Whoever waits for the failure may be done with the host as soon as it is there.
            const std::shared_ptr<Host> host = weak.lock();
            if (!host) {
                return;
            }
            {
                const std::scoped_lock lock(host->m_mutex);
                host->m_failure = error;
            }
            if (host->onFailure) {
                host->onFailure();
            }
        };
        return LocalProcess::create(weak_from_this(), std::move(configuration));
    }
    std::shared_ptr<LocalProcess> start(LocalProcess::Program program, LocalProcess::Configuration configuration = {}) {
        auto process = prepare(std::move(configuration));
        process->startProcess(program);
        return process;
    }
    std::shared_ptr<LocalProcess> shell(const std::string& line, LocalProcess::Configuration configuration = {}) {
        return start({.executable = "/bin/sh", .args = {"-c", line}}, std::move(configuration));
    }

    void processTerminated(LocalProcess&, std::optional<int> exitCode) override {
        {
            const std::scoped_lock lock(m_mutex);
            ++m_ends;
            m_exitCode = exitCode;
        }
        m_changed.notify_all();
    }
    void dataReceived(std::span<const uint8_t> slice) override {
        if (onData) {
            onData(slice);
        }
        {
            const std::scoped_lock lock(m_mutex);
            m_text.append(slice.begin(), slice.end());
        }
        m_changed.notify_all();
    }
    winsize getWindowSize() override { return size; }

    /// The exit code; -1 when there was none, -2 when the child did not end.
    int waitForEnd(std::chrono::seconds limit = 30s) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, limit, [this] { return m_ends > 0; }) ? m_exitCode.value_or(-1) : -2;
    }
    bool waitForText(const std::string& text) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, 30s, [&] { return m_text.find(text) != std::string::npos; });
    }
    std::string text() {
        const std::scoped_lock lock(m_mutex);
        return m_text;
    }
    std::optional<LocalProcessError> failure() {
        const std::scoped_lock lock(m_mutex);
        return m_failure;
    }
    int ends() {
        const std::scoped_lock lock(m_mutex);
        return m_ends;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_text;
    std::optional<int> m_exitCode;
    std::optional<LocalProcessError> m_failure;
    int m_ends = 0;
};

size_t entries(const char* folder) {
    const std::filesystem::directory_iterator all(folder);
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}

bool eventually(const std::function<bool()>& condition, std::chrono::seconds limit = 30s) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

std::span<const uint8_t> bytes(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

/// What all threads but the caller's have used of the processor.
std::chrono::nanoseconds usedByOthers() {
    const auto used = [](clockid_t clock) {
        timespec time{};
        ::clock_gettime(clock, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    return used(CLOCK_PROCESS_CPUTIME_ID) - used(CLOCK_THREAD_CPUTIME_ID);
}

/// Waits until the other threads rest, which they never do when one of them spins.
bool comesToRest() {
    using Clock = std::chrono::steady_clock;
    std::chrono::nanoseconds used = usedByOthers();
    Clock::time_point since = Clock::now();
    return eventually([&] {
        if (const auto now = usedByOthers(); now - used > 1ms) {
            used = now;
            since = Clock::now();
        }
        return Clock::now() - since > 100ms;
    });
}

} // namespace

TEST(LocalProcess, ReportsHowAChildEndedAfterAllThatItWrote) {
    struct Row {
        const char* label;
        LocalProcess::Program program;
        int code;
        std::string text;
    };
    const std::vector<Row> rows{
        {"at once", {.executable = "/bin/true"}, 0, ""},
        {"a code", {.executable = "/bin/sh", .args = {"-c", "printf end; exit 7"}}, 7, "end"},
        {"a signal", {.executable = "/bin/sh", .args = {"-c", "kill -9 $$"}}, 128 + SIGKILL, ""},
        {"closed its terminal first",
         {.executable = "/bin/sh",
          .args = {"-c", "printf a; exec <&- >&- 2>&-; sleep 0.3; printf b >/dev/tty; exit 3"}},
         3,
         "ab"},
        {"leaves somebody behind who writes on",
         {.executable = "/bin/sh", .args = {"-c", "trap '' HUP; (while echo x; do :; done) & exit 5"}},
         5,
         "*"},
        {"exec name", {.executable = "/bin/sh", .args = {"-c", "printf %s $0"}, .execName = "-sh"}, 0, "-sh"},
        {"own environment",
         {.executable = "/bin/sh", .args = {"-c", "printf %s.%s $A $TERM"}, .environment = {{"A=1", "TERM=t"}}},
         0,
         "1.t"},
        {"default environment",
         {.executable = "/bin/sh", .args = {"-c", "printf $TERM$COLORTERM"}},
         0,
         "xterm-256colortruecolor"},
        {"a folder", {.executable = "/bin/pwd", .currentDirectory = "/usr"}, 0, "/usr\r\n"},
        {"a folder that is not there",
         {.executable = "/bin/pwd", .currentDirectory = "/nowhere"},
         0,
         std::filesystem::current_path().string() + "\r\n"},
        {"the size", {.executable = "/bin/stty", .args = {"size"}}, 0, "25 80\r\n"},
        {"a terminal that erases whole characters",
         {.executable = "/bin/sh", .args = {"-c", "stty -a | grep -o -e '-*iutf8'"}},
         0,
         "iutf8\r\n"},
        {"no descriptor of ours (the last one is the folder's), no signal blocked or ignored",
         {.executable = "/bin/sh",
          .args = {"-c", "ls /proc/self/fd | tr '\\n' ' '; grep -E 'Sig(Blk|Ign)' /proc/$$/status | tr -d '\\n\\t'"}},
         0,
         "0 1 2 3 SigBlk:0000000000000000SigIgn:0000000000000000"},
    };
    ::signal(SIGUSR1, SIG_IGN);
    ::open("/dev/null", O_RDONLY); // NOLINT: a descriptor that a child must not get
    for (const bool direct : {false, true}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.label);
            const auto host = std::make_shared<Host>();
            const auto process = host->start(row.program, {.directDelivery = direct});
            EXPECT_EQ(host->waitForEnd(), row.code);
            EXPECT_EQ(host->text(), row.text == "*" ? host->text() : row.text);
            EXPECT_EQ(process->phase(), LocalProcessPhase::exited);
            EXPECT_FALSE(host->failure());
            EXPECT_EQ(process->send(bytes("x")), TerminalIOPipeline::SendResult::closed);
        }
    }
}

TEST(LocalProcess, TellsAFailedLaunchFromAnExit) {
    const auto host = std::make_shared<Host>();
    const auto process = host->start({.executable = "/no/such/program"});
    EXPECT_FALSE(process->running());
    EXPECT_EQ(host->waitForEnd(), 127);
    EXPECT_EQ(host->failure(), (LocalProcessError{LocalProcessError::Reason::exec, ENOENT}));
    EXPECT_EQ(host->failure()->text(), "Could not run the program: No such file or directory");

    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const auto open = entries("/proc/self/fd");
    for (const size_t spare : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U}) {
        const auto starved = std::make_shared<Host>();
        const rlimit few{open - 1 + spare, before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
        const auto attempt = starved->start({.executable = "/bin/true"});
        ::setrlimit(RLIMIT_NOFILE, &before);
        EXPECT_TRUE(eventually([&] { return starved->failure() || starved->ends() > 0; })) << spare;
        const auto failure = starved->failure();
        EXPECT_FALSE(failure && failure->reason == LocalProcessError::Reason::thread)
            << spare << " " << failure->text();
    }
    EXPECT_TRUE(eventually([&] { return entries("/proc/self/fd") == open; }));

    const auto again = host->shell("exit 4");
    EXPECT_TRUE(eventually([&] { return host->ends() == 2; }));
    EXPECT_EQ(host->waitForEnd(), 4) << "a host starts another one after a failure";

    // Also at once, before the end of the first one is reported, which it still is.
    const auto retrying = std::make_shared<Host>();
    std::shared_ptr<LocalProcess> retried;
    std::mutex started;
    {
        const std::scoped_lock lock(started);
        retrying->onFailure = [&] {
            const std::scoped_lock wait(started);
            retried->startProcess({.executable = "/bin/sh", .args = {"-c", "exit 6"}});
        };
        retried = retrying->start({.executable = "/no/such/program"});
    }
    EXPECT_TRUE(eventually([&] { return retrying->ends() == 2; }, 10s));
    EXPECT_EQ(retrying->waitForEnd(), 6);
    EXPECT_EQ(retried->phase(), LocalProcessPhase::exited);
}

TEST(LocalProcess, TellsOfALaunchForWhichThereIsNoMemory) {
    static_cast<void>(SerialQueue::shared());
    const auto open = entries("/proc/self/fd");
    const auto threads = entries("/proc/self/task");
    int failures = 0;
    for (int allocation = 0;; ++allocation) {
        const auto host = std::make_shared<Host>();
        const auto process = host->prepare();
        const LocalProcess::Program program{.executable = "/bin/true"};
        allocationsLeft = allocation;
        process->startProcess(program);
        const bool hasFailed = std::exchange(allocationsLeft, -1) < 0;
        ASSERT_TRUE(eventually([&] { return host->failure() || host->ends() > 0; })) << allocation;
        EXPECT_EQ(host->failure().has_value(), hasFailed) << allocation;
        if (!hasFailed) {
            break;
        }
        EXPECT_EQ(host->failure()->reason, LocalProcessError::Reason::allocation) << allocation;
        ++failures;
    }
    EXPECT_GT(failures, 10);
    EXPECT_TRUE(eventually([=] { return entries("/proc/self/fd") <= open; }))
        << entries("/proc/self/fd") << " " << open;
    EXPECT_TRUE(eventually([=] { return entries("/proc/self/task") <= threads; }));
}

TEST(LocalProcess, HoldsTheChildBackWhileTheHostDoesNotTake) {
    for (const bool direct : {false, true}) {
        std::mutex gate;
        std::unique_lock closed(gate);
        const auto host = std::make_shared<Host>();
        host->onData = [&gate](auto) { const std::scoped_lock wait(gate); };
        const auto queue = std::make_shared<SerialQueue>();
        // 4 MB, of which each line says where it stands.
        const auto process = host->shell("seq -f '%018.0f' 1 200000", {.queue = queue, .directDelivery = direct});
        EXPECT_TRUE(eventually([&] { return process->counters().bytesRead > 0; }));
        EXPECT_TRUE(comesToRest()) << "nobody spins while the child waits";
        EXPECT_LE(process->counters().bytesRead, 1024U * 1024U);
        EXPECT_TRUE(process->running());
        closed.unlock();
        EXPECT_EQ(host->waitForEnd(), 0);
        std::string expected;
        char line[32];
        for (int number = 1; number <= 200'000; ++number) {
            expected.append(line, static_cast<size_t>(std::snprintf(line, sizeof line, "%018d\r\n", number)));
        }
        EXPECT_TRUE(host->text() == expected) << "each byte once, in order: " << host->text().size();
    }
}

TEST(LocalProcess, WritesAllInOrderAndBlocksNobody) {
    const auto host = std::make_shared<Host>();
    const auto process = host->shell("stty raw -echo; trap go=1 USR1; printf ready; until [ \"$go\" ]; do sleep 0.01; "
                                     "done; head -c 1600000 | cksum");
    ASSERT_TRUE(host->waitForText("ready"));
    std::vector<uint8_t> sent(1'600'000);
    std::iota(sent.begin(), sent.end(), uint8_t{0});
    const std::span<const uint8_t> all(sent);
    // A large paste, and keys behind it before the child reads.
    EXPECT_EQ(process->send(all.first(1'599'999)), TerminalIOPipeline::SendResult::accepted);
    EXPECT_EQ(process->send(all.last(1)), TerminalIOPipeline::SendResult::accepted);
    ::kill(process->shellPid(), SIGUSR1);
    EXPECT_EQ(host->waitForEnd(), 0);
    EXPECT_EQ(host->text(), "ready305455090 1600000\n");

    // A child that asks and reads nothing: the replies that wait are bounded, and taken whole or not at all.
    const auto deaf = std::make_shared<Host>();
    const auto sleeper = deaf->shell("stty raw -echo; printf ready; sleep 60");
    ASSERT_TRUE(deaf->waitForText("ready"));
    constexpr auto reply = TerminalIOPipeline::SendOrigin::reply;
    const size_t limit = TerminalIOPipeline::maximumWaitingReplyBytes;
    EXPECT_EQ(sleeper->send(all), TerminalIOPipeline::SendResult::accepted);
    EXPECT_EQ(sleeper->send(all.first(limit + 1), reply), TerminalIOPipeline::SendResult::dropped);
    EXPECT_EQ(sleeper->send(all.first(limit - 10), reply), TerminalIOPipeline::SendResult::accepted);
    EXPECT_EQ(sleeper->send(all.first(11), reply), TerminalIOPipeline::SendResult::dropped);
    EXPECT_EQ(sleeper->send(all.first(10), reply), TerminalIOPipeline::SendResult::accepted);
    EXPECT_EQ(sleeper->send(all.first(1)), TerminalIOPipeline::SendResult::accepted) << "the user's is always taken";
    EXPECT_EQ(sleeper->counters().sendsDropped, 2U);
    EXPECT_TRUE(comesToRest()) << "nobody spins while the child does not read";
    sleeper->terminate();
    EXPECT_EQ(deaf->waitForEnd(), 128 + SIGTERM);
}

TEST(LocalProcess, KeepsTheWindowSizeInStep) {
    const auto host = std::make_shared<Host>();
    host->size = {33, 77, 0, 0};
    const auto process = host->shell("trap 'stty size; exit' WINCH; stty size; while :; do sleep 0.05; done");
    ASSERT_TRUE(host->waitForText("33 77"));
    EXPECT_TRUE(eventually([&] { return process->foregroundProcessGroup() == process->shellPid(); }));
    process->updateWindowSize({10, 20, 0, 0});
    EXPECT_EQ(host->waitForEnd(), 0);
    EXPECT_TRUE(host->text().ends_with("10 20\r\n")) << host->text();
}

TEST(LocalProcess, TellsWhatTheLineDisciplineActsUpon) {
    const auto host = std::make_shared<Host>();
    const auto process = host->shell("stty intr '#' quit undef; printf ready; sleep 60");
    ASSERT_TRUE(host->waitForText("ready"));
    const std::string controls = PseudoTerminalHelpers::controlBytes(process->childfd());
    EXPECT_NE(controls.find('#'), std::string::npos);
    EXPECT_NE(controls.find('\x04'), std::string::npos);
    EXPECT_EQ(controls.find('\x1C'), std::string::npos);
    EXPECT_EQ(PseudoTerminalHelpers::controlBytes(-1), "");
    process->terminate();
    EXPECT_EQ(host->waitForEnd(), 128 + SIGTERM);
}

TEST(LocalProcess, EndsAChildThatNobodyOwnsAnyMore) {
    for (const char* line :
         {"printf ready; sleep 60", "trap '' TERM HUP; printf ready; while :; do sleep 0.1; done",
          "trap '' TERM HUP; printf ready; exec yes"}) {
        SCOPED_TRACE(line);
        const auto host = std::make_shared<Host>();
        auto process = host->shell(line);
        ASSERT_TRUE(host->waitForText("ready"));
        const pid_t pid = process->shellPid();
        process.reset();
        EXPECT_TRUE(eventually([pid] { return ::kill(pid, 0) != 0 && errno == ESRCH; }, 5s));
        EXPECT_EQ(host->ends(), 0);
    }
    // From inside its own call, which is then the last one.
    for (const bool direct : {false, true}) {
        const auto host = std::make_shared<Host>();
        std::shared_ptr<LocalProcess> process;
        std::mutex started;
        std::unique_lock lock(started);
        std::atomic<int> calls = 0;
        host->onData = [&](auto) {
            const std::scoped_lock wait(started);
            process.reset();
            ++calls;
        };
        process = host->shell("while echo; do :; done", {.directDelivery = direct});
        const pid_t pid = process->shellPid();
        lock.unlock();
        EXPECT_TRUE(eventually([pid] { return ::kill(pid, 0) != 0 && errno == ESRCH; }, 5s));
        EXPECT_EQ(calls, 1);
    }
}

TEST(LocalProcess, LeavesNothingBehind) {
    const auto once = [](int number) {
        const auto host = std::make_shared<Host>();
        auto process = host->shell(number % 2 == 0 ? "echo $$" : "printf ready; sleep 60");
        if (number % 4 == 3) {
            return host->waitForText("ready"); // and its owner goes
        }
        if (number % 2 == 1) {
            process->terminate();
        }
        return host->waitForEnd() >= 0 && host->ends() == 1;
    };
    EXPECT_TRUE(once(0));
    const auto descriptors = entries("/proc/self/fd");
    const auto threads = entries("/proc/self/task");
    // Several at once, as an application with many tabs would.
    std::atomic<int> failed = 0;
    {
        std::vector<std::jthread> starters;
        for (int starter = 0; starter < 5; ++starter) {
            starters.emplace_back([&once, &failed] {
                for (int number = 0; number < 100; ++number) {
                    failed += once(number) ? 0 : 1;
                }
            });
        }
    }
    EXPECT_EQ(failed, 0);
    EXPECT_TRUE(eventually([=] { return entries("/proc/self/fd") <= descriptors; })) << entries("/proc/self/fd");
    EXPECT_TRUE(eventually([=] { return entries("/proc/self/task") <= threads; })) << entries("/proc/self/task");
    // The threads of the first one may have been counted too, so that the last child is collected only now.
    EXPECT_TRUE(eventually([] {
        siginfo_t info{};
        return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == -1 && errno == ECHILD;
    })) << "a child is left";
}

} // namespace term
