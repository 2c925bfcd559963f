#include "OrvGit/TaskWorktree.h"

#include "GitWords_p.h"
#include "OrvCore/RegularFile.h"
#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitParsing.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// Checking a large repository out takes its time.
constexpr auto checkoutLimit = GitLimits::remote;
constexpr qsizetype mostCopies = 1000;
constexpr qint64 largestCopyBytes = qint64{50} * 1024 * 1024;

bool areSame(const QString& one, const QString& other) {
    const auto first = RegularFile::read(one, largestCopyBytes);
    const auto second = RegularFile::read(other, largestCopyBytes);
    return first && second ? *first == *second : !QFileInfo::exists(one) && !QFileInfo::exists(other);
}

QString counted(int count, const QString& one, const QString& many) {
    return count == 1 ? one : many.arg(count);
}

bool isUnderWay(const QString& folder) {
    const auto layout = RepositoryLayout::of(folder);
    return layout && layout->operation().operation != GitOperation::none;
}

} // namespace

QString taskBranchName(const QString& task, const QString& suffix) {
    constexpr qsizetype longest = 40;
    QString words;
    for (const QChar letter : task.trimmed().section(u'\n', 0, 0).normalized(QString::NormalizationForm_KD)) {
        if (letter.unicode() < 0x80 && letter.isLetterOrNumber()) {
            words += letter.toLower();
        } else if (!letter.isMark() && !words.endsWith(u'-')) {
            words += u'-';
        }
        if (words.size() >= longest) {
            break;
        }
    }
    const QStringList parts = words.split(u'-', Qt::SkipEmptyParts) << suffix;
    return u"agent/"_s + parts.join(u'-');
}

QString TaskWorktrees::Loss::text() const {
    QStringList parts;
    if (files > 0) {
        parts.append(counted(files, GitWords::tr("1 changed file"), GitWords::tr("%1 changed files")));
    }
    if (commits > 0) {
        parts.append(counted(commits, GitWords::tr("1 commit"), GitWords::tr("%1 commits")));
    }
    return parts.join(GitWords::tr(" and "));
}

GitOutcome<QString> TaskWorktrees::commitOf(const QString& folder, const QByteArray& name) const {
    const auto hash = runner().run({"rev-parse", "--verify", "--quiet", name + "^{commit}"}, folder, GitLimits::local);
    if (!hash) {
        return std::unexpected(hash.error());
    }
    return QString::fromLatin1(hash->trimmed());
}

bool TaskWorktrees::isUnborn(const QString& repository) const {
    const auto head = commitOf(repository, "HEAD");
    return !head && head.error().kind == GitError::Kind::commandFailed;
}

GitOutcome<TaskWorktree> TaskWorktrees::make(const Request& request) const {
    if (auto named = requireBranchName(request.branch); !named) {
        return std::unexpected(named.error());
    }
    const auto base = commitOf(request.repository, "HEAD");
    if (!base) {
        return std::unexpected(
            isUnborn(request.repository)
                ? GitError::refused(GitWords::tr("There is no commit yet that a work tree could begin at."))
                : base.error());
    }
    if (!QDir().mkpath(QFileInfo(request.folder).path())) {
        return std::unexpected(GitError::refused(GitWords::tr("The folder %1 can't be made.").arg(request.folder)));
    }
    const auto added = runner().run(
        {"worktree", "add", "--quiet", "--no-track", "-b", GitPath::toBytes(request.branch),
         QFile::encodeName(request.folder), base->toLatin1()},
        request.repository, checkoutLimit);
    if (!added) {
        return std::unexpected(added.error());
    }
    TaskWorktree made{request.repository, request.folder, request.branch, *base, {}};
    made.copies = copyInto(made, request);
    return made;
}

/// A file that can't be copied is left out: the task may do without it.
QStringList TaskWorktrees::copyInto(const TaskWorktree& worktree, const Request& request) const {
    QStringList copied;
    if (request.copies.isEmpty()) {
        return copied;
    }
    GitRunner patterns = runner();
    patterns.extraEnvironment.insert(u"GIT_LITERAL_PATHSPECS"_s, u"0"_s);
    for (const QString& pattern : request.copies) {
        const auto listed = patterns.run(
            {"ls-files", "--others", "--full-name", "-z", "--", ":(glob)" + GitPath::toBytes(pattern)},
            request.copiesFrom, GitLimits::local);
        for (const QString& path : listed ? GitParsing::paths(*listed) : QStringList()) {
            const QString name = QFile::decodeName(GitPath::toBytes(path));
            const QFileInfo source(worktree.repository + u'/' + name);
            const QString target = worktree.folder + u'/' + name;
            if (copied.size() < mostCopies && !copied.contains(path) && source.isFile() &&
                source.size() <= largestCopyBytes && QDir().mkpath(QFileInfo(target).path()) &&
                QFile::copy(source.filePath(), target)) {
                copied.append(path);
            }
        }
    }
    return copied;
}

int TaskWorktrees::changedCopies(const TaskWorktree& worktree) {
    return static_cast<int>(std::ranges::count_if(worktree.copies, [&](const QString& path) {
        const QString name = QFile::decodeName(GitPath::toBytes(path));
        const QString copy = worktree.folder + u'/' + name;
        return QFileInfo::exists(copy) && !areSame(copy, worktree.repository + u'/' + name);
    }));
}

GitOutcome<TaskWorktrees::Loss> TaskWorktrees::lossOf(const TaskWorktree& worktree) const {
    Loss loss;
    const bool isThere = QFileInfo(worktree.folder).isDir();
    const QByteArray branch = "refs/heads/" + GitPath::toBytes(worktree.branch);
    GitArguments tips;
    if (isThere) {
        const auto status = m_service.status(worktree.folder);
        if (!status) {
            return std::unexpected(status.error());
        }
        loss.files = changedCopies(worktree);
        for (const FileChange& change : status->changes) {
            loss.files += change.isUntracked() && worktree.copies.contains(change.path) ? 0 : 1;
        }
        if (const auto head = commitOf(worktree.folder, "HEAD")) {
            tips << head->toLatin1();
        }
    }
    if (const auto tip = commitOf(worktree.repository, branch)) {
        tips << tip->toLatin1();
    }
    if (!tips.isEmpty()) {
        const auto count = runner().run(
            GitArguments{"rev-list", "--count"} + tips +
                GitArguments{"--not", worktree.base.toLatin1(), "--exclude=" + branch, "--glob=refs/*"},
            worktree.repository, GitLimits::local);
        if (!count) {
            return std::unexpected(count.error());
        }
        loss.commits = count->trimmed().toInt();
    }
    return loss;
}

GitOutcome<void> TaskWorktrees::discard(const TaskWorktree& worktree, Discard discard) const {
    if (discard == Discard::ifNothingIsLost) {
        const auto loss = lossOf(worktree);
        if (!loss) {
            return std::unexpected(loss.error());
        }
        if (!loss->isNothing()) {
            return std::unexpected(
                GitError::refused(GitWords::tr("%1 would be lost with the work tree.").arg(loss->text())));
        }
    }
    return remove(worktree, "-D");
}

GitOutcome<void> TaskWorktrees::remove(const TaskWorktree& worktree, const QByteArray& branchOption) const {
    const bool isThere = QFileInfo::exists(worktree.folder);
    const GitArguments words = isThere
                                   ? GitArguments{"worktree", "remove", "--force", QFile::encodeName(worktree.folder)}
                                   : GitArguments{"worktree", "prune"};
    if (const auto removed = runner().run(words, worktree.repository, checkoutLimit); !removed) {
        return std::unexpected(removed.error());
    }
    if (!commitOf(worktree.repository, "refs/heads/" + GitPath::toBytes(worktree.branch))) {
        return {};
    }
    const auto deleted = runner().run(
        {"branch", branchOption, "--", GitPath::toBytes(worktree.branch)}, worktree.repository, GitLimits::local);
    return deleted ? GitOutcome<void>() : std::unexpected(deleted.error());
}

/// Whether there was something to commit.
GitOutcome<bool> TaskWorktrees::commitAll(const TaskWorktree& worktree, const QString& message) const {
    GitArguments withoutCopies{"reset", "--quiet", "--"};
    for (const QString& path : worktree.copies) {
        withoutCopies << GitPath::toBytes(path);
    }
    GitOutcome<QByteArray> staged = runner().run({"add", "--all"}, worktree.folder, checkoutLimit);
    if (staged && !worktree.copies.isEmpty()) {
        staged = runner().run(withoutCopies, worktree.folder, GitLimits::local);
    }
    if (!staged) {
        return std::unexpected(staged.error());
    }
    const auto done = m_service.commit(worktree.folder, message, {});
    if (!done && done.error().kind != GitError::Kind::nothingToCommit) {
        return std::unexpected(done.error());
    }
    return done.has_value();
}

/// Without touching anything. A git that can't tell (before 2.38) finds out while it merges.
GitOutcome<void> TaskWorktrees::requireNoConflicts(const QString& repository, const QString& tip) const {
    const auto result = runner().runRaw(
        {"merge-tree", "--write-tree", "--name-only", "--no-messages", "-z", "HEAD", tip.toLatin1()}, repository,
        GitLimits::local);
    if (!result) {
        return std::unexpected(result.error());
    }
    if (result->code != 1) {
        return {};
    }
    const qsizetype afterTree = result->output.indexOf('\0') + 1;
    QStringList paths = GitParsing::paths(result->output.sliced(afterTree));
    paths.removeAll(QString());
    return std::unexpected(GitError::conflicts(paths));
}

GitOutcome<void> TaskWorktrees::merge(const TaskWorktree& worktree, const QString& tip) const {
    if (auto clean = requireNoConflicts(worktree.repository, tip); !clean) {
        return clean;
    }
    const auto result = runner().runRaw(
        {"merge", "--ff", "--no-edit", "--no-autostash", "-m",
         "Merge branch '" + GitPath::toBytes(worktree.branch) + "'", tip.toLatin1()},
        worktree.repository, checkoutLimit);
    if (result && result->code == 0) {
        return {};
    }
    GitError error = result ? result->error() : result.error();
    if (isUnderWay(worktree.repository)) {
        if (const auto state = m_service.operation(worktree.repository); state && !state->conflicts.isEmpty()) {
            error = GitError::conflicts(state->conflicts);
        }
        if (const auto aborted = m_service.abortOperation(worktree.repository); !aborted) {
            return aborted;
        }
    }
    return std::unexpected(error);
}

GitOutcome<TaskWorktrees::AfterMerge> TaskWorktrees::mergeBack(
    const TaskWorktree& worktree, const QString& message) const {
    for (const QString& folder : {worktree.repository, worktree.folder}) {
        if (isUnderWay(folder)) {
            return std::unexpected(
                GitError::refused(GitWords::tr("In %1 git is in the middle of something.").arg(folder)));
        }
    }
    const auto committed = commitAll(worktree, message);
    if (!committed) {
        (void)runner().run({"reset", "--quiet"}, worktree.folder, GitLimits::local);
        return std::unexpected(committed.error());
    }
    const auto tip = commitOf(worktree.folder, "HEAD");
    const GitOutcome<void> merged = tip ? merge(worktree, *tip) : std::unexpected(tip.error());
    if (!merged) {
        if (*committed) {
            (void)runner().run({"reset", "--quiet", "HEAD~1"}, worktree.folder, GitLimits::local);
        }
        return std::unexpected(merged.error());
    }
    if (changedCopies(worktree) > 0) {
        return AfterMerge::kept;
    }
    // "-d": where something else was checked out there, the branch may hold what was not merged.
    const auto removed = remove(worktree, "-d");
    return removed ? AfterMerge::removed : AfterMerge::kept;
}

} // namespace orv
