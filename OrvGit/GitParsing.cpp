#include "OrvGit/GitParsing.h"

#include "OrvGit/GitPath.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr char unitSeparator = '\x1f';

/// Calls `handle` with each piece that ends with `mark`, and with what follows the last one unless that is empty.
template <typename Handler>
void forEach(QByteArrayView text, char mark, Handler handle) {
    const char* next = text.data();
    const char* const end = next + text.size();
    while (next < end) {
        const auto left = static_cast<size_t>(end - next);
        const auto* found = static_cast<const char*>(std::memchr(next, mark, left));
        const char* const stop = found != nullptr ? found : end;
        handle(QByteArrayView(next, stop - next));
        next = stop + 1;
    }
}

/// Exactly so many fields, or nothing.
template <size_t count>
std::optional<std::array<QByteArrayView, count>> fields(QByteArrayView line) {
    std::array<QByteArrayView, count> found;
    for (size_t field = 0; field < count; ++field) {
        const qsizetype end = line.indexOf(unitSeparator);
        const bool isLast = field + 1 == count;
        if ((end < 0) != isLast) {
            return std::nullopt;
        }
        found[field] = isLast ? line : line.first(end);
        line = isLast ? line : line.sliced(end + 1);
    }
    return found;
}

std::optional<QDateTime> date(QByteArrayView seconds) {
    bool isNumber = false;
    const qint64 value = seconds.toLongLong(&isNumber);
    return isNumber ? std::optional(QDateTime::fromSecsSinceEpoch(value, Qt::UTC)) : std::nullopt;
}

/// What follows the given number of blanks.
std::optional<QByteArrayView> afterBlanks(QByteArrayView record, int blanks) {
    for (; blanks > 0; --blanks) {
        const qsizetype blank = record.indexOf(' ');
        if (blank < 0) {
            return std::nullopt;
        }
        record = record.sliced(blank + 1);
    }
    return record;
}

/// The path of an ordinary change whose fields have the widths that git always gives them; nothing for any other one.
std::optional<QByteArrayView> pathAtItsPlace(QByteArrayView record) {
    // "1 XY N... 100644 100644 100644 <hash> <hash> <path>"
    constexpr std::array blanks{qsizetype{1}, qsizetype{4}, qsizetype{9}, qsizetype{16}, qsizetype{23}, qsizetype{30}};
    constexpr qsizetype firstHash = 31;
    for (const qsizetype hash : {qsizetype{40}, qsizetype{64}}) {
        const qsizetype path = firstHash + 2 * (hash + 1);
        if (record.size() > path && record[firstHash + hash] == ' ' && record[path - 1] == ' ' &&
            std::ranges::all_of(blanks, [record](qsizetype at) { return record[at] == ' '; })) {
            return record.sliced(path);
        }
    }
    return std::nullopt;
}

bool take(QByteArrayView& text, QByteArrayView prefix) {
    if (!text.startsWith(prefix)) {
        return false;
    }
    text = text.sliced(prefix.size());
    return true;
}

/// "+3" or "-0" without its sign; 0 for "+?", which git prints when it was told not to count.
int count(QByteArrayView signedNumber) {
    return signedNumber.isEmpty() ? 0 : signedNumber.sliced(1).toByteArray().toInt();
}

void readHeader(QByteArrayView header, RepoStatus& status) {
    if (take(header, "branch.oid ")) {
        status.hasCommits = !header.endsWith("(initial)");
    } else if (take(header, "branch.head ")) {
        status.isDetached = header == QByteArrayView("(detached)");
        status.branch = status.isDetached ? std::nullopt : std::optional(GitPath::fromBytes(header));
    } else if (take(header, "branch.upstream ")) {
        status.upstream = GitPath::fromBytes(header);
    } else if (take(header, "branch.ab ")) {
        if (const qsizetype blank = header.indexOf(' '); blank >= 0) {
            status.ahead = count(header.first(blank));
            status.behind = count(header.sliced(blank + 1));
        }
    }
}

struct ChangeRecord {
    char index = '?';
    char worktree = '?';
    QByteArrayView path;
    QByteArrayView originalPath;
};

/// Calls `handle` with a ChangeRecord each.
template <typename Handler>
RepoStatus readStatus(QByteArrayView output, Handler handle) {
    /// How many blanks stand before the path of a record that begins so.
    constexpr auto blanks = [](char kind) { return kind == '1' ? 8 : kind == '2' ? 9 : kind == 'u' ? 10 : 0; };
    RepoStatus status;
    std::optional<ChangeRecord> renamed; ///< waits for the path that follows
    forEach(output, '\0', [&](QByteArrayView record) {
        if (renamed) {
            renamed->originalPath = record;
            handle(*renamed);
            renamed.reset();
            return;
        }
        if (record.size() < 2 || record[1] != ' ') {
            return;
        }
        const char kind = record[0];
        if (kind == '#') {
            readHeader(record.sliced(2), status);
        } else if (kind == '?') {
            handle(ChangeRecord{.path = record.sliced(2), .originalPath = {}});
        } else if (blanks(kind) > 0) {
            auto path = kind == '1' ? pathAtItsPlace(record) : std::nullopt;
            if (!path) {
                path = afterBlanks(record, blanks(kind));
            }
            if (!path || record[4] != ' ') {
                return;
            }
            const ChangeRecord change{record[2], record[3], *path, {}};
            if (kind == '2') {
                renamed = change;
            } else {
                handle(change);
            }
        }
    });
    if (renamed) {
        handle(*renamed);
    }
    return status;
}

/// "HEAD -> refs/heads/main, tag: refs/tags/v1, refs/remotes/origin/main" (git-log(1), `%D` with `--decorate=full`).
QStringList refs(QByteArrayView decoration) {
    QStringList names;
    const QString text = GitPath::fromBytes(decoration);
    for (QStringView name : QStringView(text).split(u", ", Qt::SkipEmptyParts)) {
        constexpr auto arrow = "HEAD -> "_L1;
        constexpr auto tag = "tag: "_L1;
        if (name.startsWith(arrow)) {
            names.append(u"HEAD"_s);
            name = name.sliced(arrow.size());
        }
        name = name.startsWith(tag) ? name.sliced(tag.size()) : name;
        if (!name.isEmpty()) {
            names.append(name.toString());
        }
    }
    return names;
}

/// "[ahead 2, behind 1]", "[gone]" or nothing.
void readTrack(QByteArrayView track, BranchInfo& branch) {
    branch.isUpstreamGone = track == QByteArrayView("[gone]");
    const auto number = [track](QByteArrayView word) {
        const qsizetype begin = track.indexOf(word);
        int value = 0;
        for (qsizetype i = begin + word.size(); begin >= 0 && i < track.size() && track[i] >= '0' && track[i] <= '9';
             ++i) {
            value = value < 100'000'000 ? value * 10 + (track[i] - '0') : value;
        }
        return value;
    };
    branch.ahead = number("ahead ");
    branch.behind = number("behind ");
}

} // namespace

bool FileChange::isConflicted() const {
    return index == 'U' || worktree == 'U' || (index == 'A' && worktree == 'A') || (index == 'D' && worktree == 'D');
}

QStringList FileChange::touchedPaths() const {
    return index == 'R' || worktree == 'R' ? QStringList{path, originalPath} : QStringList{path};
}

QStringList FileChange::stagedPaths() const {
    return worktree == 'R' ? QStringList{path, originalPath} : QStringList{path};
}

QList<FileChange> RepoStatus::changesOf(const QStringList& paths) const {
    const QSet<QString> wanted(paths.begin(), paths.end());
    QSet<QString> changed;
    for (const FileChange& change : changes) {
        changed.insert(change.path);
    }
    QList<FileChange> found;
    for (const FileChange& change : changes) {
        const auto isMeant = [&](const QString& path) {
            return wanted.contains(path) && (path == change.path || !changed.contains(path));
        };
        if (std::ranges::any_of(change.touchedPaths(), isMeant)) {
            found.append(change);
        }
    }
    return found;
}

RepoStatus GitParsing::status(QByteArrayView output) {
    QList<FileChange> changes;
    RepoStatus status = readStatus(output, [&changes](const ChangeRecord& record) {
        FileChange& change = changes.emplaceBack();
        change.path = GitPath::fromBytes(record.path);
        change.index = record.index;
        change.worktree = record.worktree;
        if (!record.originalPath.isEmpty()) {
            change.originalPath = GitPath::fromBytes(record.originalPath);
        }
    });
    status.changes = std::move(changes);
    return status;
}

RepoStatus GitParsing::statusCounts(QByteArrayView output, int& changes) {
    changes = 0;
    return readStatus(output, [&changes](const ChangeRecord&) { ++changes; });
}

QList<CommitInfo> GitParsing::log(QByteArrayView output) {
    QList<CommitInfo> commits;
    forEach(output, '\n', [&commits](QByteArrayView line) {
        const auto found = fields<4>(line);
        const auto written = found ? date((*found)[3]) : std::nullopt;
        if (written) {
            commits.append(
                {QString::fromLatin1((*found)[0]), QString::fromUtf8((*found)[1]), QString::fromUtf8((*found)[2]),
                 *written});
        }
    });
    return commits;
}

QList<HistoryEntry> GitParsing::history(QByteArrayView output) {
    QList<HistoryEntry> entries;
    forEach(output, '\0', [&entries](QByteArrayView record) {
        const auto found = fields<7>(record);
        const auto written = found ? date((*found)[3]) : std::nullopt;
        if (!written) {
            return;
        }
        const auto& [id, subject, author, seconds, email, parents, decoration] = *found;
        entries.append({
            .commit = {QString::fromLatin1(id), QString::fromUtf8(subject), QString::fromUtf8(author), *written},
            .email = QString::fromUtf8(email),
            .parents = QString::fromLatin1(parents).split(u' ', Qt::SkipEmptyParts),
            .refs = refs(decoration),
        });
    });
    return entries;
}

QStringList GitParsing::branches(QByteArrayView output) {
    QStringList names;
    forEach(output, '\n', [&names](QByteArrayView line) {
        // No ref has a blank in its name; "(HEAD detached at 1234567)" has.
        if (!line.isEmpty() && !line.contains(' ')) {
            names.append(GitPath::fromBytes(line));
        }
    });
    return names;
}

QList<BranchInfo> GitParsing::branchInfos(QByteArrayView output) {
    QList<BranchInfo> branches;
    forEach(output, '\n', [&branches](QByteArrayView line) {
        const auto found = fields<9>(line);
        if (!found) {
            return;
        }
        const auto& [ref, id, subject, seconds, upstream, track, head, worktree, symref] = *found;
        QByteArrayView name = ref;
        const bool isRemote = take(name, "refs/remotes/");
        // "refs/remotes/origin/HEAD" is another name of a branch that is listed itself.
        if ((!isRemote && !take(name, "refs/heads/")) || !symref.isEmpty()) {
            return;
        }
        BranchInfo branch{
            .name = GitPath::fromBytes(name),
            .id = QString::fromLatin1(id),
            .subject = QString::fromUtf8(subject),
            .date = date(seconds).value_or(QDateTime()),
            .upstream = GitPath::fromBytes(upstream),
            .isRemote = isRemote,
            .isCurrent = head == QByteArrayView("*"),
            .worktree = GitPath::fromBytes(worktree),
        };
        readTrack(track, branch);
        branches.append(branch);
    });
    return branches;
}

QList<StashEntry> GitParsing::stashes(QByteArrayView output) {
    QList<StashEntry> entries;
    forEach(output, '\n', [&entries](QByteArrayView line) {
        const auto found = fields<3>(line);
        if (const auto made = found ? date((*found)[2]) : std::nullopt) {
            entries.append(
                {static_cast<int>(entries.size()), QString::fromLatin1((*found)[0]), QString::fromUtf8((*found)[1]),
                 *made});
        }
    });
    return entries;
}

QStringList GitParsing::paths(QByteArrayView output) {
    QStringList found;
    forEach(output, '\0', [&found](QByteArrayView path) { found.append(GitPath::fromBytes(path)); });
    return found;
}

} // namespace orv
