#include "OrvCore/AgentCommandBuilder.h"
#include "OrvCore/ClaudeStreamParser.h"
#include "OrvProcess/AgentProcess.h"
#include "tests/support/TestSupport.h"

#include <QDir>

#include <gtest/gtest.h>

#include <csignal>

using namespace orv;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using test::ScopedEnvironment;

namespace {

QByteArray stream(const QString& name) {
    return test::readFile(test::sourcePath(u"tests/agents/streams/"_s + name));
}

QList<AgentLine> read(AgentStream agent, QByteArrayView bytes, qsizetype step) {
    QList<AgentLine> lines;
    for (; !bytes.isEmpty(); bytes = bytes.sliced(std::min(step, bytes.size()))) {
        lines += agent.append(bytes.first(std::min(step, bytes.size())));
    }
    return lines + agent.finish();
}

/// "type:events" of each line, with a "$" where a session id came with it.
QString shown(const QList<AgentLine>& lines) {
    QStringList parts;
    for (const AgentLine& line : lines) {
        QStringList events;
        for (const AgentEvent& event : line.events) {
            const auto* text = std::get_if<AgentText>(&event);
            const auto* tool = std::get_if<AgentTool>(&event);
            events
                << (text   ? text->text
                    : tool ? tool->name + u' ' + tool->detail
                           : u"= "_s + std::get<AgentResult>(event).summary);
        }
        parts << line.type + (line.sessionID ? u"$:"_s : u":"_s) + events.join(u'+');
    }
    return parts.join(u" | "_s);
}

} // namespace

TEST(AgentStream, GivesTheSameLinesHoweverTheOutputIsSplit) {
    QByteArray output = stream(u"claude-edit.jsonl"_s);
    ASSERT_FALSE(output.isEmpty());
    const QString expected =
        u"system$: | assistant$:I'll look at the cart first \u2014 \u201cna\u00efve\u201d rounding is likely. | "
        "assistant$:Grep Math\\.round | user$: | stream_event$: | assistant$:Edit cart.ts | user$: | "
        "result$:= The total keeps its cents now."_s;
    for (const qsizetype cut : {qsizetype(0), qsizetype(1)}) { // with and without the last line feed
        const QByteArrayView whole = QByteArrayView(output).chopped(cut);
        for (const qsizetype step : {qsizetype(1), qsizetype(2), qsizetype(61), qsizetype(997), whole.size()}) {
            EXPECT_EQ(shown(read(AgentStream(AgentKind::claude), whole, step)), expected) << step;
        }
    }
    EXPECT_EQ(
        shown(read(AgentStream(AgentKind::claude), "\n \n\nplain\r\n{\"type\":\n", 3)), u":plain\r | :{\"type\":"_s);
}

TEST(AgentStream, ReadsLinesOfManyMegabytesAndCutsLongerOnes) {
    const QByteArray picture =
        R"({"type":"user","session_id":"S","message":{"content":[{"data":")" + QByteArray(6'000'000, 'A') + "\"}]}}";
    const QByteArray output = picture + "\n" + picture + "\n" + R"({"type":"result","subtype":"success"})";
    EXPECT_EQ(shown(read(AgentStream(AgentKind::claude), output, 32 * 1024)), u"user$: | user$: | result:= success"_s);
    for (const qsizetype step : {qsizetype(1000), output.size()}) {
        const auto lines = read(AgentStream(AgentKind::claude, 1'000'000), output, step);
        ASSERT_EQ(lines.size(), 3) << step;
        EXPECT_EQ(std::get<AgentText>(lines[0].events[0]).text, QString::fromUtf8(picture.first(4096)) + u'\u2026');
        EXPECT_EQ(lines[1], lines[0]);
        EXPECT_EQ(lines[2].type, u"result"_s);
    }
}

TEST(AgentStream, ShowsWhatOtherAgentsPrintAsText) {
    const QByteArray output = "\x1b[1mcodex\x1b[0m  \n\n    indented\r\n10%\r100%\n"
                              R"({"type":"result"})"
                              "\n\xff end";
    const QString expected = u":codex | :    indented | :100% | :{\"type\":\"result\"} | :\uFFFD end"_s;
    for (const qsizetype step : {qsizetype(1), output.size()}) {
        EXPECT_EQ(shown(read(AgentStream(AgentKind::codex), output, step)), expected) << step;
    }
}

namespace {

/// Runs `claude`, which is the program that plays recorded streams.
class AgentProcessTest : public ::testing::Test {
protected:
    AgentProcessTest() {
        tree.add(u"bin/"_s);
        EXPECT_TRUE(QFile::link(test::sourcePath(u"tests/agents/agent"_s), tree.path(u"bin/claude"_s)));
        for (const QString& profile : {u".zprofile"_s, u".profile"_s}) {
            tree.add(profile, "PATH=\"$HOME/bin:$PATH\"\n");
        }
    }

    void start(const QString& streamName, const QByteArray& then, const QString& task = u"task"_s) {
        const QByteArray file = stream(streamName).isEmpty()
                                    ? "/dev/null"
                                    : test::sourcePath(u"tests/agents/streams/"_s + streamName).toUtf8();
        const ScopedEnvironment environment[]{
            {"HOME", tree.path().toUtf8().constData()},
            {"ZDOTDIR", tree.path().toUtf8().constData()},
            {"REPLAY_STREAM", file.constData()},
            {"REPLAY_THEN", then.constData()},
            {"REPLAY_NOTE", tree.path(u"note"_s).toUtf8().constData()}};
        const auto command = AgentCommandBuilder::command(AgentKind::claude, AgentAutonomy::edit, {}, {});
        auto started = AgentProcess::start(
            {.kind = AgentKind::claude,
             .command = *command,
             .directory = tree.path(),
             .task = task,
             .outputFile = tree.path(u"output"_s),
             .outputFileLimitBytes = outputLimit});
        lines.clear();
        exitCode.reset();
        error = started ? QString() : started.error().text();
        if (!started) {
            return;
        }
        agent = *std::move(started);
        QObject::connect(agent.get(), &AgentProcess::linesRead, agent.get(), [this](const QList<AgentLine>& more) {
            lines += more;
        });
        QObject::connect(agent.get(), &AgentProcess::exited, agent.get(), [this](int code) { exitCode = code; });
    }
    [[nodiscard]] bool ends() {
        return test::waitFor([this] { return exitCode.has_value(); }, 60s);
    }

    test::TemporaryTree tree;
    std::unique_ptr<AgentProcess> agent;
    QList<AgentLine> lines;
    std::optional<int> exitCode;
    QString error;
    qsizetype outputLimit = 64 * 1024 * 1024;
};

} // namespace

TEST_F(AgentProcessTest, DeliversEveryLineBeforeTheExit) {
    const struct {
        QString stream;
        QByteArray then;
        qsizetype lines;
        int code;
    } cases[] = {
        {u"claude-edit.jsonl"_s, "cat", 8, 0},
        {u"claude-turns.jsonl"_s, "printf 'no end'; exit 1", 3, 1},
        {u""_s, "kill -KILL $$", 0, 137},
        // More than the main thread takes in a turn, and than may wait for it.
        {u""_s,
         "yes '{\"type\":\"assistant\",\"message\":{\"content\":[{\"type\":\"text\",\"text\":\"y\"}]}}' | head -n "
         "60000",
         60000, 0},
        {u""_s, "head -c 5000000 /dev/zero | tr '\\0' x", 1, 0},
    };
    const QString task = u"it's\n\"$HOME\" $(id) "_s + QString(100'000, u'x');
    for (const auto& [name, then, count, code] : cases) {
        start(name, then, task);
        ASSERT_TRUE(ends()) << then.toStdString();
        EXPECT_EQ(lines.size(), count) << then.toStdString();
        EXPECT_EQ(exitCode, code) << then.toStdString();
        EXPECT_TRUE(test::readFile(tree.path(u"output"_s)).startsWith(stream(name))) << then.toStdString();
        EXPECT_TRUE(test::readFile(tree.path(u"note"_s)).endsWith('\0' + task.toUtf8() + '\0')) << then.toStdString();
    }
    start({}, "yes & echo $!; exit 3");
    ASSERT_TRUE(ends());
    EXPECT_EQ(exitCode, 3);
    ProcessSpawner::signalGroup(agent->pid(), SIGKILL);
    const ScopedEnvironment inherited("NO_COLOR", "as inherited");
    start({}, "echo \"$NO_COLOR\"");
    ASSERT_TRUE(ends());
    EXPECT_EQ(shown(lines), u":as inherited"_s) << "the environment is the launcher's own";
    start({}, {}, QString(200'000, u'x'));
    EXPECT_EQ(error, u"Argument list too long"_s);
}

TEST_F(AgentProcessTest, SaysWhereItsFileEnds) {
    outputLimit = 20'000;
    start({}, "yes 'a line' | head -n 5000; echo last");
    ASSERT_TRUE(ends());
    EXPECT_EQ(shown(lines.last(1)), u":last"_s) << "who looks on gets everything";
    const QByteArray kept = test::readFile(tree.path(u"output"_s));
    EXPECT_GT(kept.size(), 10'000);
    EXPECT_LE(kept.size(), 20'200);
    AgentStream stream(AgentKind::claude);
    QList<AgentLine> read = stream.append(kept) + stream.finish();
    EXPECT_EQ(
        shown({read.takeLast()}),
        u":[OrvLauncher keeps the first 20 KiB of what an agent prints. What came after is not here.]"_s);
    for (const AgentLine& line : std::as_const(read)) {
        EXPECT_EQ(shown({line}), u":a line"_s);
    }
}

TEST_F(AgentProcessTest, EndsTheWholeGroupWhenItIsStoppedOrGoes) {
    const auto before = test::ProcessResources::now();
    const auto isUp = [this] { return !lines.isEmpty(); };
    for (const QByteArray& then :
         {QByteArray("trap 'exit 7' TERM; echo up; while :; do sleep 0.01; done"),
          QByteArray("trap '' TERM; (while :; do sleep 1; done) & echo up; while :; do sleep 1; done"),
          QByteArray("echo up; sleep 1000 >/dev/null 2>&1 & yes")}) {
        start({}, then);
        ASSERT_TRUE(test::waitFor(isUp));
        const pid_t group = agent->pid();
        agent->stop(200ms);
        agent->stop(200ms);
        ASSERT_TRUE(ends()) << then.toStdString();
        EXPECT_TRUE(test::waitFor([group] { return !ProcessSpawner::groupExists(group); })) << then.toStdString();
        start({}, then);
        ASSERT_TRUE(test::waitFor(isUp));
        const pid_t next = agent->pid();
        agent.reset();
        EXPECT_TRUE(test::waitFor([next] { return !ProcessSpawner::groupExists(next); })) << then.toStdString();
    }
    EXPECT_TRUE(test::waitFor([&] { return test::ProcessResources::now() == before; }));
}
