#include "OrvProcess/DeliveryTurns.h"
#include "tests/OrvProcess/ServiceFixture.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QTimer>

#include <algorithm>
#include <array>

#include <unistd.h>

/// The address sanitizer holds back 256 MB of freed memory otherwise, which would hide what the tests look for.
extern "C" const char* __asan_default_options() { // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
    return "quarantine_size_mb=16";
}

namespace orv {
namespace {

using namespace test;

/// Bytes of this process in memory now; proc(5), statm.
qint64 residentBytes() {
    return readFile(u"/proc/self/statm"_s).split(' ').value(1).toLongLong() * ::sysconf(_SC_PAGESIZE);
}

} // namespace

TEST_F(Services, KeepTheNewestLinesOfAFlood) {
    struct Row {
        const char* label;
        int lines;
        int width;
    };
    for (const Row& row :
         {Row{"more than is kept", 6000, 20}, Row{"far more", 300'000, 1000}, Row{"long lines", 6000, 20'000}}) {
        // The port is known: the search for one takes most of the time where a sanitizer runs.
        const ServiceID id = start(u"exec "_s + child + u" lines %1 %2"_s.arg(row.lines).arg(row.width), 3000);
        qsizetype length = 0;
        qint64 most = 0;
        const qint64 before = residentBytes();
        QObject guard;
        QObject::connect(
            manager.get(), &ProcessManager::logAppended, &guard,
            [&](const ServiceID&, qsizetype added, qsizetype dropped) {
                EXPECT_LE(added, 5000);
                length += added - dropped;
                EXPECT_EQ(length, manager->log(id).size());
                most = std::max(most, residentBytes() - before);
            });
        ASSERT_TRUE(waitForEnd(id, std::chrono::minutes(2))) << row.label;
        EXPECT_EQ(manager->state(id), ServiceState::stopped()) << row.label;
        const LogBuffer& log = manager->log(id);
        ASSERT_EQ(log.size(), 5000) << row.label;
        for (qsizetype i = 0; i < log.size(); ++i) {
            const QString expected =
                (QString::number(row.lines - 5000 + 1 + i) + u' ').leftJustified(row.width - 1, u'x');
            ASSERT_EQ(log.at(i), expected) << row.label << ", line " << i;
        }
#ifndef __SANITIZE_THREAD__ // keeps a record several times as large of all memory
        // Two bytes a character in the log, and what a sanitizer takes: less than all that was printed.
        EXPECT_LT(most, 5000LL * row.width * 2 + 200'000'000) << row.label;
#endif
    }
}

TEST_F(Services, ShareTheMainThreadWhenManyFlood) {
    QTimer beat;
    int sinceBeat = 0;
    int most = 0;
    beat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&beat, &QTimer::timeout, &beat, [&] { sinceBeat = 0; });
    QHash<ServiceID, int> deliveries;
    QObject::connect(manager.get(), &ProcessManager::logAppended, &beat, [&](const ServiceID& id) {
        ++deliveries[id];
        most = std::max(most, ++sinceBeat);
        // As one whose handlers are slow: it has used up the turn.
        const QDeadlineTimer busy(DeliveryTurns::budget, Qt::PreciseTimer);
        while (!busy.hasExpired()) {
        }
    });
    constexpr int floods = 6;
    beat.start(std::chrono::milliseconds(1));
    for (int i = 0; i < floods; ++i) {
        manager->start(
            {ServiceKind::app, folder.path(), {}, u"exec "_s + child + u" flood 90"_s, {}}, QString::number(i));
    }
    EXPECT_TRUE(waitFor([&] {
        return deliveries.size() == floods && std::ranges::all_of(deliveries, [](int count) { return count >= 3; });
    }));
    EXPECT_EQ(most, 1) << "deliveries without a turn of the event loop";
    EXPECT_TRUE(waitFor([done = manager->stopAll()] { return done.isFinished(); }));
}

TEST_F(Services, LeaveNothingAfterAThousandStartsAndStops) {
    constexpr int rounds = 50;
    constexpr int atOnce = 20;
    const ProcessResources before = ProcessResources::now();
    for (int round = 0; round < rounds; ++round) {
        QList<ServiceID> ids;
        for (int i = 0; i < atOnce; ++i) {
            const ServiceTarget target{
                ServiceKind::app, folder.path(), {}, u"exec "_s + child + u" print 'on port 3000\\n' hang"_s, {}};
            manager->start(target, QString::number(i));
            ids.append(ProcessManager::id(target, QString::number(i)));
        }
        if (round % 2 == 0) {
            ASSERT_TRUE(waitFor([&] { return manager->runningCount() == atOnce; })) << round;
        }
        const QFuture<void> stopped = manager->stopAll();
        ASSERT_TRUE(waitFor([&] { return stopped.isFinished(); })) << round;
        for (const ServiceID& id : ids) {
            ASSERT_TRUE(waitForEnd(id)) << round;
        }
    }
    EXPECT_TRUE(waitFor([&] { return ProcessResources::now() == before; }))
        << ::testing::PrintToString(before) << " before, " << ::testing::PrintToString(ProcessResources::now());
}

} // namespace orv
