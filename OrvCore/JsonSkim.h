#pragma once

#include <QByteArrayView>

#include <optional>

namespace orv {

/// What the top of a JSON object says, taken without making a value of the whole.
struct JsonTop {
    QByteArrayView type;                     ///< of the member "type"; points into the text
    std::optional<QByteArrayView> sessionID; ///< of "session_id", likewise

    bool operator==(const JsonTop&) const = default;
};

/// Reads an object in its plainest form: whatever makes a reader pause (escapes where they matter, members that stand
/// twice, large numbers, deep nesting, no "type" that is a text) gives nothing, and a full parser has to look. What it
/// gives an answer for is a valid object (RFC 8259), and the answer is the full parser's. Pure; any thread.
[[nodiscard]] std::optional<JsonTop> skimJson(QByteArrayView text);

} // namespace orv
