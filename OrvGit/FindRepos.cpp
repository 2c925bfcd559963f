#include "OrvCore/ProjectScanner.h"
#include "OrvGit/GitService.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr int deepest = 5;

void find(const QString& folder, int depth, QStringList& found) {
    if (QFileInfo::exists(folder + u"/.git"_s)) {
        found.append(folder);
    }
    if (depth == deepest) {
        return;
    }
    static const QSet<QString> skipped = ProjectScanner::defaultSkips();
    const QStringList names = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    for (const QString& name : names) {
        if (!skipped.contains(name)) {
            find(folder + u'/' + name, depth + 1, found);
        }
    }
}

} // namespace

QStringList GitService::findRepos(const QString& folder) {
    QStringList found;
    find(folder, 0, found);
    found.sort();
    return found;
}

} // namespace orv
