#include "OrvCore/CommandBuilder.h"
#include "OrvProcess/ShellRunner.h"
#include "tests/support/TestSupport.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <thread>

using namespace orv;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

TEST(ShellRunner, GivesTheOutputAndHowItEnded) {
    const std::atomic<bool> isCancelled = false;
    const struct {
        QString line;
        QByteArray text;
        int code;
    } cases[] = {
        {u"echo out; echo complaint >&2; exit 3"_s, "out\n", 3},
        {u"printf 'no end'; kill -TERM $$"_s, "no end", 143},
        {u"cat"_s, "", 0},
        {u"head -c 300000 /dev/zero | tr '\\0' x"_s, QByteArray(300'000, 'x'), 0},
    };
    for (const auto& [line, text, code] : cases) {
        const auto result = ShellRunner::run(ShellRunner::shellWords(line), {}, isCancelled);
        ASSERT_TRUE(result) << line.toStdString();
        EXPECT_EQ(result->text, text) << line.toStdString();
        EXPECT_EQ(result->exitCode, code) << line.toStdString();
    }
    // What a profile says is not the line's, with or without an end.
    test::TemporaryTree tree;
    for (const QString& profile : {u".zprofile"_s, u".profile"_s}) {
        tree.add(profile, "echo Agent pid 4242; printf 'Hello '\n");
    }
    const test::ScopedEnvironment home("HOME", tree.path().toUtf8().constData());
    const test::ScopedEnvironment zsh("ZDOTDIR", tree.path().toUtf8().constData());
    for (const auto& [line, text, code] : cases) {
        const auto result = ShellRunner::runLine(ShellRunner::shellWords(line), {}, isCancelled);
        ASSERT_TRUE(result) << line.toStdString();
        EXPECT_EQ(result->text, text) << line.toStdString();
        EXPECT_EQ(result->exitCode, code) << line.toStdString();
    }
}

TEST(ShellRunner, EndsTheWholeGroupOfWhatIsTooLateTooLongOrUnwanted) {
    test::TemporaryTree tree;
    const auto hang = [&](const QString& name) {
        const QString fifo = CommandBuilder::quote(tree.path(name));
        return ShellRunner::shellWords(u"mkfifo %1; exec 9<>%1; (trap '' TERM; cat <&9) & wait"_s.arg(fifo));
    };
    std::atomic<bool> isCancelled = false;
    const auto failure = [&](const QStringList& words, const ShellRunner::Limits& limits) {
        const auto result = ShellRunner::run(words, limits, isCancelled);
        return result ? std::optional<ShellRunner::Failure>() : result.error();
    };
    const auto before = test::ProcessResources::now();
    EXPECT_EQ(failure({tree.path(u"nothing"_s)}, {}), ShellRunner::Failure::notStarted);
    EXPECT_EQ(failure(hang(u"first"_s), {.time = 300ms}), ShellRunner::Failure::tooLate);
    EXPECT_EQ(
        failure(ShellRunner::shellWords(u"yes"_s), {.time = 60s, .outputBytes = 100'000}),
        ShellRunner::Failure::tooMuchOutput);
    std::thread canceller([&] {
        while (!QFileInfo::exists(tree.path(u"second"_s))) {
            std::this_thread::yield();
        }
        isCancelled = true;
    });
    EXPECT_EQ(failure(hang(u"second"_s), {.time = 60s}), ShellRunner::Failure::cancelled);
    canceller.join();
    EXPECT_EQ(test::ProcessResources::now(), before);
}
