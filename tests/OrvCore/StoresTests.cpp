#include "OrvCore/OverrideStore.h"
#include "OrvCore/Settings.h"
#include "OrvCore/Tasks.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;
using orv::test::readFile;
using orv::test::TemporaryTree;
using orv::test::waitFor;

namespace {

void setTheme(SettingsStore& store, ThemeID theme) {
    EXPECT_TRUE(store.change([theme](AppSettings& settings) { settings.theme = theme; }));
}

QStringList titles(const QList<ProjectTask>& tasks) {
    QStringList found;
    for (const ProjectTask& task : tasks) {
        found.append(task.title);
    }
    return found;
}

} // namespace

TEST(SettingsStore, WritesForTheUserAloneAndKeepsWhatOnlyANewerVersionKnows) {
    TemporaryTree tree;
    const QString path = tree.path(u"deep/er/settings.json"_s);
    SettingsStore store(path);
    ASSERT_TRUE(store.save());
    for (const QString& made : {path, tree.path(u"deep/er"_s)}) {
        EXPECT_FALSE(QFile::permissions(made) & (QFile::ReadGroup | QFile::ReadOther)) << made.toStdString();
    }
    QJsonObject json = QJsonDocument::fromJson(readFile(path)).object();
    json.insert("panes"_L1, QJsonArray{1, 2});
    tree.add(u"deep/er/settings.json"_s, QJsonDocument(json).toJson());
    setTheme(store, ThemeID::ocean);
    json.insert("theme"_L1, "ocean"_L1);
    EXPECT_EQ(QJsonDocument::fromJson(readFile(path)).object(), json);
}

TEST(SettingsStore, NoticesWhatIsChangedFromOutside) {
    TemporaryTree tree;
    const QString folder = tree.path(u"support"_s);
    const QString path = folder + u"/settings.json"_s;
    SettingsStore store(path);
    const auto replace = [&path](ThemeID theme) {
        SettingsStore outside(path);
        setTheme(outside, theme);
    };
    const auto editInPlace = [&] { tree.add(u"support/settings.json"_s, readFile(path).replace("forest", "violet")); };
    struct Case {
        const char* label;
        std::function<void()> act;
        ThemeID expected;
    };
    const Case cases[] = {
        {"the first file", [&] { replace(ThemeID::ocean); }, ThemeID::ocean},
        {"replaced", [&] { replace(ThemeID::forest); }, ThemeID::forest},
        {"written in place", editInPlace, ThemeID::violet},
        {"replaced after it was spoiled and set aside",
         [&] {
             tree.add(u"support/settings.json"_s, "{");
             replace(ThemeID::forest);
         },
         ThemeID::forest},
        {"written in place then", editInPlace, ThemeID::violet},
        {"removed with its folder", [&] { EXPECT_TRUE(QDir(folder).removeRecursively()); }, ThemeID::ember},
        {"back with its folder", [&] { replace(ThemeID::ocean); }, ThemeID::ocean},
        {"removed", [&] { EXPECT_TRUE(QFile::remove(path)); }, ThemeID::ember},
    };
    for (const Case& row : cases) {
        int changes = 0;
        const QObject context;
        QObject::connect(&store, &SettingsStore::settingsChanged, &context, [&changes] { ++changes; });
        row.act();
        EXPECT_TRUE(waitFor([&] { return changes > 0 && store.settings().theme == row.expected; }))
            << row.label << ": " << rawValue(store.settings().theme).toStdString();
    }
}

TEST(SettingsStore, WritesTheFileThatASymbolicLinkLeadsTo) {
    const TemporaryTree tree;
    const QString path = tree.path(u"settings.json"_s);
    ASSERT_TRUE(QFile::link(tree.path(u"dotfiles/mine.json"_s), path));
    SettingsStore store(path);
    setTheme(store, ThemeID::ocean);
    EXPECT_TRUE(QFileInfo(path).isSymLink());
    EXPECT_TRUE(readFile(tree.path(u"dotfiles/mine.json"_s)).contains("ocean"));

    ASSERT_TRUE(QFile::link(tree.path(u"elsewhere/late.json"_s), tree.path(u"late.json"_s)));
    ASSERT_TRUE(QDir().mkpath(tree.path(u"elsewhere"_s)));
    const SettingsStore waiting(tree.path(u"late.json"_s));
    ASSERT_TRUE(QFile::copy(tree.path(u"dotfiles/mine.json"_s), tree.path(u"elsewhere/late.json"_s)));
    EXPECT_TRUE(waitFor([&] { return waiting.settings().theme == ThemeID::ocean; })) << "a link that led nowhere";
}

TEST(OverrideStore, RemovesWithAnAbsentValueAndTakesInWhatOthersWrote) {
    const TemporaryTree tree;
    const QString path = tree.path(u"overrides.json"_s);
    const QString key = OverrideStore::key(u"/w/shop/api"_s, ServiceKind::backend);
    EXPECT_EQ(key, u"/w/shop/api|backend"_s);
    OverrideStore store(path);
    OverrideStore other(path);
    const Override port{.kind = {}, .command = {}, .port = 4000};
    ASSERT_TRUE(store.set(key, port));
    ASSERT_TRUE(other.set(u"/w|app"_s, Override{.kind = ServiceKind::docker, .command = u"x"_s, .port = {}}));
    EXPECT_EQ(other.override(key), port);
    EXPECT_EQ(store.override(u"/w|app"_s), std::nullopt);
    quint64 generation = store.generation();
    EXPECT_TRUE(store.reload());
    EXPECT_FALSE(store.reload());
    EXPECT_EQ(store.generation(), ++generation);
    ASSERT_TRUE(other.set(u"/v|app"_s, port));
    ASSERT_TRUE(store.set(u"/v|app"_s, std::nullopt)); // takes in and takes away what was never shown here
    EXPECT_EQ(store.generation(), generation);
    ASSERT_TRUE(store.set(key, std::nullopt));
    EXPECT_EQ(store.generation(), ++generation);
    const auto json = QJsonDocument::fromJson(readFile(path));
    EXPECT_EQ(json, QJsonDocument::fromJson(R"({"/w|app":{"command":"x","kind":"docker"}})"));
}

TEST(TaskStore, KeepsTheOrderAndTellsWhatWasDoneLast) {
    const TemporaryTree tree;
    const QString path = tree.path(u"tasks.json"_s);
    TaskStore store(path);
    const QDateTime day = QDateTime(QDate(2024, 5, 1), QTime(9, 0, 0, 250), Qt::UTC);
    QList<QUuid> ids;
    for (const int minute : {3, 1, 5, 4, 2}) {
        ids.append(store.add(u"t%1"_s.arg(minute), {}, minute % 2 == 0 ? u"/even"_s : u"/odd"_s, u"p"_s));
        ASSERT_TRUE(store.setDone(ids.last(), true, day.addSecs(qint64{60} * minute)));
    }
    EXPECT_EQ(titles(store.recentlyDone(3)), QStringList({u"t5"_s, u"t4"_s, u"t3"_s}));
    EXPECT_EQ(titles(store.recentlyDone(99)).size(), 5);
    EXPECT_EQ(titles(store.tasks(u"/odd"_s)), QStringList({u"t3"_s, u"t1"_s, u"t5"_s}));
    EXPECT_EQ(store.openCount(), 0);

    ASSERT_TRUE(store.setDone(ids[0], false, day));
    ASSERT_TRUE(store.rename(ids[1], u"renamed"_s, u"notes"_s));
    ASSERT_TRUE(store.remove(ids[2]));
    const QByteArray before = readFile(path);
    ASSERT_TRUE(store.rename(QUuid::createUuid(), u"nobody's"_s, {}));
    EXPECT_EQ(readFile(path), before);
    const QJsonArray written = QJsonDocument::fromJson(before).array();
    EXPECT_FALSE(written[0].toObject().contains("doneAt"_L1));
    EXPECT_EQ(written[1].toObject().value("doneAt"_L1).toDouble(), 736'246'860.25); // counted from 2001
    EXPECT_EQ(TaskStore(path).tasks(), store.tasks());
    EXPECT_EQ(titles(store.tasks()), QStringList({u"t3"_s, u"renamed"_s, u"t4"_s, u"t2"_s}));
    EXPECT_EQ(store.openCount(), 1);
}
