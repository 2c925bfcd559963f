#include "OrvProcess/ChildRecords.h"
#include "OrvProcess/ProcessSpawner.h"
#include "OrvProcess/ProcessTable_p.h"
#include "tests/OrvProcess/ServiceFixture.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <csignal>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orv {
namespace {

using namespace test;

/// Services that were started by a process which is gone.
class Orphans : public Services {
protected:
    /// One that runs the line, as it would be written down by a process of the number `owner`.
    ChildRecord leave(const QString& line, pid_t owner) {
        ChildRecord child{
            .projectID = u"project"_s,
            .directory = folder.path(),
            .kind = ServiceKind::app,
            .command = line,
            .mark = ChildRecords::newMark()};
        auto process = ProcessSpawner::spawn(line, folder.path(), ChildRecords::environment(child.mark));
        if (!process) {
            ADD_FAILURE() << process.error().text().toStdString();
            return child;
        }
        started.push_back(process->pid);
        outputs.push_back(std::move(process->output));
        child.leader = {process->pid, QString::number(processEntry(process->pid).startTime)};
        child.owner = {owner, u"1"_s};
        child.boot = QString::fromLatin1(bootIdentity());
        return child;
    }
    QString write(const ChildRecord& child, const QByteArray& content = {}) {
        return folder.add(
            u"running/%1-%2.json"_s.arg(child.leader.pid).arg(child.leader.startTime),
            content.isEmpty() ? QJsonDocument(child.toJson()).toJson() : content);
    }
    [[nodiscard]] static bool isRunning(pid_t group) {
        const QList<ProcessEntry> table = processTable();
        return std::ranges::any_of(
            table, [group](const ProcessEntry& entry) { return entry.group == group && entry.isAlive; });
    }
    void TearDown() override {
        for (const pid_t pid : started) {
            ProcessSpawner::discard(pid);
        }
    }

    std::vector<pid_t> started;
    std::vector<UniqueFd> outputs;
    ChildRecords records{folder.path(u"running"_s)};
};

} // namespace

TEST_F(Orphans, AreWhatSurelyStillIsTheSame) {
    struct Row {
        const char* label;
        std::function<void(ChildRecord&)> change;
        QByteArray content; ///< of the file in place of the record
        bool isFound;
        bool isFileKept;
        bool hasEnded = false;
    };
    const auto none = [](ChildRecord&) {};
    const QString startOfThis = QString::number(processEntry(::getpid()).startTime);
    const std::array rows{
        Row{"whose owner is gone", none, {}, true, true},
        Row{"whose owner lives", [&](ChildRecord& child) { child.owner = {::getpid(), startOfThis}; }, {}, false, true},
        Row{"whose owner's number is another's now",
            [](ChildRecord& child) { child.owner = {::getpid(), u"1"_s}; },
            {},
            true,
            true},
        Row{"whose number is another's now",
            [](ChildRecord& child) { child.leader.startTime += u'0'; },
            {},
            false,
            false},
        Row{"of another start of the system", [](ChildRecord& child) { child.boot += u'0'; }, {}, false, false},
        Row{"that has ended", [](ChildRecord& child) { ::kill(child.leader.pid, SIGKILL); }, {}, false, false, true},
        Row{"of no group",
            [](ChildRecord& child) { child.leader = {1, QString::number(processEntry(1).startTime)}; },
            {},
            false,
            false},
        Row{"in a damaged file", none, "{\"projectID\": \"pro", false, true},
    };
    for (const Row& row : rows) {
        ChildRecord child = leave(u"exec sleep 600"_s, 0x3fffffff);
        row.change(child);
        const QString file = write(child, row.content);
        EXPECT_TRUE(waitFor([&] { return records.orphans() == (row.isFound ? QList{child} : QList<ChildRecord>()); }))
            << row.label;
        EXPECT_TRUE(waitFor([&] { return QFile::exists(file) == row.isFileKept; })) << row.label;
        if (!row.isFound && row.isFileKept && !row.content.isEmpty()) {
            // It may be in the middle of being written; a minute later it is not.
            QFile old(file);
            ASSERT_TRUE(old.open(QIODevice::ReadWrite));
            old.setFileTime(QDateTime::currentDateTime().addSecs(-120), QFileDevice::FileModificationTime);
            old.close();
            EXPECT_EQ(records.orphans(), QList<ChildRecord>()) << row.label;
            EXPECT_FALSE(QFile::exists(file)) << row.label;
        }
        if (!row.isFileKept) {
            EXPECT_TRUE(manager->endOrphan(child).isFinished()) << row.label;
        }
        EXPECT_EQ(isRunning(started.back()), !row.hasEnded) << row.label << ": nothing of it is signalled";
        QFile::remove(file);
    }
}

TEST_F(Orphans, AreEndedAsAServiceIsStopped) {
    struct Row {
        const char* label;
        QString line;
        bool losesLeader;
        bool isMarked;
    };
    const std::array rows{
        Row{"ends when it is asked to", u"echo up; exec sleep 600"_s, false, true},
        Row{"ignores that", u"trap '' TERM; echo up; while :; do sleep 600; done"_s, false, true},
        Row{"without its leader", u"sleep 600 & echo up; wait"_s, true, true},
        Row{"without leader and mark", u"sleep 600 & echo up; wait"_s, true, false},
    };
    manager->setRecords(records);
    for (const Row& row : rows) {
        ChildRecord child = leave(row.line, 0x3fffffff);
        char first = 0;
        EXPECT_TRUE(waitFor([&] { return ::read(outputs.back().get(), &first, 1) == 1; })) << row.label;
        child.mark += row.isMarked ? u""_s : u"0"_s;
        if (row.losesLeader) {
            ::kill(child.leader.pid, SIGKILL);
            EXPECT_EQ(::waitpid(child.leader.pid, nullptr, 0), child.leader.pid);
            started.pop_back();
        }
        const QString file = write(child);
        QList<ChildRecord> children{child};
        EXPECT_EQ(records.orphans(), row.isMarked ? children : QList<ChildRecord>()) << row.label;
        const ExitWatch watch = ChildRecords::watch(children);
        EXPECT_EQ(children.isEmpty(), !row.isMarked) << row.label;
        pollfd exits{.fd = watch.descriptor(), .events = POLLIN, .revents = 0};
        EXPECT_EQ(::poll(&exits, 1, 0), 0) << row.label << ": nothing has ended yet";
        const QFuture<void> end = manager->endOrphan(child);
        EXPECT_TRUE(waitFor([&] { return end.isFinished(); })) << row.label;
        EXPECT_EQ(isRunning(child.leader.pid), !row.isMarked) << row.label;
        EXPECT_EQ(::poll(&exits, 1, 0), row.isMarked ? 1 : 0) << row.label;
        EXPECT_FALSE(QFile::exists(file)) << row.label;
        ProcessSpawner::signalGroup(child.leader.pid, SIGKILL);
    }
}

TEST_F(Orphans, AreWrittenDownAsLongAsTheyRunAndNotWhereThatFails) {
    const QDir files(records.orphans().isEmpty() ? folder.path(u"running"_s) : QString());
    manager->setRecords(records);
    const ServiceID id = start(u"echo up; exec sleep 600"_s);
    ASSERT_TRUE(waitForLine(id, u"up"_s));
    ASSERT_EQ(files.entryList(QDir::Files).size(), 1);
    EXPECT_EQ(records.orphans(), QList<ChildRecord>()) << "this process follows it";
    (void)manager->stop(id);
    EXPECT_TRUE(waitForEnd(id));
    EXPECT_EQ(files.entryList(QDir::Files), QStringList());

    manager->setRecords(ChildRecords(folder.add(u"a file"_s) + u"/running"_s));
    start(child + u" print 'ran\\n'"_s);
    EXPECT_TRUE(waitForEnd(id));
    EXPECT_EQ(log(id), QStringList{u"ran"_s});
}

} // namespace orv
