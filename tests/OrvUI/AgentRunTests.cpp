#include "OrvCore/ClaudeStreamParser.h"
#include "OrvUI/AgentPlan.h"
#include "OrvUI/AgentRun.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

QString shown(const AgentRun::Status& status) {
    constexpr std::array names{u"running", u"succeeded", u"stopped", u"failed"};
    return QString::fromUtf16(names[static_cast<size_t>(status.kind)]) +
           (status.reason.isEmpty() ? QString() : u": "_s + status.reason);
}

} // namespace

TEST(AgentRun, EndsAsTheAgentAndItsExitSay) {
    const QByteArray good = R"({"type":"result","subtype":"success","result":"Done","total_cost_usd":0.5})";
    const QByteArray bad = R"({"type":"result","subtype":"success","is_error":true,"result":"No credit"})";
    const QByteArray mute = R"({"type":"result","result":7})";
    const struct {
        const char* label;
        QList<QByteArray> lines;
        bool isStopped;
        int code;
        QString status;
        std::optional<QString> answer;
    } cases[] = {
        {"no report", {"text"}, false, 0, u"succeeded"_s, {}},
        {"no report and a code", {"text"}, false, 127, u"failed: Exited with code 127"_s, {}},
        {"success", {good}, false, 0, u"succeeded"_s, u"Done"_s},
        {"success and a code", {good}, false, 2, u"failed: Done"_s, u"Done"_s},
        {"reported failure", {bad}, false, 0, u"failed: No credit"_s, u"No credit"_s},
        {"a failure without words", {mute}, false, 0, u"failed: Exited with code 0"_s, {}},
        {"the last report counts", {bad, good}, false, 0, u"succeeded"_s, u"Done"_s},
        {"stopped", {good}, true, 0, u"stopped"_s, u"Done"_s},
        {"stopped by a signal", {}, true, 143, u"stopped"_s, {}},
    };
    const QDateTime now = QDateTime::fromSecsSinceEpoch(1'000'000);
    for (const auto& [label, lines, isStopped, code, status, answer] : cases) {
        AgentRun run(AgentRun::Facts{});
        for (const QByteArray& line : lines) {
            run.append({ClaudeStreamParser::parse(line)});
        }
        if (isStopped) {
            run.requestStop();
        }
        EXPECT_TRUE(run.isRunning()) << label;
        run.finish(code, now);
        run.requestStop();
        run.finish(9, now.addSecs(1));
        EXPECT_EQ(shown(run.status()), status) << label;
        EXPECT_EQ(run.answer(), answer) << label;
        EXPECT_EQ(run.endedAt(), now) << label;
    }
}

TEST(AgentRun, KeepsTheNewestEventsAndTellsOfTheRest) {
    AgentRun run(AgentRun::Facts{}, {.events = 3, .textLength = 10});
    QList<QString> model; // what a list that follows the signals would hold
    QObject::connect(&run, &AgentRun::eventsAppended, &run, [&](qsizetype added, qsizetype dropped) {
        model.resize(model.size() + added);
        model.remove(0, dropped);
        for (size_t index = 0; index < run.events().size(); ++index) {
            const auto* text = std::get_if<AgentText>(&run.events()[index]);
            model[static_cast<qsizetype>(index)] = text ? text->text : u"result"_s;
        }
    });
    const auto append = [&run](const QStringList& texts) {
        AgentLine line{.type = u"assistant"_s, .events = {}, .sessionID = u"S"_s};
        for (const QString& text : texts) {
            line.events.append(AgentText{text});
        }
        run.append({line});
        return run.droppedEvents();
    };
    EXPECT_EQ(append({u"a"_s, u"b"_s}), 0);
    EXPECT_EQ(append({u"c"_s, u"d"_s, u"e"_s, u"f"_s, u"g"_s}), 4);
    EXPECT_EQ(model, (QStringList{u"e"_s, u"f"_s, u"g"_s}));
    EXPECT_EQ(append({u"123456789"_s}), 6);
    EXPECT_EQ(model, (QStringList{u"g"_s, u"123456789"_s}));
    EXPECT_EQ(append({QString(1000, u'x')}), 8);
    EXPECT_EQ(model, QStringList{QString(10, u'x')});
    run.append({ClaudeStreamParser::parse(R"({"type":"result","subtype":"success","result":"Quite long an answer"})")});
    EXPECT_EQ(model, QStringList{u"result"_s});
    EXPECT_EQ(run.summary(), u"Quite long an answer"_s);
    EXPECT_EQ(run.sessionID(), u"S"_s);
}

TEST(AgentPlanner, PlansARunOrSaysWhyNot) {
    AppSettings settings;
    settings.agentAutonomy = AgentAutonomy::full;
    AgentRun::Facts facts;
    facts.task = u"Add it"_s;
    AgentRun parent(facts);
    const struct {
        const char* label;
        AgentKind kind;
        QString task;
        std::optional<AgentAutonomy> autonomy;
        const AgentRun* parent;
        QString expected; ///< a part of the command, or the reason
    } cases[] = {
        {"blank task", AgentKind::custom, u" \n "_s, {}, nullptr, u"Describe the task first."_s},
        {"no template",
         AgentKind::custom,
         u"x"_s,
         {},
         nullptr,
         u"Set the custom agent's command in Settings \u2192 AI first."_s},
        {"the settings' autonomy", AgentKind::gemini, u" x "_s, {}, nullptr, u"--yolo"_s},
        {"an autonomy of its own", AgentKind::gemini, u"x"_s, AgentAutonomy::edit, nullptr, u"auto_edit"_s},
        {"a parent without a session", AgentKind::claude, u"x"_s, {}, &parent, u"skip-permissions --"_s},
    };
    for (const auto& [label, kind, task, autonomy, replyingTo, expected] : cases) {
        const auto plan = AgentPlanner::plan(kind, task, autonomy, settings, replyingTo);
        EXPECT_TRUE((plan ? plan->command : plan.error()).contains(expected)) << label;
        EXPECT_EQ(plan ? plan->task : u"x"_s, u"x"_s) << label;
    }
    parent.append({AgentLine{.type = {}, .events = {}, .sessionID = u"S1"_s}});
    EXPECT_TRUE(
        AgentPlanner::plan(AgentKind::claude, u"x"_s, {}, settings, &parent)->command.contains(u"--resume 'S1'"_s));

    EXPECT_EQ(AgentPlanner::followUp(parent, u" Remove it\n"_s), u"Remove it"_s);
    facts.agent = AgentKind::codex;
    AgentRun codex(facts);
    EXPECT_TRUE(AgentPlanner::followUp(codex, u" "_s).isEmpty());
    EXPECT_EQ(
        AgentPlanner::followUp(codex, u"Remove it"_s),
        u"Earlier in this project you were asked:\n\nAdd it\n\nFollow-up:\n\nRemove it"_s);
    // An agent that reports nothing has answered what it printed, the end of it, also after a restart.
    QList<AgentEvent> printed{AgentText{QString(AgentRun::longestLastWords, u'x')}, AgentText{u"It was"_s}};
    codex.append({AgentLine{.type = {}, .events = printed, .sessionID = {}}});
    codex.append({AgentLine{.type = {}, .events = {AgentText{u"added."_s}}, .sessionID = {}}});
    codex.finish(3, QDateTime::currentDateTime());
    EXPECT_EQ(codex.answer(), std::nullopt);
    EXPECT_EQ(codex.status().reason, u"Exited with code 3"_s);
    const AgentRun stored(codex.record(), AgentRun::Owner::here, AgentRun::Limits{});
    EXPECT_EQ(
        AgentPlanner::followUp(stored, u"Remove it"_s),
        u"Earlier in this project you were asked:\n\nAdd it\n\nYou answered:\n\nIt was\nadded.\n\n"
        "Follow-up:\n\nRemove it"_s);
    EXPECT_EQ(AgentPlanner::couldNotStart(AgentKind::gemini, u"no"_s), u"Couldn't start Gemini CLI: no"_s);
}
