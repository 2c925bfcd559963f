#include "OrvProcess/LineAssembler.h"

#include "OrvProcess/TerminalLine.h"

#include <algorithm>

namespace orv {
namespace {

/// The end of the last whole UTF-8 character in the first `limit` bytes.
qsizetype characterBoundary(QByteArrayView text, qsizetype limit) {
    for (qsizetype end = limit; end > limit - 4; --end) {
        if ((static_cast<unsigned char>(text[end]) & 0xc0) != 0x80) {
            return end;
        }
    }
    return limit;
}

} // namespace

QByteArray LineAssembler::append(QByteArrayView bytes, QByteArray memory) {
    QByteArray lines = std::move(memory);
    lines.resize(0);
    if (!m_rewritten && m_partial.size() + bytes.size() <= limitBytes) {
        const qsizetype end = bytes.lastIndexOf('\n') + 1;
        if (end > 0) {
            lines.reserve(m_partial.size() + end);
            lines += m_partial;
            lines += bytes.first(end);
            m_partial.resize(0);
        }
        m_partial += bytes.sliced(end);
        return lines;
    }
    while (!bytes.isEmpty()) {
        const qsizetype newline = bytes.indexOf('\n');
        // One more than fits: only then is it known whether a character ends at the limit.
        const qsizetype room = (m_rewritten ? 2 * limitBytes : limitBytes) + 1 - m_partial.size();
        const qsizetype taken = std::min(newline < 0 ? bytes.size() : newline, room);
        m_partial += bytes.first(taken);
        bytes = bytes.sliced(taken);
        if (taken == room) {
            shorten(lines);
        } else if (newline >= 0) {
            endLine(lines);
            bytes = bytes.sliced(1);
        }
    }
    return lines;
}

QByteArray LineAssembler::finish() {
    QByteArray lines;
    if (!m_partial.isEmpty()) {
        endLine(lines);
    }
    return lines;
}

void LineAssembler::shorten(QByteArray& lines) {
    if (m_rewritten) {
        rewrite(lines);
    } else if (TerminalLine::isRewritten(QByteArrayView(m_partial).first(limitBytes))) {
        m_rewritten = true;
    } else {
        const qsizetype end = characterBoundary(m_partial, limitBytes);
        lines += QByteArrayView(m_partial).first(end);
        lines += '\n';
        m_partial.remove(0, end);
    }
}

void LineAssembler::endLine(QByteArray& lines) {
    if (m_rewritten) {
        rewrite(lines);
    }
    lines += m_partial;
    lines += '\n';
    m_partial.clear();
    m_rewritten = false;
}

/// Brings a partial line that holds controls down to what it shows, and cuts that too where it is still too long.
void LineAssembler::rewrite(QByteArray& lines) {
    TerminalLine line(m_partial, TerminalLine::Input::continues);
    QByteArray shown = line.take(limitBytes);
    while (!line.isEmpty()) {
        lines += shown;
        lines += '\n';
        shown = line.take(limitBytes);
    }
    m_partial = shown + line.position() + QByteArrayView(m_partial).sliced(line.consumed()).toByteArray();
    Q_ASSERT_X(m_partial.size() <= 2 * limitBytes, Q_FUNC_INFO, "there must be room for more of the line");
}

} // namespace orv
