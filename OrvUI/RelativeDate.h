#pragma once

#include <QDateTime>
#include <QString>

namespace orv::RelativeDate {

/// How long ago a day is, in the zone of `now`: "today", "yesterday", "2 days ago", "last week", "3 months ago". What
/// lies ahead is today.
[[nodiscard]] QString day(const QDateTime& date, const QDateTime& now);
/// The same with the time of the last twelve hours: "just now", "5 minutes ago", "2 hours ago".
[[nodiscard]] QString moment(const QDateTime& date, const QDateTime& now);

} // namespace orv::RelativeDate
