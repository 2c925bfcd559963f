#include "OrvUI/DiffModel.h"
#include "tests/support/TestSupport.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

#include <random>

using namespace Qt::StringLiterals;
using namespace orv;

namespace {

QString text(const DiffModel& model) {
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        QStringList values;
        for (const int role :
             {DiffModel::kind, DiffModel::text, DiffModel::oldNumber, DiffModel::newNumber, DiffModel::hunk,
              DiffModel::isSelected, DiffModel::endsWithoutLineFeed}) {
            values.append(model.index(row).data(role).toString());
        }
        rows.append(values.join(u'|'));
    }
    return rows.join(u'\n');
}

/// A diff of one file whose hunks each replace some of the letters of a line.
FileDiff made(const QByteArray& hunks) {
    const QList<FileDiff> files = parseDiff("diff --git a/f b/f\n--- a/f\n+++ b/f\n" + hunks);
    return files.isEmpty() ? FileDiff() : files.first();
}

FileDiff madeAtRandom(std::mt19937& random) {
    QByteArray hunks;
    int line = 1;
    for (auto count = random() % 4; count > 0; --count) {
        QByteArray body;
        int olds = 0;
        int news = 0;
        for (auto lines = 1 + random() % 5; lines > 0; --lines) {
            const auto kind = random() % 3;
            body += QByteArray(1, " +-"[kind]) + QByteArray(1, static_cast<char>('a' + random() % 3)) + '\n';
            olds += kind == 1 ? 0 : 1;
            news += kind == 2 ? 0 : 1;
        }
        line += static_cast<int>(random() % 3);
        const QByteArray at = QByteArray::number(line);
        hunks +=
            "@@ -" + at + ',' + QByteArray::number(olds) + " +" + at + ',' + QByteArray::number(news) + " @@\n" + body;
        line += 10;
    }
    return made(hunks);
}

} // namespace

TEST(DiffModel, ShowsEveryDiffAsAFreshOneWould) {
    std::mt19937 random(7);
    DiffModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QObject::connect(&model, &QAbstractItemModel::modelReset, &model, [] { ADD_FAILURE() << "reset"; });
    for (int round = 0; round < 400; ++round) {
        const FileDiff diff = madeAtRandom(random);
        model.setDiff(diff);
        DiffModel fresh;
        fresh.setDiff(diff);
        ASSERT_EQ(text(model), text(fresh)) << "round " << round;
        ASSERT_EQ(model.added(), fresh.added());
        if (model.rowCount() > 0) {
            model.setSelected(static_cast<int>(random() % static_cast<unsigned>(model.rowCount())), true);
        }
    }
}

TEST(DiffModel, KeepsTheRowsThatStay) {
    DiffModel model;
    model.setDiff(made("@@ -1,1 +1,1 @@\n-a\n+b\n@@ -20,2 +20,2 @@ fn\n same\n-c\n+d\n"));
    const QPersistentModelIndex kept = model.index(6);
    ASSERT_EQ(kept.data(DiffModel::text), u"d"_s);
    // The first hunk is staged.
    model.setDiff(made("@@ -20,2 +20,2 @@ fn\n same\n-c\n+d\n"));
    ASSERT_TRUE(kept.isValid());
    EXPECT_EQ(kept.row(), 3);
    EXPECT_EQ(kept.data(DiffModel::hunk), 0);
}

TEST(DiffModel, ChoosesLines) {
    DiffModel model;
    const FileDiff diff = made("@@ -1,2 +1,2 @@\n same\n-a\n+b\n@@ -20 +20 @@\n-c\n+d\n");
    model.setDiff(diff);
    model.setSelected(1, true);
    EXPECT_FALSE(model.hasSelection()) << "context can't be chosen";
    model.selectRange(5, 2);
    EXPECT_EQ(model.selection(), (DiffSelection{{0, {1, 2}}, {1, {0}}})) << "and not the rest of the second hunk";
    model.setSelected(4, true);
    EXPECT_EQ(model.selection(), (DiffSelection{{0, {1, 2}}, {1, {0, 1}}})) << "the row of a hunk is all of it";
    model.setSelected(4, false);
    model.setSelected(2, false);
    EXPECT_EQ(model.selection(), (DiffSelection{{0, {2}}}));
    model.setSelected(3, false);
    EXPECT_FALSE(model.hasSelection());
    model.setSelected(3, true);
    model.setDiff(diff);
    EXPECT_TRUE(model.hasSelection()) << "nothing has changed";
    model.setDiff(made("@@ -20 +20 @@\n-c\n+d\n"));
    EXPECT_FALSE(model.hasSelection());
    EXPECT_EQ(model.hunkAt(99), -1);
    EXPECT_TRUE(model.hunkLines(1).empty());
}

TEST(DiffModel, ShowsOddLinesInOne) {
    const QByteArray longLine(5000, 'x');
    DiffModel model;
    model.setDiff(
        made("@@ -0,0 +1,4 @@\n+a\tb\r\n+\x1b[31m\xff\n+" + longLine + "\n+end\n\\ No newline at end of file\n"));
    EXPECT_EQ(model.index(1).data(DiffModel::text), u"a\tb"_s);
    EXPECT_EQ(model.index(2).data(DiffModel::text), u"\u241b[31m\ufffd"_s);
    EXPECT_EQ(model.index(3).data(DiffModel::text).toString().size(), DiffModel::longestText + 1);
    EXPECT_TRUE(model.index(4).data(DiffModel::endsWithoutLineFeed).toBool());
    EXPECT_EQ(model.index(0).data(DiffModel::text), u"@@ -0,0 +1,4 @@"_s);
}
