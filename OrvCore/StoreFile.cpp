#include "OrvCore/StoreFile.h"

#include "OrvCore/UniqueFd.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

namespace {

constexpr auto lockLimit = 2s;
constexpr auto lockRetry = 1ms;
constexpr mode_t privateFile = 0600;
constexpr mode_t privateFolder = 0700;
/// Empty, and in a private folder: one that another user (root, once) made must not keep this one out.
constexpr mode_t lockFile = 0644;

bool contains(const auto& table, int code) {
    return std::ranges::find(table, code) != std::end(table);
}

StoreError error(const QString& path, int code) {
    static constexpr std::array full{ENOSPC, EDQUOT};
    const auto kind = contains(full, code) ? StoreError::Kind::full : StoreError::Kind::unwritable;
    return {kind, path, qt_error_string(code)};
}

std::unexpected<StoreError> failure(const QString& path) {
    return std::unexpected(error(path, errno));
}

QString folderOf(const QString& path) {
    return QFileInfo(path).path();
}

/// One `read` or `write` call, made again when a signal came between; -1 with errno.
template <typename Call, typename Bytes>
ssize_t again(Call call, int fd, Bytes* bytes, size_t size) {
    ssize_t count = -1;
    do {
        count = call(fd, bytes, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

bool writeAll(int fd, const QByteArray& bytes) {
    for (qint64 done = 0; done < bytes.size();) {
        const ssize_t count = again(::write, fd, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count < 0) {
            return false;
        }
        done += count;
    }
    return true;
}

bool sync(int fd) {
#ifdef Q_OS_MACOS
    // fsync(2) leaves the data in the drive's cache there.
    if (::fcntl(fd, F_FULLFSYNC) == 0) {
        return true;
    }
#endif
    return ::fsync(fd) == 0;
}

StoredBytes couldNotRead(int code) {
    static constexpr std::array missing{ENOENT, ENOTDIR};
    static constexpr std::array passing{EMFILE, ENFILE, ENOMEM, EAGAIN, ETIMEDOUT, ESTALE};
    if (contains(missing, code)) {
        return {};
    }
    using enum StoredBytes::State;
    return {contains(passing, code) ? failed : unreadable, {}, qt_error_string(code)};
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isSameContent(const QString& path, const QString& other) {
    const StoredBytes bytes = StoreIO::read(path);
    const StoredBytes others = StoreIO::read(other);
    return bytes.state == StoredBytes::State::present && others.state == bytes.state && bytes.bytes == others.bytes;
}

} // namespace

QString StoreError::text() const {
    switch (kind) {
    case Kind::locked:
        return u"Could not save \"%1\": another process holds it."_s.arg(path);
    case Kind::overtaken:
        return u"A change of \"%1\" that could not be saved is given up: the same was changed elsewhere since."_s.arg(
            path);
    case Kind::full:
        return u"Could not save \"%1\": the disk is full (%2)."_s.arg(path, reason);
    case Kind::unwritable:
        break;
    }
    return u"Could not save \"%1\": %2."_s.arg(path, reason);
}

StoredBytes StoreIO::read(const QString& path) {
    // Without O_NONBLOCK the opening of a named pipe waits for a writer.
    const UniqueFd file(::open(QFile::encodeName(path), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat info{};
    if (!file.isValid() || ::fstat(file.get(), &info) != 0) {
        return couldNotRead(errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return {StoredBytes::State::unreadable, {}, u"not a file"_s};
    }
    QByteArray bytes;
    // The size is a hint only: a file may grow while it is read.
    bytes.reserve(std::clamp<qint64>(info.st_size, 0, limitBytes));
    std::array<char, 16'384> chunk;
    while (std::max<qint64>(info.st_size, bytes.size()) <= limitBytes) {
        const ssize_t count = again(::read, file.get(), chunk.data(), chunk.size());
        if (count < 0) {
            return couldNotRead(errno);
        }
        if (count == 0) {
            return {StoredBytes::State::present, bytes, {}};
        }
        bytes.append(chunk.data(), count);
    }
    return {StoredBytes::State::unreadable, {}, u"too large"_s};
}

QString StoreIO::target(const QString& path) {
    constexpr int longestChain = 40;
    QString found = path;
    for (int links = 0; links < longestChain; ++links) {
        const QFileInfo info(found);
        if (!info.isSymLink()) {
            return found;
        }
        found = info.symLinkTarget();
    }
    return path;
}

StoreResult StoreIO::makeFolder(const QString& folder) {
    const QFileInfo info(folder);
    if (info.isDir()) {
        return {};
    }
    if (const QString parent = info.path(); parent != folder) {
        if (StoreResult made = makeFolder(parent); !made) {
            return made;
        }
    }
    if (::mkdir(QFile::encodeName(folder), privateFolder) == 0) {
        return {};
    }
    const int code = errno;
    if (code == EEXIST) {
        // Made by another process in between, or a file.
        return QFileInfo(folder).isDir() ? StoreResult() : std::unexpected(error(folder, ENOTDIR));
    }
    return std::unexpected(error(folder, code));
}

StoreResult StoreIO::withLock(const QString& path, const std::function<StoreResult()>& action) {
    const QString real = target(path);
    if (StoreResult made = makeFolder(folderOf(real)); !made) {
        return made;
    }
    const QString name = real + u".lock"_s;
    // NFS grants an exclusive lock to a writable descriptor only; the file may be another user's, and then a readable
    // one does elsewhere.
    constexpr int lockFlags = O_CREAT | O_CLOEXEC | O_NONBLOCK;
    UniqueFd lock(::open(QFile::encodeName(name), O_RDWR | lockFlags, lockFile));
    if (!lock.isValid() && errno == EACCES) {
        lock.reset(::open(QFile::encodeName(name), O_RDONLY | lockFlags, lockFile));
    }
    if (!lock.isValid()) {
        return failure(name);
    }
    const auto deadline = std::chrono::steady_clock::now() + lockLimit;
    while (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return failure(name);
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return std::unexpected(StoreError{StoreError::Kind::locked, path, qt_error_string(EWOULDBLOCK)});
        }
        std::this_thread::sleep_for(lockRetry);
    }
    return action();
}

StoreResult StoreIO::write(const QString& path, const QByteArray& bytes) {
    const QString real = target(path);
    const QString folder = folderOf(real);
    if (bytes.size() > limitBytes) {
        return std::unexpected(error(path, EFBIG));
    }
    if (StoreResult made = makeFolder(folder); !made) {
        return made;
    }
    const QByteArray fresh = QFile::encodeName(real + u".new"_s);
    ::unlink(fresh);
    UniqueFd file(::open(fresh, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, privateFile));
    if (!file.isValid()) {
        return failure(path);
    }
    if (!writeAll(file.get(), bytes) || !sync(file.get()) || ::rename(fresh, QFile::encodeName(real)) != 0) {
        const StoreError why = error(path, errno);
        ::unlink(fresh);
        return std::unexpected(why);
    }
    // The content is safe already; without this the new name may be lost with the power, and the old one is back.
    file.reset(::open(QFile::encodeName(folder), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (file.isValid()) {
        ::fsync(file.get());
    }
    return {};
}

StoreResult StoreIO::setAside(const QString& path) {
    const QString real = target(path);
    const QByteArray from = QFile::encodeName(real);
    struct stat standing{};
    if (::lstat(from, &standing) != 0) {
        return failure(path);
    }
    for (int number = 1;; ++number) {
        const QString suffix = number == 1 ? u".corrupt"_s : u".corrupt.%1"_s.arg(number);
        const QByteArray to = QFile::encodeName(real + suffix);
        struct stat taken{};
        if (::lstat(to, &taken) == 0) {
            // The same file: by a writer that was killed before it wrote.
            if (isSameFile(standing, taken) || isSameContent(real, real + suffix)) {
                return {};
            }
            continue;
        }
        // A second name, so that no instant is without the file; folders and some file systems have none.
        if (::link(from, to) == 0 || ::rename(from, to) == 0) {
            return {};
        }
        return failure(path);
    }
}

} // namespace orv
