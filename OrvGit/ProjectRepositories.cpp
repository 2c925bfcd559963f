#include "OrvGit/ProjectRepositories.h"

#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/GitService.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QString real(const QString& folder) {
    return QFileInfo(folder).canonicalFilePath();
}

bool isAtOrBelow(const QString& path, const QString& folder) {
    return path == folder || !wayBelow(folder, path).isEmpty();
}

bool isMadeForProjects(const QString& top, const QString& scanRoot) {
    const QString scanned = real(scanRoot);
    const QString place = real(top);
    return !scanned.isEmpty() && isAtOrBelow(place, QFileInfo(scanned).path()) &&
           !isAtOrBelow(real(QDir::homePath()), place);
}

/// Those of the folders in the work tree that it ignores.
QSet<QString> ignored(GitRunner runner, const QString& top, const QStringList& folders) {
    // It takes names as they are by itself and refuses to be told so; behind "./" a colon means nothing either.
    runner.extraEnvironment.insert(u"GIT_LITERAL_PATHSPECS"_s, u"0"_s);
    GitRunner::Options options;
    for (const QString& folder : folders) {
        options.input += "./" + GitPath::toBytes(wayBelow(top, folder)) + '\0';
    }
    QSet<QString> found;
    const auto answer = runner.runRaw({"check-ignore", "--stdin", "-z"}, top, GitLimits::local, options);
    const QByteArrayList names = answer && answer->code == 0 ? answer->output.split('\0') : QByteArrayList();
    for (const QByteArray& name : names) {
        found.insert(QDir::cleanPath(top + u'/' + GitPath::fromBytes(name)));
    }
    return found;
}

} // namespace

QString wayBelow(const QString& folder, const QString& other) {
    const QString start = folder.endsWith(u'/') ? folder : folder + u'/';
    return other.startsWith(start) ? other.sliced(start.size()) : QString();
}

QString workTreeTop(const QString& folder) {
    for (QDir above(folder);;) {
        const auto layout = RepositoryLayout::of(above.path());
        if (layout && layout->kind != RepositoryLayout::Kind::bare) {
            return above.path();
        }
        if (!above.cdUp()) {
            return {};
        }
    }
}

ProjectRepositories ProjectRepositories::of(
    const GitRunner& runner, const QString& projectRoot, const QString& scanRoot) {
    return ofEach(runner, {projectRoot}, scanRoot).value(0);
}

QList<ProjectRepositories> ProjectRepositories::ofEach(
    const GitRunner& runner, const QStringList& projectRoots, const QString& scanRoot) {
    QList<ProjectRepositories> all;
    QHash<QString, QStringList> parts; ///< by the top of a repository: the projects that may be parts of it
    for (const QString& root : projectRoots) {
        if (runner.cancellation && runner.cancellation->isCancelled()) {
            break;
        }
        ProjectRepositories& found = all.emplaceBack();
        found.own = GitService::findRepos(root);
        if (found.own.contains(root) || RepositoryLayout::of(root)) {
            continue;
        }
        found.enclosing = workTreeTop(root);
        if (!found.enclosing.isEmpty() && isMadeForProjects(found.enclosing, scanRoot)) {
            parts[found.enclosing].append(root);
        }
    }
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        const QSet<QString> left = ignored(runner, part.key(), *part);
        for (qsizetype i = 0; i < all.size(); ++i) {
            if (all[i].enclosing == part.key() && part->contains(projectRoots[i]) && !left.contains(projectRoots[i])) {
                all[i].own.prepend(part.key());
            }
        }
    }
    return all;
}

} // namespace orv
