#include "OrvCore/ClaudeStreamParser.h"

#include "OrvCore/JsonSkim.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv::ClaudeStreamParser {

namespace {

QByteArrayView withoutBlanks(QByteArrayView line) {
    const auto isBlank = [](char letter) { return letter == ' ' || letter == '\t'; };
    while (!line.isEmpty() && isBlank(line.front())) {
        line = line.sliced(1);
    }
    while (!line.isEmpty() && isBlank(line.back())) {
        line.chop(1);
    }
    return line;
}

/// As people count characters.
QString firstCharacters(const QString& text, int count) {
    // Nobody writes a character of this many code units; finding the boundaries takes memory for each of them.
    constexpr int longestCharacter = 64;
    QString start = text.first(std::min<qsizetype>(text.size(), qsizetype{count} * longestCharacter));
    QTextBoundaryFinder boundary(QTextBoundaryFinder::Grapheme, start);
    for (int taken = 0; taken < count; ++taken) {
        if (boundary.toNextBoundary() < 0) {
            return start;
        }
    }
    return start.first(boundary.position());
}

QString lastPathComponent(QStringView path) {
    while (path.size() > 1 && path.endsWith(u'/')) {
        path.chop(1);
    }
    return (path.size() > 1 ? path.sliced(path.lastIndexOf(u'/') + 1) : path).toString();
}

/// What a tool acted on: the first of these arguments that is a text.
QString detail(const QJsonObject& input) {
    enum class Show { fileName, start };
    struct Argument {
        QLatin1StringView key;
        Show show;
    };
    static constexpr std::array arguments{
        Argument{"file_path"_L1, Show::fileName}, Argument{"path"_L1, Show::fileName},
        Argument{"command"_L1, Show::start},      Argument{"pattern"_L1, Show::start},
        Argument{"url"_L1, Show::start},          Argument{"description"_L1, Show::start},
        Argument{"query"_L1, Show::start},
    };
    constexpr int shownCharacters = 80;
    for (const auto& [key, show] : arguments) {
        const QJsonValue value = input.value(key);
        if (value.isString()) {
            const QString text = value.toString();
            return show == Show::fileName ? lastPathComponent(text) : firstCharacters(text, shownCharacters);
        }
    }
    return {};
}

/// Numbers that are absent, or none, count as nothing.
std::optional<AgentUsage> usage(const QJsonObject& holder, const QString& messageID) {
    const QJsonValue found = holder.value("usage"_L1);
    if (!found.isObject()) {
        return {};
    }
    const QJsonObject counts = found.toObject();
    const auto count = [&counts](QLatin1StringView key) { return std::max<qint64>(counts.value(key).toInteger(), 0); };
    return AgentUsage{
        messageID,
        {.input =
             count("input_tokens"_L1) + count("cache_creation_input_tokens"_L1) + count("cache_read_input_tokens"_L1),
         .output = count("output_tokens"_L1)}};
}

QList<AgentEvent> assistantEvents(const QJsonObject& message) {
    const QJsonArray content = message.value("content"_L1).toArray();
    QList<AgentEvent> events;
    for (const QJsonValue element : content) {
        if (!element.isObject()) {
            return {};
        }
        const QJsonObject block = element.toObject();
        const QString type = block.value("type"_L1).toString();
        if (type == "text"_L1) {
            if (QString text = block.value("text"_L1).toString().trimmed(); !text.isEmpty()) {
                events.append(AgentText{std::move(text)});
            }
        } else if (type == "tool_use"_L1) {
            events.append(
                AgentTool{block.value("name"_L1).toString(u"Tool"_s), detail(block.value("input"_L1).toObject())});
        }
    }
    return events;
}

AgentResult result(const QJsonObject& line) {
    const QString subtype = line.value("subtype"_L1).toString();
    const QString answer = line.value("result"_L1).toString().trimmed();
    const QJsonValue cost = line.value("total_cost_usd"_L1);
    return {
        .success = !line.value("is_error"_L1).toBool() && subtype == "success"_L1,
        .summary = answer.isEmpty() ? subtype : answer,
        .costUSD = cost.isDouble() ? std::optional(cost.toDouble()) : std::nullopt};
}

QJsonObject object(QByteArrayView line) {
    const QByteArray bytes = QByteArray::fromRawData(line.data(), line.size());
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    // What a tool printed is passed on as it is, with what is not UTF-8 in it: the rest of the line holds all the same.
    return !document.isNull() || QUtf8StringView(bytes).isValidUtf8()
               ? document.object()
               : QJsonDocument::fromJson(QString::fromUtf8(bytes).toUtf8()).object();
}

std::optional<QString> sessionID(const QJsonObject& line) {
    const QJsonValue id = line.value("session_id"_L1);
    return id.isString() ? std::optional(id.toString()) : std::nullopt;
}

} // namespace

AgentLine parse(QByteArrayView line) {
    const QByteArrayView text = withoutBlanks(line);
    if (text.isEmpty()) {
        return {};
    }
    // Most lines by far, and the longest ones, are of types that have no events: no value is made of them.
    if (const auto top = skimJson(text); top && top->type != "assistant" && top->type != "result") {
        return {
            .type = QString::fromUtf8(top->type),
            .events = {},
            .sessionID = top->sessionID ? std::optional(QString::fromUtf8(*top->sessionID)) : std::nullopt};
    }
    const QJsonObject json = object(text);
    AgentLine parsed{.type = {}, .events = {}, .sessionID = sessionID(json)};
    const QJsonValue type = json.value("type"_L1);
    if (!type.isString()) {
        parsed.events = {AgentText{QString::fromUtf8(text)}};
        return parsed;
    }
    parsed.type = type.toString();
    if (parsed.type == "assistant"_L1) {
        const QJsonObject message = json.value("message"_L1).toObject();
        parsed.events = assistantEvents(message);
        if (const QString id = message.value("id"_L1).toString(); !id.isEmpty()) {
            parsed.usage = usage(message, id);
        }
    } else if (parsed.type == "result"_L1) {
        parsed.events = {result(json)};
        parsed.usage = usage(json, {});
    }
    return parsed;
}

QList<AgentEvent> events(const QString& line) {
    return parse(line.toUtf8()).events;
}

std::optional<QString> sessionID(const QString& line) {
    return sessionID(object(line.toUtf8()));
}

} // namespace orv::ClaudeStreamParser
