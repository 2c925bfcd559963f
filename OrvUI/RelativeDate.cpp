#include "OrvUI/RelativeDate.h"

#include <QTimeZone>

#include <algorithm>
#include <array>

namespace orv::RelativeDate {

using namespace Qt::StringLiterals;

namespace {

struct Span {
    qint64 until; ///< it is used for fewer than these
    qint64 unit;
    QStringView one;      ///< for one unit
    QStringView unitName; ///< for several; empty: there is one only
};
constexpr std::array daySpans{
    Span{1, 1, u"today", u""},      Span{2, 1, u"yesterday", u""},     Span{7, 1, u"", u"days"},
    Span{14, 7, u"last week", u""}, Span{31, 7, u"", u"weeks"},        Span{61, 30, u"last month", u""},
    Span{365, 30, u"", u"months"},  Span{730, 365, u"last year", u""},
};
constexpr qint64 recentSeconds = 12 * 60 * 60;

QString counted(qint64 count, const QString& unit) {
    return QString::number(count) + u' ' + unit + (count == 1 ? u" ago"_s : u"s ago"_s);
}

} // namespace

QString day(const QDateTime& date, const QDateTime& now) {
    const qint64 days = std::max<qint64>(0, date.toTimeZone(now.timeZone()).date().daysTo(now.date()));
    for (const Span& span : daySpans) {
        if (days < span.until) {
            return span.unitName.isEmpty() ? span.one.toString()
                                           : u"%1 %2 ago"_s.arg(days / span.unit).arg(span.unitName);
        }
    }
    return u"%1 years ago"_s.arg(days / 365);
}

QString moment(const QDateTime& date, const QDateTime& now) {
    const qint64 seconds = std::max<qint64>(0, date.secsTo(now));
    if (seconds < 60) {
        return u"just now"_s;
    }
    if (seconds < 60 * 60) {
        return counted(seconds / 60, u"minute"_s);
    }
    return seconds < recentSeconds ? counted(seconds / (60 * 60), u"hour"_s) : day(date, now);
}

} // namespace orv::RelativeDate
