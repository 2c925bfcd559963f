#include "../../OrvLauncher/SingleInstance.h"
#include "../../OrvLauncher/StartWish.h"
#include "../../OrvLauncher/SystemEvents.h"
#include "tests/support/TestSupport.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileOpenEvent>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;
using namespace std::chrono_literals;

namespace {

using Role = SingleInstance::Role;

class SingleInstanceTest : public ::testing::Test {
protected:
    TemporaryTree tree;
    const SingleInstance::Place place = SingleInstance::Place::in(tree.path(), u"/support"_s);

    /// Another start, which blocks its thread until it is known what it is.
    struct Start {
        explicit Start(const SingleInstance::Place& where, const QByteArray& message)
            : instance(where),
              thread([this, message] { role = int(instance.begin(message, 20s, [this] { ++waits; })); }) {}
        ~Start() { thread.join(); }
        SingleInstance instance;
        std::atomic<int> role = -1;
        std::atomic<int> waits = 0;
        std::thread thread;
    };
};

} // namespace

TEST_F(SingleInstanceTest, OneOfManyThatStartAtOnceIsFirst) {
    for (int round = 0; round < 10; ++round) {
        std::vector<std::unique_ptr<Start>> starts;
        QList<QByteArray> messages;
        for (int i = 0; i < 8; ++i) {
            starts.push_back(std::make_unique<Start>(place, "start " + QByteArray::number(i)));
        }
        SingleInstance* first = nullptr;
        const auto isFirst = [](const auto& start) { return start->role == int(Role::first); };
        ASSERT_TRUE(waitFor([&] { return std::ranges::any_of(starts, isFirst); }));
        first = &(*std::ranges::find_if(starts, isFirst))->instance;
        QObject::connect(first, &SingleInstance::called, [&](const QByteArray& message) { messages.append(message); });
        first->listen();
        EXPECT_TRUE(waitFor([&] { return messages.size() == 7; })) << messages.size();
        EXPECT_TRUE(
            waitFor([&] { return std::ranges::none_of(starts, [](const auto& start) { return start->role == -1; }); }));
        EXPECT_EQ(std::ranges::count_if(starts, isFirst), 1);
        EXPECT_TRUE(SingleInstance::isRunning(place));
        starts.clear();
        EXPECT_FALSE(SingleInstance::isRunning(place));
    }
}

TEST_F(SingleInstanceTest, NothingThatIsLeftBehindIsInTheWay) {
    // As after a kill: the files are there, and nobody holds them.
    {
        const UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, qPrintable(place.socket), sizeof address.sun_path);
        ASSERT_EQ(::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    tree.add(u"unused"_s);
    ASSERT_TRUE(QFile::rename(tree.path(u"unused"_s), place.lock));
    EXPECT_FALSE(SingleInstance::isRunning(place));
    SingleInstance first(place);
    ASSERT_EQ(first.begin("one", 0ms), Role::first);
    QList<QByteArray> messages;
    QObject::connect(&first, &SingleInstance::called, [&](const QByteArray& message) { messages.append(message); });
    first.listen();
    const Start second(place, "two");
    EXPECT_TRUE(waitFor([&] { return second.role == int(Role::handedOver); }));
    EXPECT_EQ(messages, (QList<QByteArray>{"two"}));
    // One that has still to stop what it started is not joined by another one.
    first.leave();
    {
        const Start next(place, "next");
        EXPECT_TRUE(waitFor([&] { return next.waits == 1; }));
        EXPECT_EQ(next.role, -1);
        first.end();
        EXPECT_TRUE(waitFor([&] { return next.role == int(Role::first); }));
        EXPECT_EQ(next.waits, 1);
    }
    EXPECT_EQ(messages.size(), 1);
    // Who ends makes room at once, for one that waits, too.
    SingleInstance other(SingleInstance::Place::in(tree.path(), u"/other"_s));
    EXPECT_EQ(other.begin({}, 0ms), Role::first) << "of another support folder";
    EXPECT_EQ(SingleInstance(SingleInstance::Place::in(tree.path(), u"/other"_s)).begin({}, 50ms), Role::unanswered)
        << "it does not listen";
    const Start waiting(SingleInstance::Place::in(tree.path(), u"/other"_s), "three");
    other.end();
    EXPECT_TRUE(waitFor([&] { return waiting.role == int(Role::first); }));
}

TEST_F(SingleInstanceTest, CallersThatSendNothingHoldNobodyUp) {
    SingleInstance first(place);
    ASSERT_EQ(first.begin({}, 0ms), Role::first);
    first.listen();
    int calls = 0;
    QObject::connect(&first, &SingleInstance::called, [&] { ++calls; });
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, qPrintable(place.socket), sizeof address.sun_path);
    std::vector<UniqueFd> silent;
    for (int i = 0; i < 4; ++i) {
        silent.emplace_back(::socket(AF_UNIX, SOCK_STREAM, 0));
        ASSERT_EQ(::connect(silent.back().get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    const std::string endless(100'000, 'x');
    std::thread flood([&] { (void)::send(silent[1].get(), endless.data(), endless.size(), MSG_NOSIGNAL); });
    silent[2].reset();
    const Start second(place, "here");
    EXPECT_TRUE(waitFor([&] { return second.role == int(Role::handedOver); }));
    EXPECT_EQ(calls, 1);
    flood.join();
}

TEST(StartWish, IsToldFromACommand) {
    const struct {
        QStringList words;
        std::optional<StartWish> wish;
    } cases[] = {
        {{}, StartWish{}},
        {{u"toggle"_s}, StartWish{.togglesPanel = true}},
        {{u"toggle"_s, u"--help"_s}, {}},
        {{u"orvlauncher://run?project=/p/a%20b"_s}, StartWish{.url = u"orvlauncher://run?project=/p/a%20b"_s}},
        {{u"-OrvStartPage"_s, u"project:my shop"_s}, StartWish{.page = u"project:my shop"_s}},
        {{u"-OrvInTray"_s}, StartWish{.staysInTray = true}},
        {{u"-OrvStartPage"_s}, {}},
        {{u"-OrvStartPage"_s, u"ai"_s, u"orvlauncher:x"_s}, StartWish{.url = u"orvlauncher:x"_s, .page = u"ai"_s}},
        {{u"-OrvExportIllustrations"_s, u"/tmp/x"_s}, StartWish{.illustrations = u"/tmp/x"_s}},
        {{u"scan"_s}, {}},
        {{u"--version"_s}, {}},
    };
    for (const auto& [words, wish] : cases) {
        EXPECT_EQ(StartWish::of(words), wish) << words.join(u' ').toStdString();
        if (wish && wish->illustrations.isEmpty()) {
            EXPECT_EQ(StartWish::ofMessage(wish->toMessage()), *wish);
            EXPECT_FALSE(wish->toMessage().contains('\n'));
        }
    }
    EXPECT_EQ(StartWish::ofMessage("no message \xff"), StartWish{});
    EXPECT_EQ(StartWish{.togglesPanel = true}.asFirst(), StartWish{}) << "the window is opened";
    EXPECT_EQ(StartWish{.staysInTray = true}.asFirst(), StartWish{.staysInTray = true});

    // The actions of the desktop entry are such words.
    const QString entry = QString::fromUtf8(readFile(sourcePath(u"packaging/linux/orvlauncher.desktop"_s)));
    int actions = 0;
    for (const QString& line : entry.split(u'\n')) {
        if (line.startsWith(u"Exec=orvlauncher "_s)) {
            const QStringList words = line.sliced(17).split(u' ');
            const auto wish = StartWish::of(words.first() == u"%u"_s ? QStringList{u"orvlauncher://run"_s} : words);
            EXPECT_TRUE(wish && *wish != StartWish{}) << line.toStdString();
            ++actions;
        }
    }
    EXPECT_EQ(actions, 6);
}

TEST(SystemEvents, AreAskedForInsteadOfDone) {
    SystemEvents events;
    QStringList asked;
    QObject::connect(&events, &SystemEvents::addressOpened, [&](const QUrl& url) { asked.append(url.toString()); });
    QObject::connect(&events, &SystemEvents::quitAsked, [&] { asked.append(u"quit"_s); });
    QFileOpenEvent open(QUrl(u"orvlauncher://run?project=shop"_s));
    QCoreApplication::sendEvent(QCoreApplication::instance(), &open);
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(QCoreApplication::instance(), &quit);
    EXPECT_FALSE(quit.isAccepted()) << "Qt would go on to quit";
    QObject other;
    QCoreApplication::sendEvent(&other, &quit);
    EXPECT_EQ(asked, (QStringList{u"orvlauncher://run?project=shop"_s, u"quit"_s}));
}
