#include "OrvGit/WorkSnapshot.h"

#include "GitWords_p.h"
#include "OrvGit/DiffCommand_p.h"
#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitParsing.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/GitService.h"
#include "OrvGit/ProjectRepositories.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDir>
#include <QFile>

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// What is to be done to an index that holds the commit, so that it holds the work tree.
struct IndexChanges {
    QList<QByteArray> removed;
    QList<QByteArray> taken;
    QMap<QString, FileStamp> untaken;
};

IndexChanges indexChanges(const RepoStatus& status, const QString& repository, const WorkSnapshots::Limits& limits) {
    IndexChanges found;
    qint64 bytes = 0;
    for (const FileChange& change : status.changes) {
        if (change.index == 'R') {
            found.removed.append(GitPath::toBytes(change.originalPath));
        }
        if (change.path.endsWith(u'/')) {
            continue; // a repository of its own
        }
        const QByteArray path = GitPath::toBytes(change.path);
        const QByteArray full = QFile::encodeName(repository) + '/' + path;
        struct stat info{};
        // A file may be gone and yet be found, where a folder above it has become a link.
        const bool isGone = !change.isConflicted() && (change.worktree == 'D' || change.index == 'D');
        if (isGone || ::lstat(full.constData(), &info) != 0) {
            found.removed.append(path);
            continue;
        }
        const bool isFile = S_ISREG(info.st_mode);
        const qint64 size = isFile ? info.st_size : 0;
        const bool fits = size <= limits.fileBytes && bytes + size <= limits.allBytes &&
                          found.taken.size() < limits.files && (!isFile || ::access(full.constData(), R_OK) == 0);
        if (fits) {
            bytes += size;
            found.taken.append(path);
        } else {
            found.untaken.insert(change.path, FileStamp::of(QFile::decodeName(full)));
        }
    }
    return found;
}

QByteArray joined(const QList<QByteArray>& paths, const QByteArray& before) {
    QByteArray bytes;
    for (const QByteArray& path : paths) {
        bytes += before + path + '\0';
    }
    return bytes;
}

/// The snapshot's tree without what could not be taken of either side. There may be too many of these for a command
/// line.
GitOutcome<QByteArray> treeWithout(
    const GitRunner& runner, const WorkSnapshot& snapshot, const QMap<QString, FileStamp>& untaken) {
    QByteArray tree = snapshot.tree.toLatin1();
    if (untaken.isEmpty()) {
        return tree;
    }
    const auto run = [&](const GitArguments& words, const QByteArray& input = {}) {
        auto output = runner.run(words, snapshot.repository, GitLimits::local, {.input = input});
        return output ? GitOutcome<QByteArray>(output->trimmed()) : output;
    };
    const auto hash = run({"rev-parse", "--verify", tree});
    if (!hash) {
        return hash;
    }
    QByteArray entries;
    for (auto file = untaken.cbegin(); file != untaken.cend(); ++file) {
        entries += "0 " + QByteArray(hash->size(), '0') + '\t' + GitPath::toBytes(file.key()) + '\0';
    }
    for (const auto& [words, input] :
         {std::pair<GitArguments, QByteArray>{{"read-tree", *hash}, {}},
          {{"update-index", "-z", "--index-info"}, entries}}) {
        if (const auto done = run(words, input); !done) {
            return done;
        }
    }
    return run({"write-tree"});
}

DiffChange changeOf(char status) {
    switch (status) {
    case 'A':
        return DiffChange::added;
    case 'D':
        return DiffChange::deleted;
    case 'R':
        return DiffChange::renamed;
    case 'C':
        return DiffChange::copied;
    default:
        return DiffChange::modified;
    }
}

} // namespace

QList<WorkFile> parseWorkFiles(const QByteArray& bytes) {
    QList<QByteArray> words = bytes.split('\0');
    qsizetype at = 0;
    const auto next = [&words, &at] { return at < words.size() ? words[at++] : QByteArray(); };
    const auto isRaw = [&words, &at] { return at < words.size() && words[at].startsWith(':'); };
    QMap<QByteArray, WorkFile> files;
    while (isRaw()) {
        const QByteArray status = next().split(' ').constLast();
        WorkFile file;
        file.change = changeOf(status.isEmpty() ? 'M' : status.front());
        if (file.change == DiffChange::renamed || file.change == DiffChange::copied) {
            file.originalPath = next();
        }
        file.path = next();
        files.insert(file.path, file);
    }
    while (at < words.size()) {
        const QList<QByteArray> fields = next().split('\t');
        if (fields.size() < 3) {
            break;
        }
        QByteArray path = fields.sliced(2).join('\t');
        if (path.isEmpty()) {
            next(); // the original path
            path = next();
        }
        if (const auto file = files.find(path); file != files.end()) {
            file->isBinary = fields[0] == "-";
            file->added = fields[0].toInt();
            file->removed = fields[1].toInt();
        }
    }
    return files.values();
}

QStringList workTreesOf(const QString& folder) {
    QStringList tops;
    if (const QString top = workTreeTop(folder); !top.isEmpty()) {
        tops.append(top);
    }
    for (const QString& inside : GitService::findRepos(folder)) {
        if (!tops.contains(inside)) {
            tops.append(inside);
        }
    }
    return tops;
}

WorkSnapshots::WorkSnapshots(GitRunner runner, QString folder, const Limits& limits)
    : m_runner(std::move(runner)), m_folder(std::move(folder)), m_limits(limits) {
    // Nobody asked for it: neither a lock nor a program of the repository's choosing.
    m_runner.purpose = GitPurpose::background;
}

GitOutcome<GitRunner> WorkSnapshots::runnerFor(const QString& repository) const {
    const auto layout = RepositoryLayout::of(repository);
    if (!layout || layout->kind == RepositoryLayout::Kind::bare) {
        return std::unexpected(GitError::of(GitError::Kind::notARepo));
    }
    const QString objects = m_folder + u"/objects"_s;
    if (!QDir().mkpath(objects)) {
        return std::unexpected(GitError::refused(GitWords::tr("The folder %1 can't be made.").arg(objects)));
    }
    GitRunner runner = m_runner;
    runner.extraEnvironment.insert(u"GIT_OBJECT_DIRECTORY"_s, objects);
    // The variable is a list with colons, but for what stands in quotes (git(1)).
    runner.extraEnvironment.insert(
        u"GIT_ALTERNATE_OBJECT_DIRECTORIES"_s,
        QFile::decodeName(GitPath::quoted(QFile::encodeName(layout->commonDirectory + u"/objects"_s))));
    runner.extraEnvironment.insert(u"GIT_INDEX_FILE"_s, m_folder + u"/index"_s);
    return runner;
}

GitOutcome<WorkSnapshot> WorkSnapshots::take(const QString& repository) const {
    const auto runner = runnerFor(repository);
    if (!runner) {
        return std::unexpected(runner.error());
    }
    const auto status = GitService(m_runner).status(repository);
    if (!status) {
        return std::unexpected(status.error());
    }
    WorkSnapshot snapshot{.repository = repository, .head = {}, .tree = {}, .untaken = {}};
    snapshot.changes = static_cast<int>(status->changes.size());
    if (status->hasCommits) {
        const auto head = m_runner.run({"rev-parse", "--verify", "HEAD^{commit}"}, repository, GitLimits::local);
        if (!head) {
            return std::unexpected(head.error());
        }
        snapshot.head = QString::fromLatin1(head->trimmed());
    }
    const IndexChanges changes = indexChanges(*status, repository, m_limits);
    snapshot.untaken = changes.untaken;
    QFile::remove(m_folder + u"/index"_s);
    struct Step {
        GitArguments words;
        QByteArray input;
        bool isNeeded = true;
    };
    const QByteArray hashOfNothing(snapshot.head.size(), '0');
    const Step steps[] = {
        {.words = {"read-tree", snapshot.head.toLatin1()}, .input = {}, .isNeeded = !snapshot.head.isEmpty()},
        {.words = {"update-index", "-z", "--index-info"},
         .input = joined(changes.removed, "0 " + hashOfNothing + '\t'),
         .isNeeded = !changes.removed.isEmpty() && !snapshot.head.isEmpty()},
        {.words = {"-c", "core.safecrlf=false", "update-index", "--add", "--remove", "--replace", "-z", "--stdin"},
         .input = joined(changes.taken, {}),
         .isNeeded = !changes.taken.isEmpty()},
    };
    for (const auto& [words, input, isNeeded] : steps) {
        if (!isNeeded) {
            continue;
        }
        if (const auto done = runner->run(words, repository, GitLimits::local, {.input = input}); !done) {
            return std::unexpected(done.error());
        }
    }
    const auto tree = runner->run({"write-tree"}, repository, GitLimits::local);
    if (!tree) {
        return std::unexpected(tree.error());
    }
    snapshot.tree = QString::fromLatin1(tree->trimmed());
    return snapshot;
}

GitOutcome<WorkDifference> WorkSnapshots::between(
    const WorkSnapshot& before, const WorkSnapshot& after, const QByteArray& prefix) const {
    auto runner = runnerFor(after.repository);
    if (!runner) {
        return std::unexpected(runner.error());
    }
    QMap<QString, FileStamp> untaken = before.untaken;
    untaken.insert(after.untaken);
    const auto oldTree = treeWithout(*runner, before, untaken);
    const auto newTree = oldTree ? treeWithout(*runner, after, untaken) : oldTree;
    if (!newTree) {
        return std::unexpected(newTree.error());
    }
    GitArguments words = diffCommand("diff");
    words << "--src-prefix=a/" + prefix << "--dst-prefix=b/" + prefix;
    words << *oldTree << *newTree << "--";
    const qsizetype beforePaths = words.indexOf("--");
    GitArguments counting = words;
    counting.insert(beforePaths - 2, "-z");
    counting.insert(beforePaths - 2, "--numstat");
    counting.insert(beforePaths - 2, "--raw");
    const auto counts = runner->run(counting, after.repository, GitLimits::local);
    if (!counts) {
        return std::unexpected(counts.error());
    }
    if (!prefix.isEmpty()) {
        words.insert(beforePaths - 2, "--no-renames"); // whose lines have no prefix
    }
    const auto diff = runner->runRaw(
        words, after.repository, GitLimits::local, {.input = {}, .outputLimitBytes = m_limits.diffBytes});
    if (!diff) {
        return std::unexpected(diff.error());
    }
    if (diff->code != 0 && !diff->isCut) {
        return std::unexpected(diff->error());
    }
    WorkDifference difference{
        .files = parseWorkFiles(*counts), .diff = diff->output, .isDiffCut = diff->isCut, .commits = {}};
    for (auto file = untaken.cbegin(); file != untaken.cend(); ++file) {
        const auto stamp = [&](const WorkSnapshot& side) {
            return side.untaken.contains(file.key()) ? side.untaken.value(file.key()) : FileStamp();
        };
        if (stamp(before) != stamp(after)) {
            difference.files.append({.path = GitPath::toBytes(file.key()), .originalPath = {}, .isBinary = true});
        }
    }
    for (WorkFile& file : difference.files) {
        file.path.prepend(prefix);
        file.originalPath = file.originalPath.isEmpty() ? QByteArray() : prefix + file.originalPath;
    }
    std::ranges::sort(difference.files, {}, &WorkFile::path);
    if (!after.head.isEmpty() && before.head != after.head) {
        const QString range = before.head.isEmpty() ? after.head : before.head + u".."_s + after.head;
        const auto commits = GitService(m_runner).history(after.repository, {.from = range, .path = {}});
        for (const HistoryEntry& entry : commits ? *commits : QList<HistoryEntry>()) {
            difference.commits.append(entry.commit);
        }
    }
    return difference;
}

WorkSnapshot WorkSnapshots::ofCommit(const QString& repository, const QString& commit) {
    return {.repository = repository, .head = commit, .tree = commit + u"^{tree}"_s, .untaken = {}};
}

} // namespace orv
