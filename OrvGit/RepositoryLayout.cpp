#include "OrvGit/RepositoryLayout.h"

#include "OrvCore/RegularFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr qint64 longestFile = 8192;

/// The first line; empty when the file is not there or is no small regular one.
QString firstLine(const QString& path) {
    const QByteArray bytes = RegularFile::prefix(path, longestFile).value_or(QByteArray());
    const qsizetype end = bytes.indexOf('\n');
    return QFile::decodeName(bytes.first(end < 0 ? bytes.size() : end)).trimmed();
}

/// A file that leads to another place, as git reads it: all of it but the ends of lines at its end (gitfile and
/// "commondir", gitrepository-layout(5)). Nothing when it names none that a string can hold.
std::optional<QString> pointer(const QString& path, QByteArrayView prefix) {
    QByteArray bytes = RegularFile::read(path, longestFile).value_or(QByteArray());
    while (bytes.endsWith('\n') || bytes.endsWith('\r')) {
        bytes.chop(1);
    }
    if (!bytes.startsWith(prefix) || bytes.size() == prefix.size() || bytes.contains('\0')) {
        return std::nullopt;
    }
    bytes.remove(0, prefix.size());
    const QString found = QFile::decodeName(bytes);
    return QFile::encodeName(found) == bytes ? std::optional(found) : std::nullopt;
}

bool exists(const QString& directory, const QString& name) {
    return QFileInfo::exists(directory + u'/' + name);
}

QString resolved(const QString& folder, const QString& path) {
    const QString whole = path.startsWith(u'/') ? path : folder + u'/' + path;
    const QString clean = QDir::cleanPath(whole);
    // Behind a symbolic link, ".." is another folder than the one before it.
    const QString real = QFileInfo(whole).canonicalFilePath();
    return real.isEmpty() || QFileInfo(clean).canonicalFilePath() == real ? clean : real;
}

bool looksLikeGitDirectory(const QString& path) {
    return QFileInfo(path + u"/HEAD"_s).isFile() && (exists(path, u"refs"_s) || exists(path, u"commondir"_s));
}

} // namespace

std::optional<RepositoryLayout> RepositoryLayout::of(const QString& folder) {
    const QString entry = folder + u"/.git"_s;
    RepositoryLayout layout;
    layout.folder = folder;
    if (const auto leads = pointer(entry, "gitdir: ")) {
        layout.kind = Kind::linked;
        layout.gitDirectory = resolved(folder, *leads);
    } else if (QFileInfo(entry).isDir()) {
        layout.gitDirectory = entry;
    } else {
        layout.kind = Kind::bare;
        layout.gitDirectory = folder;
    }
    if (!looksLikeGitDirectory(layout.gitDirectory)) {
        return std::nullopt;
    }
    layout.commonDirectory = layout.gitDirectory;
    if (const QString file = layout.gitDirectory + u"/commondir"_s; QFileInfo::exists(file)) {
        const auto leads = pointer(file, {});
        if (!leads) {
            return std::nullopt;
        }
        layout.commonDirectory = resolved(layout.gitDirectory, *leads);
    }
    return layout;
}

bool RepositoryLayout::isSubmodule() const {
    if (kind != Kind::linked || commonDirectory != gitDirectory) {
        return false;
    }
    // Below the folder "modules" of that one's own files, however deep.
    constexpr auto modules = "/modules/"_L1;
    for (qsizetype at = gitDirectory.indexOf(modules); at >= 0; at = gitDirectory.indexOf(modules, at + 1)) {
        if (looksLikeGitDirectory(gitDirectory.first(at))) {
            return true;
        }
    }
    return false;
}

bool RepositoryLayout::isDetached() const {
    const QString head = firstLine(gitDirectory + u"/HEAD"_s);
    return !head.isEmpty() && !head.startsWith("ref:"_L1);
}

QString RepositoryLayout::mainFolder() const {
    const QFileInfo common(commonDirectory);
    return common.fileName() == ".git"_L1 ? common.path() : commonDirectory;
}

OperationState RepositoryLayout::operation() const {
    // A rebase also leaves the marks of what it is at, so it comes first.
    const auto rebase = [this](const QString& name, const QString& step, const QString& last) {
        const QString place = gitDirectory + u'/' + name + u'/';
        QString branch = firstLine(place + u"head-name"_s);
        branch.remove(u"refs/heads/"_s);
        return OperationState{
            .operation = GitOperation::rebase,
            .step = firstLine(place + step).toInt(),
            .steps = firstLine(place + last).toInt(),
            .branch = branch,
            .conflicts = {},
        };
    };
    if (exists(gitDirectory, u"rebase-merge"_s)) {
        return rebase(u"rebase-merge"_s, u"msgnum"_s, u"end"_s);
    }
    if (exists(gitDirectory, u"rebase-apply"_s)) {
        OperationState state = rebase(u"rebase-apply"_s, u"next"_s, u"last"_s);
        if (exists(gitDirectory, u"rebase-apply/applying"_s)) {
            state.operation = GitOperation::applyMailbox;
        }
        return state;
    }
    struct Mark {
        QLatin1StringView file;
        GitOperation operation;
    };
    // One of several commits may have been committed by hand: the rest is still to come.
    const QString next = firstLine(gitDirectory + u"/sequencer/todo"_s);
    const std::array marks{
        Mark{"MERGE_HEAD"_L1, GitOperation::merge},
        Mark{"CHERRY_PICK_HEAD"_L1, GitOperation::cherryPick},
        Mark{"REVERT_HEAD"_L1, GitOperation::revert},
        Mark{"sequencer"_L1, next.startsWith("revert "_L1) ? GitOperation::revert : GitOperation::cherryPick},
        Mark{"BISECT_LOG"_L1, GitOperation::bisect},
    };
    const auto mark =
        std::ranges::find_if(marks, [this](const Mark& each) { return exists(gitDirectory, QString(each.file)); });
    OperationState state;
    state.operation = mark == marks.end() ? GitOperation::none : mark->operation;
    return state;
}

QStringList repositoriesOnBranches(const QStringList& repositories) {
    QStringList found;
    for (const QString& repository : repositories) {
        const auto layout = RepositoryLayout::of(repository);
        if (!layout || !layout->isSubmodule() || !layout->isDetached()) {
            found.append(repository);
        }
    }
    return found.isEmpty() ? repositories : found;
}

} // namespace orv
