#include "OrvUI/RelativeDate.h"

#include <QCoreApplication>
#include <QTimeZone>

#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace orv::RelativeDate {

using namespace Qt::StringLiterals;

namespace {

struct Span {
    qint64 until; ///< it is used for fewer than these
    qint64 unit;
    const char* text; ///< "%1" is the number of units
};
constexpr std::array daySpans{
    Span{1, 1, QT_TRANSLATE_NOOP("RelativeDate", "today")},
    Span{2, 1, QT_TRANSLATE_NOOP("RelativeDate", "yesterday")},
    Span{7, 1, QT_TRANSLATE_NOOP("RelativeDate", "%1 days ago")},
    Span{14, 7, QT_TRANSLATE_NOOP("RelativeDate", "last week")},
    Span{31, 7, QT_TRANSLATE_NOOP("RelativeDate", "%1 weeks ago")},
    Span{61, 30, QT_TRANSLATE_NOOP("RelativeDate", "last month")},
    Span{365, 30, QT_TRANSLATE_NOOP("RelativeDate", "%1 months ago")},
    Span{730, 365, QT_TRANSLATE_NOOP("RelativeDate", "last year")},
    Span{std::numeric_limits<qint64>::max(), 365, QT_TRANSLATE_NOOP("RelativeDate", "%1 years ago")},
};
constexpr std::array recentSpans{
    Span{60, 60, QT_TRANSLATE_NOOP("RelativeDate", "just now")},
    Span{2 * 60, 60, QT_TRANSLATE_NOOP("RelativeDate", "1 minute ago")},
    Span{60 * 60, 60, QT_TRANSLATE_NOOP("RelativeDate", "%1 minutes ago")},
    Span{2 * 60 * 60, 60 * 60, QT_TRANSLATE_NOOP("RelativeDate", "1 hour ago")},
    Span{12 * 60 * 60, 60 * 60, QT_TRANSLATE_NOOP("RelativeDate", "%1 hours ago")},
};

/// Empty where there is no span for it.
QString text(std::span<const Span> spans, qint64 value) {
    const auto span = std::ranges::find_if(spans, [value](const Span& its) { return value < its.until; });
    return span == spans.end() ? QString()
                               : QCoreApplication::translate("RelativeDate", span->text)
                                     .replace(u"%1"_s, QString::number(value / span->unit));
}

} // namespace

QString day(const QDateTime& date, const QDateTime& now) {
    return text(daySpans, std::max<qint64>(0, date.toTimeZone(now.timeZone()).date().daysTo(now.date())));
}

QString moment(const QDateTime& date, const QDateTime& now) {
    const QString recent = text(recentSpans, std::max<qint64>(0, date.secsTo(now)));
    return recent.isEmpty() ? day(date, now) : recent;
}

} // namespace orv::RelativeDate
