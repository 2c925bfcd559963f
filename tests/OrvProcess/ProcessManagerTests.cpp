#include "OrvProcess/ProcessSpawner.h"
#include "OrvProcess/ProcessTable_p.h"
#include "tests/OrvProcess/ServiceFixture.h"

#include <QElapsedTimer>
#include <QProcessEnvironment>
#include <QTimer>

#include <algorithm>
#include <array>
#include <csignal>
#include <future>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>

namespace orv {
namespace {

using namespace test;
using namespace std::chrono_literals;

bool groupIsGone(qint64 group) {
    const QList<ProcessEntry> table = processTable();
    return std::ranges::none_of(
        table, [group](const ProcessEntry& entry) { return entry.group == group && entry.isAlive; });
}

} // namespace

TEST_F(Services, EndInTheStateThatTheirExitSays) {
    struct Row {
        const char* label;
        QString command;
        ServiceState expected;
        QStringList lines;
    };
    const auto failed = [](const char* message) { return ServiceState::failed(QString::fromUtf8(message)); };
    const std::array rows{
        Row{"exit code 0", child + u" print 'a\\nb\\n'"_s, ServiceState::stopped(), {u"a"_s, u"b"_s}},
        Row{"no output", u"true"_s, ServiceState::stopped(), {}},
        Row{"an error with its reason",
            child + u" print 'x\\nError: EADDRINUSE\\n\\n  \\n' exit 1"_s,
            failed("Exited with code 1: Error: EADDRINUSE"),
            {u"x"_s, u"Error: EADDRINUSE"_s, u""_s, u"  "_s}},
        Row{"a reason above where to read on",
            u"echo \"docker: 'compose' is not a docker command.\nSee 'docker --help'\"; exit 1"_s,
            failed("Exited with code 1: docker: 'compose' is not a docker command."),
            {u"docker: 'compose' is not a docker command."_s, u"See 'docker --help'"_s}},
        Row{"a reason above the end of a container",
            u"echo 'web-1  | boom\n\nweb-1 exited with code 2'; exit 2"_s,
            failed("Exited with code 2: web-1  | boom"),
            {u"web-1  | boom"_s, u""_s, u"web-1 exited with code 2"_s}},
        Row{"nothing but where to read on",
            u"echo \"Run 'tool help' first\"; exit 1"_s,
            failed("Exited with code 1: Run 'tool help' first"),
            {u"Run 'tool help' first"_s}},
        Row{"a reason in colour",
            child + u" print '\\e[31m  no port \\e[0m\\n\\e[0m\\n' exit 3"_s,
            failed("Exited with code 3: no port"),
            {u"\x1b[31m  no port \x1b[0m"_s, u"\x1b[0m"_s}},
        Row{"an error without a word", child + u" exit 7"_s, failed("Exited with code 7"), {}},
        Row{"a signal", u"exec "_s + child + u" abort 9"_s, failed("Exited with code 137"), {}},
        Row{"a command that is not there",
            u"cd . && exec /nowhere/tool"_s,
            failed("Exited with code 127: zsh:1: no such file or directory: /nowhere/tool"),
            {u"zsh:1: no such file or directory: /nowhere/tool"_s}},
        Row{"a last line without an end", child + u" print 'a\\nb'"_s, ServiceState::stopped(), {u"a"_s, u"b"_s}},
        Row{"both streams in the order of writing",
            u"echo a; echo b >&2; echo c"_s,
            ServiceState::stopped(),
            {u"a"_s, u"b"_s, u"c"_s}},
        Row{"output that was closed early",
            child + u" print 'a\\n' close exit 4"_s,
            failed("Exited with code 4: a"),
            {u"a"_s}},
        Row{"one who left the group holds the pipe",
            child + u" print 'a\\n' && "_s + child + u" daemonize await gone"_s,
            ServiceState::stopped(),
            {u"a"_s}},
        Row{"a background process goes on in the group",
            child + u" background await go print 'late\\n'; touch go"_s,
            ServiceState::stopped(),
            {u"late"_s}},
        Row{"standard input is empty", u"cat; echo done"_s, ServiceState::stopped(), {u"done"_s}},
        Row{"its own session", u"exec "_s + child + u" ids"_s, ServiceState::stopped(), {u"own"_s}},
    };
    for (const Row& row : rows) {
        const ServiceID id = start(row.command);
        EXPECT_EQ(manager->state(id), ServiceState::starting()) << row.label;
        EXPECT_TRUE(waitForEnd(id)) << row.label;
        EXPECT_EQ(manager->state(id), row.expected) << row.label;
        EXPECT_EQ(log(id), row.lines) << row.label;
        EXPECT_EQ(manager->processID(id), std::nullopt) << row.label;
    }
    folder.add(u"gone"_s); // lets go of the daemon
}

TEST_F(Services, GetNothingOfOursButTheEnvironment) {
    const ScopedEnvironment ours("ORV_OURS", "a b");
    const ScopedEnvironment colour("FORCE_COLOR", "3");
    const UniqueFd inheritable(::open("/dev/null", O_RDONLY));
    ::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    const ServiceID id = start(
        u"exec "_s + child +
        u" descriptors signals environment ORV_OURS environment FORCE_COLOR"
        " environment CLICOLOR_FORCE environment PYTHONUNBUFFERED"_s);
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    EXPECT_TRUE(waitForEnd(id));
    EXPECT_EQ(
        log(id), (QStringList{
                     u"/dev/null 1 2"_s, u"SigBlk:0"_s, u"SigIgn:0"_s, u"ORV_OURS=a b"_s, u"FORCE_COLOR=3"_s,
                     u"CLICOLOR_FORCE=1"_s, u"PYTHONUNBUFFERED=1"_s}));

    const ScopedEnvironment plain("NO_COLOR", "1");
    const ServiceID colourless = start(child + u" environment CLICOLOR_FORCE"_s);
    EXPECT_TRUE(waitForEnd(colourless));
    EXPECT_EQ(log(colourless), QStringList{u"CLICOLOR_FORCE"_s});
}

TEST_F(Services, FailWithoutAFolder) {
    const QString file = folder.add(u"file"_s);
    for (const QString& path : {folder.path(u"missing"_s), file}) {
        const ServiceTarget target{ServiceKind::app, path, {}, u"true"_s, {}};
        manager->start(target, u"p"_s);
        EXPECT_EQ(
            manager->state(ProcessManager::id(target, u"p"_s)), ServiceState::failed(u"Folder not found: "_s + path));
    }
    // A line longer than the system takes.
    const ServiceID id = start(u"true "_s + QString(4'000'000, u'x'));
    EXPECT_EQ(manager->state(id), ServiceState::failed(u"Could not start: Argument list too long"_s));
}

TEST_F(Services, FailWithoutAThread) {
    const ProcessResources before = ProcessResources::now();
    pthread_attr_t usual;
    ASSERT_EQ(::pthread_getattr_default_np(&usual), 0);
    pthread_attr_t impossible;
    ::pthread_attr_init(&impossible);
    ::pthread_attr_setstacksize(&impossible, size_t(120) << 40); // more than there are addresses
    ASSERT_EQ(::pthread_setattr_default_np(&impossible), 0);
    const ServiceID id = start(u"sleep 60"_s);
    EXPECT_EQ(::pthread_setattr_default_np(&usual), 0);
    EXPECT_EQ(manager->state(id), ServiceState::failed(u"Could not start: Resource temporarily unavailable"_s));
    EXPECT_EQ(ProcessResources::now(), before);
}

TEST_F(Services, KeepTheirLogWhereItIs) {
    const ServiceID id = start(child + u" print 'a\\n'"_s);
    EXPECT_TRUE(waitForEnd(id));
    const LogBuffer& log = manager->log(id);
    for (int i = 0; i < 100; ++i) {
        manager->start({ServiceKind::app, folder.path(u"missing"_s), {}, u"true"_s, {}}, QString::number(i));
    }
    ASSERT_EQ(&manager->log(id), &log);
    EXPECT_EQ(log.at(0), u"a"_s);
}

TEST(ProcessSpawner, LeavesColourToTheUser) {
    struct Row {
        const char* name;
        const char* value;
        QStringList added;
    };
    const QStringList none{u"PYTHONUNBUFFERED"_s};
    const QStringList all{u"CLICOLOR_FORCE"_s, u"FORCE_COLOR"_s, u"PYTHONUNBUFFERED"_s};
    const std::array rows{
        Row{"HOME", "/", all},
        Row{"NO_COLOR", "1", none},
        Row{"NO_COLOR", "", all},
        Row{"FORCE_COLOR", "0", none},
        Row{"FORCE_COLOR", "false", none},
        Row{"FORCE_COLOR", "2", {u"CLICOLOR_FORCE"_s, u"PYTHONUNBUFFERED"_s}},
        Row{"CLICOLOR", "0", none},
        Row{"CLICOLOR", "1", all},
        Row{"CLICOLOR_FORCE", "0", none},
        Row{"PYTHONUNBUFFERED", "", {u"CLICOLOR_FORCE"_s, u"FORCE_COLOR"_s}},
    };
    for (const Row& row : rows) {
        QProcessEnvironment user;
        user.insert(QString::fromLatin1(row.name), QString::fromLatin1(row.value));
        EXPECT_EQ(ProcessSpawner::pipeEnvironment(user).keys(), row.added) << row.name << '=' << row.value;
    }
}

TEST(ProcessSpawner, EndsAGroupThatIsNoService) {
    const TemporaryTree folder;
    for (const bool obeys : {true, false}) {
        const auto process = ProcessSpawner::spawn(
            u"exec "_s + child + (obeys ? u" touch ready hang"_s : u" ignore touch ready hang"_s), folder.path(), {});
        ASSERT_TRUE(process.has_value());
        struct Nowhere : ProcessSpawner::OutputSink {
            std::vector<char> memory;
            std::span<char> room(size_t size) override {
                memory.resize(size);
                return memory;
            }
            void filled(size_t /*size*/) override {}
        } nowhere;
        std::future<int> code =
            std::async(std::launch::async, [&] { return ProcessSpawner::pump(*process, {}, nowhere); });
        ASSERT_TRUE(waitFor([&] { return QFile::remove(folder.path(u"ready"_s)); }));
        const QFuture<void> ended = ProcessSpawner::terminateGroup(process->pid, obeys ? 20s : 50ms);
        EXPECT_TRUE(waitFor([&] { return ended.isFinished(); }));
        EXPECT_FALSE(ProcessSpawner::groupExists(process->pid));
        EXPECT_EQ(code.get(), 128 + (obeys ? SIGTERM : SIGKILL));
    }
}

TEST_F(Services, AreRunningOnceTheirPortIsKnown) {
    struct Row {
        const char* label;
        QString output;
        std::optional<int> fixedPort;
        ServiceState expected;
    };
    const std::array rows{
        Row{"nothing announced", u"ready\\n"_s, {}, ServiceState::starting()},
        Row{"an address", u"x\\nlocalhost:3000\\ny\\n"_s, {}, ServiceState::running(3000)},
        Row{"the newest line of one batch", u"port 3001\\nport 3002\\n"_s, {}, ServiceState::running(3002)},
        Row{"a rewritten line", u"...\\rlocalhost:\\e[1m3003\\e[0m/\\n"_s, {}, ServiceState::running(3003)},
        Row{"a known port, whatever the output says", u"localhost:3000\\n"_s, 4000, ServiceState::running(4000)},
        Row{"a known port, an empty line", u"\\n"_s, 4001, ServiceState::running(4001)},
        Row{"a port long past", u"localhost:3004\\n' lines 20000 20 print '\\n"_s, {}, ServiceState::running(3004)},
    };
    for (const Row& row : rows) {
        const ServiceID id =
            start(u"exec "_s + child + u" print '"_s + row.output + u"' print 'end\\n' hang"_s, row.fixedPort);
        EXPECT_TRUE(waitForLine(id, u"end"_s)) << row.label;
        EXPECT_EQ(manager->state(id), row.expected) << row.label;
        EXPECT_TRUE(waitFor([done = manager->stop(id)] { return done.isFinished(); })) << row.label;
        EXPECT_EQ(manager->state(id), ServiceState::stopped()) << row.label;
    }
    // Without what makes its output unbuffered on a pipe, it would say nothing.
    const ServiceID server = start(u"exec python3 -m http.server 0"_s);
    EXPECT_TRUE(waitFor([&] { return manager->state(server).port.has_value(); }));
}

TEST_F(Services, StopWithTheirWholeGroup) {
    struct Row {
        const char* label;
        QString command;
        std::chrono::milliseconds atLeast;
    };
    const std::array rows{
        Row{"one that obeys", u"exec "_s + child + u" print 'end\\n' hang"_s, 0ms},
        Row{"a shell with children", child + u" print 'end\\n' hang; true"_s, 0ms},
        Row{"one that ignores SIGTERM", u"exec "_s + child + u" ignore print 'end\\n' hang"_s, 300ms},
        Row{"a leader that obeys, a child that does not",
            child + u" ignore background print 'end\\n' hang; "_s + child + u" hang"_s, 300ms},
        Row{"one that floods", u"exec "_s + child + u" ignore print 'end\\n' flood 90"_s, 300ms},
        Row{"a child without output that does not obey",
            u"("_s + child + u" ignore touch ignoring hang >&- 2>&-) & until [ -e ignoring ]; do done; echo end; "_s +
                child + u" hang"_s,
            300ms},
        Row{"one who left the group holds the pipe",
            child + u" daemonize await gone; echo end; "_s + child + u" hang"_s, 0ms},
    };
    for (const Row& row : rows) {
        const ServiceID id = start(row.command);
        const qint64 group = manager->processID(id).value_or(0);
        EXPECT_TRUE(waitFor([&] { return manager->log(id).size() > 0; })) << row.label;
        EXPECT_FALSE(manager->wasUserStopped(id)) << row.label;
        QElapsedTimer time;
        time.start();
        const QFuture<void> first = manager->stop(id);
        const QFuture<void> joined = manager->stop(id);
        EXPECT_TRUE(waitFor([&] { return first.isFinished() && joined.isFinished(); })) << row.label;
        EXPECT_GE(std::chrono::milliseconds(time.elapsed()), row.atLeast) << row.label;
        EXPECT_TRUE(waitForEnd(id)) << row.label;
        EXPECT_LT(std::chrono::milliseconds(time.elapsed()), 10s) << row.label;
        EXPECT_EQ(manager->state(id), ServiceState::stopped()) << row.label;
        EXPECT_TRUE(manager->wasUserStopped(id)) << row.label;
        EXPECT_TRUE(groupIsGone(group)) << row.label;
    }
    folder.add(u"gone"_s);
}

TEST_F(Services, StopThoughNoDescriptorIsLeft) {
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
    rlimit few = usual;
    few.rlim_cur = 100;
    // The sanitizer too needs descriptors when it sees a class for the first time: one round has all of them.
    for (const bool isAnyLeft : {true, false}) {
        const ServiceID id = start(child + u" ignore background print 'end\\n' hang; "_s + child + u" hang"_s);
        const qint64 group = manager->processID(id).value_or(0);
        EXPECT_TRUE(waitForLine(id, u"end"_s));
        EXPECT_TRUE(waitFor([&] { return manager->areListeningPortsKnown(id); })) << "a new thread needs some as well";
        std::vector<UniqueFd> taken;
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, isAnyLeft ? &usual : &few), 0);
        do {
            taken.emplace_back(isAnyLeft ? -1 : ::open("/dev/null", O_RDONLY | O_CLOEXEC));
        } while (taken.back().isValid());
        // Nobody can tell whether the group lives: so it is killed, and in the end it is let go.
        const QFuture<void> stopped = manager->stop(id);
        EXPECT_TRUE(waitFor([&] { return stopped.isFinished(); }));
        EXPECT_TRUE(waitForEnd(id));
        taken.clear();
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
        EXPECT_EQ(manager->state(id), ServiceState::stopped());
        EXPECT_TRUE(waitFor([&] { return groupIsGone(group); }));
        EXPECT_EQ(ProcessResources::now().children, 0);
    }
}

TEST_F(Services, AreRestartedWithinAChange) {
    int starts = 1;
    ServiceID id;
    manager->setOnChange([&] {
        if (!manager->state(id).isActive() && starts < 3) {
            ++starts;
            start(child + u" print 'run %1\\n'"_s.arg(starts));
        }
    });
    id = ProcessManager::id({ServiceKind::app, folder.path(), {}, {}, {}}, u"project"_s);
    start(child + u" print 'run 1\\n'"_s);
    EXPECT_TRUE(waitForLine(id, u"run 3"_s));
    EXPECT_TRUE(waitForEnd(id));
    EXPECT_EQ(log(id), QStringList{u"run 3"_s}) << "a start begins a new log";

    const ServiceID twice = start(u"exec "_s + child + u" hang"_s);
    const auto pid = manager->processID(twice);
    start(u"exec "_s + child + u" hang"_s);
    EXPECT_EQ(manager->processID(twice), pid) << "a second start is ignored";
}

TEST_F(Services, AllowTheManagerToGoAtAnyChange) {
    struct Row {
        const char* label;
        QString command;
        std::function<void(ProcessManager&, const std::function<void()>&)> connect;
    };
    const auto onState = [](ServiceState::Phase phase) {
        return [phase](ProcessManager& services, const std::function<void()>& go) {
            services.setOnChange([&services, go, phase] {
                if (services.states().constBegin()->phase == phase) {
                    go();
                }
            });
        };
    };
    const std::array rows{
        Row{"starting", u"sleep 60"_s, onState(ServiceState::Phase::starting)},
        Row{"running", child + u" print 'port 3000\\n' hang"_s, onState(ServiceState::Phase::running)},
        Row{"stopped", u"true"_s, onState(ServiceState::Phase::stopped)},
        Row{"failed", u"false"_s, onState(ServiceState::Phase::failed)},
        Row{"a line", child + u" print 'a\\n' hang"_s,
            [](ProcessManager& services, const std::function<void()>& go) {
                QObject::connect(&services, &ProcessManager::logAppended, &services, go);
            }},
    };
    for (const Row& row : rows) {
        manager = std::make_unique<ProcessManager>(300ms);
        row.connect(*manager, [this] { manager.reset(); });
        start(row.command);
        EXPECT_TRUE(waitFor([this] { return manager == nullptr; })) << row.label;
    }
    EXPECT_EQ(ProcessResources::now().children, 0);
}

TEST_F(Services, OfDockerStopTheirStackToo) {
    struct Row {
        const char* label;
        QString stopCommand;
        std::chrono::milliseconds atLeast;
    };
    const std::array rows{
        Row{"a stack that stops", u"echo stopped > stopped"_s, 0ms},
        Row{"a stack that does not", child + u" touch stopped ignore hang"_s, 400ms},
    };
    for (const Row& row : rows) {
        manager->setDockerStopCommand([&](const QString&) { return row.stopCommand; }, 500ms);
        const ServiceID id = start(u"exec "_s + child + u" ignore hang"_s, {}, ServiceKind::docker);
        QElapsedTimer time;
        time.start();
        EXPECT_TRUE(waitFor([done = manager->stopAll()] { return done.isFinished(); })) << row.label;
        EXPECT_GE(std::chrono::milliseconds(time.elapsed()), row.atLeast) << row.label;
        EXPECT_TRUE(QFile::remove(folder.path(u"stopped"_s))) << row.label;
        EXPECT_TRUE(waitForEnd(id)) << row.label;
        EXPECT_EQ(ProcessResources::now().children, 0) << row.label;
    }
}

TEST_F(Services, OfDockerAllowTheManagerToGoWhileTheyStop) {
    manager->setDockerStopCommand([](const QString&) { return child + u" touch stopping ignore hang"_s; });
    manager->stop(start(u"exec "_s + child + u" ignore hang"_s, {}, ServiceKind::docker));
    EXPECT_TRUE(waitFor([&] { return QFile::exists(folder.path(u"stopping"_s)); }));
    manager.reset();
    EXPECT_EQ(ProcessResources::now().children, 0);
}

TEST_F(Services, ShowWhereTheyReallyListen) {
    // Announces a port that it does not get, as a dev server does whose port is taken.
    const ServiceID id =
        start(u"exec "_s + child + u" print 'localhost:3\\n' print 'port 65535 is in use\\n' await go listen 0 hang"_s);
    EXPECT_FALSE(manager->areListeningPortsKnown(id)) << "before the first look";
    EXPECT_TRUE(waitFor([&] { return manager->state(id) == ServiceState::running(65535); }));
    EXPECT_TRUE(waitFor([&] { return manager->areListeningPortsKnown(id); })) << "that nothing listens is known";
    EXPECT_EQ(manager->listeningPorts(id), QList<int>());
    folder.add(u"go"_s);
    EXPECT_TRUE(waitFor([&] { return manager->listeningPorts(id).size() == 1; }));
    const QString line = u"listening on http://localhost:%1/"_s.arg(manager->listeningPorts(id).value(0));
    EXPECT_TRUE(waitForLine(id, line));
    const QFuture<QList<int>> asked = manager->refreshListeningPorts(id);
    EXPECT_TRUE(waitFor([&] { return asked.isFinished(); }));
    EXPECT_EQ(asked.result(), manager->listeningPorts(id));
    EXPECT_TRUE(waitFor([done = manager->stop(id)] { return done.isFinished(); }));
    EXPECT_EQ(manager->listeningPorts(id), QList<int>());
    EXPECT_FALSE(manager->areListeningPortsKnown(id));

    const ServiceID silent = start(u"exec "_s + child + u" listen 0 hang >/dev/null"_s);
    EXPECT_TRUE(waitFor([&] { return manager->listeningPorts(silent).size() == 1; })) << "one that prints nothing";
    manager->noteUp(silent);
    EXPECT_EQ(manager->state(silent), ServiceState::running({}));
    EXPECT_TRUE(waitFor([done = manager->stop(silent)] { return done.isFinished(); }));
    manager->noteUp(silent);
    EXPECT_EQ(manager->state(silent), ServiceState::stopped());

    const ServiceID idle = start(u"exec "_s + child + u" listen 0 hang"_s);
    EXPECT_TRUE(waitFor([&] {
        const std::optional<int> port = manager->state(idle).port;
        return port && manager->listeningPorts(idle) == QList<int>{*port};
    }));
    EXPECT_TRUE(waitFor([&] { return std::ranges::none_of(manager->findChildren<QTimer*>(), &QTimer::isActive); }))
        << "a service that is up is not polled";
}

} // namespace orv
