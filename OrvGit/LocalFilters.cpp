#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitRunner.h"
#include "OrvGit/LocalFilters_p.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

constexpr int deepestModule = 8;

/// Whether the file may define a filter, itself or by another one.
bool mayDefineFilters(const QString& path) {
    constexpr qint64 longest = 1024 * 1024;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray text = file.read(longest).toLower();
    return text.size() == longest || text.contains("filter") || text.contains("include");
}

void collect(const QString& gitDirectory, QList<QByteArray>& settings) {
    const bool isPlain =
        std::ranges::none_of(QStringList{u"/config"_s, u"/config.worktree"_s}, [&](const QString& name) {
            return mayDefineFilters(gitDirectory + name);
        });
    if (isPlain) {
        return;
    }
    for (const char* scope : {"--local", "--worktree"}) {
        const auto found = GitRunner().run(
            {"--git-dir", QFile::encodeName(gitDirectory), "config", scope, "--includes", "-z", "--name-only",
             "--get-regexp", "^filter\\..*\\.(clean|process|required)$"},
            u"/"_s, GitLimits::local);
        if (found) {
            settings += found->split('\0');
        }
    }
}

/// "modules" holds the submodules' repositories under their names, which may have several parts.
void collectModules(const QString& folder, int depth, QList<QByteArray>& settings) {
    for (const QString& name : QDir(folder).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot)) {
        const QString path = folder + u'/' + name;
        const bool isRepository = QFileInfo::exists(path + u"/HEAD"_s);
        if (isRepository) {
            collect(path, settings);
        }
        if (depth < deepestModule) {
            collectModules(isRepository ? path + u"/modules"_s : path, depth + 1, settings);
        }
    }
}

} // namespace

QList<QByteArray> localFilterSettings(const QString& folder) {
    QList<QByteArray> settings;
    if (const auto layout = RepositoryLayout::of(folder)) {
        if (layout->gitDirectory != layout->commonDirectory) {
            collect(layout->gitDirectory, settings);
        }
        collect(layout->commonDirectory, settings);
        collectModules(layout->commonDirectory + u"/modules"_s, 0, settings);
    }
    settings.removeAll(QByteArray());
    return settings;
}

} // namespace orv
