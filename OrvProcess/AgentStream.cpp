#include "OrvProcess/AgentStream.h"

#include "OrvCore/ClaudeStreamParser.h"
#include "OrvCore/PlainText.h"
#include "OrvProcess/TerminalLine.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QList<AgentLine> plainLines(QByteArrayView raw) {
    QList<AgentLine> lines;
    while (!raw.isEmpty()) {
        const qsizetype end = raw.indexOf('\n');
        // The colours are the one control that is left in a terminal's line.
        const QString text = withoutColours(TerminalLine::text(raw.first(end)));
        raw = raw.sliced(end + 1);
        const auto isSpace = [](QChar letter) { return letter.isSpace(); };
        const auto last = std::find_if_not(text.crbegin(), text.crend(), isSpace);
        if (last != text.crend()) {
            lines.append({.type = {}, .events = {AgentText{text.first(last.base() - text.cbegin())}}, .sessionID = {}});
        }
    }
    return lines;
}

AgentLine cutLine(QByteArrayView start) {
    constexpr qsizetype shownBytes = 4096;
    const QByteArrayView shown = start.first(std::min(shownBytes, start.size()));
    return {.type = {}, .events = {AgentText{QString::fromUtf8(shown) + u'\u2026'}}, .sessionID = {}};
}

} // namespace

QList<AgentLine> AgentStream::append(QByteArrayView bytes) {
    if (isPlain()) {
        const auto room = m_plain.room(bytes.size());
        std::ranges::copy(bytes, room.begin());
        return plainLines(m_plain.append(bytes.size()));
    }
    QList<AgentLine> lines;
    for (qsizetype end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n')) {
        endLine(bytes.first(end), lines);
        bytes = bytes.sliced(end + 1);
    }
    keep(bytes);
    return lines;
}

QList<AgentLine> AgentStream::finish() {
    if (isPlain()) {
        return plainLines(m_plain.finish());
    }
    QList<AgentLine> lines;
    endLine({}, lines);
    return lines;
}

void AgentStream::keep(QByteArrayView bytes) {
    const qsizetype room = m_limitBytes - m_partial.size();
    const QByteArrayView kept = bytes.first(std::min(bytes.size(), room));
    m_isCut = m_isCut || kept.size() < bytes.size();
    if (m_partial.size() + kept.size() > m_partial.capacity()) {
        // By itself it grows in steps that make a copy for every few pieces.
        m_partial.reserve(std::max(2 * m_partial.capacity(), m_partial.size() + kept.size()));
    }
    m_partial.append(kept);
}

void AgentStream::endLine(QByteArrayView end, QList<AgentLine>& lines) {
    const bool isWhole = m_partial.isEmpty() && end.size() <= m_limitBytes;
    if (!isWhole) {
        keep(end);
    }
    AgentLine line = m_isCut ? cutLine(m_partial) : ClaudeStreamParser::parse(isWhole ? end : m_partial);
    if (line != AgentLine{}) {
        lines.append(std::move(line));
    }
    constexpr qsizetype keptBytes = 1024 * 1024;
    if (m_partial.capacity() > keptBytes) {
        m_partial = {};
    }
    m_partial.resize(0);
    m_isCut = false;
}

} // namespace orv
