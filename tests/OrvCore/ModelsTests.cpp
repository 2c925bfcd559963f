#include "OrvCore/Models.h"
#include "OrvCore/Paths.h"
#include "OrvCore/Settings.h"
#include "OrvCore/Tasks.h"
#include "OrvCore/WidgetSnapshot.h"
#include "tests/support/TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

QJsonObject object(const QByteArray& text) {
    const QJsonDocument document = QJsonDocument::fromJson(text);
    EXPECT_TRUE(document.isObject()) << text.toStdString();
    return document.object();
}

/// Decoded and encoded again, or the error's text.
template <typename Record>
QByteArray roundTrip(const QByteArray& text) {
    const Decoded<Record> record = Record::fromJson(object(text));
    return record ? QJsonDocument(record->toJson()).toJson(QJsonDocument::Compact) : record.error().text().toUtf8();
}

struct RecordCase {
    const char* label;
    QByteArray (*roundTrip)(const QByteArray&);
    QByteArray json;
    QByteArray expected = {}; ///< empty: the same JSON
};

} // namespace

TEST(Records, ComeBackFromJsonAsTheyAreOrSayWhatIsWrong) {
    const auto target = [](const char* members) {
        return QByteArray(R"({"command":"go run .","directory":"file:///w/shop")") + members + "}";
    };
    const auto task = [](const char* created) {
        return QByteArray(R"({"createdAt":)") + created +
               R"(,"id":"0B5FDA6C-6A7C-4F0B-9D7E-2A4C0C8E8F11","notes":"","projectID":"/w","projectName":"w","title":"t"})";
    };
    const QByteArray project =
        R"({"id":"/w/a b","name":"a b","root":"file:///w/a%20b","targets":[{"command":"x","directory":"file:///w/a%20b",)"
        R"("kind":"docker"},{"command":"","directory":"file:///w","framework":"Go","kind":"backend","port":"80"}]})";
    const auto number = [](const QByteArray& text) { return QByteArray(text).replace("\"80\"", "80"); };
    const RecordCase cases[] = {
        {"neither framework nor port", roundTrip<ServiceTarget>, target(R"(,"kind":"app")")},
        {"all members", roundTrip<ServiceTarget>, target(R"(,"framework":"Go","kind":"backend","port":8080)")},
        {"null is absent", roundTrip<ServiceTarget>, target(R"(,"kind":"app","port":null)"),
         target(R"(,"kind":"app")")},
        {"capitalised kind", roundTrip<ServiceTarget>, target(R"(,"kind":"Frontend")"),
         R"("kind" must be one of frontend, backend, flutter, docker, app)"},
        {"port with a fraction", roundTrip<ServiceTarget>, target(R"(,"kind":"app","port":80.5)"),
         R"("port" must be a whole number)"},
        {"port out of range", roundTrip<ServiceTarget>, target(R"(,"kind":"app","port":4294967376)"),
         R"("port" must be a whole number)"},
        {"web address", roundTrip<ServiceTarget>, R"({"kind":"app","directory":"https://a/b","command":""})",
         R"("directory" must be a file URL)"},
        {"nested records", roundTrip<Project>, number(project)},
        {"the way to a nested error", roundTrip<Project>, project, R"("targets[1].port" must be a whole number)"},
        {"milliseconds", roundTrip<ProjectTask>, task("785000000.123")},
        {"before 2001", roundTrip<ProjectTask>, task("-1.001")},
        {"a date no calendar holds", roundTrip<ProjectTask>, task("1e300"),
         R"("createdAt" must be a number of seconds)"},
        {"no id", roundTrip<ProjectTask>, task("1").replace("0B5F", "zzzz"), R"("id" must be a UUID)"},
        {"the way into a map", roundTrip<AppSettings>,
         R"({"displayName":"S","scanRoot":"file:///w","showDockIcon":true,"pinnedProjectIDs":[],"agentFiles":{"/w":[1]}})",
         R"("agentFiles./w[0]" must be a string)"},
        {"empty lists stay", roundTrip<WidgetSnapshot>, R"({"openTaskCount":0,"pinned":[],"running":[],"tasks":[]})"},
        {"no port, no key", roundTrip<WidgetSnapshot>,
         R"({"openTaskCount":2,"pinned":[{"id":"/w","name":"w"}],"running":[{"kind":"app","projectName":"w"}],)"
         R"("tasks":[{"done":true,"projectName":"w","title":"t"}]})"},
    };
    for (const RecordCase& row : cases) {
        EXPECT_EQ(row.roundTrip(row.json), row.expected.isEmpty() ? row.json : row.expected) << row.label;
    }
}

TEST(AppSettings, TakesTheDefaultForEveryAbsentMemberButTheFirstFour) {
    const QByteArray basic =
        R"({"displayName":"Sam","scanRoot":"file:///w/","showDockIcon":false,"pinnedProjectIDs":["/w"]})";
    const QByteArray written =
        R"({"agentAutonomy":"edit","agentFiles":{},"agentWorktrees":false,"appearance":"system","customAgentCommand":"","defaultAgent":"claude",)"
        R"("defaultBranch":"main","defaultPullStrategy":"ffOnly","dismissedCTAs":[],"displayName":"Sam","editorCommand":"",)"
        R"("notificationsEnabled":false,"notifyAdded":true,"notifyAgents":true,"notifyCrash":true,)"
        R"("notifyOnlyInBackground":true,"notifyReady":true,"onboardingCompleted":false,"pinnedProjectIDs":["/w"],)"
        R"("quickPanelShortcutEnabled":true,"scanRoot":"file:///w","showDockIcon":false,"terminalClipboard":"ask","theme":"ember",)"
        R"("viewMode":"cards","widgetsConfirmed":false})";
    EXPECT_EQ(roundTrip<AppSettings>(basic), written);
    const AppSettings defaults = AppSettings::defaults();
    EXPECT_EQ(defaults.scanRoot, Paths::realHome() + u"/Documents/Quillmere"_s);
    EXPECT_TRUE(defaults.showDockIcon && defaults.pinnedProjectIDs.isEmpty());

    for (const auto key : {"displayName"_L1, "scanRoot"_L1, "showDockIcon"_L1, "pinnedProjectIDs"_L1}) {
        QJsonObject json = object(basic);
        json.remove(key);
        const auto without = AppSettings::fromJson(json);
        EXPECT_EQ(without ? QString() : without.error().field, key);
    }
}

TEST(AppSettings, WritesEveryMemberUnderItsNameAndReadsItBack) {
    // Every value differs from its default, so that a member under a wrong key shows.
    const QByteArray full =
        R"({"agentAutonomy":"full","agentFiles":{"/v":[],"/w":[".env"]},"agentWorktrees":true,"appearance":"dark","avatarColorHex":"#fff","avatarPhotoPath":"/p.png",)"
        R"("customAgentCommand":"aider","defaultAgent":"antigravity","defaultBranch":"trunk","defaultPullStrategy":"rebase",)"
        R"("dismissedCTAs":["a","b","c"],"displayName":"Zoë","editorCommand":"code -g {file}","lastRun":{"action":"Both","projectID":"/w"},"notificationsEnabled":true,)"
        R"("notifyAdded":false,"notifyAgents":false,"notifyCrash":false,"notifyOnlyInBackground":false,"notifyReady":false,)"
        R"("onboardingCompleted":true,"pinnedProjectIDs":["/w","/v"],"quickPanelShortcutEnabled":false,"scanRoot":"file:///w",)"
        R"("showDockIcon":false,"terminalClipboard":"off","theme":"graphite","viewMode":"folders","widgetsConfirmed":true})";
    EXPECT_EQ(roundTrip<AppSettings>(full), full);
    const QJsonObject read = object(full);
    EXPECT_EQ(read.size(), 29);
    const QJsonObject plain = AppSettings::defaults().toJson();
    for (const QString& key : plain.keys()) {
        EXPECT_NE(plain.value(key), read.value(key)) << key.toStdString();
        QJsonObject wrong = read;
        wrong.insert(key, QJsonArray{QJsonValue::Null});
        EXPECT_FALSE(AppSettings::fromJson(wrong)) << key.toStdString();
    }
}

TEST(Project, IsFullStackWithAFrontEndAndABackEnd) {
    using enum ServiceKind;
    const std::pair<QList<ServiceKind>, bool> cases[] = {
        {{}, false},
        {{frontend}, false},
        {{frontend, docker, flutter, app}, false},
        {{docker, backend, frontend}, true}};
    for (const auto& [kinds, expected] : cases) {
        Project project;
        for (const ServiceKind kind : kinds) {
            project.targets.append({.kind = kind, .directory = {}, .framework = {}, .command = {}, .port = {}});
        }
        EXPECT_EQ(project.isFullStack(), expected) << kinds.size() << " targets";
    }
}

TEST(Greeter, NamesThePartOfTheDayInTheZone) {
    const std::pair<int, const char*> cases[] = {{4, "night"},      {5, "morning"},    {11, "morning"},
                                                 {12, "afternoon"}, {17, "afternoon"}, {18, "evening"},
                                                 {21, "evening"},   {22, "night"},     {0, "night"}};
    const QTimeZone zone(3 * 3600);
    for (const auto& [hour, part] : cases) {
        const QDateTime date = QDateTime(QDate(2024, 5, 1), QTime(hour, 59), zone).toUTC();
        EXPECT_EQ(Greeter::greeting(date, u"Sam"_s, zone), u"Good %1, Sam"_s.arg(QLatin1StringView(part))) << hour;
    }
}
