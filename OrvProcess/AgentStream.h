#pragma once

#include "OrvCore/AgentEvent.h"
#include "OrvCore/Agents.h"
#include "OrvProcess/LineAssembler.h"

namespace orv {

/// Makes lines and events of an agent's output that comes in pieces. Where the pieces begin and end makes no
/// difference.
///
/// Of an agent that prints the stream format, a line may have many megabytes (a picture that it looked at). One that is
/// longer than the limit is cut there and shown as text, as are lines that are none of the format. What other agents
/// print is text, a line an event, as a terminal would show it, without colours; blank lines are left out.
class AgentStream {
public:
    static constexpr qsizetype defaultLimitBytes = 32 * 1024 * 1024;

    explicit AgentStream(AgentKind kind, qsizetype limitBytes = defaultLimitBytes)
        : m_kind(kind), m_limitBytes(limitBytes) {}

    [[nodiscard]] QList<AgentLine> append(QByteArrayView bytes);
    /// What stands behind the last line feed is a line too.
    [[nodiscard]] QList<AgentLine> finish();

private:
    [[nodiscard]] bool isPlain() const { return m_kind != AgentKind::claude; }
    void keep(QByteArrayView bytes);
    void endLine(QByteArrayView end, QList<AgentLine>& lines);

    const AgentKind m_kind;
    const qsizetype m_limitBytes;
    QByteArray m_partial; ///< of a line of the stream format that has no end yet
    bool m_isCut = false; ///< it was longer than the limit
    LineAssembler m_plain;
};

} // namespace orv
