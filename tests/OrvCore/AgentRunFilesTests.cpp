#include "OrvCore/AgentRunFiles.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

AgentRunRecord record(int number) {
    AgentRunRecord run;
    run.id = QUuid::createUuid();
    run.projectID = u"/p/shop"_s;
    run.task = u"task %1"_s.arg(number);
    run.startedAt = QDateTime::fromMSecsSinceEpoch(1'700'000'000'123 + number * 1000, Qt::UTC);
    run.state = AgentRunState::succeeded;
    return run;
}

QStringList tasks(const AgentRunFiles& files) {
    QStringList found;
    for (const AgentRunFiles::Stored& run : files.read()) {
        found.append(run.record.task);
    }
    return found;
}

} // namespace

TEST(AgentRunFiles, GiveBackWhatWasWrittenAndNothingElse) {
    const test::TemporaryTree tree;
    const AgentRunFiles files(tree.path(u"agents"_s));
    EXPECT_TRUE(files.read().isEmpty());
    AgentRunRecord full = record(2);
    full.agent = AgentKind::codex;
    full.autonomy = AgentAutonomy::plan;
    full.linkedTaskID = QUuid::createUuid();
    full.parentID = QUuid::createUuid();
    full.endedAt = full.startedAt.addSecs(40);
    full.state = AgentRunState::failed;
    full.reason = u"Exited with code 1"_s;
    full.sessionID = u"S'1"_s;
    full.lastWords = u"Done\nall of it"_s;
    full.summary = u"naïve \u2014 \U0001F600"_s;
    full.costUSD = 0.1;
    full.tokens = AgentTokens{.input = 5'000'000'000, .output = 7};
    full.changes = AgentChanges{
        .files = {{.path = u"b\xdcff"_s, .originalPath = u"a"_s, .kind = AgentFileChangeKind::renamed, .added = 3}},
        .fileCount = 1200,
        .commits = {{.id = u"c0ffee"_s, .subject = u"x"_s}},
        .isShared = true,
        .note = u"n"_s};
    full.worktree = AgentWorktree{
        .repository = u"/r"_s, .folder = u"/w"_s, .branch = u"agent/x"_s, .base = u"b"_s, .copies = {u".env"_s}};
    ASSERT_TRUE(files.write(record(1)));
    ASSERT_TRUE(files.write(full));
    // A broken one, a copy under another name, and what is no run at all.
    QFile broken(files.runFolder(QUuid::createUuid()) + u"/run.json"_s);
    ASSERT_TRUE(QDir().mkpath(QFileInfo(broken).path()) && broken.open(QIODevice::WriteOnly));
    broken.write("{\"id\":");
    broken.close();
    const QString copy = files.runFolder(QUuid::createUuid());
    ASSERT_TRUE(QDir().mkpath(copy) && QFile::copy(files.runFolder(full.id) + u"/run.json"_s, copy + u"/run.json"_s));
    const auto stored = files.read();
    ASSERT_EQ(stored.size(), 2);
    EXPECT_EQ(stored[0].record, full);
    EXPECT_EQ(tasks(files), (QStringList{u"task 2"_s, u"task 1"_s}));
    EXPECT_TRUE(QFileInfo::exists(broken.fileName()));

    EXPECT_EQ(files.change(full.id, [](AgentRunRecord& run) { run.reason = u"other"_s; })->reason, u"other"_s);
    EXPECT_EQ(files.read()[0].record.reason, u"other"_s);
    const QUuid unknown = QUuid::createUuid();
    EXPECT_FALSE(files.change(unknown, [](AgentRunRecord&) {}));
    EXPECT_FALSE(QFileInfo::exists(files.runFolder(unknown)));
}

TEST(AgentRunFiles, TellWhoHoldsARunAndWhoWantsItToStop) {
    const test::TemporaryTree tree;
    const AgentRunFiles files(tree.path(u"agents"_s));
    const AgentRunRecord run = record(1);
    auto hold = files.hold(run.id);
    ASSERT_TRUE(hold);
    EXPECT_EQ(files.hold(run.id).error().kind, StoreError::Kind::locked);
    ASSERT_TRUE(files.write(run));
    const QByteArray before = test::readFile(files.marker());
    ASSERT_TRUE(files.askToStop(run.id));
    EXPECT_NE(test::readFile(files.marker()), before);
    EXPECT_EQ(files.read(), (QList<AgentRunFiles::Stored>{{run, true, true}}));
    hold->reset();
    EXPECT_FALSE(files.isHeld(run.id));
    EXPECT_FALSE(files.isHeld(QUuid::createUuid()));
}

TEST(AgentRunFiles, RemoveTheOldestBeyondTheLimits) {
    const test::TemporaryTree tree;
    const AgentRunFiles files(tree.path(u"agents"_s));
    QList<QUuid> ids;
    for (int number = 1; number <= 6; ++number) {
        AgentRunRecord run = record(number);
        if (number == 2) {
            run.worktree = AgentWorktree{};
        }
        ids.append(run.id);
        ASSERT_TRUE(files.write(run));
        QFile output(files.outputFile(run.id));
        ASSERT_TRUE(output.open(QIODevice::WriteOnly));
        output.write(QByteArray(100'000, 'x'));
    }
    const auto hold = files.hold(ids[0]);
    files.prune({.runs = 5});
    EXPECT_EQ(tasks(files), (QStringList{u"task 6"_s, u"task 5"_s, u"task 4"_s, u"task 2"_s, u"task 1"_s}));
    files.prune({.runs = 5, .bytes = 350'000});
    EXPECT_EQ(tasks(files), (QStringList{u"task 6"_s, u"task 2"_s, u"task 1"_s}));
}
