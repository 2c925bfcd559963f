#include "OrvGit/GitService.h"

#include "GitWords_p.h"
#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitParsing.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/RepositoryLayout.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <condition_variable>
#include <mutex>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {
namespace {

/// Lets one status of a repository run at a time: two would read the same work tree at once and be slower both.
class StatusTurn {
public:
    StatusTurn(QString repository, const std::optional<GitCancellation>& cancellation)
        : m_repository(std::move(repository)) {
        constexpr auto look = 50ms;
        std::unique_lock lock(mutex);
        while (running.contains(m_repository) && !(cancellation && cancellation->isCancelled())) {
            freed.wait_for(lock, look);
        }
        m_isMine = !running.contains(m_repository);
        running.insert(m_repository);
    }
    ~StatusTurn() {
        if (m_isMine) {
            const std::scoped_lock lock(mutex);
            running.remove(m_repository);
            freed.notify_all();
        }
    }
    Q_DISABLE_COPY_MOVE(StatusTurn)

private:
    static inline std::mutex mutex;
    static inline std::condition_variable freed;
    static inline QSet<QString> running;

    const QString m_repository;
    bool m_isMine = false;
};

/// git passes by a ".git" that it can't understand, and would do everything to the repository around it.
GitOutcome<void> requireReadable(const QString& repository) {
    return RepositoryLayout::of(repository) || !QFileInfo::exists(repository + u"/.git"_s)
               ? GitOutcome<void>()
               : std::unexpected(GitError::of(GitError::Kind::notARepo));
}

/// The user's configuration may change what these commands print.
GitArguments logCommand(QByteArray format) {
    return {"-c", "log.showSignature=false", "-c", "i18n.logOutputEncoding=UTF-8", "log", std::move(format)};
}

/// A history without a commit is empty; any other failure is one.
GitOutcome<QByteArray> historyOutput(const GitOutcome<GitResult>& result) {
    if (!result) {
        return std::unexpected(result.error());
    }
    if (result->code == 0 || result->errors.contains("does not have any commits yet")) {
        return result->output;
    }
    return std::unexpected(result->error());
}

} // namespace

GitOutcome<void> GitService::perform(
    const QString& folder, const GitArguments& arguments, GitRunner::Limit limit) const {
    if (const auto able = requireReadable(folder); !able) {
        return able;
    }
    const auto output = runner.run(arguments, folder, limit);
    return output ? GitOutcome<void>() : std::unexpected(output.error());
}

GitOutcome<QByteArray> GitService::statusOutput(const QString& repository, const QString& below) const {
    if (const auto able = requireReadable(repository); !able) {
        return std::unexpected(able.error());
    }
    const StatusTurn turn(repository, runner.cancellation);
    GitArguments words{"status", "--porcelain=v2", "--branch", "-z", "--untracked-files=all"};
    if (!below.isEmpty()) {
        words << "--" << GitPath::toBytes(below);
    }
    return runner.run(words, repository, GitLimits::local);
}

GitOutcome<RepoStatus> GitService::status(const QString& repository) const {
    const auto output = statusOutput(repository);
    if (!output) {
        return std::unexpected(output.error());
    }
    return GitParsing::status(*output);
}

GitOutcome<RepoStatus> GitService::statusCounts(const QString& repository, int& changes, const QString& below) const {
    const auto output = statusOutput(repository, below);
    if (!output) {
        return std::unexpected(output.error());
    }
    return GitParsing::statusCounts(*output, changes);
}

GitOutcome<QList<CommitInfo>> GitService::log(const QString& repository, int limit) const {
    GitArguments arguments = logCommand("--format=%H%x1f%s%x1f%an%x1f%at");
    arguments << "-n" << QByteArray::number(std::max(limit, 0));
    const auto output = historyOutput(runner.runRaw(arguments, repository, GitLimits::local));
    if (!output) {
        return std::unexpected(output.error());
    }
    return GitParsing::log(*output);
}

GitOutcome<QList<HistoryEntry>> GitService::history(const QString& repository, const HistoryQuery& query) const {
    if (query.from.startsWith(u'-')) {
        return std::unexpected(GitError::refused(GitWords::tr("“%1” is no commit and no branch.").arg(query.from)));
    }
    GitArguments arguments = logCommand("--format=%H%x1f%s%x1f%an%x1f%at%x1f%ae%x1f%P%x1f%D");
    arguments << "-z" << "--decorate=full" << "-n" << QByteArray::number(std::max(query.limit, 0))
              << "--skip=" + QByteArray::number(std::max(query.skip, 0));
    if (!query.from.isEmpty()) {
        arguments << GitPath::toBytes(query.from);
    }
    arguments << "--";
    if (!query.path.isEmpty()) {
        arguments << GitPath::toBytes(query.path);
    }
    const auto output = historyOutput(runner.runRaw(arguments, repository, GitLimits::local));
    if (!output) {
        return std::unexpected(output.error());
    }
    return GitParsing::history(*output);
}

GitOutcome<QStringList> GitService::branches(const QString& repository) const {
    const auto output =
        runner.run({"branch", "--no-column", "--format=%(refname:short)"}, repository, GitLimits::local);
    if (!output) {
        return std::unexpected(output.error());
    }
    return GitParsing::branches(*output);
}

GitOutcome<QList<BranchInfo>> GitService::branchInfos(const QString& repository) const {
    const auto output = runner.run(
        {"for-each-ref", GitParsing::branchFormat, "refs/heads", "refs/remotes"}, repository, GitLimits::local);
    if (!output) {
        return std::unexpected(output.error());
    }
    return GitParsing::branchInfos(*output);
}

GitOutcome<QList<StashEntry>> GitService::stashes(const QString& repository) const {
    const auto output = runner.run(
        {"-c", "log.showSignature=false", "-c", "i18n.logOutputEncoding=UTF-8", "stash", "list",
         "--format=%H%x1f%gs%x1f%at"},
        repository, GitLimits::local);
    if (!output) {
        return std::unexpected(output.error());
    }
    return GitParsing::stashes(*output);
}

GitOutcome<QString> GitService::headMessage(const QString& repository) const {
    const auto output = historyOutput(runner.runRaw(logCommand("--format=%B") << "-n1", repository, GitLimits::local));
    if (!output) {
        return std::unexpected(output.error());
    }
    return QString::fromUtf8(*output).trimmed();
}

GitOutcome<QString> GitService::topFolder(const QString& folder) const {
    const auto output = runner.run({"rev-parse", "--show-toplevel"}, folder, GitLimits::local);
    if (!output) {
        return std::unexpected(output.error());
    }
    return QFile::decodeName(output->endsWith('\n') ? output->chopped(1) : *output);
}

GitOutcome<OperationState> GitService::operation(const QString& repository) const {
    const auto layout = RepositoryLayout::of(repository);
    if (!layout) {
        return std::unexpected(GitError::of(GitError::Kind::notARepo));
    }
    OperationState state = layout->operation();
    if (layout->kind != RepositoryLayout::Kind::bare) {
        const auto paths = conflictedPaths(repository);
        if (!paths) {
            return std::unexpected(paths.error());
        }
        state.conflicts = *paths;
    }
    return state;
}

GitOutcome<QStringList> GitService::conflictedPaths(const QString& repository) const {
    const auto output = runner.run({"diff", "--name-only", "--diff-filter=U", "-z"}, repository, GitLimits::local);
    if (!output) {
        return std::unexpected(output.error());
    }
    QStringList paths = GitParsing::paths(*output);
    paths.removeDuplicates();
    return paths;
}

GitError GitService::errorWithConflicts(const QString& repository, const GitResult& result) const {
    const auto paths = conflictedPaths(repository);
    return paths && !paths->isEmpty() ? GitError::conflicts(*paths) : result.error();
}

GitOutcome<void> GitService::runWithConflicts(
    const QString& repository, const GitArguments& arguments, GitRunner::Limit limit) const {
    if (const auto able = requireReadable(repository); !able) {
        return able;
    }
    const auto result = runner.runRaw(arguments, repository, limit);
    if (!result) {
        return std::unexpected(result.error());
    }
    if (result->code != 0) {
        return std::unexpected(errorWithConflicts(repository, *result));
    }
    return {};
}

} // namespace orv
