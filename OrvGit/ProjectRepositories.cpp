#include "OrvGit/ProjectRepositories.h"

#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/GitService.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDir>
#include <QFileInfo>

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

bool isIgnored(GitRunner runner, const QString& top, const QString& projectRoot) {
    // It takes names as they are by itself and refuses to be told so; behind "./" a colon means nothing either.
    runner.extraEnvironment.insert(u"GIT_LITERAL_PATHSPECS"_s, u"0"_s);
    const QByteArray way = "./" + GitPath::toBytes(wayBelow(top, projectRoot));
    const auto answer = runner.runRaw({"check-ignore", "--quiet", "--", way}, top, GitLimits::local);
    return answer && answer->code == 0;
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
    ProjectRepositories found{.own = GitService::findRepos(projectRoot), .enclosing = {}};
    if (found.own.contains(projectRoot) || RepositoryLayout::of(projectRoot)) {
        return found;
    }
    found.enclosing = workTreeTop(projectRoot);
    if (!found.enclosing.isEmpty() && isMadeForProjects(found.enclosing, scanRoot) &&
        !isIgnored(runner, found.enclosing, projectRoot)) {
        found.own.prepend(found.enclosing);
    }
    return found;
}

} // namespace orv
