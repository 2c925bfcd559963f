#include "FuzzInput.h"
#include "OrvCore/ClaudeStreamParser.h"
#include "OrvCore/JsonSkim.h"
#include "OrvProcess/AgentStream.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QList<orv::AgentLine> read(orv::AgentStream stream, QByteArrayView bytes, qsizetype step) {
    QList<orv::AgentLine> lines;
    while (!bytes.isEmpty()) {
        const qsizetype size = std::min(step, bytes.size());
        lines += stream.append(bytes.first(size));
        bytes = bytes.sliced(size);
    }
    return lines + stream.finish();
}

void requireSame(const QList<orv::AgentLine>& some, const QList<orv::AgentLine>& others) {
    require(some.size() == others.size());
    for (qsizetype line = 0; line < some.size(); ++line) {
        require(some[line] == others[line]);
    }
}

} // namespace

/// An agent's output, whole and in pieces: its kind, the size of the pieces and the limit of a line come first.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    const auto kind = static_cast<orv::AgentKind>(input.byte() % orv::allAgentKinds.size());
    const qsizetype step = input.byte() + 1;
    const uint8_t limit = input.byte();
    const orv::AgentStream stream(kind, limit == 0 ? orv::AgentStream::defaultLimitBytes : limit * 16);
    const std::string_view output = input.take(size);
    const QByteArrayView bytes(output.data(), static_cast<qsizetype>(output.size()));
    const auto lines = read(stream, bytes, std::max<qsizetype>(bytes.size(), 1));
    requireSame(read(stream, bytes, step), lines);
    for (const orv::AgentLine& line : lines) {
        for (const orv::AgentEvent& event : line.events) {
            if (const auto* tool = std::get_if<orv::AgentTool>(&event)) {
                require(tool->detail.size() <= bytes.size());
            }
        }
    }
    if (const auto top = orv::skimJson(bytes)) {
        const QJsonObject object = QJsonDocument::fromJson(bytes.toByteArray()).object();
        require(object[QStringLiteral("type")].toString().toUtf8() == top->type);
        require(object.contains(QStringLiteral("session_id")) == top->sessionID.has_value());
    }
    const QString text = QString::fromUtf8(bytes);
    const orv::AgentLine line = orv::ClaudeStreamParser::parse(text.toUtf8());
    require(orv::ClaudeStreamParser::events(text) == line.events);
    require(orv::ClaudeStreamParser::sessionID(text) == line.sessionID);
    return 0;
}
