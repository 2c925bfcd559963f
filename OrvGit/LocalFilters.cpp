#include "OrvGit/GitLimits_p.h"
#include "OrvGit/GitRunner.h"
#include "OrvGit/LocalFilters_p.h"
#include "OrvGit/RepositoryLayout.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

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

/// The paths of the entries that are repositories of their own, read from the index itself (gitformat-index(5)): for a
/// run that nobody asked for, another git beforehand would be too much. Of an index that is not understood, none.
QByteArrayList embeddedRepositories(const QString& indexPath, qsizetype hashBytes) {
    QFile file(indexPath);
    QByteArrayList found;
    if (!file.open(QIODevice::ReadOnly)) {
        return found;
    }
    const QByteArray index = file.readAll();
    const auto number = [&index](qsizetype at) { return qFromBigEndian<quint32>(index.constData() + at); };
    if (index.size() < 12 || !index.startsWith("DIRC")) {
        return found;
    }
    constexpr qsizetype statBytes = 40;
    constexpr qsizetype modeAt = 24;
    constexpr quint32 gitlink = 0160000;
    const quint32 version = number(4);
    const quint32 count = number(8);
    QByteArray path;
    qsizetype at = 12;
    for (quint32 i = 0; i < count; ++i) {
        const qsizetype flagsAt = at + statBytes + hashBytes;
        if (flagsAt + 2 > index.size()) {
            return found;
        }
        const bool isExtended = version >= 3 && (index[flagsAt] & 0x40) != 0;
        qsizetype name = flagsAt + (isExtended ? 4 : 2);
        if (version == 4) {
            qsizetype cut = 0; // of the path before, at its end
            for (bool isMore = true; isMore && name < index.size(); ++name) {
                isMore = (index[name] & 0x80) != 0;
                cut = (cut << 7) + (index[name] & 0x7f) + (isMore ? 1 : 0);
            }
            path.chop(std::min(cut, path.size()));
        } else {
            path.clear();
        }
        const qsizetype end = index.indexOf('\0', name);
        if (end < 0) {
            return found;
        }
        path += index.sliced(name, end - name);
        if (number(at + modeAt) == gitlink) {
            found.append(path);
        }
        at = version == 4 ? end + 1 : at + (end - at + 8) / 8 * 8;
    }
    return found;
}

void collectEmbedded(const RepositoryLayout& layout, int depth, QList<QByteArray>& settings) {
    QFile configuration(layout.commonDirectory + u"/config"_s);
    const bool isSha256 = configuration.open(QIODevice::ReadOnly) && configuration.readAll().contains("sha256");
    for (const QByteArray& path : embeddedRepositories(layout.gitDirectory + u"/index"_s, isSha256 ? 32 : 20)) {
        const QString folder = layout.folder + u'/' + QFile::decodeName(path);
        // Where ".git" is a file, it leads to "modules".
        const auto inner = QFileInfo(folder + u"/.git"_s).isDir() ? RepositoryLayout::of(folder) : std::nullopt;
        if (inner) {
            collect(inner->commonDirectory, settings);
            collectModules(inner->commonDirectory + u"/modules"_s, 0, settings);
            if (depth < deepestModule) {
                collectEmbedded(*inner, depth + 1, settings);
            }
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
        collectEmbedded(*layout, 0, settings);
    }
    settings.removeAll(QByteArray());
    return settings;
}

} // namespace orv
