#include "OrvGit/RepositoryLayout.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// The first line; empty when the file is not there or is no small regular one.
QString firstLine(const QString& path) {
    constexpr qint64 longest = 8192;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QFile::decodeName(file.readLine(longest)).trimmed();
}

bool exists(const QString& directory, const QString& name) {
    return QFileInfo::exists(directory + u'/' + name);
}

QString resolved(const QString& folder, const QString& path) {
    return QDir::cleanPath(QDir(folder).absoluteFilePath(path));
}

bool looksLikeGitDirectory(const QString& path) {
    return exists(path, u"HEAD"_s) && (exists(path, u"refs"_s) || exists(path, u"commondir"_s));
}

} // namespace

std::optional<RepositoryLayout> RepositoryLayout::of(const QString& folder) {
    const QString entry = folder + u"/.git"_s;
    RepositoryLayout layout;
    layout.folder = folder;
    constexpr auto prefix = "gitdir: "_L1;
    if (const QString line = firstLine(entry); line.startsWith(prefix)) {
        layout.kind = Kind::linked;
        layout.gitDirectory = resolved(folder, line.sliced(prefix.size()));
    } else if (QFileInfo(entry).isDir()) {
        layout.gitDirectory = entry;
    } else {
        layout.kind = Kind::bare;
        layout.gitDirectory = folder;
    }
    if (!looksLikeGitDirectory(layout.gitDirectory)) {
        return std::nullopt;
    }
    const QString common = firstLine(layout.gitDirectory + u"/commondir"_s);
    layout.commonDirectory = common.isEmpty() ? layout.gitDirectory : resolved(layout.gitDirectory, common);
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
    constexpr std::array marks{
        Mark{"MERGE_HEAD"_L1, GitOperation::merge},
        Mark{"CHERRY_PICK_HEAD"_L1, GitOperation::cherryPick},
        Mark{"REVERT_HEAD"_L1, GitOperation::revert},
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
