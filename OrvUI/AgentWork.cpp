#include "OrvUI/AgentWork.h"

#include "OrvGit/GitPath.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::AgentWork {
namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(AgentWork)
};

QString shortID(const QUuid& id) {
    constexpr qsizetype length = 8;
    return id.toString(QUuid::WithoutBraces).first(length);
}

/// A folder's name that says what is in it, and is none that any tool trips over.
QString folderName(const QString& project) {
    static const QRegularExpression odd(u"[^A-Za-z0-9._-]+"_s);
    QString name = QString(project).replace(odd, u"-"_s);
    while (name.startsWith(u'.') || name.startsWith(u'-')) {
        name.remove(0, 1);
    }
    return name.isEmpty() ? u"project"_s : name;
}

struct OwnTree {
    AgentWorktree worktree;
    QString folder;
};

struct NoTree {
    QString reason;
    bool isOfProject = false; ///< it can have none, whatever is tried
};

std::expected<OwnTree, NoTree> makeWorktree(const Request& request, const WorktreeWish& wish) {
    const AgentRunRecord& record = request.record;
    const QStringList repositories = workTreesOf(record.projectRoot);
    const QString within =
        repositories.isEmpty() ? u".."_s : QDir(repositories.first()).relativeFilePath(record.projectRoot);
    if (within.startsWith(u".."_s)) {
        return std::unexpected(NoTree{
            Words::tr("%1 is in no git repository, so it can't have a work tree of its own.").arg(record.projectName),
            true});
    }
    const TaskWorktrees worktrees(request.runner);
    const QString suffix = shortID(record.id);
    const auto made = worktrees.make(
        {.repository = repositories.first(),
         .folder = wish.folder + u'/' + folderName(record.projectName) + u'-' + suffix,
         .branch = taskBranchName(record.task, suffix),
         .copiesFrom = record.projectRoot,
         .copies = wish.copies});
    if (!made) {
        return std::unexpected(NoTree{made.error().text(), worktrees.isUnborn(repositories.first())});
    }
    const AgentWorktree worktree{
        .repository = made->repository,
        .folder = made->folder,
        .branch = made->branch,
        .base = made->base,
        .copies = made->copies};
    const QString folder = within == u"."_s ? made->folder : made->folder + u'/' + within;
    // A project that is not committed yet is not in the new tree.
    QDir().mkpath(folder);
    return OwnTree{worktree, folder};
}

void addSentence(QString& note, const QString& sentence) {
    note += (note.isEmpty() ? QString() : u" "_s) + sentence;
}

QString nameOf(const QString& folder, const QString& repository) {
    const QString within = QDir(folder).relativeFilePath(repository);
    return within.startsWith(u'.') ? QFileInfo(repository).fileName() : within;
}

AgentFileChangeKind kindOf(DiffChange change) {
    switch (change) {
    case DiffChange::added:
    case DiffChange::copied:
        return AgentFileChangeKind::added;
    case DiffChange::deleted:
        return AgentFileChangeKind::deleted;
    case DiffChange::renamed:
        return AgentFileChangeKind::renamed;
    case DiffChange::modified:
        break;
    }
    return AgentFileChangeKind::modified;
}

void add(const WorkDifference& difference, AgentChanges& changes) {
    for (const WorkFile& file : difference.files) {
        ++changes.fileCount;
        changes.added += file.added;
        changes.removed += file.removed;
        if (changes.files.size() < AgentChanges::keptFiles) {
            changes.files.append(
                {.path = GitPath::fromBytes(file.path),
                 .originalPath =
                     file.originalPath.isEmpty() ? std::nullopt : std::optional(GitPath::fromBytes(file.originalPath)),
                 .kind = kindOf(file.change),
                 .added = file.added,
                 .removed = file.removed,
                 .isBinary = file.isBinary});
        }
    }
    for (const CommitInfo& commit : difference.commits) {
        if (changes.commits.size() < AgentChanges::keptCommits) {
            changes.commits.append({commit.id, commit.subject});
        }
    }
    changes.isDiffCut = changes.isDiffCut || difference.isDiffCut;
}

/// Of a repository below the folder, its way from there.
QByteArray prefixOf(const QString& folder, const QString& repository) {
    const QString within = QDir(folder).relativeFilePath(repository);
    return within.startsWith(u'.') ? QByteArray() : QFile::encodeName(within) + '/';
}

} // namespace

std::expected<Ready, QString> prepare(const Request& request) {
    const AgentRunRecord& record = request.record;
    Ready ready{
        .hold = {}, .folder = record.projectRoot, .worktree = {}, .snapshots = {}, .note = {}, .storeProblem = {}};
    if (auto hold = request.files.hold(record.id)) {
        ready.hold = std::make_shared<UniqueFd>(std::move(*hold));
    } else {
        ready.storeProblem = hold.error().text();
    }
    if (request.worktree) {
        auto own = makeWorktree(request, *request.worktree);
        const bool goesWithout = request.worktree->need == WorktreeWish::Need::ifPossible;
        if (own) {
            ready.worktree = std::move(own->worktree);
            ready.folder = std::move(own->folder);
        } else if (goesWithout && own.error().isOfProject) {
            addSentence(ready.note, Words::tr("It worked in the project's own folder. %1").arg(own.error().reason));
        } else {
            ready.hold.reset();
            QDir(request.files.runFolder(record.id)).removeRecursively();
            return std::unexpected(own.error().reason);
        }
    }
    AgentRunRecord stored = record;
    stored.projectRoot = ready.folder;
    stored.worktree = ready.worktree ? ready.worktree : record.worktree;
    if (const StoreResult written = ready.hold ? request.files.write(stored) : StoreResult(); !written) {
        ready.storeProblem = written.error().text();
    }
    const QStringList repositories = workTreesOf(ready.folder);
    for (const QString& repository : repositories) {
        const WorkSnapshots snapshots(request.runner, request.files.scratchFolder(record.id));
        if (auto snapshot = snapshots.take(repository)) {
            ready.snapshots.append(*std::move(snapshot));
        } else {
            addSentence(
                ready.note, Words::tr("What changed in %1 can't be told: %2")
                                .arg(nameOf(ready.folder, repository), snapshot.error().text()));
        }
    }
    return ready;
}

AgentChanges changesSince(const AgentRunFiles& files, const QUuid& run, const Ready& ready, const GitRunner& runner) {
    AgentChanges changes;
    changes.note = ready.note;
    QByteArray diff;
    const QString scratch = files.scratchFolder(run);
    for (const WorkSnapshot& before : ready.snapshots) {
        changes.dirtyBefore += before.changes;
        const WorkSnapshots snapshots(runner, scratch);
        const auto after = snapshots.take(before.repository);
        const auto difference = after ? snapshots.between(before, *after, prefixOf(ready.folder, before.repository))
                                      : std::unexpected(after.error());
        if (!difference) {
            addSentence(
                changes.note, Words::tr("What changed in %1 can't be told: %2")
                                  .arg(nameOf(ready.folder, before.repository), difference.error().text()));
            continue;
        }
        add(*difference, changes);
        diff += difference->diff;
        if (!diff.isEmpty() && !diff.endsWith('\n')) {
            diff += '\n';
        }
    }
    if (!diff.isEmpty()) {
        if (const StoreResult written = StoreIO::write(files.diffFile(run), diff); !written) {
            addSentence(changes.note, Words::tr("The diff could not be kept: %1").arg(written.error().text()));
        }
    }
    QDir(scratch).removeRecursively();
    return changes;
}

std::optional<Diff> storedDiff(const AgentRunFiles& files, const QUuid& run) {
    QFile file(files.diffFile(run));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return Diff{parseDiff(file.readAll()), false};
}

/// The files that a work tree was given are there by our doing, and may hold secrets.
static QByteArray withoutCopies(const QByteArray& diff, const QStringList& copies) {
    constexpr QByteArrayView head("diff --git ");
    QByteArray kept;
    for (qsizetype begin = 0; begin < diff.size();) {
        const qsizetype next = diff.indexOf("\n" + head.toByteArray(), begin);
        const qsizetype end = next < 0 ? diff.size() : next + 1;
        const QByteArray part = diff.sliced(begin, end - begin);
        const QList<FileDiff> files = parseDiff(part);
        const bool isCopy = files.size() == 1 && files.front().change == DiffChange::added &&
                            copies.contains(GitPath::fromBytes(files.front().path()));
        if (!isCopy) {
            kept += part;
        }
        begin = end;
    }
    return kept;
}

std::expected<Diff, QString> worktreeDiff(
    const AgentRunFiles& files, const QUuid& run, const AgentWorktree& worktree, const GitRunner& runner) {
    const QString scratch = files.runFolder(run) + u"/review"_s;
    const WorkSnapshots snapshots(runner, scratch);
    const auto now = snapshots.take(worktree.folder);
    auto difference = now ? snapshots.between(WorkSnapshots::ofCommit(worktree.folder, worktree.base), *now)
                          : std::unexpected(now.error());
    QDir(scratch).removeRecursively();
    if (!difference) {
        return std::unexpected(difference.error().text());
    }
    return Diff{parseDiff(withoutCopies(difference->diff, worktree.copies)), difference->isDiffCut};
}

TaskWorktree taskWorktree(const AgentWorktree& worktree) {
    return {worktree.repository, worktree.folder, worktree.branch, worktree.base, worktree.copies};
}

bool asksForInput(QByteArrayView endOfOutput) {
    static const QRegularExpression question(
        uR"((\[y/n\]|\(y/n\)|\(yes/no\)|\[yes/no\]|press (enter|return|any key)[^\n]{0,40}|password[^\n]{0,40}:|passphrase[^\n]{0,60}:|(continue|proceed)\?)\s*(:|>|\?)?\s*$)"_s,
        QRegularExpression::CaseInsensitiveOption);
    // An answer would stand on the line of the question: what has an end was not waited with.
    const QByteArrayView line = endOfOutput.sliced(endOfOutput.lastIndexOf('\n') + 1);
    return question.match(QString::fromUtf8(line)).hasMatch();
}

bool outputAsksForInput(const QString& outputFile) {
    constexpr qint64 looked = 512;
    QFile file(outputFile);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    file.seek(std::max<qint64>(file.size() - looked, 0));
    return asksForInput(file.read(looked));
}

} // namespace orv::AgentWork
