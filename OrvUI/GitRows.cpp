#include "OrvUI/GitRows.h"

#include "OrvUI/RelativeDate.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

struct Letter {
    char letter;
    QLatin1StringView word;
};
constexpr std::array letters{Letter{'M', "modified"_L1}, Letter{'A', "added"_L1},    Letter{'D', "deleted"_L1},
                             Letter{'R', "renamed"_L1},  Letter{'C', "copied"_L1},   Letter{'T', "retyped"_L1},
                             Letter{'U', "conflict"_L1}, Letter{'?', "untracked"_L1}};

ChangeRow changeRow(const FileChange& change, char letter) {
    const bool isFolder = change.path.endsWith(u'/');
    const QString path = isFolder ? change.path.chopped(1) : change.path;
    const qsizetype slash = path.lastIndexOf(u'/');
    const auto known = std::ranges::find(letters, letter, &Letter::letter);
    return {
        .key = change.path,
        .name = shownPath(path.sliced(slash + 1)),
        .folder = shownPath(path.first(std::max(slash, qsizetype{0}))),
        .originalName = shownPath(change.originalPath),
        .letter = QString(QChar::fromLatin1(letter)),
        .word = known != letters.end() ? QString(known->word) : QString(),
        .change = change,
        .isFolder = isFolder,
    };
}

/// "refs/heads/main" is "main", "refs/tags/v1" "v1".
QString shortRef(const QString& ref) {
    for (const QLatin1StringView prefix : {"refs/heads/"_L1, "refs/remotes/"_L1, "refs/tags/"_L1}) {
        if (ref.startsWith(prefix)) {
            return ref.sliced(prefix.size());
        }
    }
    return ref;
}

} // namespace

QString shownPath(const QString& path) {
    QString shown = path;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        QChar& letter = shown[i];
        if (letter == u'\n') {
            letter = u'\u23ce';
        } else if (letter < u' ' || letter == u'\x7f') {
            letter = QChar::ReplacementCharacter;
        } else if (letter.isHighSurrogate() && i + 1 < shown.size() && shown[i + 1].isLowSurrogate()) {
            ++i;
        } else if (letter.isSurrogate()) {
            letter = QChar::ReplacementCharacter;
        }
    }
    return shown;
}

ChangeLists ChangeLists::of(const QList<FileChange>& changes) {
    ChangeLists lists;
    for (const FileChange& change : changes) {
        if (change.isConflicted()) {
            lists.conflicted.append(changeRow(change, 'U'));
            continue;
        }
        if (change.isStaged() && ++lists.stagedCount <= mostRows) {
            lists.staged.append(changeRow(change, change.index));
        }
        const bool isUnstaged = change.isUntracked() || (change.worktree != '.' && change.worktree != ' ');
        if (isUnstaged && ++lists.unstagedCount <= mostRows) {
            lists.unstaged.append(changeRow(change, change.worktree));
        }
    }
    return lists;
}

QList<BranchRow> branchRows(const QList<BranchInfo>& branches) {
    QList<BranchRow> rows;
    for (const BranchInfo& branch : branches) {
        rows.append({
            .key = (branch.isRemote ? u"refs/remotes/"_s : u"refs/heads/"_s) + branch.name,
            .name = branch.name,
            .upstream = branch.upstream,
            .subject = branch.subject,
            .date = branch.date,
            .ahead = branch.ahead,
            .behind = branch.behind,
            .isUpstreamGone = branch.isUpstreamGone,
            .isRemote = branch.isRemote,
            .isCurrent = branch.isCurrent,
            .worktree = branch.isCurrent ? QString() : branch.worktree,
        });
    }
    // The one that is checked out first, then the local ones, each by when it was last worked on.
    std::ranges::stable_sort(rows, std::ranges::greater(), [](const BranchRow& row) {
        return std::tuple(row.isCurrent, !row.isRemote, row.date);
    });
    return rows;
}

QList<CommitRow> commitRows(const QList<HistoryEntry>& history, const QDateTime& now) {
    constexpr qsizetype shortLength = 7;
    QList<CommitRow> rows;
    for (const HistoryEntry& entry : history) {
        QStringList refs;
        for (const QString& ref : entry.refs) {
            // "HEAD" and "refs/remotes/origin/HEAD" say nothing that the branches beside them do not.
            if (ref != "HEAD"_L1 && !ref.endsWith("/HEAD"_L1)) {
                refs.append(shortRef(ref));
            }
        }
        rows.append({
            .key = entry.commit.id,
            .shortID = entry.commit.id.first(std::min(shortLength, entry.commit.id.size())),
            .subject = entry.commit.subject,
            .author = entry.commit.author,
            .email = entry.email,
            .date = entry.commit.date,
            .when = RelativeDate::moment(entry.commit.date, now),
            .refs = refs,
            .isMerge = entry.parents.size() > 1,
        });
    }
    return rows;
}

QList<StashRow> stashRows(const QList<StashEntry>& stashes) {
    QList<StashRow> rows;
    for (const StashEntry& stash : stashes) {
        rows.append({stash.id, stash.message, stash.date, stash.index});
    }
    return rows;
}

const std::vector<RowRole<RepositoryRow>>& RepositoryRow::roles() {
    static const std::vector<RowRole<RepositoryRow>> table{
        memberRole<&RepositoryRow::key, RepositoryRow>("path"),
        memberRole<&RepositoryRow::name, RepositoryRow>("name"),
        memberRole<&RepositoryRow::label, RepositoryRow>("label"),
        memberRole<&RepositoryRow::branch, RepositoryRow>("branch"),
        memberRole<&RepositoryRow::changes, RepositoryRow>("changes"),
        memberRole<&RepositoryRow::ahead, RepositoryRow>("ahead"),
        memberRole<&RepositoryRow::behind, RepositoryRow>("behind"),
        memberRole<&RepositoryRow::isCurrent, RepositoryRow>("current"),
        memberRole<&RepositoryRow::problem, RepositoryRow>("problem"),
    };
    return table;
}

const std::vector<RowRole<ChangeRow>>& ChangeRow::roles() {
    static const std::vector<RowRole<ChangeRow>> table{
        memberRole<&ChangeRow::key, ChangeRow>("path"),
        memberRole<&ChangeRow::name, ChangeRow>("name"),
        memberRole<&ChangeRow::folder, ChangeRow>("folder"),
        memberRole<&ChangeRow::originalName, ChangeRow>("originalName"),
        memberRole<&ChangeRow::letter, ChangeRow>("letter"),
        memberRole<&ChangeRow::word, ChangeRow>("word"),
        memberRole<&ChangeRow::isFolder, ChangeRow>("isFolder"),
    };
    return table;
}

const std::vector<RowRole<BranchRow>>& BranchRow::roles() {
    static const std::vector<RowRole<BranchRow>> table{
        memberRole<&BranchRow::key, BranchRow>("ref"),
        memberRole<&BranchRow::name, BranchRow>("name"),
        memberRole<&BranchRow::upstream, BranchRow>("upstream"),
        memberRole<&BranchRow::subject, BranchRow>("subject"),
        memberRole<&BranchRow::date, BranchRow>("date"),
        memberRole<&BranchRow::ahead, BranchRow>("ahead"),
        memberRole<&BranchRow::behind, BranchRow>("behind"),
        memberRole<&BranchRow::isUpstreamGone, BranchRow>("upstreamGone"),
        memberRole<&BranchRow::isRemote, BranchRow>("remote"),
        memberRole<&BranchRow::isCurrent, BranchRow>("current"),
        memberRole<&BranchRow::worktree, BranchRow>("worktree"),
    };
    return table;
}

const std::vector<RowRole<CommitRow>>& CommitRow::roles() {
    static const std::vector<RowRole<CommitRow>> table{
        memberRole<&CommitRow::key, CommitRow>("commit"),      memberRole<&CommitRow::shortID, CommitRow>("shortID"),
        memberRole<&CommitRow::subject, CommitRow>("subject"), memberRole<&CommitRow::author, CommitRow>("author"),
        memberRole<&CommitRow::email, CommitRow>("email"),     memberRole<&CommitRow::when, CommitRow>("when"),
        memberRole<&CommitRow::date, CommitRow>("date"),       memberRole<&CommitRow::refs, CommitRow>("refs"),
        memberRole<&CommitRow::isMerge, CommitRow>("merge"),
    };
    return table;
}

const std::vector<RowRole<StashRow>>& StashRow::roles() {
    static const std::vector<RowRole<StashRow>> table{
        memberRole<&StashRow::key, StashRow>("stash"),
        memberRole<&StashRow::message, StashRow>("message"),
        memberRole<&StashRow::date, StashRow>("date"),
        memberRole<&StashRow::index, StashRow>("stashIndex"),
    };
    return table;
}

} // namespace orv
