#include "GitWords_p.h"
#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/GitService.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

const char* flag(PullStrategy strategy) {
    switch (strategy) {
    case PullStrategy::ffOnly:
        return "--ff-only";
    case PullStrategy::merge:
        return "--no-rebase";
    case PullStrategy::rebase:
        return "--rebase";
    }
    Q_UNREACHABLE();
}

/// Whether anything is there, be it a link that leads nowhere.
bool isThere(const QString& path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

} // namespace

GitOutcome<void> GitService::fetch(const QString& repository) const {
    return perform(repository, {"fetch", "--prune"}, GitLimits::remote);
}

GitOutcome<void> GitService::pull(const QString& repository, PullStrategy strategy) const {
    const auto current = status(repository);
    if (!current) {
        return std::unexpected(current.error());
    }
    if (!current->upstream) {
        return std::unexpected(GitError::of(GitError::Kind::noUpstream));
    }
    return runWithConflicts(repository, {"pull", flag(strategy)}, GitLimits::remote);
}

GitOutcome<void> GitService::push(const QString& repository) const {
    const auto current = status(repository);
    if (!current) {
        return std::unexpected(current.error());
    }
    if (!current->branch) {
        return std::unexpected(
            GitError::refused(GitWords::tr("Can't push from a detached HEAD. Switch to a branch first.")));
    }
    if (!current->hasCommits) {
        return std::unexpected(GitError::refused(GitWords::tr("There is nothing to push: there is no commit yet.")));
    }
    const GitArguments words = current->upstream
                                   ? GitArguments{"push"}
                                   : GitArguments{"push", "-u", "origin", GitPath::toBytes(*current->branch)};
    return perform(repository, words, GitLimits::remote);
}

GitOutcome<void> GitService::clone(
    const QString& url, const QString& into, const QString& name,
    const std::function<void(const QString&)>& onLine) const {
    if (url.trimmed().isEmpty()) {
        return std::unexpected(GitError::refused(GitWords::tr("Enter the address of a repository first.")));
    }
    if (!isFolderName(name)) {
        return std::unexpected(GitError::refused(GitWords::tr("“%1” is not a name for a folder.").arg(name)));
    }
    const QString target = into + u'/' + name;
    if (isThere(target)) {
        return std::unexpected(GitError::refused(GitWords::tr("“%1” exists already.").arg(name)));
    }
    LineTail tail;
    const auto code = runner.stream(
        {"clone", "--progress", "--", url.trimmed().toUtf8(), GitPath::toBytes(name)}, into, [&](const QString& line) {
            // Progress says nothing about a failure.
            if (!parseCloneProgress(line)) {
                tail.add(line);
            }
            onLine(line);
        });
    if (!code) {
        if (code.error().kind == GitError::Kind::cancelled) {
            // git does it itself, unless it had to be killed.
            QDir(target).removeRecursively();
        }
        return std::unexpected(code.error());
    }
    if (*code != 0) {
        return std::unexpected(GitError::classify(tail.text(), *code));
    }
    return {};
}

} // namespace orv
