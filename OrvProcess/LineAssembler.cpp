#include "OrvProcess/LineAssembler.h"

#include "OrvProcess/TerminalLine.h"

#include <algorithm>
#include <utility>

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

std::span<char> LineAssembler::room(qsizetype size) {
    constexpr qsizetype openLine = 4096; // of most lines: for those the memory need not grow
    const qsizetype end = m_filled + size;
    m_partial.reserve(std::max(m_partial.capacity(), end <= m_partial.capacity() ? end : end + openLine));
    m_partial.resize(end);
    return std::span(m_partial).subspan(static_cast<size_t>(m_filled));
}

QByteArray LineAssembler::append(qsizetype size, QByteArray memory) {
    const QByteArrayView bytes = QByteArrayView(m_partial).sliced(m_filled, size);
    const qsizetype first = bytes.indexOf('\n');
    if (m_rewritten || size > limitBytes || m_filled + (first < 0 ? size : first) > limitBytes) {
        const QByteArray copy = bytes.toByteArray();
        m_partial.truncate(m_filled);
        QByteArray lines = appendSlowly(copy);
        m_filled = m_partial.size();
        return lines;
    }
    const qsizetype end = first < 0 ? 0 : m_filled + bytes.lastIndexOf('\n') + 1;
    return takeLines(end, m_filled + size, std::move(memory));
}

/// The first `end` bytes of the `filled` ones, which are whole lines.
QByteArray LineAssembler::takeLines(qsizetype end, qsizetype filled, QByteArray memory) {
    m_filled = filled - end;
    if (end < m_partial.size() / 2) {
        // Lines that come one by one would each wait with the memory of many.
        QByteArray lines = m_partial.first(end);
        std::copy(m_partial.cbegin() + end, m_partial.cbegin() + filled, m_partial.begin());
        return lines;
    }
    QByteArray lines = std::exchange(m_partial, std::move(memory));
    m_partial.resize(m_filled);
    std::copy(lines.cbegin() + end, lines.cbegin() + filled, m_partial.begin());
    lines.truncate(end);
    return lines;
}

/// Line by line, where is too long, or rewrites itself and may be.
QByteArray LineAssembler::appendSlowly(QByteArrayView bytes) {
    QByteArray lines;
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
    m_partial.truncate(m_filled);
    if (!m_partial.isEmpty()) {
        endLine(lines);
    }
    m_filled = m_partial.size();
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
