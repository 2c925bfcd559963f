#include "OrvGit/DiscardedWork.h"

#include "GitWords_p.h"
#include "OrvCore/ScratchFolder.h"
#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/WorkTreeFiles_p.h"

#include <QFile>

#include <algorithm>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr auto refs = "refs/orvlauncher/discarded/";

QByteArray zeroEnded(const QStringList& paths) {
    QByteArray bytes;
    for (const QString& path : paths) {
        bytes += GitPath::toBytes(path) + '\0';
    }
    return bytes;
}

qint64 sizeOf(const QString& repository, const QStringList& paths) {
    qint64 sum = 0;
    for (const QString& path : paths) {
        struct stat info{};
        if (::lstat((QFile::encodeName(repository) + '/' + GitPath::toBytes(path)).constData(), &info) == 0) {
            sum += info.st_size;
        }
    }
    return sum;
}

GitOutcome<QByteArray> ask(
    const GitRunner& runner, const QString& repository, const GitArguments& words, const QByteArray& input = {}) {
    auto output = runner.run(words, repository, GitLimits::local, {.input = input});
    return output ? GitOutcome<QByteArray>(output->trimmed()) : output;
}

/// The tree of the work tree's files: that of the index with what was changed as it is, and without what was removed.
GitOutcome<QByteArray> treeWith(GitRunner runner, const QByteArray& indexTree, const DiscardedWork& kept) {
    const ScratchFolder folder;
    if (!folder.isValid()) {
        return std::unexpected(GitError::refused(folder.errorString()));
    }
    runner.extraEnvironment.insert(u"GIT_INDEX_FILE"_s, folder.filePath(u"index"_s));
    for (const auto& [words, input] :
         {std::pair<GitArguments, QByteArray>{{"read-tree", indexTree}, {}},
          {{"update-index", "--force-remove", "-z", "--stdin"}, zeroEnded(kept.removed)},
          {{"update-index", "--add", "--remove", "--replace", "-z", "--stdin"}, zeroEnded(kept.changed)}}) {
        if (const auto done = ask(runner, kept.repository, words, input); !done) {
            return done;
        }
    }
    return ask(runner, kept.repository, {"write-tree"});
}

/// The tree of the index; where a conflict leaves none, that of the last commit with these paths as they are staged.
GitOutcome<QByteArray> treeOfIndex(
    GitRunner runner, const QString& repository, const RepoStatus& status, const QStringList& paths) {
    if (std::ranges::none_of(status.changes, &FileChange::isConflicted)) {
        return ask(runner, repository, {"write-tree"});
    }
    GitOutcome<QByteArray> entries = QByteArray();
    if (!paths.isEmpty()) {
        GitArguments words{"ls-files", "--stage", "-z", "--"};
        for (const QString& path : paths) {
            words << GitPath::toBytes(path);
        }
        runner.extraEnvironment.insert(u"GIT_LITERAL_PATHSPECS"_s, u"1"_s);
        entries = runner.run(words, repository, GitLimits::local);
    }
    const ScratchFolder folder;
    if (!entries || !folder.isValid()) {
        return entries ? std::unexpected(GitError::refused(folder.errorString())) : entries;
    }
    const auto head = ask(runner, repository, {"rev-parse", "HEAD"});
    if (!head) {
        return head;
    }
    // What is staged as removed has no entry.
    QByteArray wanted;
    for (const QString& path : paths) {
        wanted += "0 " + QByteArray(head->size(), '0') + '\t' + GitPath::toBytes(path) + '\0';
    }
    runner.extraEnvironment.insert(u"GIT_INDEX_FILE"_s, folder.filePath(u"index"_s));
    for (const auto& [words, input] :
         {std::pair<GitArguments, QByteArray>{{"read-tree", "HEAD"}, {}},
          {{"update-index", "-z", "--index-info"}, wanted + *entries}}) {
        if (const auto done = ask(runner, repository, words, input); !done) {
            return done;
        }
    }
    return ask(runner, repository, {"write-tree"});
}

/// Of each path what of it is staged, and how its file is.
GitOutcome<QHash<QString, QByteArray>> statesOf(
    const GitRunner& runner, const QString& repository, const QStringList& paths) {
    const auto entries = runner.run({"ls-files", "--stage", "-z"}, repository, GitLimits::local);
    if (!entries) {
        return std::unexpected(entries.error());
    }
    QHash<QString, QByteArray> states;
    for (const QString& path : paths) {
        states.insert(path, WorkTreeFiles::state(repository, path));
    }
    for (const QByteArray& entry : entries->split('\0')) {
        const qsizetype tab = entry.indexOf('\t');
        if (const auto state = states.find(GitPath::fromBytes(entry.sliced(tab + 1))); state != states.end()) {
            *state += '\n' + entry.first(std::max<qsizetype>(tab, 0));
        }
    }
    return states;
}

GitOutcome<QByteArray> commitOf(
    GitRunner runner, const QString& repository, const QByteArray& tree, const QList<QByteArray>& parents,
    const QByteArray& message) {
    // It is nobody's work, and nobody may have said yet who commits.
    for (const QString& name :
         {u"GIT_AUTHOR_NAME"_s, u"GIT_AUTHOR_EMAIL"_s, u"GIT_COMMITTER_NAME"_s, u"GIT_COMMITTER_EMAIL"_s}) {
        runner.extraEnvironment.insert(name, u"orvlauncher"_s);
    }
    GitArguments words{"commit-tree", tree, "-m", message};
    for (const QByteArray& parent : parents) {
        words << "-p" << parent;
    }
    return ask(runner, repository, words);
}

/// Takes the oldest away. What can't be taken away stays.
void prune(const GitRunner& runner, const QString& repository) {
    const auto listed = ask(runner, repository, {"for-each-ref", "--sort=-committerdate", "--format=%(refname)", refs});
    const QList<QByteArray> names = listed ? listed->split('\n') : QList<QByteArray>();
    for (qsizetype at = DiscardedWork::mostKept; at < names.size(); ++at) {
        (void)ask(runner, repository, {"update-ref", "-d", names[at]});
    }
}

} // namespace

GitOutcome<DiscardedWork> DiscardedWork::keep(
    const GitService& service, const QString& repository, const QStringList& paths) {
    if (const auto own = WorkTreeFiles::requireNoRepository(repository, paths); !own) {
        return std::unexpected(own.error());
    }
    const auto status = service.status(repository);
    if (!status) {
        return std::unexpected(status.error());
    }
    DiscardedWork kept;
    kept.repository = repository;
    for (const FileChange& change : status->changesOf(paths)) {
        const QStringList touched = change.touchedPaths();
        if (change.isConflicted()) {
            return std::unexpected(GitError::refused(GitWords::tr("A conflict can't be brought back.")));
        }
        // One that was only announced to the index is nowhere in it.
        const bool isIntended = change.index == '.' && (change.worktree == 'A' || change.worktree == 'R');
        for (const QString& path : touched) {
            const bool isOldName = path != change.path;
            if (!change.isUntracked() && (isOldName || !isIntended)) {
                kept.staged.append(path);
            }
            const char state = !isOldName ? change.worktree : isIntended ? 'D' : '.';
            // What the index has no more may be there all the same, even where git does not list it.
            const bool isStray = (isOldName || change.index == 'D') && WorkTreeFiles::isFile(repository, path) &&
                                 !(isOldName && WorkTreeFiles::isSame(repository, path, change.path));
            if (state == 'D') {
                kept.removed.append(path);
            } else if (state != '.' || isStray) {
                kept.changed.append(path);
            }
        }
    }
    kept.staged.removeDuplicates();
    kept.changed.removeDuplicates();
    if (sizeOf(repository, kept.changed) > mostBytes) {
        return std::unexpected(GitError::refused(GitWords::tr("That is too much to be kept.")));
    }

    const GitRunner& runner = service.runner;
    const auto indexTree = treeOfIndex(runner, repository, *status, kept.staged);
    const auto workTree = indexTree ? treeWith(runner, *indexTree, kept) : indexTree;
    if (!workTree) {
        return std::unexpected(workTree.error());
    }
    QList<QByteArray> parents;
    if (status->hasCommits) {
        parents.append("HEAD");
    }
    const auto index = commitOf(runner, repository, *indexTree, parents, "The index before a discard");
    if (!index) {
        return std::unexpected(index.error());
    }
    parents.append(*index);
    const auto work = commitOf(runner, repository, *workTree, parents, "Discarded");
    if (!work) {
        return std::unexpected(work.error());
    }
    if (const auto named = ask(runner, repository, {"update-ref", refs + *work, *work}); !named) {
        return std::unexpected(named.error());
    }
    prune(runner, repository);
    kept.indexCommit = QString::fromLatin1(*index);
    kept.workTreeCommit = QString::fromLatin1(*work);
    return kept;
}

GitOutcome<void> DiscardedWork::noteAfterwards(const GitService& service) {
    auto states = statesOf(service.runner, repository, staged + changed + removed);
    if (!states) {
        return std::unexpected(states.error());
    }
    afterwards = *std::move(states);
    return {};
}

GitOutcome<void> DiscardedWork::bringBack(const GitService& service) const {
    const QStringList paths = staged + changed + removed;
    const auto now = statesOf(service.runner, repository, paths);
    if (!now) {
        return std::unexpected(now.error());
    }
    const auto isOther = [&](const QString& path) { return now->value(path) != afterwards.value(path); };
    if (const auto other = std::ranges::find_if(paths, isOther); other != paths.end()) {
        return std::unexpected(
            GitError::refused(GitWords::tr("“%1” has changed since. What was discarded is kept in the commit %2.")
                                  .arg(*other, workTreeCommit.first(10))));
    }
    const QSet<QString> going(paths.begin(), paths.end());
    if (const auto room = WorkTreeFiles::requireRoom(repository, paths, going); !room) {
        return room;
    }
    struct Step {
        QString commit;
        GitArguments where;
        const QStringList& paths;
    };
    for (const Step& step :
         {Step{indexCommit, {"--staged", "--worktree"}, staged}, Step{workTreeCommit, {"--worktree"}, removed},
          Step{workTreeCommit, {"--worktree"}, changed}}) {
        if (step.paths.isEmpty()) {
            continue;
        }
        const GitArguments words = GitArguments{"restore", "--source=" + step.commit.toLatin1()} + step.where +
                                   GitArguments{"--pathspec-from-file=-", "--pathspec-file-nul"};
        if (const auto done = ask(service.runner, repository, words, zeroEnded(step.paths)); !done) {
            return std::unexpected(done.error());
        }
    }
    return {};
}

} // namespace orv
