#include "OrvCore/ClaudeStreamParser.h"
#include "OrvCore/JsonSkim.h"
#include "tests/support/TestSupport.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

/// "text(a) tool(Edit|app.ts) result(ok|All set|0.5)".
QString shown(const QList<AgentEvent>& events) {
    QStringList parts;
    for (const AgentEvent& event : events) {
        if (const auto* text = std::get_if<AgentText>(&event)) {
            parts << u"text(%1)"_s.arg(text->text);
        } else if (const auto* tool = std::get_if<AgentTool>(&event)) {
            parts << u"tool(%1|%2)"_s.arg(tool->name, tool->detail);
        } else {
            const auto& result = std::get<AgentResult>(event);
            parts << u"result(%1|%2|%3)"_s.arg(
                result.success ? u"ok"_s : u"failed"_s, result.summary,
                result.costUSD ? QString::number(*result.costUSD) : u"-"_s);
        }
    }
    return parts.join(u' ');
}

QByteArray toolLine(const QByteArray& input) {
    return R"({"type":"assistant","message":{"content":[{"type":"tool_use","name":"T","input":)" + input + "}]}}";
}

} // namespace

TEST(ClaudeStreamParser, TakesTheEventsOutOfALine) {
    const QByteArray family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";
    const struct {
        const char* label;
        QByteArray line;
        QString events;
    } cases[] = {
        {"nothing", "", u""_s},
        {"blanks", " \t ", u""_s},
        {"plain text", "\t npm WARN deprecated ", u"text(npm WARN deprecated)"_s},
        {"a carriage return is no blank", " x \r", u"text(x \r)"_s},
        {"an array", "[1,2]", u"text([1,2])"_s},
        {"an object without a type", R"({"a":1})", u"text({\"a\":1})"_s},
        {"a type that is no text", R"({"type":1})", u"text({\"type\":1})"_s},
        {"two objects", R"({"type":"x"}{"type":"x"})", u"text({\"type\":\"x\"}{\"type\":\"x\"})"_s},
        {"cut off", R"({"type":"assi)", u"text({\"type\":\"assi)"_s},
        {"no UTF-8 in an answer",
         R"({"type":"assistant","message":{"content":[{"type":"text","text":"caf)"
         "\xe9"
         R"("}]}})",
         u"text(caf\uFFFD)"_s},
        {"no UTF-8", "\xff\xfe!", u"text(\uFFFD\uFFFD!)"_s},
        {"an unknown type", R"({"type":"rate_limit_event","x":{}})", u""_s},
        {"prose and a tool",
         R"( {"type":"assistant","message":{"content":[{"type":"text","text":" \n Done. "},{"type":"thinking","text":"x"},)"
         R"({"x":1},{"type":"tool_use","name":"Edit","input":{"file_path":"/p/src/app.ts"}}]}})",
         u"text(Done.) tool(Edit|app.ts)"_s},
        {"blank prose", R"({"type":"assistant","message":{"content":[{"type":"text","text":" \n "},{"type":"text"}]}})",
         u""_s},
        {"content is a text", R"({"type":"assistant","message":{"content":"Hi"}})", u""_s},
        {"content is not all objects", R"({"type":"assistant","message":{"content":[{"type":"text","text":"a"},"b"]}})",
         u""_s},
        {"no message", R"({"type":"assistant","message":[]})", u""_s},
        {"a tool without name and input",
         R"({"type":"assistant","message":{"content":[{"type":"tool_use","input":1}]}})", u"tool(Tool|)"_s},
        {"folder", toolLine(R"({"path":"/a/b/","command":"ls"})"), u"tool(T|b)"_s},
        {"root", toolLine(R"({"file_path":"/"})"), u"tool(T|/)"_s},
        {"an empty path counts", toolLine(R"({"file_path":"","command":"ls"})"), u"tool(T|)"_s},
        {"what is no text is passed over", toolLine(R"({"file_path":5,"path":null,"url":"http://a/b","query":"q"})"),
         u"tool(T|http://a/b)"_s},
        {"pattern before url", toolLine(R"({"query":"q","url":"u","description":"d","pattern":"*.c"})"),
         u"tool(T|*.c)"_s},
        {"80 characters", toolLine("{\"command\":\"" + QByteArray(200, 'x') + "\"}"),
         u"tool(T|%1)"_s.arg(QString(80, u'x'))},
        {"as people count them", toolLine("{\"query\":\"" + family.repeated(81) + "\"}"),
         u"tool(T|%1)"_s.arg(QString::fromUtf8(family.repeated(80)))},
        {"no text at all", toolLine(R"({"todos":[]})"), u"tool(T|)"_s},
        {"success",
         R"({"type":"result","subtype":"success","is_error":false,"result":" All set\n","total_cost_usd":0.5})",
         u"result(ok|All set|0.5)"_s},
        {"an error in spite of its subtype", R"({"type":"result","subtype":"success","is_error":true,"result":"No"})",
         u"result(failed|No|-)"_s},
        {"a failure without words",
         R"({"type":"result","subtype":"error_max_turns","result":" ","total_cost_usd":"1"})",
         u"result(failed|error_max_turns|-)"_s},
        {"a result of nothing", R"({"type":"result","is_error":0,"subtype":7})", u"result(failed||-)"_s},
        {"a cost of nothing", R"({"type":"result","subtype":"success","total_cost_usd":0})", u"result(ok|success|0)"_s},
    };
    for (const auto& [label, line, events] : cases) {
        EXPECT_EQ(shown(ClaudeStreamParser::parse(line).events), events) << label;
        EXPECT_EQ(shown(ClaudeStreamParser::events(QString::fromUtf8(line))), events) << label;
    }
}

TEST(ClaudeStreamParser, KeepsTheTypeAndTheSessionOfEveryLine) {
    const struct {
        QByteArray line;
        QString type;
        std::optional<QString> sessionID;
    } cases[] = {
        {R"({"type":"system","subtype":"init","session_id":"S1"})", u"system"_s, u"S1"_s},
        {R"({"type":"brand_new","session_id":"S2"})", u"brand_new"_s, u"S2"_s},
        {R"( {"session_id":"S3"})", u""_s, u"S3"_s},
        {R"({"type":"result","session_id":7})", u"result"_s, {}},
        {R"(["session_id"])", u""_s, {}},
        {R"({"session_id":"S4")", u""_s, {}},
        {"", u""_s, {}},
    };
    for (const auto& [line, type, sessionID] : cases) {
        const AgentLine parsed = ClaudeStreamParser::parse(line);
        EXPECT_EQ(parsed.type, type) << line.toStdString();
        EXPECT_EQ(parsed.sessionID, sessionID) << line.toStdString();
        EXPECT_EQ(ClaudeStreamParser::sessionID(QString::fromUtf8(line)), sessionID) << line.toStdString();
    }
}

TEST(ClaudeStreamParser, CountsTheTokensOfMessagesAndOfTheRun) {
    const QByteArray usage = R"("usage":{"input_tokens":3,"cache_read_input_tokens":40,"output_tokens":-1}})";
    const auto parse = [](const QByteArray& line) { return ClaudeStreamParser::parse(line).usage; };
    EXPECT_EQ(
        parse(R"({"type":"assistant","message":{"id":"m1","content":[],)" + usage + "}"),
        (AgentUsage{u"m1"_s, {.input = 43, .output = 0}}));
    EXPECT_EQ(parse(R"({"type":"result",)" + usage), (AgentUsage{{}, {.input = 43, .output = 0}}));
    EXPECT_FALSE(parse(R"({"type":"result","usage":7})"));
    EXPECT_FALSE(parse(R"({"type":"assistant","message":{)" + usage + "}"));
}

// Where it gives an answer at all, it is that of Qt's parser; for ordinary lines it does.
TEST(JsonSkim, ReadsNothingOtherwiseThanAFullParser) {
    const auto agrees = [](const QByteArray& text) {
        const auto top = skimJson(text);
        const QJsonObject object = QJsonDocument::fromJson(text).object();
        return !top || (object[u"type"] == QString::fromUtf8(top->type) &&
                        object[u"session_id"] ==
                            (top->sessionID ? QJsonValue(QString::fromUtf8(*top->sessionID)) : QJsonValue::Undefined));
    };
    int skimmed = 0;
    for (const char* name : {"claude-edit", "claude-turns"}) {
        const QString path = test::sourcePath(u"tests/agents/streams/%1.jsonl"_s.arg(QLatin1String(name)));
        for (const QByteArray& line : test::readFile(path).split('\n')) {
            skimmed += skimJson(line) ? 1 : 0;
            for (qsizetype at = 0; at < line.size(); ++at) {
                for (const char* other : {"", "\"", "\\", "{", "}", "[", ",", ":", "\xff", "\x01", "0", "e", "."}) {
                    const QByteArray changed = line.first(at) + QByteArray(other) + line.sliced(at + 1);
                    ASSERT_TRUE(agrees(changed)) << changed.constData();
                }
            }
        }
    }
    EXPECT_EQ(skimmed, 10);
    for (const char* text :
         {R"({"type":"a","type":"b"})", R"({"type":"a","ty\u0070e":"b"})", R"({"type":"a\n"})",
          R"({"type":"x","n":1e999})", R"({"type":"x","n":-})", R"({"type":"x","n":01})",
          R"({"type":"x","s":"\ud800"})", R"({"type":"x","s":"\u00g0"})", R"({"type":"x","session_id":null})",
          R"({"type":"x"} x)", R"({"type":"x",})", R"({"type":7})"}) {
        EXPECT_TRUE(agrees(text)) << text;
        EXPECT_FALSE(skimJson(text)) << text;
    }
    EXPECT_TRUE(skimJson(R"( {"type":"x","a":[1,-2.5,{"b":[]}],"s":"\u00e9\"","l":true,"n":null} )"));
}
