#include "OrvUI/RowModel.h"

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace Qt::StringLiterals;
using namespace orv;

namespace {

struct Row {
    QString key;
    int value = 0;
    bool operator==(const Row&) const = default;
    static const std::vector<RowRole<Row>>& roles() {
        static const std::vector<RowRole<Row>> table{
            {"key", [](const Row& row) { return QVariant(row.key); }},
            {"value", [](const Row& row) { return QVariant(row.value); }}};
        return table;
    }
};

/// "a1 b c": each row a letter and its value.
QList<Row> rows(const QString& text) {
    QList<Row> found;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        found.append({word.first(1), word.sliced(1).toInt()});
    }
    return found;
}

QString text(const QAbstractListModel& model) {
    QStringList words;
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = model.index(row);
        const int value = index.data(Qt::UserRole + 1).toInt();
        words.append(index.data(Qt::UserRole).toString() + (value == 0 ? QString() : QString::number(value)));
    }
    return words.join(u' ');
}

/// A model under the tester, with its changes written down: "+1,2" "-0,0" "0>2" "~1:value".
struct Watched {
    RowModel<Row> model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    QStringList changes;

    explicit Watched(const QString& start) {
        model.setRows(rows(start));
        const auto note = [this](const QString& sign) {
            return [this, sign](const QModelIndex&, int first, int last) {
                changes.append(u"%1%2,%3"_s.arg(sign).arg(first).arg(last));
            };
        };
        QObject::connect(&model, &QAbstractItemModel::rowsInserted, &model, note(u"+"_s));
        QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &model, note(u"-"_s));
        QObject::connect(
            &model, &QAbstractItemModel::rowsMoved, &model,
            [this](const QModelIndex&, int from, int, const QModelIndex&, int to) {
                changes.append(u"%1>%2"_s.arg(from).arg(to));
            });
        QObject::connect(
            &model, &QAbstractItemModel::dataChanged, &model,
            [this](const QModelIndex& first, const QModelIndex& last, const QList<int>& roles) {
                EXPECT_EQ(first, last);
                for (const int role : roles) {
                    changes.append(u"~%1:%2"_s.arg(first.row()).arg(QString::fromUtf8(model.roleNames()[role])));
                }
            });
        QObject::connect(&model, &QAbstractItemModel::modelReset, &model, [] { ADD_FAILURE() << "reset"; });
    }
};

} // namespace

TEST(RowModel, ChangesOnlyWhatDiffers) {
    const struct {
        const char* label;
        QString from, to, changes;
    } cases[] = {
        {"a value", u"a b1 c"_s, u"a b2 c"_s, u"~1:value"_s},
        {"filled in one go", u""_s, u"a b c"_s, u"+0,2"_s},
        {"two gaps filled", u"a d"_s, u"a b c d e"_s, u"+1,2 +4,4"_s},
        {"two taken out", u"a b c d"_s, u"b d"_s, u"-2,2 -0,0"_s},
        {"one comes forward", u"a b c d"_s, u"d a b c"_s, u"3>0"_s},
        {"moved and changed", u"a b"_s, u"b5 a"_s, u"1>0 ~0:value"_s},
    };
    for (const auto& [label, from, to, changes] : cases) {
        Watched watched(from);
        watched.model.setRows(rows(to));
        EXPECT_EQ(text(watched.model), to) << label;
        EXPECT_EQ(watched.changes.join(u' '), changes) << label;
    }
}

TEST(RowModel, KeepsEachRowsIdentityThroughAnyChange) {
    std::mt19937 random(20);
    QString letters = u"abcdefghijklmnop"_s;
    Watched watched({});
    for (int round = 0; round < 300; ++round) {
        QHash<QString, QPersistentModelIndex> before;
        for (int row = 0; row < watched.model.rowCount(); ++row) {
            before.insert(watched.model.index(row).data(Qt::UserRole).toString(), watched.model.index(row));
        }
        std::ranges::shuffle(letters, random);
        const QString chosen = letters.first(static_cast<qsizetype>(random() % 17));
        const QString wanted = QStringList(chosen.split(QString(), Qt::SkipEmptyParts)).join(u' ');
        watched.model.setRows(rows(wanted));
        ASSERT_EQ(text(watched.model), wanted);
        for (auto entry = before.begin(); entry != before.end(); ++entry) {
            const QString now = entry->isValid() ? entry->data(Qt::UserRole).toString() : QString();
            ASSERT_EQ(now, chosen.contains(entry.key()) ? entry.key() : QString()) << "round " << round;
        }
    }
}
