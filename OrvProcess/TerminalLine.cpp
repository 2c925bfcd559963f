#include "OrvProcess/TerminalLine.h"

#include <QChar>
#include <QList>

#include <algorithm>
#include <array>
#include <optional>

namespace orv {
namespace {

/// A cursor moved to the right of everything goes no further than this: "move 999 to the right" means the edge of a
/// terminal, which a log has not got.
constexpr qint64 farthestBlankColumn = 1000;
/// A string sequence (a title, a link) whose end is further away than this is none, and so with any other sequence:
/// what is left over of input that ends within one is bounded.
constexpr qsizetype longestStringSequence = 4096;
constexpr qsizetype longestSequence = 256;
constexpr QByteArrayView linkIntroducer = "\x1b]8;;";
constexpr QByteArrayView stringTerminator = "\x1b\\";
/// No colour takes a longer parameter; and what a character is written with is bounded.
constexpr qsizetype longestParameter = 24;
/// Combining marks beyond this begin a cell of their own, so that a line can be cut between cells.
constexpr uint32_t longestCell = 64;

constexpr bool isControl(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x20 || code == 0x7f;
}

/// Where the bytes from `low` to `high` that begin at `at` end, `limit` at the latest.
qsizetype endOfBytes(QByteArrayView raw, qsizetype at, qsizetype limit, char low, char high) {
    while (at < limit && raw[at] >= low && raw[at] <= high) {
        ++at;
    }
    return at;
}

/// Where the parameter bytes of a control sequence end, from behind its "[".
qsizetype endOfParameters(QByteArrayView raw, qsizetype at, qsizetype limit) {
    return endOfBytes(raw, at, limit, 0x30, 0x3f);
}

/// Where the intermediate bytes of a sequence end.
qsizetype endOfIntermediates(QByteArrayView raw, qsizetype at, qsizetype limit) {
    return endOfBytes(raw, at, limit, 0x20, 0x2f);
}

/// The bytes that belong to the UTF-8 sequence at `at`: one for a byte that begins none. Zero when the input's end cuts
/// it in two.
qsizetype characterLength(QByteArrayView raw, qsizetype at) {
    const auto lead = static_cast<unsigned char>(raw[at]);
    const qsizetype length = lead >= 0xf0 && lead < 0xf8 ? 4 : lead >= 0xe0 ? 3 : lead >= 0xc0 ? 2 : 1;
    for (qsizetype i = 1; i < length; ++i) {
        if (at + i >= raw.size()) {
            return 0;
        }
        if ((static_cast<unsigned char>(raw[at + i]) & 0xc0) != 0x80) {
            return 1;
        }
    }
    return length;
}

bool joinsTheOneBefore(QByteArrayView character) {
    if (character.size() < 2) {
        return false;
    }
    const QString text = QString::fromUtf8(character);
    const QList<uint> codes = text.toUcs4();
    const QChar::Category category = QChar::category(codes.isEmpty() ? 0 : codes.first());
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing || category == QChar::Other_Format;
}

/// The attribute that an SGR parameter sets or resets (ECMA-48 8.3.117; 53, 55, 58 and 59 as terminals have them).
struct Attribute {
    int from;
    int to;
    size_t index;
    bool sets;
};
constexpr Attribute attributes[] = {
    {1, 1, 0, true},    {2, 2, 1, true},     {22, 22, 0, false}, {22, 22, 1, false}, {3, 3, 2, true},
    {23, 23, 2, false}, {4, 4, 3, true},     {21, 21, 3, true},  {24, 24, 3, false}, {5, 6, 4, true},
    {25, 25, 4, false}, {7, 7, 5, true},     {27, 27, 5, false}, {8, 8, 6, true},    {28, 28, 6, false},
    {9, 9, 7, true},    {29, 29, 7, false},  {30, 38, 8, true},  {90, 97, 8, true},  {39, 39, 8, false},
    {40, 48, 9, true},  {100, 107, 9, true}, {49, 49, 9, false}, {53, 53, 10, true}, {55, 55, 10, false},
    {58, 58, 11, true}, {59, 59, 11, false},
};

/// The number at the beginning of a parameter ("4:3" is 4, an empty one 0).
int number(QByteArrayView parameter) {
    int value = 0;
    for (const char digit : parameter) {
        if (digit < '0' || digit > '9' || value > 99999) {
            break;
        }
        value = value * 10 + (digit - '0');
    }
    return value;
}

/// The parameter of that index, 0 when it is not there.
int parameter(QByteArrayView parameters, int index) {
    for (; index > 0; --index) {
        const qsizetype separator = parameters.indexOf(';');
        if (separator < 0) {
            return 0;
        }
        parameters = parameters.sliced(separator + 1);
    }
    return number(parameters);
}

} // namespace

QString TerminalLine::text(QByteArrayView raw, Links links) {
    while (raw.endsWith('\r')) {
        raw.chop(1);
    }
    if (!isRewritten(raw)) {
        return QString::fromUtf8(raw);
    }
    return QString::fromUtf8(TerminalLine(raw, Input::whole).take(PTRDIFF_MAX, links));
}

bool TerminalLine::isRewritten(QByteArrayView raw) {
    unsigned char controls = 0;
    for (const char byte : raw) {
        controls |= static_cast<unsigned char>(isControl(byte) & (byte != '\t'));
    }
    if (controls == 0) {
        return false;
    }
    for (qsizetype at = 0; at < raw.size(); ++at) {
        if (!isControl(raw[at]) || raw[at] == '\t') {
            continue;
        }
        if (raw[at] != '\x1b' || at + 1 >= raw.size() || raw[at + 1] != '[') {
            return true;
        }
        const qsizetype limit = std::min(raw.size(), at + 1 + longestSequence);
        at = endOfParameters(raw, at + 2, limit);
        if (at >= limit || raw[at] != 'm') {
            return true;
        }
    }
    return false;
}

TerminalLine::TerminalLine(QByteArrayView raw, Input input) : m_raw(raw) {
    while (m_at < raw.size()) {
        const char byte = raw[m_at];
        if (byte == '\x1b') {
            const qsizetype next = escape(m_at + 1, input);
            if (next < 0) {
                return;
            }
            m_at = next;
            continue;
        }
        qsizetype length = 1;
        if (byte == '\r') {
            m_column = 0;
        } else if (byte == '\b') {
            m_column -= m_column > 0 ? 1 : 0;
        } else if (byte == '\t') {
            moveTo(static_cast<qint64>((m_column / 8 + 1) * 8));
        } else if (!isControl(byte)) {
            length = characterLength(raw, m_at);
            if (length == 0 && input == Input::continues) {
                return;
            }
            length = std::max<qsizetype>(length, 1);
            write({static_cast<uint32_t>(m_at), static_cast<uint32_t>(length)});
        }
        m_at += length;
    }
}

void TerminalLine::write(Slice text) {
    if (m_column > 0 && m_column <= m_cells.size()) {
        Slice& before = m_cells[m_column - 1].text;
        if (before.length > 0 && before.length + text.length <= longestCell &&
            before.start + before.length == text.start && joinsTheOneBefore(m_raw.sliced(text.start, text.length))) {
            before.length += text.length;
            return;
        }
    }
    if (m_column >= m_cells.size()) {
        m_cells.resize(m_column + 1);
    }
    m_cells[m_column++] = {text, m_pen, m_link};
}

void TerminalLine::moveTo(qint64 column) {
    const qint64 farthest = std::max(static_cast<qint64>(m_cells.size()), farthestBlankColumn);
    m_column = static_cast<size_t>(std::clamp<qint64>(column, 0, farthest));
}

/// Carries out the sequence whose bytes behind ESC begin at `at`; gives where it ends, -1 when more input must say.
qsizetype TerminalLine::escape(qsizetype at, Input input) {
    const auto unfinished = [input](qsizetype resume) { return input == Input::continues ? -1 : resume; };
    if (at >= m_raw.size()) {
        return unfinished(at);
    }
    const char introducer = m_raw[at];
    const qsizetype limit = std::min(m_raw.size(), at + longestSequence);
    if (introducer == '[') {
        const qsizetype first = at + 1;
        const qsizetype last = endOfParameters(m_raw, first, limit);
        const qsizetype end = endOfIntermediates(m_raw, last, limit);
        if (end >= limit) {
            return limit == m_raw.size() ? unfinished(end) : first;
        }
        if (m_raw[end] < 0x40 || m_raw[end] == 0x7f) {
            return end;
        }
        if (end == last) {
            control(m_raw[end], m_raw.sliced(first, last - first), first);
        }
        return end + 1;
    }
    if (QByteArrayView("]PX^_").contains(introducer)) {
        const qsizetype stringLimit = std::min(m_raw.size(), at + longestStringSequence);
        for (qsizetype i = at + 1; i < stringLimit; ++i) {
            const bool isString = m_raw[i] == '\a' || (m_raw[i] == '\x1b' && i + 1 < m_raw.size());
            if (isString && m_raw[i] == '\x1b' && m_raw[i + 1] != '\\') {
                return at + 1;
            }
            if (isString) {
                if (introducer == ']') {
                    link(m_raw.sliced(at + 1, i - at - 1), at + 1);
                }
                return m_raw[i] == '\a' ? i + 1 : i + 2;
            }
        }
        return stringLimit == m_raw.size() ? unfinished(at + 1) : at + 1;
    }
    const qsizetype end = endOfIntermediates(m_raw, at, limit);
    if (end >= limit) {
        return limit == m_raw.size() ? unfinished(end) : at;
    }
    return isControl(m_raw[end]) || (static_cast<unsigned char>(m_raw[end]) & 0x80) != 0 ? end : end + 1;
}

void TerminalLine::control(char final, QByteArrayView parameters, qsizetype at) {
    if (!parameters.isEmpty() && parameters.front() >= '<') {
        return;
    }
    const auto here = static_cast<qint64>(m_column);
    const int count = std::max(parameter(parameters, 0), 1);
    switch (final) {
    case 'm':
        colour(parameters, at);
        break;
    case 'J':
    case 'K':
        erase(parameter(parameters, 0));
        break;
    case 'G':
    case '`':
        moveTo(count - 1);
        break;
    case 'H':
    case 'f':
        moveTo(std::max(parameter(parameters, 1), 1) - 1);
        break;
    case 'C':
    case 'a':
        moveTo(here + count);
        break;
    case 'D':
        moveTo(here - count);
        break;
    case 'E':
    case 'F':
        moveTo(0);
        break;
    default:
        break;
    }
}

void TerminalLine::erase(int mode) {
    if (mode == 0) {
        m_cells.resize(std::min(m_cells.size(), m_column));
    } else if (mode == 1) {
        const size_t end = std::min(m_cells.size(), m_column + 1);
        std::fill(m_cells.begin(), m_cells.begin() + static_cast<qsizetype>(end), Cell{});
    } else {
        m_cells.clear();
    }
}

/// "8;parameters;address"; any other string is none.
void TerminalLine::link(QByteArrayView parameters, qsizetype at) {
    constexpr std::array<QByteArrayView, 4> schemes{"http://", "https://", "file://", "mailto:"};
    if (!parameters.startsWith("8;")) {
        return;
    }
    const qsizetype first = parameters.indexOf(';', 2) + 1;
    const QByteArrayView address = parameters.sliced(first);
    const auto isOf = [&address](QByteArrayView scheme) {
        return address.size() > scheme.size() && address.first(scheme.size()).compare(scheme, Qt::CaseInsensitive) == 0;
    };
    const auto isPrintable = [](char byte) { return byte > ' ' && byte < 0x7f; };
    const bool isLink = first > 0 && std::ranges::any_of(schemes, isOf) && std::ranges::all_of(address, isPrintable);
    m_link = isLink ? Slice{static_cast<uint32_t>(at + first), static_cast<uint32_t>(address.size())} : Slice{};
}

void TerminalLine::colour(QByteArrayView parameters, qsizetype at) {
    Pen pen = m_pens[m_pen];
    qsizetype from = 0;
    while (from <= parameters.size()) {
        const auto endFrom = [&](qsizetype begin) {
            const qsizetype separator = parameters.indexOf(';', begin);
            return separator < 0 ? parameters.size() : separator;
        };
        qsizetype end = endFrom(from);
        const QByteArrayView one = parameters.sliced(from, end - from);
        const int code = number(one);
        if ((code == 38 || code == 48 || code == 58) && !one.contains(':') && end < parameters.size()) {
            // The colour's own numbers follow: "5;index" or "2;red;green;blue".
            const int rest = number(parameters.sliced(end + 1)) == 2 ? 4 : 2;
            for (int i = 0; i < rest && end < parameters.size(); ++i) {
                end = endFrom(end + 1);
            }
        }
        if (code == 0) {
            pen = Pen{};
        }
        for (const Attribute& attribute : attributes) {
            if (end - from <= longestParameter && code >= attribute.from && code <= attribute.to) {
                pen[attribute.index] = attribute.sets && one != "4:0"
                                           ? Slice{static_cast<uint32_t>(at + from), static_cast<uint32_t>(end - from)}
                                           : Slice{};
            }
        }
        from = end + 1;
    }
    const bool isDefault = std::all_of(pen.begin(), pen.end(), [](Slice set) { return set.length == 0; });
    if (!isDefault) {
        m_pens.push_back(pen);
    }
    m_pen = isDefault ? 0 : static_cast<uint32_t>(m_pens.size() - 1);
}

void TerminalLine::appendPen(QByteArray& out, uint32_t pen) const {
    out += "\x1b[";
    char separator = 0;
    for (const Slice& set : m_pens[pen]) {
        if (set.length == 0) {
            continue;
        }
        if (separator != 0) {
            out += separator;
        }
        out += m_raw.sliced(set.start, set.length);
        separator = ';';
    }
    out += 'm';
}

void TerminalLine::appendLink(QByteArray& out, Slice address) const {
    out += linkIntroducer;
    out += m_raw.sliced(address.start, address.length);
    out += stringTerminator;
}

QByteArray TerminalLine::take(qsizetype limitBytes, Links links) {
    const auto isBlank = [this](const Cell& cell) {
        return cell.pen == 0 && (cell.text.length == 0 || (cell.text.length == 1 && m_raw[cell.text.start] == ' '));
    };
    size_t end = m_cells.size();
    while (end > m_first && isBlank(m_cells[end - 1])) {
        --end;
    }
    m_lastTaken = m_first;
    QByteArray out;
    uint32_t pen = 0;
    Slice link;
    // Cells that were written over may part a link into many, each with its address.
    qsizetype linkBytes = links == Links::keep ? m_raw.size() : 0;
    while (m_first < end && out.size() < limitBytes) {
        const Cell& cell = m_cells[m_first];
        const qsizetype before = out.size();
        const Slice linkBefore = link;
        if (cell.link != link && (link.length > 0 || cell.link.length <= linkBytes)) {
            link = cell.link.length <= linkBytes ? cell.link : Slice{};
            linkBytes -= link.length;
            appendLink(out, link);
        }
        if (cell.pen != pen) {
            if (pen != 0) {
                out += "\x1b[m";
            }
            if (cell.pen != 0) {
                appendPen(out, cell.pen);
            }
        }
        if (cell.text.length == 0) {
            out += ' ';
        } else {
            out += m_raw.sliced(cell.text.start, cell.text.length);
        }
        if (out.size() > limitBytes && before > 0) {
            out.truncate(before);
            link = linkBefore;
            break;
        }
        pen = cell.pen;
        ++m_first;
    }
    if (m_first >= end) {
        m_first = m_cells.size();
    }
    if (pen != 0) {
        out += "\x1b[m";
    }
    if (link.length > 0) {
        appendLink(out, {});
    }
    return out;
}

QByteArray TerminalLine::position() const {
    const size_t column = m_column > m_lastTaken ? m_column - m_lastTaken : 0;
    QByteArray out = "\x1b[" + QByteArray::number(static_cast<qulonglong>(column + 1)) + 'G';
    if (m_pen != 0) {
        appendPen(out, m_pen);
    }
    if (m_link.length > 0) {
        appendLink(out, m_link);
    }
    return out;
}

} // namespace orv
