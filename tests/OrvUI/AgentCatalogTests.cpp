#include "OrvUI/AgentCatalog.h"
#include "tests/support/TestSupport.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;
using test::ScopedEnvironment;

namespace {

/// A home whose login shell finds the agents in "bin" and in ".local/bin" alone.
class AgentCatalogTest : public ::testing::Test {
protected:
    AgentCatalogTest() {
        tree.add(u"bin/"_s);
        tree.add(u".zprofile"_s, "echo Agent pid 4242; PATH=\"$HOME/bin:/usr/bin:/bin\"\n");
        tree.add(u".profile"_s, "echo Agent pid 4242; PATH=\"$HOME/bin:/usr/bin:/bin\"\n");
    }

    void addProgram(const QString& path, const QByteArray& script) {
        const QString program = tree.add(path, "#!/bin/sh\n" + script);
        QFile::setPermissions(program, QFile::permissions(program) | QFile::ExeOwner);
    }

    /// "codex 1.2 signed-in, custom".
    QString installed(const AgentCatalog& catalog) {
        QStringList parts;
        for (const AgentKind kind : allAgentKinds) {
            const AgentStatus status = catalog.status(kind);
            if (status.installed) {
                const bool isSignedIn = status.signIn == AgentStatus::SignIn::found;
                parts << rawValue(kind) + (status.version ? u' ' + *status.version : QString()) +
                             (isSignedIn ? u" signed-in"_s : QString());
            }
            EXPECT_TRUE(status.installed || status == AgentStatus{}) << rawValue(kind).toStdString();
        }
        return parts.join(u", "_s);
    }

    test::TemporaryTree tree;
    const ScopedEnvironment home{"HOME", tree.path().toUtf8().constData()};
    const ScopedEnvironment zsh{"ZDOTDIR", tree.path().toUtf8().constData()};
    const ScopedEnvironment keys[5]{
        {"ANTHROPIC_API_KEY", nullptr},
        {"GEMINI_API_KEY", nullptr},
        {"GOOGLE_API_KEY", nullptr},
        {"CODEX_API_KEY", nullptr},
        {"CLAUDE_CONFIG_DIR", nullptr}};
};

} // namespace

TEST_F(AgentCatalogTest, AsksThePrograms) {
    QString custom;
    AgentCatalog catalog(
        {.shell = {}, .antigravityApp = tree.path(u"Antigravity.app"_s), .customCommand = [&] { return custom; }});
    const auto refreshed = [&] {
        const QFuture<void> first = catalog.refresh();
        const QFuture<void> second = catalog.refresh();
        EXPECT_TRUE(catalog.isLoading());
        EXPECT_TRUE(test::waitFor([&] { return first.isFinished() && second.isFinished(); }));
        EXPECT_FALSE(catalog.isLoading());
        return installed(catalog);
    };
    EXPECT_TRUE(catalog.statuses().isEmpty());
    EXPECT_EQ(refreshed(), u""_s);

    addProgram(u"bin/claude"_s, "echo ' 2.1.0 (Claude Code) '; echo more; echo no >&2\n");
    addProgram(
        u".local/bin/codex"_s, "[ \"$1\" = --version ] && echo codex-cli 0.9 || test -e \"$HOME/codex-login\"\n");
    addProgram(u"bin/gemini"_s, "echo broken; exit 1\n");
    addProgram(u"bin/agy"_s, "exit 0\n");
    custom = u" \n "_s;
    EXPECT_EQ(refreshed(), u"claude 2.1.0 (Claude Code), codex codex-cli 0.9, antigravity"_s);
    EXPECT_TRUE(catalog.hasCommandLine(AgentKind::antigravity));
    EXPECT_FALSE(catalog.hasCommandLine(AgentKind::gemini));

    QFile::remove(tree.path(u"bin/agy"_s));
    tree.add(u"Antigravity.app/"_s);
    tree.add(u".claude/.credentials.json"_s, "x");
    tree.add(u"codex-login"_s);
    addProgram(u"bin/gemini"_s, "echo 1.0\n");
    custom = u"mytool"_s;
    const ScopedEnvironment key("GEMINI_API_KEY", "x");
    EXPECT_EQ(
        refreshed(), u"claude 2.1.0 (Claude Code) signed-in, codex codex-cli 0.9 signed-in, gemini 1.0 signed-in, "
                     "antigravity, custom"_s);
    EXPECT_FALSE(catalog.hasCommandLine(AgentKind::antigravity));
}

TEST_F(AgentCatalogTest, EndsWhatHangsWhenItGoes) {
    addProgram(u"bin/claude"_s, "mkfifo \"$HOME/fifo\"; cat \"$HOME/fifo\"\n");
    const auto before = test::ProcessResources::now();
    {
        AgentCatalog catalog({.shell = {}, .antigravityApp = {}, .customCommand = {}});
        const QFuture<void> refresh = catalog.refresh();
        ASSERT_TRUE(test::waitFor([&] { return QFile::exists(tree.path(u"fifo"_s)); }));
        EXPECT_FALSE(refresh.isFinished());
    }
    EXPECT_TRUE(test::waitFor([&] { return test::ProcessResources::now() == before; }));
}
