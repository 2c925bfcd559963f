#include "OrvCore/UniqueFd.h"
#include "OrvProcess/ListeningPorts.h"
#include "OrvProcess/PortWatch.h"
#include "OrvProcess/ProcessTable_p.h"
#include "tests/support/TestSupport.h"

#include <QSemaphore>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orv {

namespace {

/// A listening socket on a free port; the port goes into `port`.
UniqueFd listenOn(int family, int& port) {
    UniqueFd socket(::socket(family, SOCK_STREAM, 0));
    sockaddr_storage address{};
    address.ss_family = static_cast<sa_family_t>(family);
    socklen_t size = family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    if (::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), size) == 0 && ::listen(socket.get(), 1) == 0) {
        ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size);
        port = ntohs(reinterpret_cast<sockaddr_in*>(&address)->sin_port); // at one place in both families
    }
    return socket;
}

} // namespace

TEST(ListeningPorts, ReadsTheSystemsTables) {
    struct Row {
        const char* label;
        const char* stat;
        ProcessEntry expected;
    };
    const std::array rows{
        Row{"plain", "42 (node) S 7 40 40 0 -1", {42, 7, 40, 40}},
        Row{"a name with blanks and parentheses", "42 (a) R (b c) S 7 40 39 0", {42, 7, 40, 39}},
        Row{"with the time at which it started",
            "42 (node) S 7 40 39 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 11 0 987654321 12 13",
            {42, 7, 40, 39, true, 987654321}},
        Row{"ended, not waited for", "42 (node) Z 7 40 39 0", {42, 7, 40, 39, false}},
        Row{"a process that ended meanwhile", "", {}},
        Row{"cut short", "42 (node) S 7", {}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(processEntry(QByteArrayView(row.stat)), row.expected) << row.label;
    }

    const QByteArray table =
        "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
        "   0: 0100007F:1435 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 901 1 0 100 0\n"
        "   1: 0100007F:1436 0100007F:9C40 01 00000000:00000000 00:00000000 00000000     0        0 902 1 0 20 4\n"
        "   2: 0100007F:1437 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 0 1 0 100 0\n"
        "   3: 00000000000000000000000000000000:0BB8 00000000000000000000000000000000:0000 0A 00000000:00000000 "
        "00:00000000 00000000  1000        0 903 1 0";
    EXPECT_EQ(ListeningPorts::listeningSockets(table), (QHash<quint64, int>{{901, 5173}, {903, 3000}}));
}

TEST(ListeningPorts, SaysWhenAProcessCouldNotBeLookedInto) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const UniqueFd reading(pipe[0]);
    UniqueFd writing(pipe[1]);
    const pid_t other = ::fork();
    if (other == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::prctl(PR_SET_DUMPABLE, 0); // as one with privileges: only the superuser may look into it
        (void)!::write(pipe[1], "", 1);
        ::pause();
    }
    writing.reset();
    char ready = 0;
    ASSERT_EQ(::read(reading.get(), &ready, 1), 1);
    const pid_t ordinary = ::fork();
    if (ordinary == 0) {
        constexpr uid_t nobody = 65534;
        const bool changes = ::geteuid() == 0 && ::setuid(nobody) != 0;
        ::_exit(changes || listeningPorts(other) != SessionPorts{.ports = {}, .areAll = false} ? 1 : 0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(ordinary, &status, 0), ordinary);
    EXPECT_EQ(status, 0);
    ::kill(other, SIGKILL);
    EXPECT_EQ(::waitid(P_PID, static_cast<id_t>(other), nullptr, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(listeningPorts(other), SessionPorts{}) << "a process that has ended is no riddle";
    ::waitpid(other, nullptr, 0);
}

TEST(ListeningPorts, FindsWhatASessionAndItsDescendantsListenOn) {
    int ownPort = 0;
    const UniqueFd own = listenOn(AF_INET, ownPort);
    ASSERT_NE(ownPort, 0);
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const UniqueFd reading(pipe[0]);
    UniqueFd writing(pipe[1]);
    const pid_t leader = ::fork();
    if (leader == 0) {
        // A child holds copies of the descriptors of its parent: they must not count as the session's.
        ::close(own.get());
        ::setsid();
        int port = 0;
        const UniqueFd socket = listenOn(AF_INET, port);
        (void)!::write(pipe[1], &port, sizeof port);
        if (::fork() == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL); // nothing of this outlives the test
            ::setsid();                         // a server that makes itself a session of its own
            ::close(socket.get());
            const UniqueFd second = listenOn(AF_INET6, port);
            (void)!::write(pipe[1], &port, sizeof port);
            ::pause();
        }
        ::pause();
    }
    writing.reset();
    std::array<int, 2> ports{};
    for (int& port : ports) {
        ASSERT_EQ(::read(reading.get(), &port, sizeof port), static_cast<ssize_t>(sizeof port));
    }
    std::ranges::sort(ports);
    EXPECT_EQ(listeningPorts(leader), SessionPorts({ports.begin(), ports.end()}));
    EXPECT_TRUE(listeningPorts(::getpid()).ports.contains(ownPort));

    ::kill(leader, SIGKILL);
    ::waitpid(leader, nullptr, 0);
    EXPECT_EQ(listeningPorts(leader), SessionPorts{}) << "the session is gone";
}

TEST(PortWatch, RestsAndGoesOnWithNewOutput) {
    using namespace std::chrono_literals;
    struct Row {
        const char* label;
        PortWatch::Pace pace;
    };
    const std::array rows{
        Row{"no output for long",
            {.firstInterval = 1ms, .longestInterval = 2ms, .lastLookAfter = 2ms, .quietLimit = 20ms}},
        Row{"nowhere to be found for long",
            {.firstInterval = 1ms, .longestInterval = 2ms, .lastLookAfter = 2ms, .phaseLimit = 20ms}},
    };
    QThreadPool pool;
    for (const Row& row : rows) {
        PortWatch watch(::getpid(), &pool, row.pace);
        EXPECT_TRUE(watch.isActive()) << row.label;
        EXPECT_FALSE(watch.areAllKnown()) << row.label;
        watch.noteOutput();
        EXPECT_TRUE(test::waitFor([&] { return !watch.isActive(); })) << row.label;
        int port = 0;
        const UniqueFd socket = listenOn(AF_INET, port);
        EXPECT_TRUE(watch.areAllKnown() && !watch.ports().contains(port)) << row.label;
        watch.noteOutput();
        EXPECT_TRUE(test::waitFor([&] { return watch.ports().contains(port); })) << row.label;
        watch.noteRunning(port);
        EXPECT_TRUE(test::waitFor([&] { return !watch.isActive(); })) << row.label;
        watch.noteOutput();
        EXPECT_FALSE(watch.isActive()) << row.label << ": one that runs is not polled";
    }
    // A look that waits for its turn when its watch goes is not made, but it ends.
    QSemaphore turn;
    pool.setMaxThreadCount(1);
    pool.start([&] { turn.acquire(); });
    auto watch = std::make_unique<PortWatch>(::getpid(), &pool, PortWatch::Pace{});
    const QFuture<SessionPorts> late = watch->look();
    watch.reset();
    turn.release();
    ASSERT_TRUE(test::waitFor([&] { return late.isFinished(); }));
    EXPECT_EQ(late.result(), SessionPorts({}, false));
}

} // namespace orv
