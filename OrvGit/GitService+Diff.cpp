#include "GitWords_p.h"
#include "OrvGit/DiffCommand_p.h"
#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/GitService.h"

#include <QFile>

#include <algorithm>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

GitArguments arguments(const DiffRequest& request) {
    GitArguments words = diffCommand("diff");
    switch (request.side) {
    case DiffSide::untracked:
        words << "--no-index" << "--" << "/dev/null";
        break;
    case DiffSide::staged:
        words << "--cached" << "--";
        break;
    case DiffSide::unstaged:
        words << "--";
        break;
    }
    words << GitPath::toBytes(request.path);
    if (!request.originalPath.isEmpty() && request.side != DiffSide::untracked) {
        words << GitPath::toBytes(request.originalPath);
    }
    return words;
}

GitOutcome<GitResult> runDiff(const GitRunner& runner, const QString& repository, const DiffRequest& request) {
    auto result = runner.runRaw(
        arguments(request), repository, GitLimits::local,
        {.input = {}, .outputLimitBytes = GitService::largestDiffBytes});
    // With `--no-index`, 1 says that there are differences.
    const int expected = request.side == DiffSide::untracked ? 1 : 0;
    if (result && result->code != 0 && result->code != expected) {
        return std::unexpected(result->error());
    }
    return result;
}

/// What can be said of a file without comparing it.
DiffContent contentInWorkTree(const QString& repository, const DiffRequest& request) {
    struct stat info{};
    const QByteArray path = QFile::encodeName(repository) + '/' + GitPath::toBytes(request.path);
    if (request.side == DiffSide::staged || ::lstat(path.constData(), &info) != 0) {
        return DiffContent::text;
    }
    if (request.side == DiffSide::untracked && S_ISDIR(info.st_mode)) {
        return DiffContent::folder;
    }
    return S_ISREG(info.st_mode) && info.st_size > largestDiffedFileBytes ? DiffContent::tooLarge : DiffContent::text;
}

bool isFolder(const QString& repository, const QString& path) {
    struct stat info{};
    const QByteArray place = QFile::encodeName(repository) + '/' + GitPath::toBytes(path);
    return ::lstat(place.constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

/// A large file is a binary one to git.
bool isLargeInIndex(const GitRunner& runner, const QString& repository, const DiffRequest& request) {
    const auto size =
        runner.run({"cat-file", "-s", ":0:" + GitPath::toBytes(request.path)}, repository, GitLimits::local);
    return size && size->trimmed().toLongLong() > largestDiffedFileBytes;
}

} // namespace

DiffRequest DiffRequest::of(const FileChange& change) {
    return {
        .path = change.path,
        .originalPath = change.originalPath,
        .side = change.isUntracked()                          ? DiffSide::untracked
                : change.isStaged() && !change.isConflicted() ? DiffSide::staged
                                                              : DiffSide::unstaged,
    };
}

GitOutcome<FileDiff> GitService::fileDiff(const QString& repository, const DiffRequest& request) const {
    const QByteArray path = GitPath::toBytes(request.path);
    FileDiff found;
    found.oldPath = path;
    found.newPath = path;
    found.content = contentInWorkTree(repository, request);
    if (found.content != DiffContent::text) {
        return found;
    }
    const auto result = runDiff(runner, repository, request);
    if (!result) {
        return std::unexpected(result.error());
    }
    QList<FileDiff> files = parseDiff(result->output);
    const auto file = std::ranges::find(files, path, &FileDiff::path);
    if (file != files.end()) {
        found = std::move(*file);
    } else if (!files.isEmpty()) {
        found = files.takeLast();
    } else if (request.side == DiffSide::unstaged && isFolder(repository, request.path)) {
        found.content = DiffContent::submodule; // with untracked files only
    }
    if (result->isCut || (found.content == DiffContent::binary && isLargeInIndex(runner, repository, request))) {
        found.content = DiffContent::tooLarge;
    }
    return found;
}

GitOutcome<QList<FileDiff>> GitService::commitDiff(const QString& repository, const QString& commit) const {
    if (commit.isEmpty() || commit.startsWith(u'-')) {
        return std::unexpected(GitError::refused(GitWords::tr("“%1” is no commit.").arg(commit)));
    }
    // A partial clone may have to fetch the files first.
    const auto limit = runner.purpose == GitPurpose::userAction ? GitLimits::remote : GitLimits::local;
    GitArguments words = diffCommand("show");
    words << "--format=" << "--no-show-signature" << "--diff-merges=first-parent" << commit.toUtf8() << "--";
    const auto result = runner.runRaw(words, repository, limit, {.input = {}, .outputLimitBytes = largestDiffBytes});
    if (!result) {
        return std::unexpected(result.error());
    }
    if (result->code != 0) {
        return std::unexpected(result->error());
    }
    QList<FileDiff> files = parseDiff(result->output);
    if (result->isCut && !files.isEmpty()) {
        files.back().content = DiffContent::tooLarge;
    }
    return files;
}

GitOutcome<void> GitService::applyLines(
    const QString& repository, const DiffRequest& request, const FileDiff& shown, const DiffSelection& selection,
    PatchTarget target, PatchDirection direction) const {
    // As it was taken to be shown: a filter that only the user's own commands run would make it another one.
    GitService looking = *this;
    looking.runner.purpose = GitPurpose::background;
    const auto current = looking.fileDiff(repository, request);
    if (!current) {
        return std::unexpected(current.error());
    }
    if (*current != shown) {
        return std::unexpected(GitError::refused(
            GitWords::tr("“%1” has changed in the meantime. Look at it again first.").arg(request.path)));
    }
    if (!current->canBeDivided()) {
        return std::unexpected(GitError::refused(
            current->content == DiffContent::submodule
                ? u"“%1” is a repository of its own. Commit or discard its changes there."_s.arg(request.path)
                : u"“%1” can only be taken as a whole."_s.arg(request.path)));
    }
    const auto patch = makePatch(*current, selection, direction);
    if (!patch) {
        return std::unexpected(
            GitError::refused(GitWords::tr("No changed line of “%1” is selected.").arg(request.path)));
    }
    GitArguments words{"-c", "apply.ignoreWhitespace=no", "apply", "--whitespace=nowarn"};
    if (target == PatchTarget::index) {
        words << "--cached";
    }
    if (direction == PatchDirection::reverse) {
        words << "--reverse";
    }
    words << "-";
    const auto done = runner.run(words, repository, GitLimits::local, {.input = *patch});
    return done ? GitOutcome<void>() : std::unexpected(done.error());
}

GitOutcome<void> GitService::stageLines(
    const QString& repository, const DiffRequest& request, const FileDiff& shown,
    const DiffSelection& selection) const {
    Q_ASSERT_X(request.side != DiffSide::staged, "stageLines", "what is staged can't be staged again");
    return applyLines(repository, request, shown, selection, PatchTarget::index, PatchDirection::forward);
}

GitOutcome<void> GitService::unstageLines(
    const QString& repository, const DiffRequest& request, const FileDiff& shown,
    const DiffSelection& selection) const {
    Q_ASSERT_X(request.side == DiffSide::staged, "unstageLines", "only what is staged can be unstaged");
    return applyLines(repository, request, shown, selection, PatchTarget::index, PatchDirection::reverse);
}

GitOutcome<void> GitService::discardLines(
    const QString& repository, const DiffRequest& request, const FileDiff& shown,
    const DiffSelection& selection) const {
    Q_ASSERT_X(request.side != DiffSide::staged, "discardLines", "what is staged is unstaged first");
    return applyLines(repository, request, shown, selection, PatchTarget::workTree, PatchDirection::reverse);
}

} // namespace orv
