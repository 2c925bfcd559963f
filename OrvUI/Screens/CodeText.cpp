#include "OrvUI/Screens/CodeText.h"

#include "OrvUI/CodeHighlighter.h"
#include "OrvUI/Screens/Theme.h"

#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr int tabColumns = 4;

/// The terminal's colour of each token, in the order of CodeToken.
constexpr std::array tokenColors{5, 2, 4, 6, 3, 8};

void append(QString& out, QStringView text, int& column) {
    for (const QChar letter : text) {
        switch (letter.unicode()) {
        case u'\t':
            do {
                out += "&nbsp;"_L1;
            } while (++column % tabColumns != 0);
            continue;
        case u' ':
            out += "&nbsp;"_L1;
            break;
        case u'<':
            out += "&lt;"_L1;
            break;
        case u'>':
            out += "&gt;"_L1;
            break;
        case u'&':
            out += "&amp;"_L1;
            break;
        default:
            out += letter;
        }
        ++column;
    }
}

/// Appends a line with the pieces between pairs of `mark` in `begin` and `end`; what stands outside goes to `outside`.
template <typename Outside>
void appendMarked(
    QString& out, QStringView line, QStringView mark, const QString& begin, const QString& end, Outside outside) {
    while (true) {
        const qsizetype first = line.indexOf(mark);
        const qsizetype second = first < 0 ? -1 : line.indexOf(mark, first + mark.size());
        if (second <= first + mark.size()) {
            outside(line);
            return;
        }
        outside(line.first(first));
        out += begin + line.sliced(first + mark.size(), second - first - mark.size()).toString().toHtmlEscaped() + end;
        line = line.sliced(second + mark.size());
    }
}

} // namespace

QString CodeText::styled(const QString& text, const QList<int>& spans, bool dark, int theme) {
    Q_UNUSED(dark)
    Q_UNUSED(theme)
    QString out;
    out.reserve(text.size() * 2);
    int column = 0;
    qsizetype at = 0;
    for (qsizetype i = 0; i + 2 < spans.size(); i += 3) {
        const qsizetype start = qBound(at, qsizetype(spans[i]), text.size());
        const qsizetype end = qBound(start, start + spans[i + 1], text.size());
        const auto token = static_cast<size_t>(spans[i + 2]);
        append(out, QStringView(text).sliced(at, start - at), column);
        const QColor color = Theme::instance()->ansi(tokenColors.at(std::min(token, tokenColors.size() - 1)));
        out += "<font color=\""_L1 + color.name() + "\">"_L1;
        append(out, QStringView(text).sliced(start, end - start), column);
        out += "</font>"_L1;
        at = end;
    }
    append(out, QStringView(text).sliced(at), column);
    return out;
}

QString CodeText::matched(const QString& text, const QList<int>& letters, bool dark, int theme) {
    Q_UNUSED(dark)
    Q_UNUSED(theme)
    const QString begin = "<b><font color=\""_L1 + Theme::instance()->accentText().name() + "\">"_L1;
    QString out;
    int column = 0;
    bool isOpen = false;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool isHit = letters.contains(static_cast<int>(at));
        if (isHit != isOpen) {
            out += isHit ? begin : u"</font></b>"_s;
            isOpen = isHit;
        }
        append(out, QStringView(text).sliced(at, 1), column);
    }
    return isOpen ? out + "</font></b>"_L1 : out;
}

QString CodeText::prose(const QString& text, bool dark, int theme) {
    Q_UNUSED(dark)
    Q_UNUSED(theme)
    const QString code = "<font color=\""_L1 + Theme::instance()->text().name() + "\">"_L1;
    QString out;
    bool isFenced = false;
    bool isFirst = true;
    for (const QStringView line : QStringView(text).split(u'\n')) {
        if (line.trimmed().startsWith(u"```")) {
            isFenced = !isFenced;
            continue;
        }
        if (!isFirst) {
            out += "<br>"_L1;
        }
        isFirst = false;
        if (isFenced) {
            int column = 0;
            out += code;
            append(out, line, column);
            out += "</font>"_L1;
            continue;
        }
        appendMarked(out, line, u"`", code, u"</font>"_s, [&out](QStringView words) {
            appendMarked(out, words, u"**", u"<b>"_s, u"</b>"_s, [&out](QStringView plain) {
                out += plain.toString().toHtmlEscaped();
            });
        });
    }
    return out;
}

} // namespace orv
