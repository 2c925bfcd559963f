#include "CliGit_p.h"
#include "OrvGit/GitPath.h"
#include "TextLayout.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr std::array operationNames{""_L1,       "merge"_L1, "rebase"_L1, "am"_L1, "cherry-pick"_L1,
                                    "revert"_L1, "bisect"_L1};
constexpr std::array lineKinds{"context"_L1, "added"_L1, "removed"_L1};
constexpr std::array changeNames{"modified"_L1, "added"_L1, "deleted"_L1, "renamed"_L1, "copied"_L1};
constexpr std::array contentNames{"text"_L1,    "binary"_L1,   "tooLarge"_L1, "submodule"_L1,
                                  "symlink"_L1, "conflict"_L1, "folder"_L1,   "otherKind"_L1};

QJsonValue orNull(const std::optional<QString>& text) {
    return text ? QJsonValue(*text) : QJsonValue();
}

QString when(const QDateTime& date) {
    return date.toLocalTime().toString(u"yyyy-MM-dd HH:mm"_s);
}

/// "↑2 ↓1"; empty when there is neither.
QString distance(int ahead, int behind) {
    QStringList parts;
    if (ahead > 0) {
        parts.append(u"↑%1"_s.arg(ahead));
    }
    if (behind > 0) {
        parts.append(u"↓%1"_s.arg(behind));
    }
    return parts.join(u' ');
}

void printChanges(
    Stream& out, const QString& title, const QList<FileChange>& changes, Style style,
    QString (*letters)(const FileChange&)) {
    if (changes.isEmpty()) {
        return;
    }
    out.writeLine(u"  "_s + painted(title, Style::dim, out.hasColor()));
    for (const FileChange& change : changes) {
        const QString from = change.originalPath.isEmpty() ? QString() : printable(change.originalPath) + u" → "_s;
        out.writeLine(
            u"    "_s + painted(letters(change), style, out.hasColor()) + u' ' + from + printable(change.path));
    }
}

QJsonObject toJson(const HistoryEntry& entry) {
    return {
        {u"id"_s, entry.commit.id},
        {u"subject"_s, entry.commit.subject},
        {u"author"_s, entry.commit.author},
        {u"email"_s, entry.email},
        {u"date"_s, entry.commit.date.toUTC().toString(Qt::ISODate)},
        {u"parents"_s, QJsonArray::fromStringList(entry.parents)},
        {u"refs"_s, QJsonArray::fromStringList(entry.refs)},
    };
}

QJsonObject toJson(const BranchInfo& branch) {
    return {
        {u"name"_s, branch.name},
        {u"id"_s, branch.id},
        {u"subject"_s, branch.subject},
        {u"date"_s, branch.date.toUTC().toString(Qt::ISODate)},
        {u"upstream"_s, branch.upstream.isEmpty() ? QJsonValue() : QJsonValue(branch.upstream)},
        {u"ahead"_s, branch.ahead},
        {u"behind"_s, branch.behind},
        {u"upstreamGone"_s, branch.isUpstreamGone},
        {u"remote"_s, branch.isRemote},
        {u"current"_s, branch.isCurrent},
        {u"worktree"_s, branch.worktree.isEmpty() ? QJsonValue() : QJsonValue(branch.worktree)},
    };
}

QJsonObject toJson(const FileDiff& file) {
    QJsonArray hunks;
    for (const DiffHunk& hunk : file.hunks) {
        const int number = static_cast<int>(hunks.size()) + 1;
        QJsonArray lines;
        for (const DiffLine& line : hunk.lines) {
            lines.append(QJsonObject{
                {u"kind"_s, QString(lineKinds[static_cast<size_t>(line.kind)])},
                {u"old"_s, line.oldNumber > 0 ? QJsonValue(line.oldNumber) : QJsonValue()},
                {u"new"_s, line.newNumber > 0 ? QJsonValue(line.newNumber) : QJsonValue()},
                {u"text"_s, QString::fromUtf8(file.text(line))},
            });
        }
        hunks.append(QJsonObject{
            {u"hunk"_s, number},
            {u"oldStart"_s, hunk.oldStart},
            {u"oldCount"_s, hunk.oldCount},
            {u"newStart"_s, hunk.newStart},
            {u"newCount"_s, hunk.newCount},
            {u"heading"_s, hunk.heading},
            {u"lines"_s, lines},
        });
    }
    return {
        {u"path"_s, GitPath::fromBytes(file.path())},
        {u"oldPath"_s, file.oldPath.isEmpty() ? QJsonValue() : QJsonValue(GitPath::fromBytes(file.oldPath))},
        {u"change"_s, QString(changeNames[static_cast<size_t>(file.change)])},
        {u"content"_s, QString(contentNames[static_cast<size_t>(file.content)])},
        {u"added"_s, file.count(DiffLineKind::added)},
        {u"removed"_s, file.count(DiffLineKind::removed)},
        {u"hunks"_s, hunks},
    };
}

enum class Numbers { shown, left };

void printDiff(Stream& out, const FileDiff& file, Numbers numbers) {
    const bool hasColor = out.hasColor();
    const QString name = printable(GitPath::fromBytes(file.path()));
    const QString content =
        file.content == DiffContent::text ? QString() : u"  "_s + contentNames[static_cast<size_t>(file.content)];
    out.writeLine(
        painted(name, Style::bold, hasColor) + u"  "_s + changeNames[static_cast<size_t>(file.change)] + content +
        u"  +%1 -%2"_s.arg(file.count(DiffLineKind::added)).arg(file.count(DiffLineKind::removed)));
    QString text;
    int number = 0;
    for (const DiffHunk& hunk : file.hunks) {
        if (++number; numbers == Numbers::shown && file.canBeDivided()) {
            text += painted(u"%1 "_s.arg(number), Style::yellow, hasColor);
        }
        text += painted(
                    u"@@ -%1,%2 +%3,%4 @@ %5"_s.arg(hunk.oldStart)
                        .arg(hunk.oldCount)
                        .arg(hunk.newStart)
                        .arg(hunk.newCount)
                        .arg(printable(hunk.heading))
                        .trimmed(),
                    Style::cyan, hasColor) +
                u'\n';
        for (const DiffLine& line : hunk.lines) {
            const QString shown = safeOutputLine(QString::fromUtf8(file.text(line)), false);
            text += line.kind == DiffLineKind::added     ? painted(u'+' + shown, Style::green, hasColor)
                    : line.kind == DiffLineKind::removed ? painted(u'-' + shown, Style::red, hasColor)
                                                         : u' ' + shown;
            text += u'\n';
        }
    }
    out.write(text);
}

/// The changes of the work tree, or the staged ones, below the paths; all of them without any.
GitOutcome<QList<FileDiff>> diffsOf(
    const GitService& service, const QString& repository, const QStringList& paths, bool isStaged) {
    const auto status = service.status(repository);
    if (!status) {
        return std::unexpected(status.error());
    }
    for (const QString& path : paths) {
        const bool isChanged = std::ranges::any_of(status->changes, [&path](const FileChange& change) {
            return isBelow(change.path, {path}) || isBelow(change.originalPath, {path});
        });
        struct stat entry{};
        if (!isChanged && ::lstat((QFile::encodeName(repository) + '/' + GitPath::toBytes(path)).constData(), &entry)) {
            return std::unexpected(GitError::refused(u"there is no '%1', and no change of it."_s.arg(printable(path))));
        }
    }
    QList<FileDiff> files;
    for (const FileChange& change : status->changes) {
        const bool isOnSide = isStaged ? change.isStaged() && !change.isConflicted()
                                       : change.isUntracked() || (change.worktree != '.' && change.worktree != ' ');
        if (!isOnSide || !(paths.isEmpty() || isBelow(change.path, paths))) {
            continue;
        }
        const char letter = isStaged ? change.index : change.worktree;
        const auto file = service.fileDiff(
            repository, {.path = change.path,
                         .originalPath = letter == 'R' || letter == 'C' ? change.originalPath : QString(),
                         .side = isStaged               ? DiffSide::staged
                                 : change.isUntracked() ? DiffSide::untracked
                                                        : DiffSide::unstaged});
        if (!file) {
            return std::unexpected(file.error());
        }
        files.append(*file);
    }
    return files;
}

struct StateOrProblem {
    QString repository;
    GitOutcome<RepositoryState> state;
};

/// A number that an option may give.
std::optional<int> numberOf(const Invocation& call, const QString& option, int usual) {
    if (!call.isSet(option)) {
        return usual;
    }
    bool isNumber = false;
    const int number = call.value(option).toInt(&isNumber);
    return isNumber && number >= 0 ? std::optional(number) : std::nullopt;
}

} // namespace

QString operationName(GitOperation operation) {
    return operationNames[static_cast<size_t>(operation)];
}

GitOutcome<RepositoryState> stateOf(const GitService& service, const QString& repository) {
    auto status = service.status(repository);
    if (!status) {
        return std::unexpected(status.error());
    }
    auto operation = service.operation(repository);
    return RepositoryState{repository, *std::move(status), std::move(operation).value_or(OperationState())};
}

QJsonValue toJson(const RepositoryState& state) {
    const RepoStatus& status = state.status;
    QJsonArray changes;
    for (const FileChange& change : status.changes) {
        QJsonObject object{
            {u"path"_s, change.path},
            {u"index"_s, QString(QChar::fromLatin1(change.index))},
            {u"worktree"_s, QString(QChar::fromLatin1(change.worktree))},
            {u"conflicted"_s, change.isConflicted()}};
        if (!change.originalPath.isEmpty()) {
            object.insert(u"originalPath"_s, change.originalPath);
        }
        changes.append(object);
    }
    const QString operation = operationName(state.operation.operation);
    return QJsonObject{
        {u"repository"_s, state.repository},
        {u"branch"_s, orNull(status.branch)},
        {u"upstream"_s, orNull(status.upstream)},
        {u"ahead"_s, status.ahead},
        {u"behind"_s, status.behind},
        {u"detached"_s, status.isDetached},
        {u"hasCommits"_s, status.hasCommits},
        {u"operation"_s, operation.isEmpty() ? QJsonValue() : QJsonValue(operation)},
        {u"conflicts"_s, QJsonArray::fromStringList(state.operation.conflicts)},
        {u"changes"_s, changes},
    };
}

void printState(Stream& out, const RepositoryState& state) {
    const RepoStatus& status = state.status;
    QStringList facts{
        painted(shortPath(state.repository), Style::bold, out.hasColor()),
        painted(status.branch ? printable(*status.branch) : u"detached HEAD"_s, Style::cyan, out.hasColor())};
    if (const QString apart = distance(status.ahead, status.behind); !apart.isEmpty()) {
        facts.append(painted(apart, Style::yellow, out.hasColor()));
    }
    if (status.upstream) {
        facts.append(painted(printable(*status.upstream), Style::dim, out.hasColor()));
    }
    if (!status.hasCommits) {
        facts.append(u"no commits yet"_s);
    }
    if (state.operation.operation != GitOperation::none) {
        facts.append(painted(operationName(state.operation.operation) + u" in progress"_s, Style::red, out.hasColor()));
    }
    out.writeLine(facts.join(u"  "_s));
    QList<FileChange> staged;
    QList<FileChange> changed;
    QList<FileChange> conflicted;
    for (const FileChange& change : status.changes) {
        if (change.isConflicted()) {
            conflicted.append(change);
            continue;
        }
        if (change.isStaged()) {
            staged.append(change);
        }
        if (change.isUntracked() || change.worktree != '.') {
            changed.append(change);
        }
    }
    printChanges(out, u"Conflicts"_s, conflicted, Style::red, [](const FileChange& change) {
        return QString(QChar::fromLatin1(change.index)) + QChar::fromLatin1(change.worktree);
    });
    printChanges(out, u"Staged"_s, staged, Style::green, [](const FileChange& change) {
        return QString(QChar::fromLatin1(change.index));
    });
    printChanges(out, u"Changes"_s, changed, Style::yellow, [](const FileChange& change) {
        return QString(QChar::fromLatin1(change.worktree));
    });
}

QFuture<int> gitStatus(Invocation& call) {
    return withFolder(call, [&call](const QString& folder) {
        const auto work = [folder](const GitService& service) -> GitOutcome<QList<StateOrProblem>> {
            const auto repositories = repositoriesAt(service, folder);
            if (!repositories) {
                return std::unexpected(repositories.error());
            }
            // One that can't be read says nothing about the others.
            QList<StateOrProblem> states;
            for (const QString& repository : *repositories) {
                states.append({repository, stateOf(service, repository)});
            }
            return states;
        };
        return runGit(call, u"Asking git…"_s, work, [&call](const QList<StateOrProblem>& states) -> int {
            int exitCode = exitOk;
            QJsonArray array;
            for (const auto& [repository, state] : states) {
                if (!state) {
                    const QString place = states.size() > 1 ? shortPath(repository) + u": "_s : QString();
                    exitCode = call.failure(place + state.error().text());
                    array.append(QJsonObject{{u"repository"_s, repository}, {u"error"_s, state.error().text()}});
                } else if (call.json) {
                    array.append(toJson(*state));
                } else {
                    printState(call.console.out, *state);
                }
            }
            if (call.json) {
                printJson(call.console.out, array);
            }
            return exitCode;
        });
    });
}

QFuture<int> gitLog(Invocation& call) {
    constexpr int usualLimit = 20;
    const auto limit = numberOf(call, u"limit"_s, usualLimit);
    const auto skip = numberOf(call, u"skip"_s, 0);
    if (!limit || !skip) {
        return QtFuture::makeReadyFuture(call.usageError(u"--limit and --skip take a number."_s));
    }
    const auto work = [folder = folderMeant(call), words = call.words, limit = *limit,
                       skip = *skip](const GitService& service) -> GitOutcome<QList<HistoryEntry>> {
        const auto repository = repositoryAt(service, folder);
        if (!repository) {
            return std::unexpected(repository.error());
        }
        const auto paths = pathsIn(*repository, folder, words);
        if (!paths) {
            return std::unexpected(paths.error());
        }
        const QString path = paths->value(0);
        auto entries = service.history(*repository, {.limit = limit, .skip = skip, .from = {}, .path = path});
        const bool isNowhere = !path.isEmpty() && entries && entries->isEmpty() && skip == 0 && limit > 0 &&
                               !QFileInfo::exists(*repository + u'/' + path);
        return isNowhere ? std::unexpected(
                               GitError::refused(u"there is no “%1”, and no commit knows it."_s.arg(printable(path))))
                         : std::move(entries);
    };
    return runGit(call, u"Asking git…"_s, work, [&call](const QList<HistoryEntry>& entries) -> int {
        Stream& out = call.console.out;
        if (call.json) {
            QJsonArray array;
            for (const HistoryEntry& entry : entries) {
                array.append(toJson(entry));
            }
            printJson(out, array);
            return exitOk;
        }
        if (entries.isEmpty()) {
            call.note(u"No commits."_s);
            return exitOk;
        }
        Table table(
            {{u"COMMIT"_s, Style::yellow}, {u"DATE"_s, Style::dim}, {u"AUTHOR"_s, Style::cyan}, {u"SUBJECT"_s}});
        for (const HistoryEntry& entry : entries) {
            table.add({entry.commit.id.first(7), when(entry.commit.date), entry.commit.author, entry.commit.subject});
        }
        out.write(table.text(out.width(), out.hasColor()));
        return exitOk;
    });
}

QFuture<int> gitDiff(Invocation& call) {
    if (call.isSet(u"commit"_s) && (call.isSet(u"staged"_s) || !call.words.isEmpty())) {
        return QtFuture::makeReadyFuture(call.usageError(u"--commit shows all that a commit changed."_s));
    }
    const auto work = [folder = folderMeant(call), words = call.words, isStaged = call.isSet(u"staged"_s),
                       commit = call.value(u"commit"_s)](const GitService& service) -> GitOutcome<QList<FileDiff>> {
        const auto repository = repositoryAt(service, folder);
        if (!repository) {
            return std::unexpected(repository.error());
        }
        if (!commit.isEmpty()) {
            return service.commitDiff(*repository, commit);
        }
        const auto paths = pathsIn(*repository, folder, words);
        return paths ? diffsOf(service, *repository, *paths, isStaged) : std::unexpected(paths.error());
    };
    const Numbers numbers = call.isSet(u"commit"_s) ? Numbers::left : Numbers::shown;
    return runGit(call, u"Asking git…"_s, work, [&call, numbers](const QList<FileDiff>& files) -> int {
        QJsonArray array;
        for (const FileDiff& file : files) {
            if (call.json) {
                array.append(toJson(file));
            } else {
                printDiff(call.console.out, file, numbers);
            }
        }
        if (call.json) {
            printJson(call.console.out, array);
        }
        return exitOk;
    });
}

/// Sets what the branch follows, the one that is checked out where none is named.
GitOutcome<void> setUpstream(
    const GitService& service, const QString& repository, const QString& branch, const QString& upstream) {
    if (!branch.isEmpty()) {
        return service.setUpstream(repository, branch, upstream);
    }
    const auto status = service.status(repository);
    if (!status) {
        return std::unexpected(status.error());
    }
    return status->branch ? service.setUpstream(repository, *status->branch, upstream)
                          : std::unexpected(GitError::refused(u"no branch is checked out; name one."_s));
}

QFuture<int> gitBranch(Invocation& call) {
    const bool isFollowing = call.isSet(u"set-upstream"_s);
    const bool isUnfollowing = call.isSet(u"unset-upstream"_s);
    const bool isDeleting = call.isSet(u"delete"_s);
    if (isFollowing + isUnfollowing + isDeleting > 1) {
        return QtFuture::makeReadyFuture(call.usageError(u"a branch is deleted, or what it follows is set."_s));
    }
    if (!call.words.isEmpty() && !isFollowing && !isUnfollowing) {
        return QtFuture::makeReadyFuture(
            call.usageError(u"a branch is named with --set-upstream or --unset-upstream."_s));
    }
    if (isFollowing && call.value(u"set-upstream"_s).isEmpty()) {
        return QtFuture::makeReadyFuture(call.usageError(u"--set-upstream takes a branch, such as origin/main."_s));
    }
    const auto change = [isDeleting, isSetting = isFollowing || isUnfollowing, gone = call.value(u"delete"_s),
                         branch = call.words.value(0), upstream = call.value(u"set-upstream"_s),
                         deletion =
                             call.isSet(u"force"_s) ? GitService::Deletion::always : GitService::Deletion::ifMerged](
                            const GitService& service, const QString& repository) {
        return isDeleting  ? service.deleteBranch(repository, gone, deletion)
               : isSetting ? setUpstream(service, repository, branch, upstream)
                           : GitOutcome<void>();
    };
    const auto work = [folder = folderMeant(call), change](const GitService& service) -> GitOutcome<QList<BranchInfo>> {
        const auto repository = repositoryAt(service, folder);
        if (!repository) {
            return std::unexpected(repository.error());
        }
        if (const auto done = change(service, *repository); !done) {
            return std::unexpected(done.error());
        }
        return service.branchInfos(*repository);
    };
    return runGit(call, u"Asking git…"_s, work, [&call](const QList<BranchInfo>& branches) -> int {
        Stream& out = call.console.out;
        if (call.json) {
            QJsonArray array;
            for (const BranchInfo& branch : branches) {
                array.append(toJson(branch));
            }
            printJson(out, array);
            return exitOk;
        }
        Table table(
            {{u""_s, Style::green},
             {u"BRANCH"_s, Style::bold},
             {u"UPSTREAM"_s, Style::cyan},
             {u"APART"_s, Style::yellow},
             {u"DATE"_s, Style::dim},
             {u"LAST COMMIT"_s}});
        for (const BranchInfo& branch : branches) {
            table.add(
                {branch.isCurrent ? u"*"_s : QString(), branch.name, branch.upstream,
                 branch.isUpstreamGone ? u"gone"_s : distance(branch.ahead, branch.behind), when(branch.date),
                 branch.subject});
        }
        out.write(table.text(out.width(), out.hasColor()));
        return exitOk;
    });
}

} // namespace orv
