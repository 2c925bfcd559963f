#include "OrvTerminal/View/Links.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// What ends a sentence, a quotation or a bracket is not a part of an address, unless the bracket began within it.
qsizetype withoutTail(QStringView text, qsizetype first, qsizetype end) {
    const auto count = [&](QChar wanted) { return std::count(text.begin() + first, text.begin() + end, wanted); };
    while (end > first) {
        const QChar last = text[end - 1];
        const bool closes = (last == u')' && count(u'(') < count(u')')) || (last == u']' && count(u'[') < count(u']'));
        if (!closes && !QStringView(u".,;:!?'\"").contains(last)) {
            break;
        }
        --end;
    }
    return end;
}

} // namespace

std::vector<TextLink> linksIn(QStringView text) {
    static const QRegularExpression address(
        uR"((?:(?:https?|ftp|file)://|mailto:)[^\s<>"'`{}|\\^\x{2500}-\x{259F}]+)"_s,
        QRegularExpression::CaseInsensitiveOption);
    // A path has a slash, an ending or a line; that may follow as ":12:5", "(12,5)" or ", line 12" behind quotes.
    static const QRegularExpression file(
        uR"((?<![\w/.~@+-])((?:~|\.{1,2})?(?:/?[\w.@+~-]+/)*[\w.@+~-]*[\w@+~-](?:\.\w+)?|(?:/[\w.@+~-]+)+/?)(?::(\d+)(?::(\d+))?|\((\d+)(?:,(\d+))?\)|["'], line (\d+))?)"_s,
        QRegularExpression::UseUnicodePropertiesOption);

    const QString subject = text.toString();
    std::vector<TextLink> found;
    auto matches = address.globalMatch(subject);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const qsizetype end = withoutTail(text, match.capturedStart(), match.capturedEnd());
        const QStringView url = text.sliced(match.capturedStart(), end - match.capturedStart());
        if (!url.endsWith(u"://") && !url.endsWith(u"mailto:")) {
            found.push_back({match.capturedStart(), end, url.toString()});
        }
    }
    matches = file.globalMatch(subject);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString path = match.captured(1);
        const auto overlaps = [&](const TextLink& link) {
            return match.capturedStart() < link.end && link.first < match.capturedEnd();
        };
        const auto number = [&](int first, int second, int third) {
            return match.captured(first).toInt() + match.captured(second).toInt() + match.captured(third).toInt();
        };
        const int line = number(2, 4, 6);
        const bool looksLikeFile = path.contains(u'/') || path.contains(u'.') || line > 0;
        if (!looksLikeFile || std::ranges::any_of(found, overlaps)) {
            continue;
        }
        found.push_back(
            {match.capturedStart(),
             match.capturedEnd(),
             {},
             path,
             line,
             match.captured(3).toInt() + match.captured(5).toInt()});
    }
    std::ranges::sort(found, {}, &TextLink::first);
    return found;
}

std::optional<TextLink> linkAt(QStringView text, qsizetype place) {
    for (const TextLink& link : linksIn(text)) {
        if (place >= link.first && place < link.end) {
            return link;
        }
    }
    return {};
}

} // namespace orv
