#include "OrvUI/ErrorLines.h"

#include <algorithm>
#include <array>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

/// With which a report begins, in any case; not followed by another letter ("errors: 0" is none).
constexpr std::array<QStringView, 6> openings{u"error", u"fatal", u"panic", u"uncaught", u"traceback", u"unhandled"};
constexpr QStringView crosses = u"✕✖✗✘❌⨯×";

struct Mark {
    QStringView text;
    bool isWord; ///< stands alone; else it ends the name of an exception: "TypeError:"
};
constexpr std::array marks{
    Mark{u"ERROR", true},  Mark{u"FATAL", true},  Mark{u"CRITICAL", true},   Mark{u"PANIC", true},
    Mark{u"SEVERE", true}, Mark{u"Error", false}, Mark{u"Exception", false},
};

bool isWordCharacter(QChar character) {
    return character.isLetterOrNumber() || character == u'_';
}

bool isMarkAt(QStringView line, qsizetype at, const Mark& mark) {
    // Of the letters alone nearly every line is known to have none.
    if (line[at] != mark.text[0] || line[at + 1] != mark.text[1] || !line.sliced(at).startsWith(mark.text)) {
        return false;
    }
    const qsizetype end = at + mark.text.size();
    if (!mark.isWord) {
        return end < line.size() && line[end] == u':';
    }
    return (at == 0 || !isWordCharacter(line[at - 1])) && (end == line.size() || !isWordCharacter(line[end]));
}

bool opensReport(QStringView line, qsizetype indent) {
    qsizetype at = indent;
    while (at < line.size() && !isWordCharacter(line[at])) {
        if (crosses.contains(line[at])) {
            return true;
        }
        ++at;
    }
    const QStringView rest = line.sliced(at);
    const auto begins = [&](QStringView word) {
        return rest.startsWith(word, Qt::CaseInsensitive) &&
               (rest.size() == word.size() || !isWordCharacter(rest[word.size()]));
    };
    if (std::ranges::any_of(openings, begins)) {
        return true;
    }
    for (; at + 1 < line.size(); ++at) {
        const char16_t letter = line[at].unicode();
        const bool mayBegin = letter == u'E' || letter == u'F' || letter == u'C' || letter == u'P' || letter == u'S';
        if (mayBegin && std::ranges::any_of(marks, [&](const Mark& mark) { return isMarkAt(line, at, mark); })) {
            return true;
        }
    }
    return false;
}

qsizetype indentOf(QStringView line) {
    qsizetype at = 0;
    while (at < line.size() && line[at].isSpace()) {
        ++at;
    }
    return at;
}

/// "> 24 |   return lines": a line of code as compilers show it.
bool isCodeFrame(QStringView line) {
    qsizetype at = 0;
    while (at < line.size() && (line[at] == u' ' || line[at] == u'>' || line[at].isDigit())) {
        ++at;
    }
    return at > 0 && at < line.size() && (line[at] == u'|' || line[at] == u'│');
}

} // namespace

ErrorLines::Place ErrorLines::take(QStringView line) {
    const qsizetype indent = indentOf(line);
    if (m_isInside && indent < line.size() && (indent > m_indent || isCodeFrame(line))) {
        return Place::below;
    }
    const bool isFirst = opensReport(line, indent);
    const bool wasInside = std::exchange(m_isInside, isFirst);
    if (isFirst) {
        m_indent = indent;
        // The last line of a Python report names the exception that the first one announced.
        return wasInside ? Place::below : Place::first;
    }
    return Place::none;
}

} // namespace orv
