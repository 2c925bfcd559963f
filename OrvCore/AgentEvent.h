#pragma once

#include <QList>
#include <QString>

#include <optional>
#include <variant>

namespace orv {

/// Prose of an agent, or a line of its output as it stands.
struct AgentText {
    QString text;

    bool operator==(const AgentText&) const = default;
};

/// The agent used a tool.
struct AgentTool {
    QString name;
    QString detail; ///< what it acted on, in a few words (a file name, a command, a pattern); may be empty

    bool operator==(const AgentTool&) const = default;
};

/// The final report of a run.
struct AgentResult {
    bool success = false;
    QString summary;
    std::optional<double> costUSD;

    bool operator==(const AgentResult&) const = default;
};

using AgentEvent = std::variant<AgentText, AgentTool, AgentResult>;

/// What an agent's model has read and written.
struct AgentTokens {
    qint64 input = 0; ///< what came out of a cache included
    qint64 output = 0;

    bool operator==(const AgentTokens&) const = default;
    AgentTokens& operator+=(const AgentTokens& more) {
        input += more.input;
        output += more.output;
        return *this;
    }
};

/// What a line of the stream format reports of the use of a model.
struct AgentUsage {
    QString messageID; ///< what these tokens went into; empty where they are those of the whole run
    AgentTokens tokens;

    bool operator==(const AgentUsage&) const = default;
};

/// What one line of an agent's output says.
struct AgentLine {
    QString type; ///< of a line of the stream format, known here or not; empty for other text
    QList<AgentEvent> events;
    std::optional<QString> sessionID;
    std::optional<AgentUsage> usage = {};

    bool operator==(const AgentLine&) const = default;
};

} // namespace orv
