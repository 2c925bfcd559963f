#include "GitWords_p.h"
#include "OrvCore/RegularFile.h"
#include "OrvGit/GitPath.h"
#include "OrvGit/WorkTreeFiles_p.h"

#include <QCryptographicHash>
#include <QFile>

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QByteArray onDisk(const QString& repository, const QString& path) {
    return QFile::encodeName(repository) + '/' + GitPath::toBytes(path);
}

/// Nothing where nothing lies.
std::optional<struct stat> look(const QByteArray& path) {
    struct stat info{};
    return ::lstat(path.constData(), &info) == 0 ? std::optional(info) : std::nullopt;
}

bool isFolder(const QByteArray& path) {
    const auto info = look(path);
    return info && S_ISDIR(info->st_mode);
}

/// A file below the folder that is not going; nothing where there is none.
std::optional<QString> firstThatStays(const QByteArray& root, const QByteArray& folder, const QSet<QString>& going) {
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir((root + folder).constData()), &::closedir);
    // One that can't be looked into can't be emptied either.
    if (!entries) {
        return GitPath::fromBytes(folder);
    }
    while (const dirent* entry = ::readdir(entries.get())) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..") {
            continue;
        }
        const QByteArray path = folder + '/' + name;
        if (isFolder(root + path)) {
            if (auto found = firstThatStays(root, path, going)) {
                return found;
            }
        } else if (QString file = GitPath::fromBytes(path); !going.contains(file)) {
            return file;
        }
    }
    return {};
}

/// What has to go before the path can be a file; nothing when it can be one. `folders` are known to be such.
std::optional<QString> obstacle(
    const QByteArray& root, const QString& path, const QSet<QString>& going, QSet<QString>& folders) {
    for (qsizetype slash = path.indexOf(u'/'); slash >= 0; slash = path.indexOf(u'/', slash + 1)) {
        const QString above = path.first(slash);
        if (folders.contains(above)) {
            continue;
        }
        const auto info = look(root + GitPath::toBytes(above));
        if (info && S_ISDIR(info->st_mode)) {
            folders.insert(above);
            continue;
        }
        return info && !going.contains(above) ? std::optional(above) : std::nullopt;
    }
    const QByteArray bytes = GitPath::toBytes(path);
    return isFolder(root + bytes) ? firstThatStays(root, bytes, going) : std::nullopt;
}

} // namespace

bool WorkTreeFiles::isFile(const QString& repository, const QString& path) {
    const auto info = look(onDisk(repository, path));
    return info && !S_ISDIR(info->st_mode);
}

bool WorkTreeFiles::isSame(const QString& repository, const QString& path, const QString& other) {
    const auto one = look(onDisk(repository, path));
    const auto two = look(onDisk(repository, other));
    return one && two && one->st_dev == two->st_dev && one->st_ino == two->st_ino;
}

QByteArray WorkTreeFiles::state(const QString& repository, const QString& path) {
    const QByteArray bytes = onDisk(repository, path);
    const auto info = look(bytes);
    if (!info) {
        return {};
    }
    const QByteArray kind = QByteArray::number(info->st_mode & (S_IFMT | S_IXUSR), 8) + ' ';
    if (S_ISLNK(info->st_mode)) {
        std::array<char, PATH_MAX> target{};
        const ssize_t length = ::readlink(bytes.constData(), target.data(), target.size());
        return kind + QByteArray(target.data(), std::max<ssize_t>(length, 0));
    }
    if (S_ISREG(info->st_mode)) {
        const UniqueFd descriptor = RegularFile::open(bytes.constData(), nullptr, O_NOFOLLOW);
        QFile file;
        QCryptographicHash hash(QCryptographicHash::Sha256);
        // One that can't be read is not known to be as it was.
        return descriptor.isValid() && file.open(descriptor.get(), QIODevice::ReadOnly) && hash.addData(&file)
                   ? kind + hash.result()
                   : "unreadable";
    }
    return kind;
}

GitOutcome<void> WorkTreeFiles::requireNoRepository(const QString& repository, const QStringList& paths) {
    for (const QString& path : paths) {
        const QByteArray bytes = onDisk(repository, path);
        if (isFolder(bytes) && look(bytes + "/.git")) {
            return std::unexpected(GitError::refused(
                GitWords::tr("“%1” is a repository of its own. Discard its changes there.").arg(path)));
        }
    }
    return {};
}

GitOutcome<void> WorkTreeFiles::requireRoom(
    const QString& repository, const QStringList& paths, const QSet<QString>& going) {
    const QByteArray root = QFile::encodeName(repository) + '/';
    QSet<QString> folders;
    for (const QString& path : paths) {
        if (const auto found = obstacle(root, path, going, folders)) {
            return std::unexpected(GitError::refused(
                GitWords::tr("“%1” stands in the way of “%2”. Move it away first.").arg(*found, path)));
        }
    }
    return {};
}

} // namespace orv
