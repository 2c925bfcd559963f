#include "CliGit_p.h"
#include "OrvGit/RepositoryLayout.h"
#include "TextLayout.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

const CommandOption inOption{u"in"_s, u"FOLDER"_s, u"the repository, or a folder in it; the current one without it"_s};

namespace {

/// The folder itself without symbolic links, or what of it is there.
QString realPath(const QString& path) {
    const QFileInfo info(path);
    if (const QString real = QFileInfo(info.path()).canonicalFilePath(); !real.isEmpty()) {
        return QDir::cleanPath(real + u'/' + info.fileName());
    }
    return info.path() == path ? path : realPath(info.path()) + u'/' + info.fileName();
}

} // namespace

QString folderMeant(const Invocation& call) {
    return absolutePath(call.isSet(u"in"_s) ? call.value(u"in"_s) : u"."_s);
}

GitOutcome<QStringList> repositoriesAt(const GitService& service, const QString& folder) {
    if (!QFileInfo(folder).isDir()) {
        return std::unexpected(GitError::refused(u"folder not found: "_s + shortPath(folder)));
    }
    const auto top = service.topFolder(folder);
    if (top && *top != QFileInfo(folder).canonicalFilePath()) {
        return QStringList{*top};
    }
    // One without a work tree has no folder on top, but commits and branches.
    if (const auto layout = RepositoryLayout::of(folder);
        !top && layout && layout->kind == RepositoryLayout::Kind::bare) {
        return QStringList{folder};
    }
    const QStringList found = GitService::findRepos(folder);
    if (!found.isEmpty()) {
        return found;
    }
    return std::unexpected(
        top || top.error().kind == GitError::Kind::notARepo
            ? GitError::refused(u"there is no git repository in %1"_s.arg(shortPath(folder)))
            : top.error());
}

GitOutcome<QString> repositoryAt(const GitService& service, const QString& folder) {
    const auto repositories = repositoriesAt(service, folder);
    if (!repositories) {
        return std::unexpected(repositories.error());
    }
    // The folder itself is meant, where it is one, whatever lies below it.
    if (repositories->size() == 1 || repositories->first() == folder) {
        return repositories->first();
    }
    QStringList names;
    for (const QString& each : *repositories) {
        names.append(u"\n  "_s + shortPath(each));
    }
    return std::unexpected(
        GitError::refused(u"there are several repositories; name one with --in:"_s + names.join(QString())));
}

bool isBelow(const QString& path, const QStringList& paths) {
    return std::ranges::any_of(
        paths, [&path](const QString& each) { return each == u"." || path == each || path.startsWith(each + u'/'); });
}

QFuture<int> withFolder(Invocation& call, const std::function<QFuture<int>(const QString& folder)>& run) {
    const QString word = call.words.isEmpty() ? u"."_s : call.words.first();
    if (const QString folder = absolutePath(word); QFileInfo(folder).isDir()) {
        return run(folder);
    }
    const auto promise = std::make_shared<QPromise<int>>();
    promise->start();
    const auto finish = [promise](int exitCode) {
        promise->addResult(exitCode);
        promise->finish();
    };
    onFinished(
        findProject(call, word, ProjectUse::folder), call.context, [&call, run, finish](const FoundProject& project) {
            if (project) {
                onFinished(run(project->root), call.context, finish);
            } else {
                finish(refusal(call, project.error()));
            }
        });
    return promise->future();
}

GitOutcome<QStringList> pathsIn(const QString& repository, const QString& folder, const QStringList& words) {
    const QString top = QFileInfo(repository).canonicalFilePath();
    QStringList paths;
    for (const QString& word : words) {
        const QString path = realPath(QDir::cleanPath(QDir(folder).absoluteFilePath(word)));
        if (path != top && !path.startsWith(top + u'/')) {
            return std::unexpected(
                GitError::refused(u"%1 lies outside of %2"_s.arg(printable(word), shortPath(repository))));
        }
        paths.append(path == top ? u"."_s : path.sliced(top.size() + 1));
    }
    return paths;
}

} // namespace orv
