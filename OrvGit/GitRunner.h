#pragma once

#include "OrvCore/ChildProcess.h"
#include "OrvGit/GitError.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <optional>

namespace orv {

using GitArguments = QList<QByteArray>;

/// The outcome of one run.
struct GitResult {
    qint32 code = 0; ///< the exit status; 128 + the signal when one ended it
    QByteArray output;
    QByteArray errors;
    bool isCut = false; ///< there was more output than was allowed, and git was stopped

    /// As text, what is not UTF-8 repaired.
    [[nodiscard]] QString stdoutText() const { return QString::fromUtf8(output); }
    [[nodiscard]] QString stderrText() const { return QString::fromUtf8(errors); }
    [[nodiscard]] GitError error() const { return GitError::classify(stderrText(), code); }
};

/// Ends the runs of every runner that it was given to. Copies are the same one; any thread.
class GitCancellation {
public:
    GitCancellation();
    void cancel() const;
    [[nodiscard]] bool isCancelled() const;
    /// Readable once it is cancelled; -1 when the system had none left.
    [[nodiscard]] int descriptor() const;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

/// Who wants a run.
enum class GitPurpose {
    userAction, ///< may use the keyring, the agent or a dialog that the user has set up; never a terminal
    background, ///< takes no lock, asks nobody for anything, starts no program that a repository's own configuration
                ///< names
};

/// The one place that starts git: it fixes the program, the environment and the folder, ends what takes too long with
/// its whole process group, and says why something failed. A value; its functions block, on any thread.
///
/// Arguments reach git as a list. Its standard input is "/dev/null" or the bytes given, its session is its own, so that
/// neither it nor what it starts can ask on a terminal.
struct GitRunner {
    EnvironmentEntries extraEnvironment; ///< over the fixed entries
    GitPurpose purpose = GitPurpose::userAction;
    std::optional<GitCancellation> cancellation;

    using Limit = std::chrono::milliseconds;
    static constexpr Limit noLimit = Limit::max();

    struct Options {
        QByteArray input;
        qsizetype outputLimitBytes = std::numeric_limits<qsizetype>::max();
    };

    /// A status other than 0 is no error here. A command that found the index locked is run again for up to two
    /// seconds.
    [[nodiscard]] GitOutcome<GitResult> runRaw(
        const GitArguments& arguments, const QString& folder, Limit limit, const Options& options) const;
    [[nodiscard]] GitOutcome<GitResult> runRaw(
        const GitArguments& arguments, const QString& folder, Limit limit) const {
        return runRaw(arguments, folder, limit, Options{});
    }
    /// The standard output; any other status than 0 is the error that it means.
    [[nodiscard]] GitOutcome<QByteArray> run(
        const GitArguments& arguments, const QString& folder, Limit limit, const Options& options) const;
    [[nodiscard]] GitOutcome<QByteArray> run(const GitArguments& arguments, const QString& folder, Limit limit) const {
        return run(arguments, folder, limit, Options{});
    }
    /// The exit status. Without a time limit; every line of either output goes to `onLine` as soon as it has ended, be
    /// it with a line feed or with a carriage return, on the calling thread.
    [[nodiscard]] GitOutcome<qint32> stream(
        const GitArguments& arguments, const QString& folder, const std::function<void(const QString&)>& onLine) const;

    /// "/usr/bin/git"; where that is missing, the first git of the search path.
    [[nodiscard]] static QString executable();
};

/// The last lines that were added, for what is to be said of a long run. One thread.
class LineTail {
public:
    void add(const QString& line);
    [[nodiscard]] QString text() const { return m_lines.join(u'\n'); }

private:
    QStringList m_lines;
};

} // namespace orv
