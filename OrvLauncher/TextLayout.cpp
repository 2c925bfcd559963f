#include "TextLayout.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr int gap = 2;
constexpr int narrowest = 8; ///< no column gives way below this

/// SGR parameters (ECMA-48 8.3.117), by style.
constexpr std::array<const char*, 9> sgr{"", "1", "2", "31", "32", "33", "34", "35", "36"};

/// Wide and fullwidth ranges (Unicode, EastAsianWidth.txt), emoji blocks as a whole.
constexpr std::array<std::pair<char32_t, char32_t>, 16> wideRanges{{
    {0x1100, 0x115F},
    {0x2E80, 0x303E},
    {0x3041, 0x33FF},
    {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF},
    {0xA000, 0xA4CF},
    {0xA960, 0xA97C},
    {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},
    {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60},
    {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF},
    {0x1F900, 0x1F9FF},
    {0x20000, 0x3FFFD},
}};

int columns(char32_t c) {
    const QChar::Category category = QChar::category(c);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing || category == QChar::Other_Format) {
        return 0;
    }
    const auto holds = [c](const auto& range) { return c >= range.first && c <= range.second; };
    return std::any_of(wideRanges.begin(), wideRanges.end(), holds) ? 2 : 1;
}

int columns(const QList<uint>& characters) {
    return std::accumulate(
        characters.begin(), characters.end(), 0, [](int sum, uint c) { return sum + columns(char32_t(c)); });
}

/// How many characters from the front (or the back) fit into `width` columns.
qsizetype fitting(const QList<uint>& characters, int width, bool fromBack) {
    qsizetype count = 0;
    for (; count < characters.size(); ++count) {
        width -= columns(char32_t(characters[fromBack ? characters.size() - 1 - count : count]));
        if (width < 0) {
            break;
        }
    }
    return count;
}

QString fromUcs4(const QList<uint>& characters) {
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(characters.constData()), characters.size());
}

/// The end of the control sequence that starts with the ESC at `start` (ECMA-48 5.3, 5.4, 8.3.89).
qsizetype sequenceEnd(const QString& line, qsizetype start) {
    qsizetype at = start + 1;
    if (at >= line.size()) {
        return at;
    }
    const char16_t kind = line[at].unicode();
    if (kind == u'[') {
        do {
            ++at;
        } while (at < line.size() && line[at].unicode() >= 0x20 && line[at].unicode() < 0x40);
        return std::min(at + 1, line.size());
    }
    if (kind == u']' || kind == u'P' || kind == u'_' || kind == u'^' || kind == u'X') {
        while (++at < line.size()) {
            if (line[at] == u'\x07') {
                return at + 1;
            }
            if (line[at] == u'\x1b' && at + 1 < line.size() && line[at + 1] == u'\\') {
                return at + 2;
            }
        }
        return at;
    }
    while (at < line.size() && line[at].unicode() >= 0x20 && line[at].unicode() < 0x30) {
        ++at;
    }
    return std::min(at + 1, line.size());
}

} // namespace

QString painted(const QString& text, Style style, bool hasColor) {
    if (!hasColor || style == Style::plain || text.isEmpty()) {
        return text;
    }
    return u"\x1b[%1m%2\x1b[0m"_s.arg(QLatin1String(sgr[static_cast<size_t>(style)]), text);
}

int displayWidth(const QString& text) {
    return columns(text.toUcs4());
}

QString elided(const QString& text, int width, Elide where) {
    const QList<uint> characters = text.toUcs4();
    if (columns(characters) <= width) {
        return text;
    }
    if (width < 1) {
        return {};
    }
    const int kept = width - 1;
    const int front = where == Elide::end ? kept : kept / 2;
    return fromUcs4(characters.first(fitting(characters, front, false))) + u'…' +
           fromUcs4(characters.last(fitting(characters, kept - front, true)));
}

QString padded(const QString& text, int width) {
    return text + QString(std::max(0, width - displayWidth(text)), u' ');
}

QString printable(const QString& text) {
    QString result = text;
    for (QChar& c : result) {
        if (c.category() == QChar::Other_Control) {
            c = QChar::ReplacementCharacter;
        }
    }
    return result;
}

QString safeOutputLine(const QString& line, bool hasColor) {
    QString result;
    result.reserve(line.size() + 4);
    bool colored = false;
    for (qsizetype i = 0; i < line.size();) {
        if (line[i] == u'\x1b') {
            const qsizetype end = sequenceEnd(line, i);
            if (hasColor && end - i > 2 && line[i + 1] == u'[' && line[end - 1] == u'm') {
                result += QStringView(line).mid(i, end - i);
                colored = true;
            }
            i = end;
            continue;
        }
        if (line[i] == u'\t' || line[i].category() != QChar::Other_Control) {
            result += line[i];
        }
        ++i;
    }
    if (colored) {
        result += u"\x1b[0m"_s;
    }
    return result;
}

void Table::add(const QStringList& cells) {
    QStringList row;
    row.reserve(cells.size());
    for (const QString& cell : cells) {
        row.append(printable(cell));
    }
    m_rows.append(row);
}

QList<int> Table::widths(int limit) const {
    QList<int> result;
    for (qsizetype column = 0; column < m_columns.size(); ++column) {
        int widest = displayWidth(m_columns[column].title);
        for (const QStringList& row : m_rows) {
            widest = std::max(widest, displayWidth(row[column]));
        }
        result.append(widest);
    }
    const int gaps = gap * static_cast<int>(m_columns.size() - 1);
    int over = limit > 0 ? std::accumulate(result.begin(), result.end(), gaps) - limit : 0;
    while (over > 0) {
        const auto widest = std::max_element(result.begin(), result.end());
        if (*widest <= narrowest) {
            break;
        }
        --*widest;
        --over;
    }
    return result;
}

QString Table::text(int width, bool hasColor) const {
    const QList<int> columnWidths = widths(width);
    QString result;
    const auto line = [&](const QStringList& cells, bool isHeading) {
        QString row;
        for (qsizetype column = 0; column < m_columns.size(); ++column) {
            const QString cell = elided(cells[column], columnWidths[column], m_columns[column].elide);
            const bool isLast = column + 1 == m_columns.size();
            row += painted(
                isLast ? cell : padded(cell, columnWidths[column]), isHeading ? Style::dim : m_columns[column].style,
                hasColor);
            row += isLast ? QString() : QString(gap, u' ');
        }
        while (row.endsWith(u' ')) {
            row.chop(1);
        }
        result += row + u'\n';
    };
    QStringList titles;
    for (const Column& column : m_columns) {
        titles.append(column.title);
    }
    line(titles, true);
    for (const QStringList& row : m_rows) {
        line(row, false);
    }
    return result;
}

} // namespace orv
