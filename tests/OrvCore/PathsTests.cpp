#include "OrvCore/LoginShell.h"
#include "OrvCore/Paths.h"
#include "OrvCore/ScratchFolder.h"
#include "OrvCore/Settings.h"
#include "OrvCore/WidgetSnapshot.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <array>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>

using namespace orv;
using namespace Qt::StringLiterals;

TEST(ScratchFolder, TakesAwayWhatAKilledProcessHasLeft) {
    const test::TemporaryTree tree;
    const test::ScopedEnvironment place("TMPDIR", QFile::encodeName(tree.path()).constData());
    const QDir folders(tree.path());
    const auto names = [&] { return folders.entryList(QDir::Dirs | QDir::NoDotAndDotDot); };
    std::optional<ScratchFolder> inUse(std::in_place);
    ASSERT_TRUE(inUse->isValid()) << inUse->errorString().toStdString();
    const QString used = names().value(0);
    const auto makeOld = [&](const QString& name) {
        const std::array<timespec, 2> longAgo{};
        EXPECT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(folders.filePath(name)), longAgo.data(), 0), 0);
    };
    // As a killed one leaves them: with a lock that nobody holds, or killed before it made one.
    const QStringList left{used + u"-early"_s, used + u"-killed"_s};
    for (const QString& name : left) {
        ASSERT_TRUE(folders.mkdir(name));
    }
    ASSERT_TRUE(QFile::copy(inUse->filePath(u"lock"_s), folders.filePath(left.last() + u"/lock"_s)));
    {
        const ScratchFolder next;
        EXPECT_TRUE(next.isValid() && names().contains(left.first()) && names().contains(left.last()))
            << "they may just be made";
    }
    for (const QString& name : left + QStringList{used}) {
        makeOld(name);
    }
    {
        const ScratchFolder next;
        EXPECT_EQ(names().size(), 2) << names().join(u' ').toStdString();
        EXPECT_TRUE(names().contains(used)) << "it is in use";
    }
    inUse.reset();
    EXPECT_EQ(names(), QStringList());
}

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
