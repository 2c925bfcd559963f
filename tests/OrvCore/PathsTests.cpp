#include "OrvCore/LoginShell.h"
#include "OrvCore/Paths.h"
#include "OrvCore/Settings.h"
#include "OrvCore/WidgetSnapshot.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

TEST(Paths, AFileUrlStandsForAPathAndNothingElseDoes) {
    struct Case {
        QString url;
        QString path;
        bool isOurSpelling = false;
    };
    const Case cases[] = {
        {u"file:///"_s, u"/"_s, true},
        {u"file:///w/a%20b%23c%3Fd%2520e%3Bf"_s, u"/w/a b#c?d%20e;f"_s, true},
        {u"file:///w/Zo%C3%AB/%E6%97%A5%E6%9C%AC"_s, u"/w/Zoë/日本"_s, true},
        {u"file:////double"_s, u"//double"_s, true},
        {u"file:///w/%5Bx%5D@y:z"_s, u"/w/[x]@y:z"_s, true},
        {u"file:///w/x/"_s, u"/w/x"_s},
        {u"file://localhost/w"_s, u"/w"_s},
        {u"file:///My Projects"_s, u"/My Projects"_s}, // as a person writes it
        {u"file://server/share"_s, {}},
        {u"https:///w"_s, {}},
        {u"/w"_s, {}},
        {u"file:w"_s, {}},
        {u"file:///w?x"_s, {}},
        {u"file:///w#x"_s, {}},
        {u"file:///w%00x"_s, {}},
        {{}, {}},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(Paths::pathOfFileUrl(row.url), row.path) << row.url.toStdString();
        EXPECT_TRUE(!row.isOurSpelling || Paths::fileUrl(row.path) == row.url)
            << row.url.toStdString() << ", but " << Paths::fileUrl(row.path).toStdString();
    }
}

TEST(Paths, TheEnvironmentMovesTheSupportFolder) {
    const orv::test::ScopedEnvironment elsewhere("ORV_SUPPORT_DIR", "/tmp/elsewhere/");
    EXPECT_EQ(Paths::supportDirectory(), u"/tmp/elsewhere"_s);
    EXPECT_EQ(SharedContainer::defaultDirectory(), u"/tmp/elsewhere/widgets"_s);
#ifndef Q_OS_MACOS
    const orv::test::ScopedEnvironment unset("ORV_SUPPORT_DIR", nullptr);
    const orv::test::ScopedEnvironment data("XDG_DATA_HOME", "/tmp/data");
    EXPECT_EQ(Paths::supportDirectory(), u"/tmp/data/OrvLauncher"_s);
#endif
}

TEST(LoginShell, PassesOverWhatRunsNoPosixCommandLine) {
    struct Case {
        const char* label;
        QString accountShell;
        QStringList executable;
        QString expected;
    };
    const Case cases[] = {
        {"zsh first", u"/bin/bash"_s, {u"/bin/zsh"_s, u"/bin/bash"_s}, u"/bin/zsh"_s},
        {"the account's own", u"/opt/bin/bash"_s, {u"/opt/bin/bash"_s, u"/bin/sh"_s}, u"/opt/bin/bash"_s},
        {"the account's is gone", u"/opt/bin/bash"_s, {u"/bin/sh"_s}, u"/bin/sh"_s},
        {"an account without login", u"/usr/sbin/nologin"_s, {u"/usr/sbin/nologin"_s}, u"/bin/sh"_s},
        {"another language", u"/usr/bin/fish"_s, {u"/usr/bin/fish"_s}, u"/bin/sh"_s},
        {"no record", {}, {}, u"/bin/sh"_s},
    };
    for (const Case& row : cases) {
        const auto isExecutable = [&row](const QString& path) { return row.executable.contains(path); };
        EXPECT_EQ(loginShell(row.accountShell, isExecutable), row.expected) << row.label;
    }
}

TEST(AppSettings, GreetsByTheFirstWordOfTheAccountsName) {
    const std::pair<QString, QString> cases[] = {
        {u"Sam Rivera"_s, u"Sam"_s}, {u"  Sam"_s, u"Sam"_s}, {{}, u"there"_s}, {u" "_s, u"there"_s}};
    for (const auto& [account, name] : cases) {
        EXPECT_EQ(AppSettings::displayNameFor(account), name) << account.toStdString();
    }
}
