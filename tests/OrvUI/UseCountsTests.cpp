#include "OrvUI/UseCounts.h"
#include "tests/support/TestSupport.h"

#include <QFile>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace orv;
using namespace orv::test;

TEST(UseCounts, CountLessTheLongerAgoItIs) {
    const TemporaryTree tree;
    const QString file = tree.path(u"palette.json"_s);
    const QDateTime start(QDate(2026, 3, 1), QTime(9, 0), QTimeZone::utc());
    UseCounts uses(file);
    EXPECT_EQ(uses.of(u"shop"_s, start), 0);
    ASSERT_TRUE(uses.note(u"shop"_s, start));
    ASSERT_TRUE(uses.note(u"shop"_s, start.addDays(14)));
    ASSERT_TRUE(uses.note(u"blog"_s, start.addDays(28)));
    EXPECT_DOUBLE_EQ(uses.of(u"shop"_s, start.addDays(14)), 1.5);
    EXPECT_DOUBLE_EQ(uses.of(u"shop"_s, start.addDays(28)), 0.75) << "the later one is worth more now";
    EXPECT_DOUBLE_EQ(uses.of(u"shop"_s, start.addYears(-1)), 1.5) << "a clock that was set back";

    const UseCounts again(file);
    EXPECT_EQ(again.all(start.addDays(28)), (QMap<QString, double>{{u"blog"_s, 1}, {u"shop"_s, 0.75}}));

    QFile broken(file);
    ASSERT_TRUE(broken.open(QFile::WriteOnly));
    broken.write(R"({"shop": {"count": -1, "at": "2026-03-01T09:00:00.000Z"}})");
    broken.close();
    EXPECT_TRUE(UseCounts(file).all(start).isEmpty());
}

TEST(UseCounts, ForgetWhatIsWorthLeast) {
    const TemporaryTree tree;
    const QDateTime start(QDate(2026, 3, 1), QTime(9, 0), QTimeZone::utc());
    UseCounts uses(tree.path(u"palette.json"_s));
    for (int number = 0; number <= UseCounts::limit; ++number) {
        ASSERT_TRUE(uses.note(QString::number(number), start.addSecs(number * 3600)));
    }
    const QDateTime end = start.addDays(30);
    EXPECT_EQ(uses.all(end).size(), UseCounts::limit);
    EXPECT_EQ(uses.of(u"0"_s, end), 0);
    EXPECT_GT(uses.of(QString::number(UseCounts::limit), end), 0);
}
