#include "OrvProcess/ShellRunner.h"

#include "OrvCore/LoginShell.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QStandardPaths>

#include <csignal>
#include <optional>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv::ShellRunner {

Result run(const QStringList& arguments, const Limits& limits, const std::atomic<bool>& isCancelled) {
    constexpr int lookEveryMilliseconds = 100;
    // Left to find that out by itself, QProcess of Qt 6.4 leaks a descriptor.
    if (QStandardPaths::findExecutable(arguments.first()).isEmpty()) {
        return std::unexpected(Failure::notStarted);
    }
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setChildProcessModifier([] { ::setsid(); });
    process.start(arguments.first(), arguments.sliced(1));
    if (!process.waitForStarted()) {
        return std::unexpected(Failure::notStarted);
    }
    const auto group = static_cast<pid_t>(process.processId());
    const QDeadlineTimer deadline(limits.time);
    std::optional<Failure> failure;
    while (!process.waitForFinished(lookEveryMilliseconds) && process.state() != QProcess::NotRunning && !failure) {
        if (isCancelled) {
            failure = Failure::cancelled;
        } else if (deadline.hasExpired()) {
            failure = Failure::tooLate;
        } else if (process.bytesAvailable() > limits.outputBytes) {
            failure = Failure::tooMuchOutput;
        }
    }
    if (failure) {
        ::kill(-group, SIGKILL);
        process.waitForFinished();
        return std::unexpected(*failure);
    }
    const int code = process.exitCode();
    return Output{process.exitStatus() == QProcess::CrashExit ? 128 + code : code, process.readAllStandardOutput()};
}

QStringList shellWords(const QString& line) {
    return {loginShell(), u"-lc"_s, line};
}

Result runLine(const QStringList& shellWords, const Limits& limits, const std::atomic<bool>& isCancelled) {
    static const QByteArray mark = "orvlauncher begins here\n";
    QStringList words = shellWords;
    words.last().prepend(u"echo 'orvlauncher begins here'; "_s);
    Result result = run(words, limits, isCancelled);
    if (const qsizetype begin = result ? result->text.indexOf(mark) : -1; begin >= 0) {
        result->text.remove(0, begin + mark.size());
    }
    return result;
}

} // namespace orv::ShellRunner
