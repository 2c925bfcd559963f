#pragma once

#include <QByteArray>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <expected>

namespace orv {

/// Runs a tool to its end for what it prints. Blocking; any thread but the main one.
namespace ShellRunner {

struct Output {
    int exitCode = 0; ///< 128 + the signal when one ended it
    QByteArray text;  ///< its standard output; the standard error goes nowhere
};
enum class Failure { notStarted, tooLate, tooMuchOutput, cancelled };
using Result = std::expected<Output, Failure>;

struct Limits {
    std::chrono::milliseconds time = std::chrono::seconds(30);
    qsizetype outputBytes = 16 * 1024 * 1024; ///< looked at ten times a second
};

/// Starts the program of the first word, in a session of its own and with nothing to read. Whatever ends it early ends
/// its whole process group.
[[nodiscard]] Result run(const QStringList& arguments, const Limits& limits, const std::atomic<bool>& isCancelled);

/// The words that run a line under the login shell.
[[nodiscard]] QStringList shellWords(const QString& line);
/// Runs such words; what the shell's profiles print before the line begins is not in the text.
[[nodiscard]] Result runLine(const QStringList& shellWords, const Limits& limits, const std::atomic<bool>& isCancelled);

} // namespace ShellRunner
} // namespace orv
