#pragma once

#include "OrvCore/AgentEvent.h"

#include <QByteArrayView>

namespace orv {

/// Reads the lines of `claude -p --output-format stream-json --verbose`, one JSON object each, and any other text.
/// Every line is read by itself; nothing is an error. Pure; any thread.
namespace ClaudeStreamParser {

/// The line, without its line feed, from one look at it. A line that is no object with a "type" is text. A type that is
/// not known here has no events and is kept as `type`.
[[nodiscard]] AgentLine parse(QByteArrayView line);

/// The events alone.
[[nodiscard]] QList<AgentEvent> events(const QString& line);
/// The id of the conversation alone, from a line of whatever type.
[[nodiscard]] std::optional<QString> sessionID(const QString& line);

} // namespace ClaudeStreamParser
} // namespace orv
